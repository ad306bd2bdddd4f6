// SPDX-License-Identifier: MIT
#include "SqlDialect.h"

#include "common/RuntimeError.h"

#include <QByteArray>
#include <QCryptographicHash>
#include <QDate>
#include <QDateTime>
#include <QSqlDatabase>
#include <QSqlDriver>
#include <QStringView>
#include <QVariant>

#include <sqlite3.h>

#include <charconv>
#include <cstdio>
#include <optional>
#include <string_view>
#include <system_error>

namespace xv::data {

using common::ErrorNumber;
using common::RuntimeError;

namespace {

// ---------------------------------------------------------------------------------------------------
// Rewrite

bool isWordChar(QChar c)
{
    return c.isLetterOrNumber() || c == u'_' || c == u'$';
}

// "now(" and "now." name a function or a table, not the current time.
bool startsCallOrQualifier(const QString& sql, qsizetype from)
{
    while (from < sql.size() && sql[from].isSpace())
        ++from;
    return from < sql.size() && (sql[from] == u'(' || sql[from] == u'.');
}

// A column "t.now" and the placeholders ":now" and "@now" are not the current time either.
bool endsQualifierOrPlaceholder(QChar previous)
{
    return previous == u'.' || previous == u':' || previous == u'@';
}

// ---------------------------------------------------------------------------------------------------
// Parsing shared by the SQLite functions; the PostgreSQL definitions below follow the same rules with
// regular expressions, and the tests run the same cases on both engines.

bool isSpaceByte(char c)
{
    return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\v' || c == '\f';
}

bool isDigitByte(char c)
{
    return c >= '0' && c <= '9';
}

// Reads up to maxCount digits at `pos`; how many were read.
int readDigits(std::string_view text, std::size_t& pos, int maxCount, int& value)
{
    int count = 0;
    value = 0;
    while (count < maxCount && pos < text.size() && isDigitByte(text[pos])) {
        value = value * 10 + (text[pos] - '0');
        ++pos;
        ++count;
    }
    return count;
}

struct LeadingNumber
{
    double value = 0;
    bool outOfRange = false;
};

// The number a text starts with, as the old dialect's val() reads it: blanks, a sign, digits with at
// most one decimal point, an exponent; no number at all reads as 0.
LeadingNumber leadingNumber(std::string_view text)
{
    std::size_t pos = 0;
    while (pos < text.size() && isSpaceByte(text[pos]))
        ++pos;
    bool negative = false;
    if (pos < text.size() && (text[pos] == '+' || text[pos] == '-')) {
        negative = text[pos] == '-';
        ++pos;
    }
    const std::size_t mantissa = pos;
    std::size_t digits = 0;
    while (pos < text.size() && isDigitByte(text[pos])) {
        ++pos;
        ++digits;
    }
    if (pos < text.size() && text[pos] == '.') {
        ++pos;
        while (pos < text.size() && isDigitByte(text[pos])) {
            ++pos;
            ++digits;
        }
    }
    if (digits == 0)
        return {};
    std::size_t end = pos;
    if (pos < text.size() && (text[pos] == 'e' || text[pos] == 'E')) {
        std::size_t exponent = pos + 1;
        if (exponent < text.size() && (text[exponent] == '+' || text[exponent] == '-'))
            ++exponent;
        const std::size_t exponentDigits = exponent;
        while (exponent < text.size() && isDigitByte(text[exponent]))
            ++exponent;
        if (exponent > exponentDigits)
            end = exponent;
    }
    LeadingNumber result;
    const auto [ptr, error] = std::from_chars(text.data() + mantissa, text.data() + end, result.value);
    (void)ptr;
    if (error == std::errc::result_out_of_range)
        return {0, true};
    if (negative)
        result.value = -result.value;
    return result;
}

struct CivilDate
{
    int year = 0;
    int month = 0;
    int day = 0;
};

bool isDateSeparator(char c)
{
    return c == '/' || c == '-' || c == '.';
}

// "h:mm", "hh:mm:ss" or "hh:mm:ss.fff" after an ISO date: the time a stored value carries.
bool skipTime(std::string_view text, std::size_t& pos)
{
    int unused = 0;
    const int hours = readDigits(text, pos, 2, unused);
    if (hours == 0 || pos >= text.size() || text[pos] != ':')
        return false;
    ++pos;
    if (readDigits(text, pos, 2, unused) != 2)
        return false;
    if (pos < text.size() && text[pos] == ':') {
        ++pos;
        if (readDigits(text, pos, 2, unused) != 2)
            return false;
        if (pos < text.size() && text[pos] == '.') {
            ++pos;
            const std::size_t fraction = pos;
            while (pos < text.size() && isDigitByte(text[pos]))
                ++pos;
            if (pos == fraction)
                return false;
        }
    }
    return true;
}

// An ISO date (as stored, time allowed) or a day-first one as users type it; two-digit years are read
// as the old desktop database read them, 30..99 in the 1900s and 00..29 in the 2000s.
std::optional<CivilDate> parseDate(std::string_view text)
{
    std::size_t pos = 0;
    while (pos < text.size() && isSpaceByte(text[pos]))
        ++pos;
    std::size_t end = text.size();
    while (end > pos && isSpaceByte(text[end - 1]))
        --end;
    text = text.substr(0, end);

    CivilDate date;
    int first = 0;
    const int firstDigits = readDigits(text, pos, 4, first);
    if (firstDigits == 4) {
        date.year = first;
        if (pos >= text.size() || text[pos] != '-')
            return std::nullopt;
        ++pos;
        if (readDigits(text, pos, 2, date.month) == 0 || pos >= text.size() || text[pos] != '-')
            return std::nullopt;
        ++pos;
        if (readDigits(text, pos, 2, date.day) == 0)
            return std::nullopt;
        if (pos < text.size() && (text[pos] == ' ' || text[pos] == 'T')) {
            ++pos;
            if (!skipTime(text, pos))
                return std::nullopt;
        }
    } else if (firstDigits == 1 || firstDigits == 2) {
        date.day = first;
        if (pos >= text.size() || !isDateSeparator(text[pos]))
            return std::nullopt;
        ++pos;
        if (readDigits(text, pos, 2, date.month) == 0 || pos >= text.size() || !isDateSeparator(text[pos]))
            return std::nullopt;
        ++pos;
        const int yearDigits = readDigits(text, pos, 4, date.year);
        if (yearDigits == 2)
            date.year += date.year < 30 ? 2000 : 1900;
        else if (yearDigits != 4)
            return std::nullopt;
    } else {
        return std::nullopt;
    }
    if (pos != text.size() || date.year < 1 || !QDate::isValid(date.year, date.month, date.day))
        return std::nullopt;
    return date;
}

QByteArray bytes(std::string_view text)
{
    return QByteArray(text.data(), static_cast<qsizetype>(text.size()));
}

std::string_view textOf(sqlite3_value* value)
{
    const auto* text = reinterpret_cast<const char*>(sqlite3_value_text(value));
    if (!text)
        return {};
    return {text, static_cast<std::size_t>(sqlite3_value_bytes(value))};
}

// ---------------------------------------------------------------------------------------------------
// SQLite functions

// Always REAL, as PostgreSQL's val() is double precision: val(x)/2 must divide the same way on both.
void sqliteVal(sqlite3_context* context, int, sqlite3_value** arguments)
{
    switch (sqlite3_value_type(arguments[0])) {
    case SQLITE_NULL:
        sqlite3_result_null(context);
        return;
    case SQLITE_INTEGER:
    case SQLITE_FLOAT:
        sqlite3_result_double(context, sqlite3_value_double(arguments[0]));
        return;
    default:
        break;
    }
    const LeadingNumber number = leadingNumber(textOf(arguments[0]));
    if (number.outOfRange) {
        const QByteArray message = "val: numero fuori intervallo '" + bytes(textOf(arguments[0])) + '\'';
        sqlite3_result_error(context, message.constData(), static_cast<int>(message.size()));
        return;
    }
    sqlite3_result_double(context, number.value);
}

void sqliteYear(sqlite3_context* context, int, sqlite3_value** arguments)
{
    if (sqlite3_value_type(arguments[0]) != SQLITE_TEXT) {
        sqlite3_result_null(context);
        return;
    }
    const std::optional<CivilDate> date = parseDate(textOf(arguments[0]));
    if (date)
        sqlite3_result_int(context, date->year);
    else
        sqlite3_result_null(context);
}

void sqliteDateValue(sqlite3_context* context, int, sqlite3_value** arguments)
{
    const int type = sqlite3_value_type(arguments[0]);
    if (type == SQLITE_NULL) {
        sqlite3_result_null(context);
        return;
    }
    const std::string_view text = textOf(arguments[0]);
    const std::optional<CivilDate> date = type == SQLITE_TEXT ? parseDate(text) : std::nullopt;
    if (!date) {
        const QByteArray message = "DateValue: data non valida '" + bytes(text) + '\'';
        sqlite3_result_error(context, message.constData(), static_cast<int>(message.size()));
        return;
    }
    char stored[32];
    const int size =
        std::snprintf(stored, sizeof stored, "%04d-%02d-%02d 00:00:00", date->year, date->month, date->day);
    sqlite3_result_text(context, stored, size, SQLITE_TRANSIENT);
}

void sqliteNow(sqlite3_context* context, int, sqlite3_value**)
{
    const QByteArray now = QDateTime::currentDateTime().toString(u"yyyy-MM-dd HH:mm:ss").toUtf8();
    sqlite3_result_text(context, now.constData(), static_cast<int>(now.size()), SQLITE_TRANSIENT);
}

#ifdef SQLITE_INNOCUOUS
// Lets views and triggers use the functions even on a database opened with trusted_schema off.
constexpr int innocuous = SQLITE_INNOCUOUS;
#else
constexpr int innocuous = 0;
#endif

// SQLite's own lower() lowers the letters A to Z alone, so "ÈRCOLI" stays "Èrcoli" and a search for
// "èrcoli" misses an order PostgreSQL finds. This one lowers every letter as PostgreSQL does; a text of
// ASCII alone, nearly every name, is lowered in place without a conversion, since a search lowers every
// row it looks at.
void sqliteLower(sqlite3_context* context, int, sqlite3_value** arguments)
{
    const auto* text = reinterpret_cast<const char*>(sqlite3_value_text(arguments[0]));
    if (!text) {
        sqlite3_result_null(context);
        return;
    }
    const int size = sqlite3_value_bytes(arguments[0]);
    // Lowered in one pass into the stack, with no allocation: as fast as the engine's own on a search that
    // lowers every name of the archive.
    char ascii[256];
    if (size <= static_cast<int>(sizeof ascii)) {
        int i = 0;
        for (; i < size; ++i) {
            const auto c = static_cast<unsigned char>(text[i]);
            if (c >= 0x80)
                break;
            ascii[i] = static_cast<char>(c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c);
        }
        if (i == size) {
            sqlite3_result_text(context, ascii, size, SQLITE_TRANSIENT);
            return;
        }
    }
    const QByteArray lowered = QString::fromUtf8(text, size).toLower().toUtf8();
    sqlite3_result_text(context, lowered.constData(), static_cast<int>(lowered.size()), SQLITE_TRANSIENT);
}

struct SqliteFunction
{
    const char* name;
    int argumentCount;
    int flags;
    void (*call)(sqlite3_context*, int, sqlite3_value**);
};

constexpr SqliteFunction sqliteFunctions[] = {
    {"val", 1, SQLITE_UTF8 | SQLITE_DETERMINISTIC | innocuous, sqliteVal},
    {"year", 1, SQLITE_UTF8 | SQLITE_DETERMINISTIC | innocuous, sqliteYear},
    {"datevalue", 1, SQLITE_UTF8 | SQLITE_DETERMINISTIC | innocuous, sqliteDateValue},
    {"now", 0, SQLITE_UTF8 | innocuous, sqliteNow},
    {"lower", 1, SQLITE_UTF8 | SQLITE_DETERMINISTIC | innocuous, sqliteLower},
};

// ---------------------------------------------------------------------------------------------------
// PostgreSQL functions. Bodies avoid backslashes so that they mean the same whatever
// standard_conforming_strings says; the text overloads of val() and year() are what an untyped literal
// such as val('12') resolves to, since PostgreSQL prefers the string category for unknown arguments.

constexpr const char* postgresDefinitions[] = {
    // Not STRICT, so that PostgreSQL writes the body into the query instead of calling a function for
    // each row (twenty times slower: finding an order by number tests val(serie) on every line); a null
    // gives null all the same. A text of digits alone, a year or a number, is converted without the
    // pattern.
    R"sql(CREATE OR REPLACE FUNCTION val(text) RETURNS double precision
    LANGUAGE sql IMMUTABLE PARALLEL SAFE
    AS $$SELECT CASE WHEN $1 IS NULL THEN NULL::double precision
        WHEN $1 <> '' AND length($1) < 16 AND ltrim($1, '0123456789') = '' THEN $1::double precision
        ELSE coalesce(substring($1 FROM
        '^[[:space:]]*([+-]?([0-9]+[.]?[0-9]*|[.][0-9]+)([eE][+-]?[0-9]+)?)')::double precision, 0) END$$)sql",

    R"sql(CREATE OR REPLACE FUNCTION val(double precision) RETURNS double precision
    LANGUAGE sql IMMUTABLE STRICT PARALLEL SAFE AS $$SELECT $1$$)sql",

    R"sql(CREATE OR REPLACE FUNCTION val(numeric) RETURNS double precision
    LANGUAGE sql IMMUTABLE STRICT PARALLEL SAFE AS $$SELECT $1::double precision$$)sql",

    R"sql(CREATE OR REPLACE FUNCTION val(integer) RETURNS double precision
    LANGUAGE sql IMMUTABLE STRICT PARALLEL SAFE AS $$SELECT $1::double precision$$)sql",

    R"sql(CREATE OR REPLACE FUNCTION val(bigint) RETURNS double precision
    LANGUAGE sql IMMUTABLE STRICT PARALLEL SAFE AS $$SELECT $1::double precision$$)sql",

    // NULL for anything that is not a real calendar date, so that year() can answer NULL and
    // datevalue() can name the offending text.
    R"sql(CREATE OR REPLACE FUNCTION xv_parse_date(text) RETURNS date
    LANGUAGE plpgsql IMMUTABLE STRICT PARALLEL SAFE
    AS $$
DECLARE
    parts text[];
    y integer;
    m integer;
    d integer;
BEGIN
    parts := regexp_match($1, '^[[:space:]]*([0-9]{4})-([0-9]{1,2})-([0-9]{1,2})'
        '(?:[ T][0-9]{1,2}:[0-9]{2}(?::[0-9]{2}(?:[.][0-9]+)?)?)?[[:space:]]*$');
    IF parts IS NOT NULL THEN
        y := parts[1]::integer;
        m := parts[2]::integer;
        d := parts[3]::integer;
    ELSE
        parts := regexp_match($1, '^[[:space:]]*([0-9]{1,2})[/.-]([0-9]{1,2})[/.-]'
            '([0-9]{4}|[0-9]{2})[[:space:]]*$');
        IF parts IS NULL THEN
            RETURN NULL;
        END IF;
        d := parts[1]::integer;
        m := parts[2]::integer;
        y := parts[3]::integer;
        IF length(parts[3]) = 2 THEN
            y := y + CASE WHEN y < 30 THEN 2000 ELSE 1900 END;
        END IF;
    END IF;
    IF y < 1 OR m < 1 OR m > 12 OR d < 1 THEN
        RETURN NULL;
    END IF;
    -- Only now is make_date() sure not to fail.
    IF d > extract(day FROM make_date(y, m, 1) + interval '1 month' - interval '1 day') THEN
        RETURN NULL;
    END IF;
    RETURN make_date(y, m, d);
END
$$)sql",

    R"sql(CREATE OR REPLACE FUNCTION year(timestamp) RETURNS integer
    LANGUAGE sql IMMUTABLE STRICT PARALLEL SAFE AS $$SELECT extract(year FROM $1)::integer$$)sql",

    R"sql(CREATE OR REPLACE FUNCTION year(timestamp with time zone) RETURNS integer
    LANGUAGE sql STABLE STRICT PARALLEL SAFE AS $$SELECT extract(year FROM $1)::integer$$)sql",

    R"sql(CREATE OR REPLACE FUNCTION year(date) RETURNS integer
    LANGUAGE sql IMMUTABLE STRICT PARALLEL SAFE AS $$SELECT extract(year FROM $1)::integer$$)sql",

    R"sql(CREATE OR REPLACE FUNCTION year(text) RETURNS integer
    LANGUAGE sql IMMUTABLE STRICT PARALLEL SAFE
    AS $$SELECT extract(year FROM xv_parse_date($1))::integer$$)sql",

    R"sql(CREATE OR REPLACE FUNCTION datevalue(text) RETURNS timestamp
    LANGUAGE plpgsql IMMUTABLE STRICT PARALLEL SAFE
    AS $$
DECLARE
    parsed date := xv_parse_date($1);
BEGIN
    IF parsed IS NULL THEN
        RAISE EXCEPTION 'DateValue: data non valida ''%''', $1 USING ERRCODE = 'invalid_datetime_format';
    END IF;
    RETURN parsed::timestamp;
END
$$)sql",

    R"sql(CREATE OR REPLACE FUNCTION datevalue(timestamp) RETURNS timestamp
    LANGUAGE sql IMMUTABLE STRICT PARALLEL SAFE AS $$SELECT date_trunc('day', $1)$$)sql",

    R"sql(CREATE OR REPLACE FUNCTION datevalue(timestamp with time zone) RETURNS timestamp
    LANGUAGE sql STABLE STRICT PARALLEL SAFE AS $$SELECT date_trunc('day', $1::timestamp)$$)sql",

    R"sql(CREATE OR REPLACE FUNCTION datevalue(date) RETURNS timestamp
    LANGUAGE sql IMMUTABLE STRICT PARALLEL SAFE AS $$SELECT $1::timestamp$$)sql",
};

} // namespace

QString rewriteSql(const QString& sql, Engine engine)
{
    QString out;
    out.reserve(sql.size() + sql.size() / 8);
    const qsizetype size = sql.size();
    const QStringView view(sql);
    // The last character of code (not blank, not comment) before the current one.
    QChar previous;
    // Once a "[" finds no "]" after it, no later one will: remembering it keeps the pass linear.
    bool closingBracketAhead = true;
    qsizetype i = 0;
    while (i < size) {
        const QChar c = sql[i];
        if (c == u'\'' || c == u'"') {
            // A doubled quote inside reads as the end of one run and the start of the next, which copies
            // the same; an unclosed run swallows the rest, as the engine would.
            qsizetype end = sql.indexOf(c, i + 1);
            end = end < 0 ? size : end + 1;
            out += view.mid(i, end - i);
            previous = c;
            i = end;
        } else if (c == u'-' && i + 1 < size && sql[i + 1] == u'-') {
            qsizetype end = sql.indexOf(u'\n', i + 2);
            end = end < 0 ? size : end;
            out += view.mid(i, end - i);
            i = end;
        } else if (c == u'/' && i + 1 < size && sql[i + 1] == u'*') {
            qsizetype end = sql.indexOf(QLatin1String("*/"), i + 2);
            end = end < 0 ? size : end + 2;
            out += view.mid(i, end - i);
            i = end;
        } else if (c == u'[' && closingBracketAhead) {
            const qsizetype close = sql.indexOf(u']', i + 1);
            if (close < 0) {
                closingBracketAhead = false;
                continue;
            }
            if (engine == Engine::PostgreSQL) {
                QString name = view.mid(i + 1, close - i - 1).toString().toLower();
                name.replace(u'"', QLatin1String("\"\""));
                out += u'"' + name + u'"';
            } else {
                out += view.mid(i, close + 1 - i);
            }
            previous = u']';
            i = close + 1;
        } else if (isWordChar(c)) {
            qsizetype end = i + 1;
            while (end < size && isWordChar(sql[end]))
                ++end;
            const QStringView word = view.mid(i, end - i);
            if (word.compare(u"now", Qt::CaseInsensitive) == 0 && !endsQualifierOrPlaceholder(previous) &&
                !startsCallOrQualifier(sql, end)) {
                out += u"now()";
            } else {
                out += word;
            }
            previous = sql[end - 1];
            i = end;
        } else if (c == u'&') {
            out += u"||";
            previous = c;
            ++i;
        } else {
            out += c;
            if (!c.isSpace())
                previous = c;
            ++i;
        }
    }
    return out;
}

void registerSqliteFunctions(const QSqlDatabase& db)
{
    const QSqlDriver* driver = db.driver();
    const QVariant handle = driver ? driver->handle() : QVariant();
    if (!handle.isValid() || qstrcmp(handle.typeName(), "sqlite3*") != 0)
        throw RuntimeError(ErrorNumber::DatabaseError,
                           QStringLiteral("Funzioni SQL: la connessione '%1' non è un database SQLite")
                               .arg(db.connectionName()));
    sqlite3* connection = *static_cast<sqlite3* const*>(handle.constData());
    if (!connection)
        throw RuntimeError(
            ErrorNumber::DatabaseError,
            QStringLiteral("Funzioni SQL: la connessione '%1' non è aperta").arg(db.connectionName()));
    registerSqliteFunctions(connection);
}

void registerSqliteFunctions(sqlite3* connection)
{
    for (const SqliteFunction& function : sqliteFunctions) {
        const int result =
            sqlite3_create_function_v2(connection, function.name, function.argumentCount, function.flags,
                                       nullptr, function.call, nullptr, nullptr, nullptr);
        if (result != SQLITE_OK)
            throw RuntimeError(
                ErrorNumber::DatabaseError,
                QStringLiteral("Funzioni SQL: impossibile registrare %1(): %2")
                    .arg(QLatin1String(function.name), QString::fromUtf8(sqlite3_errmsg(connection))));
    }
}

QStringList postgresFunctionDefinitions()
{
    QStringList statements;
    for (const char* definition : postgresDefinitions)
        statements.append(QString::fromLatin1(definition));
    return statements;
}

QString postgresFunctionsFingerprint()
{
    QCryptographicHash hash(QCryptographicHash::Sha256);
    for (const char* definition : postgresDefinitions) {
        hash.addData(QByteArrayView(definition));
        hash.addData(QByteArrayView("\0", 1));
    }
    return QString::fromLatin1(hash.result().toHex());
}

} // namespace xv::data
