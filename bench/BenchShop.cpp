// SPDX-License-Identifier: MIT
#include "BenchShop.h"
#include "RawEngine.h"

#include "common/Dates.h"
#include "data/Database.h"
#include "data/Recordset.h"
#include "host/Dialogs.h"
#include "host/Services.h"

#include <QCoreApplication>
#include <QFile>
#include <QSqlQuery>

#include <memory>
#include <stdexcept>

namespace xv::bench {

namespace {

// The references that mark the benchmark's own order, so that a database it ran in before is reused.
const QString kBenchReferences = QStringLiteral("banco di prova");

// An order the benchmark writes: a new order this year for the customer, of the lines given, numbered by
// this year's counter as a saved order would be and marked by its references. Answers its number; a database
// that holds an order with those references and that customer already keeps it as it is.
QString writeOrder(data::Database& db, const QDate& date, const QString& customer, int lineCount,
                   const QString& references)
{
    const QString year = QString::number(date.year());
    QSqlQuery found = db.executeBound(
        QStringLiteral("select numero from movimenti where documento='COMM' and serie=? and riferimenti=? "
                       "and Nominativo=?"),
        {year, references, customer});
    if (found.next())
        return found.value(0).toString();
    data::Recordset counter = data::Recordset::open(
        db, QStringLiteral("select numero from numeratori where codtipodoc='CO' and serie='") + year +
                QStringLiteral("'"));
    if (counter.eof())
        db.executeBound(QStringLiteral("insert into numeratori (codtipodoc, tipodocumento, serie, numero) "
                                       "values ('CO', 'COMM', ?, 0)"),
                        {year});
    const QString orderNumber = QString::number(counter.eof() ? 1 : counter.number(QStringLiteral("numero")) + 1, 'f', 0);
    db.executeBound(QStringLiteral("update numeratori set numero=? where codtipodoc='CO' and serie=?"),
                    {orderNumber.toInt(), year});
    data::Transaction transaction(db);
    data::Recordset t = data::Recordset::openTable(db, QStringLiteral("movimenti"));
    for (int line = 0; line < lineCount; ++line) {
        t.addNew();
        for (const char* text : {"Descrizione2", "codenominativo", "Indirizzo", "Cap", "comune", "Spedizione",
                                 "provincia", "telefono", "attrib00", "attrib01", "attrib02", "attrib03",
                                 "attrib09", "Tipo", "pagamento"})
            t.setValue(QString::fromLatin1(text), QString());
        for (const char* number :
             {"rowid_utente", "rowid_testata", "rowid_deposito", "rowid_med", "rowid_controparti", "sconto1",
              "sconto2", "codice_iva", "percentuale", "Rowid_Pagamento"})
            t.setValue(QString::fromLatin1(number), 0);
        for (const char* when : {"datareg", "oradal", "oraal", "Datadal", "Dataal", "attrib05"})
            t.setValue(QString::fromLatin1(when), date.startOfDay());
        const common::Money price = common::Money::fromRaw(115000);
        t.setMoney(QStringLiteral("prezzo"), price);
        t.setMoney(QStringLiteral("prezzo2"), common::Money());
        t.setMoney(QStringLiteral("imponibile"), common::Money::fromRaw(115000LL * (1 + line % 120)));
        t.setMoney(QStringLiteral("imposta"), common::Money());
        t.setMoney(QStringLiteral("totale"), common::Money::fromRaw(115000LL * (1 + line % 120)));
        t.setValue(QStringLiteral("Riga"), line + 1);
        t.setValue(QStringLiteral("Tipogestione"), QStringLiteral("0"));
        t.setValue(QStringLiteral("Tipomovimento"), QStringLiteral("CO"));
        t.setValue(QStringLiteral("documento"), QStringLiteral("COMM"));
        t.setValue(QStringLiteral("numero"), orderNumber);
        t.setValue(QStringLiteral("serie"), QString::number(date.year()));
        t.setValue(QStringLiteral("datadocumento"), date);
        t.setValue(QStringLiteral("StatoRiga"),
                   line % 3 ? QStringLiteral("EMESSO") : QStringLiteral("RITIRATO"));
        t.setValue(QStringLiteral("Nominativo"), customer);
        t.setValue(QStringLiteral("attrib04"), QStringLiteral("Matrimonio"));
        t.setValue(QStringLiteral("attrib06"), QStringLiteral("Marco e Giulia"));
        t.setValue(QStringLiteral("codice_med"),
                   QStringLiteral("BNC%1").arg(line % 100, 3, 10, QLatin1Char('0')));
        t.setValue(QStringLiteral("Descrizione1"), QStringLiteral("Bomboniera portaconfetti in porcellana"));
        t.setValue(QStringLiteral("qta"), 1 + line % 120);
        t.setValue(QStringLiteral("note"), common::shortDate(date)); // the line's own pick-up date
        t.setValue(QStringLiteral("riferimenti"), references);
        t.update();
    }
    transaction.commit();
    return orderNumber;
}

// The articles of the order's lines in the shop's list, and one more that the order does not hold yet.
void writeArticles(data::Database& db)
{
    if (!data::Recordset::open(db, QStringLiteral("select rowid from med where codice='NUOVO1'")).eof())
        return;
    data::Transaction transaction(db);
    for (int article = 0; article <= 100; ++article) {
        const QString code = article < 100 ? QStringLiteral("BNC%1").arg(article, 3, 10, QLatin1Char('0'))
                                           : QStringLiteral("NUOVO1");
        db.executeBound(
            QStringLiteral("insert into med (codice, descrizione, prezzo_vendita, quantita_reale, "
                           "quantita_disponibile) values (?, ?, '11.5000', 500, 400)"),
            {code, QStringLiteral("Bomboniera portaconfetti in porcellana")});
    }
    transaction.commit();
}

// The shop's own colours, kept in its settings as the configuration window writes them.
void writeColours(host::Host& h)
{
    const std::pair<const char*, const char*> colours[] = {{"Bloccato", "&HEBF0F5"},
                                                           {"Disabilitato", "&HD0D0D0"},
                                                           {"Inattivo", "&HE8E8E8"},
                                                           {"Ritirato", "&H207000"},
                                                           {"Emesso", "&H903C00"}};
    for (const auto& [key, value] : colours)
        h.SaveSetting(QStringLiteral("Colori"), QString::fromLatin1(key), QString::fromLatin1(value),
                      QStringLiteral("eKELA"));
}

// With XV_BENCH_DB naming a large shop (xvelario-makedb), the benchmarks run in a copy of it, made once
// per run, so that the shop's own file is never written to.
QString largeShopCopy()
{
    static QTemporaryDir dir;
    static QString copy;
    const QString source = qEnvironmentVariable("XV_BENCH_DB");
    if (source.isEmpty() || !copy.isEmpty())
        return copy;
    const QString target = dir.path() + QStringLiteral("/grande.db");
    if (QFile::copy(source, target))
        copy = target;
    else
        qWarning("XV_BENCH_DB: cannot copy %s", qPrintable(source));
    return copy;
}

// With XV_BENCH_PG naming a PostgreSQL database filled by xvelario-makedb --pg, the benchmarks run in a copy
// of it, made once per run from it as a template and dropped when the run ends, so that the shop's own
// database is never written to. Copying needs the CREATEDB right and nobody else connected to the source.
// Answers the copy's connection text, or throws.
class PgCopy
{
public:
    PgCopy()
    {
        const QString source = qEnvironmentVariable("XV_BENCH_PG");
        if (source.isEmpty()) {
            m_error = QStringLiteral("XV_BENCH_PG is not set");
            return;
        }
        try {
            m_server = data::ConnectionConfig::fromText(source);
            const QString name = QStringLiteral("xv_bench_%1").arg(QCoreApplication::applicationPid());
            runOnPostgresServer(
                m_server,
                QStringLiteral("create database %1 template \"%2\"").arg(name, m_server.databaseName));
            m_name = name;
        } catch (const std::exception& e) {
            m_error = QString::fromUtf8(e.what());
        }
    }
    ~PgCopy()
    {
        if (m_name.isEmpty())
            return;
        try {
            runOnPostgresServer(m_server,
                                QStringLiteral("drop database if exists %1 with (force)").arg(m_name));
        } catch (const std::exception& e) {
            qWarning("XV_BENCH_PG: %s", e.what());
        }
    }
    PgCopy(const PgCopy&) = delete;
    PgCopy& operator=(const PgCopy&) = delete;

    // The copy's connection text; throws when there is no copy.
    QString connectionText() const
    {
        if (m_name.isEmpty())
            throw std::runtime_error(m_error.toStdString());
        QString text =
            QStringLiteral("host=%1 port=%2 dbname=%3").arg(m_server.host).arg(m_server.port).arg(m_name);
        for (const auto& [key, value] :
             {std::pair{"user", m_server.user}, std::pair{"password", m_server.password},
              std::pair{"schema", m_server.schema}}) {
            if (!value.isEmpty())
                text += QStringLiteral(" %1=%2").arg(QString::fromLatin1(key), value);
        }
        return text;
    }

private:
    data::ConnectionConfig m_server;
    QString m_name;
    QString m_error;
};

QString largePgCopy()
{
    static const PgCopy copy;
    return copy.connectionText();
}

} // namespace

BenchShop::BenchShop(data::Engine engine)
{
    host::HostOptions options;
    options.dataPath = m_dir.path() + QLatin1Char('/');
    if (engine == data::Engine::PostgreSQL) {
        try {
            options.connectionText = largePgCopy();
        } catch (const std::exception& e) {
            m_failure = QString::fromUtf8(e.what());
            return;
        }
    } else {
        const QString large = largeShopCopy();
        options.connectionText = QStringLiteral("sqlite:") +
                                 (large.isEmpty() ? m_dir.path() + QStringLiteral("/bench.db") : large);
    }
    options.fillDemoData = false;
    m_connectionText = options.connectionText.value_or(QString());
    options.userName = QStringLiteral("bench");
    options.stationName = QStringLiteral("BANCO1");
    auto owned = std::make_unique<host::Host>(options);
    if (!owned->Initialize()) {
        m_failure = QStringLiteral("the database could not be opened");
        return;
    }
    m_host = owned.get();
    host::setHost(std::move(owned));
    host::setFormSettings(
        std::make_unique<host::IniFormSettings>(options.dataPath + QStringLiteral("finestre.ini")));
    host::Dialogs::setMessageHandler([this](const host::MessageRequest& request) {
        if (!m_expected.empty() && request.text.contains(m_expected.front().first)) {
            const host::Answer answer = m_expected.front().second;
            m_expected.pop_front();
            return answer;
        }
        ++m_boxes;
        m_lastBox = request.text;
        return host::Answer::No;
    });
    m_number = writeOrder(m_host->GetConnection(), QDate(QDate::currentDate().year(), 3, 14),
                          QStringLiteral("Rossi Maria"), kLines, kBenchReferences);
    writeArticles(m_host->GetConnection());
    writeColours(*m_host);
}

void BenchShop::writeCustomerOrders(const QString& customer, int orders)
{
    for (int order = 0; order < orders; ++order)
        writeOrder(m_host->GetConnection(), QDate(QDate::currentDate().year() - 3, 2, 1 + order), customer, 2,
                   QStringLiteral("banco di prova %1").arg(order + 1));
}

void BenchShop::expectMessage(const QString& containing, host::Answer answer)
{
    m_expected.emplace_back(containing, answer);
}

BenchShop::~BenchShop()
{
    host::Dialogs::setMessageHandler({});
    host::resetServices();
}

} // namespace xv::bench
