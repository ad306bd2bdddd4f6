// SPDX-License-Identifier: MIT
#include "OrderCells.h"

#include "common/Conversions.h"
#include "common/Dates.h"
#include "common/Money.h"
#include "common/RuntimeError.h"
#include "data/Recordset.h"
#include "data/TypeCodes.h"
#include "lines/GridColumns.h"

#include <QLocale>
#include <QRegularExpression>

namespace xv::orders {

using common::Money;
using common::RuntimeError;
using data::Recordset;
namespace TypeCode = data::TypeCode;

namespace {

// The suite keeps a time of day alone as a time on this day.
const QDate kZeroDate(1899, 12, 30);

// Whole numbers and single floats are written back with a numeric-value reading, so they are shown with a
// point.
QString numberText(const QVariant& value)
{
    switch (value.metaType().id()) {
    case QMetaType::Double:
    case QMetaType::Float:
        return QString::number(value.toDouble(), 'g', 15);
    default:
        return data::variantText(value);
    }
}

// Doubles are written back read as currency, so they are shown with the locale's decimal separator and no
// grouping, to the four decimals that reading keeps: 2.125 shows "2,125", not "2.125", which would read
// as two thousand one hundred and twenty-five.
QString currencyReadableText(const QVariant& value)
{
    bool ok = false;
    const double number = value.toDouble(&ok);
    if (!ok)
        return data::variantText(value);
    QString text = QString::number(number, 'f', 4);
    while (text.endsWith(QLatin1Char('0')))
        text.chop(1);
    if (text.endsWith(QLatin1Char('.')))
        text.chop(1);
    if (text == QLatin1String("-0"))
        text = QStringLiteral("0");
    return text.replace(QLatin1Char('.'), QLocale().decimalPoint());
}

QString moneyText(const QVariant& value, const QString& field)
{
    if (value.isNull())
        invalidUseOfNull(field);
    return data::variantMoney(value).toCurrencyText();
}

bool nullMayBeEmpty(int column)
{
    using namespace lines;
    switch (column) {
    case Col_Strada:
    case Col_Cellulare:
    case Col_Email:
    case Col_quantita:
    case Col_attrib07:
    case Col_attrib08:
    case Col_attrib10:
    case Col_referente:
        return true;
    default:
        return false;
    }
}

// A date as the grid shows it, or a time alone as a time on the zero day, as the date and the time written.
common::DateAndTime cellDate(const QString& cell)
{
    if (const auto when = common::parseDateAndTime(cell))
        return *when;
    static const QRegularExpression timeAlone(
        QStringLiteral(R"(^\s*([0-9]{1,2}):([0-9]{2})(?::([0-9]{2}))?\s*$)"));
    if (const auto match = timeAlone.match(cell); match.hasMatch()) {
        const QTime time(match.capturedView(1).toInt(), match.capturedView(2).toInt(),
                         match.capturedView(3).toInt());
        if (time.isValid())
            return {kZeroDate, time};
    }
    throw RuntimeError::typeMismatch(cell);
}

bool isWritten(const QString& name)
{
    return !name.isEmpty() && name.compare(QLatin1String("rowid"), Qt::CaseInsensitive) != 0;
}

} // namespace

void invalidUseOfNull(const QString& field)
{
    throw RuntimeError(common::ErrorNumber::InvalidUseOfNull,
                       QStringLiteral("Uso non valido di Null: %1").arg(field));
}

QString requiredText(const Recordset& rs, const QString& field)
{
    if (rs.isNull(field))
        invalidUseOfNull(field);
    return rs.text(field);
}

QString dateText(const QVariant& value)
{
    if (value.isNull())
        return {};
    QDate date;
    QTime time;
    switch (value.metaType().id()) {
    case QMetaType::QDateTime: {
        const QDateTime when = value.toDateTime();
        date = when.date();
        time = when.time();
        break;
    }
    case QMetaType::QDate:
        date = value.toDate();
        time = QTime(0, 0);
        break;
    default: {
        // Stored as text: read as written, without the time zone a date-time would look up.
        const auto parts = common::parseDateAndTime(value.toString());
        if (!parts)
            throw RuntimeError::typeMismatch(value.toString());
        date = parts->date;
        time = parts->time;
        break;
    }
    }
    if (date == kZeroDate)
        return time.toString(QStringLiteral("HH:mm:ss"));
    return common::shortDateTime(date, time);
}

QStringList gridCells(const Recordset& rs, const QVector<int>& columnTypes)
{
    using namespace lines;
    if (rs.fieldCount() < ColCount)
        throw RuntimeError(
            common::ErrorNumber::FieldNotFound,
            QStringLiteral("Le righe hanno %1 colonne invece di %2").arg(rs.fieldCount()).arg(ColCount));
    QStringList cells;
    cells.reserve(ColCount);
    for (int c = 0; c < ColCount; ++c) {
        const QVariant value = rs.value(c);
        const QString field = rs.fieldName(c);
        switch (c) {
        case Col_prezzo:
        case Col_prezzo2:
        case Col_imponibile:
        case Col_imposta:
        case Col_totale:
            cells << moneyText(value, field);
            continue;
        default:
            break;
        }
        if (value.isNull()) {
            if (!nullMayBeEmpty(c))
                invalidUseOfNull(field);
            cells << QString();
            continue;
        }
        switch (columnTypes.value(c)) {
        case TypeCode::Date:
            cells << dateText(value);
            break;
        case TypeCode::Double:
            cells << currencyReadableText(value);
            break;
        default:
            cells << numberText(value);
            break;
        }
    }
    return cells;
}

std::optional<QVariant> cellToField(const QString& name, int typeCode, const QString& cell,
                                    const QDateTime& now)
{
    if (!isWritten(name))
        return std::nullopt;
    switch (typeCode) {
    case TypeCode::SmallInt:
        return QVariant(common::toInt16(common::numericValue(cell)));
    case TypeCode::Integer:
        return QVariant(common::toInt32(common::numericValue(cell)));
    case TypeCode::Single:
        return QVariant(common::numericValue(cell));
    case TypeCode::Double:
        return QVariant(cell.isEmpty() ? 0.0 : Money::parse(cell).toDouble());
    case TypeCode::Currency:
        return QVariant((cell.isEmpty() ? Money() : Money::parse(cell)).toDecimalText());
    case TypeCode::Date: {
        if (cell.isEmpty())
            return QVariant(now);
        const common::DateAndTime when = cellDate(cell);
        return QVariant(QDateTime(when.date, when.time));
    }
    default:
        return QVariant(cell);
    }
}

void writeCells(Recordset& rs, const QStringList& names, const QVector<int>& typeCodes,
                const QStringList& cells, const QDateTime& now)
{
    writeCells(rs, names, fieldIndexes(rs, names), typeCodes, cells, now);
}

QVector<int> fieldIndexes(const Recordset& rs, const QStringList& names)
{
    QVector<int> indexes;
    indexes.reserve(names.size());
    for (const QString& name : names)
        indexes << (rs.hasField(name) ? rs.fieldIndex(name) : -1);
    return indexes;
}

void writeCells(Recordset& rs, const QStringList& names, const QVector<int>& indexes,
                const QVector<int>& typeCodes, const QStringList& cells, const QDateTime& now)
{
    const auto set = [&](qsizetype c, const QVariant& value) {
        if (const int index = indexes.value(c, -1); index >= 0)
            rs.setValue(index, value);
        else
            rs.setValue(names[c], value); // fails as a missing field does
    };
    // A date goes to the store as the text its column keeps, made from the date and the time written: read
    // into a QDateTime in local time first, each would cost a look-up of the machine's zone, and a day that
    // begins with the clocks going forward (no midnight in Santiago de Chile) would be refused.
    const QString nowText = common::storedDateTime(now.date(), now.time());
    for (qsizetype c = 0; c < names.size() && c < cells.size(); ++c) {
        const int typeCode = typeCodes.value(c, TypeCode::Text);
        if (typeCode == TypeCode::Date && isWritten(names[c])) {
            if (cells[c].isEmpty()) {
                set(c, nowText);
            } else {
                const common::DateAndTime when = cellDate(cells[c]);
                set(c, common::storedDateTime(when.date, when.time));
            }
        } else if (const auto value = cellToField(names[c], typeCode, cells[c], now)) {
            set(c, *value);
        }
    }
}

} // namespace xv::orders
