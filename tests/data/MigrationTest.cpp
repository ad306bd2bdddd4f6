// SPDX-License-Identifier: MIT
#include "TestDatabase.h"

#include "common/RuntimeError.h"
#include "data/Database.h"
#include "data/Recordset.h"
#include "data/Schema.h"
#include "data/SqlDialect.h"

#include <gtest/gtest.h>

#include <QRandomGenerator>

#include <latch>
#include <thread>

namespace {

using namespace xv;
using data::Database;
using data::Recordset;

QString storedFingerprint(Database& db)
{
    return Recordset::open(db, "select impronta from impronta_funzioni").text("impronta");
}

// The shared server is where several workstations, and roles other than the schema's owner, start.
class SharedStartTest : public test::EngineTest
{
};

TEST_P(SharedStartTest, ARoleThatOwnsNoFunctionCanStartOnACurrentDatabase)
{
    const data::ConnectionConfig config = database().config();
    Database owner(config);
    data::migrate(owner);
    const QString role = QStringLiteral("xv_cassa_%1").arg(QRandomGenerator::global()->generate(), 0, 16);
    owner.executeBound("create role " + role + " login");
    owner.executeBound("grant usage on schema " + config.schema + " to " + role);
    owner.executeBound("grant select, insert, update, delete on all tables in schema " + config.schema +
                       " to " + role);
    {
        data::ConnectionConfig asClerk = config;
        asClerk.user = role;
        Database clerk(asClerk);
        EXPECT_NO_THROW(EXPECT_EQ(data::migrate(clerk), data::latestSchemaVersion()));
    }
    EXPECT_EQ(storedFingerprint(owner), data::postgresFunctionsFingerprint());
    owner.executeBound("drop owned by " + role);
    owner.executeBound("drop role " + role);
}

TEST_P(SharedStartTest, DefinitionsOtherThanTheProgramsAreReplaced)
{
    Database db(database().config());
    data::migrate(db);
    db.executeBound("drop function datevalue(date)");
    db.executeBound("update impronta_funzioni set impronta='di una versione precedente'");

    data::migrate(db);
    EXPECT_EQ(storedFingerprint(db), data::postgresFunctionsFingerprint());
    EXPECT_EQ(Recordset::open(db, "select year(DateValue(current_date)) as anno").value(0).toInt(),
              QDate::currentDate().year());
}

TEST_P(SharedStartTest, TwoWorkstationsStartingOnANewDatabaseAtOnceBothStart)
{
    const data::ConnectionConfig config = database().config();
    std::latch connected(2);
    QString errors[2];
    const auto start = [&](QString* error) {
        try {
            Database db(config);
            connected.arrive_and_wait();
            data::migrate(db);
        } catch (const std::exception& e) {
            *error = QString::fromLocal8Bit(e.what());
        }
    };
    std::thread first(start, &errors[0]);
    std::thread second(start, &errors[1]);
    first.join();
    second.join();
    EXPECT_EQ(errors[0], "");
    EXPECT_EQ(errors[1], "");

    Database db(config);
    EXPECT_EQ(Recordset::open(db, "select count(*) from versione_schema").value(0).toInt(),
              data::latestSchemaVersion());
}

INSTANTIATE_TEST_SUITE_P(Engines, SharedStartTest, ::testing::Values(data::Engine::PostgreSQL),
                         test::engineName);

// Rows written in bulk: the planner knows how many there are at once, not when autovacuum comes (or, on
// SQLite, never).
class PlannerStatisticsTest : public test::SchemaTest
{
protected:
    double plannedRows(const char* table)
    {
        if (GetParam() == data::Engine::SQLite) {
            // A new database has no figures at all; then the first number of an index's figures is the rows
            // of its table.
            if (Recordset::open(db(), "select count(*) from sqlite_master where name = 'sqlite_stat1'")
                    .value(0)
                    .toInt() == 0)
                return 0;
            const Recordset stat =
                Recordset::open(db(), QStringLiteral("select stat from sqlite_stat1 where "
                                                     "tbl = '%1' and idx is not null limit 1")
                                          .arg(QLatin1String(table)));
            return stat.eof() ? 0 : stat.text("stat").section(QLatin1Char(' '), 0, 0).toDouble();
        }
        // The table the session sees: each test works in a schema of its own.
        return Recordset::open(db(), QStringLiteral("select reltuples from pg_class where oid = '%1'::regclass")
                                         .arg(QLatin1String(table)))
            .value(0)
            .toDouble();
    }
};

TEST_P(PlannerStatisticsTest, AfterABulkWriteThePlannerKnowsTheRowsOfTheTablesNamedOrOfAll)
{
    db().executeBound("insert into movimenti (numero, serie) with recursive n(i) as (select 1 union all "
                      "select i + 1 from n where i < 3000) select cast(i as text), '2026' from n");
    db().executeBound(
        "insert into med (codice) with recursive n(i) as (select 1 union all select i + 1 from n "
        "where i < 700) select 'ART' || i from n");
    EXPECT_LT(plannedRows("movimenti"), 1);
    data::refreshPlannerStatistics(db(), {"med"});
    EXPECT_EQ(plannedRows("med"), 700);
    EXPECT_LT(plannedRows("movimenti"), 1) << "only the table named";
    data::refreshPlannerStatistics(db());
    EXPECT_EQ(plannedRows("movimenti"), 3000);
    EXPECT_THROW(data::refreshPlannerStatistics(db(), {"med; drop table med"}), common::RuntimeError);
}

XV_INSTANTIATE_FOR_ENGINES(PlannerStatisticsTest);

// On SQLite the customers' names and the ceremonies have an index of their own, which must hold exactly
// the rows of the table: after the upgrade of an archive that had none, and after every write since.
class NameIndexTest : public test::SchemaTest
{
protected:
    int found(const char* phrase)
    {
        return Recordset::open(db(),
                               QStringLiteral("select count(*) from movimenti_nomi where movimenti_nomi "
                                              "match '\"%1\"'")
                                   .arg(QString::fromUtf8(phrase)))
            .value(0)
            .toInt();
    }
    // The index's own check against the table: it throws on any difference.
    void expectInStep()
    {
        EXPECT_NO_THROW(db().executeBound("insert into movimenti_nomi (movimenti_nomi, rank) "
                                          "values ('integrity-check', 1)"));
    }
};

TEST_P(NameIndexTest, AnArchiveUpgradedFindsItsNamesAndTheIndexFollowsEveryWrite)
{
    db().executeBound(
        "insert into movimenti (numero, serie, Nominativo, attrib04) values "
        "('1', '2024', 'ÈRCOLI NICOLÒ', 'Matrimonio'), ('2', '2025', 'Rossi Maria', 'Cresima')");
    // The archive as the version before the index left it.
    db().executeBound("drop table movimenti_nomi");
    for (const char* trigger : {"inserimento", "cancellazione", "modifica"})
        db().executeBound(QStringLiteral("drop trigger movimenti_nomi_%1").arg(QLatin1String(trigger)));
    db().executeBound("delete from versione_schema where versione = 6");

    EXPECT_EQ(data::migrate(db()), 5);
    EXPECT_GT(
        Recordset::open(db(), "select count(*) from sqlite_stat1 where tbl = 'movimenti'").value(0).toInt(),
        0)
        << "an archive with rows gets the tables' figures once";
    EXPECT_EQ(found("èrcoli"), 1);
    EXPECT_EQ(found("cresima"), 1);
    expectInStep();

    db().executeBound(
        "insert into movimenti (numero, serie, Nominativo) values ('3', '2026', 'Quagliarella Zoë')");
    db().executeBound("update movimenti set Nominativo = 'Verdi Carla' where numero = '2'");
    db().executeBound("update movimenti set totale = 5 where numero = '1'");
    db().executeBound("delete from movimenti where numero = '1'");
    EXPECT_EQ(found("zoë"), 1);
    EXPECT_EQ(found("rossi"), 0);
    EXPECT_EQ(found("verdi"), 1);
    EXPECT_EQ(found("èrcoli"), 0);
    EXPECT_EQ(found("cresima"), 1) << "the ceremony of a row whose name changed";
    expectInStep();
}

XV_INSTANTIATE_ON_SQLITE(NameIndexTest);

} // namespace
