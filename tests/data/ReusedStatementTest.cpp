// SPDX-License-Identifier: MIT
// Statements prepared once and run again with other values, on both engines: they store what the driver
// stores, answer each new row's key, fail as the driver fails, and are prepared once per connection.
#include "TestDatabase.h"

#include "common/RuntimeError.h"
#include "data/Database.h"
#include "data/Schema.h"
#include "data/TypeCodes.h"

#include <QSqlQuery>
#include <QSqlRecord>

#include <gtest/gtest.h>

namespace {

using namespace xv;
namespace TypeCode = data::TypeCode;

class ReusedStatementTest : public test::SchemaTest
{
protected:
    QString insertLine() const
    {
        QString sql =
            QStringLiteral("insert into movimenti (numero, serie, riga, qta, prezzo, datareg, Nominativo, "
                           "note) values (?, ?, ?, ?, ?, ?, ?, ?)");
        if (GetParam() == data::Engine::PostgreSQL)
            sql += QStringLiteral(" returning rowid");
        return sql;
    }
    // Each stored value as text, and on SQLite with the kind of value it was stored as.
    QStringList stored(const QString& numero)
    {
        const bool sqlite = GetParam() == data::Engine::SQLite;
        QSqlQuery q = db().executeBound(
            sqlite ? QStringLiteral(
                         "select riga, typeof(riga), qta, typeof(qta), prezzo, typeof(prezzo), datareg, "
                         "typeof(datareg), Nominativo, typeof(Nominativo), hex(Nominativo), note, "
                         "typeof(note), hex(note) "
                         "from movimenti where numero=?")
                   : QStringLiteral("select riga, qta, prezzo, datareg, Nominativo, note is null "
                                    "from movimenti where numero=?"),
            {numero});
        QStringList values;
        if (q.next()) {
            for (int i = 0; i < q.record().count(); ++i)
                values << (q.isNull(i) ? QStringLiteral("<null>") : q.value(i).toString());
        }
        return values;
    }
    QVariantList line(const QString& numero, const QVariant& riga, const QString& nominativo,
                      const QVariant& note)
    {
        return {numero,
                QStringLiteral("2026"),
                riga,
                2.5,
                db().toStorage(QStringLiteral("12.3400"), TypeCode::Currency),
                db().toStorage(QStringLiteral("2026-11-23 10:30:00"), TypeCode::Date),
                nominativo,
                note};
    }
};

TEST_P(ReusedStatementTest, EachValueIsStoredAsTheDriverStoresIt)
{
    const struct
    {
        QVariant riga;
        QString nominativo;
        QVariant note;
    } cases[] = {
        {QVariant::fromValue<qint16>(3), QStringLiteral("D'Angelo \\' 🎉"), QStringLiteral("ritiro")},
        {7, QString(QLatin1String("")), QVariant()},
        {Q_INT64_C(12), QStringLiteral("Rossi"), QVariant(QMetaType(QMetaType::QString))},
        // Texts are handed to SQLite as UTF-8 unless a surrogate is in them: the stored bytes are the same.
        {5, QStringLiteral("Perché è già così — Niccolò"), QStringLiteral("€ 12,50")},
        {6, QStringLiteral("metà ") + QChar(0xD83C) + QStringLiteral(" sola"), QStringLiteral("x")},
    };
    int i = 0;
    for (const auto& c : cases) {
        const QString driver = QStringLiteral("driver%1").arg(i);
        const QString reused = QStringLiteral("reused%1").arg(i++);
        db().executeBound(insertLine(), line(driver, c.riga, c.nominativo, c.note));
        db().executeReused(insertLine(), line(reused, c.riga, c.nominativo, c.note));
        ASSERT_FALSE(stored(driver).isEmpty());
        EXPECT_EQ(stored(reused), stored(driver)) << c.nominativo.toStdString();
    }
}

// Numbers and dates reach each column type as the driver's own would: a double read back the same in a
// single, a double and a currency column, a date and time to the millisecond. What PostgreSQL refuses (an
// amount past its currency column's range, a truth value in a number column) it refuses either way.
TEST_P(ReusedStatementTest, NumbersAndDatesAreStoredAsTheDriverStoresThem)
{
    const std::pair<QVariant, bool> values[] = {{0.1, false},
                                                {1.0 / 3, false},
                                                {1e20, true},
                                                {-2.5e-7, false},
                                                {123456.789, false},
                                                {7, false},
                                                {Q_INT64_C(-9000000000), false},
                                                {QDateTime(QDate(2026, 3, 29), QTime(2, 30, 15, 250)), false},
                                                {true, true}};
    const bool postgres = GetParam() == data::Engine::PostgreSQL;
    const QString insert = "insert into movimenti (numero, qta, prezzo, quantita, datareg) values (?, ?, ?, ?, ?)";
    const auto read = [&](const QString& numero) {
        QSqlQuery q = db().executeBound("select qta, prezzo, quantita, datareg from movimenti where numero=?", {numero});
        QStringList texts;
        while (q.next())
            for (int i = 0; i < 4; ++i)
                texts << q.value(i).toString();
        return texts;
    };
    int i = 0;
    for (const auto& [value, refusedOnPostgres] : values) {
        SCOPED_TRACE(value.toString().toStdString());
        const bool date = value.metaType().id() == QMetaType::QDateTime;
        const QVariant number = date ? QVariant(1) : value;
        const QVariant when = date ? value : QVariant();
        const QString driver = QStringLiteral("d%1").arg(i);
        const QString reused = QStringLiteral("r%1").arg(i++);
        QString driverError;
        QString reusedError;
        try {
            db().executeBound(insert, {driver, number, number, number, when});
        } catch (const common::RuntimeError& e) {
            driverError = e.description();
        }
        try {
            db().executeReused(insert, {reused, number, number, number, when});
        } catch (const common::RuntimeError& e) {
            reusedError = e.description();
        }
        const bool refused = postgres && refusedOnPostgres;
        EXPECT_EQ(driverError.isEmpty(), !refused) << driverError.toStdString();
        EXPECT_EQ(reusedError.isEmpty(), !refused) << reusedError.toStdString();
        if (refused)
            continue;
        const QStringList stored = read(driver);
        ASSERT_EQ(stored.size(), 4);
        EXPECT_EQ(read(reused), stored);
    }
}

TEST_P(ReusedStatementTest, ATextIsPreparedOnceInATransactionAndEachRunAnswersTheNewRowsKey)
{
    const qint64 before = db().statementsPrepared();
    QStringList keys;
    {
        data::Transaction transaction(db());
        for (int i = 0; i < 3; ++i)
            keys << db().executeReused(insertLine(), line(QString::number(i), 1, "Rossi", {})).toString();
        EXPECT_EQ(db().statementsPrepared(), before + 1);
        db().executeReused("update movimenti set qta=? where rowid=?", {4.0, keys.first()});
        EXPECT_EQ(db().statementsPrepared(), before + 2) << "another text is another statement";
        transaction.commit();
    }
    QStringList rowids;
    for (QSqlQuery q = db().executeBound("select rowid from movimenti order by rowid"); q.next();)
        rowids << q.value(0).toString();
    EXPECT_EQ(keys, rowids);

    // A statement belongs to its transaction, so that none outlives the session it was prepared in.
    {
        data::Transaction transaction(db());
        db().executeReused(insertLine(), line("3", 1, "Rossi", {}));
        transaction.commit();
    }
    EXPECT_EQ(db().statementsPrepared(), before + 3);
    db().executeReused(insertLine(), line("4", 1, "Rossi", {}));
    db().executeReused(insertLine(), line("5", 1, "Rossi", {}));
    EXPECT_EQ(db().statementsPrepared(), before + 5) << "outside a transaction nothing is kept";
    {
        data::Transaction transaction(db());
        db().executeReused(insertLine(), line("6", 1, "Rossi", {}));
    } // rolled back
    EXPECT_EQ(db().statementsPrepared(), before + 6);
    data::Transaction transaction(db());
    db().executeReused(insertLine(), line("7", 1, "Rossi", {}));
    EXPECT_EQ(db().statementsPrepared(), before + 7);
    transaction.commit();
    EXPECT_TRUE(stored("6").isEmpty());
    EXPECT_FALSE(stored("7").isEmpty());
}

TEST_P(ReusedStatementTest, AFailedRunReadsAsTheDriversErrorAndTheNextRunWorks)
{
    const QString insert =
        "insert into numeratori (codtipodoc, tipodocumento, serie, numero) values (?, ?, ?, ?)";
    db().executeReused(insert, {"CO", "COMM", "2026", 1});
    QString driverError;
    QString reusedError;
    try {
        db().executeBound(insert, {"CO", "COMM", "2026", 2});
    } catch (const common::RuntimeError& e) {
        driverError = e.description();
    }
    try {
        db().executeReused(insert, {"CO", "COMM", "2026", 3});
    } catch (const common::RuntimeError& e) {
        reusedError = e.description();
    }
    EXPECT_FALSE(reusedError.isEmpty()) << "the same key twice must fail";
    EXPECT_EQ(reusedError, driverError);

    db().executeReused(insert, {"CO", "COMM", "2027", 4});
    QSqlQuery q = db().executeBound("select count(*) from numeratori");
    ASSERT_TRUE(q.next());
    EXPECT_EQ(q.value(0).toInt(), 2);
}

TEST_P(ReusedStatementTest, TheFaultSeamCountsAndFailsAReusedStatement)
{
    db().failStatement(1);
    try {
        db().executeReused(insertLine(), line("1", 1, "Rossi", QVariant()));
        ADD_FAILURE() << "the statement must fail";
    } catch (const common::RuntimeError& e) {
        EXPECT_TRUE(e.description().contains("Errore provocato per prova"));
    }
    EXPECT_TRUE(stored("1").isEmpty());
    db().executeReused(insertLine(), line("1", 1, "Rossi", QVariant()));
    EXPECT_FALSE(stored("1").isEmpty());
}

TEST_P(ReusedStatementTest, TheColumnsOfATableComeWithTheTypeOfTheirDeclaration)
{
    QMap<QString, int> types;
    for (const data::ColumnInfo& column : data::tableColumns(db(), "movimenti"))
        types.insert(column.name.toLower(), column.typeCode);
    const std::pair<const char*, int> expected[] = {
        {"rowid", TypeCode::Integer},   {"riga", TypeCode::SmallInt},    {"qta", TypeCode::Single},
        {"quantita", TypeCode::Double}, {"prezzo", TypeCode::Currency},  {"datareg", TypeCode::Date},
        {"nominativo", TypeCode::Text}, {"rowid_med", TypeCode::Integer}};
    for (const auto& [name, type] : expected)
        EXPECT_EQ(types.value(name, -1), type) << name;
    EXPECT_EQ(data::tableColumns(db(), "movimenti").first().name.toLower(), "rowid")
        << "in the table's order";
}

XV_INSTANTIATE_FOR_ENGINES(ReusedStatementTest);

} // namespace
