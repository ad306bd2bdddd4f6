// SPDX-License-Identifier: MIT
// What the operator's order is left with when saving goes wrong: a statement failing, and text that cannot
// be kept. Through the real form, offscreen, on both engines, whose refusals differ; a database that cannot
// be written or has no room left is WriteRefusalTest's, the server stopping ServerStopTest's.
#include "FormFixture.h"
#include "ScriptedDialogs.h"

#include "data/Database.h"
#include "form/frm_Commissioni.h"
#include "host/Dialogs.h"
#include "lines/FlexGrid.h"
#include "lines/GridColumns.h"
#include "orders/OrderSearch.h"

#include <QApplication>
#include <QClipboard>
#include <QSqlQuery>
#include <QSqlRecord>

#include <gtest/gtest.h>

namespace {

using namespace xv;

// The entries of two snapshots that differ, for a failure one can read.
std::string changes(const QStringList& before, const QStringList& after)
{
    std::string text;
    for (qsizetype i = 0; i < std::max(before.size(), after.size()); ++i) {
        if (before.value(i) != after.value(i))
            text += "\n  was: " + before.value(i).left(300).toStdString() +
                    "\n  now: " + after.value(i).left(300).toStdString();
    }
    return text;
}

// What one command did while a fault was armed, as the operator saw it.
struct Attempt
{
    bool completed = false; // the command's success message came
    QStringList errors;     // the error boxes shown
    QStringList warnings;   // any other message that stopped it
};

class SaveSafetyTest : public test::FormTest
{
protected:
    // Every row of the tables a write touches, every column, in key order.
    QStringList storedRows()
    {
        QStringList rows;
        const std::pair<const char*, const char*> tables[] = {
            {"movimenti", "rowid"}, {"numeratori", "idnumeratore"}, {"med", "rowid"}};
        for (const auto& [table, key] : tables) {
            QSqlQuery q = db().executeBound(QStringLiteral("select * from %1 order by %2").arg(table, key));
            while (q.next()) {
                QStringList values{QString::fromLatin1(table)};
                for (int i = 0; i < q.record().count(); ++i)
                    values << (q.isNull(i) ? QStringLiteral("NULL") : q.value(i).toString());
                rows << values.join(QLatin1Char('|'));
            }
        }
        return rows;
    }

    // What the operator has on screen: the mode, every text box, every cell of the lines except the
    // moments of writing, which each save sets afresh.
    QStringList onScreen() const
    {
        QStringList state{m_form->ModeTag1() + m_form->ModeTag2()};
        for (const QLineEdit* box : m_form->findChildren<QLineEdit*>())
            state << box->objectName() + QLatin1Char('=') + box->text();
        for (int r = lines::FirstDataRow; r < grid()->rows(); ++r) {
            for (int c = 0; c < grid()->cols(); ++c) {
                if (c != lines::Col_datareg && c != lines::Col_oradal && c != lines::Col_oraal)
                    state << grid()->textMatrix(r, c);
            }
        }
        return state;
    }

    // Saves from the toolbar with the n-th statement of the write failing (none for 0), answering yes to
    // going ahead and no to printing. The fault is armed once the operator has said yes to saving.
    Attempt attempt(int n)
    {
        Attempt a;
        host::Dialogs::setMessageHandler([&](const host::MessageRequest& box) {
            if (box.text.contains(QStringLiteral(" la commissione N° "))) {
                db().failStatement(n);
                return host::Answer::Yes;
            }
            if (box.text.startsWith(QLatin1String("Stampare")))
                return host::Answer::No;
            if (box.icon == host::Icon::Critical) {
                a.errors << box.text;
            } else if (box.text.contains(QLatin1String(" correttamente!"))) {
                a.completed = true;
                db().failStatement(0);
            } else if (box.icon == host::Icon::Exclamation || box.icon == host::Icon::Information) {
                a.warnings << box.text;
            } else {
                ADD_FAILURE() << "unexpected message box: " << box.text.toStdString();
            }
            return host::Answer::Ok;
        });
        m_form->tbComandiDocumento_ButtonClick(documentButton(2));
        host::Dialogs::setMessageHandler({});
        db().failStatement(0);
        return a;
    }

    // What the operator sees once a save has begun: the checks fill the user and format the amounts, the
    // header goes into the lines. From then on, whatever happens, it must stay.
    QStringList screenWhenSaving()
    {
        EXPECT_TRUE(m_form->CheckPreSalvataggio());
        m_form->Documento_CopiaTestata();
        return onScreen();
    }

    int count(const QString& sql)
    {
        QSqlQuery q = db().executeBound(sql);
        return q.next() ? q.value(0).toInt() : -1;
    }
};

// That a failure at any statement of a write leaves every table as it was is OrderSaveTest's. Here: the
// operator is told where it came from, the order stays on screen as it was and keeps its save's identity,
// so that saving again is the same save, and once saved the order read back is saved afresh.
TEST_P(SaveSafetyTest, AStatementFailingHalfWayThroughASaveLeavesTheOrderOnScreenUntilItSaves)
{
    completeOrder();
    const QStringList stored = storedRows();
    const QStringList typed = screenWhenSaving();
    const QString saveId = m_form->order().saveId;
    m_host->reported.clear();
    const Attempt failed = attempt(3);
    ASSERT_EQ(failed.errors.size(), 1);
    EXPECT_FALSE(failed.completed);
    EXPECT_TRUE(failed.errors[0].contains("Origine: xVELARIO.frm_Commissioni.SalvaAggiornaElimina"))
        << failed.errors[0].toStdString();
    EXPECT_TRUE(failed.errors[0].contains("Errore provocato per prova")) << failed.errors[0].toStdString();
    EXPECT_EQ(m_host->reported.size(), 1);
    EXPECT_EQ(m_form->order().saveId, saveId);
    const QStringList rows = storedRows();
    EXPECT_TRUE(rows == stored) << changes(stored, rows);
    const QStringList screen = onScreen();
    EXPECT_TRUE(screen == typed) << changes(typed, screen);

    EXPECT_TRUE(attempt(0).completed);
    EXPECT_NE(m_form->order().saveId, saveId) << "the order read back is saved afresh next";
    EXPECT_EQ(count("select count(*) from movimenti where numero='8'"), 3);
}

// The header fields whose text an order keeps, with the caption the operator reads beside each.
const std::pair<const char*, const char*> kKeptFields[] = {
    {"txt_ragsoc", "Cliente"},         {"txt_telefono", "Telefono"},    {"txt_cellulare", "Cellulare"},
    {"txt_email", "E-mail"},           {"txt_tipoEvento", "Cerimonia"}, {"txt_soggettiEvento", "Festeggiati"},
    {"txt_Riferimenti", "Riferimenti"}};

class HostileTextTest : public SaveSafetyTest
{
protected:
    // Pastes the text into the field as the operator does, and moves on to the next field.
    void paste(const char* name, const QString& text, bool moveOn = true)
    {
        QLineEdit* box = field(name);
        box->setFocus(Qt::TabFocusReason);
        box->selectAll();
        QApplication::clipboard()->setText(text);
        box->paste();
        if (moveOn)
            field("txt_codice")->setFocus(Qt::TabFocusReason);
    }

    // A new order of two lines with the text in every field the operator can type into.
    void typeOrderWith(const QString& text)
    {
        if (m_form->ModeTag2() != QLatin1String("S"))
            m_form->tbComandiDocumento_ButtonClick(documentButton(1));
        for (const auto& kept : kKeptFields)
            paste(kept.first, text);
        paste("txt_frase", text);
        paste("txt_note", text);
        field("txt_dataEvento")->setText("20/06/2027");
        m_form->AbilitaRighe();
        for (const char* code : {"BOM001", "CNF002"}) {
            fillLine(code, "1");
            paste("txt_descrizione", text);
            m_form->tbComandiRighe_ButtonClick(linesButton(1));
        }
    }

    // The numbers of the orders the search window lists for a filter text.
    QStringList searchFinds(const QString& text)
    {
        QStringList found;
        for (data::Recordset rs = m_host->OpenRecordset(orders::orderSearchSql("CO", text, 50)); !rs.eof();
             rs.moveNext())
            found << rs.text("numero");
        return found;
    }

    QStringList storedTexts(const QString& numero)
    {
        QStringList texts;
        QSqlQuery q =
            db().executeBound(QStringLiteral("select Nominativo, telefono, Cellulare, Email, attrib04, "
                                             "attrib06, riferimenti, Descrizione1 from movimenti "
                                             "where numero=? order by rowid"),
                              {numero});
        while (q.next()) {
            for (int i = 0; i < 8; ++i)
                texts << q.value(i).toString();
        }
        return texts;
    }
};

// No engine keeps a NUL as it stands: it is refused where it was typed, naming the place, before anything
// is written; in a lookup it is passed over. Which field is named first is TextChecksTest's.
TEST_P(HostileTextTest, ANulIsRefusedNamingItsFieldBeforeAnythingIsWritten)
{
    addShopArticles();
    openNewOrder(7);
    activate();
    typeOrderWith(QStringLiteral("Rossi Maria"));
    const QString withNul = QStringLiteral("Rossi") + QChar(u'\0') + QStringLiteral(" Maria");
    const QStringList stored = storedRows();
    ASSERT_TRUE(m_form->CheckPreSalvataggio());
    {
        const QString before = text("txt_tipoEvento");
        paste("txt_tipoEvento", withNul);
        const QStringList screen = onScreen();
        const Attempt refused = attempt(0);
        ASSERT_EQ(refused.warnings.size(), 1);
        EXPECT_EQ(refused.warnings[0],
                  "Attenzione il campo 'Cerimonia' contiene un carattere nullo (codice 0) "
                  "alla posizione 6, che non si può salvare: correggere il testo.");
        EXPECT_EQ(focusName(), "txt_tipoEvento");
        const QStringList rows = storedRows();
        EXPECT_TRUE(rows == stored) << changes(stored, rows);
        const QStringList after = onScreen();
        EXPECT_TRUE(after == screen) << changes(screen, after);
        paste("txt_tipoEvento", before);
    }

    // A line's description is refused as the line is added, and stays to be corrected.
    fillLine("SCT003", "1");
    paste("txt_descrizione", withNul);
    {
        test::ScriptedDialogs dialogs;
        dialogs.expectMessage("La descrizione dell'articolo contiene un carattere nullo (codice 0)");
        m_form->tbComandiRighe_ButtonClick(linesButton(1));
    }
    EXPECT_EQ(m_form->LineCount(), 2);
    EXPECT_EQ(text("txt_descrizione"), withNul);

    ASSERT_TRUE(attempt(0).completed);
    // Looking the order up with one in its number or its customer's name finds it as without it.
    EXPECT_EQ(searchFinds(withNul), QStringList{"8"});
    paste("txt_numeroCommissione", QStringLiteral("8") + QChar(u'\0'), false);
    QTest::keyClick(field("txt_numeroCommissione"), Qt::Key_Return);
    EXPECT_EQ(m_form->order().numero, "8");
    EXPECT_EQ(m_form->LineCount(), 2);
    EXPECT_EQ(m_host->reported, QStringList());
}

// The toolbar's button takes no focus: the field typed in last is still being typed in when saving starts.
TEST_P(HostileTextTest, ACustomersNameTypedLastIsTheOneSaved)
{
    addShopArticles();
    openNewOrder(7);
    activate();
    typeOrderWith(QStringLiteral("Rossi Maria"));
    ASSERT_TRUE(attempt(0).completed);
    m_form->tbComandiDocumento_ButtonClick(documentButton(2));
    type("txt_ragsoc", "Rossi Mario");
    ASSERT_TRUE(attempt(0).completed);
    EXPECT_EQ(text("txt_ragsoc"), "Rossi Mario");
    EXPECT_EQ(storedTexts("8").first(), "Rossi Mario");
}

XV_INSTANTIATE_FOR_ENGINES(SaveSafetyTest);
XV_INSTANTIATE_FOR_ENGINES(HostileTextTest);

} // namespace
