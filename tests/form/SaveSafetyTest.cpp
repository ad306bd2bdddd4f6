// SPDX-License-Identifier: MIT
// What the database and the operator's order are left with when saving goes wrong: a statement failing at
// each point of a save, an update and a delete, a database that cannot be written, and text that cannot be
// kept. Through the real form, offscreen, on both engines, whose statements differ.
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

enum class Command { Save, Update, Delete };

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
    bool completed = false;  // the command's success message came
    bool faultFired = false; // the armed statement had been reached by then
    QStringList errors;      // the error boxes shown
    QStringList warnings;    // any other message that stopped it
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

    // Runs the command from the toolbar with the n-th statement of its write failing (none for 0),
    // answering yes to going ahead and no to printing. The fault is armed once the operator has said yes to
    // saving, or, for a delete, after the statements that look at the order's lock.
    Attempt attempt(Command command, int n)
    {
        Attempt a;
        qint64 armedAt = 0;
        const auto arm = [&](int before) {
            armedAt = db().statementCount() + before;
            db().failStatement(before + n);
        };
        host::Dialogs::setMessageHandler([&](const host::MessageRequest& box) {
            if (box.text.contains(QStringLiteral(" la commissione N° "))) {
                arm(0);
                return host::Answer::Yes;
            }
            if (box.text.startsWith(QLatin1String("Eliminare il documento")))
                return host::Answer::Yes;
            if (box.text.startsWith(QLatin1String("Stampare")))
                return host::Answer::No;
            if (box.icon == host::Icon::Critical) {
                a.errors << box.text;
            } else if (box.text.contains(QLatin1String(" correttamente!"))) {
                a.completed = true;
                a.faultFired = n > 0 && db().statementCount() - armedAt >= n;
                db().failStatement(0);
            } else if (box.icon == host::Icon::Exclamation || box.icon == host::Icon::Information) {
                a.warnings << box.text;
            } else {
                ADD_FAILURE() << "unexpected message box: " << box.text.toStdString();
            }
            return host::Answer::Ok;
        });
        if (command == Command::Delete) {
            arm(lockStatements());
            m_form->tbComandiDocumento_ButtonClick(documentButton(3));
        } else {
            m_form->tbComandiDocumento_ButtonClick(documentButton(2));
        }
        host::Dialogs::setMessageHandler({});
        db().failStatement(0);
        return a;
    }

    // How many statements the toolbar's delete runs on the order's lock before it writes: the form takes
    // the lock first, so every later look finds it held by this window.
    int lockStatements()
    {
        const quintptr window = static_cast<quintptr>(m_form->winId());
        const orders::OrderLock lock = orders::orderLock(m_form->order().orderKey());
        m_host->LockRecord(window, lock.record, lock.table);
        const qint64 before = db().statementCount();
        EXPECT_EQ(m_host->LockRecord(window, lock.record, lock.table), QString());
        return static_cast<int>(db().statementCount() - before);
    }

    // What the operator sees once a save has begun: the checks fill the user and format the amounts, the
    // header goes into the lines. From then on, whatever happens, it must stay.
    QStringList screenWhenSaving()
    {
        EXPECT_TRUE(m_form->CheckPreSalvataggio());
        m_form->Documento_CopiaTestata();
        return onScreen();
    }

    // Fails each statement of the command's write in turn, from the first until the write completes
    // without reaching the fault; each failure must leave the database and the screen as they were.
    void failEveryStatement(Command command)
    {
        const QStringList stored = storedRows();
        const QStringList typed = screenWhenSaving();
        // Saving again after a failure is the same save: should its commit have gone through after all, it
        // finds the order it stored.
        const QString saveId = m_form->order().saveId;
        m_host->reported.clear();
        for (int n = 1; n <= 200; ++n) {
            SCOPED_TRACE(QStringLiteral("statement %1").arg(n).toStdString());
            const Attempt a = attempt(command, n);
            if (a.completed) {
                EXPECT_FALSE(a.faultFired) << "a failed statement was passed over and the write went on";
                EXPECT_GT(n, 3) << "every write of an order runs more than three statements";
                if (command != Command::Delete) {
                    EXPECT_NE(m_form->order().saveId, saveId) << "the order read back is saved afresh next";
                }
                return;
            }
            EXPECT_EQ(m_form->order().saveId, saveId);
            const QStringList rows = storedRows();
            ASSERT_TRUE(rows == stored) << changes(stored, rows);
            ASSERT_EQ(a.errors.size(), 1);
            EXPECT_EQ(a.warnings, QStringList());
            EXPECT_TRUE(a.errors[0].contains("Origine: xVELARIO.frm_Commissioni.SalvaAggiornaElimina"))
                << a.errors[0].toStdString();
            EXPECT_TRUE(a.errors[0].contains("Errore provocato per prova")) << a.errors[0].toStdString();
            ASSERT_EQ(m_host->reported.size(), n);
            const QStringList screen = onScreen();
            ASSERT_TRUE(screen == typed) << changes(typed, screen);
        }
        FAIL() << "the write never completed";
    }

    // Saving the order on screen while the database cannot take it: the operator is told why in plain
    // words, nothing is written, the order stays on screen and saves once the cause is gone.
    void refusedUntilMended(const char* why, const std::function<void(bool)>& cause)
    {
        const QStringList stored = storedRows();
        const QStringList typed = screenWhenSaving();
        cause(true);
        const Attempt refused = attempt(Command::Save, 0);
        EXPECT_FALSE(refused.completed);
        ASSERT_EQ(refused.errors.size(), 1);
        EXPECT_TRUE(refused.errors[0].contains(QString::fromUtf8(why))) << refused.errors[0].toStdString();
        const QStringList rows = storedRows();
        EXPECT_TRUE(rows == stored) << changes(stored, rows);
        const QStringList screen = onScreen();
        EXPECT_TRUE(screen == typed) << changes(typed, screen);
        cause(false);
        EXPECT_TRUE(attempt(Command::Save, 0).completed);
        EXPECT_EQ(count("select count(*) from movimenti where numero='8'"), 3);
    }

    // The order saved, collected, and shown again ready to be changed.
    void collectedOrderOnScreen()
    {
        completeOrder();
        ASSERT_TRUE(attempt(Command::Save, 0).completed);
        db().executeBound(QStringLiteral("update movimenti set StatoRiga='RITIRATO' where numero='8'"));
        ASSERT_TRUE(m_form->Flex_CaricaDocumento(m_form->order().orderKey()));
        ASSERT_EQ(m_form->StatoCommissione(), "RITIRATO");
    }

    int count(const QString& sql)
    {
        QSqlQuery q = db().executeBound(sql);
        return q.next() ? q.value(0).toInt() : -1;
    }
};

TEST_P(SaveSafetyTest, AFailureAtAnyStatementOfSavingANewOrderLeavesEverythingAsItWas)
{
    completeOrder();
    failEveryStatement(Command::Save);
    EXPECT_EQ(count("select count(*) from movimenti where numero='8'"), 3);
    EXPECT_EQ(count("select numero from numeratori where codtipodoc='CO' order by serie desc"), 8);
}

TEST_P(SaveSafetyTest, AFailureAtAnyStatementOfUpdatingACollectedOrderLeavesEverythingAsItWas)
{
    collectedOrderOnScreen();
    m_form->tbComandiDocumento_ButtonClick(documentButton(2)); // into changing the order
    ASSERT_EQ(m_form->ModeTag2(), "A");
    failEveryStatement(Command::Update);
    EXPECT_EQ(count("select count(*) from movimenti where numero='8' and StatoRiga='RITIRATO'"), 3);
    EXPECT_EQ(count("select quantita_reale from med where codice='SCT003'"), 23) << "the stock moved once";
}

TEST_P(SaveSafetyTest, AFailureAtAnyStatementOfDeletingAnOrderLeavesEverythingAsItWas)
{
    collectedOrderOnScreen();
    failEveryStatement(Command::Delete);
    EXPECT_EQ(count("select count(*) from movimenti where numero='8'"), 0);
}

TEST_P(SaveSafetyTest, SavingIntoADatabaseThatCannotBeWrittenSaysSoAndKeepsTheOrder)
{
    completeOrder();
    refusedUntilMended("Il database è in sola lettura", [this](bool on) { test::setReadOnly(db(), on); });
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
        const Attempt refused = attempt(Command::Save, 0);
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

    ASSERT_TRUE(attempt(Command::Save, 0).completed);
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
    ASSERT_TRUE(attempt(Command::Save, 0).completed);
    m_form->tbComandiDocumento_ButtonClick(documentButton(2));
    type("txt_ragsoc", "Rossi Mario");
    ASSERT_TRUE(attempt(Command::Save, 0).completed);
    EXPECT_EQ(text("txt_ragsoc"), "Rossi Mario");
    EXPECT_EQ(storedTexts("8").first(), "Rossi Mario");
}

XV_INSTANTIATE_FOR_ENGINES(SaveSafetyTest);
XV_INSTANTIATE_FOR_ENGINES(HostileTextTest);

} // namespace
