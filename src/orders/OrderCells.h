// SPDX-License-Identifier: MIT
#pragma once

#include <QDateTime>
#include <QString>
#include <QStringList>
#include <QVariant>
#include <QVector>

#include <optional>

namespace xv::data {
class Recordset;
}

namespace xv::orders {

// Reading and writing the cells of the lines grid sit together, so that what one writes the other reads.

// The 61 grid cells of the current row: money as currency text, dates as short dates, whole numbers and
// single floats with a decimal point, doubles with the decimal separator the currency reading expects.
// columnTypes are the table's type codes by column, as the grid's type row holds them. A null gives an
// empty cell only in the columns that may hold one.
QStringList gridCells(const data::Recordset& rs, const QVector<int>& columnTypes);

// A stored order reads no null where a value must be: error 94, naming the field.
[[noreturn]] void invalidUseOfNull(const QString& field);
// The field's text, or error 94 when it is null.
QString requiredText(const data::Recordset& rs, const QString& field);

// A value of a date column as the grid and the text boxes show it ("" for a null).
QString dateText(const QVariant& value);

// The value a cell writes into its field, by the column's type code: 2, 3 and 4 the cell's numeric value
// (empty is 0); 5 and 6 the cell read as currency (empty is 0); 7 the cell read as a date (empty is now);
// 130 and anything else the text as it stands. Unset for the columns never written: `rowid` and those
// without a name. Throws a type mismatch for a cell that is not what its column needs.
std::optional<QVariant> cellToField(const QString& name, int typeCode, const QString& cell,
                                    const QDateTime& now);

// Writes a grid row into the current record of a recordset opened on a table, by the names and type codes
// of the grid's first two rows.
void writeCells(data::Recordset& rs, const QStringList& names, const QVector<int>& typeCodes,
                const QStringList& cells, const QDateTime& now = QDateTime::currentDateTime());

// The position in the recordset of each named field, -1 for a name it lacks: found once, they let every
// line of an order be written without looking its fields up by name again.
QVector<int> fieldIndexes(const data::Recordset& rs, const QStringList& names);
// As above, with the positions fieldIndexes gave for these names; a name it lacks fails when its cell is
// written, as it does by name.
void writeCells(data::Recordset& rs, const QStringList& names, const QVector<int>& indexes,
                const QVector<int>& typeCodes, const QStringList& cells, const QDateTime& now);

} // namespace xv::orders
