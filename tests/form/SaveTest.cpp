// SPDX-License-Identifier: MIT
// Saving, updating and deleting an order through the real form, offscreen, on a real temporary database of
// SQLite: the questions and messages of each command, and what the form shows afterwards.
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
};

// What a save, an update and a delete write is OrderSaveTest's; here, the questions and messages around them
// and the order read back.
TEST_P(SaveTest, ASaveAnUpdateByF3AndADeleteFromTheToolbarAskAndTellTheOperator)
{
    test::ScriptedDialogs dialogs;
    frm_Commissioni& form = completeOrder();
    dialogs.expectMessage(QStringLiteral("Salvare la commissione N° 8\\%1 ?").arg(m_year), host::Answer::Yes);
    dialogs.expectMessage("Salvataggio eseguito correttamente!");
    dialogs.expectMessage("Stampare il documento", host::Answer::No);
    ASSERT_TRUE(form.Documento_Salva());
    EXPECT_EQ(dialogs.messages()[1].icon, host::Icon::Information);
    EXPECT_EQ(orderRows("8"), 3);
    EXPECT_EQ(counter(), 8);
    EXPECT_EQ(m_host->documentsWritten(), 1);
    // Read back: the order is shown with the keys the database gave its rows, in browse mode.
    EXPECT_EQ(form.order().key, rowids("8").section(QLatin1Char(','), 0, 0).toInt());
    EXPECT_EQ(grid()->textMatrix(lines::FirstDataRow, lines::Col_rowid), QString::number(form.order().key));
    EXPECT_EQ(form.ModeTag1() + form.ModeTag2(), "NM");

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
    EXPECT_EQ(scalar("select count(*) from movimenti where attrib06='Marco e Giulia Bianchi'"), "3");
    EXPECT_EQ(counter(), 8);
    EXPECT_EQ(form.ModeTag2(), "M");

    // Held by nobody else, the toolbar's delete asks, and removes it on Yes only.
    dialogs.expectMessage(QStringLiteral("Eliminare il documento N°8\\%1?").arg(m_year), host::Answer::No);
    form.tbComandiDocumento_ButtonClick(documentButton(3));
    EXPECT_EQ(orderRows("8"), 3);
    dialogs.expectMessage(QStringLiteral("Eliminare il documento N°8\\%1?").arg(m_year), host::Answer::Yes);
    dialogs.expectMessage("Cancellazione del documento N°8");
    form.tbComandiDocumento_ButtonClick(documentButton(3));
    EXPECT_EQ(orderRows("8"), 0);
    EXPECT_EQ(counter(), 8);
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
    EXPECT_EQ(orderRows("9"), 2);
    EXPECT_EQ(text("txt_numeroCommissione"), "9");
    EXPECT_EQ(form.order().numero, "9");
}

// The delete asks for the lock of the order open (the lock's key is OrderLockTest's); F4 does not.
TEST_P(SaveTest, TheToolbarRefusesToDeleteAnOrderHeldElsewhereAndF4AsksAndDeletesOnlyThisOrder)
{
    test::ScriptedDialogs dialogs;
    frm_Commissioni& form = completeOrder({"1"});
    ASSERT_TRUE(saveAnswering(dialogs, "Salvataggio eseguito correttamente!"));
    // A supplier's delivery note shares the number and the series.
    test::addOrderLine(db(), "8", QDate::currentDate(),
                       {{"documento", "DDTF"}, {"serie", QString::number(m_year)}});
    // Another workstation on the same database holds the order.
    host::HostOptions other = database().hostOptions();
    other.stationName = "CASSA2";
    host::Host second(other);
    ASSERT_TRUE(second.Initialize());
    const orders::OrderLock lock = orders::orderLock(form.order().orderKey());
    ASSERT_EQ(second.LockRecord(4242, lock.record, lock.table), "");

    // A number typed and not confirmed changes nothing.
    field("txt_numeroCommissione")->setText("5");
    dialogs.expectMessage("Attenzione, il documento N° 8");
    form.tbComandiDocumento_ButtonClick(documentButton(3));
    EXPECT_TRUE(dialogs.messages().back().text.contains("CASSA2"))
        << dialogs.messages().back().text.toStdString();
    EXPECT_EQ(orderRows("8"), 1);

    const QString before = rowids("8");
    dialogs.expectMessage(QStringLiteral("Eliminare il documento N°8\\%1?").arg(m_year), host::Answer::No);
    dialogs.expectMessage("Eliminazione non effettuata");
    int f4 = 115;
    form.Form_KeyDown(f4, 0);
    EXPECT_EQ(dialogs.messages().back().icon, host::Icon::Critical);
    EXPECT_EQ(rowids("8"), before);

    dialogs.expectMessage("Eliminare il documento N°", host::Answer::Yes);
    dialogs.expectMessage(
        QStringLiteral("Cancellazione del documento N°8\\%1 eseguita correttamente!").arg(m_year));
    f4 = 115;
    form.Form_KeyDown(f4, 0);
    EXPECT_EQ(orderRows("8"), 0);
    EXPECT_EQ(scalar("select documento from movimenti where numero='8'"), "DDTF");
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

XV_INSTANTIATE_ON_SQLITE(SaveTest);

} // namespace
