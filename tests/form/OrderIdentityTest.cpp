// SPDX-License-Identifier: MIT
// Which rows the form opens as the order, and that nothing of one order is left over in the next.
#include "ScriptedDialogs.h"
#include "ScriptedLists.h"
#include "TestDatabase.h"
#include "TestOrders.h"

#include "form/frm_Commissioni.h"
#include "host/Host.h"
#include "host/Services.h"
#include "lines/FlexGrid.h"
#include "lines/GridColumns.h"

#include <QApplication>
#include <QLineEdit>
#include <QTest>

#include <gtest/gtest.h>

namespace {

using namespace xv;
using common::Money;
using data::Recordset;
using form::frm_Commissioni;

class OrderIdentityTest : public test::EngineTest
{
protected:
    void SetUp() override
    {
        EngineTest::SetUp();
        if (IsSkipped() || HasFatalFailure())
            return;
        auto h = std::make_unique<host::Host>(database().hostOptions());
        m_host = h.get();
        ASSERT_TRUE(m_host->Initialize());
        host::setHost(std::move(h));
        host::setFormSettings(
            std::make_unique<host::IniFormSettings>(database().dataPath() + "finestre.ini"));
        m_year = QDate::currentDate().year();
        test::addCounter(db(), m_year - 5, 99);
    }
    void TearDown() override
    {
        m_form.reset();
        host::resetServices();
        EngineTest::TearDown();
    }

    frm_Commissioni& openForm()
    {
        m_form = std::make_unique<frm_Commissioni>();
        m_form->show();
        m_form->InitForm(0);
        QApplication::processEvents();
        return *m_form;
    }
    QLineEdit* field(const char* name) const
    {
        return m_form->findChild<QLineEdit*>(QString::fromLatin1(name));
    }
    QString text(const char* name) const { return field(name)->text(); }
    QAction* documentButton(int index) { return m_form->tbComandiDocumento().button(index); }
    lines::FlexGrid* grid() const { return m_form->grid(); }
    void typeNumberAndEnter(const QString& number)
    {
        QLineEdit* box = field("txt_numeroCommissione");
        box->clear();
        QTest::keyClicks(box, number);
        QTest::keyClick(box, Qt::Key_Return);
    }
    data::Database& db() { return m_host->GetConnection(); }

    host::Host* m_host = nullptr;
    std::unique_ptr<frm_Commissioni> m_form;
    int m_year = 0;
};

TEST_P(OrderIdentityTest, AnOrderThatCannotBeReadIsReportedAndLeavesNothingOfTheLastOne)
{
    test::addOrderLine(db(), "12", QDate(m_year, 2, 10),
                       [](Recordset& t) { t.setValue("Nominativo", "Greco Lucia"); });
    test::addOrderLine(db(), "13", QDate(m_year, 2, 11),
                       [](Recordset& t) { t.setValue("Descrizione2", QVariant()); });
    test::ScriptedDialogs dialogs;
    frm_Commissioni& form = openForm();
    typeNumberAndEnter("12");
    ASSERT_EQ(form.order().numero, "12");

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

XV_INSTANTIATE_FOR_ENGINES(OrderIdentityTest);

} // namespace
