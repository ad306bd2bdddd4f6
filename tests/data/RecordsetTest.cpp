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

XV_INSTANTIATE_FOR_ENGINES(RecordsetTest);

} // namespace
