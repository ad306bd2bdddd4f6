// SPDX-License-Identifier: MIT
// A key typed into a header field of a thousand-line order, through the real form on a real database with
// the shop's colours in its settings: everything that runs between the key and the next frame.
#include "data/Database.h"
#include "data/Recordset.h"
#include "form/frm_Commissioni.h"
#include "host/Dialogs.h"
#include "host/Host.h"
#include "host/Services.h"

#include <benchmark/benchmark.h>

#include <QApplication>
#include <QDate>
#include <QLineEdit>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

namespace {

using namespace xv;

constexpr int kLines = 1000;
const QString kNumber = QStringLiteral("321");

void writeOrder(data::Database& db, const QDate& date)
{
    db.executeBound(QStringLiteral("insert into numeratori (codtipodoc, tipodocumento, serie, numero) "
                                   "values ('CO', 'COMM', ?, ?)"),
                    {QString::number(date.year()), kNumber.toInt()});
    data::Transaction transaction(db);
    data::Recordset t = data::Recordset::openTable(db, QStringLiteral("movimenti"));
    for (int line = 0; line < kLines; ++line) {
        t.addNew();
        for (const char* text : {"Descrizione2", "codenominativo", "Indirizzo", "Cap", "comune", "Spedizione",
                                 "provincia", "telefono", "attrib00", "attrib01", "attrib02", "attrib03",
                                 "attrib09", "Tipo", "note", "pagamento", "riferimenti"})
            t.setValue(QString::fromLatin1(text), QString());
        for (const char* number : {"rowid_utente", "rowid_testata", "rowid_deposito", "rowid_med",
                                   "rowid_controparti", "sconto1", "sconto2", "codice_iva", "percentuale",
                                   "Rowid_Pagamento"})
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
        t.setValue(QStringLiteral("numero"), kNumber);
        t.setValue(QStringLiteral("serie"), QString::number(date.year()));
        t.setValue(QStringLiteral("datadocumento"), date);
        t.setValue(QStringLiteral("StatoRiga"), line % 3 ? QStringLiteral("EMESSO") : QStringLiteral("RITIRATO"));
        t.setValue(QStringLiteral("Nominativo"), QStringLiteral("Rossi Maria"));
        t.setValue(QStringLiteral("attrib04"), QStringLiteral("Matrimonio"));
        t.setValue(QStringLiteral("attrib06"), QStringLiteral("Marco e Giulia"));
        t.setValue(QStringLiteral("codice_med"), QStringLiteral("BOM%1").arg(line % 100, 3, 10, QLatin1Char('0')));
        t.setValue(QStringLiteral("Descrizione1"), QStringLiteral("Bomboniera portaconfetti in porcellana"));
        t.setValue(QStringLiteral("qta"), 1 + line % 120);
        t.update();
    }
    transaction.commit();
}

// The shop's own colours, kept in its settings as the configuration window writes them.
void writeColours(host::Host& h)
{
    const std::pair<const char*, const char*> colours[] = {
        {"Bloccato", "&HEBF0F5"}, {"Disabilitato", "&HD0D0D0"}, {"Inattivo", "&HE8E8E8"},
        {"Ritirato", "&H207000"}, {"Emesso", "&H903C00"}};
    for (const auto& [key, value] : colours)
        h.SaveSetting(QStringLiteral("Colori"), QString::fromLatin1(key), QString::fromLatin1(value),
                      QStringLiteral("eKELA"));
}

void typeIntoAHeaderFieldOfAThousandLineOrder(benchmark::State& state)
{
    QTemporaryDir dir;
    host::HostOptions options;
    options.dataPath = dir.path() + QLatin1Char('/');
    options.connectionText = QStringLiteral("sqlite:") + dir.path() + QStringLiteral("/typing.db");
    options.fillDemoData = false;
    options.startCounters = false; // the order below brings its own counter
    options.userName = QStringLiteral("bench");
    options.stationName = QStringLiteral("BANCO1");
    auto owned = std::make_unique<host::Host>(options);
    host::Host& h = *owned;
    if (!h.Initialize()) {
        state.SkipWithError("the database could not be opened");
        return;
    }
    host::setHost(std::move(owned));
    host::setFormSettings(std::make_unique<host::IniFormSettings>(options.dataPath + QStringLiteral("finestre.ini")));
    int boxes = 0;
    host::Dialogs::setMessageHandler([&boxes](const host::MessageRequest&) {
        ++boxes;
        return host::Answer::No;
    });
    writeOrder(h.GetConnection(), QDate(QDate::currentDate().year(), 3, 14));
    writeColours(h);

    {
        form::frm_Commissioni form;
        form.resize(1366, 768);
        form.show();
        form.InitForm(0);
        QLineEdit* number = form.findChild<QLineEdit*>(QStringLiteral("txt_numeroCommissione"));
        QTest::keyClicks(number, kNumber);
        QTest::keyClick(number, Qt::Key_Return);
        QTest::keyClick(number, Qt::Key_F3); // modify the order shown: its header fields open
        QLineEdit* persons = form.findChild<QLineEdit*>(QStringLiteral("txt_soggettiEvento"));
        persons->setFocus();
        QApplication::processEvents();
        if (form.LineCount() != kLines || !persons->isEnabled()) {
            state.SkipWithError("the order did not open for changes");
        } else {
            bool adding = true;
            for (auto _ : state) {
                // A letter and its removal in turn, so the field stays the same size throughout.
                QTest::keyClick(persons, adding ? Qt::Key_A : Qt::Key_Backspace);
                adding = !adding;
            }
            state.counters["lines"] = static_cast<double>(form.LineCount());
        }
        if (boxes > 0)
            state.SkipWithError("a message box appeared");
    }
    host::Dialogs::setMessageHandler({});
    host::resetServices();
}
BENCHMARK(typeIntoAHeaderFieldOfAThousandLineOrder)->Unit(benchmark::kMillisecond)->Iterations(200);

} // namespace
