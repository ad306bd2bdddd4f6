// SPDX-License-Identifier: MIT
// The program's own SQL texts, in the suite's dialect, run against our schema on each engine.
#include "TestDatabase.h"
#include "TestOrders.h"

#include "data/Database.h"
#include "data/Recordset.h"
#include "data/Schema.h"

#include <gtest/gtest.h>

#include <tuple>

namespace {

using namespace xv;
using data::Recordset;

class DialectOnEnginesTest : public test::SchemaTest
{
protected:
    void SetUp() override
    {
        SchemaTest::SetUp();
        if (IsSkipped() || HasFatalFailure())
            return;
        test::addCounter(db(), 2026, 3); // the views take as orders the documents with an order counter
        const std::tuple<const char*, QDate, double, double, const char*, const char*> lines[] = {
            {"3", QDate(2026, 11, 20), 100, 30, "EMESSO", "1"},
            {"3", QDate(2026, 11, 20), 50, 0, "EMESSO", "1"},
            {"9", QDate(2025, 12, 30), 40, 10, "RITIRATO", ""},
            {"3", QDate(2024, 5, 2), 70, 0, "RITIRATO", ""}};
        for (const auto& [numero, date, totale, acconto, stato, biglietti] : lines)
            test::addOrderLine(db(), numero, date,
                               {{"rowid_med", 17},
                                {"Nominativo", "D'Angelo Carla"},
                                {"totale", totale},
                                {"prezzo2", acconto},
                                {"StatoRiga", stato},
                                {"attrib00", biglietti}});
    }
    QStringList column(const QString& sql, const QString& field)
    {
        QStringList values;
        for (Recordset rs = Recordset::open(db(), sql); !rs.eof(); rs.moveNext())
            values << rs.text(field);
        return values;
    }
};

TEST_P(DialectOnEnginesTest, HeaderViewServesTheCardsListAndTheStatusChoice)
{
    const QStringList clienti = column(
        "SELECT Nominativo as Cliente,DataRitiro,DataRitiro2,Cerimonia,DataCerimonia,NomeFesteggiato,Note,"
        "Dicitura FROM Doc_Commissioni_testate where Biglietti<>'' and DataComm=DateValue('20/11/2026')",
        "Cliente");
    EXPECT_EQ(clienti, QStringList({"D'Angelo Carla"})) << "one row per order header";
    EXPECT_TRUE(column("SELECT Nominativo FROM Doc_Commissioni_testate where Biglietti<>'' and "
                       "DataComm=DateValue('30/12/2025')",
                       "Nominativo")
                    .isEmpty());

    const QStringList emessi =
        column("SELECT * FROM Doc_Commissioni_testate WHERE [STATO COMMISSIONE]='EMESSO'", "numero");
    EXPECT_EQ(emessi, QStringList({"3"}));
    Recordset header =
        Recordset::open(db(), "SELECT * FROM Doc_Commissioni_testate WHERE numero='3' and serie='2026'");
    ASSERT_FALSE(header.eof());
    EXPECT_EQ(header.fieldName(0).toLower(), "numero");
    EXPECT_EQ(header.fieldName(1).toLower(), "serie");
    EXPECT_EQ(header.money("Totale"), common::Money::fromDouble(150));
    EXPECT_EQ(header.money("Acconto"), common::Money::fromDouble(30));
}

TEST_P(DialectOnEnginesTest, ControlSlipTextJoinsThePictureName)
{
    const QStringList pictures = column(
        "SELECT numero,datadocumento,Codice_med,Descrizione1,qta as quantita,note as DataRitiro,datadal as "
        "DataRitiro1,dataal as DataRitiro2, rowid_controparti,Nominativo,codenominativo, "
        "rowid_med & '.bmp' as fotoart FROM movimenti where numero in ('3','9') and serie in ('2026','2025') "
        "ORDER BY numero asc",
        "fotoart");
    EXPECT_EQ(pictures, QStringList({"17.bmp", "17.bmp", "17.bmp"}));
}

XV_INSTANTIATE_FOR_ENGINES(DialectOnEnginesTest);

} // namespace
