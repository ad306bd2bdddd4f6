// SPDX-License-Identifier: MIT
#pragma once

#include <QDate>
#include <QDateTime>
#include <QString>

#include <optional>

namespace xv::common {

// Makes the C library read the machine's time zone once, at start, instead of at every local-time
// conversion. With TZ unset, glibc looks at /etc/localtime again each time a local time is converted
// (one file-system call per date shown: thousands when an order of a thousand lines opens); naming that
// same file in TZ lets it keep what it read. A TZ set by the user is left as it is. A change of the
// machine's zone is seen at the next start.
void readLocalTimeZoneOnce();

// Dates are shown day first, as the shop has always written them, whatever the machine's locale.
QString shortDate(const QDate& date);
// The time is left out when it is exactly midnight: such values are dates stored in a date-time column.
QString shortDateTime(const QDateTime& dateTime);

// Day-first dates with '/', '-' or '.' and two- or four-digit years (00-29 are 2000s, 30-99 1900s), or
// ISO yyyy-MM-dd as databases return them; a trailing time is allowed but must itself be valid.
std::optional<QDate> parseShortDate(const QString& text);
std::optional<QDateTime> parseDateTime(const QString& text);

// The same texts read as the date and the time of day written, with no time zone: a thousand stored dates
// read this way cost no look-ups of the machine's zone, which a QDateTime in local time makes every time.
struct DateAndTime
{
    QDate date;
    QTime time;
};
std::optional<DateAndTime> parseDateAndTime(const QString& text);
// As shortDateTime: the time left out when it is exactly midnight.
QString shortDateTime(const QDate& date, const QTime& time);
// "2026-11-23 10:30:00", the text a date column keeps: the date and the time of day as written, to the
// second, with no zone, so that no look-up of the machine's zone is needed to make it.
QString storedDateTime(const QDate& date, const QTime& time);

// A date as staff type it into a date field: day first, with '/', '-', '.' or a blank between the parts
// ("23/11/26", "23-11-2026") or the digits alone ("23112026", "231126"); the day and month alone
// ("23/11", "2311") mean that day of today's year. A two-digit year is the one nearest to today's.
// Nothing when the text is no such date, or no date of the calendar.
std::optional<QDate> parseTypedDate(const QString& text, const QDate& today = QDate::currentDate());

bool isDate(const QString& text);
QDate toDate(const QString& text);

// "lunedì, 23 novembre 2026": always Italian, since printed documents go to Italian customers.
QString longDate(const QDate& date);

} // namespace xv::common
