// SPDX-License-Identifier: MIT
#include "demo/DemoData.h"
#include "common/RuntimeError.h"
#include "data/Database.h"
#include "data/Schema.h"

#include <gtest/gtest.h>

#include <QSqlQuery>
#include <QSqlRecord>
#include <QTemporaryDir>

#include <algorithm>
#include <memory>

using namespace xv::data;
using namespace xv::demo;

namespace {

struct DemoShop
{
    explicit DemoShop(int orders, quint32 seed = 7)
        : db(std::make_unique<Database>(ConnectionConfig::fromText("sqlite:" + dir.filePath("demo.db")))),
          options{
              .orders = orders, .seed = seed, .today = QDate(2026, 11, 23), .customers = 25, .progress = {}}
    {
        migrate(*db);
    }
    DemoSummary fill() { return fillDemoData(*db, options); }

    QVector<QVariantList> rows(const QString& sql, const QVariantList& values = {})
    {
        QSqlQuery query = db->executeBound(sql, values);
        QVector<QVariantList> result;
        while (query.next()) {
            QVariantList row;
            for (int i = 0; i < query.record().count(); ++i)
                row << query.value(i);
            result << row;
        }
        return result;
    }
    QStringList column(const QString& sql)
    {
        QStringList values;
        for (const QVariantList& row : rows(sql))
            values << row.value(0).toString();
        return values;
    }
    int count(const QString& from) { return rows("select count(*) from " + from)[0][0].toInt(); }
    QVector<QVariantList> table(const QString& name)
    {
        return rows("select * from " + name + " order by rowid");
    }

    QTemporaryDir dir;
    std::unique_ptr<Database> db;
    DemoOptions options;
};

// One shop, filled once, read by the tests that only look at it.
class DemoDataTest : public ::testing::Test
{
protected:
    static void SetUpTestSuite()
    {
        s_shop = std::make_unique<DemoShop>(60);
        s_summary = s_shop->fill();
    }
    static void TearDownTestSuite() { s_shop.reset(); }
    static DemoShop& shop() { return *s_shop; }
    static void expectNone(const QString& from) { EXPECT_EQ(shop().count(from), 0) << from.toStdString(); }
    static void expectSome(const QString& from) { EXPECT_GT(shop().count(from), 0) << from.toStdString(); }

    static inline std::unique_ptr<DemoShop> s_shop;
    static inline DemoSummary s_summary;
};

TEST_F(DemoDataTest, EveryLineOfAnOrderRepeatsTheHeader)
{
    // One group per order: a line with any header value of its own would split its order in two.
    const QString orders = QString(
        "(select 1 from movimenti where documento='COMM' group by serie, numero, datadocumento, datareg, "
        "Datadal, Dataal, oradal, oraal, rowid_controparti, Nominativo, codenominativo, Indirizzo, comune, "
        "coalesce(telefono,'-'), coalesce(Email,'-'), coalesce(Strada,'-'), attrib00, attrib01, attrib02, "
        "attrib03, attrib04, attrib05, attrib06, attrib07, attrib08, attrib09, StatoRiga, Tipogestione, "
        "Tipomovimento, note, riferimenti, rowid_utente, pagamento%1)");
    EXPECT_EQ(shop().count(orders.arg(QString())), s_summary.orders);
    expectNone(
        orders.arg(" having count(distinct Riga) <> count(*) or min(Riga) <> 1 or max(Riga) <> count(*)"));
    EXPECT_EQ(shop().count("movimenti"), s_summary.movimentiRows);
    EXPECT_EQ(shop().count("Doc_Commissioni_testate"), s_summary.orders);
    EXPECT_EQ(shop().count("mov_co"), s_summary.orders) << "picked-up orders are orders too";
}

TEST_F(DemoDataTest, OnlyTheFirstLineCarriesDepositAndOrderTotal)
{
    expectNone("movimenti where documento='COMM' and Riga > 1 and (prezzo2 <> 0 or imposta <> 0)");
    expectNone("movimenti f where documento='COMM' and Riga = 1 and (prezzo2 > imposta or abs(imposta - "
               "(select sum(totale) from movimenti l where l.documento='COMM' and l.serie=f.serie and "
               "l.numero=f.numero)) > 0.005)");
    // A demo line reads as one the form wrote: its total and its taxable amount are the line amount, so
    // the order total shown on loading is the one the form recomputes after a key.
    expectNone("movimenti where documento='COMM' and (abs(totale - qta * prezzo) > 0.005 or "
               "imponibile <> totale)");
    expectSome("movimenti where documento='COMM' and Riga = 1 and prezzo2 > 0");
}

TEST_F(DemoDataTest, SeriesAreYearsAndCountersHoldTheLastNumber)
{
    expectNone("movimenti where serie <> substr(datadocumento, 1, 4) or datadocumento >= '2026-11-24' or "
               "datadocumento < '2024-01-01'");
    EXPECT_EQ(
        shop().column("select codtipodoc || ' ' || tipodocumento || ' ' || serie from numeratori order by 1"),
        QStringList({"CF DDTF 2024", "CF DDTF 2025", "CF DDTF 2026", "CO COMM 2024", "CO COMM 2025",
                     "CO COMM 2026"}));
    // Every counter holds the last number of its document type and year and its date, and the numbers
    // run 1..n without gaps.
    expectNone(
        "numeratori n where (numero, numero, substr(dataultdoc, 1, 10)) <> (select max(cast(numero as "
        "integer)), count(distinct numero), max(substr(datadocumento, 1, 10)) from movimenti m where "
        "m.documento=n.tipodocumento and m.serie=n.serie)");
}

TEST_F(DemoDataTest, NumbersComeBackEveryYearAndInDeliveryNotes)
{
    EXPECT_EQ(shop().column("select distinct serie from movimenti where documento='COMM' order by 1"),
              QStringList({"2024", "2025", "2026"}));
    // The same number in all three years: typed, it opens this year's; the others stay reachable.
    expectSome("(select numero from movimenti where documento='COMM' group by numero "
               "having count(distinct serie) = 3)");
    // A delivery note with the number of an order of the same year.
    expectSome("movimenti d where documento='DDTF' and exists (select 1 from movimenti o where "
               "o.documento='COMM' and o.serie=d.serie and o.numero=d.numero)");
    expectSome("mov_co where serie='2024'");
}

TEST_F(DemoDataTest, StatesFollowThePickUpDate)
{
    EXPECT_EQ(shop().column("select distinct StatoRiga from movimenti where documento='COMM' order by 1"),
              QStringList({"EMESSO", "RITIRATO"}));
    expectNone("movimenti where documento='COMM' and (substr(Datadal, 1, 10) <= substr(datadocumento, 1, 10) "
               "or substr(attrib05, 1, 10) <= substr(datadocumento, 1, 10))");
    expectNone("movimenti where StatoRiga='RITIRATO' and Datadal >= '2026-11-23'");
    expectNone("movimenti where StatoRiga='EMESSO' and (Tipogestione <> '0' or Tipomovimento <> 'CO')");
    expectSome("movimenti where StatoRiga='RITIRATO' and Tipogestione = 'EVENTO'");
    expectSome("movimenti where StatoRiga='RITIRATO' and Tipogestione <> 'EVENTO'");
}

TEST_F(DemoDataTest, ArticlesOfTheLinesAreInTheCatalogueAndTheirAgentIsFound)
{
    expectNone("movimenti m left join med a on a.codice=m.codice_med and a.rowid=m.rowid_med and "
               "a.descrizione=m.Descrizione1 where a.rowid is null");
    EXPECT_EQ(shop().column("select distinct categoria from med order by 1"),
              QStringList({"ASTUCCI", "BIGLIETTI", "BOMBONIERE", "CONFETTI", "FAZZOLETTI"}));
    const QStringList delivered =
        shop().column("select distinct codice_med from movimenti where documento='DDTF'");
    EXPECT_GE(delivered.size(), 70) << "every bought article has been delivered at least once";
    for (const QString& code : delivered) {
        const auto agents = shop().rows(
            "SELECT distinct agente.RAGSOC,agente.EMAIL FROM controparti as fornitore,controparti as agente,"
            "doc_righemov as righe where fornitore.codagente=agente.rowid and "
            "fornitore.rowid=righe.rowid_controparte and righe.codice=?",
            {code});
        ASSERT_EQ(agents.size(), 1) << code.toStdString();
        EXPECT_TRUE(agents[0][1].toString().contains("@example.")) << code.toStdString();
    }
}

TEST_F(DemoDataTest, QuotesAndNullsAreKept)
{
    expectSome("movimenti where Nominativo='D''Angelo Carla'");
    expectSome("movimenti where Descrizione1 like '%d''argento%'");
    expectSome("controparti where Email is null");
    expectSome("controparti where Email=''");
    expectSome("impostazioni where archivio='ekela' and sezione='docs' and chiave='email_from' and "
               "valore='ordini@bomboniere-demo.example.it'");
    expectNone(
        "impostazioni where archivio<>lower(archivio) or sezione<>lower(sezione) or chiave<>lower(chiave)");
}

TEST_F(DemoDataTest, EveryOrderRowLoadsWithoutANullWhereNoneMayBe)
{
    const QStringList mayBeNull = {"strada",   "cellulare", "email",    "quantita",
                                   "attrib07", "attrib08",  "attrib10", "referente"};
    int checked = 0;
    for (const QString& name : shop().column("select name from pragma_table_info('movimenti')")) {
        if (mayBeNull.contains(name.toLower()))
            continue;
        ++checked;
        EXPECT_EQ(shop().count("movimenti where documento='COMM' and " + name + " is null"), 0)
            << name.toStdString();
    }
    EXPECT_EQ(checked, 61 - mayBeNull.size());
}

TEST_F(DemoDataTest, RefusesADatabaseWithData)
{
    EXPECT_THROW(shop().fill(), xv::common::RuntimeError);
    EXPECT_EQ(shop().count("movimenti"), s_summary.movimentiRows);
    EXPECT_FALSE(shop().db->inTransaction());
}

TEST_F(DemoDataTest, SameSeedSameShop)
{
    DemoShop same(60);
    DemoShop other(60, 8);
    same.fill();
    other.fill();
    for (const char* table : {"movimenti", "med", "controparti", "numeratori"})
        EXPECT_TRUE(same.table(table) == shop().table(table)) << table;
    EXPECT_FALSE(other.table("movimenti") == shop().table("movimenti"));
}

TEST(DemoData, RowTargetAndProgress)
{
    DemoShop shop(demoOrdersForRows(3000));
    QVector<int> reported;
    shop.options.progress = [&reported, &shop](int done, int total) {
        EXPECT_EQ(total, shop.options.orders);
        reported << done;
    };
    const DemoSummary summary = shop.fill();
    EXPECT_NEAR(summary.movimentiRows, 3000, 150);
    ASSERT_FALSE(reported.isEmpty());
    EXPECT_EQ(reported.last(), summary.orders);
    EXPECT_LE(reported.size(), 102);
    EXPECT_TRUE(std::is_sorted(reported.begin(), reported.end()));
}

} // namespace
