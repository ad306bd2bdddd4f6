// SPDX-License-Identifier: MIT
#include "Schema.h"

#include "common/RuntimeError.h"
#include "data/Database.h"
#include "data/OrderColumns.h"
#include "data/SqlText.h"
#include "data/TypeCodes.h"

#include <QLoggingCategory>
#include <QRegularExpression>
#include <QSqlQuery>

#include <functional>

Q_LOGGING_CATEGORY(lcSchema, "xv.host.schema")

namespace xv::data {

using common::ErrorNumber;
using common::RuntimeError;

namespace {

using Kind = ColumnKind;
using Column = ColumnSpec;

const auto& kMovimenti = kMovimentiColumns;

const Column kNumeratori[] = {
    {"idnumeratore", Kind::Key}, {"codtipodoc", Kind::Text}, {"tipodocumento", Kind::Text},
    {"serie", Kind::Text},       {"numero", Kind::Integer},  {"dataultdoc", Kind::Date},
};

// Customers ('C'), suppliers ('F') and the suppliers' agents ('A').
const Column kControparti[] = {
    {"rowid", Kind::Key},         {"tipocontroparte", Kind::Text}, {"Code", Kind::Text},
    {"ragsoc", Kind::Text},       {"Indirizzo", Kind::Text},       {"Cap", Kind::Text},
    {"comune", Kind::Text},       {"provincia", Kind::Text},       {"telefono", Kind::Text},
    {"Cellulare", Kind::Text},    {"Email", Kind::Text},           {"Rowid_Pagamento", Kind::Integer},
    {"codagente", Kind::Integer}, {"partitaiva", Kind::Text},      {"note", Kind::Text},
};

const Column kMed[] = {
    {"rowid", Kind::Key},
    {"codice", Kind::Text},
    {"descrizione", Kind::Text},
    {"categoria", Kind::Text},
    {"tipo", Kind::Text},
    {"um", Kind::Text},
    {"prezzo_vendita", Kind::Currency},
    {"prezzo_acquisto", Kind::Currency},
    {"quantita_reale", Kind::Double},
    {"quantita_disponibile", Kind::Double},
    {"quantita_ordinata", Kind::Double},
    {"quantita_impegnata", Kind::Double},
    {"rowid_fornitore", Kind::Integer},
};

// Bills of materials: an assembled article ('P' rows) made of components with their quantities.
const Column kProduzione[] = {
    {"rowid", Kind::Key},     {"Tipo", Kind::Text},    {"Codice_A", Kind::Text},
    {"Codice_P", Kind::Text}, {"Qta_P", Kind::Double},
};

const Column kUtenti[] = {
    {"rowid", Kind::Key},
    {"nomeutente", Kind::Text},
    {"nominativo", Kind::Text},
    {"attivo", Kind::SmallInt},
};

QString sqlType(Kind kind, Engine engine)
{
    const bool pg = engine == Engine::PostgreSQL;
    switch (kind) {
    case Kind::Key:
        return pg ? QStringLiteral("serial primary key")
                  : QStringLiteral("INTEGER PRIMARY KEY AUTOINCREMENT");
    case Kind::SmallInt:
        return pg ? QStringLiteral("smallint") : QStringLiteral("SMALLINT");
    case Kind::Integer:
        return pg ? QStringLiteral("integer") : QStringLiteral("INTEGER");
    case Kind::Single:
        return pg ? QStringLiteral("real") : QStringLiteral("SINGLE");
    case Kind::Double:
        return pg ? QStringLiteral("double precision") : QStringLiteral("DOUBLE");
    case Kind::Currency:
        return pg ? QStringLiteral("numeric(19,4)") : QStringLiteral("CURRENCY");
    case Kind::Date:
        return pg ? QStringLiteral("timestamp") : QStringLiteral("DATETIME");
    case Kind::Text:
        return pg ? QStringLiteral("text") : QStringLiteral("TEXT");
    }
    return {};
}

template <std::size_t N> QString createTable(const char* table, const Column (&columns)[N], Engine engine)
{
    QStringList parts;
    for (const Column& column : columns)
        parts << QStringLiteral("%1 %2").arg(QLatin1String(column.name), sqlType(column.kind, engine));
    return QStringLiteral("create table %1 (%2)").arg(QLatin1String(table), parts.join(QStringLiteral(", ")));
}

// Orders are the rows whose document type is the one the order counters hand out; that stays true
// after a status change, which rewrites the movement type of collected orders.
const char* const kOrderRows = "documento in (select tipodocumento from numeratori where codtipodoc='CO')";

QStringList viewsAndIndexes()
{
    const QString orderRows = QLatin1String(kOrderRows);
    return {
        QStringLiteral(
            "create view mov_co as select numero as commissione, serie, documento, "
            "min(datadocumento) as [Data Commissione], min(Nominativo) as Nominativo, "
            "min(StatoRiga) as StatoRiga from movimenti where %1 group by numero, serie, documento")
            .arg(orderRows),
        QStringLiteral(
            "create view Doc_Commissioni_testate as select m.numero as numero, m.serie as serie, "
            "m.documento as documento, m.datadocumento as DataComm, m.Nominativo as Nominativo, "
            "m.codenominativo as codenominativo, m.rowid_controparti as rowid_controparti, "
            "m.telefono as telefono, m.Cellulare as Cellulare, m.Email as Email, "
            "m.Datadal as DataRitiro, m.Dataal as DataRitiro2, m.attrib04 as Cerimonia, "
            "m.attrib05 as DataCerimonia, m.attrib06 as NomeFesteggiato, m.attrib07 as Note, "
            "m.attrib08 as Dicitura, m.attrib00 as Biglietti, m.attrib01 as Amuleto, "
            "m.StatoRiga as [STATO COMMISSIONE], t.totale as Totale, t.acconto as Acconto, t.righe as Righe "
            "from movimenti m inner join (select min(rowid) as primo, sum(totale) as totale, "
            "sum(prezzo2) as acconto, count(*) as righe from movimenti where %1 "
            "group by documento, serie, numero) t on m.rowid = t.primo")
            .arg(orderRows),
        QStringLiteral("create view doc_righemov as select m.rowid as rowid, m.documento as documento, "
                       "m.serie as serie, m.numero as numero, m.datadocumento as datadocumento, "
                       "m.Tipomovimento as tipomovimento, m.rowid_controparti as rowid_controparte, "
                       "m.Nominativo as nominativo, m.codice_med as codice, m.rowid_med as rowid_med, "
                       "m.Descrizione1 as descrizione, m.qta as qta, m.prezzo as prezzo, m.totale as totale, "
                       "m.StatoRiga as statoriga from movimenti m"),
        QStringLiteral("create index ix_movimenti_numero on movimenti (numero, serie)"),
        QStringLiteral("create index ix_movimenti_documento on movimenti (documento, serie, numero)"),
        QStringLiteral("create index ix_movimenti_codice on movimenti (codice_med)"),
        QStringLiteral("create index ix_movimenti_data on movimenti (datadocumento)"),
        QStringLiteral("create index ix_movimenti_controparte on movimenti (rowid_controparti)"),
        QStringLiteral("create unique index ix_numeratori_chiave on numeratori (codtipodoc, serie)"),
        QStringLiteral("create unique index ix_med_codice on med (codice)"),
        QStringLiteral("create index ix_med_categoria on med (categoria)"),
        QStringLiteral("create index ix_controparti_ragsoc on controparti (ragsoc)"),
        QStringLiteral("create index ix_controparti_tipo on controparti (tipocontroparte)"),
        QStringLiteral("create index ix_produzione_articolo on Produzione (Tipo, Codice_A)"),
        QStringLiteral("create unique index ix_utenti_nome on Utenti (nomeutente)"),
    };
}

QStringList version1(Engine engine)
{
    const bool pg = engine == Engine::PostgreSQL;
    QStringList statements;
    statements << createTable("movimenti", kMovimenti, engine)
               << createTable("numeratori", kNumeratori, engine)
               << createTable("controparti", kControparti, engine) << createTable("med", kMed, engine)
               << createTable("Produzione", kProduzione, engine) << createTable("Utenti", kUtenti, engine);
    // Settings are addressed by store, section and key without regard to case: they are kept lower case.
    statements << QStringLiteral("create table impostazioni (archivio %1 not null, sezione %1 not null, "
                                 "chiave %1 not null, valore %1, primary key (archivio, sezione, chiave))")
                      .arg(sqlType(Kind::Text, engine));
    statements << QStringLiteral("create table blocchi_record (tabella %1 not null, record integer not null, "
                                 "finestra %2 not null, postazione %1, utente %1, dal %3, "
                                 "primary key (tabella, record))")
                      .arg(sqlType(Kind::Text, engine),
                           pg ? QStringLiteral("bigint") : QStringLiteral("INTEGER"),
                           sqlType(Kind::Date, engine));
    statements << viewsAndIndexes();
    return statements;
}

// A record lock names the session that holds it, so that a lock whose session has gone (a crashed or
// killed workstation) can be told from a live one: the process and machine on SQLite, the server's
// backend and its start on PostgreSQL, where a backend number is reused once its session ends.
QStringList version2(Engine engine)
{
    const bool pg = engine == Engine::PostgreSQL;
    QStringList statements{
        // Locks taken before sessions were recorded cannot be checked; they would block for ever.
        QStringLiteral("delete from blocchi_record"),
        QStringLiteral("alter table blocchi_record add column processo %1").arg(sqlType(Kind::Integer, engine)),
        QStringLiteral("alter table blocchi_record add column macchina %1").arg(sqlType(Kind::Text, engine)),
    };
    if (pg)
        statements << QStringLiteral("alter table blocchi_record add column avvio timestamptz");
    return statements;
}

// The article panel looks an article's movements up by its code: the suppliers it was bought from, its
// newest delivery note and its newest sale, each one step into an index that begins with the code. The
// plain index on the code has nothing left to do.
QStringList version3(Engine)
{
    return {
        QStringLiteral("create index ix_movimenti_articolo_controparte on movimenti (codice_med, rowid_controparti)"),
        QStringLiteral("create index ix_movimenti_articolo_tipo on movimenti (codice_med, Tipomovimento, datadocumento)"),
        QStringLiteral("create index ix_movimenti_articolo_data on movimenti (codice_med, datadocumento)"),
        QStringLiteral("drop index ix_movimenti_codice"),
    };
}

// The search window lists the newest orders first and reads only as many as it shows: an index in that
// order (year, then the number by its value, which for the counters' plain numbers is its length then its
// text) lets it stop early. On SQLite the index also carries the customer's name and the ceremony, so that
// a filter on them is checked without reading the rows; on PostgreSQL trigram indexes find a part of either
// whatever its place in the archive. The extension lives in the shared schema, created under a lock held
// for the whole database, so that shops with several schemas do not race to create it.
QStringList version4(Engine engine)
{
    if (engine == Engine::SQLite)
        return {QStringLiteral("create index ix_movimenti_ordine on movimenti "
                               "(serie, length(numero), numero, documento, Nominativo, attrib04)")};
    return {
        QStringLiteral("create index ix_movimenti_ordine on movimenti (serie, length(numero), numero, documento)"),
        QStringLiteral("select pg_advisory_xact_lock(7071, 0)"),
        QStringLiteral("create extension if not exists pg_trgm with schema public"),
        QStringLiteral("create index ix_movimenti_nominativo_trgm on movimenti "
                       "using gin (lower(Nominativo) public.gin_trgm_ops)"),
        QStringLiteral("create index ix_movimenti_cerimonia_trgm on movimenti "
                       "using gin (lower(attrib04) public.gin_trgm_ops)"),
    };
}

// Every save of an order leaves its own identity beside the order it wrote, in the same transaction. When
// the connection breaks during the commit the program cannot tell whether the order was stored; saving it
// again finds that identity and does not store the order a second time under another number.
QStringList version5(Engine engine)
{
    return {QStringLiteral("create table salvataggi (id %1 not null primary key, documento %1 not null, "
                           "numero %1 not null, serie %1 not null, dal %2)")
                .arg(sqlType(Kind::Text, engine), sqlType(Kind::Date, engine))};
}

// A name or a ceremony that few orders carry is found on SQLite through an index of every three letters of
// them (its full-text index, with the trigram tokenizer, which folds case in any alphabet): otherwise the
// search walks the whole index of orders before it knows there are no more. The index reads the names
// from the table itself and triggers keep it in step with every row written, whoever writes it; it is
// filled here from the rows already there. PostgreSQL has its trigram indexes since version 4.
QStringList version6(Engine engine)
{
    if (engine != Engine::SQLite)
        return {};
    return {
        QStringLiteral("create virtual table %1 using fts5(Nominativo, attrib04, content='movimenti', "
                       "content_rowid='rowid', tokenize='trigram')")
            .arg(QLatin1String(kNameIndexTable)),
        QStringLiteral("create trigger movimenti_nomi_inserimento after insert on movimenti begin "
                       "insert into %1 (rowid, Nominativo, attrib04) "
                       "values (new.rowid, new.Nominativo, new.attrib04); end")
            .arg(QLatin1String(kNameIndexTable)),
        QStringLiteral("create trigger movimenti_nomi_cancellazione after delete on movimenti begin "
                       "insert into %1 (%1, rowid, Nominativo, attrib04) "
                       "values ('delete', old.rowid, old.Nominativo, old.attrib04); end")
            .arg(QLatin1String(kNameIndexTable)),
        QStringLiteral(
            "create trigger movimenti_nomi_modifica after update of Nominativo, attrib04 on movimenti "
            "begin insert into %1 (%1, rowid, Nominativo, attrib04) "
            "values ('delete', old.rowid, old.Nominativo, old.attrib04); "
            "insert into %1 (rowid, Nominativo, attrib04) "
            "values (new.rowid, new.Nominativo, new.attrib04); end")
            .arg(QLatin1String(kNameIndexTable)),
        QStringLiteral("insert into %1 (%1) values ('rebuild')").arg(QLatin1String(kNameIndexTable)),
    };
}

constexpr int kFirstVersionWithFigures = 6;

using Migration = std::function<QStringList(Engine)>;
const Migration kMigrations[] = {version1, version2, version3, version4, version5, version6};

int typeCodeOfDeclared(const QString& declared)
{
    const QString t = declared.trimmed().toLower();
    if (t == QLatin1String("smallint"))
        return TypeCode::SmallInt;
    if (t.startsWith(QLatin1String("int")) || t == QLatin1String("serial") || t == QLatin1String("long"))
        return TypeCode::Integer;
    if (t == QLatin1String("bigint"))
        return TypeCode::BigInt;
    if (t == QLatin1String("single") || t == QLatin1String("real"))
        return TypeCode::Single;
    if (t == QLatin1String("double") || t == QLatin1String("double precision"))
        return TypeCode::Double;
    if (t == QLatin1String("currency") || t == QLatin1String("numeric(19,4)"))
        return TypeCode::Currency;
    if (t.startsWith(QLatin1String("numeric")))
        return TypeCode::Numeric;
    if (t.startsWith(QLatin1String("datetime")) || t.startsWith(QLatin1String("timestamp")) ||
        t == QLatin1String("date"))
        return TypeCode::Date;
    if (t == QLatin1String("boolean"))
        return TypeCode::Boolean;
    return TypeCode::Text;
}

} // namespace

QVector<ColumnInfo> tableColumns(Database& db, const QString& table)
{
    QVector<ColumnInfo> columns;
    if (db.engine() == Engine::SQLite) {
        QSqlQuery query =
            db.executeBound(QStringLiteral("select name, type from pragma_table_info(?)"), {table});
        while (query.next())
            columns.push_back({query.value(0).toString(), typeCodeOfDeclared(query.value(1).toString())});
        return columns;
    }
    // From the catalog itself: the information schema's view of the same columns takes the server several
    // milliseconds to build, and every save asks for them.
    QSqlQuery query = db.executeBound(
        QStringLiteral(
            "select a.attname, format_type(a.atttypid, a.atttypmod) from pg_catalog.pg_attribute a "
            "join pg_catalog.pg_class c on c.oid = a.attrelid "
            "where c.relnamespace = current_schema()::regnamespace and c.relname = ? "
            "and a.attnum > 0 and not a.attisdropped order by a.attnum"),
        {table.toLower()});
    while (query.next())
        columns.push_back({query.value(0).toString(), typeCodeOfDeclared(query.value(1).toString())});
    return columns;
}

int latestSchemaVersion()
{
    return static_cast<int>(std::size(kMigrations));
}

namespace {

bool tableExists(Database& db, const QString& table)
{
    QSqlQuery exists =
        db.engine() == Engine::SQLite
            ? db.executeBound(
                  QStringLiteral("select count(*) from sqlite_master where type='table' and name=?"), {table})
            : db.executeBound(QStringLiteral("select count(*) from pg_catalog.pg_tables "
                                             "where schemaname = current_schema() and tablename = ?"),
                              {table});
    return exists.next() && exists.value(0).toInt() > 0;
}

// The fingerprint of the function definitions the database holds, empty when it holds none of ours.
QString storedFunctionsFingerprint(Database& db)
{
    if (!tableExists(db, QStringLiteral("impronta_funzioni")))
        return {};
    QSqlQuery query = db.executeBound(QStringLiteral("select impronta from impronta_funzioni"));
    return query.next() ? query.value(0).toString() : QString();
}

bool functionsCurrent(Database& db)
{
    return db.engine() == Engine::SQLite || storedFunctionsFingerprint(db) == postgresFunctionsFingerprint();
}

// Replacing a function needs its owner, and two sessions replacing the same one at once collide: so they
// are replaced only when the program brings other definitions than those stored.
void replaceFunctions(Database& db)
{
    qCInfo(lcSchema) << "replacing the SQL functions";
    // Their bodies are native SQL and must not pass through the dialect rewrite.
    for (const QString& definition : postgresFunctionDefinitions())
        db.executeBound(definition);
    db.executeBound(QStringLiteral("create table if not exists impronta_funzioni (impronta text not null)"));
    db.executeBound(QStringLiteral("delete from impronta_funzioni"));
    db.executeBound(QStringLiteral("insert into impronta_funzioni (impronta) values (?)"),
                    {postgresFunctionsFingerprint()});
}

void requireNotNewer(int version)
{
    if (version > latestSchemaVersion())
        throw RuntimeError(ErrorNumber::DatabaseError,
                           QStringLiteral("Il database è di una versione più recente del programma (%1 > %2)")
                               .arg(version)
                               .arg(latestSchemaVersion()));
}

} // namespace

void refreshPlannerStatistics(Database& db, const QStringList& tables)
{
    if (tables.isEmpty()) {
        db.executeBound(QStringLiteral("analyze"));
        return;
    }
    // Table names come from the program, never from what is typed; anything else is refused, not spliced.
    static const QRegularExpression plainName(QStringLiteral("^[A-Za-z_][A-Za-z0-9_]*$"));
    for (const QString& table : tables) {
        if (!plainName.match(table).hasMatch())
            throw RuntimeError(ErrorNumber::InvalidProcedureCall,
                               QStringLiteral("Nome di tabella non valido: %1").arg(table));
        db.executeBound(QStringLiteral("analyze ") + table);
    }
}

int schemaVersion(Database& db)
{
    if (!tableExists(db, QStringLiteral("versione_schema")))
        return 0;
    QSqlQuery query = db.executeBound(QStringLiteral("select max(versione) from versione_schema"));
    return query.next() ? query.value(0).toInt() : 0;
}

int migrate(Database& db)
{
    int before = schemaVersion(db);
    requireNotNewer(before);
    // A database already current is only read: no transaction, and nothing a role without ownership of
    // the schema could be refused.
    if (before == latestSchemaVersion() && functionsCurrent(db))
        return before;
    Transaction transaction(db);
    if (db.engine() == Engine::PostgreSQL) {
        // Workstations starting together take turns here; the later one finds the work done.
        db.executeBound(QStringLiteral("select pg_advisory_xact_lock(7071, (select oid from pg_namespace "
                                       "where nspname = current_schema())::integer)"));
        before = schemaVersion(db);
        requireNotNewer(before);
        if (!functionsCurrent(db))
            replaceFunctions(db);
    }
    if (before == latestSchemaVersion()) {
        transaction.commit();
        return before;
    }
    if (before == 0)
        db.executeBound(
            QStringLiteral("create table versione_schema (versione integer not null, applicata %1)")
                .arg(sqlType(Kind::Date, db.engine())));
    for (int version = before + 1; version <= latestSchemaVersion(); ++version) {
        qCInfo(lcSchema) << "applying schema version" << version;
        for (const QString& statement : kMigrations[version - 1](db.engine()))
            db.execute(statement);
        db.execute(QStringLiteral("insert into versione_schema (versione, applicata) values (%1, now)")
                       .arg(version));
    }
    // An archive that had rows before the version that first gave SQLite the tables' figures gets them
    // once, so that the planner finds the article panel's agents through the article's few suppliers. A new
    // database gets none: figures of empty tables would mislead the planner as the shop grows.
    if (db.engine() == Engine::SQLite && before >= 1 && before < kFirstVersionWithFigures)
        refreshPlannerStatistics(db);
    transaction.commit();
    return before;
}

} // namespace xv::data
