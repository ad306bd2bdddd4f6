// SPDX-License-Identifier: MIT
// The lines grid, the totals and the accessories.
#include "frm_Commissioni.h"

#include "ui_frm_Commissioni.h"

#include "host/Services.h"
#include "lines/FlexGrid.h"
#include "lines/GridColumns.h"
#include "lines/Totals.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QLabel>
#include <QMenu>
#include <QRadioButton>

namespace xv::form {

using namespace lines;

namespace {

constexpr host::Colour kWhite = 0xFFFFFF;

} // namespace

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
        // This runs after every key typed: the colours are asked once for all the lines, not per line.
        const QColor locked = host::toQColor(h.GetLockedColor());
        const QColor issued = host::toQColor(h.GetIssuedColor());
        const QColor collected = host::toQColor(h.GetCollectedColor());
        QStringList quantities;
        for (int r = FirstDataRow; r < g->rows(); ++r) {
            g->setTextMatrix(r, Col_Riga, QString::number(r - 1));
            g->setRowBackground(r, locked);
            const QString state = g->textMatrix(r, Col_StatoRiga).toLower();
            if (state == QLatin1String("emesso"))
                g->setRowForeground(r, issued);
            else if (state == QLatin1String("ritirato"))
                g->setRowForeground(r, collected);
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

} // namespace xv::form
