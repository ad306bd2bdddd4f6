// SPDX-License-Identifier: MIT
// The commands of the two toolbars and the keyboard.
#include "frm_Commissioni.h"

#include "ui_frm_Commissioni.h"

#include "common/Conversions.h"
#include "host/Dialogs.h"
#include "host/Services.h"

#include <QApplication>
#include <QKeyEvent>
#include <QScopedValueRollback>
#include <QSpacerItem>
#include <QToolButton>

#include <algorithm>

namespace xv::form {

namespace {

// The suite's key codes, which the form's keyboard table is written in.
constexpr int kKeyEscape = 27;
constexpr int kKeyF2 = 113;
constexpr int kKeyF3 = 114;
constexpr int kKeyF4 = 115;
constexpr int kKeyF5 = 116;
constexpr int kKeyF6 = 117;
constexpr int kKeyF7 = 118;
constexpr int kKeyF8 = 119;
constexpr int kKeyF9 = 120;

constexpr double kTwipsPerInch = 1440.0;

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
            focusNewOrder();
        } else if (key == QLatin1String("MODIFY")) {
            if (m_session.mode() == orders::FormMode::Browse)
                SetModificaTags();
            else
                Documento_Salva();
            StateOfButtons();
        } else if (key == QLatin1String("DELETE")) {
            host::IHost& h = host::host();
            // The order that would be deleted is the one open, whatever number is typed in the box.
            const orders::OrderLock lock = orders::orderLock(m_order.orderKey());
            const QString holder = h.LockRecord(static_cast<quintptr>(winId()), lock.record, lock.table);
            // "Errore" means the lock could not be asked for at all: the delete goes ahead without it.
            if (!holder.isEmpty() && holder != QLatin1String("Errore")) {
                host::Dialogs::message(QStringLiteral("Attenzione, il documento N° ") + m_order.numero +
                                           QLatin1Char('\\') + m_order.serie +
                                           QStringLiteral(" non può essere eliminato.\n") + holder,
                                       host::Buttons::Ok, host::Icon::Information, h.GetAppTitle());
                return; // the hourglass stays until the next command, as it always has here
            }
            if (SalvaAggiornaElimina(QStringLiteral("E")))
                h.ClearRecordLock();
            StateOfButtons();
        } else if (key == QLatin1String("FIND")) {
            Documento_Trova();
            StateOfButtons();
        } else if (key == QLatin1String("PRINT")) {
            if (host::host().IsControlSlipMode())
                Documento_StampaCControllo(1);
            else
                Documento_StampaRicevutaRitiro();
        } else if (key == QLatin1String("EXIT")) {
            close();
        }
        AbilitaRighe();
        while (QApplication::overrideCursor())
            QApplication::restoreOverrideCursor();
    } catch (...) {
        // The hourglass stays until the next command, as it always has after an error here.
        host::host().ReportError(QStringLiteral("tbComandiDocumento_ButtonClick"),
                                 QStringLiteral("Pulsante: ") + key, true);
    }
}

void frm_Commissioni::tbComandiRighe_ButtonClick(QAction* button)
{
    const QString key = KeyedToolBar::keyOf(button);
    try {
        if (key == QLatin1String("ADD")) {
            // A line that was refused brings none of its components either.
            if (Flex_AggiungiRiga())
                addComponentLines();
        } else if (key == QLatin1String("REMOVE")) {
            Flex_EliminaRiga();
        } else if (key == QLatin1String("EDIT")) {
            // The same as adding: a line is replaced only when the duplicate check finds its article.
            Flex_AggiungiRiga();
        } else if (key == QLatin1String("RESET")) {
            Flex_Init();
        }
        Flex_RicalcolaRiga();
        Flex_RicalcolaTotali();
        StateOfButtons();
    } catch (...) {
        host::host().ReportError(QStringLiteral("tbComandiRighe_ButtonClick"),
                                 QStringLiteral("PULSANTE: ") + key, true);
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
            if (m_session.mode() == orders::FormMode::Browse)
                SetModificaTags();
            else
                Documento_Salva();
            // As the toolbar's button does: the captions follow the new mode wherever the focus is.
            StateOfButtons();
            break;
        case kKeyF4:
            if (!m_documentBar.button(3)->isEnabled())
                return;
            // Without the toolbar's lock test: the key has always deleted straight away.
            if (!SalvaAggiornaElimina(QStringLiteral("E")))
                host::Dialogs::message(QStringLiteral("Eliminazione non effettuata"), host::Buttons::Ok,
                                       host::Icon::Critical, host::host().GetAppTitle());
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
        // F7 and F8 are crossed with respect to the toolbar, as the shop's staff have always used them:
        // F7 asks about EDIT and removes the line, F8 asks about REMOVE and adds one. F6 adds no components.
        case kKeyF6:
            if (!m_linesBar.button(1)->isEnabled())
                return;
            Flex_AggiungiRiga();
            break;
        case kKeyF7:
            if (!m_linesBar.button(3)->isEnabled())
                return;
            Flex_EliminaRiga();
            break;
        case kKeyF8:
            if (!m_linesBar.button(2)->isEnabled())
                return;
            Flex_AggiungiRiga();
            break;
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
        if (keyCode == kKeyF2)
            focusNewOrder();
    } catch (...) {
        host::host().ReportError(QStringLiteral("Form_KeyDown"), QString(), true);
    }
}

// A new order is typed from its customer on, so that it can be entered from the keyboard alone.
void frm_Commissioni::focusNewOrder()
{
    if (m_session.mode() == orders::FormMode::New && m_ui->txt_ragsoc->isEnabled() &&
        m_ui->txt_ragsoc->isVisible())
        m_ui->txt_ragsoc->setFocus(Qt::OtherFocusReason);
}

void frm_Commissioni::Form_KeyPress(int& keyCode)
{
    host::host().FilterKeyPress(keyCode);
}

// A key that types a character goes through the host's filter first: the character it leaves is the one
// typed, none when it leaves 0.
bool frm_Commissioni::typedKeyFiltered(QWidget* receiver, QKeyEvent* key)
{
    if (key->text().isEmpty())
        return false;
    const int typed = key->text().at(0).unicode();
    int code = typed;
    try {
        Form_KeyPress(code);
    } catch (...) {
        host::host().ReportError(QStringLiteral("Form_KeyPress"), QString(), true);
        return false;
    }
    if (code == typed)
        return false;
    if (code > 0 && code <= 0xFFFF) {
        QKeyEvent replaced(key->type(), key->key(), key->modifiers(), QString(QChar(code)),
                           key->isAutoRepeat(), key->count());
        const QScopedValueRollback guard(m_refilteringKey, true);
        QCoreApplication::sendEvent(receiver, &replaced);
    }
    return true;
}

void frm_Commissioni::resizeEvent(QResizeEvent* event)
{
    QMainWindow::resizeEvent(event);
    Form_Resize();
}

// The layouts keep the main frame centred at any size; this keeps its place a little left of the middle
// and the order number just inside the frame's left edge, as they have always been.
void frm_Commissioni::Form_Resize()
{
    try {
        const auto pixels = [this](int twips) { return qRound(twips * logicalDpiX() / kTwipsPerInch); };
        const QMargins margins = m_ui->lay_Central->contentsMargins();
        const int room = m_ui->centralwidget->width() - margins.left() - margins.right();
        const int frameWidth = std::min(m_ui->fra_Main->maximumWidth(), room);
        const int left = std::max(0, (room - frameWidth) / 2 - pixels(80));
        for (QSpacerItem* spacer : {m_ui->spc_Left, m_ui->spc_TopLeft})
            spacer->changeSize(left, 0, QSizePolicy::Fixed, QSizePolicy::Minimum);
        QMargins number = m_ui->lay_Testata->contentsMargins();
        number.setLeft(pixels(120));
        m_ui->lay_Testata->setContentsMargins(number);
        m_ui->lay_Top->invalidate();
        m_ui->lay_Body->invalidate();
    } catch (...) {
        // A window made very small, or minimised, must raise nothing.
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
            host::Dialogs::message(
                QStringLiteral("Errori rilevati durante l'eliminazione del record bloccato!"),
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
