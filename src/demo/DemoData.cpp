// SPDX-License-Identifier: MIT
#include "DemoData.h"

#include "DemoGenerator.h"

#include "common/RuntimeError.h"
#include "data/Database.h"

#include <QSqlQuery>

#include <algorithm>
#include <cmath>

namespace xv::demo {

using data::Engine;
using data::Transaction;

using common::ErrorNumber;
using common::RuntimeError;

Generator::Generator(Database& db, const DemoOptions& options)
    : m_db(db), m_options(options), m_dice(options.seed), m_postgres(db.engine() == Engine::PostgreSQL),
      m_firstDay(options.today.year() - kYears + 1, 1, 1)
{
}

DemoSummary Generator::run()
{
    writeSettings();
    writeOperators();
    writeAgents();
    writeSuppliers();
    writeCatalogue();
    writeAssemblies();
    writeCustomers();
    writeDeliveries();
    writeOrders();
    m_summary.articles = static_cast<int>(m_articles.size());
    m_summary.customers = static_cast<int>(m_customers.size());
    m_summary.suppliers = static_cast<int>(m_suppliers.size());
    m_summary.agents = static_cast<int>(m_agentRowids.size());
    return m_summary;
}

// SQLite keeps a currency as a double; PostgreSQL's numeric gets the exact decimal text.
QVariant Generator::money(qint64 cents) const
{
    Q_ASSERT(cents >= 0);
    if (m_postgres)
        return QStringLiteral("%1.%2").arg(cents / 100).arg(cents % 100 * 100, 4, 10, QLatin1Char('0'));
    return static_cast<double>(cents) / 100.0;
}

void Generator::writeSettings()
{
    BoundInsert insert(m_db, QStringLiteral("impostazioni"),
                       {QStringLiteral("archivio"), QStringLiteral("sezione"), QStringLiteral("chiave"),
                        QStringLiteral("valore")});
    const std::array<std::array<const char*, 4>, 4> rows = {{
        {"ekela", "kela", "apptitle", "xVELARIO"},
        {"ekela", "kela", "nomedati", "Bomboniere demo"},
        {"ekela", "docs", "email_from", "ordini@bomboniere-demo.example.it"},
        {"ekela", "mail", "automail", "False"},
    }};
    for (const auto& row : rows)
        insert.run(QVariantList{text(row[0]), text(row[1]), text(row[2]), text(row[3])});
}

void Generator::writeOperators()
{
    BoundInsert insert(m_db, QStringLiteral("Utenti"),
                       {QStringLiteral("nomeutente"), QStringLiteral("nominativo"), QStringLiteral("attivo")},
                       true);
    for (const Operator& op : kOperators) {
        const int rowid = insert.run(QVariantList{text(op.login), text(op.name), op.active});
        if (m_operatorRowid == 0)
            m_operatorRowid = rowid;
    }
}

QStringList Generator::partyColumns() const
{
    return {QStringLiteral("tipocontroparte"),
            QStringLiteral("Code"),
            QStringLiteral("ragsoc"),
            QStringLiteral("Indirizzo"),
            QStringLiteral("Cap"),
            QStringLiteral("comune"),
            QStringLiteral("provincia"),
            QStringLiteral("telefono"),
            QStringLiteral("Cellulare"),
            QStringLiteral("Email"),
            QStringLiteral("Rowid_Pagamento"),
            QStringLiteral("codagente"),
            QStringLiteral("partitaiva"),
            QStringLiteral("note")};
}

QString Generator::mobileNumber()
{
    static const char* const prefixes[] = {"333", "335", "338", "340", "347", "349", "320", "328"};
    return QStringLiteral("%1 %2").arg(text(m_dice.pick(prefixes)), m_dice.digits(7));
}

QString Generator::streetAddress()
{
    return QStringLiteral("%1 %2").arg(text(m_dice.pick(kStreets))).arg(m_dice.between(1, 250));
}

void Generator::writeAgents()
{
    BoundInsert insert(m_db, QStringLiteral("controparti"), partyColumns(), true);
    int number = 0;
    for (const Person& agent : kAgents) {
        const Town& town = m_dice.pick(kTowns);
        const QVariantList row{
            QStringLiteral("A"), QStringLiteral("A%1").arg(++number, 5, 10, QLatin1Char('0')),
            text(agent.name),    streetAddress(),
            text(town.cap),      text(town.name),
            text(town.province), nullText(),
            mobileNumber(),      text(agent.email),
            nullNumber(),        nullNumber(),
            m_dice.digits(11),   QStringLiteral("Agente di commercio")};
        m_agentRowids.push_back(insert.run(row));
    }
}

void Generator::writeSuppliers()
{
    BoundInsert insert(m_db, QStringLiteral("controparti"), partyColumns(), true);
    int number = 0;
    for (const SupplierInfo& s : kSuppliers) {
        Party party;
        party.code = QStringLiteral("F%1").arg(++number, 5, 10, QLatin1Char('0'));
        party.name = text(s.name);
        party.address = text(s.address);
        party.cap = text(s.cap);
        party.town = text(s.town);
        party.province = text(s.province);
        party.phone = text(s.phone);
        party.mobile = QStringLiteral("");
        party.email = text(s.email);
        const QVariantList row{QStringLiteral("F"),
                               party.code,
                               party.name,
                               party.address,
                               party.cap,
                               party.town,
                               party.province,
                               party.phone,
                               party.mobile,
                               party.email,
                               1,
                               m_agentRowids[s.agent],
                               m_dice.digits(11),
                               QStringLiteral("")};
        party.rowid = insert.run(row);
        m_suppliers.push_back(party);
    }
}

int Generator::priceFor(Family family, bool assembled)
{
    const FamilyInfo& fi = info(family);
    const int low = assembled ? 1500 : fi.minCents;
    const int step = fi.maxCents >= 1000 ? 50 : 10;
    return m_dice.between(low / step, fi.maxCents / step) * step;
}

void Generator::writeCatalogue()
{
    std::array<int, std::size(kFamilies)> numbers{};
    for (const CatalogueEntry& entry : kCatalogue) {
        Article article;
        article.family = entry.family;
        article.code = QStringLiteral("%1%2")
                           .arg(QLatin1String(info(entry.family).prefix))
                           .arg(++numbers[static_cast<int>(entry.family)], 3, 10, QLatin1Char('0'));
        article.description = text(entry.description);
        article.byWeight = entry.family == Family::Confetti;
        m_articles.push_back(article);
        m_articleSupplier.push_back(entry.supplier);
    }
    for (const Assembly& assembly : kAssemblies) {
        Article article;
        article.family = Family::Bomboniere;
        article.assembled = true;
        article.code = QStringLiteral("BOM%1").arg(++numbers[static_cast<int>(Family::Bomboniere)], 3, 10,
                                                   QLatin1Char('0'));
        article.description = text(assembly.description);
        m_articles.push_back(article);
        m_articleSupplier.push_back(m_articleSupplier[indexOfCode(text(assembly.components[0]))]);
    }

    BoundInsert insert(m_db, QStringLiteral("med"),
                       {QStringLiteral("codice"), QStringLiteral("descrizione"), QStringLiteral("categoria"),
                        QStringLiteral("tipo"), QStringLiteral("um"), QStringLiteral("prezzo_vendita"),
                        QStringLiteral("prezzo_acquisto"), QStringLiteral("quantita_reale"),
                        QStringLiteral("quantita_disponibile"), QStringLiteral("quantita_ordinata"),
                        QStringLiteral("quantita_impegnata"), QStringLiteral("rowid_fornitore")},
                       true);
    for (std::size_t i = 0; i < m_articles.size(); ++i) {
        Article& article = m_articles[i];
        article.priceCents = priceFor(article.family, article.assembled);
        article.costCents =
            static_cast<int>(divideRounded(qint64(article.priceCents) * m_dice.between(50, 60), 100));
        // Every seventh article runs low and every thirteenth is sold out, so the stock warnings
        // have something to show in any demo.
        const int maxStock = article.byWeight ? 80 : (article.assembled ? 40 : 600);
        int real = m_dice.between(6, maxStock);
        if (i % 13 == 5)
            real = 0;
        else if (i % 7 == 3)
            real = m_dice.between(1, 5);
        const int committed = real > 5 ? m_dice.between(0, real / 3) : 0;
        const int ordered = m_dice.chance(30) ? m_dice.between(1, 10) * (article.byWeight ? 5 : 50) : 0;
        article.rowid = insert.run(QVariantList{
            article.code, article.description, text(info(article.family).category),
            article.assembled ? QStringLiteral("A") : QStringLiteral("S"), text(info(article.family).unit),
            money(article.priceCents), money(article.costCents), double(real), double(real - committed),
            double(ordered), double(committed), m_suppliers[m_articleSupplier[i]].rowid});
        m_byFamily[static_cast<int>(article.family)].push_back(static_cast<int>(i));
    }
}

int Generator::indexOfCode(const QString& code) const
{
    for (std::size_t i = 0; i < m_articles.size(); ++i) {
        if (m_articles[i].code == code)
            return static_cast<int>(i);
    }
    throw RuntimeError(ErrorNumber::InvalidProcedureCall,
                       QStringLiteral("Articolo dimostrativo sconosciuto: %1").arg(code));
}

void Generator::writeAssemblies()
{
    BoundInsert insert(m_db, QStringLiteral("Produzione"),
                       {QStringLiteral("Tipo"), QStringLiteral("Codice_A"), QStringLiteral("Codice_P"),
                        QStringLiteral("Qta_P")});
    const int firstAssembled = static_cast<int>(m_articles.size() - std::size(kAssemblies));
    for (std::size_t a = 0; a < std::size(kAssemblies); ++a) {
        const Assembly& assembly = kAssemblies[a];
        const QString& boxCode = m_articles[firstAssembled + a].code;
        for (std::size_t c = 0; c < assembly.components.size() && assembly.components[c]; ++c) {
            const QString component = text(assembly.components[c]);
            indexOfCode(component); // a typo in the table must not reach the database
            insert.run(QVariantList{QStringLiteral("P"), boxCode, component, assembly.quantities[c]});
        }
    }
}

void Generator::writeCustomers()
{
    const int count = std::max(0, m_options.customers);
    std::vector<QString> names;
    for (const char* fixed : kFirstCustomers)
        names.push_back(text(fixed));
    std::vector<QString> combinations;
    for (const char* surname : kSurnames) {
        for (const char* first : kMaleNames)
            combinations.push_back(QStringLiteral("%1 %2").arg(text(surname), text(first)));
        for (const char* first : kFemaleNames)
            combinations.push_back(QStringLiteral("%1 %2").arg(text(surname), text(first)));
    }
    m_dice.shuffle(combinations);
    // Past the distinct combinations the names repeat, as homonyms do in a large customer base.
    for (std::size_t i = 0; names.size() < static_cast<std::size_t>(count); ++i) {
        const QString& candidate = combinations[i % combinations.size()];
        if (i >= combinations.size() || !isFirstCustomer(candidate))
            names.push_back(candidate);
    }
    names.resize(static_cast<std::size_t>(count));

    BoundInsert insert(m_db, QStringLiteral("controparti"), partyColumns(), true);
    std::vector<int> townWeights;
    for (const Town& town : kTowns)
        townWeights.push_back(town.weight);
    for (int i = 0; i < count; ++i) {
        const Town& town = kTowns[m_dice.weighted(townWeights)];
        Party party;
        party.code = QStringLiteral("C%1").arg(i + 1, 5, 10, QLatin1Char('0'));
        party.name = names[static_cast<std::size_t>(i)];
        party.address = streetAddress();
        party.cap = text(town.cap);
        party.town = text(town.name);
        party.province = text(town.province);
        party.phone = m_dice.chance(70)
                          ? QVariant(QStringLiteral("%1 %2").arg(text(town.area), m_dice.digits(7)))
                          : nullText();
        party.mobile = m_dice.chance(85) ? QVariant(mobileNumber()) : QVariant(QStringLiteral(""));
        const int emailRoll = m_dice.between(1, 100);
        if (emailRoll <= 20)
            party.email = nullText();
        else if (emailRoll <= 30)
            party.email = QStringLiteral("");
        else
            party.email = emailOf(party.name);
        const QVariantList row{
            QStringLiteral("C"), party.code,        party.name,   party.address, party.cap, party.town,
            party.province,      party.phone,       party.mobile, party.email,   1,         nullNumber(),
            nullText(),          QStringLiteral("")};
        party.rowid = insert.run(row);
        m_customers.push_back(party);
    }
}

QString Generator::emailOf(const QString& name)
{
    // "De Luca Anna" -> anna.deluca@example.it: surname words first, given name last.
    const QStringList words = name.toLower().split(QLatin1Char(' '), Qt::SkipEmptyParts);
    QString surname;
    for (qsizetype w = 0; w + 1 < words.size(); ++w)
        surname += words[w];
    surname.remove(QLatin1Char('\''));
    const QString domain = m_dice.chance(60) ? QStringLiteral("example.it") : QStringLiteral("example.com");
    return QStringLiteral("%1.%2@%3").arg(words.isEmpty() ? QString() : words.last(), surname, domain);
}

namespace {

bool hasRows(Database& db, const QString& table)
{
    QSqlQuery query = db.executeBound(QStringLiteral("select 1 from %1 limit 1").arg(table));
    return query.next();
}

} // namespace

DemoSummary fillDemoData(Database& db, const DemoOptions& options)
{
    if (!options.today.isValid())
        throw RuntimeError(ErrorNumber::InvalidProcedureCall,
                           QStringLiteral("Data di riferimento non valida"));
    if (options.customers < 1)
        throw RuntimeError(ErrorNumber::InvalidProcedureCall,
                           QStringLiteral("Servono almeno un cliente per i dati dimostrativi"));
    for (const QString& table :
         {QStringLiteral("movimenti"), QStringLiteral("med"), QStringLiteral("controparti")}) {
        if (hasRows(db, table))
            throw RuntimeError(ErrorNumber::DatabaseError,
                               QStringLiteral("I dati dimostrativi vanno in un database vuoto: la tabella %1 "
                                              "contiene già dei record")
                                   .arg(table));
    }
    Transaction transaction(db);
    DemoSummary summary = Generator(db, options).run();
    transaction.commit();
    return summary;
}

int demoOrdersForRows(qint64 movimentiRows)
{
    // Deliveries: each supplier's first one lists its whole range, the others two to five articles.
    double deliveryRows = 0;
    for (int s = 0; s < static_cast<int>(std::size(kSuppliers)); ++s) {
        int range = 0;
        for (const CatalogueEntry& entry : kCatalogue)
            range += entry.supplier == s ? 1 : 0;
        double later = 0;
        for (int lines = 2; lines <= 5; ++lines)
            later += std::min(lines, range) / 4.0;
        deliveryRows += range + (kDeliveriesPerSupplier - 1) * later;
    }
    const double orders = std::round((static_cast<double>(movimentiRows) - deliveryRows) / kAverageLines);
    return static_cast<int>(std::clamp(orders, 1.0, 1.0e9));
}

} // namespace xv::demo
