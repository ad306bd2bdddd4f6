// SPDX-License-Identifier: MIT
#include "TestDatabase.h"

#include "common/Money.h"
#include "common/RuntimeError.h"
#include "data/Database.h"
#include "data/Recordset.h"
#include "data/Schema.h"
#include "data/SqlText.h"

#include <gtest/gtest.h>

#include <QScopeGuard>

#include <memory>
#include <utility>

namespace {

using namespace xv;
using data::Recordset;
using data::sqlEscape;

// Sets a variable of the environment for one test, as a workstation could start with it.
[[nodiscard]] auto setEnvironment(const char* name, const QByteArray& value)
{
    const bool had = qEnvironmentVariableIsSet(name);
    const QByteArray old = qgetenv(name);
    qputenv(name, value);
    return qScopeGuard([=] { had ? qputenv(name, old) : qunsetenv(name); });
}

class StoredValuesTest : public test::EngineTest
{
protected:
    std::unique_ptr<data::Database> connect()
    {
        auto db = std::make_unique<data::Database>(database().config());
        data::migrate(*db);
        return db;
    }
};

TEST_P(StoredValuesTest, DatesComeBackUnchangedWhenTheServerCountsTimeInAnotherZone)
{
    const auto zone = setEnvironment("PGTZ", "Pacific/Kiritimati"); // fourteen hours ahead of UTC
    const auto db = connect();
    const QDateTime midnight(QDate(2026, 2, 28), QTime(0, 0));
    const QDateTime current = QDateTime::currentDateTime();
    const QDateTime now(current.date(),
                        QTime(current.time().hour(), current.time().minute(), current.time().second()));

    Recordset table = Recordset::openTable(*db, "movimenti");
    table.addNew();
    table.setValue("numero", "1");
    table.setValue("datadocumento", midnight);
    table.setValue("datareg", now);
    table.setValue("attrib05", QDate(2026, 2, 28));
    table.update();
    db->execute("update movimenti set oradal=now");

    Recordset rs = Recordset::open(*db, "select * from movimenti");
    EXPECT_EQ(rs.dateTime("datadocumento"), midnight);
    EXPECT_EQ(rs.dateTime("datareg"), now);
    EXPECT_EQ(rs.dateTime("attrib05"), midnight);
    EXPECT_LE(std::abs(rs.dateTime("oradal").secsTo(QDateTime::currentDateTime())), 60)
        << "the statement's now is the workstation's: " << rs.text("oradal").toStdString();
    EXPECT_EQ(
        Recordset::open(*db, "select count(*) from movimenti where datadocumento=DateValue('28/02/2026')")
            .value(0)
            .toInt(),
        1);
}

TEST_P(StoredValuesTest, ABackslashBeforeAQuoteIsKeptLiterally)
{
    const auto options = setEnvironment("PGOPTIONS", "-c standard_conforming_strings=off");
    const auto db = connect();
    const QString name = QStringLiteral("D\\'Angelo \\ Carla\\");
    db->execute("insert into controparti (ragsoc) values ('" + sqlEscape(name) + "')");
    db->executeBound("insert into controparti (ragsoc) values (?)", {name});

    Recordset rs =
        Recordset::open(*db, "select ragsoc from controparti where ragsoc='" + sqlEscape(name) + "'");
    ASSERT_EQ(rs.recordCount(), 2);
    EXPECT_EQ(rs.text("ragsoc"), name);
    rs.moveNext();
    EXPECT_EQ(rs.text("ragsoc"), name);
}

TEST_P(StoredValuesTest, TextIsRefusedWhereADateOrAnAmountIsWritten)
{
    const auto db = connect();
    const std::pair<const char*, const char16_t*> refused[] = {
        {"datadocumento", u"23/11/2026"}, {"attrib05", u"domani"}, {"Datadal", u"2026-11-23 25:00"},
        {"prezzo", u"12,34 \u20ac"},      {"totale", u"12,34"},    {"prezzo2", u""},
    };
    for (const auto& [column, text] : refused) {
        SCOPED_TRACE(column);
        Recordset table = Recordset::openTable(*db, "movimenti");
        table.addNew();
        table.setValue("numero", "1");
        table.setValue(column, QString::fromUtf16(text));
        try {
            table.update();
            ADD_FAILURE() << "the text must be refused";
        } catch (const common::RuntimeError& e) {
            EXPECT_EQ(e.number(), 13);
            EXPECT_TRUE(e.description().contains(column, Qt::CaseInsensitive))
                << e.description().toStdString();
        }
    }
    EXPECT_EQ(Recordset::open(*db, "select count(*) from movimenti").value(0).toInt(), 0);

    // What the columns themselves give back is taken.
    Recordset table = Recordset::openTable(*db, "movimenti");
    table.addNew();
    table.setValue("datadocumento", "2026-11-23 10:30:00");
    table.setValue("prezzo", "12.3400");
    table.update();
    Recordset rs = Recordset::open(*db, "select datadocumento, prezzo from movimenti");
    EXPECT_EQ(rs.dateTime("datadocumento"), QDateTime(QDate(2026, 11, 23), QTime(10, 30)));
    EXPECT_EQ(rs.money("prezzo"), common::Money::fromRaw(123400));
}

XV_INSTANTIATE_FOR_ENGINES(StoredValuesTest);

} // namespace
