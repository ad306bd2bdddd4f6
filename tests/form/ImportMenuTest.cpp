// SPDX-License-Identifier: MIT
// The import entry of the second document button's menu, through the real form: the operator's choice of
// what and which file, then the box with the counts or the refused rows.
#include "FormFixture.h"
#include "ScriptedDialogs.h"

#include <QFile>
#include <QMenu>
#include <QSqlQuery>

#include <gtest/gtest.h>

namespace {

using namespace xv;
using form::frm_Commissioni;

class ImportMenuTest : public test::FormTest
{
protected:
    void TearDown() override
    {
        frm_Commissioni::setImportChooser({});
        FormTest::TearDown();
    }

    // Chooses the entry with this file for this kind of rows.
    void importThrough(data::ImportTable table, const QByteArray& bytes)
    {
        const QString path = database().dataPath() + "scelto.csv";
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
        file.close();
        frm_Commissioni::setImportChooser([table, path](QWidget*) {
            return std::optional<frm_Commissioni::ImportChoice>({table, path});
        });
        QMenu* menu = m_form->tbComandiDocumento().byKey("FIND")->menu();
        ASSERT_NE(menu, nullptr);
        for (QAction* entry : menu->actions()) {
            if (entry->property("key").toString() == QLatin1String("IMPORTA"))
                return entry->trigger();
        }
        FAIL() << "no import entry";
    }

    QStringList clients()
    {
        QSqlQuery q =
            db().executeBound("select Code, ragsoc from controparti where tipocontroparte='C' order by Code");
        QStringList out;
        while (q.next())
            out << q.value(0).toString() + " " + q.value(1).toString();
        return out;
    }
};

// A file with a refused row writes nothing and lists the row; a good one goes in and the counts are shown.
// The rules themselves, on both engines, are ImportTest's: here only the menu's wiring.
TEST_P(ImportMenuTest, RefusedRowsAreListedAndAGoodFileGoesInWithItsCounts)
{
    openForm();
    test::ScriptedDialogs dialogs;
    dialogs.expectMessage("riga 3, colonna email: indirizzo e-mail non valido \"russo@\"");
    importThrough(data::ImportTable::Clienti,
                  "codice;ragsoc;email\nC1;Esposito Anna;\nC2;Russo Carlo;russo@\n");
    EXPECT_EQ(clients(), QStringList());
    dialogs.expectMessage("Righe lette: 2, aggiunte: 2, aggiornate: 0.");
    importThrough(data::ImportTable::Clienti, "codice,ragsoc\nC1,Esposito Anna\nC2,\"Russo, Carlo\"\n");
    EXPECT_EQ(clients(), QStringList({"C1 Esposito Anna", "C2 Russo, Carlo"}));
    ASSERT_EQ(dialogs.messages().size(), 2);
    EXPECT_EQ(dialogs.messages()[0].icon, host::Icon::Exclamation);
    EXPECT_EQ(dialogs.messages()[1].icon, host::Icon::Information);
}

XV_INSTANTIATE_ON_SQLITE(ImportMenuTest);

} // namespace
