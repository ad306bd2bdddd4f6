// SPDX-License-Identifier: MIT
#pragma once

#include "host/Dialogs.h"

#include <QString>
#include <QtGlobal>

#include <functional>

namespace xv::orders {

// The order's fields as the form shows them when saving is asked for.
struct SaveFields
{
    QString dataRitiro1;
    QString dataRitiro2;
    QString ragsoc;
    QString telefono;
    QString cellulare;
    QString rowidUtente;
    QString dataReg;
    QString tipoEvento;
    QString dataEvento;
    QString soggettiEvento;
    bool bigliettiTicked = false;
    QString frase;
    qint64 lineCount = 0;
    QString amuletoTag; // empty until an amulet option is chosen
    QString totale;
    QString acconto;
};

// The first check that failed (step 0: every check passed), and the fields as the checks leave them:
// the operator's name put into an empty user field, an empty deposit or total made "0", the deposit
// shown as currency. The form writes those back even when a later check fails.
struct SaveCheck
{
    int step = 0;
    QString message;
    host::Icon icon = host::Icon::None;
    QString focus; // the name of the field to go to; empty for none
    SaveFields fields;

    bool passed() const { return step == 0; }
};

// The checks in the order the operator is told about them; userName is asked only for an empty user field.
SaveCheck checkBeforeSaving(const SaveFields& fields, const std::function<QString()>& userName);

} // namespace xv::orders
