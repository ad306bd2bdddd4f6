// SPDX-License-Identifier: MIT
#include "ScriptedDialogs.h"
#include "TestDatabase.h"

#include "common/RuntimeError.h"
#include "data/Database.h"
#include "data/TypeCodes.h"
#include "host/Host.h"

#include <QFile>
#include <QSqlQuery>

#include <gtest/gtest.h>

namespace {

using namespace xv;
using host::Host;
namespace TypeCode = data::TypeCode;

class HostTest : public test::HostedTest
{
protected:
    // Another workstation (or the suite's configuration) changing a stored value behind this host.
    void storeElsewhere(const char* store, const char* section, const char* key, const char* value)
    {
        data::Database other(database().config());
        other.executeBound("delete from impostazioni where archivio=? and sezione=? and chiave=?",
                           {store, section, key});
        other.executeBound("insert into impostazioni (archivio, sezione, chiave, valore) values (?,?,?,?)",
                           {store, section, key, value});
    }

    // What must still work once the database has failed under the host: the error being handled is
    // shown with the built-in title and logged, and settings answer their defaults.
    void expectTheErrorPathToSurvive()
    {
        test::ScriptedDialogs dialogs;
        dialogs.expectMessage("Origine: Documento_Salva");
        try {
            h().GetConnection().execute("select count(*) from impostazioni");
            FAIL() << "the failed database answered";
        } catch (...) {
            EXPECT_NO_THROW(h().ReportError("Documento_Salva", "AZIONE: 1", true));
        }
        ASSERT_EQ(dialogs.messages().size(), 1);
        EXPECT_EQ(dialogs.messages()[0].title, "xVELARIO");
        EXPECT_EQ(dialogs.messages()[0].icon, host::Icon::Critical);
        EXPECT_EQ(h().GetSetting("comm", "sql", "mov_co", "DOCS"), "mov_co");
        EXPECT_EQ(h().GetAppTitle(), "xVELARIO");
        EXPECT_EQ(h().GetStockThreshold(), 5);
        const QString log = test::logOf(h());
        EXPECT_TRUE(log.contains("Documento_Salva\tAZIONE: 1\tErrore ")) << log.toStdString();
        EXPECT_TRUE(log.contains("\tGetSetting\teKELA/KELA/AppTitle\t")) << log.toStdString();
    }
};

TEST_P(HostTest, ASettingIsKeyedByStoreSectionAndKeyInAnyCase)
{
    EXPECT_EQ(h().GetSetting("comm", "sql", "mov_co", "DOCS"), "mov_co");
    h().SaveSetting("COMM", "CheckQtaMED", "O'Hara", "docs");
    EXPECT_EQ(h().GetSetting("comm", "checkqtamed", "0", "DOCS"), "O'Hara");
    EXPECT_EQ(h().GetSetting("comm", "CheckQtaMED", "0", "eKELA"), "0");
    EXPECT_EQ(h().GetSetting("mail", "CheckQtaMED", "0", "DOCS"), "0");

    // Rows written elsewhere in another case are found, and replaced rather than doubled.
    storeElsewhere("eKELA", "PREDEFINITI", "SogliaScorta", "8");
    h().RefreshSettings();
    EXPECT_EQ(h().GetStockThreshold(), 8);
    h().SaveSetting("predefiniti", "sogliascorta", "3", "ekela");
    h().RefreshSettings();
    EXPECT_EQ(h().GetStockThreshold(), 3) << "the old row in another case must not come back";
}

TEST_P(HostTest, AValueChangedElsewhereIsSeenAfterRefreshAndASavedOneAtOnce)
{
    storeElsewhere("ekela", "colori", "emesso", "&HFF00");
    EXPECT_EQ(h().GetIssuedColor(), 0xFF00u);
    storeElsewhere("ekela", "colori", "emesso", "255");
    EXPECT_EQ(h().GetIssuedColor(), 0xFF00u) << "kept until the settings are read again";
    h().RefreshSettings();
    EXPECT_EQ(h().GetIssuedColor(), 255u);
    h().SaveSetting("COLORI", "Emesso", "&HFF0000", "eKELA");
    EXPECT_EQ(h().GetIssuedColor(), 0xFF0000u);
    h().RefreshSettings();
    EXPECT_EQ(h().GetIssuedColor(), 0xFF0000u) << "the saved value is the stored one";
}

TEST_P(HostTest, ReadSettingsCostNoQueryAndSurviveTheirTableGoing)
{
    storeElsewhere("ekela", "colori", "ritirato", "&H00FF00");
    storeElsewhere("docs", "comm", "sql", "vista_commissioni");
    EXPECT_EQ(h().GetCollectedColor(), 0xFF00u);
    h().GetConnection().executeBound("drop table impostazioni");
    EXPECT_EQ(h().GetCollectedColor(), 0xFF00u);
    EXPECT_EQ(h().GetSetting("comm", "sql", "mov_co", "DOCS"), "vista_commissioni");
    EXPECT_EQ(h().GetSetting("comm", "assente", "predefinito", "DOCS"), "predefinito");
    EXPECT_FALSE(test::logOf(h()).contains("GetSetting")) << "no query ran, so none failed";
    h().RefreshSettings(); // fails: what was read stays, and the log says why
    EXPECT_EQ(h().GetCollectedColor(), 0xFF00u);
    EXPECT_TRUE(test::logOf(h()).contains("RefreshSettings"));
}

TEST_P(HostTest, AClosedConnectionLeavesTheErrorPathWorking)
{
    h().GetConnection().handle().close();
    expectTheErrorPathToSurvive();
}

TEST_P(HostTest, ADroppedSettingsTableLeavesTheErrorPathWorking)
{
    h().GetConnection().executeBound("drop table impostazioni");
    expectTheErrorPathToSurvive();
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
    EXPECT_TRUE(dialogs.messages()[0].text.contains("aMAIN.Main"));
    try {
        throw common::RuntimeError::typeMismatch("abc");
    } catch (...) {
        h().ReportError("InitForm", "AZIONE: 3", false); // logged only: no box expected
    }
    const QStringList lines = test::logOf(h()).split('\n', Qt::SkipEmptyParts);
    ASSERT_GE(lines.size(), 2);
    EXPECT_TRUE(lines[lines.size() - 2].contains("aMAIN.Main\tErrore di prova\tErrore 6: Overflow"));
    EXPECT_TRUE(lines.last().contains("InitForm\tAZIONE: 3\tErrore 13:"));
}

TEST_P(HostTest, OpenSchemaListsTheSixtyOneOrderColumnsInOrderWithTheirTypeCodes)
{
    const std::tuple<int, const char*, int> expected[] = {
        {0, "rowid", TypeCode::Integer},    {4, "riga", TypeCode::SmallInt},
        {9, "serie", TypeCode::Text},       {10, "datadocumento", TypeCode::Date},
        {32, "qta", TypeCode::Single},      {33, "quantita", TypeCode::Double},
        {34, "prezzo", TypeCode::Currency}, {60, "riferimenti", TypeCode::Text}};
    data::Recordset rs = h().OpenSchema(4, "movimenti");
    ASSERT_EQ(rs.recordCount(), 61);
    QStringList names;
    QVector<int> types;
    for (; !rs.eof(); rs.moveNext()) {
        names << rs.text("Column").toLower();
        types << rs.value("TYPE").toInt();
    }
    for (const auto& [column, name, type] : expected) {
        EXPECT_EQ(names[column], QString::fromLatin1(name));
        EXPECT_EQ(types[column], type) << name;
    }
    EXPECT_THROW(h().OpenSchema(4, "nessuna_tabella"), common::RuntimeError);
    EXPECT_THROW(h().OpenSchema(1, "movimenti"), common::RuntimeError);
}

TEST_P(HostTest, LookupByTwoKeysMatchesBothKeysAndQuotesValues)
{
    data::Database& db = h().GetConnection();
    db.execute("insert into numeratori (codtipodoc, tipodocumento, serie, numero) values ('CO', 'COMM', "
               "'2025', 12), "
               "('CO', 'COMM', '2026', 41), ('C''X', 'X', '2026', 7)");
    const QString id2026 =
        h().LookupByTwoKeys("numeratori", "codtipodoc", "serie", "CO", "2026", "idnumeratore");
    EXPECT_FALSE(id2026.isEmpty());
    EXPECT_EQ(h().LookupByTwoKeys("numeratori", "idnumeratore", "serie", id2026, "2026", "numero"), "41");
    EXPECT_EQ(h().LookupByTwoKeys("numeratori", "codtipodoc", "serie", "C'X", "2026", "numero"), "7");
    EXPECT_EQ(h().LookupByTwoKeys("numeratori", "codtipodoc", "serie", "CO", "2024", "idnumeratore"), "");
}

TEST_P(HostTest, NamesColoursAndTheThresholdComeFromSettingsWithDefaults)
{
    EXPECT_EQ(h().GetCaptionDetail(), "tester@BANCO1");
    h().SaveSetting("KELA", "NomeDati", "Negozio Centro", "eKELA");
    EXPECT_EQ(h().GetDataName(), "Negozio Centro");
    const host::Colour issued = h().GetIssuedColor();
    EXPECT_NE(issued, h().GetCollectedColor());
    h().SaveSetting("COLORI", "Emesso", "verde", "eKELA"); // a typo keeps the default
    EXPECT_EQ(h().GetIssuedColor(), issued);
    EXPECT_NE(h().GetActiveColor(), 0xFFFFFFu)
        << "the field typed in stands out from the white of the others";
    h().SaveSetting("COLORI", "Attivo", "&HC0E0FF", "eKELA");
    EXPECT_EQ(h().GetActiveColor(), 0xC0E0FFu);
    h().SaveSetting("PREDEFINITI", "SogliaScorta", "2.5", "eKELA");
    EXPECT_EQ(h().GetStockThreshold(), 2); // halves to even
    QFile picture(h().GetDataPath() + "intestazione.jpg");
    ASSERT_TRUE(picture.open(QIODevice::WriteOnly));
    picture.close();
    EXPECT_TRUE(h().FileExists(picture.fileName()));
    EXPECT_FALSE(h().FileExists(h().GetDataPath() + "manca.jpg"));
    EXPECT_FALSE(h().FileExists(h().GetDataPath())) << "a folder is no file";
    EXPECT_EQ(h().PadWidth("ACCONTO: ", 20), 11);
    EXPECT_EQ(h().PadWidth(" = ", 3), 0);
    EXPECT_EQ(h().PadWidth("un testo più lungo di venti", 20), 0);
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
    const QString log = test::logOf(h);
    EXPECT_TRUE(log.contains("Initialize") && log.contains("dati.db")) << log.toStdString();
    EXPECT_THROW(h.GetConnection(), common::RuntimeError);
    // Settings stay readable, with their defaults, even without data.
    EXPECT_EQ(h.GetSetting("comm", "sql", "mov_co", "DOCS"), "mov_co");
}

TEST(HostStartTest, AFreshEmbeddedDatabaseIsFilledWithTheDemoShopOnceAndOnlyWhenStartUpHandsOneIn)
{
    const auto count = [](Host& h, const QString& sql) {
        QSqlQuery q = h.GetConnection().execute(sql);
        return q.next() ? q.value(0).toInt() : -1;
    };
    {
        QTemporaryDir dir;
        host::HostOptions options;
        options.dataPath = dir.path();
        Host h(options);
        ASSERT_TRUE(h.Initialize());
        EXPECT_EQ(count(h, "select count(*) from controparti"), 0) << "no demo shop was handed in";
    }
    int fills = 0;
    host::setDemoShopFiller([&fills](data::Database& db) {
        ++fills;
        db.execute("insert into controparti (ragsoc) values ('Cliente di prova')");
    });
    QTemporaryDir dir;
    host::HostOptions options;
    options.dataPath = dir.path();
    {
        Host h(options);
        ASSERT_TRUE(h.Initialize());
        EXPECT_EQ(count(h, "select count(*) from controparti"), 1);
        h.GetConnection().execute("delete from controparti");
    }
    Host again(options);
    ASSERT_TRUE(again.Initialize());
    host::setDemoShopFiller({});
    EXPECT_EQ(fills, 1) << "the demo data must not be written again into an existing database";
    EXPECT_EQ(count(again, "select count(*) from controparti"), 0);
}

TEST(ColourTest, ParsesTheSuitesHexadecimalAndDecimalForms)
{
    EXPECT_EQ(host::parseColour("&HFF"), 0xFFu);
    EXPECT_EQ(host::parseColour("&hFFFFFF&"), 0xFFFFFFu);
    EXPECT_EQ(host::parseColour("65280"), 0xFF00u);
    for (const char* bad : {"&H1000000", "rosso", ""})
        EXPECT_FALSE(host::parseColour(bad)) << bad;
}

TEST(ConnectionConfigTest, ReadsTheEmbeddedFileOrTheServerAndRefusesWhatItCannotUse)
{
    const auto embedded = data::ConnectionConfig::fromText("sqlite:/tmp/negozio.db");
    EXPECT_EQ(embedded.engine, data::Engine::SQLite);
    EXPECT_EQ(embedded.sqlitePath, "/tmp/negozio.db");
    const auto server =
        data::ConnectionConfig::fromText("host=192.0.2.1 port=5433 user=cassa schema=negozio_1");
    EXPECT_EQ(server.engine, data::Engine::PostgreSQL);
    EXPECT_EQ(server.port, 5433);
    EXPECT_EQ(server.databaseName, "cassa") << "the user's database when none is named";
    EXPECT_EQ(server.schema, "negozio_1");
    for (const char* bad : {"host=x schema=a;drop", "host=x schema=\"q\"", "host=x colore=blu", "nonsense"})
        EXPECT_THROW(data::ConnectionConfig::fromText(bad), common::RuntimeError) << bad;
}

} // namespace
