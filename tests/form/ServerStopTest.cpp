// SPDX-License-Identifier: MIT
// The shop's PostgreSQL server stops while the real form, offscreen, holds an order being typed: the
// operator is told the database cannot be reached, keeps the order, and saves it once the server is back.
#include "FormFixture.h"
#include "PrivateServer.h"
#include "ScriptedDialogs.h"
#include "TestOrders.h"

#include "common/Money.h"
#include "form/frm_Commissioni.h"
#include "lines/FlexGrid.h"
#include "lines/GridColumns.h"

#include <QSqlQuery>

#include <gtest/gtest.h>

namespace {

using namespace xv;
using form::frm_Commissioni;

class ServerStopTest : public test::FormTest
{
protected:
    void SetUp() override
    {
        XV_REQUIRE_PRIVATE_SERVER(m_server);
        // The host and the test's schema live on the server that this test stops, not the shared one.
        qputenv("XV_TEST_PG", m_server.connectionText().toUtf8());
        FormTest::SetUp();
    }

    QString scalar(const QString& sql) { return test::scalar(db(), sql); }
    // Everything the operator typed and the lines hold.
    QStringList onScreen() const
    {
        QStringList texts;
        for (const char* name : {"txt_ragsoc", "txt_telefono", "txt_tipoEvento", "txt_dataEvento",
                                 "txt_soggettiEvento", "txt_Acconto", "txt_frase", "txt_numeroCommissione"})
            texts << text(name);
        for (int col : {lines::Col_codice_med, lines::Col_qta, lines::Col_prezzo, lines::Col_Descrizione1})
            texts << column(col);
        return texts;
    }

    test::PrivateServer m_server;
};

TEST_P(ServerStopTest, SavingSaysTheDatabaseCannotBeReachedKeepsTheOrderAndWorksOnceTheServerIsBack)
{
    test::ScriptedDialogs dialogs;
    frm_Commissioni& form = completeOrder({"2", "5"});
    // As the checks will show it, so that what is on screen compares before and after.
    field("txt_Acconto")->setText(common::Money::fromInteger(10).toCurrencyText());
    const QStringList typed = onScreen();
    ASSERT_EQ(form.LineCount(), 2);

    ASSERT_TRUE(m_server.stop()) << m_server.reason().toStdString();
    dialogs.expectMessage(QStringLiteral("Salvare la commissione N° 8\\%1 ?").arg(m_year), host::Answer::Yes);
    dialogs.expectMessage("Impossibile raggiungere il database");
    form.tbComandiDocumento_ButtonClick(documentButton(2));
    EXPECT_EQ(dialogs.messages().back().icon, host::Icon::Critical);
    EXPECT_EQ(onScreen(), typed);
    EXPECT_EQ(form.ModeTag1(), "X");
    EXPECT_EQ(form.ModeTag2(), "S");
    EXPECT_EQ(form.order().key, 0);

    // The same save, without restarting the program.
    ASSERT_TRUE(m_server.start()) << m_server.reason().toStdString();
    dialogs.expectMessage(QStringLiteral("Salvare la commissione N° 8\\%1 ?").arg(m_year), host::Answer::Yes);
    dialogs.expectMessage("Salvataggio eseguito correttamente!");
    dialogs.expectMessage("Stampare il documento", host::Answer::No);
    form.tbComandiDocumento_ButtonClick(documentButton(2));
    EXPECT_EQ(form.ModeTag2(), "M");
    EXPECT_NE(form.order().key, 0);
    EXPECT_EQ(
        scalar(QStringLiteral("select count(*) from movimenti where numero='8' and serie='%1'").arg(m_year)),
        "2");
    EXPECT_EQ(scalar(QStringLiteral("select numero from numeratori where serie='%1'").arg(m_year)), "8");
    EXPECT_EQ(column(lines::Col_codice_med), (QStringList{"BOM001", "CNF002"}));
}

INSTANTIATE_TEST_SUITE_P(Engines, ServerStopTest, ::testing::Values(data::Engine::PostgreSQL),
                         test::engineName);

} // namespace
