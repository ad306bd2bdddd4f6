// SPDX-License-Identifier: MIT
#include "SqliteRead.h"

#include "NativeHandle.h"

#include <QSqlDriver>

#include <sqlite3.h>

namespace xv::data {

namespace {

// The driver's texts, so that the operator and the log read the same whichever way a statement ran.
QSqlError engineError(sqlite3* connection, int code)
{
    return QSqlError(QStringLiteral("Unable to execute statement"),
                     QString(reinterpret_cast<const QChar*>(sqlite3_errmsg16(connection))),
                     QSqlError::StatementError, QString::number(code));
}

// The engine's own text is UTF-8: reading it so spares it a conversion of every value.
QString utf8(const unsigned char* text, int bytes)
{
    return QString::fromUtf8(reinterpret_cast<const char*>(text), bytes);
}

// A column's type as the driver reads it: from its declared type, else from its first value.
QMetaType columnType(sqlite3_stmt* statement, int column, bool hasRow)
{
    if (const char* declared = sqlite3_column_decltype(statement, column)) {
        const QString name = QString::fromUtf8(declared).toLower();
        if (name == QLatin1String("integer") || name == QLatin1String("int"))
            return QMetaType(QMetaType::Int);
        if (name == QLatin1String("double") || name == QLatin1String("float") || name == QLatin1String("real") ||
            name.startsWith(QLatin1String("numeric")))
            return QMetaType(QMetaType::Double);
        if (name == QLatin1String("blob"))
            return QMetaType(QMetaType::QByteArray);
        if (name == QLatin1String("boolean") || name == QLatin1String("bool"))
            return QMetaType(QMetaType::Bool);
        if (!name.isEmpty())
            return QMetaType(QMetaType::QString);
    }
    switch (hasRow ? sqlite3_column_type(statement, column) : -1) {
    case SQLITE_INTEGER:
        return QMetaType(QMetaType::Int);
    case SQLITE_FLOAT:
        return QMetaType(QMetaType::Double);
    case SQLITE_BLOB:
        return QMetaType(QMetaType::QByteArray);
    case SQLITE_TEXT:
        return QMetaType(QMetaType::QString);
    default:
        return QMetaType();
    }
}

QVariant value(sqlite3_stmt* statement, int column)
{
    switch (sqlite3_column_type(statement, column)) {
    case SQLITE_INTEGER:
        return QVariant(qint64(sqlite3_column_int64(statement, column)));
    case SQLITE_FLOAT:
        return QVariant(sqlite3_column_double(statement, column));
    case SQLITE_BLOB: {
        const void* bytes = sqlite3_column_blob(statement, column);
        return QVariant(QByteArray(static_cast<const char*>(bytes), sqlite3_column_bytes(statement, column)));
    }
    case SQLITE_NULL:
        return QVariant(QMetaType::fromType<QString>());
    default: {
        const unsigned char* text = sqlite3_column_text(statement, column);
        return QVariant(utf8(text, sqlite3_column_bytes(statement, column)));
    }
    }
}

} // namespace

bool readSqliteRows(const QSqlDatabase& db, const QString& nativeSql, ReadRows& out, QSqlError& error)
{
    out = ReadRows();
    sqlite3* connection = sqliteHandle(db);
    if (!connection) {
        error = QSqlError(QStringLiteral("Database non aperto"), QString(), QSqlError::ConnectionError);
        return false;
    }
    sqlite3_stmt* statement = nullptr;
    const QByteArray sql = nativeSql.toUtf8();
    int result = sqlite3_prepare_v2(connection, sql.constData(), int(sql.size()), &statement, nullptr);
    if (result != SQLITE_OK) {
        error = engineError(connection, result);
        sqlite3_finalize(statement);
        return false;
    }
    if (!statement)
        return true; // a text with no statement in it reads no rows
    const int columns = sqlite3_column_count(statement);
    result = sqlite3_step(statement);
    const bool hasRow = result == SQLITE_ROW;
    for (int c = 0; c < columns; ++c) {
        QString name = QString::fromUtf8(sqlite3_column_name(statement, c));
        name.remove(QLatin1Char('"'));
        out.names << name.mid(name.lastIndexOf(QLatin1Char('.')) + 1);
        out.types << columnType(statement, c, hasRow);
    }
    for (; result == SQLITE_ROW; result = sqlite3_step(statement)) {
        QVector<QVariant> row(columns);
        for (int c = 0; c < columns; ++c)
            row[c] = value(statement, c);
        out.rows.push_back(std::move(row));
    }
    if (result != SQLITE_DONE) {
        error = engineError(connection, result);
        sqlite3_finalize(statement);
        out = ReadRows();
        return false;
    }
    sqlite3_finalize(statement);
    return true;
}

} // namespace xv::data
