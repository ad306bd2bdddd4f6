// SPDX-License-Identifier: MIT
#pragma once

#include <QAbstractTableModel>
#include <QColor>
#include <QPoint>
#include <QString>
#include <QStringList>
#include <QTableView>
#include <QVector>

namespace xv::lines {

// Raised for a row or column outside the grid, the number the order procedures have always handled.
inline constexpr int InvalidIndexError = 381;

// The grid's contents: text cells only, since the procedures keep every value as the text they show, plus
// a background and a text colour per row that mark a line's state.
class FlexGridModel : public QAbstractTableModel
{
    Q_OBJECT

public:
    explicit FlexGridModel(QObject* parent = nullptr);

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;

    // New rows are empty; rows and columns beyond the new count are dropped with their contents.
    void setRowCount(int rows);
    void setColumnCount(int cols);

    // Out-of-range rows or columns throw xv::common::RuntimeError InvalidIndexError.
    QString text(int row, int col) const;
    void setText(int row, int col, const QString& text);
    // Every cell of a row at once, without copying them one by one.
    QStringList rowTexts(int row) const;
    // Cells beyond the column count are ignored, missing ones are empty.
    void appendRow(const QStringList& cells);
    void removeRowAt(int row);
    void clear();

    // An invalid colour means the view's default.
    QColor background(int row) const;
    void setBackground(int row, const QColor& colour);
    QColor foreground(int row) const;
    void setForeground(int row, const QColor& colour);
    void setAlignment(int col, Qt::Alignment alignment);

private:
    struct Row
    {
        QStringList cells;
        QColor background;
        QColor foreground;
    };

    void checkRow(int row) const;
    void checkCell(int row, int col) const;
    Row emptyRow() const;
    void rowChanged(int row, const QList<int>& roles);

    QVector<Row> m_rows;
    QVector<Qt::Alignment> m_alignments;
    int m_cols = 0;
};

// The text grid the order form's procedures are written against, in their vocabulary: rows and columns by
// number, fixed rows and columns, widths and heights in twips, a current cell and one whole row selected.
class FlexGrid : public QTableView
{
    Q_OBJECT

public:
    explicit FlexGrid(QWidget* parent = nullptr);

    FlexGridModel* gridModel() const { return m_model; }

    int rows() const;
    void setRows(int n);
    int cols() const;
    void setCols(int n);
    int fixedRows() const { return m_fixedRows; }
    void setFixedRows(int n);
    int fixedCols() const { return m_fixedCols; }
    void setFixedCols(int n);

    QString textMatrix(int row, int col) const;
    void setTextMatrix(int row, int col, const QString& text);
    // The cells of a whole row, as textMatrix reads them one by one: for reading a thousand lines at once.
    QStringList rowTexts(int row) const;

    void addItem(const QStringList& cells = {});
    void removeItem(int row);
    // Removes every row and column, fixed ones included, with their widths, heights, colours and alignments.
    void clearGrid();

    // 0 hides the column or row; -1 brings back the default size.
    void setColWidth(int col, int twips);
    int colWidth(int col) const;
    void setRowHeight(int row, int twips);
    int rowHeight(int row) const;
    void setColAlignment(int col, Qt::Alignment alignment);

    // The current cell, -1 while there is none. Changing the rows or columns moves it off the fixed rows and
    // columns, so that the selected line is always one the operator can see.
    int row() const;
    void setRow(int row);
    int col() const;
    void setCol(int col);
    // Whole rows are selected, one at a time: this is the selected row, -1 when there is none.
    int rowSel() const;
    void setColSel(int col);

    void setRowBackground(int row, const QColor& colour);
    void setRowForeground(int row, const QColor& colour);
    QColor rowBackground(int row) const;
    QColor rowForeground(int row) const;
    void setBackColor(const QColor& colour);
    QColor backColor() const;

    void scrollTo(const QModelIndex& index, ScrollHint hint = EnsureVisible) override;

signals:
    // Left click, or Enter on the current cell.
    void cellClicked(int row, int col);
    void rightButtonDown(const QPoint& globalPos);
    // Whenever a different row number becomes the selected one, by the operator or by code.
    void rowSelected(int row);

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    QItemSelectionModel::SelectionFlags selectionCommand(const QModelIndex& index,
                                                         const QEvent* event = nullptr) const override;
    QModelIndex moveCursor(CursorAction cursorAction, Qt::KeyboardModifiers modifiers) override;
    void currentChanged(const QModelIndex& current, const QModelIndex& previous) override;
    void selectionChanged(const QItemSelection& selected, const QItemSelection& deselected) override;

private:
    void checkRow(int row) const;
    void checkCol(int col) const;
    int toPixelsX(int twips) const;
    int toPixelsY(int twips) const;
    int toTwipsX(int pixels) const;
    int toTwipsY(int pixels) const;
    int visibleColumnNear(int col) const;
    void selectCell(int row, int col);
    void placeCurrent(int row, int col);
    void announceSelection();

    FlexGridModel* m_model;
    int m_fixedRows = 0;
    int m_fixedCols = 0;
    // The sizes last asked for, so that reading one back gives the same twips despite pixel rounding.
    QVector<int> m_colTwips;
    QVector<int> m_rowTwips;
    // While rows or columns change, Qt passes the current cell through places not worth announcing.
    bool m_updating = false;
    int m_announcedRow = -1;
};

// The order lines' layout: two hidden fixed rows (column names and type codes) and two fixed columns,
// every column hidden until showOrderLineColumns shows the seven the operator reads.
void layOutOrderLines(FlexGrid& grid, int columnCount);
void showOrderLineColumns(FlexGrid& grid);

} // namespace xv::lines
