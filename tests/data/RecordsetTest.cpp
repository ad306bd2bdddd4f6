// SPDX-License-Identifier: MIT
#include "TestDatabase.h"

#include "common/Money.h"
#include "common/RuntimeError.h"
#include "data/Database.h"
#include "data/Recordset.h"
#include "data/Schema.h"

#include <gtest/gtest.h>

namespace {

using namespace xv;
using common::Money;
using data::Recordset;

class RecordsetTest : public test::SchemaTest
{
protected:
    int count(const QString& sql)
    {
        Recordset rs = Recordset::open(db(), sql);
        return rs.value(0).toInt();
    }
};

TEST_P(RecordsetTest, AddNewWritesEveryKindOfValueAndReadsItBack)
{
    Recordset table = Recordset::openTable(db(), "movimenti");
    table.addNew();
    table.setValue("numero", "7");
    table.setValue("SERIE", "2026");
    table.setValue("datadocumento", QDate(2026, 2, 28));
    table.setValue("datareg", QDateTime(QDate(2026, 2, 28), QTime(17, 45, 12)));
    table.setValue("Riga", 1);
    table.setValue("qta", 2.5);
    table.setMoney("prezzo", Money::fromRaw(12345678)); // 1.234,5678
    table.setMoney("prezzo2", Money());
    table.setValue("Nominativo", "D'Angelo Carla");
    table.setValue("Email", "");
    table.setValue("Cellulare", QVariant());
    table.setValue("Strada", QString()); // an empty text, however it was made
    table.update();
    const int key = table.value("rowid").toInt();
    EXPECT_GT(key, 0) << "the database assigns the key and the recordset shows it";

    Recordset rs = Recordset::open(db(), "select * from movimenti where rowid=" + QString::number(key));
    ASSERT_FALSE(rs.eof());
    EXPECT_EQ(rs.text("NUMERO"), "7");
    EXPECT_EQ(rs.text("serie"), "2026");
    EXPECT_EQ(rs.dateTime("datadocumento"), QDateTime(QDate(2026, 2, 28), QTime(0, 0)));
    EXPECT_EQ(rs.dateTime("DataReg"), QDateTime(QDate(2026, 2, 28), QTime(17, 45, 12)));
    EXPECT_EQ(rs.number("riga"), 1.0);
    EXPECT_DOUBLE_EQ(rs.number("qta"), 2.5);
    EXPECT_EQ(rs.money("prezzo"), Money::fromRaw(12345678));
    EXPECT_EQ(rs.money("prezzo2"), Money());
    EXPECT_FALSE(rs.isNull("prezzo2")) << "a zero deposit is stored as 0, not as a null";
    EXPECT_EQ(rs.text("nominativo"), "D'Angelo Carla");
    // A null is kept apart from an empty text, and both read as empty text.
    EXPECT_FALSE(rs.isNull("Email"));
    EXPECT_FALSE(rs.isNull("Strada"));
    EXPECT_TRUE(rs.isNull("Cellulare"));
    EXPECT_EQ(rs.text("Cellulare"), "");
    EXPECT_EQ(rs.money("imposta"), Money());
}

TEST_P(RecordsetTest, CursorMovesToTheEndAndReportsMisuse)
{
    for (const char* numero : {"1", "2", "3"}) {
        Recordset t = Recordset::openTable(db(), "movimenti");
        t.addNew();
        t.setValue("numero", numero);
        t.update();
    }
    Recordset rs = Recordset::open(db(), "select numero from movimenti order by rowid");
    EXPECT_EQ(rs.recordCount(), 3);
    QStringList seen;
    for (; !rs.eof(); rs.moveNext())
        seen << rs.text("numero");
    EXPECT_EQ(seen, QStringList({"1", "2", "3"}));

    try {
        rs.moveNext();
        FAIL() << "moving past the end must fail";
    } catch (const common::RuntimeError& e) {
        EXPECT_EQ(e.number(), 3021);
    }
    try {
        (void)rs.value("numero");
        FAIL() << "reading at the end must fail";
    } catch (const common::RuntimeError& e) {
        EXPECT_EQ(e.number(), 3021);
    }
    rs.moveFirst();
    try {
        (void)rs.value("nessuno");
        FAIL() << "an unknown field must fail";
    } catch (const common::RuntimeError& e) {
        EXPECT_EQ(e.number(), 3265);
    }

    Recordset none = Recordset::open(db(), "select * from movimenti where numero='99'");
    EXPECT_TRUE(none.eof());
    EXPECT_TRUE(none.bof());
    EXPECT_EQ(none.recordCount(), 0);
    EXPECT_TRUE(none.hasField("StatoRiga"));
}

TEST_P(RecordsetTest, EditingARowOfATableUpdatesOnlyThatRow)
{
    db().execute("insert into med (codice, descrizione, quantita_reale, quantita_disponibile) values "
                 "('BOM001', 'Bomboniera', 10, 8)");
    db().execute("insert into med (codice, descrizione, quantita_reale, quantita_disponibile) values "
                 "('BOM002', 'Altra', 4, 4)");
    Recordset med = Recordset::openTable(db(), "MED", "codice='BOM001'");
    ASSERT_EQ(med.recordCount(), 1);
    med.setValue("quantita_reale", med.number("quantita_reale") - 3);
    med.setValue("quantita_disponibile", med.number("quantita_disponibile") - 3);
    med.update();

    Recordset check = Recordset::open(db(), "select codice, quantita_reale, quantita_disponibile from med order by codice");
    EXPECT_EQ(check.number("quantita_reale"), 7.0);
    EXPECT_EQ(check.number("quantita_disponibile"), 5.0);
    check.moveNext();
    EXPECT_EQ(check.number("quantita_reale"), 4.0);

    Recordset readOnly = Recordset::open(db(), "select * from med");
    EXPECT_THROW(readOnly.setValue("descrizione", "x"), common::RuntimeError);
}

TEST_P(RecordsetTest, ATransactionLeftWithoutCommitWritesNothing)
{
    try {
        data::Transaction transaction(db());
        db().execute("insert into movimenti (numero, serie) values ('5', '2026')");
        db().execute("insert into movimenti (numero, serie, nessuna_colonna) values ('5', '2026', 1)");
        transaction.commit();
        FAIL() << "the second insert must fail";
    } catch (const common::RuntimeError& e) {
        EXPECT_TRUE(e.description().contains("nessuna_colonna")) << e.description().toStdString();
    }
    EXPECT_EQ(count("select count(*) from movimenti"), 0);

    {
        data::Transaction transaction(db());
        db().execute("insert into movimenti (numero, serie) values ('6', '2026')");
        transaction.commit();
    }
    EXPECT_EQ(count("select count(*) from movimenti"), 1);
}

XV_INSTANTIATE_FOR_ENGINES(RecordsetTest);

} // namespace
