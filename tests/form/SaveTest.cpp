// SPDX-License-Identifier: MIT
// Saving, updating and deleting an order through the real form, offscreen, on a real temporary database of
// each engine: what the rows, the counter and the stock hold afterwards, and what the operator is told.
#include "FormFixture.h"
#include "ScriptedDialogs.h"
#include "PdfText.h"
#include "TestOrders.h"

#include "common/Money.h"
#include "data/Database.h"
#include "form/frm_Commissioni.h"
#include "lines/FlexGrid.h"
#include "lines/GridColumns.h"
#include "orders/Order.h"

#include <QCheckBox>
#include <QRadioButton>

#include <QSqlQuery>

#include <gtest/gtest.h>

namespace {

using namespace xv;
using form::frm_Commissioni;

class SaveTest : public test::FormTest
{
protected:
    QString scalar(const QString& sql) { return test::scalar(db(), sql); }
    int orderRows(const QString& numero)
    {
        return scalar(QStringLiteral("select count(*) from movimenti where documento='COMM' and numero='%1' "
                                     "and serie='%2'")
                          .arg(numero)
                          .arg(m_year))
            .toInt();
    }
    QString rowids(const QString& numero)
    {
        QStringList keys;
        QSqlQuery q = db().executeBound(
            QStringLiteral("select rowid from movimenti where numero='%1' order by rowid").arg(numero));
        while (q.next())
            keys << q.value(0).toString();
        return keys.join(QLatin1Char(','));
    }
    int counter()
    {
        return scalar(QStringLiteral("select numero from numeratori where serie='%1'").arg(m_year)).toInt();
    }
    double stock(const char* code, const char* column = "quantita_reale")
    {
        return scalar(QStringLiteral("select %1 from med where codice='%2'").arg(column, code)).toDouble();
    }
    // Saves with the toolbar's save button, as the operator does, answering the question and the print
    // question; true when the order is shown again as saved.
    bool saveAnswering(test::ScriptedDialogs& dialogs, const QString& expectedMessage)
    {
        dialogs.expectMessage(" la commissione N° ", host::Answer::Yes);
        dialogs.expectMessage(expectedMessage);
        dialogs.expectMessage("Stampare il documento", host::Answer::No);
        m_form->tbComandiDocumento_ButtonClick(documentButton(2));
        return m_form->order().key != 0 && m_form->ModeTag2() == "M";
    }
    void collect()
    {
        db().executeBound(QStringLiteral("update movimenti set StatoRiga='RITIRATO' where numero='8'"));
    }
};

TEST_P(SaveTest, ANewThreeLineOrderWritesThreeRowsAndAdvancesTheCounterByOne)
{
    test::ScriptedDialogs dialogs;
    frm_Commissioni& form = completeOrder();
    ASSERT_EQ(form.LineCount(), 3);
    dialogs.expectMessage(QStringLiteral("Salvare la commissione N° 8\\%1 ?").arg(m_year), host::Answer::Yes);
    dialogs.expectMessage("Salvataggio eseguito correttamente!");
    dialogs.expectMessage("Stampare il documento", host::Answer::No);
    ASSERT_TRUE(form.Documento_Salva());
    EXPECT_EQ(dialogs.messages()[1].text, "Salvataggio eseguito correttamente!");
    EXPECT_EQ(dialogs.messages()[1].icon, host::Icon::Information);
    EXPECT_EQ(orderRows("8"), 3);
    EXPECT_EQ(counter(), 8);
    EXPECT_EQ(m_host->documentsWritten(), 1);
    // Deposit and total are on the first line only; every line carries the header and the state.
    EXPECT_EQ(scalar("select count(*) from movimenti where numero='8' and prezzo2<>0"), "1");
    EXPECT_EQ(common::Money::fromDouble(
                  scalar("select imposta from movimenti where numero='8' order by rowid").toDouble()),
              common::Money::fromInteger(80 + 2 * 15 + 3 * 2));
    EXPECT_EQ(scalar("select count(distinct Nominativo || telefono || attrib04 || attrib06 || StatoRiga) "
                     "from movimenti where numero='8'"),
              "1");
    EXPECT_EQ(scalar("select StatoRiga from movimenti where numero='8'"), "EMESSO");
    // Read back: the order is shown with the keys the database gave its rows, in browse mode.
    EXPECT_EQ(form.order().key, rowids("8").section(QLatin1Char(','), 0, 0).toInt());
    EXPECT_EQ(grid()->textMatrix(lines::FirstDataRow, lines::Col_rowid), QString::number(form.order().key));
    EXPECT_EQ(form.ModeTag1(), "N");
    EXPECT_EQ(form.ModeTag2(), "M");
    EXPECT_EQ(text("txt_Acconto"), common::Money::fromInteger(10).toCurrencyText());
}

TEST_P(SaveTest, SavingAgainRewritesTheRowsKeepsTheCounterAndNamesTheOrder)
{
    test::ScriptedDialogs dialogs;
    frm_Commissioni& form = completeOrder();
    ASSERT_TRUE(saveAnswering(dialogs, "Salvataggio eseguito correttamente!"));
    const QString before = rowids("8");
    // A later row, so that the engine cannot hand the rewritten lines their old keys again.
    test::addOrderLine(db(), "3", QDate::currentDate(), {{"documento", "DDTF"}});

    form.tbComandiDocumento_ButtonClick(documentButton(2)); // modify mode
    ASSERT_EQ(form.ModeTag2(), "A");
    field("txt_soggettiEvento")->setText("Marco e Giulia Bianchi");
    dialogs.expectMessage(QStringLiteral("Aggiornare la commissione N° 8\\%1 ?").arg(m_year),
                          host::Answer::Yes);
    dialogs.expectMessage(
        QStringLiteral("Aggiornamento del documento 8\\%1 eseguito correttamente!").arg(m_year));
    dialogs.expectMessage("Stampare il documento", host::Answer::No);
    int f3 = 114;
    form.Form_KeyDown(f3, 0);

    EXPECT_EQ(orderRows("8"), 3);
    EXPECT_EQ(rowids("8").split(QLatin1Char(',')).size(), 3);
    for (const QString& key : before.split(QLatin1Char(',')))
        EXPECT_FALSE(rowids("8").split(QLatin1Char(',')).contains(key)) << "an update writes the rows again";
    EXPECT_EQ(counter(), 8);
    EXPECT_EQ(scalar("select count(*) from movimenti where attrib06='Marco e Giulia Bianchi'"), "3");
    EXPECT_EQ(form.ModeTag2(), "M");
}

TEST_P(SaveTest, ANewOrderWhoseNumberAnotherWorkstationSavedFirstTakesTheNextAndKeepsBoth)
{
    test::ScriptedDialogs dialogs;
    frm_Commissioni& form = completeOrder({"1", "1"});
    // The other workstation, proposed the same number 8, saved first.
    test::addOrderLine(db(), "8", QDate::currentDate(),
                       {{"documento", "COMM"}, {"serie", QString::number(m_year)}, {"Nominativo", "Verdi"}});
    db().executeBound(QStringLiteral("update numeratori set numero=8 where serie='%1'").arg(m_year));

    ASSERT_TRUE(saveAnswering(dialogs, "Salvataggio eseguito correttamente!"));
    EXPECT_TRUE(dialogs.messages()[1].text.contains(QStringLiteral("salvata con il N° 9\\%1").arg(m_year)))
        << dialogs.messages()[1].text.toStdString();
    EXPECT_EQ(scalar("select Nominativo from movimenti where numero='8'"), "Verdi");
    EXPECT_EQ(orderRows("8"), 1);
    EXPECT_EQ(orderRows("9"), 2);
    EXPECT_EQ(counter(), 9);
    EXPECT_EQ(text("txt_numeroCommissione"), "9");
    EXPECT_EQ(form.order().numero, "9");
}

TEST_P(SaveTest, DeletingAskedNoLeavesTheRowsAndYesRemovesOnlyThisOrder)
{
    test::ScriptedDialogs dialogs;
    frm_Commissioni& form = completeOrder();
    ASSERT_TRUE(saveAnswering(dialogs, "Salvataggio eseguito correttamente!"));
    // A supplier's delivery note shares the number and the series.
    test::addOrderLine(db(), "8", QDate::currentDate(),
                       {{"documento", "DDTF"}, {"serie", QString::number(m_year)}});
    const QString before = rowids("8");

    dialogs.expectMessage(QStringLiteral("Eliminare il documento N°8\\%1?").arg(m_year), host::Answer::No);
    EXPECT_FALSE(form.SalvaAggiornaElimina("E"));
    EXPECT_EQ(rowids("8"), before);

    dialogs.expectMessage("Eliminare il documento N°", host::Answer::Yes);
    dialogs.expectMessage(
        QStringLiteral("Cancellazione del documento N°8\\%1 eseguita correttamente!").arg(m_year));
    form.tbComandiDocumento_ButtonClick(documentButton(3));
    EXPECT_EQ(orderRows("8"), 0);
    EXPECT_EQ(scalar("select documento from movimenti where numero='8'"), "DDTF");
    EXPECT_EQ(counter(), 8);
}

// The delete asks for the lock of the order open, by its document type, number and series: the same
// number of last year is another order, and a number typed and not confirmed changes nothing.
TEST_P(SaveTest, TheToolbarRefusesToDeleteAnOrderHeldElsewhereButF4DeletesIt)
{
    test::ScriptedDialogs dialogs;
    frm_Commissioni& form = completeOrder({"1"});
    ASSERT_TRUE(saveAnswering(dialogs, "Salvataggio eseguito correttamente!"));
    // Another workstation on the same database holds the order.
    host::HostOptions other = database().hostOptions();
    other.stationName = "CASSA2";
    host::Host second(other);
    ASSERT_TRUE(second.Initialize());
    const orders::OrderLock lock = orders::orderLock(form.order().orderKey());
    ASSERT_EQ(second.LockRecord(4242, lock.record, lock.table), "");

    field("txt_numeroCommissione")->setText("5");
    dialogs.expectMessage("Attenzione, il documento N° 8");
    form.tbComandiDocumento_ButtonClick(documentButton(3));
    EXPECT_EQ(dialogs.messages().back().icon, host::Icon::Information);
    EXPECT_TRUE(dialogs.messages().back().text.contains("CASSA2"))
        << dialogs.messages().back().text.toStdString();
    EXPECT_EQ(orderRows("8"), 1);

    ASSERT_TRUE(second.ReleaseRecordLock(4242));
    const orders::OrderLock lastYears = orders::orderLock({"COMM", "8", QString::number(m_year - 1)});
    ASSERT_EQ(second.LockRecord(4242, lastYears.record, lastYears.table), "");
    dialogs.expectMessage(QStringLiteral("Eliminare il documento N°8\\%1?").arg(m_year), host::Answer::No);
    form.tbComandiDocumento_ButtonClick(documentButton(3));
    EXPECT_EQ(orderRows("8"), 1);

    // F4 deletes without asking for the lock.
    ASSERT_TRUE(m_host->ReleaseRecordLock(static_cast<quintptr>(form.winId())));
    ASSERT_TRUE(second.ReleaseRecordLock(4242));
    ASSERT_EQ(second.LockRecord(4242, lock.record, lock.table), "");
    dialogs.expectMessage("Eliminare il documento N°", host::Answer::Yes);
    dialogs.expectMessage("Cancellazione del documento N°8");
    int f4 = 115;
    form.Form_KeyDown(f4, 0);
    EXPECT_EQ(orderRows("8"), 0);
}

// With the duplicate-line check on, an article added again replaces its line, which then carries the
// article's key where a saved line carries its own: the order is still new.
TEST_P(SaveTest, ANewOrderWhoseFirstLineWasReplacedIsSavedAsNew)
{
    test::ScriptedDialogs dialogs;
    m_host->SaveSetting("comm", "checkAddRigaFlex", "1", "DOCS");
    frm_Commissioni& form = completeOrder({"1", "2"});
    addLine("BOM001", "4");
    ASSERT_EQ(form.LineCount(), 2);
    ASSERT_NE(grid()->textMatrix(lines::FirstDataRow, lines::Col_rowid), "0");
    // The other workstation, proposed the same number 8, saved first.
    test::addOrderLine(db(), "8", QDate::currentDate(), {{"Nominativo", "Verdi"}});
    db().executeBound(QStringLiteral("update numeratori set numero=8 where serie='%1'").arg(m_year));

    dialogs.expectMessage(QStringLiteral("Salvare la commissione N° 8\\%1 ?").arg(m_year), host::Answer::Yes);
    dialogs.expectMessage("Salvataggio eseguito correttamente!");
    dialogs.expectMessage("Stampare il documento", host::Answer::No);
    ASSERT_TRUE(form.Documento_Salva());
    EXPECT_TRUE(dialogs.messages()[1].text.contains(QStringLiteral("salvata con il N° 9\\%1").arg(m_year)))
        << dialogs.messages()[1].text.toStdString();
    EXPECT_EQ(counter(), 9);
    EXPECT_EQ(scalar("select Nominativo from movimenti where numero='8'"), "Verdi");
    EXPECT_EQ(orderRows("9"), 2);
    EXPECT_EQ(form.order().numero, "9");
    EXPECT_EQ(text("txt_ragsoc"), "Rossi Maria");
}

// The cards' wording and notes are kept with the order; an order without cards asks for no wording when it
// is opened and saved again.
TEST_P(SaveTest, TheCardsWordingAndNotesAreKeptAndAnOrderWithoutCardsNeedsNone)
{
    test::ScriptedDialogs dialogs;
    frm_Commissioni& form = completeOrder({"1"});
    field("txt_frase")->clear();
    ASSERT_TRUE(saveAnswering(dialogs, "Salvataggio eseguito correttamente!"));
    QCheckBox* cards = form.findChild<QCheckBox*>("chk_Biglietti");
    EXPECT_FALSE(cards->isChecked());
    EXPECT_EQ(scalar("select count(*) from Doc_Commissioni_testate where Biglietti<>''"), "0");
    const QString update =
        QStringLiteral("Aggiornamento del documento 8\\%1 eseguito correttamente!").arg(m_year);
    form.tbComandiDocumento_ButtonClick(documentButton(2));
    ASSERT_TRUE(saveAnswering(dialogs, update));

    form.tbComandiDocumento_ButtonClick(documentButton(2));
    cards->click();
    form.opt_Biglietti(2)->click();
    field("txt_frase")->setText("Con affetto");
    field("txt_note")->setText("Nastro rosa");
    ASSERT_TRUE(saveAnswering(dialogs, update));
    EXPECT_TRUE(cards->isChecked());
    EXPECT_TRUE(form.opt_Biglietti(2)->isChecked());
    EXPECT_EQ(text("txt_frase"), "Con affetto");
    EXPECT_EQ(text("txt_note"), "Nastro rosa");
    // What the cards list of the day reads.
    EXPECT_EQ(scalar("select Dicitura || '|' || Note from Doc_Commissioni_testate where Biglietti<>''"),
              "Con affetto|Nastro rosa");
}

TEST_P(SaveTest, F4AnsweredNoSaysTheDeletionWasNotMade)
{
    test::ScriptedDialogs dialogs;
    frm_Commissioni& form = completeOrder({"1"});
    ASSERT_TRUE(saveAnswering(dialogs, "Salvataggio eseguito correttamente!"));
    dialogs.expectMessage("Eliminare il documento N°", host::Answer::No);
    dialogs.expectMessage("Eliminazione non effettuata");
    int f4 = 115;
    form.Form_KeyDown(f4, 0);
    EXPECT_EQ(dialogs.messages().back().icon, host::Icon::Critical);
    EXPECT_EQ(orderRows("8"), 1);
}

TEST_P(SaveTest, OnlyACollectedOrderMovesStockAndItDoesSoOnEverySave)
{
    test::ScriptedDialogs dialogs;
    frm_Commissioni& form = completeOrder({"4", "5"});
    ASSERT_TRUE(saveAnswering(dialogs, "Salvataggio eseguito correttamente!"));
    EXPECT_EQ(stock("BOM001"), 100) << "a new order is issued, not collected";
    EXPECT_EQ(stock("CNF002", "quantita_disponibile"), 40);

    // Saved again while still issued: nothing moves.
    form.SetModificaTags();
    ASSERT_TRUE(saveAnswering(dialogs, "Aggiornamento del documento"));
    EXPECT_EQ(stock("BOM001"), 100);

    // Collected: each save of the order puts its quantities back into both stock columns.
    collect();
    ASSERT_TRUE(form.Flex_CaricaDocumento(form.order().orderKey()));
    ASSERT_EQ(form.StatoCommissione(), "RITIRATO");
    for (int save = 1; save <= 2; ++save) {
        form.SetModificaTags();
        ASSERT_TRUE(saveAnswering(dialogs, "Aggiornamento del documento"));
        EXPECT_EQ(stock("BOM001"), 100 + 4 * save);
        EXPECT_EQ(stock("BOM001", "quantita_disponibile"), 90 + 4 * save);
        EXPECT_EQ(stock("CNF002"), 50 + 5 * save);
        EXPECT_EQ(stock("CNF002", "quantita_disponibile"), 40 + 5 * save);
    }
    EXPECT_EQ(scalar("select count(*) from movimenti where numero='8' and StatoRiga='RITIRATO'"), "2");
}

TEST_P(SaveTest, AnErrorWhileWritingLeavesTheDatabaseAsItWasAndTheOrderOnTheForm)
{
    test::ScriptedDialogs dialogs;
    frm_Commissioni& form = completeOrder();
    m_host->keepErrors = true;
    dialogs.expectMessage("Salvare la commissione", host::Answer::Yes);
    // The counter, the check for the number, the table's columns, the first line: the second line fails.
    db().failStatement(5);
    EXPECT_FALSE(form.Documento_Salva());
    ASSERT_EQ(m_host->reported.size(), 1);
    EXPECT_TRUE(m_host->reported[0].startsWith("xVELARIO.frm_Commissioni.SalvaAggiornaElimina|"));
    EXPECT_TRUE(m_host->reported[0].contains(" -> ")) << m_host->reported[0].toStdString();
    EXPECT_EQ(scalar("select count(*) from movimenti where numero='8'"), "0");
    EXPECT_EQ(counter(), 7);
    EXPECT_EQ(form.LineCount(), 3);
    EXPECT_EQ(text("txt_ragsoc"), "Rossi Maria");
    EXPECT_EQ(m_host->documentsWritten(), 0);
}

TEST_P(SaveTest, PrintingAfterASavePrintsTheControlSlipsOfTheSavedOrder)
{
    QTemporaryDir pdfDir;
    m_host->SaveSetting("STAMPA", "Stampante", "PDF", "eKELA");
    m_host->SaveSetting("STAMPA", "CartellaPDF", pdfDir.path(), "eKELA");
    test::ScriptedDialogs dialogs;
    frm_Commissioni& form = completeOrder({"1", "2"});
    dialogs.expectMessage("Salvare la commissione", host::Answer::Yes);
    dialogs.expectMessage("Salvataggio eseguito correttamente!");
    dialogs.expectMessage("Stampare il documento appena registrato?", host::Answer::Yes);
    dialogs.expectMessage(QString("Stampare tutte le righe della commissione N°8/%1 ?").arg(m_year),
                          host::Answer::Yes);
    dialogs.expectMessage("salvato come PDF");
    ASSERT_TRUE(form.Documento_Salva());
    EXPECT_EQ(dialogs.messages()[2].icon, host::Icon::Question);
    EXPECT_EQ(orderRows("8"), 2) << "the order stays saved whatever the printing does";
    EXPECT_EQ(m_host->documentsWritten(), 1);
    const QStringList files = test::pdfFiles(pdfDir.path());
    ASSERT_EQ(files.size(), 1);
    EXPECT_EQ(test::pdfLayoutText(files[0]).count("COMANDA DI CONTROLLO"), 2);
}

XV_INSTANTIATE_FOR_ENGINES(SaveTest);

} // namespace
