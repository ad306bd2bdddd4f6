// SPDX-License-Identifier: MIT
#include "orders/SaveChecks.h"

#include "common/Dates.h"
#include "common/Money.h"

#include <optional>

namespace xv::orders {

namespace {

SaveCheck failure(SaveCheck check, int step, const QString& message, host::Icon icon, const char* focus)
{
    check.step = step;
    check.message = message;
    check.icon = icon;
    check.focus = focus ? QString::fromLatin1(focus) : QString();
    return check;
}

} // namespace

SaveCheck checkBeforeSaving(const SaveFields& fields, const std::function<QString()>& userName)
{
    using host::Icon;
    SaveCheck check;
    check.fields = fields;
    SaveFields& f = check.fields;

    if (f.dataRitiro1.isEmpty() && f.dataRitiro2.isEmpty())
        return failure(
            check, 1,
            QStringLiteral("Attenzione uno di questi campi 'Data Ritiro 1-2' non può essere vuoto!"),
            Icon::Information, "txt_dataRitiro1");
    if (f.ragsoc.isEmpty())
        return failure(check, 2, QStringLiteral("Attenzione questo campo non può essere vuoto!"),
                       Icon::Information, "txt_ragsoc");
    if (f.telefono.isEmpty() && f.cellulare.isEmpty())
        return failure(check, 3,
                       QStringLiteral("Attenzione uno di questi campi 'Telefono 1-2' non può essere vuoto!"),
                       Icon::Information, "txt_telefono");
    if (f.rowidUtente.isEmpty())
        f.rowidUtente = userName();
    if (f.dataReg.isEmpty() || !common::isDate(f.dataReg))
        return failure(
            check, 5,
            QStringLiteral("Attenzione la Data di Registrazione non può essere vuota oppure non è corretta!"),
            Icon::Information, "txt_dataReg");
    if (f.tipoEvento.isEmpty())
        return failure(check, 6, QStringLiteral("Attenzione il campo 'Cerimonia' non può essere vuoto!"),
                       Icon::Information, "txt_tipoEvento");
    if (f.dataEvento.isEmpty())
        return failure(check, 7, QStringLiteral("Attenzione il campo 'Data cerimonia' non può essere vuoto!"),
                       Icon::Information, "txt_dataEvento");
    // "non essere vuoto" is how the shop's staff have always read this message; kept word for word.
    if (f.soggettiEvento.isEmpty())
        return failure(check, 8, QStringLiteral("Attenzione il campo 'Soggetti Evento' non essere vuoto!"),
                       Icon::Information, "txt_soggettiEvento");
    if (f.bigliettiTicked && f.frase.isEmpty())
        return failure(check, 9,
                       QStringLiteral("Attenzione il campo 'Frase Biglietti' non può essere vuoto!"),
                       Icon::Exclamation, "txt_frase");
    if (f.lineCount <= 0)
        return failure(check, 10, QStringLiteral("Attenzione nessuna riga presente!"), Icon::Exclamation,
                       "txt_codice");
    if (f.amuletoTag.isEmpty())
        return failure(check, 11, QStringLiteral("Attenzione selezionare se è presente l'amuleto!"),
                       Icon::Information, nullptr);

    // An empty total, or one that is no amount, is refused as a total of zero would be; so an empty
    // total never reaches the deposit check below and needs no "0" put into it there.
    const std::optional<common::Money> shownTotal = common::Money::tryParse(f.totale);
    if (!shownTotal || *shownTotal == common::Money())
        return failure(check, 12,
                       QStringLiteral("Attenzione il totale commissione non può essere uguale a Zero"),
                       Icon::Information, nullptr);

    if (f.acconto.isEmpty())
        f.acconto = QStringLiteral("0");
    const std::optional<common::Money> deposit = common::Money::tryParse(f.acconto);
    if (!deposit)
        return failure(check, 13, QStringLiteral("Attenzione l'importo dell'acconto non è corretto!"),
                       Icon::Exclamation, "txt_Acconto");
    f.acconto = deposit->toCurrencyText();
    if (*deposit > *shownTotal)
        return failure(check, 13,
                       QStringLiteral("L'importo dell'acconto supera l'importo totale della Commissione (") +
                           (*shownTotal - *deposit).toCurrencyText() + QLatin1Char(')'),
                       Icon::Exclamation, "txt_Acconto");
    return check;
}

} // namespace xv::orders
