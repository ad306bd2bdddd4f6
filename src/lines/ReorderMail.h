// SPDX-License-Identifier: MIT
#pragma once

#include "lines/ArticleInfo.h"
#include "lines/ArticleStore.h"

#include <QString>

#include <optional>

namespace xv::lines {

// What the stock check offers a reorder mail for: the article on the panel and that article's own agent,
// taken together, so that a request can never name one article and go to another article's agent.
struct ReorderOffer
{
    Agent agent;
    QString articleCode;
    QString articleDescription;
    float missing = 0; // the quantity the stock check found missing
};

// The stock check's offer for the article on the panel, whose agent is the one the panel read for it:
// nothing when the check allows no mail, or when the article has no agent to write to.
std::optional<ReorderOffer> reorderOffer(const StockCheck& check, const std::optional<Agent>& agent,
                                         const QString& articleCode, const QString& articleDescription);

struct ReorderMail
{
    QString recipient;
    QString subject;
    QString body; // lines joined by CR LF
};

// The supplier is asked to deliver ten days before the customer's first pick-up: "mercoledì, 10 giugno
// 2026" for a pick-up on 20/06/2026. A text that is no date is a type mismatch (error 13).
QString deliveryDate(const QString& firstPickUp);

// The mail of an offer to its agent. firstPickUp: the first pick-up date as typed; dataName: the host's
// name of the shop's data, which signs the mail; footer: the host's mail footer, right after it.
ReorderMail reorderMail(const ReorderOffer& offer, const QString& firstPickUp, const QString& dataName,
                        const QString& footer);

} // namespace xv::lines
