// SPDX-License-Identifier: MIT
#include "common/Dates.h"
#include "ErrorNumberOf.h"

#include <QFileInfo>

#include <gtest/gtest.h>

#include <ctime>
#include <tuple>
#include <utility>

namespace {

using namespace xv::common;
using namespace xv::common::test;

TEST(DatesTest, ShortTexts)
{
    const std::pair<QDate, const char*> dates[] = {{{2026, 3, 1}, "01/03/2026"}, {{9, 1, 2}, "02/01/0009"},
                                                   {{999, 12, 31}, "31/12/0999"}, {{1899, 12, 30}, "30/12/1899"},
                                                   {{9999, 10, 5}, "05/10/9999"}, {{}, ""}};
    for (const auto& [date, text] : dates)
        EXPECT_EQ(shortDate(date), QLatin1String(text));
    EXPECT_EQ(shortDateTime(QDateTime(QDate(2026, 11, 23), QTime(14, 5, 9))), u"23/11/2026 14:05:09");
    EXPECT_EQ(shortDateTime(QDateTime(QDate(2026, 11, 23), QTime(0, 0, 1))), u"23/11/2026 00:00:01");
    EXPECT_EQ(shortDateTime(QDateTime(QDate(2026, 11, 23), QTime(0, 0))), u"23/11/2026");
    EXPECT_EQ(shortDateTime(QDateTime()), QString());
}

TEST(DatesTest, ParsesDayFirstAndIsoDates)
{
    const std::pair<const char*, QDate> cases[] = {{"1/2/2026", {2026, 2, 1}},
                                                   {"1-2-2026", {2026, 2, 1}},
                                                   {"1.2.2026", {2026, 2, 1}},
                                                   {"1/2/29", {2029, 2, 1}},
                                                   {"1/2/30", {1930, 2, 1}},
                                                   {"29/02/2024", {2024, 2, 29}},
                                                   {"29/02/2000", {2000, 2, 29}},
                                                   {"  5/6/2026  ", {2026, 6, 5}},
                                                   {"23/11/2026 14:30:15", {2026, 11, 23}},
                                                   {"2026-11-23", {2026, 11, 23}},
                                                   {"2026-11-23T10:00:00", {2026, 11, 23}}};
    for (const auto& [text, date] : cases) {
        SCOPED_TRACE(text);
        EXPECT_EQ(parseShortDate(QLatin1String(text)), date);
        EXPECT_TRUE(isDate(QLatin1String(text)));
        EXPECT_EQ(toDate(QLatin1String(text)), date);
    }
}

TEST(DatesTest, RejectsImpossibleAndMalformedDates)
{
    for (const char* text : {"31/02/2026",
                             "29/02/2026",
                             "29/02/1900",
                             "00/01/2026",
                             "1/13/2026",
                             "2026-02-30",
                             "1/2/202",
                             "1/2-2026",
                             "",
                             "2026/11/23",
                             "1/2/2026x",
                             "23/11/2026 25:00",
                             "23/11/2026 12",
                             "2026-11-23 24:00:00",
                             "2026-13-01",
                             "2026-11-23 10:6:00",
                             "0000-01-01",
                             "2026-11-23x10:00:00",
                             "23/11/2026 24:00:00",
                             "31/04/2026 10:00:00",
                             "23/11/2026T10:00:00",
                             "23/11/0000"}) {
        SCOPED_TRACE(text);
        EXPECT_FALSE(parseShortDate(QLatin1String(text)));
        EXPECT_FALSE(parseDateTime(QLatin1String(text)));
        EXPECT_FALSE(isDate(QLatin1String(text)));
    }
    EXPECT_EQ(errorNumberOf([] { toDate(QStringLiteral("31/02/2026")); }), TypeMismatch);
}

TEST(DatesTest, ParsesDateTimesKeepingTheTime)
{
    const std::pair<const char*, QTime> cases[] = {{"23/11/2026 14:30", {14, 30}},
                                                   {"23/11/2026 14:30:15", {14, 30, 15}},
                                                   {"23/11/2026", {0, 0}},
                                                   {"2026-11-23T10:00:05.5", {10, 0, 5, 500}},
                                                   {"2026-11-23 9:07", {9, 7}},
                                                   {"2026-11-23 23:59:59", {23, 59, 59}},
                                                   {"2026-11-23T00:00:01", {0, 0, 1}}};
    for (const auto& [text, time] : cases)
        EXPECT_EQ(parseDateTime(QLatin1String(text)), QDateTime(QDate(2026, 11, 23), time)) << text;
}

TEST(DatesTest, AStoredTextReadsAsTheDateAndTimeWrittenEvenInTheHourTheClocksSkip)
{
    // In Italy 02:30 on the last Sunday of March does not exist as a local time; a stored text still says it.
    const auto parts = parseDateAndTime(QStringLiteral("2026-03-29 02:30:00"));
    ASSERT_TRUE(parts);
    EXPECT_EQ(parts->date, QDate(2026, 3, 29));
    EXPECT_EQ(parts->time, QTime(2, 30));
    EXPECT_EQ(shortDateTime(parts->date, parts->time), u"29/03/2026 02:30:00");
    EXPECT_EQ(shortDateTime(QDate(2026, 3, 29), QTime(0, 0)), u"29/03/2026");
    EXPECT_FALSE(parseDateAndTime(QStringLiteral("29/02/2026")));
}

TEST(DatesTest, AStoredTextIsTheDateAndTimeWrittenToTheSecond)
{
    const std::tuple<QDate, QTime, const char*> cases[] = {
        {{2026, 11, 23}, {14, 5, 9, 750}, "2026-11-23 14:05:09"},
        {{2026, 3, 29}, {2, 30}, "2026-03-29 02:30:00"}, // an hour the clocks skip in Italy
        {{999, 1, 2}, {0, 0}, "0999-01-02 00:00:00"},
        {{1899, 12, 30}, {10, 30}, "1899-12-30 10:30:00"}};
    for (const auto& [date, time, text] : cases)
        EXPECT_EQ(storedDateTime(date, time), QLatin1String(text));
}

TEST(DatesTest, ReadsDatesAsStaffTypeThem)
{
    const QDate today(2026, 5, 14);
    const std::pair<const char*, QDate> cases[] = {
        {"23/11/26", {2026, 11, 23}},   {"23112026", {2026, 11, 23}},  {"23/11/2026", {2026, 11, 23}},
        {"231126", {2026, 11, 23}},     {"23-11-26", {2026, 11, 23}},  {"23.11.2026", {2026, 11, 23}},
        {"23 11 26", {2026, 11, 23}},   {" 3/2/27 ", {2027, 2, 3}},    {"23/11", {2026, 11, 23}},
        {"2311", {2026, 11, 23}},       {"1/1/76", {2076, 1, 1}},      {"1/1/77", {1977, 1, 1}},
        {"29/02/28", {2028, 2, 29}},    {"01/01/1990", {1990, 1, 1}},  {"05062026", {2026, 6, 5}},
    };
    for (const auto& [text, date] : cases)
        EXPECT_EQ(parseTypedDate(QLatin1String(text), today), date) << text;
}

TEST(DatesTest, TypedTextThatIsNoDateIsRefused)
{
    for (const char* text : {"", "  ", "31/02/26", "29/02/2027", "32/01/2026", "1/13/2026", "00/01/2026",
                             "231", "23112", "2311202", "231120261", "23/11/202", "23/11/2026x", "oggi",
                             "2026-11-23", "23//11/26", "-23/11/26"}) {
        SCOPED_TRACE(text);
        EXPECT_FALSE(parseTypedDate(QLatin1String(text), QDate(2026, 5, 14)));
    }
}

TEST(DatesTest, LongDateIsItalianWhateverTheLocale)
{
    const std::pair<QDate, const char16_t*> cases[] = {{{2026, 11, 23}, u"lunedì, 23 novembre 2026"},
                                                       {{2026, 3, 1}, u"domenica, 01 marzo 2026"},
                                                       {{2026, 1, 6}, u"martedì, 06 gennaio 2026"},
                                                       {{2026, 12, 31}, u"giovedì, 31 dicembre 2026"}};
    const QLocale saved;
    QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));
    for (const auto& [date, text] : cases)
        EXPECT_EQ(longDate(date), QString::fromUtf16(text)) << date.toString(Qt::ISODate).toStdString();
    QLocale::setDefault(saved);
    EXPECT_EQ(longDate(QDate()), QString());
}

// The zone is read once only if TZ names the machine's own zone file: the times seen must not move, and a
// zone the user chose must stay chosen.
TEST(LocalTimeZone, NamingTheMachinesZoneOnceKeepsEveryLocalTimeAndAUsersChoice)
{
    const QByteArray saved = qgetenv("TZ");
    const bool wasSet = qEnvironmentVariableIsSet("TZ");
    const auto offsets = [] {
        QList<int> seconds;
        for (int month : {1, 7})
            seconds << QDateTime(QDate(2026, month, 1), QTime(12, 0)).offsetFromUtc();
        return seconds;
    };

    qunsetenv("TZ");
    tzset();
    const QList<int> machine = offsets();
    readLocalTimeZoneOnce();
    // Without the zone file there is nothing to name, and TZ stays unset.
    const bool zoneFile = QFileInfo::exists("/etc/localtime");
    EXPECT_EQ(qEnvironmentVariableIsSet("TZ"), zoneFile);
    EXPECT_EQ(qgetenv("TZ"), zoneFile ? QByteArray(":/etc/localtime") : QByteArray());
    EXPECT_EQ(offsets(), machine);

    qputenv("TZ", "Asia/Tokyo");
    tzset();
    readLocalTimeZoneOnce();
    EXPECT_EQ(qgetenv("TZ"), "Asia/Tokyo");
    EXPECT_EQ(offsets(), QList<int>({9 * 3600, 9 * 3600}));

    if (wasSet)
        qputenv("TZ", saved);
    else
        qunsetenv("TZ");
    tzset();
}

} // namespace
