// SPDX-License-Identifier: MIT
// The order statement handed to the customer at pick-up.
#include "frm_Commissioni.h"

#include "ui_frm_Commissioni.h"

#include "common/Conversions.h"
#include "common/RuntimeError.h"
#include "host/Dialogs.h"
#include "host/PrintOutput.h"
#include "host/Services.h"
#include "lines/FlexGrid.h"
#include "lines/GridColumns.h"
#include "orders/OrderSelections.h"
#include "printing/Statement.h"

#include <QApplication>
#include <QPagedPaintDevice>

namespace xv::form {

namespace {

const QString kShopSection = QStringLiteral("albaluce");
const QString kSuiteStore = QStringLiteral("eKELA");

// Runs a step of the print; a step that fails on an invalid property value is run again, once per print.
void runStep(bool& retried, const std::function<void()>& step)
{
    for (;;) {
        try {
            step();
            return;
        } catch (...) {
            if (retried || common::describe(std::current_exception()).number !=
                               static_cast<int>(common::ErrorNumber::InvalidPropertyValue))
                throw;
            retried = true;
        }
    }
}

} // namespace

printing::StatementInput frm_Commissioni::statementInput() const
{
    host::IHost& h = host::host();
    printing::StatementInput input;
    input.appTitle = h.GetAppTitle();
    input.phase = m_phase;
    input.operatorText = m_ui->txt_rowidUtente->text();
    input.number = m_order.numero;
    input.orderDate = m_order.datadocumento.date();
    input.printTime = QTime::currentTime();
    input.customer = m_ui->txt_ragsoc->text();
    const lines::FlexGrid* lines = grid();
    input.rows.reserve(std::max(0, lines->rows() - lines::FirstDataRow));
    for (int r = lines::FirstDataRow; r < lines->rows(); ++r)
        input.rows.append({lines->textMatrix(r, lines::Col_codice_med),
                           lines->textMatrix(r, lines::Col_Descrizione1),
                           lines->textMatrix(r, lines::Col_qta), lines->textMatrix(r, lines::Col_prezzo),
                           lines->textMatrix(r, lines::Col_totale)});
    input.deposit = m_ui->txt_Acconto->text();
    input.total = m_ui->txt_Totale->text();
    input.emphasisSize = printing::emphasisPointSize(
        h.GetSetting(kShopSection, QStringLiteral("GEST_DIM_RICACCIO"), QStringLiteral("14"), kSuiteStore));
    // A shop without its header picture still gets its statement.
    const QString picture =
        h.GetSetting(QStringLiteral("Ricacci"), QStringLiteral("RicaccioFileHeader"),
                     h.GetDataPath() + QStringLiteral("albaluce-header.jpg"), QStringLiteral("xVELA"));
    if (h.FileExists(picture, 0))
        input.picturePath = picture;
    return input;
}

void frm_Commissioni::Documento_AnteprimaEstratto()
{
    host::IHost& h = host::host();
    int row = 0;
    try {
        printing::StatementInput input = statementInput();
        if (input.deposit.isEmpty())
            input.deposit = QStringLiteral("0");
        const printing::Statement statement = printing::buildStatement(
            input, [&h](const QString& text, int width) { return h.PadWidth(text, width, 0); }, &row);
        host::Dialogs::preview(
            QStringLiteral("Estratto commissione ") + m_order.numero,
            [&statement](QPagedPaintDevice& device) { printing::printStatement(statement, device); });
    } catch (...) {
        h.ReportError(QStringLiteral("Documento_AnteprimaEstratto") + QString::number(row),
                      QStringLiteral("Errori rilevati durante l'anteprima dell'estratto N° ") + m_order.numero,
                      true);
    }
}

bool frm_Commissioni::Documento_StampaRicevutaRitiro()
{
    host::IHost& h = host::host();
    int row = 0;
    bool retried = false;
    QString notice;
    QString pdf;
    bool done = false;
    try {
        // Two rows are always there for the column names and types: an order without lines still prints.
        if (grid()->rows() == 0) {
            host::Dialogs::message(QStringLiteral("Impossibile stampare la lista vuota!"), host::Buttons::Ok,
                                   host::Icon::Information, h.GetAppTitle());
            return false;
        }
        if (host::Dialogs::message(QStringLiteral("Stampare l'estratto della Commissione corrente?"),
                                   host::Buttons::YesNo, host::Icon::Question,
                                   h.GetAppTitle()) != host::Answer::Yes) {
            while (QApplication::overrideCursor())
                QApplication::restoreOverrideCursor();
            return false;
        }
        // Read as the other prints of the suite read it, so that a value out of range is told here too.
        common::toByte(common::numericValue(h.GetSetting(kShopSection, QStringLiteral("GEST_STAMPA_RICACCIO"),
                                                         QStringLiteral("1"), kSuiteStore)));
        if (m_ui->txt_Acconto->text().isEmpty())
            m_ui->txt_Acconto->setText(QStringLiteral("0"));

        runStep(retried, [&] {
            const printing::StatementInput input = statementInput();
            const printing::Statement statement = printing::buildStatement(
                input, [&h](const QString& text, int width) { return h.PadWidth(text, width, 0); }, &row);
            host::PrintOutput output(h, QStringLiteral("Estratto commissione ") + m_order.numero);
            printing::printStatement(statement, output.device(), output.destination());
            output.finish(QString::fromUtf8(printing::kStatementRefused));
            notice = output.notice();
            pdf = output.pdfInsteadOfPrinter();
        });
        runStep(retried, [&] {
            orders::markOrderCollected(h, m_order.documento, m_order.datadocumento.date().year(),
                                       m_order.numero);
        });
        done = true;
    } catch (...) {
        h.ReportError(QStringLiteral("Documento_StampaRicevutaRitiro") + QString::number(row),
                      QStringLiteral("Errori rilevati durante la stampa dell'estratto N° ") + m_order.numero,
                      true);
    }
    // Where the paper went is worth knowing even when marking the order collected failed.
    host::tellWherePrinted(h, notice, pdf);
    return done;
}

} // namespace xv::form
