// SPDX-License-Identifier: MIT
#pragma once

#include "lines/ArticleInfo.h"

#include <QString>
#include <QVector>

#include <functional>
#include <optional>

namespace xv::host {
class IHost;
}

namespace xv::lines {

// The agent of a supplier the article was bought from: whom a reorder is mailed to.
struct Agent
{
    QString name;
    QString email;
};

// What the article panel is handed, part by part, as each is read.
struct ArticlePanelView
{
    // No article has the code: nothing more is read.
    std::function<void()> missing;
    std::function<void(const Article&)> article;
    // Nothing when no supplier of the article is on record.
    std::function<void(const std::optional<Agent>&)> agent;
    // The newest delivery note and the newest sale, as movementText writes them.
    std::function<void(const QString&)> lastLoad;
    std::function<void(const QString&)> lastSale;
};

// Reads what the panel shows of an article in the order of the view's parts, handing each over as soon as
// it is read: a read that fails throws with the parts before it already shown. The agent comes from the
// shop's own query (setting "SQL_Informazioni_MED"), which may not run; the article it failed on stays on
// the panel.
void readArticlePanel(host::IHost& host, const QString& code, const ArticlePanelView& view);

// An article of one of the families the article menus list, by its category as stored.
struct CategoryArticle
{
    QString code;
    QString category;
};

// The articles of the favour boxes, cases and handkerchiefs families, in the order the table gives them.
QVector<CategoryArticle> readMenuArticles(host::IHost& host);

// The agents the reorder mail's menu lists: fields ragsoc and email, by name.
QString agentsListSql();

} // namespace xv::lines
