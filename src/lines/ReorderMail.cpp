// SPDX-License-Identifier: MIT
#include "ReorderMail.h"

#include "common/Dates.h"

#include <QStringList>

namespace xv::lines {

std::optional<ReorderOffer> reorderOffer(const StockCheck& check, const std::optional<Agent>& agent,
                                         const QString& articleCode, const QString& articleDescription)
{
    // An agent without a name is none: the mail would greet nobody.
    if (!check.mailAllowed || !agent || agent->name.isEmpty())
        return std::nullopt;
    return ReorderOffer{*agent, articleCode, articleDescription, check.missing};
}

QString deliveryDate(const QString& firstPickUp)
{
    return common::longDate(common::toDate(firstPickUp).addDays(-10));
}

ReorderMail reorderMail(const ReorderOffer& offer, const QString& firstPickUp, const QString& dataName,
                        const QString& footer)
{
    const QStringList lines = {
        QStringLiteral("Salve Sig. ") + offer.agent.name + QStringLiteral(", "),
        QStringLiteral("Richiediamo il Riordino delle quantità mancanti per l'articolo in oggetto"),
        QString(),
        QStringLiteral("Di seguito i Dettagli: "),
        QStringLiteral("- Codice Articolo       : ") + offer.articleCode,
        QStringLiteral("- Descrizione Articolo  : ") + offer.articleDescription,
        QStringLiteral("- Quantita' da ordinare : ") + missingText(offer.missing),
        QStringLiteral("- Data Consegna merce   : ") + deliveryDate(firstPickUp),
        QStringLiteral("Cordiali Saluti,"),
        dataName + footer,
    };
    return ReorderMail{offer.agent.email, QStringLiteral("Riordino Articolo: ") + offer.articleCode,
                       lines.join(QStringLiteral("\r\n"))};
}

} // namespace xv::lines
