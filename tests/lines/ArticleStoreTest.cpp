// SPDX-License-Identifier: MIT
#include "TestDatabase.h"

#include "lines/ArticleStore.h"

#include <gtest/gtest.h>

namespace {

using namespace xv;

class ArticleStoreTest : public test::HostedTest
{
};

TEST_P(ArticleStoreTest, TheAgentQueryRunsOnlyForAKnownArticleAndOneThatFailsLeavesTheArticleHandedOver)
{
    h().GetConnection().executeBound("insert into med (codice, descrizione, prezzo_vendita) values (?, ?, ?)",
                                     {"BOM001", "Cuore d'argento", "12.50"});
    h().SaveSetting("COMM", "SQL_Informazioni_MED", "select ragsoc from tabella_che_non_esiste where 1=1",
                    "DOCS");
    QStringList parts;
    const lines::ArticlePanelView view{
        [&] { parts << "missing"; },
        [&](const lines::Article& article) { parts << "article " + article.descrizione; },
        [&](const std::optional<lines::Agent>&) { parts << "agent"; },
        [&](const QString&) { parts << "last load"; },
        [&](const QString&) { parts << "last sale"; },
    };

    lines::readArticlePanel(h(), "XYZ", view);
    EXPECT_EQ(parts, QStringList{"missing"});

    parts.clear();
    EXPECT_ANY_THROW(lines::readArticlePanel(h(), "BOM001", view));
    EXPECT_EQ(parts, QStringList{"article Cuore d'argento"});
}

XV_INSTANTIATE_FOR_ENGINES(ArticleStoreTest);

} // namespace
