// SPDX-License-Identifier: MIT
#include "TestDatabase.h"

#include "host/Host.h"
#include "orders/ModuleSettings.h"

#include <gtest/gtest.h>

namespace {

using namespace xv;

class ModuleSettingsTest : public test::HostedTest
{
};

TEST_P(ModuleSettingsTest, StoredValuesAreReadFromTheirOwnStoresAndSections)
{
    m_host->SaveSetting("DOCS", "EMAIL_FROM", "ordini@example.it", "eKELA");
    m_host->SaveSetting("comm", "EMAIL_FROM", "sbagliato@example.it", "DOCS"); // not where it is read
    m_host->SaveSetting("comm", "tipomovimento", "CX", "DOCS");
    m_host->SaveSetting("comm", "sql", "vista_ordini", "DOCS");
    m_host->SaveSetting("comm", "checkControparti", "1", "DOCS");
    const orders::ModuleSettings s = orders::readModuleSettings(*m_host);
    EXPECT_EQ(s.EMAIL_FROM, "ordini@example.it");
    EXPECT_EQ(s.tipomovimento, "CX");
    EXPECT_EQ(s.sql, "vista_ordini");
    EXPECT_TRUE(s.checkControparti);
}

TEST_P(ModuleSettingsTest, SwitchesAreOnForAnyNonZeroNumber)
{
    const struct
    {
        const char* stored;
        bool on;
    } cases[] = {{"abc", false}, {"0", false}, {"2", true}, {"1abc", true}, {"0.0", false}, {"-1", true}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.stored);
        m_host->SaveSetting("comm", "checkAddRigaFlex", c.stored, "DOCS");
        EXPECT_EQ(orders::readModuleSettings(*m_host).checkAddRigaFlex, c.on);
    }
}

XV_INSTANTIATE_ON_SQLITE(ModuleSettingsTest);

} // namespace
