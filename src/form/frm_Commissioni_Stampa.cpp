// SPDX-License-Identifier: MIT
// The order statement handed to the customer at pick-up.
#include "frm_Commissioni.h"

#include "ui_frm_Commissioni.h"

#include "common/RuntimeError.h"

namespace xv::form {

bool frm_Commissioni::Documento_StampaRicevutaRitiro()
{
    throw common::RuntimeError::notSupported(QStringLiteral("Documento_StampaRicevutaRitiro"));
}

} // namespace xv::form
