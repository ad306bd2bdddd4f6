// SPDX-License-Identifier: MIT
// Reads that bypass the driver give back exactly what the driver gives: the same names, column types and
// values (nulls, numbers, texts, dates, sums, aliases, an empty result), and fail with the engine's text.
#include "TestDatabase.h"

#include "common/RuntimeError.h"
#include "data/Database.h"
#include "data/TypeCodes.h"

#include <QSqlField>
#include <QSqlQuery>
#include <QSqlRecord>

#include <gtest/gtest.h>

#include <cmath>
#include <iterator>
#include <vector>

namespace {

using namespace xv;

class DirectReadTest : public test::SchemaTest
{
protected:
    void addLine(const QString& numero, const QVariant& qta, const QString& nominativo, const QVariant& note)
    {
        db().executeBound(QStringLiteral("insert into movimenti (numero, serie, riga, qta, prezzo, datareg, "
                                         "Nominativo, note) values (?, '2026', 1, ?, ?, ?, ?, ?)"),
                          {numero, qta, db().toStorage(QStringLiteral("12.3400"), data::TypeCode::Currency),
                           db().toStorage(QStringLiteral("2026-11-23 10:30:00"), data::TypeCode::Date),
                           nominativo, note});
    }
    // What the driver itself gives for the text, the way the program read it before.
    data::ReadRows throughDriver(const QString& sql)
    {
        QSqlQuery query = db().execute(sql);
        data::ReadRows out;
        const QSqlRecord record = query.record();
        for (int i = 0; i < record.count(); ++i) {
            out.names << record.field(i).name();
            out.types << record.field(i).metaType();
        }
        while (query.next()) {
            QVector<QVariant> row;
            for (int i = 0; i < record.count(); ++i)
                row << query.value(i);
            out.rows << row;
        }
        return out;
    }
};

TEST_P(DirectReadTest, ARecordsetReadsWhatTheDriverReads)
{
    addLine("R1", 2.5, QStringLiteral("D'Angelo — Niccolò €"), QStringLiteral("ritiro"));
    addLine("R1", QVariant(), QString(QLatin1String("")), QVariant());
    const char* texts[] = {
        "select * from movimenti where numero='R1' order by rowid",
        "select sum(prezzo) as TotaleAcconto, count(*) as righe, max(qta) from movimenti where numero='R1'",
        "select m1.numero, m1.Nominativo as \"Cliente\", val(m1.serie) + 1 as anno from movimenti AS m1 "
        "where m1.numero='R1'",
        "select sum(prezzo) as TotaleAcconto from movimenti where numero='nessuno'",
        "select numero, qta from movimenti where numero='nessuno'",
    };
    // PostgreSQL's types the schema does not use, and values the driver converts its own way: a timestamp
    // with a fraction, with a zone, a negative and a positive bigint, a time, a date, a boolean, the
    // floating specials and bytes.
    const char* postgresTexts[] = {
        "select cast('2026-11-23 10:30:00.25' as timestamp) as t, cast('2026-03-29 02:30:00+01' as "
        "timestamptz) "
        "as tz, cast(-5 as bigint) as meno, count(*) as quante, cast('12:34:56' as time) as ora, "
        "cast('2026-02-28' as date) as giorno, true as vero, cast('NaN' as float8) as nan, "
        "cast('-Infinity' as float4) as giu, cast('1.5e3' as float8) as mille, "
        "cast(12.3400 as numeric(19,4)) as importo, cast(E'\\\\x00ff' as bytea) as byte, "
        "cast(null as date) as nessuna from movimenti",
    };
    std::vector<const char*> all(std::begin(texts), std::end(texts));
    if (GetParam() == data::Engine::PostgreSQL)
        all.insert(all.end(), std::begin(postgresTexts), std::end(postgresTexts));
    for (const char* text : all) {
        const data::ReadRows expected = throughDriver(QString::fromUtf8(text));
        const data::ReadRows read = db().read(QString::fromUtf8(text));
        EXPECT_EQ(read.names, expected.names) << text;
        EXPECT_EQ(read.types, expected.types) << text;
        ASSERT_EQ(read.rows.size(), expected.rows.size()) << text;
        for (qsizetype r = 0; r < read.rows.size(); ++r) {
            for (qsizetype c = 0; c < read.rows[r].size(); ++c) {
                const QVariant& got = read.rows[r][c];
                const QVariant& want = expected.rows[r][c];
                EXPECT_EQ(got.metaType(), want.metaType()) << text << " column " << c;
                EXPECT_EQ(got.isNull(), want.isNull()) << text << " column " << c;
                if (want.metaType().id() == QMetaType::Double && std::isnan(want.toDouble()))
                    EXPECT_TRUE(std::isnan(got.toDouble()))
                        << text << " column " << c; // NaN is no value's equal
                else
                    EXPECT_EQ(got, want) << text << " column " << c;
            }
        }
    }
}

// A statement whose rows were not all read leaves them coming on the connection; a read then still gives
// its own rows.
TEST_P(DirectReadTest, AReadAfterAStatementLeftHalfReadGivesItsOwnRows)
{
    addLine("R1", 1, QStringLiteral("Rossi"), QStringLiteral("a"));
    addLine("R1", 2, QStringLiteral("Verdi"), QStringLiteral("b"));
    QSqlQuery pending = db().executeBound(QStringLiteral("select numero from movimenti order by rowid"));
    ASSERT_TRUE(pending.next());
    const data::ReadRows read = db().read(QStringLiteral("select Nominativo from movimenti order by rowid"));
    ASSERT_EQ(read.rows.size(), 2);
    EXPECT_EQ(read.rows[1][0].toString(), QStringLiteral("Verdi"));
}

TEST_P(DirectReadTest, AReadThatFailsCarriesTheEnginesTextAndTheStatement)
{
    try {
        db().read(QStringLiteral("select colonna_che_non_esiste from movimenti"));
        FAIL() << "the read did not fail";
    } catch (const common::RuntimeError& e) {
        EXPECT_TRUE(e.description().contains(QStringLiteral("colonna_che_non_esiste"))) << e.what();
    }
}

XV_INSTANTIATE_FOR_ENGINES(DirectReadTest);

} // namespace
