// SPDX-License-Identifier: MIT
#include "ScriptedDialogs.h"
#include "PdfText.h"
#include "TestDatabase.h"
#include "TestOrders.h"

#include "common/RuntimeError.h"
#include "host/PrintOutput.h"
#include "host/Report.h"
#include "orders/OrderSelections.h"

#include <gtest/gtest.h>

#include <QColor>
#include <QPdfWriter>
#include <QFileInfo>
#include <QPrinterInfo>
#include <QImage>

namespace {

using namespace xv;

class ReportTest : public test::HostedTest
{
protected:
    void SetUp() override
    {
        HostedTest::SetUp();
        if (IsSkipped() || HasFatalFailure())
            return;
        h().SaveSetting("STAMPA", "Stampante", "PDF", "eKELA");
        h().SaveSetting("STAMPA", "CartellaPDF", m_pdfDir.path(), "eKELA");
    }

    QTemporaryDir m_pdfDir;
};

TEST_P(ReportTest, OneSlipPerRowWithItsColumnsDatesDayFirstAndThePictureWhereThereIsOne)
{
    const QDate day(2026, 6, 20);
    ASSERT_TRUE(QDir().mkpath(h().GetDataPath() + "immagini"));
    QImage picture(40, 30, QImage::Format_RGB32);
    picture.fill(QColor(200, 30, 30));
    ASSERT_TRUE(picture.save(h().GetDataPath() + "immagini/7.bmp"));
    for (int line = 1; line <= 5; ++line) {
        test::addOrderLine(h().GetConnection(), "8", day,
                           {{"codice_med", QString("ART%1").arg(line)},
                            {"Descrizione1", QString("Scatola numero %1").arg(line)},
                            {"rowid_med", line == 1 ? 7 : 90 + line},
                            {"qta", line * 10},
                            {"note", "19/06/2026"},
                            {"Datadal", QDate(2026, 6, 21).startOfDay()},
                            {"Nominativo", "Bianchi Anna"}});
    }

    test::ScriptedDialogs dialogs;
    dialogs.expectMessage("Il documento è stato salvato come PDF in:");
    EXPECT_EQ(h().PrintReport(orders::slipSqlForOrder({"COMM", "8", "2026"})), 5);

    const QStringList files = test::pdfFiles(m_pdfDir.path());
    ASSERT_EQ(files.size(), 1);
    const QString text = test::pdfLayoutText(files[0]);
    EXPECT_EQ(text.count("COMANDA DI CONTROLLO"), 5) << text.toStdString();
    for (int line = 1; line <= 5; ++line) {
        EXPECT_TRUE(text.contains(QString("Scatola numero %1").arg(line))) << line;
        EXPECT_TRUE(text.contains(QString("ART%1").arg(line))) << line;
    }
    for (const char* expected : {"Commissione N°:", "Cliente:", "Bianchi Anna", "Data:", "20/06/2026",
                                 "Ritiro riga:", "19/06/2026", "1° ritiro:", "21/06/2026", "Quantità:"})
        EXPECT_TRUE(text.contains(QString::fromUtf8(expected))) << expected << "\n" << text.toStdString();
    EXPECT_FALSE(text.contains("fotoart")) << "the picture's name is no line of the slip";
    EXPECT_EQ(test::pdfPageCount(files[0]), 2) << "four slips to a page";
    EXPECT_EQ(test::pdfImageCount(files[0]), 1) << "only the article with a picture file shows one";
}

// A device that refuses a new page, as a printer whose job has failed does.
class RefusingWriter : public QPdfWriter
{
public:
    using QPdfWriter::QPdfWriter;
    bool newPage() override { return false; }
};

// Slips a printer refuses are an error the operator is told of, never slips counted as printed.
TEST(ControlSlipPrintTest, APageTheDeviceRefusesIsAnError)
{
    QTemporaryDir dir;
    data::Recordset rows = data::Recordset::fromRows(
        {"numero", "Descrizione1"}, {{"8", "Uno"}, {"8", "Due"}, {"8", "Tre"}, {"8", "Quattro"}, {"8", "Cinque"}});
    const QVector<host::ControlSlip> slips = host::controlSlips(rows, dir.path() + "/");
    QPdfWriter fine(dir.filePath("comande.pdf"));
    EXPECT_NO_THROW(host::printControlSlips(fine, slips));
    EXPECT_EQ(test::pdfPageCount(dir.filePath("comande.pdf")), 2);
    RefusingWriter refusing(dir.filePath("rifiutate.pdf"));
    try {
        host::printControlSlips(refusing, slips);
        ADD_FAILURE() << "five slips printed on a device that took one page only";
    } catch (const common::RuntimeError& e) {
        EXPECT_EQ(e.number(), 482);
    }
}

class PrintDestinationTest : public test::HostedTest
{
};

// Printers installed, none of them the system's default: the PDF written instead says which there are, so
// that the shop can name one.
TEST_P(PrintDestinationTest, WithPrintersButNoDefaultTheNoticeNamesThePrintersThereAre)
{
    const QString queue = qEnvironmentVariable("XV_TEST_CUPS_QUEUE");
    if (queue.isEmpty())
        GTEST_SKIP() << qEnvironmentVariable("XV_TEST_CUPS_UNAVAILABLE", "no print queue of the tests").toStdString();
    if (!QPrinterInfo::defaultPrinter().isNull())
        GTEST_SKIP() << "this system has a default printer";
    QTemporaryDir pdfDir;
    h().SaveSetting("STAMPA", "CartellaPDF", pdfDir.path(), "eKELA");
    const host::PrintOutput output(h(), "Prova");
    EXPECT_TRUE(output.toPdf());
    EXPECT_TRUE(output.notice().contains("Nessuna stampante è impostata come predefinita")) << output.notice().toStdString();
    EXPECT_TRUE(output.notice().contains(queue)) << output.notice().toStdString();
}

// A printer named that is not there: the slips are written as a PDF, and the operator is offered to open it
// at once; a PDF asked for is only said where it is.
TEST_P(PrintDestinationTest, APdfWrittenForAMissingPrinterIsOfferedToBeOpened)
{
    QTemporaryDir pdfDir;
    h().SaveSetting("STAMPA", "CartellaPDF", pdfDir.path(), "eKELA");
    h().SaveSetting("STAMPA", "Stampante", "Stampante del banco", "eKELA");
    test::addOrderLine(h().GetConnection(), "8", QDate(2026, 6, 20));
    test::ScriptedDialogs dialogs;
    dialogs.expectMessage("La stampante \"Stampante del banco\" non è installata", host::Answer::Yes);
    EXPECT_EQ(h().PrintReport(orders::slipSqlForOrder({"COMM", "8", "2026"})), 1);
    EXPECT_TRUE(dialogs.messages().value(0).text.endsWith("Aprire il documento?"));
    EXPECT_EQ(dialogs.messages().value(0).buttons, host::Buttons::YesNo);
    ASSERT_EQ(dialogs.opened().size(), 1);
    ASSERT_EQ(test::pdfFiles(pdfDir.path()).size(), 1);
    EXPECT_EQ(QFileInfo(dialogs.opened()[0]).canonicalFilePath(),
              QFileInfo(test::pdfFiles(pdfDir.path())[0]).canonicalFilePath());
}

XV_INSTANTIATE_ON_SQLITE(PrintDestinationTest);

TEST_P(ReportTest, ABadTextIsABadSelectionAndNoRowsAnswersZeroWithNothingPrinted)
{
    test::addOrderLine(h().GetConnection(), "8", QDate(2026, 6, 20));
    test::ScriptedDialogs dialogs; // no box: the caller says what went wrong
    EXPECT_THROW(h().PrintReport("SELECT numero, colonna_inesistente FROM movimenti"), host::BadSelection);
    EXPECT_EQ(h().PrintReport(orders::slipSqlForOrder({"COMM", "999", "2026"})), 0);
    EXPECT_TRUE(test::pdfFiles(m_pdfDir.path()).isEmpty());
}

XV_INSTANTIATE_FOR_ENGINES(ReportTest);

} // namespace
