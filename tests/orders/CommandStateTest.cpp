// SPDX-License-Identifier: MIT
#include "orders/CommandState.h"

#include <gtest/gtest.h>

namespace {

using xv::orders::commandState;

struct Row
{
    const char* tag1;
    const char* tag2;
    int lines;
    const char* newCaption;
    const char* modifyCaption; // nullptr: left as it is
    bool modify, del, find, print, grid, main, number, dateReg, reset;
};

class CommandStateTable : public ::testing::TestWithParam<Row>
{
};

TEST_P(CommandStateTable, FollowsTheModeTagsAndTheLines)
{
    const Row r = GetParam();
    const auto s = commandState(QString::fromLatin1(r.tag1), QString::fromLatin1(r.tag2), r.lines);
    EXPECT_EQ(s.newCaption, QString::fromLatin1(r.newCaption));
    if (r.modifyCaption)
        EXPECT_EQ(s.modifyCaption.value_or("(unchanged)"), QString::fromLatin1(r.modifyCaption));
    else
        EXPECT_FALSE(s.modifyCaption.has_value());
    EXPECT_EQ(s.modifyEnabled, r.modify);
    EXPECT_EQ(s.deleteEnabled, r.del);
    EXPECT_EQ(s.findEnabled, r.find);
    EXPECT_EQ(s.printEnabled, r.print);
    EXPECT_EQ(s.gridEnabled, r.grid);
    EXPECT_EQ(s.mainEnabled, r.main);
    EXPECT_EQ(s.numberEnabled, r.number);
    EXPECT_EQ(s.dateRegEnabled, r.dateReg);
    EXPECT_EQ(s.linesReset, r.reset);
    EXPECT_EQ(s.linesPanel, QString("Tot.Righe: %1").arg(r.lines));
}

// tag1 tag2 lines  new            modify          mod    del    find   print  grid   main   number date reset
INSTANTIATE_TEST_SUITE_P(
    Modes, CommandStateTable,
    ::testing::Values(
        Row{"N", "M", 0, "Nuovo[F2]", "Modifica[F3]", false, false, true, false, false, false, true, true,
            false},
        Row{"N", "M", 3, "Nuovo[F2]", "Modifica[F3]", true, true, true, true, false, false, true, true, true},
        Row{"X", "S", 0, "Annulla[F2]", "Salva[F3]", false, false, false, false, false, true, false, true,
            false},
        Row{"X", "S", 1, "Annulla[F2]", "Salva[F3]", true, false, false, false, true, true, false, true,
            true},
        Row{"X", "A", 2, "Annulla[F2]", "Aggiorna[F3]", true, false, false, false, true, true, false, false,
            true},
        // A pair outside the three modes: the caption stays, the frames follow the first Tag alone.
        Row{"X", "M", 2, "Nuovo[F2]", nullptr, true, false, false, false, true, true, false, true, true},
        Row{"N", "S", 2, "Nuovo[F2]", nullptr, true, true, false, true, false, false, false, true, true},
        // Tags are compared exactly: a lower-case tag is no mode.
        Row{"x", "s", 1, "Nuovo[F2]", nullptr, true, false, false, false, false, false, false, true, true}));

} // namespace
