// SPDX-License-Identifier: MIT
// The print button's menus: control slips, the change of state of chosen orders, the cards list.
#include "frm_Commissioni.h"

#include "ui_frm_Commissioni.h"

#include "common/RuntimeError.h"

namespace xv::form {

void frm_Commissioni::tbComandi_ButtonMenuClick(QAction*) {}

void frm_Commissioni::Documenti_StampaCControllo(const QString&, const QString&)
{
    throw common::RuntimeError::notSupported(QStringLiteral("Documenti_StampaCControllo"));
}

void frm_Commissioni::Documenti_CO_StampaControllo()
{
    throw common::RuntimeError::notSupported(QStringLiteral("Documenti_CO_StampaControllo"));
}

void frm_Commissioni::Documento_StampaCControllo(qint16)
{
    throw common::RuntimeError::notSupported(QStringLiteral("Documento_StampaCControllo"));
}

void frm_Commissioni::Documento_StampaBigliettini()
{
    throw common::RuntimeError::notSupported(QStringLiteral("Documento_StampaBigliettini"));
}

void frm_Commissioni::sBar_PanelClick(int) {}

} // namespace xv::form
