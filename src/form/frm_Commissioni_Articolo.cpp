// SPDX-License-Identifier: MIT
// The article panel, the stock check made when the quantity is left, and the duplicate-line check.
#include "frm_Commissioni.h"

#include "ui_frm_Commissioni.h"

#include "host/Dialogs.h"
#include "host/Services.h"
#include "lines/ArticleInfo.h"
#include "lines/ArticleStore.h"
#include "lines/FlexGrid.h"
#include "lines/ReorderMail.h"

#include <QCursor>
#include <QLabel>
#include <QMenu>
#include <QPushButton>

namespace xv::form {

namespace {

const QString kNoAgentText = QStringLiteral("Questo articolo non ha un agente del fornitore a cui scrivere: "
                                            "la mail di riordino NON è stata inviata.");

} // namespace

QLabel* frm_Commissioni::lblInfoArt(int index) const
{
    return m_lblInfoArt.value(index);
}

void frm_Commissioni::setStockMarker(QLabel* marker, const QString& quantityText)
{
    // Each comparison asks the host for the threshold again: the shop may change it at any time.
    const host::Colour colour = lines::stockColour(quantityText, host::host().GetStockThreshold());
    marker->setAutoFillBackground(true);
    QPalette palette = marker->palette();
    palette.setColor(QPalette::Window, host::toQColor(colour));
    marker->setPalette(palette);
}

void frm_Commissioni::Informazioni_MED()
{
    const QString code = m_ui->txt_codice->text();
    try {
        m_ui->lbl_MsgCodice->setVisible(false);
        m_articleMissing = false;
        // The reorder offered and the agent shown belong to the article looked up before: no lookup, not
        // even one that fails, may leave them to this one.
        m_reorder.reset();
        m_ui->btn_SendMail->setEnabled(false);
        m_panel.agent.reset();
        lblInfo(22)->clear();
        setTag(lblInfo(22), QString());
        if (code.isEmpty())
            return;
        host::IHost& h = host::host();
        lines::ArticlePanelView view;
        view.missing = [this] {
            m_articleMissing = true;
            m_ui->lbl_MsgCodice->setVisible(true);
            m_ui->txt_qta->clear();
            m_ui->txt_descrizione->clear();
            m_ui->txt_prezzo->clear();
        };
        std::optional<lines::Article> shown;
        view.article = [this, &shown](const lines::Article& article) {
            shown = article;
            m_ui->txt_rowidArticolo->setText(article.rowid);
            m_ui->txt_descrizione->setText(article.descrizione);
            m_ui->txt_prezzo->setText(article.prezzo.toCurrencyText());
        };
        // The stock is shown once the agent is read, as it always was: a failing agent query leaves it.
        view.agent = [this, &h, &shown](const std::optional<lines::Agent>& agent) {
            m_panel.agent = agent;
            if (agent) {
                lblInfo(22)->setText(agent->name);
                setTag(lblInfo(22), agent->email);
            }
            m_panel.realStock = shown->quantitaReale;
            m_ui->lbl_quantita_reale->setText(shown->quantitaReale);
            setStockMarker(lblInfo(10), shown->quantitaReale);
            const bool low = lines::isStockLow(shown->quantitaReale, h.GetStockThreshold());
            lblInfo(10)->setVisible(low);
            lblInfo(29)->setVisible(low);

            m_ui->lbl_quantita_disponibile->setText(shown->quantitaDisponibile);
            setStockMarker(lblInfo(11), shown->quantitaDisponibile);
            m_ui->lbl_quantita_ordinata->setText(shown->quantitaOrdinata);
            m_ui->lbl_quantita_impegnata->setText(shown->quantitaImpegnata);
        };
        view.lastLoad = [this](const QString& text) { lblInfoArt(0)->setText(text); };
        view.lastSale = [this](const QString& text) {
            lblInfoArt(1)->setText(text);
            setStockMarker(lblInfo(1), lblInfoArt(1)->text());
            setStockMarker(lblInfo(0), lblInfoArt(0)->text());
        };
        lines::readArticlePanel(h, code, view);
        if (m_ui->txt_qta->text().isEmpty())
            m_ui->txt_qta->setText(QStringLiteral("1"));
    } catch (...) {
        host::host().ReportError(QStringLiteral("Informazioni_MED"), QStringLiteral("Codice: ") + code, true);
    }
}

void frm_Commissioni::ResetInfoArticolo()
{
    try {
        for (QLabel* label :
             {m_ui->lbl_quantita_reale, m_ui->lbl_quantita_disponibile, m_ui->lbl_quantita_ordinata,
              m_ui->lbl_quantita_impegnata, lblInfoArt(0), lblInfoArt(1), lblInfo(22)})
            label->clear();
        setTag(lblInfo(22), QString());
        m_ui->txt_rowidArticolo->clear();
        m_panel = {};
        m_reorder.reset();
        m_ui->btn_SendMail->setEnabled(false);
    } catch (...) {
        host::host().ReportError(QStringLiteral("frm_Commissioni.ResetInfoArticolo"), QString(), true);
    }
}

void frm_Commissioni::CheckPreInserimentoArticolo()
{
    try {
        m_existingRow = 0;
        m_rowidMed = 0;
        const lines::FlexGrid* g = grid();
        const lines::ExistingLine found =
            lines::findExistingLine(m_settings.checkAddRigaFlex, m_ui->txt_codice->text(), g->rows(),
                                    [g](int row, int col) { return g->textMatrix(row, col); });
        m_rowidMed = found.rowidMed;
        m_existingRow = found.row;
    } catch (...) {
        host::host().ReportError(QStringLiteral("CheckPreInserimentoArticolo"), QString(), true);
    }
}

void frm_Commissioni::CheckQtaMED()
{
    m_ui->btn_SendMail->setEnabled(false);
    host::IHost& h = host::host();
    const lines::StockCheck check =
        lines::checkStock(h.GetSetting(QStringLiteral("COMM"), QStringLiteral("CheckQtaMED"),
                                       QStringLiteral("0"), QStringLiteral("docs")),
                          m_ui->txt_qta->text(), m_panel.realStock);
    m_reorder =
        lines::reorderOffer(check, m_panel.agent, m_ui->txt_codice->text(), m_ui->txt_descrizione->text());
    m_ui->btn_SendMail->setEnabled(m_reorder.has_value());
    if (check.ask) {
        const lines::Agent agent = m_panel.agent.value_or(lines::Agent{});
        m_reorderQuestion = lines::reorderQuestion(m_panel.realStock, m_ui->txt_qta->text(), check.missing,
                                                   agent.name, agent.email);
        if (host::Dialogs::message(m_reorderQuestion, host::Buttons::YesNo, host::Icon::Question,
                                   h.GetAppTitle()) == host::Answer::Yes)
            InviaRiordino();
    }
    if (m_ui->txt_qta->text().isEmpty())
        m_ui->txt_qta->setText(QStringLiteral("1"));
}

void frm_Commissioni::InviaRiordino()
{
    host::IHost& h = host::host();
    if (!m_reorder) {
        // Only the question, asked whatever the agent, gets here without an offer: the article has no agent.
        // A Yes met with silence would read as a mail sent.
        host::Dialogs::message(kNoAgentText, host::Buttons::Ok, host::Icon::Exclamation, h.GetAppTitle());
        return;
    }
    const lines::ReorderMail mail =
        lines::reorderMail(*m_reorder, m_ui->txt_dataRitiro1->text(), h.GetDataName(), h.GetMailFooter());
    QString result;
    h.SendMail(mail.recipient, mail.subject, mail.body, QString(), QString(), result);
    host::Dialogs::message(result, host::Buttons::Ok, host::Icon::Information, h.GetAppTitle());
}

void frm_Commissioni::setupReorderMail()
{
    m_mAgenti = new QMenu(this);
    m_mAgenti->setObjectName(QStringLiteral("mAgenti"));
    m_tAgenti = std::make_unique<MenuItemArray>(m_mAgenti, QStringLiteral("tAgenti"),
                                                [this](int index) { tAgenti_Click(index); });
    connect(m_ui->btn_SendMail, &QPushButton::clicked, this, &frm_Commissioni::btn_SendMail_Click);
}

void frm_Commissioni::btn_SendMail_Click()
{
    try {
        host::host().FillMenuFromQuery(*m_tAgenti, lines::agentsListSql(), QStringLiteral("RAGSOC"),
                                       QStringLiteral("EMAIL"));
        m_mAgenti->popup(QCursor::pos());
    } catch (...) {
        host::host().ReportError(QStringLiteral("frm_Commissioni.btn_SendMail_Click"), QString(), true);
    }
}

void frm_Commissioni::tAgenti_Click(int index)
{
    try {
        // The agent picked is read and deliberately not used: the mail goes to the agent of the article on
        // the panel, for which the reorder was offered.
        const QAction* picked = m_tAgenti->item(index);
        [[maybe_unused]] const QString name = picked->text();
        [[maybe_unused]] const QString email = tagOf(picked);
        InviaRiordino();
    } catch (...) {
        host::host().ReportError(QStringLiteral("frm_Commissioni.tAgenti_Click"), QString(), true);
    }
}

} // namespace xv::form
