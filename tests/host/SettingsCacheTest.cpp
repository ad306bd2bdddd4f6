// SPDX-License-Identifier: MIT
#include "TestDatabase.h"

#include "data/Database.h"
#include "host/Host.h"

#include <QFile>

#include <gtest/gtest.h>

namespace {

using namespace xv;

class SettingsCacheTest : public test::HostedTest
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
    QString readLog() const
    {
        QFile file(m_host->logFilePath());
        return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
    }
};

TEST_P(SettingsCacheTest, AValueChangedElsewhereIsSeenAfterRefreshAndASavedOneAtOnce)
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

TEST_P(SettingsCacheTest, RowsWrittenInAnyCaseAreFoundAndReplacedWithoutRegardToCase)
{
    storeElsewhere("eKELA", "PREDEFINITI", "SogliaScorta", "8");
    EXPECT_EQ(h().GetStockThreshold(), 8);
    EXPECT_EQ(h().GetSetting("predefiniti", "SOGLIASCORTA", "5", "EKELA"), "8");

    h().SaveSetting("predefiniti", "sogliascorta", "3", "ekela");
    h().RefreshSettings();
    EXPECT_EQ(h().GetStockThreshold(), 3) << "the old row in another case must not come back";
}

TEST_P(SettingsCacheTest, ReadSettingsCostNoQueryAndSurviveTheirTableGoing)
{
    storeElsewhere("ekela", "colori", "ritirato", "&H00FF00");
    storeElsewhere("docs", "comm", "sql", "vista_commissioni");
    EXPECT_EQ(h().GetCollectedColor(), 0xFF00u);

    h().GetConnection().executeBound("drop table impostazioni");
    EXPECT_EQ(h().GetCollectedColor(), 0xFF00u);
    EXPECT_EQ(h().GetSetting("comm", "sql", "mov_co", "DOCS"), "vista_commissioni");
    EXPECT_EQ(h().GetSetting("comm", "assente", "predefinito", "DOCS"), "predefinito");
    EXPECT_FALSE(readLog().contains("GetSetting")) << "no query ran, so none failed";

    h().RefreshSettings(); // fails: what was read stays, and the log says why
    EXPECT_EQ(h().GetCollectedColor(), 0xFF00u);
    EXPECT_TRUE(readLog().contains("RefreshSettings")) << readLog().toStdString();
}

XV_INSTANTIATE_FOR_ENGINES(SettingsCacheTest);

} // namespace
