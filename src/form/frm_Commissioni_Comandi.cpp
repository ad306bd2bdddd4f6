// SPDX-License-Identifier: MIT
// The commands of the two toolbars and the keyboard.
#include "frm_Commissioni.h"

#include "ui_frm_Commissioni.h"

#include "common/RuntimeError.h"
#include "host/Dialogs.h"
#include "host/Services.h"

#include <QApplication>
#include <QToolButton>

namespace xv::form {

namespace {

// The suite's key codes, which the form's keyboard table is written in.
constexpr int kKeyEscape = 27;
constexpr int kKeyF2 = 113;
constexpr int kKeyF3 = 114;
constexpr int kKeyF5 = 116;
constexpr int kKeyF9 = 120;

} // namespace

int suiteKeyCode(int qtKey)
{
    if (qtKey >= Qt::Key_F1 && qtKey <= Qt::Key_F12)
        return 112 + (qtKey - Qt::Key_F1);
    if (qtKey == Qt::Key_Escape)
        return kKeyEscape;
    if (qtKey == Qt::Key_Return || qtKey == Qt::Key_Enter)
        return 13;
    return qtKey;
}

void frm_Commissioni::tbComandiDocumento_ButtonClick(QAction* button)
{
    const QString key = KeyedToolBar::keyOf(button);
    try {
        QApplication::setOverrideCursor(Qt::WaitCursor);
        if (key == QLatin1String("NEW")) {
            NuovoAnnulla(button);
            StateOfButtons();
        } else if (key == QLatin1String("MODIFY")) {
            if (tagOf(m_documentBar.button(2)) == QLatin1String("M"))
                SetModificaTags();
            else
                throw common::RuntimeError::notSupported(QStringLiteral("Documento_Salva"));
            StateOfButtons();
        } else if (key == QLatin1String("DELETE")) {
            throw common::RuntimeError::notSupported(QStringLiteral("SalvaAggiornaElimina"));
        } else if (key == QLatin1String("FIND")) {
            Documento_Trova();
            StateOfButtons();
        } else if (key == QLatin1String("PRINT")) {
            throw common::RuntimeError::notSupported(QStringLiteral("Documento_StampaRicevutaRitiro"));
        } else if (key == QLatin1String("EXIT")) {
            close();
        }
        AbilitaRighe();
        while (QApplication::overrideCursor())
            QApplication::restoreOverrideCursor();
    } catch (...) {
        // The hourglass stays until the next command, as it always has after an error here.
        host::host().ReportError(QStringLiteral("tbComandiDocumento_ButtonClick"), QStringLiteral("Pulsante: ") + key,
                                 true);
    }
}

void frm_Commissioni::tbComandiRighe_ButtonClick(QAction* button)
{
    const QString key = KeyedToolBar::keyOf(button);
    try {
        if (key == QLatin1String("RESET"))
            Flex_Init();
        else if (key == QLatin1String("ADD") || key == QLatin1String("EDIT"))
            throw common::RuntimeError::notSupported(QStringLiteral("Flex_AggiungiRiga"));
        else if (key == QLatin1String("REMOVE"))
            throw common::RuntimeError::notSupported(QStringLiteral("Flex_EliminaRiga"));
        Flex_RicalcolaRiga();
        Flex_RicalcolaTotali();
        StateOfButtons();
    } catch (...) {
        host::host().ReportError(QStringLiteral("tbComandiRighe_ButtonClick"), QStringLiteral("PULSANTE: ") + key,
                                 true);
    }
}

void frm_Commissioni::Form_KeyDown(int& keyCode, int)
{
    ++m_keysHandled;
    try {
        switch (keyCode) {
        case kKeyF2:
            NuovoAnnulla(m_documentBar.button(1));
            break;
        case kKeyF3:
            if (!m_documentBar.button(2)->isEnabled())
                return;
            if (tagOf(m_documentBar.button(2)) == QLatin1String("M"))
                SetModificaTags();
            else
                throw common::RuntimeError::notSupported(QStringLiteral("Documento_Salva"));
            // As the toolbar's button does: the captions follow the new mode wherever the focus is.
            StateOfButtons();
            break;
        case kKeyF5: {
            if (!m_documentBar.button(5)->isEnabled())
                return;
            // Only from the toolbar's buttons, or with no field active: typing in a field never searches.
            const QWidget* active = QApplication::focusWidget();
            if (!active || active->window() != this || qobject_cast<const QToolButton*>(active)) {
                Documento_Trova();
                return;
            }
            break;
        }
        case kKeyF9:
            if (!m_linesBar.button(5)->isEnabled())
                return;
            Flex_Init();
            break;
        case kKeyEscape:
            close();
            return;
        default:
            break;
        }
        Flex_RicalcolaRiga();
        Flex_RicalcolaTotali();
        if (m_ui->fra_Main->isEnabled())
            StateOfButtons();
    } catch (...) {
        host::host().ReportError(QStringLiteral("Form_KeyDown"), QString(), true);
    }
}

void frm_Commissioni::Form_QueryUnload(bool& cancel, int)
{
    bool leaving = false;
    try {
        host::IHost& h = host::host();
        leaving = host::Dialogs::message(QStringLiteral("Si desidera uscire?"), host::Buttons::YesNo,
                                         host::Icon::Question, h.GetAppTitle()) == host::Answer::Yes;
        if (!leaving) {
            cancel = true;
            return;
        }
        if (!h.ReleaseRecordLock(static_cast<quintptr>(winId())))
            host::Dialogs::message(QStringLiteral("Errori rilevati durante l'eliminazione del record bloccato!"),
                                   host::Buttons::Ok, host::Icon::Exclamation, h.GetAppTitle());
    } catch (...) {
        // A failure before the operator said Yes must not close the form on what was typed.
        if (!leaving)
            cancel = true;
        host::host().ReportError(QStringLiteral("Form_QueryUnload"), QString(), true);
    }
}

void frm_Commissioni::Form_Unload()
{
    // The form is the program: once it has gone, the run ends with a clean status.
    QCoreApplication::exit(0);
}

} // namespace xv::form
