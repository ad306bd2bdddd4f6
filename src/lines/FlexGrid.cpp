// SPDX-License-Identifier: MIT
#include "FlexGrid.h"

#include "common/RuntimeError.h"
#include "lines/GridColumns.h"

#include <QBrush>
#include <QHeaderView>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPalette>
#include <QScopedValueRollback>

#include <algorithm>

namespace xv::lines {

namespace {

using common::RuntimeError;

RuntimeError invalidIndex()
{
    return RuntimeError(InvalidIndexError, QStringLiteral("Indice di riga/colonna non valido"));
}

constexpr double TwipsPerInch = 1440.0;

} // namespace

FlexGridModel::FlexGridModel(QObject* parent) : QAbstractTableModel(parent) {}

int FlexGridModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_rows.size());
}

int FlexGridModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : m_cols;
}

QVariant FlexGridModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid() || index.row() >= m_rows.size() || index.column() >= m_cols)
        return {};
    const Row& row = m_rows[index.row()];
    switch (role) {
    case Qt::DisplayRole:
    case Qt::EditRole:
        return row.cells[index.column()];
    case Qt::BackgroundRole:
        return row.background.isValid() ? QVariant(QBrush(row.background)) : QVariant();
    case Qt::ForegroundRole:
        return row.foreground.isValid() ? QVariant(QBrush(row.foreground)) : QVariant();
    case Qt::TextAlignmentRole: {
        const Qt::Alignment alignment = m_alignments[index.column()];
        return alignment ? QVariant(alignment.toInt()) : QVariant();
    }
    default:
        return {};
    }
}

Qt::ItemFlags FlexGridModel::flags(const QModelIndex& index) const
{
    return index.isValid() ? Qt::ItemIsEnabled | Qt::ItemIsSelectable : Qt::NoItemFlags;
}

void FlexGridModel::setRowCount(int rows)
{
    if (rows < 0)
        throw RuntimeError::invalidPropertyValue(QStringLiteral("Rows"));
    const int current = rowCount();
    if (rows > current) {
        beginInsertRows(QModelIndex(), current, rows - 1);
        m_rows.resize(rows, emptyRow());
        endInsertRows();
    } else if (rows < current) {
        beginRemoveRows(QModelIndex(), rows, current - 1);
        m_rows.resize(rows);
        endRemoveRows();
    }
}

void FlexGridModel::setColumnCount(int cols)
{
    if (cols < 0)
        throw RuntimeError::invalidPropertyValue(QStringLiteral("Cols"));
    if (cols > m_cols) {
        beginInsertColumns(QModelIndex(), m_cols, cols - 1);
    } else if (cols < m_cols) {
        beginRemoveColumns(QModelIndex(), cols, m_cols - 1);
    } else {
        return;
    }
    const bool growing = cols > m_cols;
    m_cols = cols;
    for (Row& row : m_rows)
        row.cells.resize(cols);
    m_alignments.resize(cols);
    if (growing)
        endInsertColumns();
    else
        endRemoveColumns();
}

QString FlexGridModel::text(int row, int col) const
{
    checkCell(row, col);
    return m_rows[row].cells[col];
}

QStringList FlexGridModel::rowTexts(int row) const
{
    checkRow(row);
    return m_rows[row].cells;
}

void FlexGridModel::setText(int row, int col, const QString& text)
{
    checkCell(row, col);
    QString& cell = m_rows[row].cells[col];
    if (cell == text)
        return;
    cell = text;
    const QModelIndex changed = index(row, col);
    emit dataChanged(changed, changed, {Qt::DisplayRole, Qt::EditRole});
}

void FlexGridModel::appendRow(const QStringList& cells)
{
    const int at = rowCount();
    Row row = emptyRow();
    std::copy_n(cells.begin(), std::min<qsizetype>(cells.size(), m_cols), row.cells.begin());
    beginInsertRows(QModelIndex(), at, at);
    m_rows.append(std::move(row));
    endInsertRows();
}

void FlexGridModel::removeRowAt(int row)
{
    checkRow(row);
    beginRemoveRows(QModelIndex(), row, row);
    m_rows.removeAt(row);
    endRemoveRows();
}

void FlexGridModel::clear()
{
    beginResetModel();
    m_rows.clear();
    m_alignments.clear();
    m_cols = 0;
    endResetModel();
}

QColor FlexGridModel::background(int row) const
{
    checkRow(row);
    return m_rows[row].background;
}

void FlexGridModel::setBackground(int row, const QColor& colour)
{
    checkRow(row);
    // The lines are recoloured after every key: a row that keeps its colour is not repainted.
    if (m_rows[row].background == colour)
        return;
    m_rows[row].background = colour;
    rowChanged(row, {Qt::BackgroundRole});
}

QColor FlexGridModel::foreground(int row) const
{
    checkRow(row);
    return m_rows[row].foreground;
}

void FlexGridModel::setForeground(int row, const QColor& colour)
{
    checkRow(row);
    if (m_rows[row].foreground == colour)
        return;
    m_rows[row].foreground = colour;
    rowChanged(row, {Qt::ForegroundRole});
}

void FlexGridModel::setAlignment(int col, Qt::Alignment alignment)
{
    if (col < 0 || col >= m_cols)
        throw invalidIndex();
    // A horizontal alignment alone would put the text at the top of the cell, out of line with the
    // columns left to the default.
    if (alignment && !(alignment & Qt::AlignVertical_Mask))
        alignment |= Qt::AlignVCenter;
    m_alignments[col] = alignment;
    if (!m_rows.isEmpty())
        emit dataChanged(index(0, col), index(rowCount() - 1, col), {Qt::TextAlignmentRole});
}

void FlexGridModel::checkRow(int row) const
{
    if (row < 0 || row >= m_rows.size())
        throw invalidIndex();
}

void FlexGridModel::checkCell(int row, int col) const
{
    checkRow(row);
    if (col < 0 || col >= m_cols)
        throw invalidIndex();
}

FlexGridModel::Row FlexGridModel::emptyRow() const
{
    Row row;
    row.cells.resize(m_cols);
    return row;
}

void FlexGridModel::rowChanged(int row, const QList<int>& roles)
{
    if (m_cols > 0)
        emit dataChanged(index(row, 0), index(row, m_cols - 1), roles);
}

FlexGrid::FlexGrid(QWidget* parent) : QTableView(parent), m_model(new FlexGridModel(this))
{
    setModel(m_model);
    horizontalHeader()->hide();
    verticalHeader()->hide();
    setSelectionBehavior(SelectRows);
    setSelectionMode(SingleSelection);
    setEditTriggers(NoEditTriggers);
    // Tab leaves the grid for the next field of the form, as the operators are used to.
    setTabKeyNavigation(false);
    setWordWrap(false);
    // Lines as high as their text needs: a long order shows as many of them as the window can hold.
    verticalHeader()->setDefaultSectionSize(fontMetrics().height() + 6);
    // A right click is reported through rightButtonDown; the form shows its own menu from there.
    setContextMenuPolicy(Qt::PreventContextMenu);
}

int FlexGrid::rows() const
{
    return m_model->rowCount();
}

void FlexGrid::setRows(int n)
{
    const int wantRow = row();
    const int wantCol = col();
    {
        const QScopedValueRollback guard(m_updating, true);
        m_model->setRowCount(n);
        m_rowTwips.resize(n, -1);
        m_fixedRows = std::min(m_fixedRows, n);
        placeCurrent(wantRow, wantCol);
    }
    announceSelection();
}

int FlexGrid::cols() const
{
    return m_model->columnCount();
}

void FlexGrid::setCols(int n)
{
    const int wantRow = row();
    const int wantCol = col();
    {
        const QScopedValueRollback guard(m_updating, true);
        m_model->setColumnCount(n);
        m_colTwips.resize(n, -1);
        m_fixedCols = std::min(m_fixedCols, n);
        placeCurrent(wantRow, wantCol);
    }
    announceSelection();
}

void FlexGrid::setFixedRows(int n)
{
    if (n < 0 || n > rows())
        throw common::RuntimeError::invalidPropertyValue(QStringLiteral("FixedRows"));
    {
        const QScopedValueRollback guard(m_updating, true);
        m_fixedRows = n;
        placeCurrent(row(), col());
    }
    announceSelection();
}

void FlexGrid::setFixedCols(int n)
{
    if (n < 0 || n > cols())
        throw common::RuntimeError::invalidPropertyValue(QStringLiteral("FixedCols"));
    {
        const QScopedValueRollback guard(m_updating, true);
        m_fixedCols = n;
        placeCurrent(row(), col());
    }
    announceSelection();
}

QString FlexGrid::textMatrix(int row, int col) const
{
    return m_model->text(row, col);
}

QStringList FlexGrid::rowTexts(int row) const
{
    return m_model->rowTexts(row);
}

void FlexGrid::setTextMatrix(int row, int col, const QString& text)
{
    m_model->setText(row, col, text);
}

void FlexGrid::addItem(const QStringList& cells)
{
    const int wantRow = row();
    const int wantCol = col();
    {
        const QScopedValueRollback guard(m_updating, true);
        m_model->appendRow(cells);
        m_rowTwips.append(-1);
        placeCurrent(wantRow, wantCol);
    }
    announceSelection();
}

void FlexGrid::removeItem(int row)
{
    checkRow(row);
    // The current line stays current when a line above it goes; when it goes itself, the next one takes its
    // place (the one before it at the end of the grid).
    int wantRow = this->row();
    if (wantRow > row)
        --wantRow;
    const int wantCol = col();
    {
        const QScopedValueRollback guard(m_updating, true);
        m_model->removeRowAt(row);
        m_rowTwips.removeAt(row);
        if (row < m_fixedRows)
            --m_fixedRows;
        placeCurrent(wantRow, wantCol);
    }
    announceSelection();
}

void FlexGrid::clearGrid()
{
    {
        const QScopedValueRollback guard(m_updating, true);
        m_model->clear();
        m_colTwips.clear();
        m_rowTwips.clear();
        m_fixedRows = 0;
        m_fixedCols = 0;
    }
    announceSelection();
}

void FlexGrid::setColWidth(int col, int twips)
{
    checkCol(col);
    if (twips < -1)
        throw common::RuntimeError::invalidPropertyValue(QStringLiteral("ColWidth"));
    m_colTwips[col] = twips;
    setColumnHidden(col, twips == 0);
    if (twips != 0)
        setColumnWidth(col, twips < 0 ? horizontalHeader()->defaultSectionSize() : toPixelsX(twips));
}

int FlexGrid::colWidth(int col) const
{
    checkCol(col);
    if (isColumnHidden(col))
        return 0;
    const int pixels = columnWidth(col);
    const int asked = m_colTwips[col];
    return asked > 0 && toPixelsX(asked) == pixels ? asked : toTwipsX(pixels);
}

void FlexGrid::setRowHeight(int row, int twips)
{
    checkRow(row);
    if (twips < -1)
        throw common::RuntimeError::invalidPropertyValue(QStringLiteral("RowHeight"));
    m_rowTwips[row] = twips;
    setRowHidden(row, twips == 0);
    if (twips != 0)
        QTableView::setRowHeight(row, twips < 0 ? verticalHeader()->defaultSectionSize() : toPixelsY(twips));
}

int FlexGrid::rowHeight(int row) const
{
    checkRow(row);
    if (isRowHidden(row))
        return 0;
    const int pixels = QTableView::rowHeight(row);
    const int asked = m_rowTwips[row];
    return asked > 0 && toPixelsY(asked) == pixels ? asked : toTwipsY(pixels);
}

void FlexGrid::setColAlignment(int col, Qt::Alignment alignment)
{
    m_model->setAlignment(col, alignment);
}

int FlexGrid::row() const
{
    const QModelIndex current = currentIndex();
    return current.isValid() ? current.row() : -1;
}

void FlexGrid::setRow(int row)
{
    checkRow(row);
    if (cols() == 0)
        return;
    const int current = col();
    selectCell(row, current >= 0 ? current : std::min(m_fixedCols, cols() - 1));
}

int FlexGrid::col() const
{
    const QModelIndex current = currentIndex();
    return current.isValid() ? current.column() : -1;
}

void FlexGrid::setCol(int col)
{
    checkCol(col);
    int current = row();
    if (current < 0)
        current = rows() > m_fixedRows ? m_fixedRows : rows() - 1;
    if (current < 0)
        return;
    selectCell(current, col);
}

int FlexGrid::rowSel() const
{
    const QItemSelection selection = selectionModel()->selection();
    return selection.isEmpty() ? -1 : selection.last().bottom();
}

void FlexGrid::setColSel(int col)
{
    // Whole rows are always selected, so the end column only has to be a real one.
    checkCol(col);
}

void FlexGrid::setRowBackground(int row, const QColor& colour)
{
    m_model->setBackground(row, colour);
}

void FlexGrid::setRowForeground(int row, const QColor& colour)
{
    m_model->setForeground(row, colour);
}

QColor FlexGrid::rowBackground(int row) const
{
    return m_model->background(row);
}

QColor FlexGrid::rowForeground(int row) const
{
    return m_model->foreground(row);
}

void FlexGrid::setBackColor(const QColor& colour)
{
    QPalette palette = viewport()->palette();
    palette.setColor(QPalette::Base, colour);
    viewport()->setPalette(palette);
}

QColor FlexGrid::backColor() const
{
    return viewport()->palette().color(QPalette::Base);
}

void FlexGrid::scrollTo(const QModelIndex& index, ScrollHint hint)
{
    // Qt will not scroll to a cell of a hidden column, yet its row still has to come into view.
    if (index.isValid() && isColumnHidden(index.column())) {
        const int visible = visibleColumnNear(index.column());
        if (visible >= 0)
            QTableView::scrollTo(m_model->index(index.row(), visible), hint);
        return;
    }
    QTableView::scrollTo(index, hint);
}

void FlexGrid::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
        // Enter must not reach the form's default button: on the grid it means "open this line".
        event->accept();
        if (row() >= 0)
            emit cellClicked(row(), col());
        return;
    }
    QTableView::keyPressEvent(event);
}

void FlexGrid::mousePressEvent(QMouseEvent* event)
{
    // The right button leaves the selection alone: the menu it opens acts on the line already chosen.
    if (event->button() == Qt::RightButton) {
        event->accept();
        emit rightButtonDown(event->globalPosition().toPoint());
        return;
    }
    QTableView::mousePressEvent(event);
}

void FlexGrid::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() == Qt::RightButton) {
        event->accept();
        return;
    }
    QTableView::mouseReleaseEvent(event);
    if (event->button() != Qt::LeftButton)
        return;
    // After a drag the click belongs to the row where the button came up, which is the selected one.
    const QModelIndex index = indexAt(event->position().toPoint());
    if (index.isValid())
        emit cellClicked(index.row(), index.column());
}

QItemSelectionModel::SelectionFlags FlexGrid::selectionCommand(const QModelIndex& index, const QEvent*) const
{
    // Neither Ctrl nor Shift may leave the grid with no row or several rows selected.
    return index.isValid() ? QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows
                           : QItemSelectionModel::NoUpdate;
}

QModelIndex FlexGrid::moveCursor(CursorAction cursorAction, Qt::KeyboardModifiers modifiers)
{
    // The procedures often leave the current cell on a key column, and those are hidden; Qt will not move
    // from a hidden column, so step across to the visible column next to it first.
    const QModelIndex current = currentIndex();
    if (current.isValid() && isColumnHidden(current.column())) {
        const int visible = visibleColumnNear(current.column());
        if (visible >= 0)
            selectionModel()->setCurrentIndex(m_model->index(current.row(), visible),
                                              QItemSelectionModel::NoUpdate);
    }
    return QTableView::moveCursor(cursorAction, modifiers);
}

void FlexGrid::currentChanged(const QModelIndex& current, const QModelIndex& previous)
{
    QTableView::currentChanged(current, previous);
    if (!m_updating)
        announceSelection();
}

void FlexGrid::selectionChanged(const QItemSelection& selected, const QItemSelection& deselected)
{
    QTableView::selectionChanged(selected, deselected);
    if (!m_updating)
        announceSelection();
}

void FlexGrid::checkRow(int row) const
{
    if (row < 0 || row >= rows())
        throw invalidIndex();
}

void FlexGrid::checkCol(int col) const
{
    if (col < 0 || col >= cols())
        throw invalidIndex();
}

int FlexGrid::toPixelsX(int twips) const
{
    return qRound(twips * logicalDpiX() / TwipsPerInch);
}

int FlexGrid::toPixelsY(int twips) const
{
    return qRound(twips * logicalDpiY() / TwipsPerInch);
}

int FlexGrid::toTwipsX(int pixels) const
{
    return qRound(pixels * TwipsPerInch / logicalDpiX());
}

int FlexGrid::toTwipsY(int pixels) const
{
    return qRound(pixels * TwipsPerInch / logicalDpiY());
}

int FlexGrid::visibleColumnNear(int col) const
{
    for (int c = col; c < cols(); ++c) {
        if (!isColumnHidden(c))
            return c;
    }
    for (int c = col - 1; c >= 0; --c) {
        if (!isColumnHidden(c))
            return c;
    }
    return -1;
}

void FlexGrid::selectCell(int row, int col)
{
    selectionModel()->setCurrentIndex(m_model->index(row, col),
                                      QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
}

// After the rows or columns changed: the current cell goes back where it was, kept off the fixed rows and
// columns and inside the grid, or away when no data row is left.
void FlexGrid::placeCurrent(int row, int col)
{
    const int rowCount = rows();
    const int colCount = cols();
    if (rowCount <= m_fixedRows || colCount == 0) {
        selectionModel()->clear();
        return;
    }
    row = std::clamp(row, m_fixedRows, rowCount - 1);
    if (col < m_fixedCols || col >= colCount) {
        const int firstData = std::min(m_fixedCols, colCount - 1);
        const int visible = visibleColumnNear(firstData);
        col = visible >= firstData ? visible : firstData;
    }
    selectCell(row, col);
}

void FlexGrid::announceSelection()
{
    const int selected = rowSel();
    if (selected == m_announcedRow)
        return;
    // Qt moves the current cell and the selection one after the other; speak only once both agree.
    if (selected >= 0 && selected != row())
        return;
    m_announcedRow = selected;
    if (selected >= 0)
        emit rowSelected(selected);
}

void layOutOrderLines(FlexGrid& grid, int columnCount)
{
    grid.setRows(3);
    grid.setCols(columnCount);
    grid.setFixedRows(2);
    grid.setFixedCols(2);
    grid.setRows(2);
    grid.setRowHeight(0, 0);
    grid.setRowHeight(1, 0);
    for (int col = 0; col < columnCount; ++col)
        grid.setColWidth(col, 0);
}

void showOrderLineColumns(FlexGrid& grid)
{
    for (const VisibleColumn& visible : kVisibleColumns)
        grid.setColWidth(visible.col, visible.twips);
    for (int amount : {Col_Riga, Col_qta, Col_prezzo, Col_imponibile})
        grid.setColAlignment(amount, Qt::AlignRight | Qt::AlignVCenter);
}

} // namespace xv::lines
