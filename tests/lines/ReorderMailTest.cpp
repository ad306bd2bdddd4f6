// SPDX-License-Identifier: MIT
#include "../common/ErrorNumberOf.h"

#include "lines/ReorderMail.h"

#include <gtest/gtest.h>

namespace {

using namespace xv;
using common::test::errorNumberOf;
using common::test::TypeMismatch;

const lines::ReorderOffer kOffer{{"Bianchi Luca", "luca@esempio.it"}, "BOM001", "Cuore d'argento", 3.5f};

lines::ReorderMail mailFor(const QString& firstPickUp)
{
    return lines::reorderMail(kOffer, firstPickUp, "Negozio Rossi", "\n\n--\nxVELARIO");
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

TEST(ReorderMail, GoesToTheOffersAgentWithTheMissingQuantityAsADecimal)
{
    const lines::ReorderMail mail = mailFor("20/06/2026");
    EXPECT_EQ(mail.recipient, "luca@esempio.it");
    EXPECT_TRUE(mail.body.startsWith("Salve Sig. Bianchi Luca, \r\n")) << mail.body.toStdString();
    EXPECT_TRUE(mail.body.contains("\r\n- Quantita' da ordinare : 3,5\r\n")) << mail.body.toStdString();
    EXPECT_TRUE(mail.body.endsWith("\r\nCordiali Saluti,\r\nNegozio Rossi\n\n--\nxVELARIO"));
}

TEST(ReorderMail, APickUpThatIsNoDateIsATypeMismatch)
{
    for (const char* notADate : {"", "domani", "31/02/2026"})
        EXPECT_EQ(errorNumberOf([&] { mailFor(notADate); }), TypeMismatch) << notADate;
}

TEST(ReorderMail, IsOfferedOnlyWhenTheStockCheckAllowsItAndTheArticleHasAnAgentOfItsOwn)
{
    const lines::StockCheck allowed{true, true, 3.5f};
    const lines::Agent agent{"Bianchi Luca", "luca@esempio.it"};
    EXPECT_FALSE(lines::reorderOffer(lines::StockCheck{}, agent, "BOM001", "Cuore d'argento"));
    EXPECT_FALSE(lines::reorderOffer(allowed, std::nullopt, "BOM001", "Cuore d'argento"));
    EXPECT_FALSE(
        lines::reorderOffer(allowed, lines::Agent{"", "luca@esempio.it"}, "BOM001", "Cuore d'argento"));

    const std::optional<lines::ReorderOffer> offer =
        lines::reorderOffer(allowed, agent, "BOM001", "Cuore d'argento");
    ASSERT_TRUE(offer);
    EXPECT_EQ(offer->agent.email, "luca@esempio.it");
    EXPECT_EQ(offer->articleCode, "BOM001");
    EXPECT_EQ(offer->missing, 3.5f);
}

} // namespace
