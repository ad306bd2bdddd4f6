// SPDX-License-Identifier: MIT
// Finding an order, loading it into the form, and the header of a new order.
#include "frm_Commissioni.h"

#include "ui_frm_Commissioni.h"

#include "common/Conversions.h"
#include "common/Dates.h"
#include "common/RuntimeError.h"
#include "host/Dialogs.h"
#include "host/Services.h"
#include "lines/FlexGrid.h"
#include "orders/OrderSearch.h"

#include <QCheckBox>
#include <QLabel>

namespace xv::form {

namespace {
constexpr host::Colour kWhite = 0xFFFFFF;
}

bool frm_Commissioni::Flex_CaricaDocumento(const QString& number, const QString& year)
{
    return showLoadedOrder([&number, &year] {
        return orders::loadOrder(host::host(), number, common::toInt32(common::numericValue(year)));
    });
}

bool frm_Commissioni::Flex_CaricaDocumento(const orders::OrderKey& key)
{
    return showLoadedOrder([&key] { return orders::loadOrder(host::host(), key); });
}

bool frm_Commissioni::showLoadedOrder(const std::function<orders::Order()>& load)
{
    try {
        ClearTextBoxes();
        Flex_Init();
        // A load that fails leaves the form and the open order empty alike.
        m_session.show(orders::Order());
        showAccessories();
        m_session.show(load());
        showOpenOrder();
        return true;
    } catch (...) {
        host::host().ReportError(QStringLiteral("Flex_CaricaDocumento"),
                                 QStringLiteral("Errore durante la lettura del documento!"), true);
        return false;
    }
}

// An order that was not found shows as the cleared form it leaves.
void frm_Commissioni::showOpenOrder()
{
    const orders::Order& o = m_order;
    if (!o.lines.isEmpty()) {
        m_ui->txt_numeroCommissione->setText(o.numero);
        m_ui->txt_dataReg->setText(common::shortDate(o.datadocumento.date()));
        m_ui->txt_tipoEvento->setText(o.tipoEvento);
        m_ui->txt_dataEvento->setText(o.dataEvento);
        m_ui->txt_soggettiEvento->setText(o.soggettiEvento);
        m_ui->txt_dataRitiro1->setText(o.datadal);
        m_ui->txt_dataRitiro2->setText(o.dataal);
        m_ui->txt_Acconto->setText(o.acconto.toCurrencyText());
        m_ui->txt_Totale->setText(o.totale.toCurrencyText());
        m_ui->txt_Riferimenti->setText(o.riferimenti);
        m_ui->txt_frase->setText(o.frase);
        m_ui->txt_note->setText(o.noteBiglietti);
        showCustomer();
    }
    showAccessories();
    for (const QStringList& cells : o.lines)
        grid()->addItem(cells);
}

// The check boxes and options say what the order's accessory columns hold, the Tags keep the indexes
// and the fields the quantities, so what is on screen is what a save writes back; an order without
// accessories, or no order at all, leaves nothing of the one before.
void frm_Commissioni::showAccessories()
{
    const int format = orders::cardFormat(m_order.biglietti);
    m_ui->chk_Biglietti->setChecked(format >= 0);
    setCardFields(format >= 0, format);
    if (format < 0) {
        setTag(m_ui->chk_Biglietti, QString());
        m_order.biglietti.clear();
    }

    const int amulet = orders::amuletOption(m_order.amuleto);
    setOptionGroup(m_optAmuleto, amulet, true);
    if (amulet >= 0) {
        opt_Amuleto_Click(amulet);
    } else {
        setTag(lblInfo(6), QString());
        m_order.amuleto.clear();
    }

    const QString quantities[] = {m_order.confetti, m_order.mandorla, QString()};
    QLineEdit* const fields[] = {m_ui->txt_confetti, m_ui->txt_mandorla, m_ui->txt_cioccolato};
    for (int i = 0; i < 3; ++i) {
        const bool ticked = !quantities[i].isEmpty();
        chk_Confetti(i)->setChecked(ticked);
        fields[i]->setText(quantities[i]);
        fields[i]->setEnabled(ticked);
        setBackground(fields[i], ticked ? kWhite : host::host().GetLockedColor());
    }
}

void frm_Commissioni::showCustomer()
{
    const orders::Customer& c = m_order.customer;
    m_ui->txt_ragsoc->setText(c.nominativo);
    m_ui->txt_telefono->setText(c.telefono);
    m_ui->txt_cellulare->setText(c.cellulare);
    m_ui->txt_email->setText(c.email);
}

void frm_Commissioni::Documento_Trova()
{
    const auto chosen = host::listWindow().Search(
        QStringLiteral("Trova Commissioni"),
        [kind = m_settings.tipomovimento](const QString& text, int limit, const QVariantList& after) {
            return orders::orderSearchSql(kind, text, limit,
                                          orders::nameLookupFor(host::host().GetConnection(), text),
                                          orders::searchRowKey(after));
        });
    if (!chosen || chosen->size() <= orders::Search_documento)
        return;
    // The chosen row names exactly one order, of whatever year.
    const orders::OrderKey key{chosen->at(orders::Search_documento), chosen->at(orders::Search_numero),
                               chosen->at(orders::Search_serie)};
    if (!Flex_CaricaDocumento(key))
        host::Dialogs::message(QStringLiteral("Errori rilevati durante il caricamento della commissione!"),
                               host::Buttons::Ok, host::Icon::Exclamation, host::host().GetAppTitle());
}

void frm_Commissioni::Documento_TrovaNumero()
{
    const QString number = m_ui->txt_numeroCommissione->text();
    if (number.isEmpty())
        return;
    const QString year = QString::number(QDate::currentDate().year());
    if (!Flex_CaricaDocumento(number, year))
        host::Dialogs::message(QStringLiteral("ATTENZIONE!!\nCOMMISSIONE N.") + number + QLatin1Char('/') + year +
                                   QStringLiteral(" NON E' PRESENTE IN ARCHIVIO!"),
                               host::Buttons::Ok, host::Icon::Exclamation, host::host().GetAppTitle());
}

void frm_Commissioni::SetTextBoxDocumento()
{
    host::IHost& h = host::host();
    m_ui->txt_numeroCommissione->clear();
    const QString registered = m_ui->txt_dataReg->text();
    const int year = common::toDate(registered).year();
    m_order.tipomovimento = m_settings.tipomovimento;
    m_order.tipogestione = m_settings.tipogestione;
    const auto proposal = orders::proposeNumber(h, m_order.tipomovimento, year);
    m_order.datadocumento = registered.isEmpty() ? QDate::currentDate().startOfDay()
                                                 : common::toDate(registered).startOfDay();
    m_order.idnumeratore = proposal ? proposal->counterKey : 0;
    if (!proposal) {
        host::Dialogs::message(QStringLiteral("Attenzione!! Creare il numeratore per il tipo documento [") +
                                   m_order.tipomovimento + QLatin1Char(']'),
                               host::Buttons::Ok, host::Icon::Critical, h.GetAppTitle());
        return;
    }
    m_order.numero = proposal->numero;
    m_order.serie = proposal->serie;
    m_order.documento = proposal->documento;
    m_ui->txt_numeroCommissione->setText(proposal->numero);
}

void frm_Commissioni::SetTextBoxControparte()
{
    host::IHost& h = host::host();
    orders::Customer c;
    c.nominativo = m_ui->txt_ragsoc->text();
    c.codenominativo = QStringLiteral("00000000000");
    const host::WalkInAddress address = h.GetWalkInAddress();
    c.indirizzo = address.indirizzo;
    c.cap = address.cap;
    c.comune = address.comune;
    c.provincia = address.provincia;
    c.strada.clear();
    c.telefono = m_ui->txt_telefono->text();
    c.cellulare = m_ui->txt_cellulare->text();
    c.email = m_ui->txt_email->text();

    c.key = 0;
    if (!c.nominativo.isEmpty() && m_settings.checkControparti) {
        const auto row =
            host::listWindow().PickRow(QStringLiteral("Clienti"), orders::customersNamedSql(c.nominativo));
        if (row && !row->isEmpty())
            c.key = common::toInt32(common::numericValue(row->first().toString()));
    }
    // A known customer replaces the walk-in values whole: street and shipping stay empty as above.
    if (const std::optional<orders::Customer> known = orders::findCustomer(h, c.key))
        c = *known;
    m_order.customer = c;
    showCustomer();
    m_ui->txt_ragsoc->setToolTip(c.addressTip());
}

void frm_Commissioni::pickCustomer()
{
    try {
        const auto row = host::listWindow().PickRow(
            QStringLiteral("Clienti"), orders::customerListSql(m_settings.SQL_SelControparti, m_ui->txt_ragsoc->text()));
        if (!row || row->isEmpty())
            return;
        m_ui->txt_ragsoc->setText(row->at(0).toString());
        if (row->size() > 1)
            m_ui->txt_email->setText(row->at(1).toString());
        SetTextBoxControparte();
        AbilitaRighe();
    } catch (...) {
        host::host().ReportError(QStringLiteral("SetTextBoxControparte"), QString(), true);
    }
}

} // namespace xv::form
