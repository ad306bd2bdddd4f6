// SPDX-License-Identifier: MIT
// The text boxes: the colour of the one being typed in, Enter moving on, and what leaving each one does.
#include "frm_Commissioni.h"

#include "ui_frm_Commissioni.h"

#include "common/Conversions.h"
#include "common/Dates.h"
#include "host/Dialogs.h"
#include "host/Services.h"

#include <QFocusEvent>
#include <QLabel>

#include <algorithm>
#include <iterator>

namespace xv::form {

namespace {

constexpr int kKeyReturn = 13;

} // namespace

bool frm_Commissioni::fieldFocusChanged(QLineEdit* box, const QFocusEvent& event)
{
    // Another window coming up (a message, a list, a pop-up menu) does not take the operator out of the
    // field: the field is left only when the focus moves within the form.
    if (event.reason() == Qt::ActiveWindowFocusReason || event.reason() == Qt::PopupFocusReason) {
        if (event.gotFocus() && box != m_fieldWithFocus && !m_fieldWithFocus)
            TextBox_GotFocus(box);
        return false;
    }
    if (event.gotFocus()) {
        TextBox_GotFocus(box);
        // Reached from the keyboard or sent back after a refusal, the whole text is selected so that
        // typing replaces it; a click places the cursor where it was made.
        if (event.reason() != Qt::MouseFocusReason)
            box->selectAll();
        return false;
    }
    // A box that never had the focus (the focus was taken back from it before it arrived) left nothing.
    if (box != m_fieldWithFocus)
        return false;
    if (m_fieldColoured)
        box->setPalette(m_restingPalette);
    m_fieldColoured = false;
    m_fieldWithFocus = nullptr;
    if (m_leftAlready == box) {
        m_leftAlready = nullptr;
        return false;
    }
    // Only text the operator typed into the code loads an article: a code put there by a click on a line
    // comes with that line's own description and price, which must stay.
    if (box == m_ui->txt_codice && !box->isModified())
        return false;
    // Refused, the box has taken the focus back; its own handling of the loss would clear the selection
    // of the text to correct.
    return !TextBox_LostFocus(box) && box->hasFocus();
}

void frm_Commissioni::TextBox_GotFocus(QLineEdit* box)
{
    if (box == m_fieldWithFocus)
        return;
    if (m_fieldWithFocus && m_fieldColoured)
        m_fieldWithFocus->setPalette(m_restingPalette);
    m_fieldWithFocus = box;
    m_fieldColoured = !box->isReadOnly();
    if (!m_fieldColoured)
        return;
    m_restingPalette = box->palette();
    QPalette active = m_restingPalette;
    active.setColor(QPalette::Base, host::toQColor(host::host().GetActiveColor()));
    box->setPalette(active);
}

bool frm_Commissioni::TextBox_KeyDown(QLineEdit* box, int keyCode)
{
    // Enter on the order number finds the order; the operator stays there to look up the next one.
    if (keyCode != kKeyReturn || box == m_ui->txt_numeroCommissione)
        return false;
    const bool codeAsLoaded = box == m_ui->txt_codice && !box->isModified();
    if (!codeAsLoaded && !TextBox_LostFocus(box))
        return true;
    if (box == m_ui->txt_dataRitiro) {
        // The last field of a line: Enter adds it, as the line toolbar's first button does.
        QAction* add = m_linesBar.byKey(QStringLiteral("ADD"));
        if (add && add->isEnabled()) {
            m_leftAlready = box;
            tbComandiRighe_ButtonClick(add);
            if (m_leftAlready == box && box->hasFocus())
                m_leftAlready = nullptr;
        }
        return true;
    }
    moveOnFrom(box);
    return true;
}

void frm_Commissioni::moveOnFrom(QLineEdit* box)
{
    // The order staff fill an order in: the header top to bottom, then a line's code, quantity, price and
    // pick-up date. The description comes with the code.
    QLineEdit* const order[] = {m_ui->txt_dataReg,     m_ui->txt_ragsoc,         m_ui->txt_telefono,
                                m_ui->txt_cellulare,   m_ui->txt_email,          m_ui->txt_tipoEvento,
                                m_ui->txt_dataEvento,  m_ui->txt_soggettiEvento, m_ui->txt_dataRitiro1,
                                m_ui->txt_dataRitiro2, m_ui->txt_codice,         m_ui->txt_qta,
                                m_ui->txt_prezzo,      m_ui->txt_dataRitiro};
    auto usable = [](const QLineEdit* field) { return field->isEnabled() && field->isVisible(); };
    QLineEdit* next = nullptr;
    const auto at = std::find(std::begin(order), std::end(order), box);
    if (box == m_ui->txt_descrizione) {
        next = m_ui->txt_qta;
    } else if (at == std::end(order)) {
        // A field outside the usual order (an accessory, the deposit) hands on as Tab does.
        focusNextChild();
        return;
    } else {
        for (auto it = at + 1; it != std::end(order) && !next; ++it) {
            if (usable(*it))
                next = *it;
        }
    }
    // With the lines still closed, the header field that keeps them closed is where to go.
    if (!next) {
        for (QLineEdit* required : {m_ui->txt_ragsoc, m_ui->txt_dataEvento, m_ui->txt_soggettiEvento,
                                    m_ui->txt_dataRitiro1, m_ui->txt_dataRitiro2}) {
            if (required->text().isEmpty() && usable(required)) {
                next = required;
                break;
            }
        }
    }
    if (!next || !usable(next))
        return;
    m_leftAlready = box;
    next->setFocus(Qt::TabFocusReason);
    // The focus did not move (the window is not active): the box's leaving is still to come.
    if (m_leftAlready == box)
        m_leftAlready = nullptr;
}

bool frm_Commissioni::TextBox_LostFocus(QLineEdit* box)
{
    try {
        bool keep = true;
        if (box == m_ui->txt_dataReg || box == m_ui->txt_dataEvento || box == m_ui->txt_dataRitiro1 ||
            box == m_ui->txt_dataRitiro2 || box == m_ui->txt_dataRitiro) {
            keep = leaveDateField(box);
            // Leaving any date of the order also puts back a registration date that is missing.
            if (keep)
                Documento_ControllaDate();
        } else if (box == m_ui->txt_codice)
            keep = leaveCodeField();
        else if (box == m_ui->txt_prezzo)
            keep = leavePriceField();
        if (!keep)
            return false;
        if (box == m_ui->txt_qta) {
            CheckQtaMED();
            const std::optional<common::Money> price = common::Money::tryParse(m_ui->txt_prezzo->text());
            if (price)
                CalcolaTotaleRiga(common::numericValue(m_ui->txt_qta->text()), *price);
        }
        leaveHeaderField(box);
        return true;
    } catch (...) {
        host::host().ReportError(QStringLiteral("TextBox_LostFocus"), box->objectName(), true);
        return true;
    }
}

void frm_Commissioni::refuseField(QLineEdit* box, const QString& message)
{
    // The focus goes back before the message, so that the message closing returns it to this box.
    if (!box->hasFocus())
        box->setFocus(Qt::OtherFocusReason);
    if (!message.isEmpty())
        host::Dialogs::message(message, host::Buttons::Ok, host::Icon::Exclamation,
                               host::host().GetAppTitle());
}

bool frm_Commissioni::leaveDateField(QLineEdit* box)
{
    const QString typed = box->text();
    if (typed.trimmed().isEmpty())
        return true;
    const std::optional<QDate> date = common::parseTypedDate(typed);
    if (!date) {
        refuseField(box, QStringLiteral("\"%1\" non è una data valida.\nScrivere la data come 23/11/2026, "
                                        "23/11/26 oppure 23112026.")
                             .arg(typed.trimmed()));
        return false;
    }
    const QString shown = common::shortDate(*date);
    if (shown != typed)
        box->setText(shown);
    return true;
}

bool frm_Commissioni::leaveCodeField()
{
    QLineEdit* code = m_ui->txt_codice;
    if (code->text().isEmpty()) {
        m_ui->lbl_MsgCodice->setVisible(false);
        ResetInfoArticolo();
        return true;
    }
    Informazioni_MED();
    if (m_articleMissing) {
        // The previous article's figures must not stand beside a code that has none.
        ResetInfoArticolo();
        refuseField(code, QString());
        return false;
    }
    code->setModified(false);
    return true;
}

bool frm_Commissioni::leavePriceField()
{
    QLineEdit* price = m_ui->txt_prezzo;
    if (price->text().trimmed().isEmpty())
        return true;
    const std::optional<common::Money> amount = common::Money::tryParse(price->text());
    if (!amount) {
        refuseField(price, QStringLiteral("\"%1\" non è un prezzo valido.\nScrivere il prezzo come 12,50.")
                               .arg(price->text().trimmed()));
        return false;
    }
    price->setText(amount->toCurrencyText());
    CalcolaTotaleRiga(common::numericValue(m_ui->txt_qta->text()), *amount);
    return true;
}

} // namespace xv::form
