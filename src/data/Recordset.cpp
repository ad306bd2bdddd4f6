// SPDX-License-Identifier: MIT
#include "Recordset.h"

#include "common/Dates.h"
#include "common/RuntimeError.h"
#include "data/Database.h"
#include "data/Schema.h"
#include "data/TypeCodes.h"

#include <QSqlField>
#include <QSqlRecord>

#include <algorithm>
#include <utility>

namespace xv::data {

using common::ErrorNumber;
using common::Money;
using common::RuntimeError;

namespace {

int typeCodeOf(const QMetaType& type)
{
    switch (type.id()) {
    case QMetaType::Short:
        return TypeCode::SmallInt;
    case QMetaType::Int:
    case QMetaType::UInt:
        return TypeCode::Integer;
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
        return TypeCode::BigInt;
    case QMetaType::Float:
        return TypeCode::Single;
    case QMetaType::Double:
        return TypeCode::Double;
    case QMetaType::QDate:
    case QMetaType::QDateTime:
    case QMetaType::QTime:
        return TypeCode::Date;
    case QMetaType::Bool:
        return TypeCode::Boolean;
    default:
        return TypeCode::Text;
    }
}

} // namespace

QString variantText(const QVariant& value)
{
    if (value.isNull() || !value.isValid())
        return {};
    switch (value.metaType().id()) {
    case QMetaType::QDateTime: {
        const QDateTime when = value.toDateTime();
        return common::shortDateTime(when);
    }
    case QMetaType::QDate:
        return common::shortDate(value.toDate());
    case QMetaType::Double:
    case QMetaType::Float:
        return QString::number(value.toDouble(), 'g', 15);
    default:
        return value.toString();
    }
}

Money variantMoney(const QVariant& value)
{
    if (value.isNull() || !value.isValid())
        return Money();
    switch (value.metaType().id()) {
    case QMetaType::Int:
    case QMetaType::LongLong:
    case QMetaType::Short:
    case QMetaType::UInt:
        return Money::fromInteger(value.toLongLong());
    case QMetaType::Double:
    case QMetaType::Float:
        return Money::fromDouble(value.toDouble());
    default:
        return Money::fromDecimalText(value.toString());
    }
}

QDateTime variantDateTime(const QVariant& value)
{
    if (value.isNull() || !value.isValid())
        return {};
    switch (value.metaType().id()) {
    case QMetaType::QDateTime:
        return value.toDateTime();
    case QMetaType::QDate:
        return value.toDate().startOfDay();
    default: {
        const auto parsed = common::parseDateTime(value.toString());
        if (!parsed)
            throw RuntimeError::typeMismatch(value.toString());
        return *parsed;
    }
    }
}

Recordset Recordset::open(Database& db, const QString& suiteSql)
{
    ReadRows read = db.read(suiteSql);
    Recordset rs;
    rs.m_db = &db;
    rs.m_typeCodes.reserve(read.types.size());
    for (const QMetaType& type : read.types)
        rs.m_typeCodes << typeCodeOf(type);
    rs.setFields(read.names);
    rs.m_rows = std::move(read.rows);
    return rs;
}

Recordset Recordset::openTable(Database& db, const QString& table, const QString& suiteCondition)
{
    const QVector<ColumnInfo> columns = tableColumns(db, table);
    if (columns.isEmpty())
        throw RuntimeError(ErrorNumber::DatabaseError, QStringLiteral("Tabella sconosciuta: %1").arg(table));
    QStringList names;
    QString select;
    for (const ColumnInfo& column : columns) {
        if (!select.isEmpty())
            select += QLatin1Char(',');
        select += column.name;
        names << column.name;
    }
    Recordset rs;
    if (!suiteCondition.isEmpty())
        rs = open(db, QStringLiteral("select %1 from %2 where %3").arg(select, table, suiteCondition));
    rs.m_db = &db;
    rs.m_table = table;
    rs.setFields(names);
    rs.m_typeCodes.clear();
    for (const ColumnInfo& column : columns)
        rs.m_typeCodes << column.typeCode;
    return rs;
}

Recordset Recordset::fromRows(const QStringList& fieldNames, QVector<QVector<QVariant>> rows)
{
    Recordset rs;
    rs.setFields(fieldNames);
    rs.m_typeCodes = QVector<int>(fieldNames.size(), TypeCode::Text);
    for (auto& row : rows) {
        if (row.size() != fieldNames.size())
            throw RuntimeError(ErrorNumber::InvalidProcedureCall, QStringLiteral("Riga di lunghezza errata"));
    }
    rs.m_rows = std::move(rows);
    return rs;
}

void Recordset::setFields(const QStringList& names)
{
    // The same few column lists come back read after read (the sixty-one of movimenti at every load):
    // their indexes are built once and shared, as the hashes share their data.
    struct Indexes
    {
        QStringList names;
        QHash<QString, int> lower;
        QHash<QString, int> exact;
    };
    constexpr qsizetype kKept = 16;
    thread_local QVector<Indexes> kept;
    m_fields = names;
    for (const Indexes& known : std::as_const(kept)) {
        if (known.names == names) {
            m_index = known.lower;
            m_exactIndex = known.exact;
            return;
        }
    }
    m_index.clear();
    m_exactIndex.clear();
    QStringList lower;
    lower.reserve(names.size());
    for (int i = 0; i < names.size(); ++i) {
        lower << names[i].toLower();
        m_index.insert(lower[i], i);
    }
    // Of two names that differ only in case the later one is found, by either spelling.
    for (int i = 0; i < names.size(); ++i) {
        if (m_index.value(lower[i]) == i)
            m_exactIndex.insert(names[i], i);
    }
    if (kept.size() == kKept)
        kept.removeFirst();
    kept.push_back({names, m_index, m_exactIndex});
}

void Recordset::moveNext()
{
    if (eof())
        throw RuntimeError(ErrorNumber::NoCurrentRecord,
                           QStringLiteral("Nessun record corrente (fine dei dati)"));
    ++m_position;
}

void Recordset::movePrevious()
{
    if (m_position < 0)
        throw RuntimeError(ErrorNumber::NoCurrentRecord,
                           QStringLiteral("Nessun record corrente (inizio dei dati)"));
    --m_position;
}

QString Recordset::fieldName(int index) const
{
    if (index < 0 || index >= m_fields.size())
        throw RuntimeError(ErrorNumber::FieldNotFound, QStringLiteral("Campo %1 inesistente").arg(index));
    return m_fields[index];
}

int Recordset::fieldIndex(const QString& name) const
{
    if (const auto exact = m_exactIndex.constFind(name); exact != m_exactIndex.constEnd())
        return *exact;
    const auto it = m_index.constFind(name.toLower());
    if (it == m_index.constEnd())
        throw RuntimeError(ErrorNumber::FieldNotFound,
                           QStringLiteral("Elemento non trovato nell'insieme: campo '%1'").arg(name));
    return *it;
}

void Recordset::requireCurrent() const
{
    if (m_editMode == EditMode::AddNew)
        return;
    if (eof() || bof())
        throw RuntimeError(ErrorNumber::NoCurrentRecord,
                           QStringLiteral("BOF o EOF è True oppure il record corrente è stato eliminato"));
}

QVariant Recordset::value(int index) const
{
    if (index < 0 || index >= m_fields.size())
        throw RuntimeError(ErrorNumber::FieldNotFound, QStringLiteral("Campo %1 inesistente").arg(index));
    requireCurrent();
    if (m_editMode != EditMode::None)
        return m_editBuffer[index];
    return m_rows[m_position][index];
}

QVariant Recordset::value(const QString& name) const
{
    return value(fieldIndex(name));
}

bool Recordset::isNull(const QString& name) const
{
    const QVariant v = value(name);
    return v.isNull() || !v.isValid();
}

QString Recordset::text(const QString& name) const
{
    return variantText(value(name));
}

Money Recordset::money(const QString& name) const
{
    return variantMoney(value(name));
}

QDateTime Recordset::dateTime(const QString& name) const
{
    return variantDateTime(value(name));
}

double Recordset::number(const QString& name) const
{
    const QVariant v = value(name);
    if (v.isNull() || !v.isValid())
        return 0.0;
    bool ok = false;
    const double d = v.toDouble(&ok);
    if (!ok)
        throw RuntimeError::typeMismatch(v.toString());
    return d;
}

int Recordset::typeCode(const QString& name) const
{
    const int index = fieldIndex(name);
    return index < m_typeCodes.size() ? m_typeCodes[index] : TypeCode::Text;
}

void Recordset::requireWritable() const
{
    if (m_table.isEmpty() || !m_db)
        throw RuntimeError(ErrorNumber::ActionNotSupported,
                           QStringLiteral("Il recordset non è aggiornabile (non è aperto su una tabella)"));
}

void Recordset::addNew()
{
    requireWritable();
    m_editMode = EditMode::AddNew;
    m_editBuffer = QVector<QVariant>(m_fields.size());
    m_touched = QVector<bool>(m_fields.size(), false);
}

void Recordset::setValue(const QString& name, const QVariant& value)
{
    requireWritable();
    setValue(fieldIndex(name), value);
}

void Recordset::setValue(int index, const QVariant& value)
{
    requireWritable();
    if (index < 0 || index >= m_fields.size())
        throw RuntimeError(ErrorNumber::FieldNotFound,
                           QStringLiteral("Elemento non trovato nell'insieme: campo %1").arg(index));
    if (m_editMode == EditMode::None) {
        requireCurrent();
        m_editMode = EditMode::Edit;
        m_editBuffer = m_rows[m_position];
        m_touched = QVector<bool>(m_fields.size(), false);
    }
    m_editBuffer[index] = value;
    m_touched[index] = true;
}

void Recordset::setMoney(const QString& name, Money amount)
{
    if (m_db && m_db->engine() == Engine::PostgreSQL)
        setValue(name, amount.toDecimalText());
    else
        setValue(name, amount.toDouble());
}

void Recordset::cancelUpdate()
{
    m_editMode = EditMode::None;
    m_editBuffer.clear();
    m_touched.clear();
}

namespace {

// Records to a statement when gathering: enough that a thousand-line order takes ten round trips, and far
// below the engines' limits on a statement's values (32,766 for SQLite, 65,535 for PostgreSQL).
int gatheredPerStatement(qsizetype columns)
{
    constexpr int kRecords = 100;
    constexpr qsizetype kMostValues = 30000;
    return static_cast<int>(
        std::clamp<qsizetype>(kMostValues / std::max<qsizetype>(columns, 1), 1, kRecords));
}

} // namespace

void Recordset::gatherAddedRecords()
{
    requireWritable();
    m_gathering = true;
}

void Recordset::writeAddedRecords()
{
    if (m_gathered == 0)
        return;
    const QString one = QStringLiteral("(") +
                        QStringList(m_gatheredColumns.size(), QStringLiteral("?")).join(QLatin1Char(',')) +
                        QLatin1Char(')');
    const QString sql =
        QStringLiteral("insert into %1 (%2) values ").arg(m_table, m_gatheredColumns.join(QLatin1Char(','))) +
        QStringList(m_gathered, one).join(QLatin1Char(','));
    const QVariantList values = std::exchange(m_gatheredValues, {});
    m_gathered = 0;
    // A full statement's text is the same for every batch of an order: it is prepared once.
    m_db->executeReused(sql, values);
}

void Recordset::update()
{
    requireWritable();
    if (m_editMode == EditMode::None)
        return;
    const int keyIndex = static_cast<int>(m_index.value(QStringLiteral("rowid"), -1));
    QStringList columns;
    QVariantList values;
    columns.reserve(m_fields.size());
    values.reserve(m_fields.size());
    for (int i = 0; i < m_fields.size(); ++i) {
        if (!m_touched[i] || i == keyIndex)
            continue;
        columns << m_fields[i];
        QVariant value = m_editBuffer[i];
        // The drivers write a null QString as NULL: an empty text stays an empty text, and only a
        // QVariant without a value means NULL.
        if (value.metaType().id() == QMetaType::QString && value.toString().isNull())
            value = QString(QLatin1String(""));
        values << m_db->toStorage(value, m_typeCodes.value(i, TypeCode::Text), m_fields[i]);
    }
    if (m_editMode == EditMode::AddNew && m_gathering) {
        if (m_gathered > 0 && columns != m_gatheredColumns)
            writeAddedRecords();
        m_gatheredColumns = columns;
        m_gatheredValues += values;
        ++m_gathered;
        m_rows.push_back(std::move(m_editBuffer));
        m_position = m_rows.size() - 1;
        m_editMode = EditMode::None;
        if (m_gathered >= gatheredPerStatement(columns.size()))
            writeAddedRecords();
        return;
    }
    if (m_editMode == EditMode::AddNew) {
        if (m_insertSql.isEmpty() || m_insertFields != m_touched) {
            QString placeholders;
            for (int i = 0; i < columns.size(); ++i)
                placeholders += i == 0 ? QStringLiteral("?") : QStringLiteral(",?");
            m_insertSql = columns.isEmpty() ? QStringLiteral("insert into %1 default values").arg(m_table)
                                            : QStringLiteral("insert into %1 (%2) values (%3)")
                                                  .arg(m_table, columns.join(QLatin1Char(',')), placeholders);
            if (keyIndex >= 0 && m_db->engine() == Engine::PostgreSQL)
                m_insertSql += QStringLiteral(" returning rowid");
            m_insertFields = m_touched;
        }
        // The same insert is run for every line of an order: its statement is prepared once.
        const QVariant key = m_db->executeReused(m_insertSql, values);
        if (keyIndex >= 0)
            m_editBuffer[keyIndex] = key;
        m_rows.push_back(std::move(m_editBuffer));
        m_position = m_rows.size() - 1;
    } else {
        if (keyIndex < 0)
            throw RuntimeError(ErrorNumber::ActionNotSupported,
                               QStringLiteral("La tabella %1 non ha una chiave rowid").arg(m_table));
        if (!columns.isEmpty()) {
            QStringList assignments;
            for (const QString& column : columns)
                assignments << column + QStringLiteral("=?");
            values << m_rows[m_position][keyIndex];
            m_db->executeBound(QStringLiteral("update %1 set %2 where rowid=?")
                                   .arg(m_table, assignments.join(QLatin1Char(','))),
                               values);
        }
        m_rows[m_position] = m_editBuffer;
    }
    cancelUpdate();
}

} // namespace xv::data
