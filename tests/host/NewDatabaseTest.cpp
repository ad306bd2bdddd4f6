// SPDX-License-Identifier: MIT
#include "TestDatabase.h"

#include "data/Database.h"
#include "host/Host.h"

#include <QDate>
#include <QFile>
#include <QSqlQuery>

#include <gtest/gtest.h>

namespace {

using namespace xv;

// A database the shop named: created on first start as its own, never with the demo shop.
class NewDatabaseTest : public test::EngineTest
{
protected:
    host::HostOptions shopOptions()
    {
        host::HostOptions options = database().hostOptions();
        options.fillDemoData = true;
        options.startCounters = true;
        return options;
    }

    void expectEmptyWithThisYearsOrderCounter(host::Host& h)
    {
        data::Database& db = h.GetConnection();
        for (const char* table : {"movimenti", "med", "controparti", "Produzione"}) {
            QSqlQuery q = db.executeBound(QStringLiteral("select count(*) from %1").arg(table));
            ASSERT_TRUE(q.next());
            EXPECT_EQ(q.value(0).toInt(), 0) << table;
        }
        QSqlQuery q = db.executeBound("select codtipodoc, tipodocumento, serie, numero from numeratori");
        QStringList counters;
        while (q.next())
            counters << QStringList{q.value(0).toString(), q.value(1).toString(), q.value(2).toString(),
                                    q.value(3).toString()}
                            .join(' ');
        EXPECT_EQ(counters, QStringList{QStringLiteral("CO COMM %1 0").arg(QDate::currentDate().year())});
    }
};

TEST_P(NewDatabaseTest, ADatabaseNamedInTheEnvironmentStartsEmptyWithThisYearsOrderCounterAndKeepsItsData)
{
    {
        host::Host h(shopOptions());
        ASSERT_TRUE(h.Initialize());
        expectEmptyWithThisYearsOrderCounter(h);
        h.SaveSetting("comm", "sql", "vista", "DOCS");
    }
    host::Host again(shopOptions());
    ASSERT_TRUE(again.Initialize());
    expectEmptyWithThisYearsOrderCounter(again); // a second start adds nothing and keeps what was there
    EXPECT_EQ(again.GetSetting("comm", "sql", "mov_co", "DOCS"), "vista");
}

TEST_P(NewDatabaseTest, ADatabaseNamedInTheConfigurationFileStartsEmptyWithThisYearsOrderCounter)
{
    host::HostOptions options = shopOptions();
    {
        QFile conf(options.dataPath + "/xvelario.conf");
        ASSERT_TRUE(conf.open(QIODevice::WriteOnly));
        conf.write(QString("[database]\nconnection=" + *options.connectionText + "\n").toUtf8());
    }
    options.connectionText.reset();
    host::Host h(options);
    ASSERT_TRUE(h.Initialize());
    expectEmptyWithThisYearsOrderCounter(h);
    EXPECT_FALSE(QFile::exists(options.dataPath + "/xvelario.db"));
}

XV_INSTANTIATE_FOR_ENGINES(NewDatabaseTest);

} // namespace
