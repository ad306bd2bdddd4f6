// SPDX-License-Identifier: MIT
// The article of the line being entered: what the shop's list says of it, and whether the order has it.
#include "frm_Commissioni.h"

#include "ui_frm_Commissioni.h"

#include "common/Conversions.h"
#include "data/Recordset.h"
#include "data/SqlText.h"
#include "host/Services.h"
#include "lines/FlexGrid.h"
#include "lines/GridColumns.h"

namespace xv::form {

void frm_Commissioni::Informazioni_MED()
{
    const QString code = m_ui->txt_codice->text();
    try {
        if (code.isEmpty())
            return;
        const data::Recordset article = host::host().OpenRecordset(
            QStringLiteral("SELECT rowid,descrizione,prezzo_vendita FROM med WHERE codice='") +
            data::sqlEscape(code) + QLatin1Char('\''));
        if (!article.eof()) {
            m_ui->txt_rowidArticolo->setText(article.text(QStringLiteral("rowid")));
            m_ui->txt_descrizione->setText(article.text(QStringLiteral("descrizione")));
            m_ui->txt_prezzo->setText(article.money(QStringLiteral("prezzo_vendita")).toCurrencyText());
        }
        if (m_ui->txt_qta->text().isEmpty())
            m_ui->txt_qta->setText(QStringLiteral("1"));
    } catch (...) {
        host::host().ReportError(QStringLiteral("Informazioni_MED"), QStringLiteral("Codice: ") + code, true);
    }
}

void frm_Commissioni::ResetInfoArticolo()
{
    m_ui->txt_rowidArticolo->clear();
}

void frm_Commissioni::CheckPreInserimentoArticolo()
{
    try {
        m_existingRow = 0;
        m_rowidMed = 0;
        if (!m_settings.checkAddRigaFlex)
            return;
        const QString code = m_ui->txt_codice->text().trimmed();
        const lines::FlexGrid* g = grid();
        for (int r = lines::FirstDataRow; r < g->rows(); ++r) {
            if (g->textMatrix(r, lines::Col_codice_med).trimmed() == code) {
                m_rowidMed = common::toInt32(common::numericValue(g->textMatrix(r, lines::Col_rowid_med)));
                m_existingRow = common::toInt16(r);
                return;
            }
        }
    } catch (...) {
        host::host().ReportError(QStringLiteral("CheckPreInserimentoArticolo"), QString(), true);
    }
}

} // namespace xv::form
