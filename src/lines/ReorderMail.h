// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

#include <optional>

namespace xv::lines {

// What the reorder mail is made of, as the form holds it after the stock check.
struct ReorderRequest
{
    QString agentName;  // the supplier's agent the article panel shows
    QString agentEmail; // and that agent's address
    QString articleCode;
    QString articleDescription;
    float missing = 0;   // the quantity the stock check found missing
    QString firstPickUp; // the first pick-up date as typed
    QString dataName;    // the host's name of the shop's data, which signs the mail
    QString footer;      // the host's mail footer, right after the data name
};

struct ReorderMail
{
    QString recipient;
    QString subject;
    QString body; // lines joined by CR LF
};

// The supplier is asked to deliver ten days before the customer's first pick-up: "mercoledì, 10 giugno
// 2026" for a pick-up on 20/06/2026. A text that is no date is a type mismatch (error 13).
QString deliveryDate(const QString& firstPickUp);

// The mail to the panel's agent; nothing when the panel shows no agent.
std::optional<ReorderMail> reorderMail(const ReorderRequest& request);

} // namespace xv::lines
