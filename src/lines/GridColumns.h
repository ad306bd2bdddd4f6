// SPDX-License-Identifier: MIT
#pragma once

#include "data/OrderColumns.h"

#include <iterator>

namespace xv::lines {

// The order-lines grid keeps one cell per column of the order lines' table, in the table's order, so that
// the procedures that fill, read and save the lines can address a field by name whatever the operator sees.
enum Col : int
{
#define XV_GRID_COLUMN(name, kind) Col_##name,
    XV_MOVIMENTI_COLUMNS(XV_GRID_COLUMN)
#undef XV_GRID_COLUMN
    ColCount
};
static_assert(ColCount == std::size(data::kMovimentiColumns));

// Rows 0 and 1 are hidden and carry each column's field name and type code, which the save procedure
// reads back; the order's lines start below them.
constexpr int FirstDataRow = 2;

struct VisibleColumn
{
    int col;
    int twips;
};

// Every other column has width 0: it only carries data for the procedures.
inline constexpr VisibleColumn kVisibleColumns[] = {
    {Col_Riga, 600},    {Col_codice_med, 2560}, {Col_Descrizione1, 6900}, {Col_qta, 1100},
    {Col_prezzo, 2000}, {Col_imponibile, 2100}, {Col_note, 1500},
};

} // namespace xv::lines
