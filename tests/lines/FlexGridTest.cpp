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
using Announced = QList<QPair<int, int>>;

class FlexGridTest : public ::testing::Test
{
protected:
    // The order form's own layout: hidden name and type rows, seven visible columns.
    void SetUp() override
    {
        layOutOrderLines(m_grid, ColCount);
        showOrderLineColumns(m_grid);
        m_grid.resize(900, 300);
        m_grid.show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&m_grid));
        // Each rowSelected with the current row at that moment: the two must agree.
        QObject::connect(&m_grid, &FlexGrid::rowSelected, &m_grid, [this](int row) {
            m_announced.append({row, m_grid.row()});
        });
    }

    void addLines(int count)
    {
        for (int i = 0; i < count; ++i)
            m_grid.addItem();
    }

    QPoint cellCentre(int row, int col = Col_Descrizione1)
    {
        return m_grid.visualRect(m_grid.gridModel()->index(row, col)).center();
    }

    QList<int> selectedRows()
    {
        QList<int> rows;
        for (const QModelIndex& index : m_grid.selectionModel()->selectedRows())
            rows << index.row();
        return rows;
    }

    FlexGrid m_grid;
    Announced m_announced;
};

TEST_F(FlexGridTest, LayoutAndTextOfTheHiddenRows)
{
    EXPECT_EQ(m_grid.fixedRows(), 2);
    EXPECT_EQ(m_grid.rowHeight(0), 0);
    EXPECT_EQ(m_grid.rowHeight(1), 0);
    EXPECT_EQ(m_grid.rowSel(), -1);

    int pixels = 0;
    for (const VisibleColumn& visible : kVisibleColumns) {
        EXPECT_EQ(m_grid.colWidth(visible.col), visible.twips);
        pixels += qRound(visible.twips * m_grid.logicalDpiX() / 1440.0);
    }
    EXPECT_EQ(m_grid.horizontalHeader()->length(), pixels);
    EXPECT_EQ(errorNumberOf([&] { m_grid.setColWidth(Col_rowid, -2); }), 380);

    // The hidden rows carry each column's name and type, read back when the lines are saved.
    for (int col = 0; col < ColCount; ++col)
        m_grid.setTextMatrix(1, col, QStringLiteral("tipo %1").arg(col));
    for (int col = 0; col < ColCount; ++col)
        EXPECT_EQ(m_grid.textMatrix(1, col), QStringLiteral("tipo %1").arg(col));

    for (const QPoint& cell : {QPoint(-1, 0), QPoint(2, 0), QPoint(0, -1), QPoint(0, ColCount)}) {
        EXPECT_EQ(errorNumberOf([&] { m_grid.textMatrix(cell.x(), cell.y()); }), InvalidIndexError);
        EXPECT_EQ(errorNumberOf([&] { m_grid.setTextMatrix(cell.x(), cell.y(), {}); }), InvalidIndexError);
    }
}

TEST_F(FlexGridTest, AddingAndRemovingLinesKeepsTheOthersAndTheSelection)
{
    for (const char* code : {"A", "B", "C", "D"})
        m_grid.addItem({QStringLiteral("id"), QString::fromLatin1(code)});
    ASSERT_EQ(m_grid.rows(), 6);
    EXPECT_EQ(m_grid.textMatrix(5, Col_codice_med), QString()) << "missing cells are empty";
    EXPECT_EQ(m_announced, (Announced{{2, 2}})) << "the first line of an empty grid is selected";

    m_grid.setRow(4);
    m_grid.removeItem(2);
    EXPECT_EQ(m_grid.textMatrix(2, Col_Tipogestione), QStringLiteral("B"));
    EXPECT_EQ(selectedRows(), QList<int>{3}) << "the same line stays selected";
    m_grid.removeItem(3);
    EXPECT_EQ(m_grid.textMatrix(3, Col_Tipogestione), QStringLiteral("D"));
    EXPECT_EQ(selectedRows(), QList<int>{3}) << "the next line takes the removed one's place";
    m_grid.removeItem(3);
    EXPECT_EQ(selectedRows(), QList<int>{2}) << "after the last line, the one before it";
    m_grid.removeItem(2);
    EXPECT_EQ(m_grid.row(), -1);
    EXPECT_TRUE(selectedRows().isEmpty());
    EXPECT_EQ(errorNumberOf([&] { m_grid.removeItem(2); }), InvalidIndexError);
}

TEST_F(FlexGridTest, AWholeRowReadsAsItsCellsWithoutCopyingThemOneByOne)
{
    m_grid.addItem({QStringLiteral("7"), QStringLiteral("BOM001")});
    m_grid.setTextMatrix(2, Col_qta, QStringLiteral("12"));
    const QStringList cells = m_grid.rowTexts(2);
    ASSERT_EQ(cells.size(), ColCount);
    for (int col = 0; col < ColCount; ++col)
        EXPECT_EQ(cells[col], m_grid.textMatrix(2, col)) << col;
    EXPECT_TRUE(cells.isSharedWith(m_grid.rowTexts(2))) << "the row's own list, not a copy of each cell";
    EXPECT_EQ(errorNumberOf([&] { m_grid.rowTexts(3); }), InvalidIndexError);
    EXPECT_EQ(errorNumberOf([&] { m_grid.rowTexts(-1); }), InvalidIndexError);
}

TEST_F(FlexGridTest, RowColoursAndAlignmentReachTheView)
{
    addLines(2);
    m_grid.setRowBackground(3, Qt::yellow);
    m_grid.setRowForeground(3, Qt::red);
    m_grid.setColAlignment(Col_prezzo, Qt::AlignRight);

    const QModelIndex coloured = m_grid.gridModel()->index(3, Col_note);
    EXPECT_EQ(coloured.data(Qt::BackgroundRole).value<QBrush>().color(), QColor(Qt::yellow));
    EXPECT_EQ(coloured.data(Qt::ForegroundRole).value<QBrush>().color(), QColor(Qt::red));
    EXPECT_FALSE(m_grid.gridModel()->index(2, Col_note).data(Qt::BackgroundRole).isValid());
    EXPECT_EQ(m_grid.gridModel()->index(2, Col_prezzo).data(Qt::TextAlignmentRole).toInt(),
              (Qt::AlignRight | Qt::AlignVCenter).toInt());
}

TEST_F(FlexGridTest, RecolouringLinesSignalsOnlyTheRowsThatChange)
{
    addLines(50);
    for (int r = FirstDataRow; r < m_grid.rows(); ++r) {
        m_grid.setRowBackground(r, Qt::yellow);
        m_grid.setRowForeground(r, Qt::red);
    }
    QSignalSpy changed(m_grid.gridModel(), &QAbstractItemModel::dataChanged);
    for (int r = FirstDataRow; r < m_grid.rows(); ++r) {
        m_grid.setRowBackground(r, Qt::yellow);
        m_grid.setRowForeground(r, r == 10 ? QColor(Qt::blue) : QColor(Qt::red));
    }
    ASSERT_EQ(changed.size(), 1);
    EXPECT_EQ(changed[0][0].toModelIndex().row(), 10);
    EXPECT_EQ(m_grid.rowForeground(10), QColor(Qt::blue));
}

TEST_F(FlexGridTest, KeyboardMovesTheOneSelectedRow)
{
    addLines(4);
    m_grid.setFocus();
    QSignalSpy clicked(&m_grid, &FlexGrid::cellClicked);

    QTest::keyClick(&m_grid, Qt::Key_Up);
    EXPECT_EQ(m_grid.row(), 2) << "the hidden rows cannot be reached";
    QTest::keyClick(&m_grid, Qt::Key_Down);
    QTest::keyClick(&m_grid, Qt::Key_Down, Qt::ShiftModifier);
    QTest::keyClick(&m_grid, Qt::Key_Space, Qt::ControlModifier);
    EXPECT_EQ(m_grid.rowSel(), 4);
    EXPECT_EQ(selectedRows(), QList<int>{4});

    m_grid.setCol(Col_rowid); // the procedures leave the current cell on a hidden key column
    QTest::keyClick(&m_grid, Qt::Key_Down);
    EXPECT_EQ(selectedRows(), QList<int>{5});
    EXPECT_EQ(m_announced, (Announced{{2, 2}, {3, 3}, {4, 4}, {5, 5}}));
    QTest::keyClick(&m_grid, Qt::Key_Return);
    EXPECT_EQ(clicked, (QList<QVariantList>{{5, m_grid.col()}}));
}

TEST_F(FlexGridTest, MouseButtons)
{
    addLines(4);
    QSignalSpy right(&m_grid, &FlexGrid::rightButtonDown);
    QSignalSpy clicked(&m_grid, &FlexGrid::cellClicked);
    QWidget* viewport = m_grid.viewport();

    QTest::mouseClick(viewport, Qt::RightButton, {}, cellCentre(4));
    EXPECT_EQ(right, (QList<QVariantList>{{viewport->mapToGlobal(cellCentre(4))}}));
    EXPECT_EQ(selectedRows(), QList<int>{2}) << "the right button leaves the selection alone";

    QTest::mousePress(viewport, Qt::LeftButton, {}, cellCentre(2));
    for (int row : {3, 4}) {
        QMouseEvent move(QEvent::MouseMove, cellCentre(row), viewport->mapToGlobal(cellCentre(row)),
                         Qt::NoButton, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(viewport, &move);
    }
    QTest::mouseRelease(viewport, Qt::LeftButton, {}, cellCentre(4));
    EXPECT_EQ(selectedRows(), QList<int>{4}) << "a drag leaves only the row where it ended";
    // Qt selects before it moves the current cell during a drag; the signal waits for both.
    EXPECT_EQ(m_announced, (Announced{{2, 2}, {3, 3}, {4, 4}}));

    QTest::mouseClick(viewport, Qt::LeftButton, {}, cellCentre(3, Col_qta));
    EXPECT_EQ(selectedRows(), QList<int>{3});
    EXPECT_EQ(clicked, (QList<QVariantList>{{4, int(Col_Descrizione1)}, {3, int(Col_qta)}}));
}

TEST_F(FlexGridTest, AThousandLinesAndTheLastOneScrolledIntoView)
{
    addLines(1000);
    EXPECT_EQ(m_grid.rows(), 1002);

    m_grid.setCol(Col_rowid);
    m_grid.setRow(1001);
    const int top = m_grid.rowViewportPosition(1001);
    EXPECT_GE(top, 0);
    EXPECT_LE(top, m_grid.viewport()->height());
}

} // namespace
