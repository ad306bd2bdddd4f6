// SPDX-License-Identifier: MIT
// The order form's checks before an order is written: the fields read into a plain value, the checks
// made by the orders unit, the message and the focus given here.
#include "frm_Commissioni.h"
#include "ui_frm_Commissioni.h"

#include "common/Dates.h"
#include "host/Dialogs.h"
#include "host/Services.h"
#include "orders/SaveChecks.h"

#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>

namespace xv::form {

bool frm_Commissioni::CheckPreSalvataggio()
{
    try {
        orders::SaveFields f;
        f.dataRitiro1 = m_ui->txt_dataRitiro1->text();
        f.dataRitiro2 = m_ui->txt_dataRitiro2->text();
        f.ragsoc = m_ui->txt_ragsoc->text();
        f.telefono = m_ui->txt_telefono->text();
        f.cellulare = m_ui->txt_cellulare->text();
        f.rowidUtente = m_ui->txt_rowidUtente->text();
        f.dataReg = m_ui->txt_dataReg->text();
        f.tipoEvento = m_ui->txt_tipoEvento->text();
        f.dataEvento = m_ui->txt_dataEvento->text();
        f.soggettiEvento = m_ui->txt_soggettiEvento->text();
        f.bigliettiTicked = m_ui->chk_Biglietti->isChecked();
        f.frase = m_ui->txt_frase->text();
        f.lineCount = LineCount();
        f.amuletoTag = tagOf(lblInfo(6));
        f.totale = m_ui->txt_Totale->text();
        f.acconto = m_ui->txt_Acconto->text();

        host::IHost& h = host::host();
        const orders::SaveCheck check = orders::checkBeforeSaving(f, [&h] { return h.GetUserName(); });
        // What the checks filled stays filled even when a later check stops the save.
        const auto writeBack = [](QLineEdit* box, const QString& value) {
            if (box->text() != value)
                box->setText(value);
        };
        writeBack(m_ui->txt_rowidUtente, check.fields.rowidUtente);
        writeBack(m_ui->txt_Acconto, check.fields.acconto);
        writeBack(m_ui->txt_Totale, check.fields.totale);
        if (check.passed())
            return true;

        host::Dialogs::message(check.message, host::Buttons::Ok, check.icon, h.GetAppTitle());
        if (!check.focus.isEmpty()) {
            QWidget* target = findChild<QWidget*>(check.focus);
            if (target && target->isVisible() && target->isEnabled())
                target->setFocus(Qt::OtherFocusReason);
        }
        return false;
    } catch (...) {
        host::host().ReportError(QStringLiteral("xVELARIO.frm_Commissioni.CheckPreSalvataggio"), QString(),
                                 true);
        return false;
    }
}

void frm_Commissioni::Documento_ControllaDate()
{
    try {
        // Only the registration date is put back: a ceremony or pick-up date left empty stays empty for
        // the checks before saving to name, and a text that is no date has already been refused by the
        // field it was typed in.
        const QString dataReg = m_ui->txt_dataReg->text();
        if (dataReg.isEmpty() || !common::isDate(dataReg))
            m_ui->txt_dataReg->setText(common::shortDate(QDate::currentDate()));

        const struct
        {
            QLineEdit* box;
            const char* message;
        } dates[] = {
            {m_ui->txt_dataRitiro1, "Data Primo Ritiro non corretta!"},
            {m_ui->txt_dataRitiro2, "Data Secondo Ritiro non corretta!"},
            {m_ui->txt_dataEvento, "Data Evento non corretta!"},
            {m_ui->txt_dataReg, "Data Registrazione non corretta!"},
        };
        for (const auto& date : dates) {
            const QString text = date.box->text();
            // Deliberate: no text is both longer than 10 and shorter than 8 characters, so these messages
            // never show; the test is kept as the shop's program has always had it, not widened.
            if (text.size() > 10 && text.size() < 8 && common::isDate(text))
                host::Dialogs::message(QString::fromUtf8(date.message), host::Buttons::Ok,
                                       host::Icon::Exclamation, host::host().GetAppTitle());
        }
    } catch (...) {
        host::host().ReportError(QStringLiteral("xVELARIO.frm_Commissioni.Documento_ControllaDate"),
                                 QString(), true);
    }
}

} // namespace xv::form
