// SPDX-License-Identifier: MIT
// Writing an order without the form: the header copied into the lines, and what one transaction leaves in
// the rows and the counter when the number proposed was taken meanwhile, on both engines.
#include "TestDatabase.h"
#include "TestOrders.h"

#include "common/Dates.h"
#include "common/RuntimeError.h"
#include "host/Host.h"
#include "lines/GridColumns.h"
#include "orders/OpenOrder.h"
#include "orders/OrderSave.h"

#include <QSqlQuery>

#include <gtest/gtest.h>

namespace {

using namespace xv;
using namespace xv::lines;
using orders::WriteMode;

TEST(CopyHeaderTest, EveryLineGetsTheHeaderWithDatesAsDatesAndANewOrderIssued)
{
    const QDateTime now(QDate(2026, 11, 23), QTime(10, 30, 15));
    struct Case
    {
        const char* typed;
        const char* cell;
    } dates[] = {{"5/6/2027", "05/06/2027"}, {"", ""}, {"2027-06-20 00:00:00", "20/06/2027"}};
    for (const Case& date : dates) {
        orders::HeaderValues header;
        header.customer.key = 42;
        header.customer.nominativo = "Rossi Maria";
        header.customer.cellulare = "333 1234567";
        header.dataRitiro1 = date.typed;
        header.dataEvento = date.typed;
        header.tipoEvento = "Battesimo";
        QVector<QStringList> lines(2, QStringList(ColCount, "x"));
        orders::copyHeader(lines, header, now);
        for (const QStringList& cells : lines) {
            EXPECT_EQ(cells[Col_Datadal], date.cell) << date.typed;
            EXPECT_EQ(cells[Col_attrib05], date.cell) << date.typed;
            EXPECT_EQ(cells[Col_Dataal], "");
            EXPECT_EQ(cells[Col_datareg], common::shortDateTime(now));
            EXPECT_EQ(cells[Col_oradal], "10:30:15");
            EXPECT_EQ(cells[Col_rowid_controparti], "42");
            EXPECT_EQ(cells[Col_Cellulare], "333 1234567");
            EXPECT_EQ(cells[Col_attrib04], "Battesimo");
            EXPECT_EQ(cells[Col_StatoRiga], "EMESSO");
            EXPECT_EQ(cells[Col_codice_med], "x") << "the line's own cells are left alone";
        }
    }
    orders::HeaderValues collected;
    collected.statoRiga = "RITIRATO";
    QVector<QStringList> lines(1, QStringList(ColCount));
    orders::copyHeader(lines, collected, now);
    EXPECT_EQ(lines[0][Col_StatoRiga], "RITIRATO");
}

class OrderSaveTest : public test::HostedTest
{
protected:
    void SetUp() override
    {
        HostedTest::SetUp();
        if (IsSkipped() || HasFatalFailure())
            return;
        m_year = QDate::currentDate().year();
        test::addCounter(db(), m_year, 7);
        m_counter = scalar("select idnumeratore from numeratori").toInt();
    }
    data::Database& db() { return m_host->GetConnection(); }
    QString scalar(const QString& sql) { return test::scalar(db(), sql); }
    QStringList names(const QString& numero)
    {
        QStringList found;
        QSqlQuery q = db().executeBound(
            QStringLiteral("select Nominativo from movimenti where numero='%1' order by rowid").arg(numero));
        while (q.next())
            found << q.value(0).toString();
        return found;
    }
    // An order as the form holds it before its first save: lines taken from a saved one, keys cleared.
    orders::OrderWrite newOrder(const QString& numero, int lines)
    {
        const QDate today = QDate::currentDate();
        for (int i = 0; i < lines; ++i)
            test::addOrderLine(db(), "model", today, {{"Nominativo", "Nuovo cliente"}});
        orders::OpenOrder model = orders::loadOrder(*m_host, {"COMM", "model", QString::number(m_year)});
        db().executeBound("delete from movimenti where numero='model'");
        orders::OrderWrite write;
        for (data::Recordset rs = m_host->OpenSchema(4, "movimenti"); !rs.eof(); rs.moveNext()) {
            write.grid.names << rs.text("Column");
            write.grid.typeCodes << rs.value("Type").toInt();
        }
        write.grid.lines = model.lines;
        for (QStringList& cells : write.grid.lines) {
            cells[Col_rowid] = "0";
            cells[Col_numero] = numero;
        }
        write.key = {"COMM", numero, QString::number(m_year)};
        write.idnumeratore = m_counter;
        write.acconto = common::Money::fromInteger(5);
        return write;
    }
    void savedElsewhere(const QString& numero)
    {
        test::addOrderLine(db(), numero, QDate::currentDate(), {{"Nominativo", "Altra postazione"}});
        db().executeBound("update numeratori set numero=?", {numero.toInt()});
    }

    int m_year = 0;
    int m_counter = 0;
};

TEST_P(OrderSaveTest, ANumberTakenMeanwhileMovesTheOrderPastEveryTakenNumber)
{
    savedElsewhere("8");
    savedElsewhere("9");
    orders::OrderWrite order = newOrder("8", 2);
    const orders::WriteResult result = orders::writeOrder(db(), WriteMode::Save, order, {});
    EXPECT_TRUE(result.done);
    EXPECT_TRUE(result.renumbered);
    EXPECT_EQ(result.numero, "10");
    EXPECT_EQ(order.key.numero, "10");
    EXPECT_EQ(names("8"), QStringList{"Altra postazione"});
    EXPECT_EQ(names("9"), QStringList{"Altra postazione"});
    EXPECT_EQ(names("10"), (QStringList{"Nuovo cliente", "Nuovo cliente"}));
    EXPECT_EQ(scalar("select numero from numeratori"), "10");
    EXPECT_EQ(scalar("select count(*) from movimenti where numero='10' and prezzo2<>0"), "1");
}

TEST_P(OrderSaveTest, AFreeNumberIsKeptEvenWhenTheCounterHasMovedOn)
{
    db().executeBound("update numeratori set numero=11");
    orders::OrderWrite order = newOrder("8", 1);
    const orders::WriteResult result = orders::writeOrder(db(), WriteMode::Save, order, {});
    EXPECT_FALSE(result.renumbered);
    EXPECT_EQ(names("8"), QStringList{"Nuovo cliente"});
    EXPECT_EQ(scalar("select numero from numeratori"), "12");
}

TEST_P(OrderSaveTest, AnUpdateWhoseFirstLineIsNewReplacesTheOrderInsteadOfAddingToIt)
{
    // The operator removed the saved first line and added another: the grid's first line has no key.
    test::addOrderLine(db(), "8", QDate::currentDate(), {{"Nominativo", "Vecchia riga"}});
    orders::OrderWrite order = newOrder("8", 2);
    const orders::WriteResult result = orders::writeOrder(db(), WriteMode::Update, order, {});
    EXPECT_TRUE(result.done);
    EXPECT_FALSE(result.renumbered);
    EXPECT_EQ(names("8"), (QStringList{"Nuovo cliente", "Nuovo cliente"}));
}

TEST_P(OrderSaveTest, ACounterThatCannotGiveANumberStopsTheSaveWithNothingWritten)
{
    savedElsewhere("8");
    orders::OrderWrite order = newOrder("8", 1);
    order.idnumeratore = 999;
    EXPECT_THROW(orders::writeOrder(db(), WriteMode::Save, order, {}), common::RuntimeError);
    EXPECT_EQ(names("8"), QStringList{"Altra postazione"});
    EXPECT_EQ(scalar("select count(*) from movimenti"), "1");
    EXPECT_FALSE(db().inTransaction());
}

XV_INSTANTIATE_FOR_ENGINES(OrderSaveTest);

} // namespace
