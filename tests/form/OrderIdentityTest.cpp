// SPDX-License-Identifier: MIT
// Which rows the form opens as the order, and that nothing of one order is left over in the next.
#include "ScriptedDialogs.h"
#include "ScriptedLists.h"
#include "FormFixture.h"
#include "TestDatabase.h"
#include "TestOrders.h"

#include "form/frm_Commissioni.h"
#include "host/Host.h"
#include "host/Services.h"
#include "lines/FlexGrid.h"
#include "lines/GridColumns.h"

#include <QApplication>
#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QRadioButton>
#include <QTest>

#include <gtest/gtest.h>

namespace {

using namespace xv;
using common::Money;
using data::Recordset;
using form::frm_Commissioni;

class OrderIdentityTest : public test::FormTest
{
};

TEST_P(OrderIdentityTest, AnOrderThatCannotBeReadIsReportedAndLeavesNothingOfTheLastOne)
{
    test::addOrderLine(db(), "12", QDate(m_year, 2, 10), [](Recordset& t) {
        t.setValue("Nominativo", "Greco Lucia");
        t.setValue("attrib00", "1");
    });
    test::addOrderLine(db(), "13", QDate(m_year, 2, 11),
                       [](Recordset& t) { t.setValue("Descrizione2", QVariant()); });
    test::ScriptedDialogs dialogs;
    frm_Commissioni& form = openForm();
    typeNumberAndEnter("12");
    ASSERT_EQ(form.order().numero, "12");
    ASSERT_TRUE(form.findChild<QCheckBox*>("chk_Biglietti")->isChecked());

    dialogs.expectMessage("Errore durante la lettura del documento!");
    dialogs.expectMessage(
        QString("ATTENZIONE!!\nCOMMISSIONE N.13/%1 NON E' PRESENTE IN ARCHIVIO!").arg(m_year));
    typeNumberAndEnter("13");
    ASSERT_EQ(dialogs.messages().size(), 2);
    EXPECT_TRUE(dialogs.messages()[0].text.contains("Origine: Flex_CaricaDocumento"));
    EXPECT_EQ(text("txt_ragsoc"), "");
    EXPECT_EQ(form.LineCount(), 0);
    EXPECT_EQ(form.order().key, 0);
    EXPECT_EQ(form.order().numero, "") << "the order before is not left open behind a cleared form";
    EXPECT_EQ(form.order().customer.nominativo, "");
    EXPECT_FALSE(form.findChild<QCheckBox*>("chk_Biglietti")->isChecked());
    EXPECT_EQ(form.order().biglietti, "");
}

TEST_P(OrderIdentityTest, ATypedNumberOpensThisYearsOrderWithoutLastYearsOrADeliveryNote)
{
    const int first = test::addOrderLine(db(), "12", QDate(m_year, 2, 10), [](Recordset& t) {
        t.setValue("Nominativo", "D'Angelo Carla");
        t.setValue("codice_med", "BOM001");
        t.setMoney("prezzo2", Money::fromInteger(50));
        t.setMoney("totale", Money::fromInteger(120));
    });
    test::addOrderLine(db(), "12", QDate(m_year, 2, 10), [](Recordset& t) {
        t.setValue("Nominativo", "D'Angelo Carla");
        t.setValue("codice_med", "CNF002");
        t.setMoney("totale", Money::fromInteger(30));
    });
    test::addOrderLine(db(), "12", QDate(m_year - 1, 9, 1), [](Recordset& t) {
        t.setValue("Nominativo", "Esposito Gennaro");
        t.setValue("codice_med", "AST009");
        t.setMoney("prezzo2", Money::fromInteger(999));
        t.setMoney("totale", Money::fromInteger(999));
    });
    test::addOrderLine(db(), "12", QDate(m_year, 1, 5), [](Recordset& t) {
        t.setValue("documento", "DDTF");
        t.setValue("Tipomovimento", "CF");
        t.setValue("Nominativo", "Confetteria Sulmonese Srl");
        t.setValue("codice_med", "CNF099");
        t.setMoney("prezzo2", Money::fromInteger(3));
        t.setMoney("totale", Money::fromInteger(777));
    });
    // The first line, changed since, still comes first.
    db().executeBound("update movimenti set codice_med='BOM009' where rowid=?", {first});

    test::ScriptedDialogs noBoxes;
    frm_Commissioni& form = openForm();
    typeNumberAndEnter("12");
    EXPECT_EQ(text("txt_ragsoc"), "D'Angelo Carla");
    ASSERT_EQ(form.LineCount(), 2);
    EXPECT_EQ(grid()->textMatrix(2, lines::Col_codice_med), "BOM009");
    EXPECT_EQ(grid()->textMatrix(3, lines::Col_codice_med), "CNF002");
    EXPECT_EQ(text("txt_Acconto"), Money::fromInteger(50).toCurrencyText());
    EXPECT_EQ(form.order().totale, Money::fromInteger(150));
    EXPECT_EQ(form.order().key, first);
    EXPECT_EQ(form.order().documento, "COMM");
    EXPECT_EQ(form.order().serie, QString::number(m_year));
}

TEST_P(OrderIdentityTest, TheSearchWindowOpensExactlyTheChosenOrder)
{
    for (int back : {0, 1})
        test::addOrderLine(db(), "14", QDate(m_year - back, 3, 3));
    test::addOrderLine(db(), "14", QDate(m_year - 2, 5, 5),
                       [](Recordset& t) { t.setValue("Nominativo", "Greco Lucia"); });
    test::addOrderLine(db(), "14", QDate(m_year - 2, 5, 6), [](Recordset& t) {
        t.setValue("documento", "DDTF");
        t.setValue("Tipomovimento", "CF");
        t.setValue("codice_med", "CNF099");
    });
    test::ScriptedDialogs noBoxes;
    test::ScriptedLists lists;
    const QString twoYearsAgo = QString::number(m_year - 2);
    lists.expectList("Trova Commissioni", [&twoYearsAgo](const hostui::ListRequest&, const Recordset& rows) {
        hostui::ListAnswer answer;
        answer.confirmed = true;
        Recordset r = rows;
        for (int i = 0; !r.eof(); r.moveNext(), ++i) {
            if (r.text("numero") == "14" && r.text("serie") == twoYearsAgo)
                answer.rows = {i};
        }
        return answer;
    });
    frm_Commissioni& form = openForm();
    form.tbComandiDocumento_ButtonClick(documentButton(5));
    EXPECT_EQ(text("txt_ragsoc"), "Greco Lucia");
    ASSERT_EQ(form.LineCount(), 1);
    EXPECT_EQ(grid()->textMatrix(2, lines::Col_documento), "COMM");
    EXPECT_EQ(form.order().serie, twoYearsAgo);
    EXPECT_EQ(form.order().numero, "14");
}

TEST_P(OrderIdentityTest, LoadingAnOrderShowsItsAccessoriesAndNothingOfTheOneBefore)
{
    struct Shown
    {
        const char* numero;
        const char* attrib00;
        const char* attrib01;
        const char* attrib02;
        const char* attrib03;
        int format;   // -1: no cards
        int amulet;   // with no choice stored, the line area picks the first option
        bool written; // false: an order that does not exist
    };
    const Shown orders[] = {
        {"21", "2", "1", "5", "", 2, 1, true}, {"22", "", "0", "", "3", -1, 0, true},
        {"99", "", "", "", "", -1, 0, false},  {"23", "0", "", "7", "2", 0, 0, true},
        {"24", "x", "5", "", "", -1, 0, true},
    };
    for (const Shown& o : orders) {
        if (o.written)
            test::addOrderLine(db(), o.numero, QDate(m_year, 4, 1), [&o](Recordset& t) {
                t.setValue("attrib00", o.attrib00);
                t.setValue("attrib01", o.attrib01);
                t.setValue("attrib02", o.attrib02);
                t.setValue("attrib03", o.attrib03);
            });
    }
    test::ScriptedDialogs noBoxes;
    frm_Commissioni& form = openForm();
    QCheckBox* cards = form.findChild<QCheckBox*>("chk_Biglietti");
    QWidget* accessories = form.findChild<QWidget*>("fra_Accessori");
    QWidget* almonds = form.findChild<QWidget*>("fra_Confetti");
    for (const Shown& o : orders) {
        SCOPED_TRACE(o.numero);
        typeNumberAndEnter(o.numero);
        EXPECT_EQ(cards->isChecked(), o.format >= 0);
        EXPECT_EQ(form::tagOf(cards), o.format >= 0 ? QString::number(o.format) : QString());
        EXPECT_EQ(form.order().biglietti, o.format >= 0 ? QString::number(o.format) : QString());
        for (int i = 0; i < 3; ++i) {
            EXPECT_EQ(form.opt_Biglietti(i)->isChecked(), i == o.format) << i;
            EXPECT_EQ(form.opt_Biglietti(i)->isEnabledTo(accessories), o.format >= 0) << i;
        }
        EXPECT_EQ(field("txt_frase")->isEnabledTo(accessories), o.format >= 0);
        for (int i = 0; i < 2; ++i)
            EXPECT_EQ(form.opt_Amuleto(i)->isChecked(), i == o.amulet) << i;
        EXPECT_EQ(form::tagOf(form.lblInfo(6)), QString::number(o.amulet));
        EXPECT_EQ(form.order().amuleto, QString::number(o.amulet));
        const QString confetti = QString::fromLatin1(o.attrib02);
        const QString mandorla = QString::fromLatin1(o.attrib03);
        EXPECT_EQ(form.chk_Confetti(0)->isChecked(), !confetti.isEmpty());
        EXPECT_EQ(form.chk_Confetti(1)->isChecked(), !mandorla.isEmpty());
        EXPECT_FALSE(form.chk_Confetti(2)->isChecked());
        EXPECT_EQ(text("txt_confetti"), confetti);
        EXPECT_EQ(text("txt_mandorla"), mandorla);
        EXPECT_EQ(field("txt_confetti")->isEnabledTo(almonds), !confetti.isEmpty());
        EXPECT_EQ(field("txt_mandorla")->isEnabledTo(almonds), !mandorla.isEmpty());
        EXPECT_EQ(form.order().confetti, confetti);
        EXPECT_EQ(form.order().mandorla, mandorla);
    }
}

TEST_P(OrderIdentityTest, ANewOrderAndACancelLeaveNothingOfTheOrderShownBefore)
{
    test::addCounter(db(), m_year, 30);
    test::addOrderLine(db(), "21", QDate(m_year, 4, 1), [](Recordset& t) {
        t.setValue("Nominativo", "Greco Lucia");
        t.setValue("rowid_controparti", 7);
        t.setValue("Rowid_Pagamento", 2);
        t.setValue("StatoRiga", "RITIRATO");
        t.setValue("attrib00", "2");
        t.setValue("attrib01", "1");
        t.setValue("attrib02", "5");
        t.setValue("attrib03", "3");
    });
    test::ScriptedDialogs noBoxes;
    frm_Commissioni& form = openForm();
    typeNumberAndEnter("21");
    ASSERT_EQ(form.order().customer.key, 7);
    ASSERT_EQ(form.statusPanelText(8), "RITIRATO");

    form.tbComandiDocumento_ButtonClick(documentButton(1));
    const orders::OpenOrder& o = form.order();
    EXPECT_EQ(o.key, 0);
    EXPECT_EQ(o.numero, "31");
    EXPECT_EQ(o.serie, QString::number(m_year));
    EXPECT_EQ(o.documento, "COMM");
    EXPECT_GT(o.idnumeratore, 0);
    EXPECT_EQ(o.customer.key, 0);
    EXPECT_EQ(o.customer.nominativo, "");
    EXPECT_EQ(o.customer.rowidPagamento, "");
    EXPECT_EQ(o.statoRiga, "EMESSO");
    EXPECT_EQ(form.statusPanelText(8), "EMESSO");
    EXPECT_EQ(o.biglietti, "");
    EXPECT_EQ(o.confetti, "");
    EXPECT_EQ(o.mandorla, "");
    EXPECT_EQ(o.amuleto, "0") << "a new order gets the first amulet option";
    EXPECT_FALSE(form.findChild<QCheckBox*>("chk_Biglietti")->isChecked());
    for (int i = 0; i < 3; ++i) {
        EXPECT_FALSE(form.opt_Biglietti(i)->isChecked()) << i;
        EXPECT_FALSE(form.chk_Confetti(i)->isChecked()) << i;
    }
    EXPECT_TRUE(form.opt_Amuleto(0)->isChecked());
    EXPECT_FALSE(form.opt_Amuleto(1)->isChecked());
    EXPECT_FALSE(field("txt_confetti")->isEnabled());

    form.tbComandiDocumento_ButtonClick(documentButton(1)); // cancel
    EXPECT_EQ(form.order().numero, "");
    EXPECT_EQ(form.order().serie, "");
    EXPECT_EQ(form.order().documento, "");
    EXPECT_EQ(form.order().idnumeratore, 0);
    EXPECT_EQ(form.order().statoRiga, "EMESSO");
}

TEST_P(OrderIdentityTest, TheOpenOrderFollowsTheAccessoryClicks)
{
    test::addCounter(db(), m_year, 0);
    test::ScriptedDialogs noBoxes;
    frm_Commissioni& form = openForm();
    form.tbComandiDocumento_ButtonClick(documentButton(1));
    QCheckBox* cards = form.findChild<QCheckBox*>("chk_Biglietti");

    cards->click();
    EXPECT_EQ(form.order().biglietti, "1");
    form.opt_Biglietti(0)->click();
    EXPECT_EQ(form.order().biglietti, "0");
    cards->click();
    EXPECT_EQ(form.order().biglietti, "") << "no cards, whatever format the Tag remembers";
    EXPECT_EQ(form::tagOf(cards), "0");
    cards->click();
    EXPECT_EQ(form.order().biglietti, "1");

    form.opt_Amuleto(1)->click();
    EXPECT_EQ(form.order().amuleto, "1");
    EXPECT_FALSE(form.opt_Amuleto(0)->isChecked()) << "one amulet option at a time";

    form.chk_Confetti(1)->click();
    QTest::keyClicks(field("txt_mandorla"), "4");
    EXPECT_EQ(form.order().mandorla, "4");
    form.chk_Confetti(1)->click();
    EXPECT_EQ(form.order().mandorla, "");
    EXPECT_EQ(text("txt_mandorla"), "");
}

XV_INSTANTIATE_FOR_ENGINES(OrderIdentityTest);

} // namespace
