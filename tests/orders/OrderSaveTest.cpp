// SPDX-License-Identifier: MIT
// Writing an order without the form: the header copied into the lines, and what one transaction leaves in
// the rows and the counter when the number proposed was taken meanwhile, on both engines.
#include "CommitCutter.h"
#include "TestDatabase.h"
#include "TestOrders.h"

#include "common/Dates.h"
#include "common/RuntimeError.h"
#include "host/Host.h"
#include "lines/GridColumns.h"
#include "orders/Order.h"
#include "orders/OrderSave.h"

#include <QRegularExpression>
#include <QSqlQuery>
#include <QSqlRecord>

#include <gtest/gtest.h>

namespace {

using namespace xv;
using namespace xv::lines;
using orders::WriteMode;

TEST(CopyHeaderTest, EveryLineGetsTheHeaderWithDatesAsDatesAndANewOrderIssued)
{
    const QDateTime now(QDate(2026, 11, 23), QTime(10, 30, 15));
    struct Case
    {
        const char* typed;
        const char* cell;
    } dates[] = {{"5/6/2027", "05/06/2027"}, {"", ""}, {"2027-06-20 00:00:00", "20/06/2027"}};
    for (const Case& date : dates) {
        orders::Order header;
        header.customer.key = 42;
        header.customer.nominativo = "Rossi Maria";
        header.customer.cellulare = "333 1234567";
        header.datadal = date.typed;
        header.dataEvento = date.typed;
        header.tipoEvento = "Battesimo";
        QVector<QStringList> lines(2, QStringList(ColCount, "x"));
        orders::copyHeader(lines, header, now);
        for (const QStringList& cells : lines) {
            EXPECT_EQ(cells[Col_Datadal], date.cell) << date.typed;
            EXPECT_EQ(cells[Col_attrib05], date.cell) << date.typed;
            EXPECT_EQ(cells[Col_Dataal], "");
            EXPECT_EQ(cells[Col_datareg], common::shortDateTime(now));
            EXPECT_EQ(cells[Col_oradal], "10:30:15");
            EXPECT_EQ(cells[Col_rowid_controparti], "42");
            EXPECT_EQ(cells[Col_Cellulare], "333 1234567");
            EXPECT_EQ(cells[Col_attrib04], "Battesimo");
            EXPECT_EQ(cells[Col_StatoRiga], "EMESSO");
            EXPECT_EQ(cells[Col_codice_med], "x") << "the line's own cells are left alone";
        }
    }
    orders::Order collected;
    collected.key = 41;
    collected.statoRiga = "RITIRATO";
    collected.biglietti = "2";
    collected.frase = "Con affetto";
    collected.noteBiglietti = "Nastro rosa";
    QVector<QStringList> lines(1, QStringList(ColCount));
    orders::copyHeader(lines, collected, now);
    EXPECT_EQ(lines[0][Col_StatoRiga], "RITIRATO");
    EXPECT_EQ(lines[0][Col_attrib00], "2");
    EXPECT_EQ(lines[0][Col_attrib08], "Con affetto");
    EXPECT_EQ(lines[0][Col_attrib07], "Nastro rosa");
}

// No cards is an empty cell: a 0 would read back as the small format, an order with cards.
TEST(CopyHeaderTest, TheCardsCellIsTheFormatsIndexAndEmptyWithoutCards)
{
    const std::pair<const char*, const char*> cases[] = {{"", ""}, {"0", "0"}, {"1", "1"}, {"2", "2"}};
    for (const auto& [format, cell] : cases)
        EXPECT_EQ(orders::bigliettiCell(format), cell) << format;
}

class OrderSaveTest : public test::HostedTest
{
protected:
    void SetUp() override
    {
        HostedTest::SetUp();
        if (IsSkipped() || HasFatalFailure())
            return;
        m_year = QDate::currentDate().year();
        test::addCounter(db(), m_year, 7);
        m_counter = scalar("select idnumeratore from numeratori").toInt();
    }
    data::Database& db() { return m_host->GetConnection(); }
    QString scalar(const QString& sql) { return test::scalar(db(), sql); }
    QStringList names(const QString& numero)
    {
        QStringList found;
        QSqlQuery q = db().executeBound(
            QStringLiteral("select Nominativo from movimenti where numero='%1' order by rowid").arg(numero));
        while (q.next())
            found << q.value(0).toString();
        return found;
    }
    // An order as the form holds it before its first save: lines taken from a saved one, keys cleared.
    orders::OrderWrite newOrder(const QString& numero, int lines)
    {
        const QDate today = QDate::currentDate();
        for (int i = 0; i < lines; ++i)
            test::addOrderLine(db(), "model", today, {{"Nominativo", "Nuovo cliente"}});
        orders::Order model = orders::loadOrder(*m_host, {"COMM", "model", QString::number(m_year)});
        db().executeBound("delete from movimenti where numero='model'");
        orders::OrderWrite write;
        for (data::Recordset rs = m_host->OpenSchema(4, "movimenti"); !rs.eof(); rs.moveNext()) {
            write.grid.names << rs.text("Column");
            write.grid.typeCodes << rs.value("Type").toInt();
        }
        write.grid.lines = model.lines;
        for (QStringList& cells : write.grid.lines) {
            cells[Col_rowid] = "0";
            cells[Col_numero] = numero;
        }
        write.key = {"COMM", numero, QString::number(m_year)};
        write.idnumeratore = m_counter;
        write.acconto = common::Money::fromInteger(5);
        return write;
    }
    // Every row of the tables a write touches, every column, in key order.
    QStringList storedRows()
    {
        QStringList rows;
        for (const char* table : {"movimenti", "numeratori", "med"}) {
            QSqlQuery q = db().executeBound(QStringLiteral("select * from %1 order by 1").arg(table));
            while (q.next()) {
                QStringList values{QString::fromLatin1(table)};
                for (int i = 0; i < q.record().count(); ++i)
                    values << (q.isNull(i) ? QStringLiteral("NULL") : q.value(i).toString());
                rows << values.join(QLatin1Char('|'));
            }
        }
        return rows;
    }
    // One article in stock, and every line of the order taking it in the given state.
    void takeArticle(orders::OrderWrite& order, const char* state, const char* qta = nullptr)
    {
        if (scalar("select count(*) from med") == "0")
            db().executeBound("insert into med (codice, descrizione, quantita_reale, quantita_disponibile) "
                              "values ('BOM001', 'Bomboniera', 100, 90)");
        for (QStringList& cells : order.grid.lines) {
            cells[Col_StatoRiga] = state;
            cells[Col_rowid_med] = scalar("select rowid from med");
            if (qta)
                cells[Col_qta] = qta;
        }
    }
    void savedElsewhere(const QString& numero)
    {
        test::addOrderLine(db(), numero, QDate::currentDate(), {{"Nominativo", "Altra postazione"}});
        db().executeBound("update numeratori set numero=?", {numero.toInt()});
    }

    int m_year = 0;
    int m_counter = 0;
};

TEST_P(OrderSaveTest, ANumberTakenMeanwhileMovesTheOrderPastEveryTakenNumber)
{
    savedElsewhere("8");
    savedElsewhere("9");
    orders::OrderWrite order = newOrder("8", 2);
    const orders::WriteResult result = orders::writeOrder(db(), WriteMode::Save, order, {});
    EXPECT_TRUE(result.done);
    EXPECT_TRUE(result.renumbered);
    EXPECT_EQ(result.numero, "10");
    EXPECT_EQ(order.key.numero, "10");
    EXPECT_EQ(names("8"), QStringList{"Altra postazione"});
    EXPECT_EQ(names("9"), QStringList{"Altra postazione"});
    EXPECT_EQ(names("10"), (QStringList{"Nuovo cliente", "Nuovo cliente"}));
    EXPECT_EQ(scalar("select numero from numeratori"), "10");
    EXPECT_EQ(scalar("select count(*) from movimenti where numero='10' and prezzo2<>0"), "1");
}

TEST_P(OrderSaveTest, AFreeNumberIsKeptEvenWhenTheCounterHasMovedOn)
{
    db().executeBound("update numeratori set numero=11");
    orders::OrderWrite order = newOrder("8", 1);
    const orders::WriteResult result = orders::writeOrder(db(), WriteMode::Save, order, {});
    EXPECT_FALSE(result.renumbered);
    EXPECT_EQ(names("8"), QStringList{"Nuovo cliente"});
    EXPECT_EQ(scalar("select numero from numeratori"), "12");
}

TEST_P(OrderSaveTest, AnUpdateWhoseFirstLineIsNewReplacesTheOrderInsteadOfAddingToIt)
{
    // The operator removed the saved first line and added another: the grid's first line has no key.
    test::addOrderLine(db(), "8", QDate::currentDate(), {{"Nominativo", "Vecchia riga"}});
    orders::OrderWrite order = newOrder("8", 2);
    const orders::WriteResult result = orders::writeOrder(db(), WriteMode::Update, order, {});
    EXPECT_TRUE(result.done);
    EXPECT_FALSE(result.renumbered);
    EXPECT_EQ(names("8"), (QStringList{"Nuovo cliente", "Nuovo cliente"}));
}

TEST_P(OrderSaveTest, ACounterThatCannotGiveANumberStopsTheSaveWithNothingWritten)
{
    savedElsewhere("8");
    orders::OrderWrite order = newOrder("8", 1);
    order.idnumeratore = 999;
    EXPECT_THROW(orders::writeOrder(db(), WriteMode::Save, order, {}), common::RuntimeError);
    EXPECT_EQ(names("8"), QStringList{"Altra postazione"});
    EXPECT_EQ(scalar("select count(*) from movimenti"), "1");
    EXPECT_FALSE(db().inTransaction());
}

// Whether an order is new is the write mode's to say. A line added to a new order can carry an article's key
// where a saved line carries its own, and a saved order can have had every line replaced.
TEST_P(OrderSaveTest, TheModeAloneSaysWhetherTheOrderIsNewWhateverItsFirstLineCarries)
{
    const struct
    {
        WriteMode mode;
        const char* firstKey;
        const char* state;
        int counterAfter;
        double stockAfter;
    } cases[] = {
        {WriteMode::Save, "57", "RITIRATO", 8,
         100 - 2 * 3}, // a new order takes a number and its collected lines
        {WriteMode::Update, "0", "RITIRATO", 7, 100 + 2 * 3}, // a saved order gives its collected lines back
        {WriteMode::Update, "0", "EMESSO", 7, 100},           // issued lines leave the stock alone
        {WriteMode::Save, "57", "EMESSO", 8, 100},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string(c.firstKey) + " " + c.state);
        db().executeBound("update numeratori set numero=7");
        db().executeBound("update med set quantita_reale=100, quantita_disponibile=90");
        orders::OrderWrite order = newOrder("8", 2);
        takeArticle(order, c.state, "3");
        order.grid.lines[0][Col_rowid] = c.firstKey;
        EXPECT_TRUE(orders::writeOrder(db(), c.mode, order, {}).done);
        EXPECT_EQ(scalar("select numero from numeratori").toInt(), c.counterAfter);
        EXPECT_EQ(scalar("select quantita_reale from med").toDouble(), c.stockAfter);
        EXPECT_EQ(scalar("select quantita_disponibile from med").toDouble(), c.stockAfter - 10);
        db().executeBound("delete from movimenti");
    }
}

// Whichever statement of a save, an update or a delete fails, the write is undone whole: rows, counter and
// stock are as they were, and no transaction is left open. The form adds only what the operator is left
// with (SaveSafetyTest).
TEST_P(OrderSaveTest, AFailureAtAnyStatementOfAWriteLeavesEveryTableAsItWas)
{
    orders::OrderWrite order = newOrder("8", 3);
    takeArticle(order, "RITIRATO");
    for (const WriteMode mode : {WriteMode::Save, WriteMode::Update, WriteMode::Delete}) {
        SCOPED_TRACE(static_cast<char>(mode));
        for (int n = 1;; ++n) {
            ASSERT_LE(n, 200) << "the write never completed";
            const QStringList before = storedRows();
            orders::OrderWrite write = order;
            write.saveId = QStringLiteral("guasto-%1-%2").arg(static_cast<char>(mode)).arg(n);
            const qint64 start = db().statementCount();
            db().failStatement(n);
            bool failed = false;
            try {
                orders::writeOrder(db(), mode, write, [] { return true; });
            } catch (const common::RuntimeError& e) {
                failed = true;
                EXPECT_TRUE(e.description().contains("Errore provocato per prova"))
                    << e.description().toStdString();
            }
            const qint64 run = db().statementCount() - start;
            db().failStatement(0);
            EXPECT_FALSE(db().inTransaction());
            if (!failed) {
                EXPECT_LT(run, n) << "a failed statement was passed over and the write went on";
                EXPECT_GT(n, 3) << "every write of an order runs more than three statements";
                break;
            }
            ASSERT_EQ(storedRows(), before) << "statement " << n;
        }
    }
    EXPECT_EQ(scalar("select count(*) from movimenti"), "0");
    EXPECT_EQ(scalar("select numero from numeratori"), "8");
}

TEST_P(OrderSaveTest, ACollectedLineWhoseArticleIsGoneStopsTheSaveWithNothingWritten)
{
    orders::OrderWrite order = newOrder("8", 2);
    order.grid.lines[1][Col_StatoRiga] = "RITIRATO";
    order.grid.lines[1][Col_rowid_med] = "4242";
    try {
        orders::writeOrder(db(), WriteMode::Save, order, {});
        ADD_FAILURE() << "the save went through";
    } catch (const common::RuntimeError& e) {
        EXPECT_TRUE(e.description().contains("4242")) << e.description().toStdString();
    }
    EXPECT_EQ(scalar("select count(*) from movimenti"), "0");
    EXPECT_EQ(scalar("select numero from numeratori"), "7");
    EXPECT_FALSE(db().inTransaction());
}

TEST_P(OrderSaveTest, ASaveMadeAgainWithItsIdentityFindsItsEarlierWriteAndStoresNothingTwice)
{
    savedElsewhere("8");
    orders::OrderWrite order = newOrder("8", 2);
    order.saveId = "prova-1";
    const orders::WriteResult first = orders::writeOrder(db(), WriteMode::Save, order, {});
    ASSERT_TRUE(first.done);
    ASSERT_EQ(first.numero, "9");
    // The order as the form still holds it when it has not heard back, with a name corrected meanwhile.
    order.key.numero = "8";
    for (QStringList& cells : order.grid.lines)
        cells[Col_Nominativo] = "Cliente corretto";
    const orders::WriteResult again = orders::writeOrder(db(), WriteMode::Save, order, {});
    EXPECT_TRUE(again.done);
    EXPECT_TRUE(again.repeated);
    EXPECT_TRUE(again.renumbered);
    EXPECT_EQ(again.numero, "9");
    EXPECT_EQ(names("9"), (QStringList{"Cliente corretto", "Cliente corretto"}));
    EXPECT_EQ(names("8"), QStringList{"Altra postazione"});
    EXPECT_EQ(scalar("select count(*) from movimenti"), "3");
    EXPECT_EQ(scalar("select numero from numeratori"), "9");

    // An update of a collected order, made again, gives its lines back to the stock once.
    takeArticle(order, "RITIRATO", "2");
    order.saveId = "prova-2";
    EXPECT_FALSE(orders::writeOrder(db(), WriteMode::Update, order, {}).repeated);
    EXPECT_TRUE(orders::writeOrder(db(), WriteMode::Update, order, {}).repeated);
    EXPECT_EQ(scalar("select quantita_reale from med").toDouble(), 104);
    EXPECT_EQ(names("9").size(), 2);
}

// The connection breaks during the commit itself, after the server stored the order: the save is made
// again, as the operator does after the error, and finds the order it stored.
TEST_P(OrderSaveTest, ASaveWhoseCommitWasCutIsNotStoredASecondTimeWhenMadeAgain)
{
    if (GetParam() != data::Engine::PostgreSQL)
        GTEST_SKIP() << "an embedded database has no connection to break";
    const QString text = database().connectionText();
    const QRegularExpression portField("port=(\\d+)");
    test::CommitCutter cutter(portField.match(text).captured(1).toInt());
    ASSERT_NE(cutter.port(), 0);
    QString cutText = text;
    cutText.replace(portField, QStringLiteral("port=%1").arg(cutter.port()));
    data::Database cut(data::ConnectionConfig::fromText(cutText));

    orders::OrderWrite order = newOrder("8", 2);
    order.saveId = orders::Order::newSaveId();
    cutter.armAtNextCommit();
    EXPECT_THROW(orders::writeOrder(cut, WriteMode::Save, order, {}), common::RuntimeError);
    ASSERT_EQ(cutter.cuts(), 1);
    ASSERT_EQ(names("8").size(), 2) << "the server stored the order before the connection broke";

    const orders::WriteResult again = orders::writeOrder(cut, WriteMode::Save, order, {});
    EXPECT_TRUE(again.done);
    EXPECT_TRUE(again.repeated);
    EXPECT_EQ(again.numero, "8");
    EXPECT_EQ(scalar("select count(*) from movimenti"), "2");
    EXPECT_EQ(scalar("select numero from numeratori"), "8");
}

XV_INSTANTIATE_FOR_ENGINES(OrderSaveTest);

} // namespace
