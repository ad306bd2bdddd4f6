// SPDX-License-Identifier: MIT
#pragma once

#include "common/Money.h"
#include "host/HostInterface.h"

#include <QString>
#include <QtGlobal>

#include <functional>
#include <optional>

namespace xv::data {
class Recordset;
}

namespace xv::lines {

// --- SQL texts of the article panel. Every code is quoted, so a code typed with a quote finds nothing
// instead of breaking the statement.

// The article's own row: rowid, descrizione, prezzo_vendita and the four stock quantities.
QString articleSql(const QString& code);

// The agent's query kept in the settings when the shop has not written one of its own.
extern const QString kDefaultAgentSql;
// The settings' query narrowed to the suppliers the article was bought from.
QString agentSql(const QString& settingSql, const QString& code);

// The newest delivery note of a supplier for the article, and its newest sale: fields qta and
// datadocumento.
QString lastLoadSql(const QString& code);
QString lastSaleSql(const QString& code);

// --- what the panel shows of an article

struct Article
{
    QString rowid;
    QString descrizione;
    common::Money prezzo;
    QString quantitaReale;
    QString quantitaDisponibile; // "0" when the article has none recorded
    QString quantitaOrdinata;
    QString quantitaImpegnata;
};

// The article at the recordset's current row, or nothing when the recordset is at its end.
std::optional<Article> readArticle(const data::Recordset& rs);

// "120 del 12/03/2025" for a quantity moved on a day; empty when there was none. The quantity comes
// first, so that the text's numeric value is the quantity.
QString movementText(const data::Recordset& rs);

// --- stock colours

inline constexpr host::Colour kStockLow = 0xFF;    // red
inline constexpr host::Colour kStockGood = 0xFF00; // green

// At or below the threshold a quantity is low. The quantity is the numeric value of the text shown.
bool isStockLow(const QString& quantityText, qint16 threshold);
host::Colour stockColour(const QString& quantityText, qint16 threshold);

// --- the stock check made when the quantity field is left

struct StockCheck
{
    bool mailAllowed = false; // the reorder button is enabled and a mail may go
    bool ask = false;         // the question is shown
    float missing = 0;        // single precision, as the reorder mail quotes it
};

// checkSetting: the stored "CheckQtaMED" text (only exactly 1 turns the check on); quantityText: what
// was typed as the quantity; realStockText: the real stock the panel shows.
StockCheck checkStock(const QString& checkSetting, const QString& quantityText, const QString& realStockText);

// The missing quantity as the question and the mail write it.
QString missingText(float missing);

// The question that offers the reorder mail, its lines joined by CR LF.
QString reorderQuestion(const QString& realStockText, const QString& quantityText, float missing,
                        const QString& agentName, const QString& agentEmail);

// --- the line of the same article already in the order

struct ExistingLine
{
    qint16 row = 0;      // grid row of the line; 0 when there is none
    qint32 rowidMed = 0; // that line's article row id
};

// Reads one cell of the lines grid: row and column as the grid numbers them.
using CellReader = std::function<QString(int row, int col)>;

// Only when the shop keeps one line per article (checkAddRigaFlex): the first data row whose code,
// without blanks around it, is exactly the code typed, case counting. rows is the grid's row count.
ExistingLine findExistingLine(bool checkAddRigaFlex, const QString& code, int rows, const CellReader& cell);

} // namespace xv::lines
