// SPDX-License-Identifier: MIT
// One workstation in a process of its own, for the tests that run several at once or kill one half-way
// through a save. It saves new orders through the program's own code, one step for each command it reads:
//   propose  reads the number a new order is proposed, as the form does, and prints "proposed <number>";
//   save     saves an order of that number and prints "saved <number> <milliseconds>".
// Arguments: the connection text, the lines of each order, and the name its customers start with.
#include "common/Money.h"
#include "common/RuntimeError.h"
#include "host/Host.h"
#include "lines/GridColumns.h"
#include "orders/ModuleSettings.h"
#include "orders/NewLine.h"
#include "orders/OrderSave.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QLocale>
#include <QTemporaryDir>
#include <QTextStream>

#include <cstdio>

using namespace xv;

namespace {

// An order as the form holds it when the operator saves: its lines entered one by one, the header copied.
orders::OrderWrite newOrder(host::Host& h, const orders::NumberProposal& proposal, const QString& customer,
                            int lineCount)
{
    const orders::ModuleSettings settings = orders::readModuleSettings(h);
    orders::Order order;
    order.idnumeratore = proposal.counterKey;
    order.tipogestione = settings.tipogestione;
    order.tipomovimento = settings.tipomovimento;
    order.documento = proposal.documento;
    order.numero = proposal.numero;
    order.serie = proposal.serie;
    order.datadocumento = QDate::currentDate().startOfDay();
    order.customer.nominativo = customer;

    orders::LineEntry entry;
    entry.codice = QStringLiteral("BOM001");
    entry.rowidArticolo = QStringLiteral("1");
    entry.qta = QStringLiteral("2");
    entry.prezzo = QStringLiteral("8");
    entry.totaleRiga = QStringLiteral("16");
    entry.acconto = QStringLiteral("0");
    entry.dataRitiro = entry.dataRitiro1 = entry.dataEvento = QStringLiteral("20/06/2027");
    entry.tipoEvento = QStringLiteral("Matrimonio");
    entry.soggettiEvento = QStringLiteral("Marco e Giulia");

    orders::OrderWrite write;
    const data::Recordset columns = h.OpenSchema(4, QStringLiteral("movimenti"));
    for (data::Recordset c = columns; !c.eof(); c.moveNext()) {
        write.grid.names << c.text(QStringLiteral("Column"));
        write.grid.typeCodes << static_cast<int>(c.number(QStringLiteral("Type")));
    }
    orders::LineContext context;
    context.now = QDateTime::currentDateTime();
    for (int i = 0; i < lineCount; ++i) {
        entry.descrizione = QStringLiteral("Bomboniera n. %1").arg(i + 1);
        context.gridRow = lines::FirstDataRow + i;
        write.grid.lines << orders::newLineCells(entry, order, settings, context);
    }
    order.datadal = entry.dataRitiro1;
    order.tipoEvento = entry.tipoEvento;
    order.dataEvento = entry.dataEvento;
    order.soggettiEvento = entry.soggettiEvento;
    orders::copyHeader(write.grid.lines, order, context.now);
    write.key = order.orderKey();
    write.idnumeratore = proposal.counterKey;
    write.totale = common::Money::fromInteger(16LL * lineCount);
    return write;
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    QLocale::setDefault(QLocale(QLocale::Italian, QLocale::Italy));
    if (argc != 4) {
        std::fprintf(stderr, "uso: %s <connessione> <righe> <cliente>\n", argv[0]);
        return 2;
    }
    const QString name = QString::fromLocal8Bit(argv[3]);
    const int lineCount = QString::fromLocal8Bit(argv[2]).toInt();
    QTemporaryDir data;
    host::HostOptions options;
    options.dataPath = data.path();
    options.connectionText = QString::fromLocal8Bit(argv[1]);
    options.fillDemoData = false;
    options.startCounters = false;
    options.userName = QStringLiteral("tester");
    options.stationName = name;
    host::Host h(options);
    if (!h.Initialize())
        return 3;

    QTextStream in(stdin);
    QTextStream out(stdout);
    orders::NumberProposal proposal;
    int saved = 0;
    QString command;
    try {
        while (in.readLineInto(&command)) {
            if (command == QLatin1String("propose")) {
                const auto next = orders::proposeNumber(h, orders::readModuleSettings(h).tipomovimento,
                                                        QDate::currentDate().year());
                if (!next)
                    throw common::RuntimeError(common::ErrorNumber::NoCurrentRecord,
                                               QStringLiteral("no counter"));
                proposal = *next;
                out << "proposed " << proposal.numero << Qt::endl;
            } else if (command == QLatin1String("save")) {
                QElapsedTimer timer;
                timer.start();
                orders::OrderWrite write =
                    newOrder(h, proposal, QStringLiteral("%1 ordine %2").arg(name).arg(++saved), lineCount);
                const orders::WriteResult result =
                    orders::writeOrder(h.GetConnection(), orders::WriteMode::Save, write, {});
                out << "saved " << result.numero << ' ' << timer.elapsed() << Qt::endl;
            }
        }
    } catch (...) {
        out << "error " << common::describe(std::current_exception()).description.simplified() << Qt::endl;
        return 4;
    }
    return 0;
}
