// SPDX-License-Identifier: MIT
// The order form's checks before an order is written: the fields read into a plain value, the checks
// made by the orders unit, the message and the focus given here.
#include "frm_Commissioni.h"
#include "ui_frm_Commissioni.h"

#include "common/Conversions.h"
#include "common/Dates.h"
#include "common/RuntimeError.h"
#include "host/Dialogs.h"
#include "host/Services.h"
#include "lines/FlexGrid.h"
#include "lines/GridColumns.h"
#include "orders/SaveChecks.h"
#include "orders/TextChecks.h"

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

namespace {

// An amount field as the write reads it: empty is nothing owed yet.
common::Money fieldAmount(const QLineEdit* box)
{
    const QString text = box->text().trimmed();
    return text.isEmpty() ? common::Money() : common::Money::parse(text);
}

} // namespace

orders::GridRows frm_Commissioni::gridRows() const
{
    const lines::FlexGrid* g = grid();
    orders::GridRows rows;
    if (g->rows() < lines::FirstDataRow)
        return rows;
    rows.names = g->rowTexts(0);
    for (const QString& type : g->rowTexts(1))
        rows.typeCodes << common::toInt32(common::numericValue(type));
    // Whole rows at once: read cell by cell, a thousand-line order costs sixty thousand copies.
    rows.lines.reserve(g->rows() - lines::FirstDataRow);
    for (int r = lines::FirstDataRow; r < g->rows(); ++r)
        rows.lines << g->rowTexts(r);
    return rows;
}

void frm_Commissioni::putGridLines(const QVector<QStringList>& lines, std::initializer_list<int> columns)
{
    lines::FlexGrid* g = grid();
    for (int i = 0; i < lines.size() && lines::FirstDataRow + i < g->rows(); ++i) {
        for (int c : columns) {
            if (c < lines[i].size() && c < g->cols())
                g->setTextMatrix(lines::FirstDataRow + i, c, lines[i][c]);
        }
    }
}

void frm_Commissioni::Documento_CopiaTestata()
{
    // The header as it stands on screen becomes the order's, which every line then repeats. The card
    // format is the order's already: the box and the options keep it as they are clicked.
    orders::Order& o = m_order;
    o.customer.telefono = m_ui->txt_telefono->text();
    o.customer.cellulare = m_ui->txt_cellulare->text();
    o.customer.email = m_ui->txt_email->text();
    o.datadal = m_ui->txt_dataRitiro1->text();
    o.dataal = m_ui->txt_dataRitiro2->text();
    o.tipoEvento = m_ui->txt_tipoEvento->text();
    o.dataEvento = m_ui->txt_dataEvento->text();
    o.soggettiEvento = m_ui->txt_soggettiEvento->text();
    o.riferimenti = m_ui->txt_Riferimenti->text();
    o.frase = m_ui->txt_frase->text();
    o.noteBiglietti = m_ui->txt_note->text();

    QVector<QStringList> lines = gridRows().lines;
    orders::copyHeader(lines, o, QDateTime::currentDateTime());
    using namespace lines;
    putGridLines(lines, {Col_datareg,    Col_Datadal,        Col_oradal,
                         Col_Dataal,     Col_oraal,          Col_rowid_controparti,
                         Col_Nominativo, Col_codenominativo, Col_Indirizzo,
                         Col_Cap,        Col_comune,         Col_Spedizione,
                         Col_provincia,  Col_Strada,         Col_telefono,
                         Col_Cellulare,  Col_Email,          Col_attrib04,
                         Col_attrib05,   Col_attrib06,       Col_riferimenti,
                         Col_StatoRiga,  Col_attrib00,       Col_attrib07,
                         Col_attrib08});
}

bool frm_Commissioni::SalvaAggiornaElimina(const QString& mode)
{
    host::IHost& h = host::host();
    try {
        const std::optional<orders::WriteMode> writeMode = orders::writeModeFromLetter(mode);
        if (!writeMode)
            throw common::RuntimeError(common::ErrorNumber::InvalidProcedureCall,
                                       QStringLiteral("Modalità di scrittura sconosciuta: '%1'").arg(mode));
        orders::OrderWrite write;
        write.grid = gridRows();
        write.key = m_order.orderKey();
        write.idnumeratore = m_order.idnumeratore;
        write.acconto = fieldAmount(m_ui->txt_Acconto);
        write.totale = fieldAmount(m_ui->txt_Totale);
        write.saveId = m_order.saveId;
        const bool isNew = *writeMode == orders::WriteMode::Save;
        const QString proposed = write.key.numero;

        const QString title = h.GetAppTitle();
        const QString shownKey = write.key.numero + QLatin1Char('\\') + write.key.serie;
        const auto confirmDelete = [&] {
            return host::Dialogs::message(
                       QStringLiteral("Eliminare il documento N°") + shownKey + QLatin1Char('?'),
                       host::Buttons::YesNo, host::Icon::Exclamation, title) == host::Answer::Yes;
        };
        const orders::WriteResult result =
            orders::writeOrder(h, *writeMode, write, confirmDelete);
        putGridLines(write.grid.lines, {lines::Col_prezzo2, lines::Col_imposta, lines::Col_numero});
        if (!result.done)
            return false;
        // The order is read back under the number it was stored with. Until then it stays new here, and
        // its save identity finds what was stored should the same save be made again.
        m_order.numero = result.numero;

        QString message;
        if (*writeMode == orders::WriteMode::Delete) {
            message = QStringLiteral("Cancellazione del documento N°") + shownKey +
                      QStringLiteral(" eseguita correttamente!");
        } else if (isNew) {
            message = QStringLiteral("Salvataggio eseguito correttamente!");
            if (result.renumbered) {
                // The operator must know the number the customer's order now has.
                m_ui->txt_numeroCommissione->setText(result.numero);
                message += QStringLiteral("\n\nIl N° %1 era già stato usato da un'altra postazione: la "
                                          "commissione è stata salvata con il N° %2\\%3.")
                               .arg(proposed, result.numero, write.key.serie);
            }
        } else {
            message = QStringLiteral("Aggiornamento del documento ") + shownKey +
                      QStringLiteral(" eseguito correttamente!");
        }
        m_session.written();
        showMode();
        host::Dialogs::message(message, host::Buttons::Ok, host::Icon::Information, title);
        return true;
    } catch (...) {
        const common::ErrorInfo info = common::describe(std::current_exception());
        h.ReportError(QStringLiteral("xVELARIO.frm_Commissioni.SalvaAggiornaElimina"),
                      QString::number(info.number) + QStringLiteral(" -> ") + info.description, true);
        return false;
    }
}

// Saving from the toolbar or with F3 leaves the focus where it was, so the field typed in last has not
// been left: a customer's name would be saved as it was before, a date would go unread.
bool frm_Commissioni::finishHeaderField()
{
    QLineEdit* box = m_fieldWithFocus;
    const bool header = box == m_ui->txt_ragsoc || box == m_ui->txt_dataReg || box == m_ui->txt_dataEvento ||
                        box == m_ui->txt_dataRitiro1 || box == m_ui->txt_dataRitiro2;
    return !header || !box->isModified() || TextBox_LostFocus(box);
}

bool frm_Commissioni::textsCanBeSaved()
{
    QVector<orders::FieldText> header;
    for (QLineEdit* box :
         {m_ui->txt_ragsoc, m_ui->txt_telefono, m_ui->txt_cellulare, m_ui->txt_email, m_ui->txt_tipoEvento,
          m_ui->txt_soggettiEvento, m_ui->txt_Riferimenti, m_ui->txt_frase, m_ui->txt_note}) {
        // The field is named by the caption the operator reads beside it.
        const QLabel* label = findChild<QLabel*>(QStringLiteral("lbl_") + box->objectName().mid(4));
        const QString caption = label ? label->text().remove(QLatin1Char('&')) : box->objectName();
        header.push_back({caption, box->objectName(), box->text()});
    }
    const std::optional<orders::TextRefusal> refusal = orders::refusedText(header, gridRows());
    if (!refusal)
        return true;
    host::Dialogs::message(refusal->message, host::Buttons::Ok, host::Icon::Exclamation,
                           host::host().GetAppTitle());
    QWidget* target = refusal->focus.isEmpty() ? nullptr : findChild<QWidget*>(refusal->focus);
    if (target && target->isVisible() && target->isEnabled())
        target->setFocus(Qt::OtherFocusReason);
    return false;
}

void frm_Commissioni::printAfterSaving()
{
    Documento_StampaCControllo(1);
}

bool frm_Commissioni::Documento_Salva()
{
    host::IHost& h = host::host();
    try {
        if (!finishHeaderField() || !CheckPreSalvataggio() || !textsCanBeSaved())
            return false;
        const bool isNew = m_order.isNew();
        const QString question = (isNew ? QStringLiteral("Salvare") : QStringLiteral("Aggiornare")) +
                                 QStringLiteral(" la commissione N° ") + m_order.numero + QLatin1Char('\\') +
                                 m_order.serie + QStringLiteral(" ?");
        if (host::Dialogs::message(question, host::Buttons::YesNo, host::Icon::Question, h.GetAppTitle()) !=
            host::Answer::Yes)
            return false;
        Documento_CopiaTestata();
        if (!SalvaAggiornaElimina(isNew ? QStringLiteral("S") : QStringLiteral("A")))
            return false;
        if (h.AskPrintQuestion())
            printAfterSaving();
        h.DocumentWritten(this);
        return Flex_CaricaDocumento(m_order.orderKey());
    } catch (...) {
        h.ReportError(QStringLiteral("xVELARIO.frm_Commissioni.Documento_Salva"), QString(), true);
        return false;
    }
}

} // namespace xv::form
