// SPDX-License-Identifier: MIT
#include "printing/OrderChoice.h"

#include <gtest/gtest.h>

namespace {

using namespace xv;

TEST(OrderChoiceTest, EachModeOfTheControlSlipsHasItsScopeAndAsksItsQuestion)
{
    const struct
    {
        qint16 mode;
        printing::SlipScope scope;
        const char* question;
    } cases[] = {
        {1, printing::SlipScope::OpenOrder, "Stampare tutte le righe della commissione N°8/2026 ?"},
        {2, printing::SlipScope::ChosenOrders, ""},
        {0, printing::SlipScope::SelectedLine, "Stampare la riga selezionata della commissione N° 8/2026 ?"},
        {3, printing::SlipScope::SelectedLine, "Stampare la riga selezionata della commissione N° 8/2026 ?"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.mode);
        EXPECT_EQ(printing::slipScope(c.mode), c.scope);
        EXPECT_EQ(printing::slipQuestion(c.scope, "8", "2026"), QString::fromUtf8(c.question));
    }
}

} // namespace
