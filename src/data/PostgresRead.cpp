// SPDX-License-Identifier: MIT
#include "PostgresRead.h"

#include "NativeHandle.h"

#include <QDateTime>

#include <libpq-fe.h>

#include <charconv>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <memory>

namespace xv::data {

namespace {

// The server's type numbers the driver tells apart (pg_type.h), and the value type it gives each.
enum Oid : unsigned {
    Bool = 16,
    Bytea = 17,
    Int8 = 20,
    Int2 = 21,
    RegProc = 24,
    Int4 = 23,
    Xid = 28,
    Cid = 29,
    Float4 = 700,
    Float8 = 701,
    AbsTime = 702,
    RelTime = 703,
    Date = 1082,
    Time = 1083,
    Timestamp = 1114,
    TimestampTz = 1184,
    TimeTz = 1266,
    Numeric = 1700,
    Void = 2278,
};

QMetaType typeOf(unsigned oid)
{
    switch (oid) {
    case Bool:
        return QMetaType(QMetaType::Bool);
    case Int8:
        return QMetaType(QMetaType::LongLong);
    case Int2:
    case Int4:
    case Void:
    case RegProc:
    case Xid:
    case Cid:
        return QMetaType(QMetaType::Int);
    case Numeric:
    case Float4:
    case Float8:
        return QMetaType(QMetaType::Double);
    case AbsTime:
    case RelTime:
    case Date:
        return QMetaType(QMetaType::QDate);
    case Time:
    case TimeTz:
        return QMetaType(QMetaType::QTime);
    case Timestamp:
    case TimestampTz:
        return QMetaType(QMetaType::QDateTime);
    case Bytea:
        return QMetaType(QMetaType::QByteArray);
    default:
        return QMetaType(QMetaType::QString);
    }
}

double floatingValue(const char* text, std::size_t length, bool* ok)
{
    double number = 0;
    const auto [end, failure] = std::from_chars(text, text + length, number);
    *ok = failure == std::errc() && end == text + length;
    if (*ok)
        return number;
    *ok = true;
    if (qstricmp(text, "NaN") == 0)
        return std::numeric_limits<double>::quiet_NaN();
    if (qstricmp(text, "Infinity") == 0)
        return std::numeric_limits<double>::infinity();
    if (qstricmp(text, "-Infinity") == 0)
        return -std::numeric_limits<double>::infinity();
    *ok = false;
    return 0;
}

// A timestamp as the driver reads it: the text as ISO, a zone's offset made a whole one, in local time.
QDateTime dateTimeValue(const char* text, std::size_t length)
{
    QString value = QString::fromLatin1(text, static_cast<qsizetype>(length));
    if (value.size() < 10)
        return QDateTime();
    const QChar sign = value.at(value.size() - 3);
    if (sign == QLatin1Char('-') || sign == QLatin1Char('+'))
        value += QLatin1String(":00");
    return QDateTime::fromString(value, Qt::ISODate).toLocalTime();
}

QVariant value(const PGresult* result, int row, int column, const QMetaType& type, unsigned oid)
{
    if (PQgetisnull(result, row, column))
        return QVariant(type, nullptr);
    const char* text = PQgetvalue(result, row, column);
    const auto length = static_cast<std::size_t>(PQgetlength(result, row, column));
    switch (type.id()) {
    case QMetaType::Bool:
        return QVariant(text[0] == 't');
    case QMetaType::LongLong:
        if (text[0] == '-')
            return QByteArray::fromRawData(text, static_cast<qsizetype>(length)).toLongLong();
        return QByteArray::fromRawData(text, static_cast<qsizetype>(length)).toULongLong();
    case QMetaType::Int:
        return std::atoi(text);
    case QMetaType::Double: {
        // Amounts keep every digit, as the program's reads ask of the driver.
        if (oid == Numeric)
            return QString::fromLatin1(text, static_cast<qsizetype>(length));
        bool ok = false;
        const double number = floatingValue(text, length, &ok);
        return ok ? QVariant(number) : QVariant();
    }
    case QMetaType::QDate:
        return QDate::fromString(QString::fromLatin1(text, static_cast<qsizetype>(length)), Qt::ISODate);
    case QMetaType::QTime:
        return QTime::fromString(QString::fromLatin1(text, static_cast<qsizetype>(length)), Qt::ISODate);
    case QMetaType::QDateTime:
        return dateTimeValue(text, length);
    case QMetaType::QByteArray: {
        std::size_t bytes = 0;
        unsigned char* raw = PQunescapeBytea(reinterpret_cast<const unsigned char*>(text), &bytes);
        const QByteArray data(reinterpret_cast<const char*>(raw), static_cast<qsizetype>(bytes));
        PQfreemem(raw);
        return data;
    }
    default:
        return QString::fromUtf8(text, static_cast<qsizetype>(length));
    }
}

struct ResultFree
{
    void operator()(PGresult* result) const { PQclear(result); }
};

} // namespace

bool readPostgresRows(const QSqlDatabase& db, const QString& nativeSql, ReadRows& out, QSqlError& error)
{
    out = ReadRows();
    error = QSqlError();
    pg_conn* connection = postgresHandle(db);
    if (!connection || PQtransactionStatus(connection) == PQTRANS_ACTIVE || PQisBusy(connection))
        return false;
    const std::unique_ptr<PGresult, ResultFree> result(PQexec(connection, nativeSql.toUtf8().constData()));
    const ExecStatusType status = PQresultStatus(result.get());
    if (status != PGRES_TUPLES_OK && status != PGRES_COMMAND_OK) {
        // The driver's texts, so that the operator and the log read the same whichever way it ran.
        error = QSqlError(QStringLiteral("QPSQL: Unable to create query"),
                          QString::fromUtf8(PQresultErrorMessage(result.get())), QSqlError::StatementError,
                          QString::fromLatin1(PQresultErrorField(result.get(), PG_DIAG_SQLSTATE)));
        return false;
    }
    const int columns = PQnfields(result.get());
    QVector<unsigned> oids(columns);
    for (int c = 0; c < columns; ++c) {
        out.names << QString::fromUtf8(PQfname(result.get(), c));
        oids[c] = PQftype(result.get(), c);
        out.types << typeOf(oids[c]);
    }
    const int rows = PQntuples(result.get());
    out.rows.reserve(rows);
    for (int r = 0; r < rows; ++r) {
        QVector<QVariant> row(columns);
        for (int c = 0; c < columns; ++c)
            row[c] = value(result.get(), r, c, out.types[c], oids[c]);
        out.rows.push_back(std::move(row));
    }
    return true;
}

} // namespace xv::data
