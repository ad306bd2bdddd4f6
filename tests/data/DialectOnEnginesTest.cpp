// SPDX-License-Identifier: MIT
// The program's own SQL texts, in the suite's dialect, run against our schema on each engine.
#include "TestDatabase.h"

#include "data/Database.h"
#include "data/Recordset.h"
#include "data/Schema.h"
#include "data/SqlText.h"

#include <gtest/gtest.h>

namespace {

using namespace xv;
using data::Recordset;

struct Line
{
    QString numero;
    QString serie;
    QDate date;
    QString codice;
    double totale;
    double acconto;
    QString stato;
    QString biglietti;
};

class DialectOnEnginesTest : public test::SchemaTest
{
protected:
    void SetUp() override
    {
        SchemaTest::SetUp();
        if (IsSkipped() || HasFatalFailure())
            return;
        db().execute("insert into numeratori (codtipodoc, tipodocumento, serie, numero) values ('CO','COMM','2026',3)");
        db().execute("insert into numeratori (codtipodoc, tipodocumento, serie, numero) values ('CO','COMM','2025',9)");
        const Line lines[] = {
            {"3", "2026", QDate(2026, 11, 20), "BOM001", 100, 30, "EMESSO", "1"},
            {"3", "2026", QDate(2026, 11, 20), "CNF002", 50, 0, "EMESSO", "1"},
            {"9", "2025", QDate(2025, 12, 30), "FAZ001", 40, 10, "RITIRATO", ""},
            {"3", "2024", QDate(2024, 5, 2), "BOM001", 70, 0, "RITIRATO", ""},
        };
        for (const Line& line : lines) {
            Recordset t = Recordset::openTable(db(), "movimenti");
            t.addNew();
            t.setValue("Tipomovimento", "CO");
            t.setValue("documento", "COMM");
            t.setValue("numero", line.numero);
            t.setValue("serie", line.serie);
            t.setValue("datadocumento", line.date);
            t.setValue("codice_med", line.codice);
            t.setValue("rowid_med", 17);
            t.setValue("Nominativo", "D'Angelo Carla");
            t.setMoney("totale", common::Money::fromDouble(line.totale));
            t.setMoney("prezzo2", common::Money::fromDouble(line.acconto));
            t.setValue("StatoRiga", line.stato);
            t.setValue("attrib00", line.biglietti);
            t.update();
        }
    }
    QStringList column(const QString& sql, const QString& field)
    {
        QStringList values;
        for (Recordset rs = Recordset::open(db(), sql); !rs.eof(); rs.moveNext())
            values << rs.text(field);
        return values;
    }
};

TEST_P(DialectOnEnginesTest, OrderExistsInMovCoForTheYearAndTheYearBefore)
{
    const auto exists = [&](const QString& numero, int lastYear, int year) {
        return column("select commissione from mov_co where commissione='" + data::sqlEscape(numero) +
                          "' and year([Data Commissione]) IN ( " + QString::number(lastYear) + " , " +
                          QString::number(year) + " )",
                      "commissione");
    };
    EXPECT_EQ(exists("3", 2025, 2026), QStringList({"3"})) << "one entry per order, not per line";
    EXPECT_EQ(exists("9", 2025, 2026), QStringList({"9"}));
    EXPECT_TRUE(exists("3", 2022, 2023).isEmpty());
    EXPECT_EQ(exists("3", 2023, 2024), QStringList({"3"}));
    EXPECT_TRUE(exists("3' or '1'='1", 2025, 2026).isEmpty()) << "a quote in the number is looked up literally";
}

TEST_P(DialectOnEnginesTest, LinesAndTotalsQueriesReadTheOrderRows)
{
    const QStringList codes =
        column("select * from movimenti where numero='3' and val(serie) in (2025,2026)", "codice_med");
    EXPECT_EQ(codes, QStringList({"BOM001", "CNF002"}));

    // The totals are summed on the number alone, over every series: kept on purpose.
    Recordset acconto = Recordset::open(
        db(), "select sum(m1.prezzo2) as totaleacconto from movimenti AS m1 where m1.numero='3'");
    EXPECT_EQ(acconto.money("TotaleAcconto"), common::Money::fromDouble(30));
    Recordset totale = Recordset::open(
        db(), "select sum(m1.totale) as TotaleCommissione from movimenti AS m1 where m1.numero='3'");
    EXPECT_EQ(totale.money("totalecommissione"), common::Money::fromDouble(220));
}

TEST_P(DialectOnEnginesTest, CounterAdvancesWithBareNow)
{
    const QString id = column("select idnumeratore from numeratori where serie='2026'", "idnumeratore").value(0);
    db().execute("update numeratori set dataultdoc=now,numero=numero+1 where idnumeratore=" + id);
    Recordset rs = Recordset::open(db(), "select numero, dataultdoc from numeratori where idnumeratore=" + id);
    EXPECT_EQ(rs.number("numero"), 4.0);
    EXPECT_LE(qAbs(rs.dateTime("dataultdoc").secsTo(QDateTime::currentDateTime())), 120);
}

TEST_P(DialectOnEnginesTest, HeaderViewServesTheCardsListAndTheStatusChoice)
{
    const QStringList clienti = column(
        "SELECT Nominativo as Cliente,DataRitiro,DataRitiro2,Cerimonia,DataCerimonia,NomeFesteggiato,Note,Dicitura "
        "FROM Doc_Commissioni_testate where Biglietti<>'' and DataComm=DateValue('20/11/2026')",
        "Cliente");
    EXPECT_EQ(clienti, QStringList({"D'Angelo Carla"})) << "one row per order header";
    EXPECT_TRUE(column("SELECT Nominativo FROM Doc_Commissioni_testate where Biglietti<>'' and "
                       "DataComm=DateValue('30/12/2025')",
                       "Nominativo")
                    .isEmpty());

    const QStringList emessi =
        column("SELECT * FROM Doc_Commissioni_testate WHERE [STATO COMMISSIONE]='EMESSO'", "numero");
    EXPECT_EQ(emessi, QStringList({"3"}));
    Recordset header = Recordset::open(db(), "SELECT * FROM Doc_Commissioni_testate WHERE numero='3' and serie='2026'");
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
        "DataRitiro1,dataal as DataRitiro2, rowid_controparti,Nominativo,codenominativo, rowid_med & '.bmp' as "
        "fotoart FROM movimenti where numero in ('3','9') and serie in ('2026','2025') ORDER BY numero asc",
        "fotoart");
    EXPECT_EQ(pictures, QStringList({"17.bmp", "17.bmp", "17.bmp"}));
}

TEST_P(DialectOnEnginesTest, CategoryAndAgentQueriesRunAsWritten)
{
    db().execute("insert into med (codice, categoria) values ('BOM001','BOMBONIERE')");
    db().execute("insert into med (codice, categoria) values ('AST001','ASTUCCI')");
    db().execute("insert into med (codice, categoria) values ('CNF001','CONFETTI')");
    EXPECT_EQ(column("SELECT CODICE,categoria FROM MED WHERE CATEGORIA in ('BOMBONIERE','ASTUCCI','FAZZOLETTI') "
                     "order by codice",
                     "codice"),
              QStringList({"AST001", "BOM001"}));

    db().execute("insert into controparti (tipocontroparte, ragsoc, Email) values ('A', 'Bruno Agente', "
                 "'bruno@example.it')");
    const QString agent = column("select rowid from controparti where ragsoc='Bruno Agente'", "rowid").value(0);
    db().execute("insert into controparti (tipocontroparte, ragsoc, codagente) values ('F', 'Fornitore', " + agent +
                 ")");
    const QString supplier = column("select rowid from controparti where ragsoc='Fornitore'", "rowid").value(0);
    db().execute("insert into movimenti (documento, Tipomovimento, numero, serie, rowid_controparti, codice_med) "
                 "values ('DDTF', 'CF', 'F1', '2026', " + supplier + ", 'BOM001')");
    const QString sql =
        "SELECT distinct agente.RAGSOC,agente.EMAIL FROM controparti as fornitore,controparti as "
        "agente,doc_righemov as righe where fornitore.codagente=agente.rowid and "
        "fornitore.rowid=righe.rowid_controparte and righe.codice='" + data::sqlEscape("BOM001") + "'";
    EXPECT_EQ(column(sql, "email"), QStringList({"bruno@example.it"}));
    EXPECT_TRUE(column("select * from mov_co where commissione='F1'", "commissione").isEmpty())
        << "supplier deliveries are not orders";
}

XV_INSTANTIATE_FOR_ENGINES(DialectOnEnginesTest);

} // namespace
