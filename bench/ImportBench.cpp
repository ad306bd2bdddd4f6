// SPDX-License-Identifier: MIT
// A shop's whole catalogue of 100,000 articles brought in from a spreadsheet's CSV (';', decimal commas,
// quoted descriptions, a supplier each) into an empty SQLite database: timed from the file on disk until the
// transaction is committed, reading, checks and writing included. Each iteration starts from a new empty
// database, made outside the timing.
#include "data/Database.h"
#include "data/Import.h"
#include "data/Schema.h"

#include <benchmark/benchmark.h>

#include <QFile>
#include <QTemporaryDir>

namespace {

using namespace xv;

constexpr int kArticles = 100'000;

QByteArray catalogue()
{
    QByteArray file = "codice;descrizione;categoria;tipo;um;prezzo_vendita;prezzo_acquisto;quantita_reale;"
                      "quantita_disponibile;quantita_ordinata;quantita_impegnata;fornitore\n";
    for (int i = 1; i <= kArticles; ++i) {
        const QByteArray n = QByteArray::number(i);
        file += "ART" + n.rightJustified(6, '0') + ";\"Bomboniera n. " + n + ", porcellana \"\"Cuore\"\"\";" +
                "BOMBONIERE;S;PZ;" + QByteArray::number(1000 + i % 900) + "," + QByteArray::number(i % 100) +
                ";" + QByteArray::number(i % 500) + ",50;" + QByteArray::number(i % 700) + ";" +
                QByteArray::number(i % 600) + ";0;" + QByteArray::number(i % 100) + ";F" +
                QByteArray::number(i % 20) + "\n";
    }
    return file;
}

void importHundredThousandArticlesSqlite(benchmark::State& state)
{
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("catalogo.csv"));
    {
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly) || file.write(catalogue()) < 0) {
            state.SkipWithError("cannot write the catalogue file");
            return;
        }
    }
    int run = 0;
    for (auto _ : state) {
        state.PauseTiming();
        const auto config = data::ConnectionConfig::fromText(QStringLiteral("sqlite:") +
                                                             dir.filePath(QStringLiteral("db%1").arg(++run)));
        auto db = std::make_unique<data::Database>(config);
        data::migrate(*db);
        for (int s = 0; s < 20; ++s)
            db->executeBound(
                QStringLiteral("insert into controparti (tipocontroparte, Code, ragsoc) values ('F', ?, ?)"),
                {QStringLiteral("F%1").arg(s), QStringLiteral("Fornitore %1").arg(s)});
        state.ResumeTiming();
        const data::ImportResult result = data::importFile(*db, data::ImportTable::Articoli, path);
        if (!result.ok() || result.added != kArticles) {
            state.SkipWithError(qUtf8Printable(result.faults.value(0).text()));
            return;
        }
        state.PauseTiming();
        db.reset();
        state.ResumeTiming();
    }
}
BENCHMARK(importHundredThousandArticlesSqlite)->Unit(benchmark::kMillisecond)->Iterations(3);

} // namespace
