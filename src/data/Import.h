// SPDX-License-Identifier: MIT
#pragma once

#include "data/CsvReader.h"

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QVector>

#include <functional>
#include <optional>

namespace xv::data {

class Database;

// What a CSV file can bring in: the catalogue (med) and the three kinds of counterpart (controparti).
enum class ImportTable { Articoli, Clienti, Fornitori, Agenti };

// "articoli", "clienti", "fornitori", "agenti", in any case; nothing for another name.
std::optional<ImportTable> importTableNamed(const QString& name);
QString importTableName(ImportTable table);
// The headers a file for the table may have, in the order the documentation lists them.
QStringList importHeaders(ImportTable table);
// The headers it must have.
QStringList requiredImportHeaders(ImportTable table);

// A refused row, or a fault of the whole file (line 0) or of its header (line 1): where and why.
struct ImportFault
{
    int line = 0;
    QString column; // the header as the file writes it; empty for the whole row
    QString why;

    // "riga 5000, colonna prezzo_vendita: importo non valido "12,3,4"".
    QString text() const;
};

struct ImportResult
{
    qint64 rows = 0;    // data rows read (the header and empty rows left out)
    qint64 added = 0;   // new codes: added, or to be added on a dry run
    qint64 updated = 0; // codes already there: updated, or to be updated on a dry run
    bool written = false;
    TextEncoding encoding = TextEncoding::Utf8;
    QChar separator = u';';
    QVector<ImportFault> faults;

    bool ok() const { return faults.isEmpty(); }
};

// Rows written so far out of all the rows to write.
using ImportProgress = std::function<void(qint64 done, qint64 total)>;

struct ImportOptions
{
    bool dryRun = false; // check everything, write nothing
    ImportProgress progress;
};

// Checks every row of the file, then writes them all in one transaction, or none when any is refused or
// the write fails. A code already there is updated in the columns the file has; a new one is added.
// Throws only for a failure of the database itself, having written nothing.
ImportResult importCsv(Database& db, ImportTable table, const QByteArray& bytes,
                       const ImportOptions& options = {});
ImportResult importFile(Database& db, ImportTable table, const QString& path,
                        const ImportOptions& options = {});

// The faults as lines of text, at most limit of them and then how many more there are.
QStringList importFaultLines(const QVector<ImportFault>& faults, int limit);
// The counts, in a sentence: what was or would be written.
QString importSummary(const ImportResult& result, bool dryRun);

} // namespace xv::data
