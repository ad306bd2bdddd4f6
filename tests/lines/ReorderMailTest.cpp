// SPDX-License-Identifier: MIT
#include "../common/ErrorNumberOf.h"

#include "lines/ReorderMail.h"

#include <gtest/gtest.h>

namespace {

using namespace xv;
using common::test::errorNumberOf;
using common::test::TypeMismatch;

lines::ReorderRequest request(const QString& agentName, const QString& firstPickUp)
{
    return {agentName, "luca@esempio.it", "BOM001",        "Cuore d'argento",
            3.5f,      firstPickUp,       "Negozio Rossi", "\n\n--\nxVELARIO"};
}

TEST(ReorderMail, DeliveryIsAskedForTenDaysBeforeTheFirstPickUp)
{
    const std::pair<const char*, const char*> cases[] = {
        {"20/06/2026", "mercoledì, 10 giugno 2026"},
        {"05/03/2026", "lunedì, 23 febbraio 2026"},
        {"01/01/2027", "martedì, 22 dicembre 2026"},
    };
    for (const auto& [pickUp, delivery] : cases)
        EXPECT_EQ(lines::deliveryDate(pickUp), delivery) << pickUp;
}

TEST(ReorderMail, GoesToThePanelsAgentWithTheMissingQuantityAsADecimal)
{
    const std::optional<lines::ReorderMail> mail = lines::reorderMail(request("Bianchi Luca", "20/06/2026"));
    ASSERT_TRUE(mail);
    EXPECT_EQ(mail->recipient, "luca@esempio.it");
    EXPECT_TRUE(mail->body.contains("\r\n- Quantita' da ordinare : 3,5\r\n")) << mail->body.toStdString();
    EXPECT_TRUE(mail->body.endsWith("\r\nCordiali Saluti,\r\nNegozio Rossi\n\n--\nxVELARIO"));
}

TEST(ReorderMail, NoAgentNoMailAndAPickUpThatIsNoDateIsATypeMismatch)
{
    EXPECT_FALSE(lines::reorderMail(request("", "20/06/2026")));
    EXPECT_FALSE(lines::reorderMail(request("", "domani"))) << "without an agent the date is never read";
    for (const char* notADate : {"", "domani", "31/02/2026"}) {
        EXPECT_EQ(errorNumberOf([&] { lines::reorderMail(request("Bianchi Luca", notADate)); }), TypeMismatch)
            << notADate;
    }
}

} // namespace
