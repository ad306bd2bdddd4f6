// SPDX-License-Identifier: MIT
// The lines grid, the totals and the accessories.
#include "frm_Commissioni.h"

#include "ui_frm_Commissioni.h"

#include "common/Conversions.h"
#include "common/Dates.h"
#include "common/RuntimeError.h"
#include "common/StoredText.h"
#include "host/Dialogs.h"
#include "host/Services.h"
#include "lines/Components.h"
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
        const orders::LineColumns columns = orders::lineColumns(host::host());
        layOutOrderLines(*g, static_cast<int>(columns.names.size()));
        for (int i = 0; i < columns.names.size(); ++i) {
            g->setTextMatrix(0, i, columns.names[i]);
            g->setTextMatrix(1, i, QString::number(columns.typeCodes[i]));
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

void frm_Commissioni::CheckPreInserimentoRiga(bool& allowed)
{
    const auto refuse = [](const QString& text, QLineEdit* field) {
        host::Dialogs::message(text, host::Buttons::Ok, host::Icon::Information, host::host().GetAppTitle());
        field->setFocus();
    };
    if (m_ui->txt_codice->text().isEmpty()) {
        refuse(QStringLiteral("Il codice articolo è obbligatorio!!"), m_ui->txt_codice);
        ResetInfoArticolo();
        return;
    }
    if (m_ui->txt_qta->text().isEmpty())
        return refuse(QStringLiteral("La quantità dell'articolo è obbligatoria!!"), m_ui->txt_qta);
    if (m_ui->txt_descrizione->text().isEmpty())
        return refuse(QStringLiteral("La descrizione dell'articolo è obbligatoria!!"), m_ui->txt_descrizione);
    // Caught here, the line is never written with it and the operator corrects it where it was typed.
    if (const QString why = common::unstorableText(m_ui->txt_descrizione->text()); !why.isEmpty())
        return refuse(QStringLiteral("La descrizione dell'articolo ") + why + QLatin1Char('!'),
                      m_ui->txt_descrizione);
    if (m_ui->txt_dataRitiro->text().isEmpty())
        return refuse(QStringLiteral("La data del ritiro dell'articolo è obbligatoria!!"),
                      m_ui->txt_dataRitiro);

    const auto currency = [](const QString& text) {
        return common::Money::parse(text.isEmpty() ? QStringLiteral("0") : text).toCurrencyText();
    };
    // All three are read before any is rewritten: a price that is no amount leaves every field as typed.
    const QString acconto = currency(m_ui->txt_Acconto->text());
    const QString totale = currency(m_ui->txt_Totale->text());
    const QString prezzo = common::Money::parse(m_ui->txt_prezzo->text()).toCurrencyText();
    m_ui->txt_Acconto->setText(acconto);
    m_ui->txt_Totale->setText(totale);
    m_ui->txt_prezzo->setText(prezzo);
    allowed = true;
}

orders::LineEntry frm_Commissioni::lineEntry() const
{
    orders::LineEntry e;
    e.codice = m_ui->txt_codice->text();
    e.rowidArticolo = m_ui->txt_rowidArticolo->text();
    e.descrizione = m_ui->txt_descrizione->text();
    e.qta = m_ui->txt_qta->text();
    e.prezzo = m_ui->txt_prezzo->text();
    e.totaleRiga = m_ui->txt_totaleRiga->text();
    e.dataRitiro = m_ui->txt_dataRitiro->text();
    e.dataRitiro1 = m_ui->txt_dataRitiro1->text();
    e.dataRitiro2 = m_ui->txt_dataRitiro2->text();
    e.acconto = m_ui->txt_Acconto->text();
    e.riferimenti = m_ui->txt_Riferimenti->text();
    e.tipoEvento = m_ui->txt_tipoEvento->text();
    e.dataEvento = m_ui->txt_dataEvento->text();
    e.soggettiEvento = m_ui->txt_soggettiEvento->text();
    // The Tag keeps the last format chosen after the box is unticked: only a ticked box asks for cards.
    e.bigliettiTag = m_ui->chk_Biglietti->isChecked() ? tagOf(m_ui->chk_Biglietti) : QString();
    e.amuletoTag = tagOf(lblInfo(6));
    e.confetti = m_ui->txt_confetti->text();
    e.mandorla = m_ui->txt_mandorla->text();
    e.cioccolato = m_ui->txt_cioccolato->text();
    return e;
}

bool frm_Commissioni::Flex_AggiungiRiga()
{
    try {
        bool allowed = false;
        CheckPreInserimentoRiga(allowed);
        if (!allowed)
            return false;
        CheckPreInserimentoArticolo();
        CalcolaTotaleRiga(common::numericValue(m_ui->txt_qta->text()),
                          common::Money::parse(m_ui->txt_prezzo->text()));

        host::IHost& h = host::host();
        FlexGrid* g = grid();
        const bool appending = m_existingRow == 0;
        const int row = appending ? common::toInt16(g->rows()) : m_existingRow;
        orders::LineContext context;
        context.gridRow = row;
        context.rowid = m_rowidMed;
        context.tipo = m_lineTipo;
        context.defaultPayment = h.GetDefaultPayment();
        context.vatDefault = h.GetVatDefault();
        context.now = QDateTime::currentDateTime();
        // Every cell is worked out before the grid is touched, so a line that cannot be written leaves no
        // half-filled row behind.
        const QStringList cells = orders::newLineCells(lineEntry(), m_order, m_settings, context);
        if (appending) {
            g->addItem(cells);
            m_existingRow = common::toInt16(g->rows() - 1);
        } else {
            for (int c = 0; c < cells.size() && c < g->cols(); ++c)
                g->setTextMatrix(row, c, cells[c]);
        }
        if (m_ui->txt_codice->isEnabled() && m_ui->txt_codice->isVisible())
            m_ui->txt_codice->setFocus();
        StateOfButtons();
        return true;
    } catch (...) {
        host::host().ReportError(QStringLiteral("Flex_AggiungiRiga"),
                                 QStringLiteral("Errore durante l'aggiunta di una riga nella griglia"), true);
        return false;
    }
}

void frm_Commissioni::CheckComposizione(const QString& articleCode, qint16& count)
{
    try {
        count = 0;
        const QVector<QStringList> found = articleComponents(host::host(), articleCode);
        if (found.isEmpty())
            return;
        m_components = found;
        count = common::toInt16(found.size());
    } catch (...) {
        host::host().ReportError(QStringLiteral("CheckComposizione"),
                                 QStringLiteral("Articolo di tipo A: ") + articleCode, true);
    }
}

void frm_Commissioni::addComponentLines()
{
    qint16 count = 0;
    CheckComposizione(m_ui->txt_codice->text(), count);
    if (count == 0)
        return;
    const qint16 articles = common::toInt16(common::numericValue(m_ui->txt_qta->text()));
    const QVector<QStringList> components = m_components;
    for (const QStringList& component : components) {
        m_ui->txt_codice->setText(component.value(Component_codice));
        Informazioni_MED();
        m_ui->txt_qta->setText(componentQuantityText(component, articles));
        // One refused component says why once; the ones after it would only repeat it.
        if (!Flex_AggiungiRiga())
            return;
    }
}

void frm_Commissioni::Flex_EliminaRiga()
{
    try {
        FlexGrid* g = grid();
        const int rowCount = g->rows();
        const int current = g->row();
        if ((rowCount == 3 || rowCount == 2) && current <= FirstDataRow)
            Flex_Init();
        else
            g->removeItem(current);
        StateOfButtons();
    } catch (...) {
        host::host().ReportError(QStringLiteral("Flex_EliminaRiga"), QString(), true);
    }
}

void frm_Commissioni::flx_Movimenti_Click()
{
    try {
        FlexGrid* g = grid();
        if (g->rows() == FirstDataRow)
            return;
        const int row = g->row();
        const int clicked = g->col();
        if (row < FirstDataRow)
            return;
        m_selectedRow = row;
        // The panel shows the clicked line's article; the line's own description and price then win over
        // the list's.
        m_ui->txt_codice->setText(g->textMatrix(row, Col_codice_med));
        Informazioni_MED();
        copyLineBack(row);
        const QString pickUp = g->textMatrix(row, Col_note);
        const auto date = common::parseShortDate(pickUp);
        m_ui->txt_dataRitiro->setToolTip(QStringLiteral("La data del ritiro di questo articolo è ") +
                                         (date ? common::longDate(*date) : pickUp));
        StateOfButtons();
        QLineEdit* target = nullptr;
        switch (clicked) {
        case Col_codice_med:
            target = m_ui->txt_codice;
            break;
        case Col_note:
            target = m_ui->txt_dataRitiro;
            break;
        case Col_qta:
            target = m_ui->txt_qta;
            break;
        case Col_prezzo:
            target = m_ui->txt_prezzo;
            break;
        default:
            break;
        }
        if (target && target->isVisible() && target->isEnabled())
            target->setFocus();
    } catch (...) {
        host::host().ReportError(QStringLiteral("flx_Movimenti_Click"), QString(), true);
    }
}

// The clicked line's cells go back into the fields, and its header values into the form's, so that a line
// written again carries them.
void frm_Commissioni::copyLineBack(int row)
{
    const FlexGrid* g = grid();
    const auto cell = [g, row](int col) { return g->textMatrix(row, col); };
    const auto number = [&cell](int col) { return common::toInt32(common::numericValue(cell(col))); };

    // Which order this is (type, number, series) stays the open order's own: a line never renames it.
    m_rowidMed = number(Col_rowid);
    m_order.tipogestione = cell(Col_Tipogestione);
    m_order.tipomovimento = cell(Col_Tipomovimento);
    const QString documentDate = cell(Col_datadocumento);
    const auto when = common::parseDateTime(documentDate);
    if (!when && !documentDate.isEmpty())
        throw common::RuntimeError::typeMismatch(documentDate);
    m_order.datadocumento = when.value_or(QDateTime());
    m_order.customer = orders::customerOfCells(g->rowTexts(row));
    m_lineTipo = cell(Col_Tipo);
    m_order.customer.rowidPagamento = cell(Col_Rowid_Pagamento);
    m_order.riferimenti = cell(Col_riferimenti);

    m_ui->lbl_Riga->setText(cell(Col_Riga));
    m_ui->txt_dataRitiro1->setText(cell(Col_Datadal));
    m_ui->txt_dataRitiro2->setText(cell(Col_Dataal));
    m_ui->txt_codice->setText(cell(Col_codice_med));
    m_ui->txt_rowidArticolo->setText(cell(Col_rowid_med));
    m_ui->txt_descrizione->setText(cell(Col_Descrizione1));
    m_ui->txt_qta->setText(cell(Col_qta));
    m_ui->txt_prezzo->setText(cell(Col_prezzo));
    m_ui->txt_totaleRiga->setText(cell(Col_imponibile));
    setTag(m_ui->chk_Biglietti, cell(Col_attrib00));
    setTag(lblInfo(6), cell(Col_attrib01));
    m_ui->txt_confetti->setText(cell(Col_attrib02));
    m_ui->txt_mandorla->setText(cell(Col_attrib03));
    m_ui->txt_tipoEvento->setText(cell(Col_attrib04));
    m_ui->txt_dataEvento->setText(cell(Col_attrib05));
    m_ui->txt_soggettiEvento->setText(cell(Col_attrib06));
    m_ui->txt_cioccolato->setText(cell(Col_attrib09));
    m_ui->txt_dataRitiro->setText(cell(Col_note));
    m_ui->txt_Riferimenti->setText(cell(Col_riferimenti));
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
