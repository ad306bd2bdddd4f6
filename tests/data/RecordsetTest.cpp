// SPDX-License-Identifier: MIT
#include "../common/ErrorNumberOf.h"
#include "TestDatabase.h"

#include "common/RuntimeError.h"
#include "data/Database.h"
#include "data/Recordset.h"

#include <gtest/gtest.h>

namespace {

using namespace xv;
using common::test::errorNumberOf;
using data::Recordset;

class RecordsetTest : public test::SchemaTest
{
};

TEST_P(RecordsetTest, CursorMovesToTheEndAndReportsMisuse)
{
    for (const char* numero : {"1", "2", "3"})
        db().executeBound("insert into movimenti (numero) values (?)", {numero});
    Recordset rs = Recordset::open(db(), "select numero from movimenti order by rowid");
    EXPECT_EQ(rs.recordCount(), 3);
    QStringList seen;
    for (; !rs.eof(); rs.moveNext())
        seen << rs.text("numero");
    EXPECT_EQ(seen, QStringList({"1", "2", "3"}));
    EXPECT_EQ(errorNumberOf([&] { rs.moveNext(); }), 3021) << "moving past the end";
    EXPECT_EQ(errorNumberOf([&] { (void)rs.value("numero"); }), 3021) << "reading at the end";
    rs.moveFirst();
    EXPECT_EQ(errorNumberOf([&] { (void)rs.value("nessuno"); }), 3265) << "an unknown field";

    Recordset none = Recordset::open(db(), "select * from movimenti where numero='99'");
    EXPECT_TRUE(none.eof() && none.bof());
    EXPECT_EQ(none.recordCount(), 0);
    EXPECT_TRUE(none.hasField("StatoRiga"));
}

TEST_P(RecordsetTest, EditingARowOfATableUpdatesOnlyThatRow)
{
    db().execute("insert into med (codice, descrizione, quantita_reale, quantita_disponibile) values "
                 "('BOM001', 'Bomboniera', 10, 8), ('BOM002', 'Altra', 4, 4)");
    Recordset med = Recordset::openTable(db(), "MED", "codice='BOM001'");
    ASSERT_EQ(med.recordCount(), 1);
    med.setValue("quantita_reale", med.number("quantita_reale") - 3);
    med.setValue("quantita_disponibile", med.number("quantita_disponibile") - 3);
    med.update();

    Recordset check =
        Recordset::open(db(), "select codice, quantita_reale, quantita_disponibile from med order by codice");
    EXPECT_EQ(check.number("quantita_reale"), 7.0);
    EXPECT_EQ(check.number("quantita_disponibile"), 5.0);
    check.moveNext();
    EXPECT_EQ(check.number("quantita_reale"), 4.0);

    Recordset readOnly = Recordset::open(db(), "select * from med");
    EXPECT_THROW(readOnly.setValue("descrizione", "x"), common::RuntimeError);
}

TEST_P(RecordsetTest, AFieldSetByItsPositionIsWrittenAsByName)
{
    Recordset table = Recordset::openTable(db(), "movimenti");
    table.addNew();
    table.setValue(table.fieldIndex("numero"), "12");
    table.setValue("STRADA", "Via Roma");
    EXPECT_EQ(errorNumberOf([&] { table.setValue(table.fieldCount(), "x"); }), 3265);
    EXPECT_EQ(errorNumberOf([&] { table.setValue(-1, "x"); }), 3265);
    table.update();
    const Recordset saved = Recordset::open(db(), "select numero, Strada from movimenti");
    EXPECT_EQ(saved.text("numero"), "12");
    EXPECT_EQ(saved.text("strada"), "Via Roma");

    Recordset readOnly = Recordset::open(db(), "select numero from movimenti");
    EXPECT_THROW(readOnly.setValue(0, "x"), common::RuntimeError);
}

// Records gathered go in many to a statement: all of them, in their order, with their values, and the same
// once more records than a statement holds were added with other fields among them.
TEST_P(RecordsetTest, GatheredRecordsAreWrittenManyToAStatementEachWithItsValues)
{
    Recordset table = Recordset::openTable(db(), "movimenti");
    table.gatherAddedRecords();
    const qint64 before = db().statementCount();
    for (int i = 0; i < 250; ++i) {
        table.addNew();
        table.setValue("numero", QString::number(i));
        table.setValue("qta", i * 1.5);
        if (i >= 240) // other fields: the records gathered until then are written first
            table.setValue("Nominativo", QStringLiteral("Rossi %1").arg(i));
        table.update();
    }
    EXPECT_EQ(db().statementCount() - before, 3) << "100, 100, then the 40 without a name";
    EXPECT_EQ(Recordset::open(db(), "select count(*) from movimenti").value(0).toInt(), 240)
        << "the 10 with a name still gathered";
    const qint64 written = db().statementCount();
    table.writeAddedRecords();
    table.writeAddedRecords(); // nothing left: no statement
    EXPECT_EQ(db().statementCount() - written, 1);

    QStringList rows;
    for (Recordset all =
             Recordset::open(db(), "select numero, qta, Nominativo from movimenti order by rowid");
         !all.eof(); all.moveNext())
        rows << all.text("numero") + "|" + QString::number(all.number("qta")) + "|" + all.text("Nominativo");
    ASSERT_EQ(rows.size(), 250);
    EXPECT_EQ(rows[0], "0|0|");
    EXPECT_EQ(rows[101], "101|151.5|");
    EXPECT_EQ(rows[239], "239|358.5|");
    EXPECT_EQ(rows[249], "249|373.5|Rossi 249");
}

XV_INSTANTIATE_FOR_ENGINES(RecordsetTest);

} // namespace
