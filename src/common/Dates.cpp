// SPDX-License-Identifier: MIT
#include "Dates.h"

#include "RuntimeError.h"

#include <QFileInfo>
#include <QRegularExpression>

#include <array>
#include <ctime>

namespace xv::common {

void readLocalTimeZoneOnce()
{
    // Qt takes ":/etc/localtime" for the system's own zone, as the C library does.
    if (qEnvironmentVariableIsSet("TZ") || !QFileInfo::exists(QStringLiteral("/etc/localtime")))
        return;
    qputenv("TZ", ":/etc/localtime");
    tzset();
}

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

// The value of count decimal digits from a position of the text, or -1 when one of them is not a digit.
int digitsAt(const QString& text, qsizetype from, qsizetype count)
{
    int value = 0;
    for (qsizetype i = from; i < from + count; ++i) {
        const char16_t c = text.at(i).unicode();
        if (c < u'0' || c > u'9')
            return -1;
        value = value * 10 + (c - u'0');
    }
    return value;
}

// "yyyy-MM-dd" or "yyyy-MM-dd hh:mm:ss", digit for digit, as SQLite keeps every stored date: read without
// the patterns below, which cost more than the rest of loading a long order.
std::optional<DateAndTime> parseStoredText(const QString& text)
{
    const qsizetype size = text.size();
    if (size != 10 && size != 19)
        return std::nullopt;
    const auto number = [&text](qsizetype from, qsizetype count) { return digitsAt(text, from, count); };
    if (text.at(4) != u'-' || text.at(7) != u'-')
        return std::nullopt;
    const QDate date(number(0, 4), number(5, 2), number(8, 2));
    if (!date.isValid() || number(0, 4) < 0)
        return std::nullopt;
    if (size == 10)
        return DateAndTime{date, QTime(0, 0)};
    if ((text.at(10) != u' ' && text.at(10) != u'T') || text.at(13) != u':' || text.at(16) != u':')
        return std::nullopt;
    const int hour = number(11, 2);
    const int minute = number(14, 2);
    const int second = number(17, 2);
    if (hour < 0 || minute < 0 || second < 0)
        return std::nullopt;
    const QTime time(hour, minute, second);
    if (!time.isValid())
        return std::nullopt;
    return DateAndTime{date, time};
}

// "dd/MM/yyyy" or "dd/MM/yyyy hh:mm:ss", digit for digit, as the grid shows every date of an order's
// lines: read without the patterns below when the order is saved.
std::optional<DateAndTime> parseShownText(const QString& text)
{
    const qsizetype size = text.size();
    if (size != 10 && size != 19)
        return std::nullopt;
    const auto number = [&text](qsizetype from, qsizetype count) { return digitsAt(text, from, count); };
    if (text.at(2) != u'/' || text.at(5) != u'/')
        return std::nullopt;
    const int day = number(0, 2);
    const int month = number(3, 2);
    const int year = number(6, 4);
    if (day < 0 || month < 0 || year < 0)
        return std::nullopt;
    QTime time(0, 0);
    if (size == 19) {
        if (text.at(10) != u' ' || text.at(13) != u':' || text.at(16) != u':')
            return std::nullopt;
        const int hour = number(11, 2);
        const int minute = number(14, 2);
        const int second = number(17, 2);
        if (hour < 0 || minute < 0 || second < 0)
            return std::nullopt;
        time = QTime(hour, minute, second);
    }
    const QDate date(year, month, day);
    if (!date.isValid() || !time.isValid())
        return std::nullopt;
    return DateAndTime{date, time};
}

// Groups: day/month/year positions differ between the two layouts, the time groups follow in both.
std::optional<DateAndTime> parseParts(const QString& text)
{
    if (const auto stored = parseStoredText(text))
        return stored;
    if (const auto shown = parseShownText(text))
        return shown;
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
    return DateAndTime{date, time};
}

} // namespace

QString shortDate(const QDate& date)
{
    if (!date.isValid())
        return {};
    const int year = date.year();
    if (year < 0 || year > 9999) {
        return QStringLiteral("%1/%2/%3")
            .arg(twoDigits(date.day()), twoDigits(date.month()))
            .arg(year, 4, 10, QLatin1Char('0'));
    }
    // Written digit by digit: a thousand-line order shows several thousand of these at once.
    QString text(10, u'/');
    const auto put = [&text](qsizetype at, int value, qsizetype width) {
        for (qsizetype i = at + width - 1; i >= at; --i, value /= 10)
            text[i] = QChar(u'0' + value % 10);
    };
    put(0, date.day(), 2);
    put(3, date.month(), 2);
    put(6, year, 4);
    return text;
}

QString shortDateTime(const QDate& date, const QTime& time)
{
    if (!date.isValid())
        return {};
    if (!time.isValid() || (time.hour() == 0 && time.minute() == 0 && time.second() == 0))
        return shortDate(date);
    return shortDate(date) + u' ' + time.toString(u"HH:mm:ss");
}

QString storedDateTime(const QDate& date, const QTime& time)
{
    const int year = date.year();
    if (!date.isValid() || !time.isValid() || year < 0 || year > 9999)
        return QDateTime(date, time, Qt::UTC).toString(u"yyyy-MM-dd HH:mm:ss");
    // Written digit by digit: every date of every line of an order is written this way when it is saved.
    QString text(19, u'-');
    const auto put = [&text](qsizetype at, int value, qsizetype width) {
        for (qsizetype i = at + width - 1; i >= at; --i, value /= 10)
            text[i] = QChar(u'0' + value % 10);
    };
    put(0, year, 4);
    put(5, date.month(), 2);
    put(8, date.day(), 2);
    text[10] = u' ';
    put(11, time.hour(), 2);
    text[13] = u':';
    put(14, time.minute(), 2);
    text[16] = u':';
    put(17, time.second(), 2);
    return text;
}

QString shortDateTime(const QDateTime& dateTime)
{
    if (!dateTime.isValid())
        return {};
    return shortDateTime(dateTime.date(), dateTime.time());
}

std::optional<QDate> parseShortDate(const QString& text)
{
    if (const auto parts = parseParts(text))
        return parts->date;
    return std::nullopt;
}

std::optional<DateAndTime> parseDateAndTime(const QString& text)
{
    return parseParts(text);
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
