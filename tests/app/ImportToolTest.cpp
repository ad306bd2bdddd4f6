// SPDX-License-Identifier: MIT
// The import tool as a shop runs it: on the database the program itself would open, telling by its exit
// status whether everything went in.
#include "TestDatabase.h"

#include "data/Database.h"

#include <QFile>
#include <QProcess>
#include <QSettings>
#include <QSqlQuery>

#include <gtest/gtest.h>

namespace {

using namespace xv;

struct ToolRun
{
    int status = -1;
    QString out;
    QString err;
};

class ImportToolTest : public test::EngineTest
{
protected:
    // The tool on the test's database, named by xvelario.conf in the data folder.
    ToolRun importTool(const QStringList& arguments)
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert("XVELARIO_DATA", database().dataPath());
        environment.remove("XVELARIO_DB");
        QSettings(database().dataPath() + "xvelario.conf", QSettings::IniFormat)
            .setValue("database/connection", database().connectionText());
        QProcess tool;
        tool.setProcessEnvironment(environment);
        tool.start(QStringLiteral(XV_IMPORT_TOOL), arguments);
        EXPECT_TRUE(tool.waitForFinished(120000));
        return {tool.exitCode(), QString::fromUtf8(tool.readAllStandardOutput()),
                QString::fromUtf8(tool.readAllStandardError())};
    }
    QString writeFile(const QByteArray& bytes)
    {
        const QString path = database().dataPath() + QStringLiteral("file%1.csv").arg(++m_files);
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
        return path;
    }
    QStringList rows(const char* sql)
    {
        data::Database db(database().config());
        QSqlQuery q = db.executeBound(sql);
        QStringList out;
        while (q.next())
            out << q.value(0).toString();
        return out;
    }

private:
    int m_files = 0;
};

TEST_P(ImportToolTest, TheExampleFilesGoInOnTheDatabaseTheConfigurationNames)
{
    for (const char* table : {"agenti", "fornitori", "clienti", "articoli"}) {
        SCOPED_TRACE(table);
        const ToolRun run = importTool({table, QStringLiteral(XV_DOCS "/import-%1.csv").arg(table)});
        EXPECT_EQ(run.status, 0) << run.err.toStdString();
    }
    EXPECT_EQ(rows("select tipocontroparte || ' ' || Code from controparti order by rowid"),
              QStringList({"A A00101", "A A00102", "F F00101", "F F00102", "C C00101", "C C00102"}));
    EXPECT_EQ(
        rows("select m.codice || ' ' || f.Code from med m join controparti f on f.rowid = m.rowid_fornitore "
             "order by m.codice"),
        QStringList({"AST101 F00102", "CON101 F00101"}));
    const ToolRun again = importTool({"articoli", XV_DOCS "/import-articoli.csv"});
    EXPECT_EQ(again.out.trimmed(), QStringLiteral("Righe lette: 3, aggiunte: 0, aggiornate: 3."));

    // Neither a refused row nor a dry run writes anything; only the former ends with status 1.
    const ToolRun refused = importTool(
        {"agenti",
         writeFile("codice;ragsoc;email\nA9;Rossi;rossi@esempio.it\nA8;Bianchi;bianchi.esempio.it\n")});
    EXPECT_EQ(refused.status, 1);
    EXPECT_TRUE(
        refused.err.contains("riga 3, colonna email: indirizzo e-mail non valido \"bianchi.esempio.it\""))
        << refused.err.toStdString();
    const ToolRun dryRun = importTool({"agenti", writeFile("codice;ragsoc\nA9;Rossi\n"), "--dry-run"});
    EXPECT_EQ(dryRun.status, 0) << dryRun.err.toStdString();
    EXPECT_TRUE(dryRun.out.contains("da aggiungere 1")) << dryRun.out.toStdString();
    EXPECT_EQ(rows("select count(*) from controparti"), QStringList("6"));
}

// The tool does nothing of its own on either engine; ImportTest checks the import on both.
XV_INSTANTIATE_ON_SQLITE(ImportToolTest);

TEST(ImportToolUsageTest, AnUnknownTableOrAMissingFileIsAUsageError)
{
    for (const QStringList& arguments : {QStringList{"ordini", "x.csv"}, QStringList{"articoli"}}) {
        QProcess tool;
        tool.start(QStringLiteral(XV_IMPORT_TOOL), arguments);
        ASSERT_TRUE(tool.waitForFinished(60000));
        EXPECT_EQ(tool.exitCode(), 2) << arguments.join(' ').toStdString();
    }
}

} // namespace
