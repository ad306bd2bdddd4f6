// SPDX-License-Identifier: MIT
#include "TestDatabase.h"
#include "TestOrders.h"

#include "common/RuntimeError.h"
#include "host/Host.h"
#include "lines/GridColumns.h"
#include "orders/OpenOrder.h"

#include <gtest/gtest.h>

namespace {

using namespace xv;
using common::Money;
using data::Recordset;

class OpenOrderTest : public test::HostedTest
{
protected:
    void SetUp() override
    {
        HostedTest::SetUp();
        if (IsSkipped() || HasFatalFailure())
            return;
        // Orders are the documents of a type that has an order counter.
        test::addCounter(m_host->GetConnection(), QDate::currentDate().year(), 0);
    }
    int addLine(const QString& numero, const QDate& date, const std::function<void(Recordset&)>& adjust = {})
    {
        return test::addOrderLine(m_host->GetConnection(), numero, date, adjust);
    }
    orders::OpenOrder loadByNumber(const QString& number, int year)
    {
        return orders::loadOrder(*m_host, number, QString::number(year));
    }
};

TEST_P(OpenOrderTest, TheWholeOrderComesInOneValue)
{
    const int year = QDate::currentDate().year();
    const int first = addLine("11", QDate(year, 3, 14), [year](Recordset& t) {
        t.setValue("attrib04", "Matrimonio");
        t.setValue("attrib05", QDateTime(QDate(year, 6, 20), QTime(0, 0)));
        t.setValue("attrib06", "Marco e Giulia");
        t.setValue("Datadal", QDateTime(QDate(year, 6, 18), QTime(0, 0)));
        t.setValue("Nominativo", "Rossi Maria");
        t.setValue("telefono", "081 555 1234");
        t.setValue("Cellulare", QVariant());
        t.setValue("Email", QVariant());
        t.setValue("Rowid_Pagamento", 3);
        t.setValue("riferimenti", "Sala Aurora");
        t.setValue("attrib00", "1");
        t.setValue("attrib01", "0");
        t.setValue("attrib02", "5");
        t.setMoney("prezzo2", Money::fromInteger(50));
        t.setMoney("totale", Money::fromInteger(120));
    });
    addLine("11", QDate(year, 3, 14), [](Recordset& t) {
        t.setValue("codice_med", "CNF002");
        t.setMoney("totale", Money::fromRaw(305000));
    });

    const orders::OpenOrder o = loadByNumber("11", year);
    EXPECT_EQ(o.key, first);
    EXPECT_EQ(o.numero, "11");
    EXPECT_EQ(o.serie, QString::number(year));
    EXPECT_EQ(o.documento, "COMM");
    EXPECT_EQ(o.tipomovimento, "CO");
    EXPECT_EQ(o.datadocumento.date(), QDate(year, 3, 14));
    EXPECT_EQ(o.tipoEvento, "Matrimonio");
    EXPECT_EQ(o.dataEvento, QDate(year, 6, 20).toString("dd/MM/yyyy"));
    EXPECT_EQ(o.soggettiEvento, "Marco e Giulia");
    EXPECT_EQ(o.datadal, QDate(year, 6, 18).toString("dd/MM/yyyy"));
    EXPECT_EQ(o.riferimenti, "Sala Aurora");
    EXPECT_EQ(o.statoRiga, "EMESSO");
    EXPECT_EQ(o.biglietti, "1");
    EXPECT_EQ(o.amuleto, "0");
    EXPECT_EQ(o.confetti, "5");
    EXPECT_EQ(o.mandorla, "");
    EXPECT_EQ(o.acconto, Money::fromInteger(50));
    EXPECT_EQ(o.totale, Money::fromRaw(1505000));
    EXPECT_EQ(o.customer.nominativo, "Rossi Maria");
    EXPECT_EQ(o.customer.telefono, "081 555 1234");
    EXPECT_EQ(o.customer.cellulare, "") << "a null mobile reads as empty";
    EXPECT_EQ(o.customer.email, "");
    EXPECT_EQ(o.customer.rowidPagamento, "3");
    ASSERT_EQ(o.lines.size(), 2);
    EXPECT_EQ(o.lines[0].size(), lines::ColCount);
    EXPECT_EQ(o.lines[0][lines::Col_rowid], QString::number(first));
    EXPECT_EQ(o.lines[1][lines::Col_codice_med], "CNF002");
}

TEST_P(OpenOrderTest, AnUnknownNumberGivesAnEmptyOrder)
{
    addLine("11", QDate::currentDate());
    const orders::OpenOrder o = loadByNumber("12", QDate::currentDate().year());
    EXPECT_EQ(o.key, 0);
    EXPECT_TRUE(o.numero.isEmpty());
    EXPECT_TRUE(o.lines.isEmpty());
    EXPECT_EQ(o.statoRiga, "EMESSO");
    EXPECT_EQ(o.acconto, Money());
}

TEST_P(OpenOrderTest, ANullWhereAValueMustBeStopsTheLoad)
{
    addLine("11", QDate::currentDate(), [](Recordset& t) { t.setValue("attrib04", QVariant()); });
    EXPECT_THROW(loadByNumber("11", QDate::currentDate().year()), common::RuntimeError);
}

XV_INSTANTIATE_FOR_ENGINES(OpenOrderTest);

} // namespace
