// SPDX-License-Identifier: MIT
#include "ArticleInfo.h"

#include "GridColumns.h"

#include "common/Conversions.h"
#include "common/Dates.h"
#include "data/Recordset.h"
#include "data/SqlText.h"

#include <QLocale>
#include <QStringList>

namespace xv::lines {

namespace {

const QString kRealStock = QStringLiteral("- QUANTITA' A MAGAZZINO    : ");
const QString kOrdered = QStringLiteral("- QUANTITA' IN COMMISSIONE : ");
const QString kMissing = QStringLiteral("- QUANTITA' DA ORDINARE    : ");

// Codes are compared without the blanks around them, and only blanks: a tab is part of a code.
QString withoutBlanks(const QString& text)
{
    qsizetype first = 0;
    qsizetype last = text.size();
    while (first < last && text.at(first) == u' ')
        ++first;
    while (last > first && text.at(last - 1) == u' ')
        --last;
    return text.mid(first, last - first);
}

// Purchases are the suppliers' delivery notes; every other movement of an article is a sale.
QString movementSql(const QString& code, const char* condition)
{
    return QStringLiteral("select qta, datadocumento from doc_righemov where codice='") +
           data::sqlEscape(code) + QStringLiteral("' and ") + QLatin1String(condition) +
           QStringLiteral(" order by datadocumento desc, rowid desc limit 1");
}

} // namespace

const QString kDefaultAgentSql = QStringLiteral(
    "SELECT distinct agente.RAGSOC,agente.EMAIL FROM controparti as fornitore,controparti as agente,"
    "doc_righemov as righe where fornitore.codagente=agente.rowid and "
    "fornitore.rowid=righe.rowid_controparte");

QString articleSql(const QString& code)
{
    return QStringLiteral("SELECT rowid,descrizione,prezzo_vendita,quantita_reale,quantita_disponibile,"
                          "quantita_ordinata,quantita_impegnata FROM med WHERE codice='") +
           data::sqlEscape(code) + QLatin1Char('\'');
}

QString agentSql(const QString& settingSql, const QString& code)
{
    return settingSql + QStringLiteral(" and righe.codice='") + data::sqlEscape(code) + QLatin1Char('\'');
}

QString lastLoadSql(const QString& code)
{
    return movementSql(code, "tipomovimento='CF'");
}

QString lastSaleSql(const QString& code)
{
    return movementSql(code, "tipomovimento<>'CF'");
}

std::optional<Article> readArticle(const data::Recordset& rs)
{
    if (rs.eof())
        return std::nullopt;
    Article article;
    article.rowid = rs.text(QStringLiteral("rowid"));
    article.descrizione = rs.text(QStringLiteral("descrizione"));
    article.prezzo = rs.money(QStringLiteral("prezzo_vendita"));
    article.quantitaReale = rs.text(QStringLiteral("quantita_reale"));
    article.quantitaDisponibile = rs.isNull(QStringLiteral("quantita_disponibile"))
                                      ? QStringLiteral("0")
                                      : rs.text(QStringLiteral("quantita_disponibile"));
    article.quantitaOrdinata = rs.text(QStringLiteral("quantita_ordinata"));
    article.quantitaImpegnata = rs.text(QStringLiteral("quantita_impegnata"));
    return article;
}

QString movementText(const data::Recordset& rs)
{
    if (rs.eof())
        return {};
    const QString quantity = rs.text(QStringLiteral("qta"));
    const QDate day = rs.dateTime(QStringLiteral("datadocumento")).date();
    if (!day.isValid())
        return quantity;
    return quantity + QStringLiteral(" del ") + common::shortDate(day);
}

bool isStockLow(const QString& quantityText, qint16 threshold)
{
    return common::numericValue(quantityText) <= threshold;
}

host::Colour stockColour(const QString& quantityText, qint16 threshold)
{
    return isStockLow(quantityText, threshold) ? kStockLow : kStockGood;
}

StockCheck checkStock(const QString& checkSetting, const QString& quantityText, const QString& realStockText)
{
    StockCheck result;
    if (quantityText.isEmpty() || common::numericValue(checkSetting) != 1.0)
        return result;
    const double quantity = common::numericValue(quantityText);
    if (realStockText.isEmpty() && quantity == 0)
        return result;
    const double real = common::numericValue(realStockText);
    if (quantity < real)
        return result;
    // Asking exactly what is in stock allows the mail though nothing is missing: that is how the
    // button has always behaved.
    result.missing = static_cast<float>(quantity - real);
    result.mailAllowed = true;
    result.ask = result.missing > 0;
    return result;
}

QString missingText(float missing)
{
    QLocale locale;
    locale.setNumberOptions(QLocale::OmitGroupSeparator);
    return locale.toString(static_cast<double>(missing), 'g', 7);
}

QString reorderQuestion(const QString& realStockText, const QString& quantityText, float missing,
                        const QString& agentName, const QString& agentEmail)
{
    const QStringList lines = {
        QStringLiteral("ATTENZIONE!!"),
        QString(),
        QStringLiteral("La quantità inserita non è sufficiente!!"),
        QStringLiteral("Sarebbe necessario un riordine della quantità mancante. "),
        QString(),
        QStringLiteral("Di seguito i dettagli      : "),
        QString(),
        kRealStock + realStockText,
        kOrdered + quantityText,
        kMissing + missingText(missing),
        QString(),
        QStringLiteral("NOMINATIVO ") + agentName,
        QStringLiteral("E-MAIL     ") + agentEmail,
        QStringLiteral("Inviare una Mail per la fornitura ?"),
    };
    return lines.join(QStringLiteral("\r\n"));
}

ExistingLine findExistingLine(bool checkAddRigaFlex, const QString& code, int rows, const CellReader& cell)
{
    if (!checkAddRigaFlex)
        return {};
    const QString wanted = withoutBlanks(code);
    for (int row = FirstDataRow; row < rows; ++row) {
        if (withoutBlanks(cell(row, Col_codice_med)) != wanted)
            continue;
        return {common::toInt16(static_cast<double>(row)),
                common::toInt32(common::numericValue(cell(row, Col_rowid_med)))};
    }
    return {};
}

} // namespace xv::lines
