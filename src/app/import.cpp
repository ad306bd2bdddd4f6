// SPDX-License-Identifier: MIT
// xvelario-import: brings the catalogue, the customers, the suppliers or the agents in from the CSV a
// spreadsheet writes, into the database the program itself opens.
#include "data/Import.h"
#include "app/ToolOutput.h"
#include "common/PrivateFiles.h"
#include "common/RuntimeError.h"
#include "host/Host.h"

#include <QCommandLineParser>
#include <QCoreApplication>

#include <cstdio>

#include <unistd.h>

using xv::app::kExitFailure;
using xv::app::kExitUsage;
using xv::app::say;
using xv::app::usageError;

namespace {

// More faults than this on a terminal are read by nobody: the count of the rest tells the size.
constexpr int kFaultsShown = 100;

} // namespace

int main(int argc, char** argv)
{
    // The database it may create, and the program's log, are the owner's alone.
    xv::common::restrictNewFilesToOwner();
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("xvelario-import"));

    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "Importa in xVELARIO il catalogo (articoli), i clienti, i fornitori o gli agenti da un file CSV "
        "salvato da un foglio di calcolo (separatore ';' o ',', UTF-8 o Windows-1252, importi con la "
        "virgola decimale). Le colonne si riconoscono dall'intestazione. Un codice già presente viene "
        "aggiornato, uno nuovo aggiunto; basta una riga rifiutata perché non si scriva nulla.\n"
        "Il database è quello del programma: XVELARIO_DB, altrimenti xvelario.conf nella cartella dei dati "
        "(XVELARIO_DATA), altrimenti il file incorporato.\n"
        "Uscita: 0 tutto importato (o, con --dry-run, tutto importabile), 1 righe rifiutate o errore, "
        "2 uso errato."));
    parser.addHelpOption();
    const QCommandLineOption dryRunOption(QStringLiteral("dry-run"),
                                          QStringLiteral("Controlla tutto il file senza scrivere nulla."));
    parser.addOption(dryRunOption);
    parser.addPositionalArgument(QStringLiteral("TABELLA"),
                                 QStringLiteral("articoli, clienti, fornitori o agenti."));
    parser.addPositionalArgument(QStringLiteral("FILE"), QStringLiteral("Il file CSV da importare."));
    parser.process(app);

    const QStringList arguments = parser.positionalArguments();
    if (arguments.size() != 2)
        return usageError(QStringLiteral("indicare la tabella e il file"));
    const std::optional<xv::data::ImportTable> table = xv::data::importTableNamed(arguments[0]);
    if (!table)
        return usageError(QStringLiteral("tabella sconosciuta \"%1\": articoli, clienti, fornitori o agenti")
                              .arg(arguments[0]));
    const bool dryRun = parser.isSet(dryRunOption);

    // The database is found as the program finds it; a new one gets no demo shop.
    xv::host::HostOptions options = xv::host::HostOptions::fromEnvironment();
    options.fillDemoData = false;
    xv::host::Host host(options);
    if (!host.Initialize())
        return kExitFailure;

    xv::data::ImportOptions importOptions;
    importOptions.dryRun = dryRun;
    int lastPercent = -1;
    // The percentage rewrites its own line: only a terminal shows that as meant.
    if (isatty(STDERR_FILENO))
        importOptions.progress = [&lastPercent](qint64 done, qint64 total) {
            const int percent = total > 0 ? static_cast<int>(done * 100 / total) : 100;
            if (percent != lastPercent) {
                lastPercent = percent;
                say(stderr, QStringLiteral("\rscrittura: %1%").arg(percent, 3));
            }
        };
    xv::data::ImportResult result;
    try {
        result = xv::data::importFile(host.GetConnection(), *table, arguments[1], importOptions);
    } catch (...) {
        const xv::common::ErrorInfo info = xv::common::describe(std::current_exception());
        if (lastPercent >= 0)
            say(stderr, QStringLiteral("\n"));
        say(stderr, QStringLiteral("xvelario-import: importazione non riuscita, nulla è stato scritto: %1\n")
                        .arg(info.description));
        return kExitFailure;
    }
    if (lastPercent >= 0)
        say(stderr, QStringLiteral("\n"));
    for (const QString& line : xv::data::importFaultLines(result.faults, kFaultsShown))
        say(stderr, line + QLatin1Char('\n'));
    say(stdout, xv::data::importSummary(result, dryRun) + QLatin1Char('\n'));
    return result.ok() ? 0 : kExitFailure;
}
