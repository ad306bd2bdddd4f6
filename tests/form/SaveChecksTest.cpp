// SPDX-License-Identifier: MIT
// The checks before saving through the real form: the first failure's message and focus, the fields the
// checks fill, and a complete order let through; offscreen on a real temporary SQLite database. Each check's
// rule is in the checks' own table (tests/orders).
#include "FormFixture.h"
#include "ScriptedDialogs.h"

#include "common/Dates.h"
#include "common/Money.h"
#include "form/frm_Commissioni.h"

#include <gtest/gtest.h>

namespace {

using namespace xv;
using form::frm_Commissioni;

class SaveChecksTest : public test::FormTest
{
};

TEST_P(SaveChecksTest, NoNameAndNoTelephoneShowsOnlyTheNameMessageAndGoesToTheName)
{
    test::ScriptedDialogs dialogs;
    frm_Commissioni& form = openNewOrder(7);
    activate();
    field("txt_codice")->setFocus();
    dialogs.expectMessage("Attenzione questo campo non può essere vuoto!");
    EXPECT_FALSE(form.CheckPreSalvataggio());
    ASSERT_EQ(dialogs.messages().size(), 1);
    EXPECT_EQ(focusName(), "txt_ragsoc");
    EXPECT_EQ(text("txt_rowidUtente"), "") << "the user is filled only once the customer checks pass";
}

TEST_P(SaveChecksTest, LeavingADateFieldPutsBackAMissingRegistrationDate)
{
    test::ScriptedDialogs noBoxes;
    openNewOrder(7);
    activate();
    field("txt_dataReg")->clear();
    type("txt_dataEvento", "200627");
    field("txt_soggettiEvento")->setFocus(Qt::TabFocusReason);
    EXPECT_EQ(text("txt_dataEvento"), "20/06/2027");
    EXPECT_EQ(text("txt_dataReg"), common::shortDate(QDate::currentDate()));
}

XV_INSTANTIATE_ON_SQLITE(SaveChecksTest);

} // namespace
