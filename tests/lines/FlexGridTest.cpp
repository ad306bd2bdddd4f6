// SPDX-License-Identifier: MIT
#include "../common/ErrorNumberOf.h"

#include "lines/FlexGrid.h"
#include "lines/GridColumns.h"

#include <QApplication>
#include <QBrush>
#include <QHeaderView>
#include <QMouseEvent>
#include <QSignalSpy>
#include <QTest>

#include <gtest/gtest.h>

namespace {

using namespace xv::lines;
using xv::common::test::errorNumberOf;

class FlexGridTest : public ::testing::Test
{
protected:
    // The order form's own layout: hidden name and type rows, seven visible columns.
    void SetUp() override
    {
        m_grid.setRows(3);
        m_grid.setCols(ColCount);
        m_grid.setFixedRows(2);
        m_grid.setFixedCols(2);
        m_grid.setRows(2);
        m_grid.setRowHeight(0, 0);
        m_grid.setRowHeight(1, 0);
        for (int col = 0; col < ColCount; ++col)
            m_grid.setColWidth(col, 0);
        for (const VisibleColumn& visible : kVisibleColumns)
            m_grid.setColWidth(visible.col, visible.twips);
        m_grid.resize(900, 300);
        m_grid.show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&m_grid));
    }

    void addLines(int count)
    {
        for (int i = 0; i < count; ++i)
            m_grid.addItem({});
        for (int row = FirstDataRow; row < m_grid.rows(); ++row)
            m_grid.setTextMatrix(row, Col_Riga, QString::number(row - FirstDataRow + 1));
    }

    QPoint cellCentre(int row, int col = Col_Descrizione1)
    {
        return m_grid.visualRect(m_grid.gridModel()->index(row, col)).center();
    }

    // The rows wholly selected; the grid must always have exactly one.
    QList<int> selectedRows()
    {
        QList<int> rows;
        for (const QModelIndex& index : m_grid.selectionModel()->selectedRows())
            rows << index.row();
        return rows;
    }

    FlexGrid m_grid;
};

TEST_F(FlexGridTest, LayoutLeavesTwoHiddenRowsAndTheSevenColumnsVisible)
{
    EXPECT_EQ(m_grid.rows(), 2);
    EXPECT_EQ(m_grid.cols(), ColCount);
    EXPECT_EQ(m_grid.fixedRows(), 2);
    EXPECT_EQ(m_grid.fixedCols(), 2);
    EXPECT_EQ(m_grid.rowHeight(0), 0);
    EXPECT_EQ(m_grid.rowHeight(1), 0);
    EXPECT_EQ(m_grid.rowSel(), -1);

    int twips = 0;
    int pixels = 0;
    for (int col = 0; col < ColCount; ++col)
        twips += m_grid.colWidth(col);
    for (const VisibleColumn& visible : kVisibleColumns) {
        EXPECT_EQ(m_grid.colWidth(visible.col), visible.twips);
        pixels += qRound(visible.twips * m_grid.logicalDpiX() / 1440.0);
    }
    EXPECT_EQ(twips, 600 + 2560 + 6900 + 1100 + 2000 + 2100 + 1500);
    EXPECT_EQ(m_grid.horizontalHeader()->length(), pixels);

    m_grid.setColWidth(Col_rowid, -1);
    EXPECT_GT(m_grid.colWidth(Col_rowid), 0);
    EXPECT_EQ(errorNumberOf([&] { m_grid.setColWidth(Col_rowid, -2); }), 380);
    EXPECT_EQ(errorNumberOf([&] { m_grid.setFixedRows(3); }), 380);
    m_grid.setRows(1);
    EXPECT_EQ(m_grid.fixedRows(), 1);
    m_grid.removeItem(0);
    EXPECT_EQ(m_grid.fixedRows(), 0);
}

TEST_F(FlexGridTest, TextMatrixRoundTripsAndRejectsCellsOutsideTheGrid)
{
    for (int col = 0; col < ColCount; ++col)
        m_grid.setTextMatrix(1, col, QStringLiteral("tipo %1").arg(col));
    for (int col = 0; col < ColCount; ++col)
        EXPECT_EQ(m_grid.textMatrix(1, col), QStringLiteral("tipo %1").arg(col));

    const QPoint outside[] = {{-1, 0}, {2, 0}, {0, -1}, {0, ColCount}};
    for (const QPoint& cell : outside) {
        EXPECT_EQ(errorNumberOf([&] { m_grid.textMatrix(cell.x(), cell.y()); }), InvalidIndexError);
        EXPECT_EQ(errorNumberOf([&] { m_grid.setTextMatrix(cell.x(), cell.y(), {}); }), InvalidIndexError);
    }
    try {
        m_grid.textMatrix(2, 0);
        ADD_FAILURE() << "no error for a row past the end";
    } catch (const xv::common::RuntimeError& error) {
        EXPECT_EQ(error.description(), QStringLiteral("Indice di riga/colonna non valido"));
    }
}

TEST_F(FlexGridTest, AddingAndRemovingLinesKeepsTheOthers)
{
    QSignalSpy selected(&m_grid, &FlexGrid::rowSelected);
    QStringList cells(ColCount + 3);
    for (const char* code : {"A", "B", "C", "D"}) {
        cells[Col_codice_med] = QString::fromLatin1(code);
        m_grid.addItem(cells);
    }
    m_grid.addItem({QStringLiteral("id"), QStringLiteral("T")});
    ASSERT_EQ(m_grid.rows(), 7);
    EXPECT_EQ(m_grid.textMatrix(6, Col_Tipogestione), QStringLiteral("T"));
    EXPECT_EQ(m_grid.textMatrix(6, Col_codice_med), QString());
    // the first line of an empty grid becomes the selected one
    ASSERT_EQ(selected.size(), 1);
    EXPECT_EQ(selected.at(0).at(0).toInt(), 2);

    const auto codes = [&] {
        QString all;
        for (int row = FirstDataRow; row < m_grid.rows(); ++row)
            all += m_grid.textMatrix(row, Col_codice_med);
        return all;
    };
    m_grid.setRow(4);
    m_grid.removeItem(2);
    EXPECT_EQ(codes(), QStringLiteral("BCD"));
    EXPECT_EQ(selectedRows(), QList<int>{3}) << "the same line stays selected";
    m_grid.removeItem(3);
    EXPECT_EQ(codes(), QStringLiteral("BD"));
    EXPECT_EQ(selectedRows(), QList<int>{3}) << "the next line takes the removed one's place";
    m_grid.setRow(4);
    m_grid.removeItem(4);
    EXPECT_EQ(selectedRows(), QList<int>{3}) << "after the last line, the one before it";

    m_grid.removeItem(3);
    m_grid.removeItem(2);
    EXPECT_EQ(m_grid.row(), -1);
    EXPECT_TRUE(selectedRows().isEmpty());
    EXPECT_EQ(errorNumberOf([&] { m_grid.removeItem(2); }), InvalidIndexError);
    m_grid.clearGrid();
    EXPECT_EQ(m_grid.rows(), 0);
    EXPECT_EQ(m_grid.cols(), 0);
}

TEST_F(FlexGridTest, RowColoursAndAlignmentReachTheView)
{
    addLines(2);
    m_grid.setRowBackground(3, Qt::yellow);
    m_grid.setRowForeground(3, Qt::red);
    m_grid.setColAlignment(Col_prezzo, Qt::AlignRight);
    EXPECT_EQ(m_grid.rowBackground(3), QColor(Qt::yellow));
    EXPECT_EQ(m_grid.rowForeground(3), QColor(Qt::red));
    EXPECT_FALSE(m_grid.rowBackground(2).isValid());

    const FlexGridModel* model = m_grid.gridModel();
    const QModelIndex coloured = model->index(3, Col_note);
    EXPECT_EQ(coloured.data(Qt::BackgroundRole).value<QBrush>().color(), QColor(Qt::yellow));
    EXPECT_EQ(coloured.data(Qt::ForegroundRole).value<QBrush>().color(), QColor(Qt::red));
    EXPECT_FALSE(model->index(2, Col_note).data(Qt::BackgroundRole).isValid());
    EXPECT_EQ(model->index(2, Col_prezzo).data(Qt::TextAlignmentRole).toInt(),
              (Qt::AlignRight | Qt::AlignVCenter).toInt());
    EXPECT_EQ(errorNumberOf([&] { m_grid.setRowBackground(4, Qt::red); }), InvalidIndexError);

    m_grid.setBackColor(QColor(0x12, 0x34, 0x56));
    EXPECT_EQ(m_grid.backColor(), QColor(0x12, 0x34, 0x56));
}

TEST_F(FlexGridTest, KeyboardMovesTheOneSelectedRow)
{
    addLines(4);
    m_grid.setFocus();
    QSignalSpy selected(&m_grid, &FlexGrid::rowSelected);
    QSignalSpy clicked(&m_grid, &FlexGrid::cellClicked);
    QList<int> currentWhenSignalled;
    QObject::connect(&m_grid, &FlexGrid::rowSelected, &m_grid, [&] { currentWhenSignalled << m_grid.row(); });

    QTest::keyClick(&m_grid, Qt::Key_Up);
    EXPECT_EQ(m_grid.row(), 2) << "the hidden rows cannot be reached";
    QTest::keyClick(&m_grid, Qt::Key_Down);
    QTest::keyClick(&m_grid, Qt::Key_Down, Qt::ShiftModifier);
    EXPECT_EQ(m_grid.row(), 4);
    EXPECT_EQ(m_grid.rowSel(), 4);
    EXPECT_EQ(selectedRows(), QList<int>{4});
    ASSERT_EQ(selected.size(), 2);
    EXPECT_EQ(selected.at(1).at(0).toInt(), 4);
    EXPECT_EQ(currentWhenSignalled, (QList<int>{3, 4}));
    QTest::keyClick(&m_grid, Qt::Key_Space, Qt::ControlModifier);
    EXPECT_EQ(selectedRows(), QList<int>{4});

    // the procedures leave the current cell on a hidden key column
    m_grid.setCol(Col_rowid);
    QTest::keyClick(&m_grid, Qt::Key_Down);
    EXPECT_EQ(selectedRows(), QList<int>{5});

    QTest::keyClick(&m_grid, Qt::Key_Return);
    ASSERT_EQ(clicked.size(), 1);
    EXPECT_EQ(clicked.at(0).at(0).toInt(), 5);
    EXPECT_EQ(clicked.at(0).at(1).toInt(), m_grid.col());
}

TEST_F(FlexGridTest, MouseButtons)
{
    addLines(4);
    QSignalSpy right(&m_grid, &FlexGrid::rightButtonDown);
    QSignalSpy clicked(&m_grid, &FlexGrid::cellClicked);

    QTest::mousePress(m_grid.viewport(), Qt::RightButton, {}, cellCentre(4));
    QTest::mouseRelease(m_grid.viewport(), Qt::RightButton, {}, cellCentre(4));
    ASSERT_EQ(right.size(), 1);
    EXPECT_EQ(right.at(0).at(0).toPoint(), m_grid.viewport()->mapToGlobal(cellCentre(4)));
    EXPECT_EQ(selectedRows(), QList<int>{2});
    EXPECT_TRUE(clicked.isEmpty());

    QTest::mouseClick(m_grid.viewport(), Qt::LeftButton, {}, cellCentre(4, Col_qta));
    ASSERT_EQ(clicked.size(), 1);
    EXPECT_EQ(clicked.at(0).at(0).toInt(), 4);
    EXPECT_EQ(clicked.at(0).at(1).toInt(), int(Col_qta));
    EXPECT_EQ(selectedRows(), QList<int>{4});

    QTest::mouseClick(m_grid.viewport(), Qt::LeftButton, Qt::ControlModifier, cellCentre(4));
    EXPECT_EQ(selectedRows(), QList<int>{4});
}

TEST_F(FlexGridTest, DraggingLeavesOnlyTheRowWhereTheDragEnded)
{
    addLines(4);
    QSignalSpy clicked(&m_grid, &FlexGrid::cellClicked);
    QList<QPair<int, int>> signalledWithCurrent;
    QObject::connect(&m_grid, &FlexGrid::rowSelected, &m_grid, [&](int row) {
        signalledWithCurrent.append({row, m_grid.row()});
    });
    QWidget* viewport = m_grid.viewport();
    QTest::mousePress(viewport, Qt::LeftButton, {}, cellCentre(2));
    for (int row : {3, 4}) {
        QMouseEvent move(QEvent::MouseMove, cellCentre(row), viewport->mapToGlobal(cellCentre(row)),
                         Qt::NoButton, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(viewport, &move);
    }
    QTest::mouseRelease(viewport, Qt::LeftButton, {}, cellCentre(4));
    EXPECT_EQ(selectedRows(), QList<int>{4});
    ASSERT_EQ(clicked.size(), 1);
    EXPECT_EQ(clicked.at(0).at(0).toInt(), 4);
    // Qt selects before it moves the current cell during a drag; the signal waits for both
    EXPECT_EQ(signalledWithCurrent, (QList<QPair<int, int>>{{3, 3}, {4, 4}}));
}

TEST_F(FlexGridTest, AThousandLinesAndTheLastOneScrolledIntoView)
{
    addLines(1000);
    EXPECT_EQ(m_grid.rows(), 1002);
    EXPECT_EQ(m_grid.textMatrix(1001, Col_Riga), QStringLiteral("1000"));
    EXPECT_EQ(selectedRows(), QList<int>{2});

    m_grid.setCol(Col_rowid);
    m_grid.setRow(1001);
    EXPECT_EQ(m_grid.rowSel(), 1001);
    const int top = m_grid.rowViewportPosition(1001);
    EXPECT_GE(top, 0);
    EXPECT_LE(top, m_grid.viewport()->height());

    m_grid.setCols(ColCount + 1);
    EXPECT_EQ(selectedRows(), QList<int>{1001}) << "a new column joins the selected row";
}

} // namespace
