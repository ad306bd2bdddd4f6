// SPDX-License-Identifier: MIT
#pragma once

#include "common/Money.h"

#include <QDateTime>
#include <QHash>
#include <QString>
#include <QStringList>
#include <QVariant>
#include <QVector>

namespace xv::data {

class Database;

// A small cursor over rows, with what the program relies on: fields by name without regard to case,
// end-of-rows and move-next, a null kept apart from an empty text, and add-new/update on a table.
class Recordset
{
public:
    Recordset() = default;

    // The rows of an SQL text in the suite's dialect.
    static Recordset open(Database& db, const QString& suiteSql);
    // The rows of one table (all of them when the condition is empty), writable with addNew/update.
    static Recordset openTable(Database& db, const QString& table, const QString& suiteCondition = {});
    // Builds a read-only recordset from values already at hand.
    static Recordset fromRows(const QStringList& fieldNames, QVector<QVector<QVariant>> rows);

    bool eof() const { return m_position >= m_rows.size() || m_position < 0; }
    bool bof() const { return m_position < 0 || m_rows.isEmpty(); }
    bool isEmpty() const { return m_rows.isEmpty(); }
    int recordCount() const { return static_cast<int>(m_rows.size()); }
    int position() const { return static_cast<int>(m_position); }
    void moveFirst() { m_position = 0; }
    void moveLast() { m_position = m_rows.size() - 1; }
    void moveNext();
    void movePrevious();

    int fieldCount() const { return static_cast<int>(m_fields.size()); }
    QString fieldName(int index) const;
    bool hasField(const QString& name) const { return m_index.contains(name.toLower()); }
    int fieldIndex(const QString& name) const; // throws when the field does not exist

    QVariant value(const QString& name) const;
    QVariant value(int index) const;
    bool isNull(const QString& name) const;
    // Reading helpers: a null reads as an empty text, a zero amount, or an invalid date.
    QString text(const QString& name) const;
    common::Money money(const QString& name) const;
    QDateTime dateTime(const QString& name) const;
    double number(const QString& name) const;

    // Writing: only on a recordset opened with openTable.
    void addNew();
    void setValue(const QString& name, const QVariant& value);
    // By the field's position, for a caller that sets the same fields on many records and finds them once.
    void setValue(int index, const QVariant& value);
    void setMoney(const QString& name, common::Money amount);
    void update();
    void cancelUpdate();
    // From now on, records added are kept and written several to a statement (one round trip for many
    // rows on a server), when a statement's worth has gathered and at writeAddedRecords(); until then they
    // are not in the table, and their keys are never read back. For writers of many rows that need none of
    // them back, in a transaction that then calls writeAddedRecords() before it commits.
    void gatherAddedRecords();
    void writeAddedRecords();
    QString table() const { return m_table; }
    int typeCode(const QString& name) const;

private:
    enum class EditMode { None, AddNew, Edit };

    void requireCurrent() const;
    void requireWritable() const;
    void setFields(const QStringList& names);

    Database* m_db = nullptr;
    QString m_table;
    QStringList m_fields;
    QVector<int> m_typeCodes;
    QHash<QString, int> m_index;
    // The fields by their names as given too: the names a caller uses are nearly always these, and finding
    // them needs no lower-case copy (an order's save looks up sixty fields for each of its lines).
    QHash<QString, int> m_exactIndex;
    QVector<QVector<QVariant>> m_rows;
    qsizetype m_position = 0;
    EditMode m_editMode = EditMode::None;
    QVector<QVariant> m_editBuffer;
    QVector<bool> m_touched;
    // The insert last made, with the fields it wrote: adding many records that set the same fields builds
    // its text once.
    QVector<bool> m_insertFields;
    QString m_insertSql;
    // Records added and not yet written, while gathering: their columns' values one after the other.
    bool m_gathering = false;
    int m_gathered = 0;
    QVariantList m_gatheredValues;
    QStringList m_gatheredColumns;
};

// Helpers shared by the readers of a recordset and of stored values.
QString variantText(const QVariant& value);
common::Money variantMoney(const QVariant& value);
QDateTime variantDateTime(const QVariant& value);

} // namespace xv::data
