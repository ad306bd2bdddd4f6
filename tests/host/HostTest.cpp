// SPDX-License-Identifier: MIT
#include "ScriptedDialogs.h"
#include "TestDatabase.h"

#include "common/RuntimeError.h"
#include "data/Database.h"
#include "host/Host.h"
#include "data/Schema.h"
#include "data/TypeCodes.h"

#include <QFile>
#include <QSqlQuery>
#include <QWidget>

#include <gtest/gtest.h>

namespace {

using namespace xv;
using host::Host;
using data::TypeCode::Currency;
using data::TypeCode::Date;
using data::TypeCode::Double;
using data::TypeCode::Integer;
using data::TypeCode::Single;
using data::TypeCode::SmallInt;
using data::TypeCode::Text;

class HostTest : public test::HostedTest
{
protected:
    QString readLog() const
    {
        QFile file(m_host->logFilePath());
        return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
    }
};

TEST_P(HostTest, SettingsFallBackToTheDefaultAndIgnoreCase)
{
    EXPECT_EQ(h().GetSetting("comm", "sql", "mov_co", "DOCS"), "mov_co");
    EXPECT_EQ(h().GetSetting("comm", "sql_tEventi", "sql_tEventi", "DOCS"), "sql_tEventi");
    EXPECT_EQ(h().GetSetting("DOCS", "EMAIL_FROM", "", "eKELA"), "");

    h().SaveSetting("COMM", "CheckQtaMED", "1", "docs");
    EXPECT_EQ(h().GetSetting("comm", "checkqtamed", "0", "DOCS"), "1");
    // The same key in another store or section is another setting.
    EXPECT_EQ(h().GetSetting("comm", "CheckQtaMED", "0", "eKELA"), "0");
    EXPECT_EQ(h().GetSetting("mail", "CheckQtaMED", "0", "DOCS"), "0");

    h().SaveSetting("comm", "CheckQtaMED", "O'Hara", "DOCS");
    EXPECT_EQ(h().GetSetting("comm", "CheckQtaMED", "0", "DOCS"), "O'Hara");
}

TEST_P(HostTest, OpenSchemaListsTheSixtyOneOrderColumnsInOrderWithTheirTypeCodes)
{
    struct Expected
    {
        int column;
        const char* name;
        int type;
    };
    const Expected expected[] = {
        {0, "rowid", Integer},         {1, "tipogestione", Text},  {4, "riga", SmallInt},
        {7, "numero", Text},           {9, "serie", Text},         {10, "datadocumento", Date},
        {13, "oradal", Date},          {16, "codice_med", Text},   {17, "rowid_med", Integer},
        {32, "qta", Single},           {33, "quantita", Double},   {34, "prezzo", Currency},
        {35, "prezzo2", Currency},     {38, "codice_iva", SmallInt}, {41, "imposta", Currency},
        {42, "totale", Currency},      {43, "attrib00", Text},     {48, "attrib05", Date},
        {54, "statoriga", Text},       {57, "rowid_pagamento", Integer}, {60, "riferimenti", Text},
    };
    data::Recordset rs = h().OpenSchema(4, "movimenti");
    ASSERT_EQ(rs.recordCount(), 61);
    QStringList names;
    QVector<int> types;
    for (; !rs.eof(); rs.moveNext()) {
        names << rs.text("Column").toLower();
        types << rs.value("TYPE").toInt();
    }
    for (const Expected& e : expected) {
        SCOPED_TRACE(e.name);
        EXPECT_EQ(names[e.column], QString::fromLatin1(e.name));
        EXPECT_EQ(types[e.column], e.type);
    }
    // Every column has one of the codes the grid knows how to write.
    for (int type : types)
        EXPECT_TRUE(QVector<int>({SmallInt, Integer, Single, Double, Currency, Date, Text}).contains(type)) << type;

    EXPECT_THROW(h().OpenSchema(4, "nessuna_tabella"), common::RuntimeError);
    EXPECT_THROW(h().OpenSchema(1, "movimenti"), common::RuntimeError);
}

TEST_P(HostTest, LookupByTwoKeysMatchesBothKeysAndQuotesValues)
{
    data::Database& db = h().GetConnection();
    db.execute("insert into numeratori (codtipodoc, tipodocumento, serie, numero) values ('CO', 'COMM', '2025', 12)");
    db.execute("insert into numeratori (codtipodoc, tipodocumento, serie, numero) values ('CO', 'COMM', '2026', 41)");
    db.execute("insert into numeratori (codtipodoc, tipodocumento, serie, numero) values ('C''X', 'X', '2026', 7)");

    const QString id2026 = h().LookupByTwoKeys("numeratori", "codtipodoc", "serie", "CO", "2026", "idnumeratore");
    const QString id2025 = h().LookupByTwoKeys("numeratori", "codtipodoc", "serie", "CO", "2025", "idnumeratore");
    EXPECT_FALSE(id2026.isEmpty());
    EXPECT_NE(id2026, id2025);
    EXPECT_EQ(h().LookupByTwoKeys("numeratori", "idnumeratore", "serie", id2026, "2026", "numero"), "41");
    EXPECT_EQ(h().LookupByTwoKeys("numeratori", "codtipodoc", "serie", "C'X", "2026", "numero"), "7");
    EXPECT_EQ(h().LookupByTwoKeys("numeratori", "codtipodoc", "serie", "CO", "2024", "idnumeratore"), "");
}

TEST_P(HostTest, ReportErrorLogsTheErrorBeingHandledAndShowsIt)
{
    test::ScriptedDialogs dialogs;
    dialogs.expectMessage("Overflow");
    try {
        throw common::RuntimeError::overflow();
    } catch (...) {
        h().ReportError("aMAIN.Main", "Errore di prova", true);
    }
    ASSERT_EQ(dialogs.messages().size(), 1);
    EXPECT_EQ(dialogs.messages()[0].icon, host::Icon::Critical);
    EXPECT_EQ(dialogs.messages()[0].title, "xVELARIO");
    EXPECT_TRUE(dialogs.messages()[0].text.contains("aMAIN.Main"));

    try {
        throw common::RuntimeError::typeMismatch("abc");
    } catch (...) {
        h().ReportError("InitForm", "AZIONE: 3", false); // logged only: no box expected
    }
    const QStringList lines = readLog().split('\n', Qt::SkipEmptyParts);
    ASSERT_GE(lines.size(), 2);
    EXPECT_TRUE(lines[lines.size() - 2].contains("aMAIN.Main\tErrore di prova\tErrore 6: Overflow"));
    EXPECT_TRUE(lines.last().contains("InitForm\tAZIONE: 3\tErrore 13:"));
}

TEST_P(HostTest, NamesTitleAndColoursComeFromSettingsWithDefaults)
{
    EXPECT_EQ(h().GetAppTitle(), "xVELARIO");
    EXPECT_EQ(h().GetUserName(), "tester");
    EXPECT_EQ(h().GetStationName(), "BANCO1");
    EXPECT_EQ(h().GetCaptionDetail(), "tester@BANCO1");
    EXPECT_FALSE(h().GetDataName().isEmpty());
    h().SaveSetting("KELA", "NomeDati", "Negozio Centro", "eKELA");
    EXPECT_EQ(h().GetDataName(), "Negozio Centro");

    const host::Colour issued = h().GetIssuedColor();
    EXPECT_NE(issued, h().GetCollectedColor());
    h().SaveSetting("COLORI", "Emesso", "&HFF00", "eKELA");
    EXPECT_EQ(h().GetIssuedColor(), 0xFF00u);
    h().SaveSetting("COLORI", "Emesso", "12345", "eKELA");
    EXPECT_EQ(h().GetIssuedColor(), 12345u);
    h().SaveSetting("COLORI", "Emesso", "verde", "eKELA"); // a typo keeps the default
    EXPECT_EQ(h().GetIssuedColor(), issued);
    // The field being typed in must stand out from the white of the others.
    EXPECT_NE(h().GetActiveColor(), 0xFFFFFFu);
    h().SaveSetting("COLORI", "Attivo", "&HC0E0FF", "eKELA");
    EXPECT_EQ(h().GetActiveColor(), 0xC0E0FFu);

    EXPECT_EQ(h().GetStockThreshold(), 5);
    h().SaveSetting("PREDEFINITI", "SogliaScorta", "2.5", "eKELA");
    EXPECT_EQ(h().GetStockThreshold(), 2); // halves to even
    EXPECT_TRUE(h().GetDataPath().endsWith('/'));
    EXPECT_TRUE(h().FileExists(h().GetDataPath() + "test.db") || GetParam() == data::Engine::PostgreSQL);
    EXPECT_FALSE(h().FileExists(h().GetDataPath()));
}

TEST_P(HostTest, PadWidthCountsTheBlanksUpToTheWidth)
{
    EXPECT_EQ(h().PadWidth("ACCONTO: ", 20), 11);
    EXPECT_EQ(h().PadWidth(" = ", 3), 0);
    EXPECT_EQ(h().PadWidth("un testo più lungo di venti", 20), 0);
}

TEST_P(HostTest, RecordLockIsHeldAgainstOtherWorkstationsUntilReleased)
{
    auto options = database().hostOptions();
    options.stationName = "BANCO2";
    options.userName = "anna";
    Host second(options);
    ASSERT_TRUE(second.Initialize());

    EXPECT_EQ(h().LockRecord(101, 42, "movimenti"), "");
    EXPECT_EQ(h().LockRecord(101, 42, "movimenti"), ""); // the holder may lock again
    const QString held = second.LockRecord(7, 42, "movimenti");
    EXPECT_TRUE(held.contains("tester")) << held.toStdString();
    EXPECT_TRUE(held.contains("BANCO1")) << held.toStdString();
    EXPECT_EQ(second.LockRecord(7, 43, "movimenti"), "");

    EXPECT_TRUE(h().ReleaseRecordLock(101));
    EXPECT_EQ(second.LockRecord(8, 42, "movimenti"), "");
    second.ClearRecordLock();
    EXPECT_EQ(h().LockRecord(101, 42, "movimenti"), "");
}

TEST_P(HostTest, OperationsOfLaterWindowsFailLoudly)
{
    QString result;
    EXPECT_THROW(h().SendMail("a@example.com", "s", "b", "", "", result), common::RuntimeError);
    EXPECT_THROW(h().PrintReport("select * from movimenti"), common::RuntimeError);
}

TEST_P(HostTest, ASecondStartFindsTheSchemaInPlace)
{
    h().SaveSetting("comm", "sql", "vista", "DOCS");
    m_host.reset();
    Host again(database().hostOptions());
    ASSERT_TRUE(again.Initialize());
    EXPECT_EQ(data::schemaVersion(again.GetConnection()), data::latestSchemaVersion());
    EXPECT_EQ(again.GetSetting("comm", "sql", "mov_co", "DOCS"), "vista");
}

XV_INSTANTIATE_FOR_ENGINES(HostTest);

TEST(HostStartTest, InitializeFailsWithTheReasonInTheLogWhenTheDataCannotBeOpened)
{
    QTemporaryDir dir;
    host::HostOptions options;
    options.dataPath = dir.path();
    options.connectionText = "sqlite:" + dir.path() + "/manca/cartella/dati.db";
    Host h(options);
    EXPECT_FALSE(h.Initialize());
    QFile log(h.logFilePath());
    ASSERT_TRUE(log.open(QIODevice::ReadOnly));
    const QString text = QString::fromUtf8(log.readAll());
    EXPECT_TRUE(text.contains("Initialize")) << text.toStdString();
    EXPECT_TRUE(text.contains("dati.db")) << text.toStdString();
    EXPECT_THROW(h.GetConnection(), common::RuntimeError);
    // Settings stay readable, with their defaults, even without data.
    EXPECT_EQ(h.GetSetting("comm", "sql", "mov_co", "DOCS"), "mov_co");
}

TEST(HostStartTest, AFreshEmbeddedDatabaseIsFilledWithTheDemoShopOnce)
{
    QTemporaryDir dir;
    host::HostOptions options;
    options.dataPath = dir.path();
    {
        Host h(options);
        ASSERT_TRUE(h.Initialize());
        QSqlQuery q = h.GetConnection().execute("select count(*) from mov_co");
        ASSERT_TRUE(q.next());
        EXPECT_GT(q.value(0).toInt(), 50);
        h.GetConnection().execute("delete from movimenti where numero='1'");
    }
    Host again(options);
    ASSERT_TRUE(again.Initialize());
    QSqlQuery q = again.GetConnection().execute("select count(*) from movimenti where numero='1'");
    ASSERT_TRUE(q.next());
    EXPECT_EQ(q.value(0).toInt(), 0) << "the demo data must not be written again into an existing database";
}

TEST(HostStartTest, AConfigurationFileNamesTheDatabase)
{
    QTemporaryDir dir;
    {
        QFile conf(dir.path() + "/xvelario.conf");
        ASSERT_TRUE(conf.open(QIODevice::WriteOnly));
        conf.write(QString("[database]\nconnection=sqlite:" + dir.path() + "/negozio.db\n").toUtf8());
    }
    host::HostOptions options;
    options.dataPath = dir.path();
    options.fillDemoData = false;
    Host h(options);
    ASSERT_TRUE(h.Initialize());
    EXPECT_TRUE(QFile::exists(dir.path() + "/negozio.db"));
    EXPECT_EQ(h.GetDataName(), "negozio");
}

TEST(ColourTest, ParsesTheSuitesHexadecimalAndDecimalForms)
{
    EXPECT_EQ(host::parseColour("&HFF"), 0xFFu);
    EXPECT_EQ(host::parseColour("&hFFFFFF&"), 0xFFFFFFu);
    EXPECT_EQ(host::parseColour("65280"), 0xFF00u);
    EXPECT_FALSE(host::parseColour("&H1000000"));
    EXPECT_FALSE(host::parseColour("rosso"));
    EXPECT_FALSE(host::parseColour(""));
}

} // namespace

namespace {

TEST(ConnectionConfigTest, ReadsTheEmbeddedFileOrTheServerAndRefusesWhatItCannotUse)
{
    const auto embedded = xv::data::ConnectionConfig::fromText("sqlite:/tmp/negozio.db");
    EXPECT_EQ(embedded.engine, xv::data::Engine::SQLite);
    EXPECT_EQ(embedded.sqlitePath, "/tmp/negozio.db");
    const auto server = xv::data::ConnectionConfig::fromText("host=192.0.2.1 port=5433 user=cassa schema=negozio_1");
    EXPECT_EQ(server.engine, xv::data::Engine::PostgreSQL);
    EXPECT_EQ(server.port, 5433);
    EXPECT_EQ(server.databaseName, "cassa") << "the user's database when none is named";
    EXPECT_EQ(server.schema, "negozio_1");
    for (const char* bad : {"host=x schema=a;drop", "host=x schema=\"q\"", "host=x colore=blu", "nonsense"})
        EXPECT_THROW(xv::data::ConnectionConfig::fromText(bad), xv::common::RuntimeError) << bad;
}

} // namespace
