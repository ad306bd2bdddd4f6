// SPDX-License-Identifier: MIT
#include "ListModel.h"

#include "common/Dates.h"
#include "common/Money.h"
#include "common/RuntimeError.h"
#include "data/Recordset.h"
#include "data/TypeCodes.h"

#include <QDateTime>

namespace xv::hostui {

using data::variantMoney;
using data::variantText;
using common::RuntimeError;
namespace TypeCode = data::TypeCode;

// Columns that hold amounts whatever the engine says: SQLite reports a sum over a currency column as a
// plain number, so the name is all there is to go by.
static const char* const kMoneyNames[] = {
    "totale",  "acconto",        "prezzo",          "prezzo2",           "imponibile",
    "imposta", "prezzo_vendita", "prezzo_acquisto", "totalecommissione", "totaleacconto",
    "saldo"};


static bool isNullValue(const QVariant& value)
{
    return value.isNull() || !value.isValid();
}

static bool isNumberType(int typeId)
{
    switch (typeId) {
    case QMetaType::Short:
    case QMetaType::UShort:
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::Long:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
    case QMetaType::Float:
    case QMetaType::Double:
        return true;
    default:
        return false;
    }
}

// PostgreSQL hands numeric values over as text; a currency column always has four decimals.
static bool isFourDecimalText(const QVariant& value)
{
    static const QRegularExpression pattern(QStringLiteral("^-?\\d+\\.\\d{4}$"));
    return value.metaType().id() == QMetaType::QString && pattern.match(value.toString()).hasMatch();
}

static QString numberText(double value)
{
    QLocale locale;
    locale.setNumberOptions(QLocale::OmitGroupSeparator);
    return locale.toString(value, 'f', QLocale::FloatingPointShortest);
}

QStringList fieldNames(const Recordset& rows)
{
    QStringList names;
    for (int i = 0; i < rows.fieldCount(); ++i)
        names << rows.fieldName(i);
    return names;
}

QVector<QVector<QVariant>> rowValues(Recordset rows)
{
    QVector<QVector<QVariant>> values;
    values.reserve(rows.recordCount());
    for (rows.moveFirst(); !rows.eof(); rows.moveNext()) {
        QVector<QVariant> row(rows.fieldCount());
        for (int i = 0; i < rows.fieldCount(); ++i)
            row[i] = rows.value(i);
        values.push_back(std::move(row));
    }
    return values;
}

QVector<ColumnKind> columnKinds(const Recordset& rows, const QVector<QVector<QVariant>>& values)
{
    constexpr int kSampled = 50;
    QVector<ColumnKind> kinds;
    for (int column = 0; column < rows.fieldCount(); ++column) {
        const QString name = rows.fieldName(column);
        const int code = rows.typeCode(name);
        const bool moneyName =
            std::any_of(std::begin(kMoneyNames), std::end(kMoneyNames),
                        [&](const char* money) { return name.toLower() == QLatin1String(money); });
        if (code == TypeCode::Currency || moneyName) {
            kinds << ColumnKind::Money;
            continue;
        }
        const bool declaredNumber = code == TypeCode::SmallInt || code == TypeCode::Integer ||
                                    code == TypeCode::Single || code == TypeCode::Double ||
                                    code == TypeCode::BigInt || code == TypeCode::Numeric;
        ColumnKind kind = declaredNumber ? ColumnKind::Number : ColumnKind::Text;
        int seen = 0;
        for (const auto& row : values) {
            const QVariant& value = row[column];
            if (isNullValue(value))
                continue;
            if (declaredNumber && isFourDecimalText(value)) {
                kind = ColumnKind::Money;
                break;
            }
            if (!declaredNumber && seen == 0 && isNumberType(value.metaType().id()))
                kind = ColumnKind::Number;
            if (++seen >= kSampled)
                break;
        }
        kinds << kind;
    }
    return kinds;
}



// Dates sort as a count of seconds: a QDateTime in local time would consult the time zone for every cell.
static QVariant dateKey(const QDate& date, const QTime& time)
{
    return QVariant::fromValue(date.toJulianDay() * 86400 + time.msecsSinceStartOfDay() / 1000);
}

static Cell dateCell(const QDate& date, const QTime& time)
{
    QString text = common::shortDate(date);
    if (time != QTime(0, 0))
        text += QLatin1Char(' ') + time.toString(QStringLiteral("HH:mm:ss"));
    return {text, dateKey(date, time)};
}

// SQLite keeps dates as ISO text, so a date column arrives as a string.
static std::optional<Cell> isoDateCell(const QString& text)
{
    static const QRegularExpression pattern(
        QStringLiteral("^(\\d{4})-(\\d{2})-(\\d{2})(?:[ T](\\d{2}):(\\d{2})(?::(\\d{2})(?:\\.\\d+)?)?)?$"));
    const QRegularExpressionMatch match = pattern.match(text);
    if (!match.hasMatch())
        return std::nullopt;
    const QDate date(match.captured(1).toInt(), match.captured(2).toInt(), match.captured(3).toInt());
    const QTime time(match.captured(4).toInt(), match.captured(5).toInt(), match.captured(6).toInt());
    if (!date.isValid() || !time.isValid())
        return std::nullopt;
    return dateCell(date, time);
}

Cell makeCell(const QVariant& value, ColumnKind kind)
{
    if (isNullValue(value))
        return {};
    const int type = value.metaType().id();
    if (kind == ColumnKind::Money && (isNumberType(type) || type == QMetaType::QString)) {
        try {
            const common::Money amount = variantMoney(value);
            return {amount.toCurrencyText(), amount.toDouble()};
        } catch (const RuntimeError&) {
            return {value.toString(), value.toString().toLower()};
        }
    }
    switch (type) {
    case QMetaType::QDateTime: {
        const QDateTime when = value.toDateTime();
        return when.isValid() ? dateCell(when.date(), when.time()) : Cell();
    }
    case QMetaType::QDate:
        return dateCell(value.toDate(), QTime(0, 0));
    case QMetaType::Bool:
        return {value.toBool() ? QStringLiteral("Sì") : QStringLiteral("No"), value.toBool() ? 1.0 : 0.0};
    case QMetaType::Double:
    case QMetaType::Float:
        return {numberText(value.toDouble()), value.toDouble()};
    case QMetaType::QString: {
        const QString text = value.toString();
        if (auto date = isoDateCell(text))
            return *date;
        bool ok = false;
        const double number = text.toDouble(&ok);
        if (!ok)
            return {text, text.toLower()};
        if (kind == ColumnKind::Number && text.contains(QLatin1Char('.')))
            return {numberText(number), number};
        return {text, number};
    }
    default:
        return {variantText(value),
                isNumberType(type) ? QVariant(value.toDouble()) : QVariant(value.toString())};
    }
}

// Sort keys of different kinds never compare by value: empty cells first, then numbers, dates, texts.
namespace {
enum class SortClass { Empty, Number, Date, Text };
}

static SortClass sortClass(const QVariant& key)
{
    if (!key.isValid())
        return SortClass::Empty;
    switch (key.metaType().id()) {
    case QMetaType::Double:
        return SortClass::Number;
    case QMetaType::LongLong:
        return SortClass::Date;
    default:
        return SortClass::Text;
    }
}

QString rowKey(const QVector<QVariant>& row)
{
    QStringList parts;
    for (const QVariant& value : row)
        parts << (isNullValue(value) ? QStringLiteral("\x01") : variantText(value));
    return parts.join(QChar(0x1f));
}

bool ListProxyModel::lessThan(const QModelIndex& left, const QModelIndex& right) const
{
    const QVariant a = left.data(ListModel::SortRole);
    const QVariant b = right.data(ListModel::SortRole);
    const SortClass kindA = sortClass(a);
    const SortClass kindB = sortClass(b);
    if (kindA != kindB)
        return kindA < kindB;
    switch (kindA) {
    case SortClass::Number:
        return a.toDouble() < b.toDouble();
    case SortClass::Date:
        return a.toLongLong() < b.toLongLong();
    case SortClass::Text:
        return QString::localeAwareCompare(a.toString(), b.toString()) < 0;
    case SortClass::Empty:
        break;
    }
    return false;
}

} // namespace xv::hostui
