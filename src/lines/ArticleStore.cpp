// SPDX-License-Identifier: MIT
#include "ArticleStore.h"

#include "data/Recordset.h"
#include "host/HostInterface.h"

namespace xv::lines {

namespace {

const QString kMenuArticlesSql = QStringLiteral(
    "SELECT CODICE,categoria FROM MED WHERE CATEGORIA in ('BOMBONIERE','ASTUCCI','FAZZOLETTI')");

const QString kAgentsSql = QStringLiteral(
    "select distinct ragsoc,email from controparti where tipocontroparte='A' order by ragsoc asc");

} // namespace

void readArticlePanel(host::IHost& host, const QString& code, const ArticlePanelView& view)
{
    const std::optional<Article> article = readArticle(host.OpenRecordset(articleSql(code), -1, 0));
    if (!article) {
        view.missing();
        return;
    }
    view.article(*article);

    const QString agentQuery = host.GetSetting(QStringLiteral("COMM"), QStringLiteral("SQL_Informazioni_MED"),
                                               kDefaultAgentSql, QStringLiteral("DOCS"));
    const data::Recordset rs = host.OpenRecordset(agentSql(agentQuery, code), -1, 0);
    std::optional<Agent> agent;
    if (!rs.eof())
        agent = Agent{rs.text(QStringLiteral("ragsoc")), rs.text(QStringLiteral("Email"))};
    view.agent(agent);

    view.lastLoad(movementText(host.OpenRecordset(lastLoadSql(code), -1, 0)));
    view.lastSale(movementText(host.OpenRecordset(lastSaleSql(code), -1, 0)));
}

QVector<CategoryArticle> readMenuArticles(host::IHost& host)
{
    QVector<CategoryArticle> articles;
    for (data::Recordset rs = host.OpenRecordset(kMenuArticlesSql); !rs.eof(); rs.moveNext())
        articles.append({rs.text(QStringLiteral("codice")), rs.text(QStringLiteral("categoria"))});
    return articles;
}

QString agentsListSql()
{
    return kAgentsSql;
}

} // namespace xv::lines
