// SPDX-License-Identifier: MIT
#pragma once

#include <QDate>
#include <QFont>
#include <QRect>
#include <QString>
#include <QTime>
#include <QVector>

#include <functional>

class QPagedPaintDevice;

namespace xv::printing {

// The statement handed to the customer at pick-up, as the printer gets it: lines of a fixed-pitch font
// whose columns are made with blanks, each line in its own size, and the shop's header picture.
struct StatementLine
{
    QString text;
    int pointSize = 14;
    bool bold = false;

    friend bool operator==(const StatementLine&, const StatementLine&) = default;
};

struct Statement
{
    static inline const QString kFontFamily = QStringLiteral("Courier New");

    QVector<StatementLine> lines;
    // Printed at the top of every page after the first, so that a loose page still says whose it is.
    StatementLine pageHeading;
    // The header picture, drawn on the first page only; no path, no picture. Its place is in twips.
    QString picturePath;
    QRect pictureTwips{4000, 40, 4200, 1300};
};

// One article line of the order, as the grid shows it.
struct StatementRow
{
    QString code;
    QString description;
    QString quantity;
    QString price;
    QString total;
};

// What the statement is made of, all as the form shows it.
struct StatementInput
{
    QString appTitle;
    QString phase;
    QString operatorText;
    QString number;
    QDate orderDate;
    QTime printTime;
    QString customer;
    QVector<StatementRow> rows;
    QString deposit;       // currency text, as typed
    QString total;         // currency text
    int emphasisSize = 14; // the customer and total lines; see emphasisPointSize
    QString picturePath;
};

// The host's count of blanks that fill a text out to a width.
using PadWidthFn = std::function<int(const QString& text, int width)>;

// The grid row the first article line comes from: the counter an error names starts there.
inline constexpr int kFirstArticleRow = 2;

// The size of the customer and total lines from setting "GEST_DIM_RICACCIO": the whole value of its text,
// with anything below 6 (a non-number reads 0) taken as the usual 14.
int emphasisPointSize(const QString& setting);

// The order date as the statement shows it, with Italian day and month names: "sabato, 20 giugno 2026".
QString longDateText(const QDate& date);
// The time of day in the locale's own long form, without a time zone: "18:05:32".
QString timeText(const QTime& time, const QLocale& locale = QLocale());

// The statement's lines. row follows the grid row being laid out (0 before the articles, the row after
// the last one once they are done), so that an error thrown here can say where it came; throws when the
// deposit or the total is not an amount.
Statement buildStatement(const StatementInput& input, const PadWidthFn& padWidth, int* row = nullptr);

// The font of a statement line: the fixed-pitch face, or the system's monospace one where it is missing.
QFont statementFont(const StatementLine& line);

// Paints the statement onto a printer or any paged device (a PDF writer): the picture where its twips
// say, then the lines one under the other, each as high as its font, on as many pages as they need, at
// least 7 mm from either side of the paper. A line too wide for the page at its size is painted in the size
// that fits. A statement of several pages repeats its page heading on the pages after the first and
// numbers every page at its foot ("Pagina 1 di 3"). Throws when the device cannot be started or refuses a
// page, or when a picture that exists cannot be read; destination (the printer or the file) names where
// in the message. A printer's own verdict on the job is its caller's to ask once the pages are done.
void printStatement(const Statement& statement, QPagedPaintDevice& printer, const QString& destination = {});

// What a device or printer that refused a statement is reported with.
inline const char* const kStatementRefused = "La stampante non ha accettato il documento";

} // namespace xv::printing
