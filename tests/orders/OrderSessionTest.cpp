// SPDX-License-Identifier: MIT
// The order form's modes without a window: which command moves to which mode, what it does to the order
// open, and the Tags each mode shows to the suite.
#include "orders/OrderSession.h"

#include <gtest/gtest.h>

namespace {

using xv::orders::FormMode;
using xv::orders::OrderSession;

QString tags(const OrderSession& s)
{
    return s.modeTag1() + s.modeTag2();
}

TEST(OrderSessionTest, F2StartsANewOrderFromBrowsingAndGivesUpANewOrChangedOne)
{
    OrderSession s;
    EXPECT_EQ(s.mode(), FormMode::Browse);
    EXPECT_EQ(tags(s), "NM");

    xv::orders::Order loaded;
    loaded.key = 41;
    loaded.numero = "8";
    s.show(loaded);
    const QString shownSave = s.order().saveId;
    EXPECT_EQ(s.mode(), FormMode::Browse);

    EXPECT_TRUE(s.newOrCancel());
    EXPECT_EQ(s.mode(), FormMode::New);
    EXPECT_EQ(tags(s), "XS");
    EXPECT_TRUE(s.order().isNew()) << "nothing of the order shown carries into the new one";
    EXPECT_TRUE(s.order().numero.isEmpty());
    EXPECT_NE(s.order().saveId, shownSave) << "a new order is a new save";

    EXPECT_FALSE(s.newOrCancel());
    EXPECT_EQ(s.mode(), FormMode::Browse);

    s.show(loaded);
    s.beginChanges();
    EXPECT_EQ(s.mode(), FormMode::Modify);
    EXPECT_EQ(tags(s), "XA");
    EXPECT_EQ(s.order().numero, "8") << "changes work on the order open";
    EXPECT_FALSE(s.newOrCancel());
    EXPECT_EQ(s.mode(), FormMode::Browse);
    EXPECT_TRUE(s.order().isNew()) << "changes given up leave nothing open";
}

TEST(OrderSessionTest, AWriteReturnsToBrowsingWithTheCommandsOfBrowsing)
{
    OrderSession s;
    s.newOrCancel();
    EXPECT_EQ(s.commands(2).modifyCaption.value_or(""), "Salva[F3]");
    EXPECT_FALSE(s.commands(2).deleteEnabled);
    s.written();
    EXPECT_EQ(s.mode(), FormMode::Browse);
    EXPECT_EQ(s.commands(2).modifyCaption.value_or(""), "Modifica[F3]");
    EXPECT_TRUE(s.commands(2).deleteEnabled);
}

} // namespace
