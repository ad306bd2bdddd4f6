// SPDX-License-Identifier: MIT
#include "ReorderMail.h"

#include "common/Dates.h"
#include "lines/ArticleInfo.h"

#include <QStringList>

namespace xv::lines {

QString deliveryDate(const QString& firstPickUp)
{
    return common::longDate(common::toDate(firstPickUp).addDays(-10));
}

std::optional<ReorderMail> reorderMail(const ReorderRequest& request)
{
    if (request.agentName.isEmpty())
        return std::nullopt;
    const QStringList lines = {
        QStringLiteral("Salve Sig. ") + request.agentName + QStringLiteral(", "),
        QStringLiteral("Richiediamo il Riordino delle quantità mancanti per l'articolo in oggetto"),
        QString(),
        QStringLiteral("Di seguito i Dettagli: "),
        QStringLiteral("- Codice Articolo       : ") + request.articleCode,
        QStringLiteral("- Descrizione Articolo  : ") + request.articleDescription,
        QStringLiteral("- Quantita' da ordinare : ") + missingText(request.missing),
        QStringLiteral("- Data Consegna merce   : ") + deliveryDate(request.firstPickUp),
        QStringLiteral("Cordiali Saluti,"),
        request.dataName + request.footer,
    };
    return ReorderMail{request.agentEmail, QStringLiteral("Riordino Articolo: ") + request.articleCode,
                       lines.join(QStringLiteral("\r\n"))};
}

} // namespace xv::lines
