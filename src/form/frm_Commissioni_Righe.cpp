// SPDX-License-Identifier: MIT
// The lines grid, the totals, the accessories and the commands of the two toolbars and the keyboard.
#include "frm_Commissioni.h"

#include "ui_frm_Commissioni.h"

#include "common/RuntimeError.h"
#include "host/Services.h"
#include "lines/FlexGrid.h"
#include "lines/GridColumns.h"
#include "lines/Totals.h"

#include <QApplication>
#include <QButtonGroup>
#include <QCheckBox>
#include <QLabel>
#include <QMenu>
#include <QRadioButton>
#include <QToolButton>

namespace xv::form {

using namespace lines;

namespace {

constexpr host::Colour kWhite = 0xFFFFFF;

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

void frm_Commissioni::Flex_Init()
{
    try {
        FlexGrid* g = grid();
        data::Recordset columns = host::host().OpenSchema(4, QStringLiteral("movimenti"));
        layOutOrderLines(*g, columns.recordCount());
        columns.moveFirst();
        for (qint16 i = 0; i <= columns.recordCount() - 1; ++i) {
            g->setTextMatrix(0, i, columns.text(QStringLiteral("Column")));
            g->setTextMatrix(1, i, columns.text(QStringLiteral("Type")));
            columns.moveNext();
        }
        showOrderLineColumns(*g);
    } catch (...) {
        host::host().ReportError(QStringLiteral("frm_Commissioni.Flex_Init"), QString(), true);
    }
}

void frm_Commissioni::grid_RightButtonDown(const QPoint& globalPos)
{
    m_mFasi->popup(globalPos);
}

void frm_Commissioni::CalcolaTotaleRiga(double quantity, common::Money price)
{
    m_ui->txt_totaleRiga->setText(lineAmountText(quantity, price));
}

void frm_Commissioni::Flex_RicalcolaTotali()
{
    try {
        QStringList amounts;
        for (int r = FirstDataRow; r < grid()->rows(); ++r)
            amounts << grid()->textMatrix(r, Col_imponibile);
        m_ui->txt_Totale->setText(orderTotal(amounts).toCurrencyText());
    } catch (...) {
        host::host().ReportError(QStringLiteral("frm_Commissioni.Flex_RicalcolaTotali"), QString(), true);
    }
}

void frm_Commissioni::Flex_RicalcolaRiga()
{
    try {
        host::IHost& h = host::host();
        FlexGrid* g = grid();
        const int remembered = g->rowSel();
        QStringList quantities;
        for (int r = FirstDataRow; r < g->rows(); ++r) {
            g->setTextMatrix(r, Col_Riga, QString::number(r - 1));
            g->setRowBackground(r, host::toQColor(h.GetLockedColor()));
            const QString state = g->textMatrix(r, Col_StatoRiga).toLower();
            if (state == QLatin1String("emesso"))
                g->setRowForeground(r, host::toQColor(h.GetIssuedColor()));
            else if (state == QLatin1String("ritirato"))
                g->setRowForeground(r, host::toQColor(h.GetCollectedColor()));
            quantities << g->textMatrix(r, Col_qta);
        }
        if (remembered >= FirstDataRow && remembered < g->rows())
            g->setRow(remembered);
        setStatusPanel(6, quantityTotalText(quantityTotal(quantities)));
    } catch (...) {
        host::host().ReportError(QStringLiteral("frm_Commissioni.Flex_RicalcolaRiga"), QString(), true);
    }
}

void frm_Commissioni::setOptionGroup(const QMap<int, QRadioButton*>& options, int checked, bool enabled)
{
    QButtonGroup* group = options.first()->group();
    // An option can be switched off only while the group is not exclusive; afterwards the group is
    // exclusive again, even with every option off, so that a click never leaves two options on.
    if (group)
        group->setExclusive(false);
    for (auto it = options.cbegin(); it != options.cend(); ++it) {
        it.value()->setChecked(it.key() == checked);
        it.value()->setEnabled(enabled);
    }
    if (group)
        group->setExclusive(true);
}

void frm_Commissioni::chk_Confetti_Click(int index)
{
    QLineEdit* const fields[] = {m_ui->txt_confetti, m_ui->txt_mandorla, m_ui->txt_cioccolato};
    QLineEdit* field = fields[index];
    if (chk_Confetti(index)->isChecked()) {
        field->setEnabled(true);
        if (field->isEnabled() && field->isVisible())
            field->setFocus();
        return;
    }
    field->setEnabled(false);
    setBackground(field, host::host().GetLockedColor());
    field->clear();
}

void frm_Commissioni::chk_Biglietti_Click()
{
    const bool ticked = m_ui->chk_Biglietti->isChecked();
    setCardFields(ticked, 1);
    // The Tag keeps the last format chosen, but an order without cards is saved without a format.
    if (!ticked)
        m_order.biglietti.clear();
}

void frm_Commissioni::setCardFields(bool ticked, int format)
{
    m_ui->txt_note->setEnabled(ticked);
    m_ui->txt_frase->setEnabled(ticked);
    if (ticked) {
        // Switching a format on fires its click, which writes the format into the Tag, even when that
        // format was on already.
        setOptionGroup(m_optBiglietti, format, true);
        opt_Biglietti_Click(format);
        setBackground(m_ui->txt_note, kWhite);
        setBackground(m_ui->txt_frase, kWhite);
        return;
    }
    setOptionGroup(m_optBiglietti, -1, false);
    setBackground(m_ui->txt_note, host::host().GetLockedColor());
    setBackground(m_ui->txt_frase, host::host().GetLockedColor());
}

void frm_Commissioni::opt_Biglietti_Click(int index)
{
    setTag(m_ui->chk_Biglietti, QString::number(index));
    m_order.biglietti = m_ui->chk_Biglietti->isChecked() ? QString::number(index) : QString();
}

void frm_Commissioni::opt_Amuleto_Click(int index)
{
    setTag(lblInfo(6), QString::number(index));
    m_order.amuleto = QString::number(index);
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

} // namespace xv::form
