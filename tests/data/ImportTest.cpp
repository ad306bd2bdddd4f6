// SPDX-License-Identifier: MIT
#include "TestDatabase.h"

#include "common/RuntimeError.h"
#include "data/Import.h"

#include <QSqlQuery>
#include <QSqlRecord>

#include <gtest/gtest.h>

#include <ostream>

// One text a line in a failure message, found by the test framework next to the list it prints.
static void PrintTo(const QStringList& list, std::ostream* os)
{
    *os << "\n  " << list.join(QStringLiteral("\n  ")).toStdString();
}

namespace {

using namespace xv;
using data::ImportTable;

QByteArray lines(const QStringList& rows)
{
    return (rows.join(QLatin1Char('\n')) + QLatin1Char('\n')).toUtf8();
}

QStringList faultTexts(const data::ImportResult& result)
{
    QStringList texts;
    for (const data::ImportFault& fault : result.faults)
        texts << fault.text();
    return texts;
}

class ImportTest : public test::SchemaTest
{
protected:
    qint64 addParty(const char* type, const char* code, const char* name)
    {
        db().executeBound("insert into controparti (tipocontroparte, Code, ragsoc) values (?, ?, ?)",
                          {QString(type), QString(code), QString(name)});
        QSqlQuery q = db().executeBound("select max(rowid) from controparti");
        q.next();
        return q.value(0).toLongLong();
    }
    void addArticle(const char* code, const char* description, double price, double cost, double stock)
    {
        db().executeBound(
            "insert into med (codice, descrizione, prezzo_vendita, prezzo_acquisto, quantita_reale) "
            "values (?, ?, ?, ?, ?)",
            {QString(code), QString(description), price, cost, stock});
    }
    // Every cell of the query's rows, '|' between cells; numbers as the shortest decimal.
    QStringList rows(const char* sql)
    {
        QSqlQuery q = db().executeBound(sql);
        QStringList out;
        while (q.next()) {
            QStringList cells;
            for (int i = 0; i < q.record().count(); ++i) {
                const QVariant v = q.value(i);
                bool number = false;
                const double d = v.toString().toDouble(&number);
                cells << (v.isNull() ? QStringLiteral("NULL") : number ? QString::number(d) : v.toString());
            }
            out << cells.join(QLatin1Char('|'));
        }
        return out;
    }
    QStringList articles()
    {
        return rows("select codice, descrizione, prezzo_vendita, prezzo_acquisto, quantita_reale, "
                    "quantita_disponibile, rowid_fornitore from med order by codice");
    }
};

// A dry run of the file first counts what it would write and writes nothing; then the file goes in.
TEST_P(ImportTest, AddsNewArticlesAndUpdatesTheColumnsTheFileHasOfExistingOnes)
{
    const qint64 supplier = addParty("F", "F1", "Confetti Srl");
    addParty("C", "F2", "A customer, not a supplier");
    addArticle("OLD", "vecchia", 1, 3, 7);
    const QStringList before = articles();
    const QByteArray file =
        lines({" Codice ;DESCRIZIONE;prezzo_vendita;quantita_reale;fornitore",
               "OLD;Nuova descrizione;\"1.234,50\";2,5;F1", "NEW;\"Astucci in raso; 5 colori\";0,99;;"});
    std::vector<std::pair<qint64, qint64>> progress;
    data::ImportOptions options;
    options.progress = [&](qint64 done, qint64 total) { progress.emplace_back(done, total); };
    for (const bool dryRun : {true, false}) {
        SCOPED_TRACE(dryRun);
        options.dryRun = dryRun;
        const data::ImportResult result = data::importCsv(db(), ImportTable::Articoli, file, options);
        EXPECT_EQ(faultTexts(result), QStringList());
        EXPECT_EQ(result.rows, 2);
        EXPECT_EQ(result.added, 1);
        EXPECT_EQ(result.updated, 1);
        EXPECT_EQ(result.written, !dryRun);
        if (dryRun) {
            EXPECT_EQ(articles(), before);
        }
    }
    // The cost and available stock the file leaves out stay as they were; a new article starts from zero.
    EXPECT_EQ(articles(),
              QStringList({"NEW|Astucci in raso; 5 colori|0.99|0|0|0|NULL",
                           QStringLiteral("OLD|Nuova descrizione|1234.5|3|2.5|NULL|%1").arg(supplier)}));
    ASSERT_FALSE(progress.empty());
    EXPECT_EQ(progress.back(), std::make_pair(qint64(2), qint64(2)));
}

TEST_P(ImportTest, EachKindOfCounterpartGetsItsTypeAndASupplierItsAgent)
{
    const char* header = "codice;ragsoc;email";
    ASSERT_TRUE(
        data::importCsv(db(), ImportTable::Agenti, lines({header, "X1;Rossi Mario;mario@esempio.it"})).ok());
    ASSERT_TRUE(data::importCsv(db(), ImportTable::Clienti, lines({header, "X1;Esposito Anna;"})).ok());
    const data::ImportResult suppliers = data::importCsv(
        db(), ImportTable::Fornitori,
        lines({"codice;ragsoc;email;agente;pagamento", "X1;Confetti Srl;ordini@confetti.it;X1;1"}));
    ASSERT_EQ(faultTexts(suppliers), QStringList());
    // The same code again updates the customer only, not the agent or supplier of that code.
    const data::ImportResult again =
        data::importCsv(db(), ImportTable::Clienti, lines({"codice;ragsoc", "X1;Esposito Anna Maria"}));
    EXPECT_EQ(again.updated, 1);
    EXPECT_EQ(again.added, 0);

    EXPECT_EQ(
        rows("select c.tipocontroparte, c.Code, c.ragsoc, c.Email, a.ragsoc, c.Rowid_Pagamento "
             "from controparti c left join controparti a on a.rowid = c.codagente order by c.rowid"),
        QStringList({"A|X1|Rossi Mario|mario@esempio.it|NULL|NULL", "C|X1|Esposito Anna Maria||NULL|NULL",
                     "F|X1|Confetti Srl|ordini@confetti.it|Rossi Mario|1"}));
}

// Each rule a row must keep, alone in a file: the row is refused with its line, its column and why.
TEST_P(ImportTest, RefusesEachFaultyRowWithItsLineColumnAndReason)
{
    addParty("A", "A1", "Rossi Mario");
    struct Case
    {
        ImportTable table;
        QByteArray file;
        QString fault;
    };
    const Case cases[] = {
        {ImportTable::Articoli, lines({"codice;descrizione;prezzo_vendita", "X;x;12,3,4"}),
         "riga 2, colonna prezzo_vendita: importo non valido \"12,3,4\""},
        {ImportTable::Articoli, lines({"codice;descrizione;quantita_reale", "X;x;€ 5"}),
         "riga 2, colonna quantita_reale: quantità non valida \"€ 5\""},
        {ImportTable::Articoli, lines({"codice;descrizione", " ;x"}),
         "riga 2, colonna codice: valore obbligatorio vuoto"},
        {ImportTable::Articoli, lines({"codice;descrizione", "X;"}),
         "riga 2, colonna descrizione: valore obbligatorio vuoto"},
        {ImportTable::Articoli, lines({"codice;descrizione;fornitore", "X;x;F9"}),
         "riga 2, colonna fornitore: fornitore \"F9\" sconosciuto"},
        {ImportTable::Articoli, lines({"codice;descrizione", "X;x;y"}),
         "riga 2: la riga ha 3 campi, l'intestazione 2"},
        {ImportTable::Articoli, lines({"codice;descrizione;", "X;x;y"}),
         "riga 2: valore \"y\" in una colonna senza intestazione (la 3ª)"},
        {ImportTable::Articoli, lines({"codice;descrizione;Codice", "X;x;X"}),
         "riga 1, colonna Codice: colonna ripetuta"},
        {ImportTable::Articoli, lines({"codice", "X"}),
         "riga 1, colonna descrizione: colonna obbligatoria mancante"},
        {ImportTable::Agenti, lines({"codice;ragsoc;agente", "X;x;A1"}),
         "riga 1, colonna agente: colonna sconosciuta; quelle ammesse sono: codice, ragsoc, indirizzo, cap, "
         "comune, provincia, telefono, cellulare, email, partitaiva, note"},
        {ImportTable::Agenti, lines({"codice;ragsoc;email", "X;x;mario.esempio.it"}),
         "riga 2, colonna email: indirizzo e-mail non valido \"mario.esempio.it\""},
        {ImportTable::Clienti, lines({"codice;ragsoc;pagamento", "X;x;1,5"}),
         "riga 2, colonna pagamento: numero intero non valido \"1,5\""},
        {ImportTable::Fornitori, lines({"codice;ragsoc;agente", "X;x;F1"}),
         "riga 2, colonna agente: agente \"F1\" sconosciuto"},
        {ImportTable::Clienti, lines({"codice;ragsoc", "X;x", "Y;y", "X;z"}),
         "riga 4, colonna codice: codice \"X\" ripetuto: c'è già alla riga 2"},
        {ImportTable::Clienti, "", "il file è vuoto"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.fault.toStdString());
        const data::ImportResult result = data::importCsv(db(), c.table, c.file);
        EXPECT_EQ(faultTexts(result), QStringList(c.fault));
        EXPECT_FALSE(result.written);
    }
    EXPECT_EQ(rows("select count(*) from med"), QStringList("0"));
    EXPECT_EQ(rows("select count(*) from controparti"), QStringList("1"));
}

// A spreadsheet of the whole catalogue with a fault here and there: every fault is told, and not one row
// is written, not even those before the first fault.
TEST_P(ImportTest, AHostileFileOfAHundredThousandRowsLeavesTheDatabaseAsItWas)
{
    addParty("F", "F1", "Confetti Srl");
    addArticle("A000002", "com'era", 1.5, 0.75, 4);
    const QStringList before = articles();
    QByteArray file = "codice;prezzo_vendita;quantita_reale;fornitore\n";
    for (int line = 2; line <= 100'001; ++line) {
        QByteArray row = "A" + QByteArray::number(line).rightJustified(6, '0') + ";1.234,50;3;F1";
        if (line == 5'000)
            row = "A005000;12,3,4;3;F1";
        else if (line == 7'000)
            row = "A007000;1,00;3;F\xE9"; // Windows-1252 in a UTF-8 file
        else if (line == 9'000)
            row = "A000002;2,00;3;F1";
        else if (line == 12'000)
            row = "A012000;2,00;3;F7";
        else if (line == 3)
            row = "A000003;2,00;3;\xC3\xA9"; // valid UTF-8: the file is UTF-8
        file += row + "\n";
    }

    const data::ImportResult result = data::importCsv(db(), ImportTable::Articoli, file);

    EXPECT_EQ(faultTexts(result),
              QStringList({"riga 1, colonna descrizione: colonna obbligatoria mancante",
                           "riga 3, colonna fornitore: fornitore \"é\" sconosciuto",
                           "riga 5000, colonna prezzo_vendita: importo non valido \"12,3,4\"",
                           "riga 7000, colonna fornitore: byte non validi in UTF-8 (il file mescola UTF-8 e "
                           "un'altra codifica)",
                           "riga 9000, colonna codice: codice \"A000002\" ripetuto: c'è già alla riga 2",
                           "riga 12000, colonna fornitore: fornitore \"F7\" sconosciuto"}));
    EXPECT_EQ(result.rows, 100'000);
    EXPECT_FALSE(result.written);
    EXPECT_EQ(articles(), before);
}

TEST_P(ImportTest, AWriteThatFailsHalfWayLeavesNothingBehind)
{
    addArticle("OLD", "vecchia", 1, 3, 7);
    const QStringList before = articles();
    QStringList file{"codice;descrizione", "OLD;nuova"};
    for (int i = 0; i < 50; ++i)
        file << QStringLiteral("N%1;nuovo").arg(i);
    db().failStatement(30);
    EXPECT_THROW(data::importCsv(db(), ImportTable::Articoli, lines(file)), common::RuntimeError);
    EXPECT_FALSE(db().inTransaction());
    EXPECT_EQ(articles(), before);
}

XV_INSTANTIATE_FOR_ENGINES(ImportTest);

TEST(ImportFaultLinesTest, ShowsAtMostTheLimitAndCountsTheRest)
{
    const QVector<data::ImportFault> faults{{2, "a", "x"}, {3, "", "y"}, {0, "", "z"}};
    EXPECT_EQ(data::importFaultLines(faults, 1),
              QStringList({"riga 2, colonna a: x", "... e altri 2 errori"}));
    EXPECT_EQ(data::importFaultLines(faults, 2),
              QStringList({"riga 2, colonna a: x", "riga 3: y", "... e un altro errore"}));
    EXPECT_EQ(data::importFaultLines(faults, 3), QStringList({"riga 2, colonna a: x", "riga 3: y", "z"}));
}

} // namespace
