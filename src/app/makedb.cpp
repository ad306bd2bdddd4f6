// SPDX-License-Identifier: MIT
// xvelario-makedb: builds a demonstration database, for trying the program and for measuring it on
// large archives.
#include "app/ToolOutput.h"
#include "common/PrivateFiles.h"
#include "common/RuntimeError.h"
#include "data/Database.h"
#include "data/Schema.h"
#include "demo/DemoData.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>

#include <cstdio>

using xv::app::kExitFailure;
using xv::app::kExitUsage;
using xv::app::say;
using xv::app::usageError;

namespace {

bool readPositive(const QCommandLineParser& parser, const QCommandLineOption& option, qint64& value)
{
    bool ok = false;
    value = parser.value(option).toLongLong(&ok);
    return ok && value > 0;
}

// A half-built file is worse than none: the next run would refuse to overwrite it.
void removeSqliteFiles(const QString& path)
{
    for (const QString& suffix :
         {QString(), QStringLiteral("-wal"), QStringLiteral("-shm"), QStringLiteral("-journal")})
        QFile::remove(path + suffix);
}

} // namespace

int main(int argc, char** argv)
{
    // A demo shop is a shop's database all the same: its file is the owner's alone.
    xv::common::restrictNewFilesToOwner();
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("xvelario-makedb"));

    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "Crea un database dimostrativo di xVELARIO: catalogo di bomboniere, confetti, astucci, fazzoletti e "
        "biglietti, clienti, fornitori con i loro agenti, DDT dei fornitori e tre anni di commissioni "
        "(dal primo gennaio di due anni fa a oggi), numerati da 1 ogni anno.\n"
        "Senza --pg crea un NUOVO file SQLite e rifiuta di sovrascriverne uno esistente (uscita 2).\n"
        "Con --rows N il numero di commissioni è calcolato in anticipo: (N - righe dei DDT fornitori) / 3,5, "
        "la media fissa di righe per commissione; movimenti arriva così a circa N righe, non esattamente.\n"
        "Uscita: 0 riuscito, 1 errore, 2 uso errato o file già esistente."));
    parser.addHelpOption();
    const QCommandLineOption rowsOption(QStringLiteral("rows"),
                                        QStringLiteral("Righe di movimenti desiderate (circa)."),
                                        QStringLiteral("N"));
    const QCommandLineOption ordersOption(QStringLiteral("orders"),
                                          QStringLiteral("Numero di commissioni (predefinito 300)."),
                                          QStringLiteral("N"));
    const QCommandLineOption seedOption(
        QStringLiteral("seed"), QStringLiteral("Seme dei numeri casuali: lo stesso seme dà gli stessi dati."),
        QStringLiteral("S"));
    const QCommandLineOption todayOption(QStringLiteral("today"),
                                         QStringLiteral("Data di riferimento aaaa-mm-gg (predefinita oggi)."),
                                         QStringLiteral("DATA"));
    const QCommandLineOption customersOption(QStringLiteral("customers"),
                                             QStringLiteral("Numero di clienti (predefinito 80)."),
                                             QStringLiteral("N"));
    const QCommandLineOption pgOption(
        QStringLiteral("pg"),
        QStringLiteral("Riempie un database PostgreSQL esistente e vuoto invece di creare un file SQLite, "
                       "ad esempio --pg \"host=127.0.0.1 port=5432 user=bomboniere dbname=bomboniere\"."),
        QStringLiteral("CONNESSIONE"));
    parser.addOptions({rowsOption, ordersOption, seedOption, todayOption, customersOption, pgOption});
    parser.addPositionalArgument(QStringLiteral("FILE.db"), QStringLiteral("Il file SQLite da creare."));
    parser.process(app);

    xv::demo::DemoOptions options;
    qint64 number = 0;
    if (parser.isSet(rowsOption) && parser.isSet(ordersOption))
        return usageError(QStringLiteral("--rows e --orders si escludono a vicenda"));
    if (parser.isSet(rowsOption)) {
        if (!readPositive(parser, rowsOption, number))
            return usageError(QStringLiteral("--rows vuole un numero intero positivo"));
        options.orders = xv::demo::demoOrdersForRows(number);
    }
    if (parser.isSet(ordersOption)) {
        if (!readPositive(parser, ordersOption, number) || number > 1'000'000'000)
            return usageError(QStringLiteral("--orders vuole un numero intero positivo"));
        options.orders = static_cast<int>(number);
    }
    if (parser.isSet(seedOption)) {
        bool ok = false;
        options.seed = parser.value(seedOption).toUInt(&ok);
        if (!ok)
            return usageError(QStringLiteral("--seed vuole un intero senza segno a 32 bit"));
    }
    if (parser.isSet(todayOption)) {
        options.today = QDate::fromString(parser.value(todayOption), Qt::ISODate);
        if (!options.today.isValid())
            return usageError(QStringLiteral("--today vuole una data aaaa-mm-gg"));
    }
    if (parser.isSet(customersOption)) {
        if (!readPositive(parser, customersOption, number) || number > 1'000'000)
            return usageError(QStringLiteral("--customers vuole un numero intero positivo"));
        options.customers = static_cast<int>(number);
    }

    const QStringList files = parser.positionalArguments();
    xv::data::ConnectionConfig config;
    QString createdFile;
    try {
        if (parser.isSet(pgOption)) {
            if (!files.isEmpty())
                return usageError(QStringLiteral("con --pg non si indica un file"));
            config = xv::data::ConnectionConfig::fromText(parser.value(pgOption));
            if (config.engine != xv::data::Engine::PostgreSQL)
                return usageError(QStringLiteral("--pg vuole una connessione PostgreSQL"));
        } else {
            if (files.size() != 1)
                return usageError(QStringLiteral("indicare un solo file SQLite da creare"));
            if (QFileInfo::exists(files.first()))
                return usageError(
                    QStringLiteral("il file %1 esiste già e non viene sovrascritto").arg(files.first()));
            config = xv::data::ConnectionConfig::fromText(QStringLiteral("sqlite:") + files.first());
            createdFile = files.first();
        }
    } catch (const xv::common::RuntimeError& e) {
        return usageError(e.description());
    }

    int lastPercent = -1;
    options.progress = [&lastPercent](int done, int total) {
        const int percent = total > 0 ? static_cast<int>(qint64(done) * 100 / total) : 100;
        if (percent != lastPercent) {
            lastPercent = percent;
            say(stderr, QStringLiteral("\rcommissioni: %1%").arg(percent, 3));
        }
    };

    QElapsedTimer clock;
    clock.start();
    xv::demo::DemoSummary summary;
    try {
        xv::data::Database db(config);
        if (config.engine == xv::data::Engine::SQLite) {
            // A throwaway build: a larger page cache keeps the indexes of a million rows in memory.
            db.executeBound(QStringLiteral("PRAGMA cache_size=-262144"));
        }
        xv::data::migrate(db);
        summary = xv::demo::fillDemoData(db, options);
        xv::data::refreshPlannerStatistics(db);
    } catch (const std::exception& e) {
        if (lastPercent >= 0)
            say(stderr, QStringLiteral("\n"));
        const auto* runtime = dynamic_cast<const xv::common::RuntimeError*>(&e);
        say(stderr, QStringLiteral("xvelario-makedb: %1\n")
                        .arg(runtime ? runtime->description() : QString::fromLocal8Bit(e.what())));
        if (!createdFile.isEmpty())
            removeSqliteFiles(createdFile);
        return kExitFailure;
    }
    if (lastPercent >= 0)
        say(stderr, QStringLiteral("\n"));
    say(stdout, QStringLiteral("%1: %2 articoli, %3 clienti, %4 fornitori, %5 agenti, %6 commissioni, "
                               "%7 righe in movimenti in %8 s\n")
                    .arg(config.describe())
                    .arg(summary.articles)
                    .arg(summary.customers)
                    .arg(summary.suppliers)
                    .arg(summary.agents)
                    .arg(summary.orders)
                    .arg(summary.movimentiRows)
                    .arg(double(clock.elapsed()) / 1000.0, 0, 'f', 1));
    return 0;
}
