// SPDX-License-Identifier: MIT
#include "Dates.h"

#include "RuntimeError.h"

#include <QRegularExpression>

#include <array>

namespace xv::common {

namespace {

constexpr std::array<QStringView, 7> DayNames = {u"lunedì",  u"martedì", u"mercoledì", u"giovedì",
                                                 u"venerdì", u"sabato",  u"domenica"};
constexpr std::array<QStringView, 12> MonthNames = {u"gennaio",   u"febbraio", u"marzo",    u"aprile",
                                                    u"maggio",    u"giugno",   u"luglio",   u"agosto",
                                                    u"settembre", u"ottobre",  u"novembre", u"dicembre"};

constexpr int TwoDigitYearPivot = 30;

QString twoDigits(int value)
{
    return QStringLiteral("%1").arg(value, 2, 10, QLatin1Char('0'));
}

int fullYear(QStringView digits)
{
    const int year = digits.toInt();
    if (digits.size() != 2)
        return year;
    return year + (year < TwoDigitYearPivot ? 2000 : 1900);
}

struct DateParts
{
    QDate date;
    QTime time;
};

// Groups: day/month/year positions differ between the two layouts, the time groups follow in both.
std::optional<DateParts> parseParts(const QString& text)
{
    // hh:mm, seconds optional, and the fraction of a second databases append.
    static const QString timePattern =
        QStringLiteral(R"(([0-9]{1,2}):([0-9]{2})(?::([0-9]{2})(?:[.,]([0-9]+))?)?)");
    static const QRegularExpression dayFirst(
        QStringLiteral(R"(^([0-9]{1,2})([/.-])([0-9]{1,2})\2([0-9]{4}|[0-9]{2})(?:\s+%1)?$)")
            .arg(timePattern));
    static const QRegularExpression iso(
        QStringLiteral(R"(^([0-9]{4})-([0-9]{1,2})-([0-9]{1,2})(?:(?:T|\s+)%1)?$)").arg(timePattern));

    const QString trimmed = text.trimmed();
    QRegularExpressionMatch match = dayFirst.match(trimmed);
    QDate date;
    int timeGroup = 5;
    if (match.hasMatch()) {
        date = QDate(fullYear(match.capturedView(4)), match.capturedView(3).toInt(),
                     match.capturedView(1).toInt());
    } else if (match = iso.match(trimmed); match.hasMatch()) {
        date = QDate(match.capturedView(1).toInt(), match.capturedView(2).toInt(),
                     match.capturedView(3).toInt());
        timeGroup = 4;
    } else {
        return std::nullopt;
    }
    if (!date.isValid())
        return std::nullopt;

    const QStringView fraction = match.capturedView(timeGroup + 3);
    const int milliseconds =
        fraction.isEmpty() ? 0 : fraction.left(3).toString().leftJustified(3, u'0').toInt();
    const QTime time(match.capturedView(timeGroup).toInt(), match.capturedView(timeGroup + 1).toInt(),
                     match.capturedView(timeGroup + 2).toInt(), milliseconds);
    if (!time.isValid())
        return std::nullopt;
    return DateParts{date, time};
}

} // namespace

QString shortDate(const QDate& date)
{
    if (!date.isValid())
        return {};
    return QStringLiteral("%1/%2/%3")
        .arg(twoDigits(date.day()), twoDigits(date.month()))
        .arg(date.year(), 4, 10, QLatin1Char('0'));
}

QString shortDateTime(const QDateTime& dateTime)
{
    if (!dateTime.isValid())
        return {};
    const QTime time = dateTime.time();
    if (time.hour() == 0 && time.minute() == 0 && time.second() == 0)
        return shortDate(dateTime.date());
    return shortDate(dateTime.date()) + u' ' + time.toString(u"HH:mm:ss");
}

std::optional<QDate> parseShortDate(const QString& text)
{
    if (const auto parts = parseParts(text))
        return parts->date;
    return std::nullopt;
}

std::optional<QDateTime> parseDateTime(const QString& text)
{
    if (const auto parts = parseParts(text)) {
        QDateTime dateTime(parts->date, parts->time);
        if (dateTime.isValid())
            return dateTime;
    }
    return std::nullopt;
}

std::optional<QDate> parseTypedDate(const QString& text, const QDate& today)
{
    static const QRegularExpression separated(
        QStringLiteral(R"(^([0-9]{1,2})[/.\- ]([0-9]{1,2})(?:[/.\- ]([0-9]{4}|[0-9]{2}))?$)"));
    static const QRegularExpression digitsOnly(QStringLiteral(R"(^[0-9]+$)"));

    const QString trimmed = text.trimmed();
    int day = 0;
    int month = 0;
    QString year;
    if (digitsOnly.match(trimmed).hasMatch()) {
        if (trimmed.size() != 4 && trimmed.size() != 6 && trimmed.size() != 8)
            return std::nullopt;
        day = trimmed.mid(0, 2).toInt();
        month = trimmed.mid(2, 2).toInt();
        year = trimmed.mid(4);
    } else if (const QRegularExpressionMatch match = separated.match(trimmed); match.hasMatch()) {
        day = match.captured(1).toInt();
        month = match.captured(2).toInt();
        year = match.captured(3);
    } else {
        return std::nullopt;
    }

    int fullYearNumber = today.year();
    if (year.size() == 4) {
        fullYearNumber = year.toInt();
    } else if (year.size() == 2) {
        // An order's dates lie near today: "99" typed in 2026 is 1999, "30" is 2030.
        fullYearNumber = today.year() / 100 * 100 + year.toInt();
        if (fullYearNumber > today.year() + 50)
            fullYearNumber -= 100;
        else if (fullYearNumber <= today.year() - 50)
            fullYearNumber += 100;
    }
    const QDate date(fullYearNumber, month, day);
    if (!date.isValid())
        return std::nullopt;
    return date;
}

bool isDate(const QString& text)
{
    return parseParts(text).has_value();
}

QDate toDate(const QString& text)
{
    if (const auto date = parseShortDate(text))
        return *date;
    throw RuntimeError::typeMismatch(text);
}

QString longDate(const QDate& date)
{
    if (!date.isValid())
        return {};
    return QStringLiteral("%1, %2 %3 %4")
        .arg(DayNames[date.dayOfWeek() - 1], twoDigits(date.day()), MonthNames[date.month() - 1])
        .arg(date.year());
}

} // namespace xv::common
