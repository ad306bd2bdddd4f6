// SPDX-License-Identifier: MIT
#include "host/DemoData.h"
#include "common/RuntimeError.h"
#include "host/Database.h"
#include "host/Schema.h"

#include <gtest/gtest.h>

#include <QMap>
#include <QSet>
#include <QSqlQuery>
#include <QSqlRecord>
#include <QTemporaryDir>

#include <cmath>
#include <memory>

using namespace xv::host;

namespace {

const QDate kToday(2026, 11, 23);

struct DemoShop
{
    explicit DemoShop(int orders = 40, quint32 seed = 7)
    {
        ConnectionConfig config;
        config.engine = Engine::SQLite;
        config.sqlitePath = dir.path() + QStringLiteral("/demo.db");
        db = std::make_unique<Database>(config);
        migrate(*db);
        options.orders = orders;
        options.seed = seed;
        options.today = kToday;
        options.customers = 25;
    }
    DemoSummary fill() { return fillDemoData(*db, options); }

    QTemporaryDir dir;
    std::unique_ptr<Database> db;
    DemoOptions options;
};

QVector<QVariantList> rows(Database& db, const QString& sql, const QVariantList& values = {})
{
    QSqlQuery query = db.executeBound(sql, values);
    QVector<QVariantList> result;
    while (query.next()) {
        QVariantList row;
        for (int i = 0; i < query.record().count(); ++i)
            row << query.value(i);
        result << row;
    }
    return result;
}

QVariant scalar(Database& db, const QString& sql, const QVariantList& values = {})
{
    const auto result = rows(db, sql, values);
    return result.isEmpty() ? QVariant() : result.first().value(0);
}

qint64 cents(const QVariant& value)
{
    return std::llround(value.toDouble() * 100.0);
}

QDate dayOf(const QVariant& stored)
{
    return QDate::fromString(stored.toString().left(10), Qt::ISODate);
}

QString dump(Database& db, const QString& table)
{
    QStringList lines;
    for (const QVariantList& row : rows(db, QStringLiteral("select * from %1 order by rowid").arg(table))) {
        QStringList fields;
        for (const QVariant& v : row)
            fields << (v.isNull() ? QStringLiteral("<null>") : v.toString());
        lines << fields.join(QLatin1Char('|'));
    }
    return lines.join(QLatin1Char('\n'));
}

} // namespace

TEST(DemoData, EveryLineOfAnOrderRepeatsTheHeader)
{
    DemoShop shop;
    const DemoSummary summary = shop.fill();
    EXPECT_EQ(summary.orders, 40);
    const QString header = QStringLiteral(
        "datadocumento, datareg, Datadal, Dataal, oradal, oraal, rowid_controparti, Nominativo, "
        "codenominativo, "
        "Indirizzo, comune, coalesce(telefono,'-'), coalesce(Email,'-'), coalesce(Strada,'-'), attrib00, "
        "attrib01, attrib02, attrib03, attrib04, attrib05, attrib06, attrib07, attrib08, attrib09, "
        "StatoRiga, "
        "Tipogestione, Tipomovimento, note, riferimenti, rowid_utente, pagamento");
    const auto groups =
        rows(*shop.db, QStringLiteral("select count(*), count(distinct Riga), min(Riga), max(Riga) "
                                      "from movimenti where documento='COMM' "
                                      "group by serie, numero, %1")
                           .arg(header));
    // One group per order: a line with any header value of its own would split its order in two.
    ASSERT_EQ(groups.size(), 40);
    int lines = 0;
    for (const QVariantList& g : groups) {
        EXPECT_EQ(g[1].toInt(), g[0].toInt());
        EXPECT_EQ(g[2].toInt(), 1);
        EXPECT_EQ(g[3].toInt(), g[0].toInt());
        EXPECT_LE(g[0].toInt(), 6);
        lines += g[0].toInt();
    }
    EXPECT_EQ(scalar(*shop.db, QStringLiteral("select count(*) from movimenti")).toInt(),
              summary.movimentiRows);
    EXPECT_GT(summary.movimentiRows, lines); // the suppliers' deliveries come on top
}

TEST(DemoData, OnlyTheFirstLineCarriesDepositAndOrderTotal)
{
    DemoShop shop;
    shop.fill();
    const auto lines =
        rows(*shop.db, QStringLiteral("select serie, numero, prezzo2, imposta, totale, qta, prezzo, "
                                      "imponibile from movimenti where documento='COMM' "
                                      "order by serie, numero, rowid"));
    QMap<QString, QVector<QVariantList>> orders;
    for (const QVariantList& line : lines) {
        orders[line[0].toString() + QLatin1Char('/') + line[1].toString()] << line;
        const qint64 total = cents(line[4]);
        EXPECT_EQ(total, std::llround(line[5].toDouble() * line[6].toDouble() * 100.0));
        EXPECT_EQ(cents(line[7]), std::llround(total / 1.22));
    }
    int withDeposit = 0;
    for (const auto& order : orders) {
        qint64 sum = 0;
        for (const QVariantList& line : order)
            sum += cents(line[4]);
        EXPECT_EQ(cents(order.first()[3]), sum);
        EXPECT_LE(cents(order.first()[2]), sum);
        EXPECT_EQ(cents(order.first()[2]) % 1000, 0);
        withDeposit += cents(order.first()[2]) > 0 ? 1 : 0;
        for (qsizetype i = 1; i < order.size(); ++i) {
            EXPECT_EQ(cents(order[i][2]), 0);
            EXPECT_EQ(cents(order[i][3]), 0);
        }
    }
    EXPECT_GT(withDeposit, 0);
    // The view the order list reads agrees with the lines.
    EXPECT_EQ(scalar(*shop.db, QStringLiteral("select count(*) from Doc_Commissioni_testate")).toInt(), 40);
}

TEST(DemoData, SeriesAreYearsAndCountersHoldTheLastNumber)
{
    DemoShop shop(60);
    shop.fill();
    for (const QVariantList& row :
         rows(*shop.db, QStringLiteral("select serie, datadocumento from movimenti")))
        ASSERT_EQ(row[0].toString(), QString::number(dayOf(row[1]).year()));

    for (int year : {kToday.year() - 1, kToday.year()}) {
        const QString serie = QString::number(year);
        const auto numbers = rows(*shop.db,
                                  QStringLiteral("select numero, datadocumento from movimenti where "
                                                 "documento='COMM' and serie=? order by rowid"),
                                  {serie});
        ASSERT_FALSE(numbers.isEmpty()) << year;
        QSet<int> distinct;
        int highest = 0;
        QDate latest;
        for (const QVariantList& n : numbers) {
            distinct.insert(n[0].toInt());
            highest = std::max(highest, n[0].toInt());
            latest = std::max(latest, dayOf(n[1]));
        }
        EXPECT_EQ(highest, distinct.size()) << "numbers run 1..n without gaps";
        EXPECT_LE(latest, kToday);
        const auto counter = rows(*shop.db,
                                  QStringLiteral("select numero, dataultdoc, tipodocumento from numeratori "
                                                 "where codtipodoc='CO' and serie=?"),
                                  {serie});
        ASSERT_EQ(counter.size(), 1);
        EXPECT_EQ(counter[0][0].toInt(), highest);
        EXPECT_EQ(dayOf(counter[0][1]), latest);
        EXPECT_EQ(counter[0][2].toString(), QStringLiteral("COMM"));
        EXPECT_EQ(scalar(*shop.db,
                         QStringLiteral("select count(*) from numeratori where codtipodoc='CF' and "
                                        "tipodocumento='DDTF' and serie=?"),
                         {serie})
                      .toInt(),
                  1);
    }
}

TEST(DemoData, StatesFollowThePickUpDate)
{
    DemoShop shop;
    shop.fill();
    const auto orders = rows(*shop.db, QStringLiteral("select distinct serie, numero, StatoRiga, Datadal, "
                                                      "Tipogestione, Tipomovimento, attrib05, datadocumento "
                                                      "from movimenti where documento='COMM'"));
    QMap<QString, int> states;
    int booked = 0;
    for (const QVariantList& o : orders) {
        const QString state = o[2].toString();
        ++states[state];
        const QDate pickUp = dayOf(o[3]);
        EXPECT_GT(pickUp, dayOf(o[7]));
        EXPECT_GT(dayOf(o[6]), dayOf(o[7])) << "the ceremony follows the order";
        if (state == QLatin1String("RITIRATO")) {
            EXPECT_LT(pickUp, kToday);
            booked += o[4].toString() == QLatin1String("EVENTO") ? 1 : 0;
        } else {
            EXPECT_EQ(o[4].toString(), QStringLiteral("0"));
            EXPECT_EQ(o[5].toString(), QStringLiteral("CO"));
        }
    }
    EXPECT_EQ(states.keys(), (QList<QString>{QStringLiteral("EMESSO"), QStringLiteral("RITIRATO")}));
    EXPECT_GT(booked, 0);
    EXPECT_LT(booked, states.value(QStringLiteral("RITIRATO")));
    // Moved orders must still be orders for the views.
    EXPECT_EQ(scalar(*shop.db, QStringLiteral("select count(*) from mov_co")).toInt(), 40);
}

TEST(DemoData, CatalogueIsConsistent)
{
    DemoShop shop;
    const DemoSummary summary = shop.fill();
    EXPECT_GE(summary.articles, 60);
    EXPECT_LE(summary.articles, 120);
    EXPECT_EQ(scalar(*shop.db, QStringLiteral("select count(*) from med")).toInt(), summary.articles);
    const auto categories = rows(*shop.db, QStringLiteral("select distinct categoria from med order by 1"));
    QStringList names;
    for (const QVariantList& c : categories)
        names << c[0].toString();
    EXPECT_EQ(names, (QStringList{QStringLiteral("ASTUCCI"), QStringLiteral("BIGLIETTI"),
                                  QStringLiteral("BOMBONIERE"), QStringLiteral("CONFETTI"),
                                  QStringLiteral("FAZZOLETTI")}));
    EXPECT_EQ(scalar(*shop.db, QStringLiteral("select count(*) from movimenti m left join med a on "
                                              "a.codice=m.codice_med and a.rowid=m.rowid_med and "
                                              "a.descrizione=m.Descrizione1 where a.rowid is null"))
                  .toInt(),
              0);
    EXPECT_EQ(scalar(*shop.db, QStringLiteral("select count(*) from med where quantita_disponibile > "
                                              "quantita_reale or prezzo_acquisto >= prezzo_vendita"))
                  .toInt(),
              0);
    EXPECT_GT(
        scalar(*shop.db, QStringLiteral("select count(*) from med where quantita_disponibile <= 5")).toInt(),
        0);
    EXPECT_GT(scalar(*shop.db, QStringLiteral("select count(*) from med where quantita_reale = 0")).toInt(),
              0);
    EXPECT_EQ(scalar(*shop.db, QStringLiteral("select count(*) from med where rowid_fornitore not in "
                                              "(select rowid from controparti where tipocontroparte='F')"))
                  .toInt(),
              0);
    // Bills of materials: assembled boxes made of articles that exist.
    EXPECT_GE(
        scalar(*shop.db, QStringLiteral("select count(distinct Codice_A) from Produzione p join med a on "
                                        "a.codice=p.Codice_A and a.tipo='A' where p.Tipo='P'"))
            .toInt(),
        6);
    EXPECT_EQ(scalar(*shop.db, QStringLiteral("select count(*) from Produzione where Codice_P not in "
                                              "(select codice from med)"))
                  .toInt(),
              0);
}

TEST(DemoData, AgentOfEveryDeliveredArticleIsFound)
{
    DemoShop shop;
    shop.fill();
    EXPECT_EQ(scalar(*shop.db, QStringLiteral("select count(*) from controparti f left join controparti a on "
                                              "a.rowid=f.codagente and a.tipocontroparte='A' "
                                              "where f.tipocontroparte='F' and a.rowid is null"))
                  .toInt(),
              0);
    const auto delivered = rows(*shop.db, QStringLiteral("select distinct codice_med, numero from movimenti "
                                                         "where documento='DDTF'"));
    ASSERT_FALSE(delivered.isEmpty());
    QSet<QString> codes;
    for (const QVariantList& d : delivered) {
        EXPECT_TRUE(d[1].toString().startsWith(QLatin1Char('F'))) << "never the number of an order";
        codes.insert(d[0].toString());
    }
    EXPECT_GE(codes.size(), 70) << "every bought article has been delivered at least once";
    for (const QString& code : codes) {
        const auto agents =
            rows(*shop.db,
                 QStringLiteral("SELECT distinct agente.RAGSOC,agente.EMAIL FROM controparti as "
                                "fornitore,controparti as agente,doc_righemov as righe where "
                                "fornitore.codagente=agente.rowid and "
                                "fornitore.rowid=righe.rowid_controparte and righe.codice=?"),
                 {code});
        ASSERT_EQ(agents.size(), 1) << code.toStdString();
        EXPECT_TRUE(agents[0][1].toString().contains(QLatin1String("@example."))) << code.toStdString();
    }
}

TEST(DemoData, QuotesAndNullsAreKept)
{
    DemoShop shop;
    shop.fill();
    EXPECT_GT(scalar(*shop.db, QStringLiteral("select count(*) from movimenti where Nominativo=?"),
                     {QStringLiteral("D'Angelo Carla")})
                  .toInt(),
              0);
    EXPECT_GT(scalar(*shop.db, QStringLiteral("select count(*) from movimenti where Descrizione1 like ?"),
                     {QStringLiteral("%d'argento%")})
                  .toInt(),
              0);
    EXPECT_GT(
        scalar(*shop.db, QStringLiteral("select count(*) from controparti where Email is null")).toInt(), 0);
    EXPECT_GT(scalar(*shop.db, QStringLiteral("select count(*) from controparti where Email=''")).toInt(), 0);
    EXPECT_EQ(scalar(*shop.db, QStringLiteral("select valore from impostazioni where archivio='ekela' and "
                                              "sezione='docs' and chiave='email_from'"))
                  .toString(),
              QStringLiteral("ordini@bomboniere-demo.example.it"));
    EXPECT_EQ(scalar(*shop.db,
                     QStringLiteral("select count(*) from impostazioni where archivio<>lower(archivio) or "
                                    "sezione<>lower(sezione) or chiave<>lower(chiave)"))
                  .toInt(),
              0);
}

TEST(DemoData, SameSeedSameShop)
{
    DemoShop first(30, 99);
    DemoShop second(30, 99);
    DemoShop other(30, 100);
    first.fill();
    second.fill();
    other.fill();
    for (const QString& table : {QStringLiteral("movimenti"), QStringLiteral("med"),
                                 QStringLiteral("controparti"), QStringLiteral("numeratori")}) {
        EXPECT_EQ(dump(*first.db, table), dump(*second.db, table)) << table.toStdString();
    }
    EXPECT_NE(dump(*first.db, QStringLiteral("movimenti")), dump(*other.db, QStringLiteral("movimenti")));
}

TEST(DemoData, RefusesADatabaseWithData)
{
    DemoShop shop(5);
    const int rowsBefore = shop.fill().movimentiRows;
    EXPECT_THROW(shop.fill(), xv::common::RuntimeError);
    EXPECT_EQ(scalar(*shop.db, QStringLiteral("select count(*) from movimenti")).toInt(), rowsBefore);
    EXPECT_FALSE(shop.db->inTransaction());
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

namespace {

TEST(DemoData, EveryOrderRowLoadsWithoutANullWhereNoneMayBe)
{
    DemoShop shop(60, 11);
    shop.fill();
    const QStringList mayBeNull = {"strada", "cellulare", "email", "quantita", "attrib07", "attrib08", "attrib10",
                                   "referente"};
    int checked = 0;
    for (const QVariantList& column : rows(*shop.db, "select name from pragma_table_info('movimenti')")) {
        const QString name = column.first().toString();
        if (mayBeNull.contains(name.toLower()))
            continue;
        ++checked;
        EXPECT_EQ(scalar(*shop.db, "select count(*) from movimenti where documento='COMM' and " + name + " is null")
                      .toInt(),
                  0)
            << name.toStdString();
    }
    EXPECT_EQ(checked, 61 - mayBeNull.size());
}

} // namespace
