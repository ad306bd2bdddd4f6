// SPDX-License-Identifier: MIT
// The reorder mail from the real form offscreen, sent to a real mail server on loopback.
#include "FormFixture.h"
#include "MailServer.h"
#include "ScriptedDialogs.h"
#include "TestOrders.h"

#include "form/FormAdapters.h"
#include "lines/ArticleInfo.h"

#include <QLabel>
#include <QMenu>
#include <QPushButton>

#include <gtest/gtest.h>

namespace {

using namespace xv;
using data::Recordset;

class ReorderMailFormTest : public test::FormTest
{
protected:
    // Two agents, the second the agent of a supplier who sold A5; a customer, who is no agent; A5 with
    // 5 in stock and the stock check on.
    void addShop(bool withSupplier = true)
    {
        db().execute("insert into controparti (tipocontroparte, ragsoc, Email) values "
                     "('A', 'Amato Rita', 'rita@esempio.it'), ('A', 'Bianchi Luca', 'luca@esempio.it'), "
                     "('C', 'Cliente Carla', 'carla@esempio.it')");
        addArticle("A5", "Cuore d'argento", 25000, 5, 5);
        if (withSupplier)
            addSupplierOf("A5", "Bianchi Luca");
        m_host->SaveSetting("COMM", "CheckQtaMED", "1", "docs");
    }
    QPushButton* mailButton() const { return m_form->findChild<QPushButton*>("btn_SendMail"); }
    // The article typed and 8 asked, which is 3 more than the stock: the question comes.
    // reply: the box expected after the question, if any.
    void askForEight(test::ScriptedDialogs& dialogs, host::Answer answer, const QString& reply = {},
                     const QString& pickUp = "20/06/2026")
    {
        startOrder();
        field("txt_dataRitiro1")->setText(pickUp);
        type("txt_codice", "A5");
        pressEnter("txt_codice");
        dialogs.expectMessage("Inviare una Mail per la fornitura ?", answer);
        if (!reply.isEmpty())
            dialogs.expectMessage(reply);
        type("txt_qta", "8");
        pressEnter("txt_qta");
    }
    // The mail button's list of agents, and a pick of one of them.
    QStringList openAgentsList()
    {
        EXPECT_TRUE(mailButton()->isEnabled());
        QTest::mouseClick(mailButton(), Qt::LeftButton);
        QStringList shown;
        for (QAction* item : m_form->mAgenti()->actions())
            shown << item->text() + " " + form::tagOf(item);
        EXPECT_TRUE(m_form->mAgenti()->isVisible());
        return shown;
    }
    void pick(int index)
    {
        m_form->tAgenti().item(index)->trigger();
        m_form->mAgenti()->hide();
    }
};

TEST_P(ReorderMailFormTest, WhicheverAgentIsPickedTheMailGoesToThePanelsAgent)
{
    test::MailServer server;
    XV_REQUIRE_MAIL_SERVER(server);
    test::useMailServer(*m_host, server.port());
    addShop();
    test::ScriptedDialogs dialogs;
    askForEight(dialogs, host::Answer::No);

    EXPECT_EQ(openAgentsList(), QStringList({"Amato Rita rita@esempio.it", "Bianchi Luca luca@esempio.it"}));
    dialogs.expectMessage("Mail inviata a luca@esempio.it");
    pick(0);
    const QVector<test::ReceivedMail> received = server.received();
    ASSERT_EQ(received.size(), 1);
    EXPECT_EQ(received[0].recipients, QStringList{"luca@esempio.it"});
    EXPECT_EQ(received[0].subject, "Riordino Articolo: A5");
}

TEST_P(ReorderMailFormTest, AnotherCodeWithdrawsTheReorderAndAnArticleWithoutAgentTakesNoneFromTheLastOne)
{
    test::MailServer server;
    XV_REQUIRE_MAIL_SERVER(server);
    test::useMailServer(*m_host, server.port());
    addShop();
    addArticle("B6", "Cuore di vetro", 30000, 2, 2);
    addSupplierOf("B6", "Amato Rita");
    addArticle("C7", "Senza fornitore", 10000, 1, 1);
    test::ScriptedDialogs dialogs;
    askForEight(dialogs, host::Answer::No);
    ASSERT_TRUE(mailButton()->isEnabled());

    // A5's request is no longer offered once B6, with an agent of its own, is on the panel.
    typeAndEnter("txt_codice", "B6");
    EXPECT_EQ(m_form->lblInfo(22)->text(), "Amato Rita");
    EXPECT_FALSE(mailButton()->isEnabled());
    dialogs.expectMessage("Inviare una Mail per la fornitura ?", host::Answer::Yes);
    dialogs.expectMessage("Mail inviata a rita@esempio.it");
    typeAndEnter("txt_qta", "8");
    EXPECT_EQ(m_form->missingQuantity(), 6.0f);

    // C7 has no supplier: nobody is named, nothing is offered, and a Yes is told that nothing went.
    typeAndEnter("txt_codice", "C7");
    EXPECT_EQ(m_form->lblInfo(22)->text(), "");
    dialogs.expectMessage("Inviare una Mail per la fornitura ?", host::Answer::Yes);
    dialogs.expectMessage("la mail di riordino NON è stata inviata");
    typeAndEnter("txt_qta", "8");
    EXPECT_FALSE(mailButton()->isEnabled());

    const QVector<test::ReceivedMail> received = server.received();
    ASSERT_EQ(received.size(), 1);
    EXPECT_EQ(received[0].recipients, QStringList{"rita@esempio.it"});
    EXPECT_EQ(received[0].subject, "Riordino Articolo: B6");
    // The mail's wording is ReorderMailTest's; here, what the form hands it: the panel's article, the
    // quantity missing and the order's first pick-up.
    for (const char* line :
         {"- Descrizione Articolo  : Cuore di vetro\r\n", "- Quantita' da ordinare : 6\r\n",
          "- Data Consegna merce   : mercoledì, 10 giugno 2026\r\n"})
        EXPECT_TRUE(received[0].body.contains(QString::fromUtf8(line))) << received[0].body.toStdString();
    EXPECT_TRUE(m_host->reported.isEmpty()) << m_host->reported.join('\n').toStdString();
}

TEST_P(ReorderMailFormTest, AFirstPickUpThatIsNoDateIsReportedByWhereverTheMailWasAskedFor)
{
    test::MailServer server;
    XV_REQUIRE_MAIL_SERVER(server);
    test::useMailServer(*m_host, server.port());
    addShop();
    m_host->keepErrors = true;
    test::ScriptedDialogs dialogs;
    askForEight(dialogs, host::Answer::Yes, {}, "dopodomani");
    EXPECT_EQ(m_host->reported, QStringList{"TextBox_LostFocus|txt_qta"});
    openAgentsList();
    pick(1);
    EXPECT_EQ(m_host->reported, QStringList({"TextBox_LostFocus|txt_qta", "frm_Commissioni.tAgenti_Click|"}));
    EXPECT_EQ(dialogs.messages().size(), 1);
    EXPECT_TRUE(server.received().isEmpty());
}

XV_INSTANTIATE_ON_SQLITE(ReorderMailFormTest);

} // namespace
