// SPDX-License-Identifier: MIT
#include "Import.h"

#include "common/Money.h"
#include "data/Database.h"
#include "data/Schema.h"
#include "data/TypeCodes.h"

#include <QFile>
#include <QHash>
#include <QLocale>
#include <QRegularExpression>
#include <QSet>
#include <QSqlQuery>

#include <algorithm>
#include <span>

namespace xv::data {

namespace {

enum class FieldKind {
    Code, // the key: not empty, once in the file
    Name, // text that must not be empty
    Text,
    Amount,   // money, decimal comma
    Quantity, // stock, decimal comma
    Whole,    // a whole number
    Email,
    Supplier, // a supplier's code, stored as its row key
    Agent,    // an agent's code, stored as its row key
};

struct ColumnRule
{
    const char* header;
    const char* column;
    FieldKind kind;
};

const ColumnRule kArticoli[] = {
    {"codice", "codice", FieldKind::Code},
    {"descrizione", "descrizione", FieldKind::Name},
    {"categoria", "categoria", FieldKind::Text},
    {"tipo", "tipo", FieldKind::Text},
    {"um", "um", FieldKind::Text},
    {"prezzo_vendita", "prezzo_vendita", FieldKind::Amount},
    {"prezzo_acquisto", "prezzo_acquisto", FieldKind::Amount},
    {"quantita_reale", "quantita_reale", FieldKind::Quantity},
    {"quantita_disponibile", "quantita_disponibile", FieldKind::Quantity},
    {"quantita_ordinata", "quantita_ordinata", FieldKind::Quantity},
    {"quantita_impegnata", "quantita_impegnata", FieldKind::Quantity},
    {"fornitore", "rowid_fornitore", FieldKind::Supplier},
};

// The counterparts share their columns but for the payment (customers and suppliers) and the agent
// (suppliers only).
const ColumnRule kParty[] = {
    {"codice", "Code", FieldKind::Code},         {"ragsoc", "ragsoc", FieldKind::Name},
    {"indirizzo", "Indirizzo", FieldKind::Text}, {"cap", "Cap", FieldKind::Text},
    {"comune", "comune", FieldKind::Text},       {"provincia", "provincia", FieldKind::Text},
    {"telefono", "telefono", FieldKind::Text},   {"cellulare", "Cellulare", FieldKind::Text},
    {"email", "Email", FieldKind::Email},        {"partitaiva", "partitaiva", FieldKind::Text},
    {"note", "note", FieldKind::Text},           {"pagamento", "Rowid_Pagamento", FieldKind::Whole},
    {"agente", "codagente", FieldKind::Agent},
};
constexpr std::size_t kAgentFields = std::size(kParty) - 2;
constexpr std::size_t kCustomerFields = std::size(kParty) - 1;

std::span<const ColumnRule> fieldsOf(ImportTable table)
{
    switch (table) {
    case ImportTable::Articoli:
        return kArticoli;
    case ImportTable::Clienti:
        return std::span(kParty, kCustomerFields);
    case ImportTable::Fornitori:
        return kParty;
    case ImportTable::Agenti:
        return std::span(kParty, kAgentFields);
    }
    return {};
}

// The type the program gives each kind of counterpart; empty for the catalogue.
QString partyType(ImportTable table)
{
    switch (table) {
    case ImportTable::Clienti:
        return QStringLiteral("C");
    case ImportTable::Fornitori:
        return QStringLiteral("F");
    case ImportTable::Agenti:
        return QStringLiteral("A");
    case ImportTable::Articoli:
        break;
    }
    return {};
}

QString quoted(const QString& text)
{
    return QLatin1Char('"') + text + QLatin1Char('"');
}

// Italian spreadsheets write "1.234,50"; the reading is the one the form applies to amounts typed in it.
const QLocale& italian()
{
    static const QLocale locale(QLocale::Italian, QLocale::Italy);
    return locale;
}

// A quantity is a plain number: no currency sign, which the amount reading would let through.
bool looksNumeric(const QString& text)
{
    return std::all_of(text.begin(), text.end(), [](QChar c) {
        return (c >= u'0' && c <= u'9') || c == u'.' || c == u',' || c == u'-' || c == u'+';
    });
}

bool isEmail(const QString& text)
{
    static const QRegularExpression form(QStringLiteral("^[^@\\s;,]+@[^@\\s;,]+\\.[^@\\s;,.]+$"));
    return form.match(text).hasMatch();
}

// Code to row key of every row of a table, or of every counterpart of one type.
QHash<QString, qint64> keysOf(Database& db, ImportTable table)
{
    QSqlQuery query =
        table == ImportTable::Articoli
            ? db.executeBound(QStringLiteral("select codice, rowid from med order by rowid"))
            : db.executeBound(
                  QStringLiteral(
                      "select Code, rowid from controparti where tipocontroparte=? order by rowid"),
                  {partyType(table)});
    QHash<QString, qint64> keys;
    while (query.next()) {
        const QString code = query.value(0).toString();
        // When a code is there twice the oldest row is the one the program has always found first.
        if (!code.isEmpty() && !keys.contains(code))
            keys.insert(code, query.value(1).toLongLong());
    }
    return keys;
}

struct Mapping
{
    QVector<int> ruleOfField; // for each field of the file, its rule's index, or -1 for a nameless column
    QVector<int> fieldOfRule; // for each rule, its field in the file, or -1
    QStringList headers;      // as the file writes them
};

class Importer
{
public:
    Importer(Database& db, ImportTable table, const ImportOptions& options)
        : m_db(db), m_table(table), m_rules(fieldsOf(table)), m_options(options)
    {
    }

    ImportResult run(const QByteArray& bytes)
    {
        const CsvText csv = readCsv(bytes);
        m_result.encoding = csv.encoding;
        m_result.separator = csv.separator;
        if (csv.records.isEmpty()) {
            for (const CsvFault& fault : csv.faults)
                m_result.faults.push_back({fault.line, QString(), fault.why});
            if (m_result.faults.isEmpty())
                m_result.faults.push_back({0, QString(), QStringLiteral("il file è vuoto")});
            return m_result;
        }
        readHeader(csv.records.front());
        for (const CsvFault& fault : csv.faults) {
            m_result.faults.push_back({fault.line, columnName(fault.field), fault.why});
            m_unreadable.insert(std::make_pair(fault.line, fault.field));
        }
        if (m_mapping.fieldOfRule[0] >= 0)
            m_existing = keysOf(m_db, m_table);
        if (hasKind(FieldKind::Supplier))
            m_references = keysOf(m_db, ImportTable::Fornitori);
        if (hasKind(FieldKind::Agent))
            m_references = keysOf(m_db, ImportTable::Agenti);
        for (qsizetype i = 1; i < csv.records.size(); ++i)
            checkRow(csv.records[i]);
        m_result.rows = csv.records.size() - 1;
        std::stable_sort(m_result.faults.begin(), m_result.faults.end(),
                         [](const ImportFault& a, const ImportFault& b) { return a.line < b.line; });
        if (!m_result.faults.isEmpty() || m_options.dryRun)
            return m_result;
        write();
        return m_result;
    }

private:
    struct Row
    {
        qint64 key = 0;      // the row it updates; 0 for a new one
        QVariantList values; // one for each rule present, in the rules' order
    };

    bool hasKind(FieldKind kind) const
    {
        for (qsizetype i = 0; i < qsizetype(m_rules.size()); ++i) {
            if (m_rules[i].kind == kind && m_mapping.fieldOfRule[i] >= 0)
                return true;
        }
        return false;
    }

    QString columnName(int field) const
    {
        return field >= 0 && field < m_mapping.headers.size() ? m_mapping.headers[field] : QString();
    }

    void fault(int line, int field, const QString& why)
    {
        m_result.faults.push_back({line, columnName(field), why});
    }

    void readHeader(const CsvRecord& header)
    {
        m_mapping.headers = header.fields;
        m_mapping.fieldOfRule.fill(-1, qsizetype(m_rules.size()));
        for (int field = 0; field < header.fields.size(); ++field) {
            const QString name = header.fields[field].trimmed().toLower();
            int found = -1;
            for (qsizetype i = 0; i < qsizetype(m_rules.size()); ++i) {
                if (name == QLatin1String(m_rules[i].header))
                    found = int(i);
            }
            m_mapping.ruleOfField.push_back(found);
            if (name.isEmpty())
                continue;
            if (found < 0)
                fault(header.line, field,
                      QStringLiteral("colonna sconosciuta; quelle ammesse sono: %1")
                          .arg(importHeaders(m_table).join(QStringLiteral(", "))));
            else if (m_mapping.fieldOfRule[found] >= 0)
                fault(header.line, field, QStringLiteral("colonna ripetuta"));
            else
                m_mapping.fieldOfRule[found] = field;
        }
        for (const QString& required : requiredImportHeaders(m_table)) {
            for (qsizetype i = 0; i < qsizetype(m_rules.size()); ++i) {
                if (required == QLatin1String(m_rules[i].header) && m_mapping.fieldOfRule[i] < 0)
                    m_result.faults.push_back(
                        {header.line, required, QStringLiteral("colonna obbligatoria mancante")});
            }
        }
    }

    // The value to store for the field, or a fault.
    std::optional<QVariant> convert(const ColumnRule& rule, const QString& raw, int line, int field)
    {
        const QString text = raw.trimmed();
        switch (rule.kind) {
        case FieldKind::Code:
        case FieldKind::Name:
            if (text.isEmpty()) {
                fault(line, field, QStringLiteral("valore obbligatorio vuoto"));
                return std::nullopt;
            }
            return text;
        case FieldKind::Text:
            return text;
        case FieldKind::Amount: {
            if (text.isEmpty())
                return m_db.toStorage(QStringLiteral("0"), TypeCode::Currency, QLatin1String(rule.column));
            const auto amount = common::Money::tryParse(text, italian());
            if (!amount) {
                fault(line, field, QStringLiteral("importo non valido %1").arg(quoted(text)));
                return std::nullopt;
            }
            return m_db.toStorage(amount->toDecimalText(), TypeCode::Currency, QLatin1String(rule.column));
        }
        case FieldKind::Quantity: {
            if (text.isEmpty())
                return 0.0;
            const auto amount = looksNumeric(text) ? common::Money::tryParse(text, italian()) : std::nullopt;
            if (!amount) {
                fault(line, field, QStringLiteral("quantità non valida %1").arg(quoted(text)));
                return std::nullopt;
            }
            return amount->toDouble();
        }
        case FieldKind::Whole: {
            if (text.isEmpty())
                return QVariant(QMetaType(QMetaType::Int));
            bool ok = false;
            const int value = text.toInt(&ok);
            if (!ok) {
                fault(line, field, QStringLiteral("numero intero non valido %1").arg(quoted(text)));
                return std::nullopt;
            }
            return value;
        }
        case FieldKind::Email:
            if (!text.isEmpty() && !isEmail(text)) {
                fault(line, field, QStringLiteral("indirizzo e-mail non valido %1").arg(quoted(text)));
                return std::nullopt;
            }
            return text;
        case FieldKind::Supplier:
        case FieldKind::Agent: {
            if (text.isEmpty())
                return QVariant(QMetaType(QMetaType::LongLong));
            const auto found = m_references.constFind(text);
            if (found == m_references.constEnd()) {
                fault(line, field,
                      QStringLiteral("%1 %2 sconosciuto")
                          .arg(rule.kind == FieldKind::Supplier ? QStringLiteral("fornitore")
                                                                : QStringLiteral("agente"),
                               quoted(text)));
                return std::nullopt;
            }
            return *found;
        }
        }
        return std::nullopt;
    }

    void checkRow(const CsvRecord& record)
    {
        const int line = record.line;
        if (record.fields.size() != m_mapping.headers.size()) {
            fault(line, -1,
                  QStringLiteral("la riga ha %1 campi, l'intestazione %2")
                      .arg(record.fields.size())
                      .arg(m_mapping.headers.size()));
            return;
        }
        bool good = true;
        for (int field = 0; field < record.fields.size(); ++field) {
            if (m_mapping.ruleOfField[field] < 0 && m_mapping.headers[field].trimmed().isEmpty() &&
                !record.fields[field].trimmed().isEmpty()) {
                fault(line, -1,
                      QStringLiteral("valore %1 in una colonna senza intestazione (la %2ª)")
                          .arg(quoted(record.fields[field].trimmed()))
                          .arg(field + 1));
                good = false;
            }
        }
        Row row;
        for (qsizetype i = 0; i < qsizetype(m_rules.size()); ++i) {
            const int field = m_mapping.fieldOfRule[i];
            if (field < 0)
                continue;
            // A cell the file's bytes did not give is told once, as such, not again as a wrong value.
            if (m_unreadable.contains(std::make_pair(line, field))) {
                good = false;
                continue;
            }
            const std::optional<QVariant> value = convert(m_rules[i], record.fields[field], line, field);
            if (!value) {
                good = false;
                continue;
            }
            row.values.push_back(*value);
            if (m_rules[i].kind != FieldKind::Code)
                continue;
            const QString code = value->toString();
            const auto seen = m_lineOfCode.constFind(code);
            if (seen != m_lineOfCode.constEnd()) {
                fault(
                    line, field,
                    QStringLiteral("codice %1 ripetuto: c'è già alla riga %2").arg(quoted(code)).arg(*seen));
                good = false;
            } else {
                m_lineOfCode.insert(code, line);
            }
            row.key = m_existing.value(code, 0);
        }
        if (!good || m_mapping.fieldOfRule[0] < 0)
            return;
        if (row.key != 0)
            ++m_result.updated;
        else
            ++m_result.added;
        if (!m_options.dryRun)
            m_rows.push_back(std::move(row));
    }

    QString tableName() const
    {
        return m_table == ImportTable::Articoli ? QStringLiteral("med") : QStringLiteral("controparti");
    }

    // The insert and the update of one row, with the row's values in the rules' order; columns are our
    // own names, every value is bound.
    void write()
    {
        QStringList present;
        QStringList absentNumbers;
        for (qsizetype i = 0; i < qsizetype(m_rules.size()); ++i) {
            const QString column = QLatin1String(m_rules[i].column);
            if (m_mapping.fieldOfRule[i] >= 0)
                present << column;
            else if (m_rules[i].kind == FieldKind::Amount || m_rules[i].kind == FieldKind::Quantity)
                absentNumbers << column; // a new article starts with no price and no stock, not unknown ones
        }
        QStringList insertColumns = present + absentNumbers;
        const QString type = partyType(m_table);
        if (!type.isEmpty())
            insertColumns << QStringLiteral("tipocontroparte");
        QStringList marks;
        marks.fill(QStringLiteral("?"), insertColumns.size());
        const QString insertSql =
            QStringLiteral("insert into %1 (%2) values (%3)")
                .arg(tableName(), insertColumns.join(QLatin1Char(',')), marks.join(QLatin1Char(',')));
        QStringList assignments;
        for (const QString& column : present)
            assignments << column + QStringLiteral("=?");
        const QString updateSql = QStringLiteral("update %1 set %2 where rowid=?")
                                      .arg(tableName(), assignments.join(QLatin1Char(',')));

        QVariantList extra;
        for (int i = 0; i < absentNumbers.size(); ++i)
            extra << 0;
        if (!type.isEmpty())
            extra << type;

        const qint64 total = m_rows.size();
        constexpr qint64 kProgressStep = 1000;
        Transaction transaction(m_db);
        for (qint64 done = 0; done < total; ++done) {
            Row& row = m_rows[done];
            if (row.key != 0) {
                row.values << row.key;
                m_db.executeReused(updateSql, row.values);
            } else {
                m_db.executeReused(insertSql, row.values + extra);
            }
            if (m_options.progress && done % kProgressStep == 0)
                m_options.progress(done, total);
        }
        transaction.commit();
        m_result.written = true;
        if (m_options.progress)
            m_options.progress(total, total);
        // A bulk write leaves the server's planner with the table's old figures until autovacuum comes by.
        refreshPlannerStatistics(m_db, {tableName()});
    }

    Database& m_db;
    ImportTable m_table;
    std::span<const ColumnRule> m_rules;
    const ImportOptions& m_options;
    ImportResult m_result;
    Mapping m_mapping;
    QHash<QString, qint64> m_existing;
    QHash<QString, qint64> m_references;
    QHash<QString, int> m_lineOfCode;
    QSet<std::pair<int, int>> m_unreadable; // line and field of the cells with faulty bytes
    QVector<Row> m_rows;
};

} // namespace

std::optional<ImportTable> importTableNamed(const QString& name)
{
    for (const ImportTable table :
         {ImportTable::Articoli, ImportTable::Clienti, ImportTable::Fornitori, ImportTable::Agenti}) {
        if (name.trimmed().compare(importTableName(table), Qt::CaseInsensitive) == 0)
            return table;
    }
    return std::nullopt;
}

QString importTableName(ImportTable table)
{
    switch (table) {
    case ImportTable::Articoli:
        return QStringLiteral("articoli");
    case ImportTable::Clienti:
        return QStringLiteral("clienti");
    case ImportTable::Fornitori:
        return QStringLiteral("fornitori");
    case ImportTable::Agenti:
        return QStringLiteral("agenti");
    }
    return {};
}

QStringList importHeaders(ImportTable table)
{
    QStringList headers;
    for (const ColumnRule& rule : fieldsOf(table))
        headers << QLatin1String(rule.header);
    return headers;
}

QStringList requiredImportHeaders(ImportTable table)
{
    QStringList headers;
    for (const ColumnRule& rule : fieldsOf(table)) {
        if (rule.kind == FieldKind::Code || rule.kind == FieldKind::Name)
            headers << QLatin1String(rule.header);
    }
    return headers;
}

QString ImportFault::text() const
{
    if (line == 0)
        return why;
    if (column.isEmpty())
        return QStringLiteral("riga %1: %2").arg(line).arg(why);
    return QStringLiteral("riga %1, colonna %2: %3").arg(line).arg(column, why);
}

ImportResult importCsv(Database& db, ImportTable table, const QByteArray& bytes, const ImportOptions& options)
{
    return Importer(db, table, options).run(bytes);
}

ImportResult importFile(Database& db, ImportTable table, const QString& path, const ImportOptions& options)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        ImportResult result;
        result.faults.push_back(
            {0, QString(),
             QStringLiteral("impossibile leggere il file %1: %2").arg(path, file.errorString())});
        return result;
    }
    return importCsv(db, table, file.readAll(), options);
}

QStringList importFaultLines(const QVector<ImportFault>& faults, int limit)
{
    QStringList lines;
    for (qsizetype i = 0; i < faults.size() && i < limit; ++i)
        lines << faults[i].text();
    const qsizetype rest = faults.size() - limit;
    if (rest == 1)
        lines << QStringLiteral("... e un altro errore");
    else if (rest > 1)
        lines << QStringLiteral("... e altri %1 errori").arg(rest);
    return lines;
}

QString importSummary(const ImportResult& result, bool dryRun)
{
    if (!result.ok())
        return QStringLiteral("Righe lette: %1, errori: %2. Nessuna riga è stata scritta.")
            .arg(result.rows)
            .arg(result.faults.size());
    if (dryRun)
        return QStringLiteral("Prova senza scrittura: righe lette %1, da aggiungere %2, da aggiornare %3. "
                              "Nessuna riga è stata scritta.")
            .arg(result.rows)
            .arg(result.added)
            .arg(result.updated);
    return QStringLiteral("Righe lette: %1, aggiunte: %2, aggiornate: %3.")
        .arg(result.rows)
        .arg(result.added)
        .arg(result.updated);
}

} // namespace xv::data
