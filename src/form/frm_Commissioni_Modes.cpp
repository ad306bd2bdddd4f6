// SPDX-License-Identifier: MIT
// The form's modes, kept in the Tags of the first two document buttons, and what each mode allows.
#include "frm_Commissioni.h"

#include "ui_frm_Commissioni.h"

#include "common/Dates.h"
#include "host/Dialogs.h"
#include "host/Services.h"
#include "lines/FlexGrid.h"
#include "orders/CommandState.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QLabel>
#include <QRadioButton>

namespace xv::form {

namespace {
constexpr host::Colour kWhite = 0xFFFFFF;
}

QString frm_Commissioni::ModeTag1() const
{
    return m_session.modeTag1();
}

QString frm_Commissioni::ModeTag2() const
{
    return m_session.modeTag2();
}

void frm_Commissioni::showMode()
{
    setTag(m_documentBar.button(1), m_session.modeTag1());
    setTag(m_documentBar.button(2), m_session.modeTag2());
}

qint64 frm_Commissioni::LineCount() const
{
    return static_cast<qint64>(grid()->rows()) - 2;
}

void frm_Commissioni::StateOfButtons()
{
    try {
        host::IHost& h = host::host();
        const orders::CommandState s = m_session.commands(LineCount());
        for (int index : {1, 2, 3})
            m_linesBar.button(index)->setEnabled(s.linesAdd);
        m_linesBar.button(5)->setEnabled(s.linesReset);

        QAction* newButton = m_documentBar.button(1);
        newButton->setEnabled(s.newEnabled);
        newButton->setText(s.newCaption);
        QAction* modifyButton = m_documentBar.button(2);
        modifyButton->setEnabled(s.modifyEnabled);
        grid()->setEnabled(s.gridEnabled);
        if (s.modifyCaption)
            modifyButton->setText(*s.modifyCaption);
        QAction* deleteButton = m_documentBar.button(3);
        deleteButton->setEnabled(s.deleteEnabled);
        deleteButton->setText(s.deleteCaption);
        m_documentBar.button(5)->setEnabled(s.findEnabled);
        m_documentBar.button(7)->setEnabled(s.printEnabled);

        m_ui->fra_Main->setEnabled(s.mainEnabled);
        m_ui->txt_numeroCommissione->setEnabled(s.numberEnabled);
        m_ui->txt_dataReg->setEnabled(s.dateRegEnabled);
        setBackground(m_ui->txt_dataReg, s.dateRegEnabled ? kWhite : h.GetInactiveColor());
        m_ui->fra_Cliente->setEnabled(s.mainEnabled);
        m_ui->txt_ragsoc->setEnabled(m_ui->fra_Cliente->isEnabled());
        setBackground(m_ui->txt_ragsoc, m_ui->txt_ragsoc->isEnabled() ? kWhite : h.GetInactiveColor());
        for (QWidget* frame : {static_cast<QWidget*>(m_ui->fra_Accessori), static_cast<QWidget*>(m_ui->fra_Confetti),
                               static_cast<QWidget*>(m_ui->fra_Evento), static_cast<QWidget*>(m_ui->fra_Righe),
                               static_cast<QWidget*>(m_ui->fra_MED), static_cast<QWidget*>(m_ui->fra_Totali)})
            frame->setEnabled(s.mainEnabled);

        setStatusPanel(7, s.linesPanel);
        setStatusPanel(8, StatoCommissione());
    } catch (...) {
        host::host().ReportError(QStringLiteral("frm_Commissioni.StateOfButtons"), QString(), true);
    }
}

void frm_Commissioni::NuovoAnnulla(QAction* button)
{
    try {
        // The button is the mode's own: what it does follows the mode it shows.
        Q_UNUSED(button);
        ClearTextBoxes();
        Flex_Init();
        const bool starting = m_session.newOrCancel();
        showAccessories();
        m_ui->fra_Main->setEnabled(starting);
        m_ui->txt_numeroCommissione->setEnabled(!starting);
        if (starting) {
            const QString today = common::shortDate(QDate::currentDate());
            for (QLineEdit* field : {m_ui->txt_dataReg, m_ui->txt_dataRitiro, m_ui->txt_dataRitiro1, m_ui->txt_dataRitiro2})
                field->setText(today);
            GET_Impostazioni();
            SetTextBoxDocumento();
            m_ui->lbl_Riga->setText(QStringLiteral("1"));
            m_nextLinePosition = 2;
        } else {
            if (!host::host().ReleaseRecordLock(static_cast<quintptr>(winId())))
                host::Dialogs::message(
                    QStringLiteral("Errori rilevati durante l'eliminazione del record bloccato!"),
                    host::Buttons::Ok, host::Icon::Exclamation, host::host().GetAppTitle());
        }
        showMode();
        m_rowidMed = 0;
        m_lineTipo.clear();
        const bool mainEnabled = m_ui->fra_Main->isEnabled();
        for (QWidget* frame : {static_cast<QWidget*>(m_ui->fra_Cliente), static_cast<QWidget*>(m_ui->fra_Evento),
                               static_cast<QWidget*>(m_ui->fra_Accessori), static_cast<QWidget*>(m_ui->fra_Confetti)})
            frame->setEnabled(mainEnabled);
    } catch (...) {
        host::host().ReportError(QStringLiteral("NuovoAnnulla"), QString(), true);
    }
}

void frm_Commissioni::SetModificaTags()
{
    m_session.beginChanges();
    showMode();
}

void frm_Commissioni::ClearTextBoxes()
{
    for (QLineEdit* field : findChildren<QLineEdit*>())
        field->clear();
}

namespace {

// The kind of a control by the names the form's procedures test for.
QString typeName(const QObject* control)
{
    if (qobject_cast<const QLineEdit*>(control))
        return QStringLiteral("TextBox");
    if (qobject_cast<const QRadioButton*>(control))
        return QStringLiteral("OptionButton");
    if (qobject_cast<const QCheckBox*>(control))
        return QStringLiteral("CheckBox");
    return QString::fromLatin1(control->metaObject()->className());
}

} // namespace

void frm_Commissioni::ResetTutto()
{
    try {
        Flex_Init();
        for (QWidget* control : findChildren<QWidget*>()) {
            const QString type = typeName(control);
            if (type == QLatin1String("TextBox"))
                static_cast<QLineEdit*>(control)->clear();
            // No control is of this kind, so check boxes keep their state: kept on purpose.
            if (type == QLatin1String("ControlBox"))
                control->setProperty("value", 0);
            if (type == QLatin1String("OptionButton")) {
                auto* option = static_cast<QRadioButton*>(control);
                const bool exclusive = option->group() && option->group()->exclusive();
                if (exclusive)
                    option->group()->setExclusive(false);
                option->setChecked(false);
                if (exclusive)
                    option->group()->setExclusive(true);
            }
        }
    } catch (...) {
        host::host().ReportError(QStringLiteral("frm_Commissioni.ResetTutto"), QString(), true);
    }
}

void frm_Commissioni::AbilitaRighe()
{
    host::IHost& h = host::host();
    if (tagOf(lblInfo(6)).isEmpty()) {
        // Switching an option on from code fires its click, even when it was on already.
        opt_Amuleto(0)->setChecked(true);
        opt_Amuleto_Click(0);
    }
    // A field holding only blanks counts as filled: the test is against the empty text as it stands.
    const bool filled = !m_ui->txt_numeroCommissione->text().isEmpty() && !m_ui->txt_ragsoc->text().isEmpty() &&
                        !m_ui->txt_dataEvento->text().isEmpty() && !m_ui->txt_soggettiEvento->text().isEmpty() &&
                        !m_ui->txt_dataRitiro1->text().isEmpty() && !m_ui->txt_dataRitiro2->text().isEmpty();
    m_ui->fra_Righe->setEnabled(filled);
    m_ui->fra_Totali->setEnabled(filled);
    grid()->setEnabled(filled);
    grid()->setBackColor(host::toQColor(filled ? h.GetLockedColor() : h.GetDisabledColor()));
    QPalette rowPalette = m_ui->lbl_Riga->palette();
    rowPalette.setColor(QPalette::Window, palette().color(QPalette::Button));
    m_ui->lbl_Riga->setPalette(rowPalette);
    const host::Colour entry = filled ? kWhite : h.GetDisabledColor();
    for (QLineEdit* field :
         {m_ui->txt_codice, m_ui->txt_qta, m_ui->txt_descrizione, m_ui->txt_prezzo, m_ui->txt_dataRitiro})
        setBackground(field, entry);
    setBackground(m_ui->txt_totaleRiga, filled ? h.GetLockedColor() : h.GetDisabledColor());
}

} // namespace xv::form
