// SPDX-License-Identifier: MIT
// The print button's menus: control slips, the change of state of chosen orders, the cards list; and the
// import of the catalogue and the counterparts from a spreadsheet's CSV.
#include "frm_Commissioni.h"

#include "ui_frm_Commissioni.h"

#include "common/Conversions.h"
#include "common/Dates.h"
#include "data/Recordset.h"
#include "host/Dialogs.h"
#include "host/Feedback.h"
#include "host/PrintMailSettings.h"
#include "host/Report.h"
#include "host/Services.h"
#include "lines/FlexGrid.h"
#include "lines/GridColumns.h"
#include "orders/OrderSearch.h"
#include "orders/OrderSelections.h"
#include "printing/OrderChoice.h"

#include <QCursor>
#include <QFileDialog>
#include <QInputDialog>
#include <QLabel>
#include <QMenu>
#include <QMouseEvent>

#include <functional>

namespace xv::form {

using host::Answer;
using host::Buttons;
using host::Dialogs;
using host::Icon;

namespace {

// Tells which status-bar panel the operator clicked; the panels are plain labels.
class PanelClicks : public QObject
{
public:
    PanelClicks(QObject* parent, std::function<void(int)> clicked)
        : QObject(parent), m_clicked(std::move(clicked))
    {
    }
    void watch(QLabel* label, int panel)
    {
        label->setProperty("panel", panel);
        label->installEventFilter(this);
    }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() == QEvent::MouseButtonRelease &&
            static_cast<QMouseEvent*>(event)->button() == Qt::LeftButton)
            m_clicked(watched->property("panel").toInt());
        return QObject::eventFilter(watched, event);
    }

private:
    std::function<void(int)> m_clicked;
};

bool askYesNo(const QString& question)
{
    return Dialogs::message(question, Buttons::YesNo, Icon::Question, host::host().GetAppTitle()) ==
           Answer::Yes;
}

// The orders the operator chose among those of the source in a state (any state for an empty one), as the
// lists of numbers and series; empty when none came back.
orders::ChosenOrders chooseOrders(const orders::ModuleSettings& settings, const QString& state,
                                  const QString& caption)
{
    host::IListWindow& list = host::listWindow();
    const QString& source = settings.sql_Commissioni;
    bool confirmed = false;
    // The orders offered are those of the kind the change of state and the slips then take.
    if (orders::isOrderHeaderView(source))
        list.SelectFromPages(
            [state, kind = settings.tipomovimento](const QString& text, int limit,
                                                   const QVariantList& after) {
                return orders::orderChoiceSql(kind, state, text, limit,
                                              orders::nameLookupFor(host::host().GetConnection(), text),
                                              orders::choiceRowKey(after));
            },
            1, caption, confirmed);
    else
        list.SelectFromList(state.isEmpty() ? source : orders::statusChoiceSql(source, state), 1, caption,
                            confirmed);
    if (!confirmed)
        return {};
    data::Recordset rows = list.GetSelectedRows();
    if (rows.isEmpty())
        return {};
    return orders::chosenOrders(rows);
}

// What the operator is told when the slips asked for are not shown: no rows, or a selection that failed.
// Prints or previews slips, telling the operator when the selection found none or could not be read.
void tellSlipsFound(const std::function<int()>& print)
{
    host::IHost& h = host::host();
    try {
        if (print() == 0)
            Dialogs::message(
                QStringLiteral("Il risultato della selezione non ha restituito nessun elemento!"),
                Buttons::Ok, Icon::Information, h.GetAppTitle());
    } catch (const host::BadSelection&) {
        Dialogs::message(QStringLiteral("La composizione della ricerca non è corretta o mancano i parametri "
                                        "necessari!"),
                         Buttons::Ok, Icon::Exclamation, h.GetAppTitle());
    }
}

// The faults shown in the box: enough to mend the file by, with the count of the rest.
constexpr int kImportFaultsShown = 20;

std::optional<frm_Commissioni::ImportChoice> askImportChoice(QWidget* parent)
{
    const data::ImportTable tables[] = {data::ImportTable::Articoli, data::ImportTable::Clienti,
                                        data::ImportTable::Fornitori, data::ImportTable::Agenti};
    const QStringList captions{QStringLiteral("Articoli (catalogo)"), QStringLiteral("Clienti"),
                               QStringLiteral("Fornitori"), QStringLiteral("Agenti")};
    bool ok = false;
    const QString caption =
        QInputDialog::getItem(parent, QStringLiteral("Importa da file CSV"),
                              QStringLiteral("Che cosa importare?"), captions, 0, false, &ok);
    if (!ok)
        return std::nullopt;
    const QString path =
        QFileDialog::getOpenFileName(parent, QStringLiteral("File CSV da importare"), QString(),
                                     QStringLiteral("File CSV (*.csv *.txt);;Tutti i file (*)"));
    if (path.isEmpty())
        return std::nullopt;
    return frm_Commissioni::ImportChoice{tables[captions.indexOf(caption)], path};
}

frm_Commissioni::ImportChooser& importChooser()
{
    static frm_Commissioni::ImportChooser chooser;
    return chooser;
}

} // namespace

void frm_Commissioni::setImportChooser(ImportChooser chooser)
{
    importChooser() = std::move(chooser);
}

void frm_Commissioni::Documenti_Importa()
{
    host::IHost& h = host::host();
    const std::optional<ImportChoice> choice =
        importChooser() ? importChooser()(this) : askImportChoice(this);
    if (!choice)
        return;
    std::unique_ptr<host::Progress> bar;
    data::ImportOptions options;
    // The number of rows is known once the whole file has been read and checked.
    options.progress = [&bar](qint64 done, qint64 total) {
        if (!bar)
            bar = std::make_unique<host::Progress>(QStringLiteral("Importazione in corso..."), int(total));
        (*bar)(int(done));
    };
    data::ImportResult result;
    {
        const host::Busy wait;
        result = data::importFile(h.GetConnection(), choice->table, choice->path, options);
    }
    bar.reset();
    if (result.ok()) {
        Dialogs::message(data::importSummary(result, false), Buttons::Ok, Icon::Information, h.GetAppTitle());
        return;
    }
    Dialogs::message(data::importSummary(result, false) + QStringLiteral("\n\n") +
                         data::importFaultLines(result.faults, kImportFaultsShown).join(QLatin1Char('\n')),
                     Buttons::Ok, Icon::Exclamation, h.GetAppTitle());
}

void frm_Commissioni::setupMenuControls()
{
    for (QAction* button : {m_ui->act_PRINT, m_ui->act_FIND}) {
        if (QMenu* menu = button->menu())
            connect(menu, &QMenu::triggered, this,
                    [this](QAction* entry) { tbComandi_ButtonMenuClick(entry); });
    }
    auto* clicks = new PanelClicks(this, [this](int panel) { sBar_PanelClick(panel); });
    for (int panel = 1; panel <= m_panels.size(); ++panel)
        clicks->watch(m_panels.at(panel - 1), panel);
}

void frm_Commissioni::tbComandi_ButtonMenuClick(QAction* entry)
{
    const QString key = KeyedToolBar::keyOf(entry);
    try {
        if (key == QLatin1String("ECM")) {
            Documento_StampaRicevutaRitiro();
        } else if (key == QLatin1String("SCC")) {
            Documento_StampaCControllo(1);
        } else if (key == QLatin1String("ANTEPRIMA_ECM")) {
            Documento_AnteprimaEstratto();
        } else if (key == QLatin1String("ANTEPRIMA_SCC")) {
            Documento_AnteprimaCControllo();
        } else if (key == QLatin1String("SCC_INTERVALLO")) {
            Documenti_CO_StampaControllo();
        } else if (key == QLatin1String("LISTA_BIGLIETTINI")) {
            Documento_StampaBigliettini();
        } else if (key == QLatin1String("CO_RITIRATO")) {
            Documenti_StampaCControllo(QStringLiteral("EMESSO"), QStringLiteral("RITIRATO"));
        } else if (key == QLatin1String("CO_EMESSO")) {
            Documenti_StampaCControllo(QStringLiteral("RITIRATO"), QStringLiteral("EMESSO"));
        } else if (key == QLatin1String("config_comm")) {
            bool confirmed = false;
            host::listWindow().SelectFromList(key, 1, QStringLiteral("COMMISSIONI - CONFIGURA APP"),
                                              confirmed);
            GET_Impostazioni();
        } else if (key == QLatin1String("IMPOSTAZIONI_STAMPA_POSTA")) {
            host::openPrintMailWindow();
        } else if (key == QLatin1String("IMPORTA")) {
            Documenti_Importa();
        }
        // "REP_DES" and any other key: nothing, as the shop has always had it.
    } catch (...) {
        host::host().ReportError(QStringLiteral("tbComandi_ButtonMenuClick"), QStringLiteral("Voce: ") + key,
                                 true);
    }
}

void frm_Commissioni::Documenti_StampaCControllo(const QString& fromState, const QString& toState)
{
    try {
        m_chosen = chooseOrders(m_settings, fromState, printing::statusChoiceCaption(fromState, toState));
        if (!m_chosen.isEmpty() && askYesNo(printing::statusQuestion(toState)))
            orders::changeState(host::host(), fromState, toState, m_chosen, m_settings.tipomovimento);
    } catch (...) {
        host::host().ReportError(QStringLiteral("Documenti_StampaCControllo"), QString(), true);
    }
    m_chosen.clear();
}

void frm_Commissioni::Documenti_CO_StampaControllo()
{
    try {
        m_chosen = chooseOrders(m_settings, QString(),
                                QStringLiteral("Elenco delle Commissioni di cui stampare le righe"));
        if (!m_chosen.isEmpty())
            Documento_StampaCControllo(2);
    } catch (...) {
        host::host().ReportError(QStringLiteral("Documenti_CO_StampaControllo"), QString(), true);
    }
    m_chosen.clear();
}

void frm_Commissioni::Documento_StampaCControllo(qint16 mode)
{
    host::IHost& h = host::host();
    try {
        const printing::SlipScope scope = printing::slipScope(mode);
        // The slips are those of the order open, whatever number is typed in the box.
        const QString& numero = m_order.numero;
        const QString& serie = m_order.serie;
        QString sql;
        switch (scope) {
        case printing::SlipScope::OpenOrder:
            sql = orders::slipSqlForOrder(m_order.orderKey());
            break;
        case printing::SlipScope::ChosenOrders:
            sql = orders::slipSqlForChosen(m_chosen, m_settings.tipomovimento);
            break;
        case printing::SlipScope::SelectedLine: {
            const lines::FlexGrid* g = grid();
            const int row = g->row();
            const QString rowid = row >= lines::FirstDataRow && row < g->rows()
                                      ? g->textMatrix(row, lines::Col_rowid)
                                      : QString();
            sql = orders::slipSqlForLine(static_cast<qint64>(common::numericValue(rowid)), m_order.orderKey());
            break;
        }
        }
        const QString question = printing::slipQuestion(scope, numero, serie);
        if (!question.isEmpty() && !askYesNo(question))
            return;
        tellSlipsFound([&h, &sql] { return h.PrintReport(sql); });
    } catch (...) {
        h.ReportError(QStringLiteral("Documento_StampaCControllo"),
                      QStringLiteral("Errore durante la stampa delle comande di controllo"), true);
    }
}

void frm_Commissioni::Documento_AnteprimaCControllo()
{
    host::IHost& h = host::host();
    try {
        tellSlipsFound(
            [&h, this] { return host::previewReport(h, orders::slipSqlForOrder(m_order.orderKey())); });
    } catch (...) {
        h.ReportError(QStringLiteral("Documento_AnteprimaCControllo"),
                      QStringLiteral("Errore durante l'anteprima delle comande di controllo"), true);
    }
}

void frm_Commissioni::Documento_StampaBigliettini()
{
    host::IHost& h = host::host();
    try {
        const auto answer = Dialogs::input(QStringLiteral("Inserire la data di riferimento per la stampa dei "
                                                          "bigliettini seguendo il formato 'gg/mm/aaaa'"),
                                           h.GetAppTitle() + QStringLiteral(" - Stampa lista bigliettini "),
                                           common::shortDate(QDate::currentDate()));
        // No day given (a cancel, an empty answer or no date at all) ends here without a word.
        const std::optional<QDate> day = answer ? common::parseShortDate(answer->trimmed()) : std::nullopt;
        if (!day)
            return;
        bool confirmed = false;
        // The list printed says the day whose cards it lists, not the day it is printed.
        host::listWindow().SetPrintHeading(QStringLiteral("Lista bigliettini"), *day);
        host::listWindow().SelectFromList(orders::cardsListSql(*day), 1, QString(), confirmed);
    } catch (...) {
        h.ReportError(QStringLiteral("Documento_StampaBigliettini"),
                      QStringLiteral("Errore durante l'elaborazione della stampa dei bigliettini"), true);
    }
}

void frm_Commissioni::sBar_PanelClick(int panel)
{
    try {
        QMenu* menu = nullptr;
        switch (panel) {
        case 2: {
            bool confirmed = false;
            host::listWindow().SelectFromList(QStringLiteral("config_CO"), 1,
                                              QStringLiteral("CONFIGURAZIONE STAMPA COMANDE DI CONTROLLO"),
                                              confirmed);
            return;
        }
        case 3:
            menu = m_mBomboniere;
            break;
        case 4:
            menu = m_mFazzoletti;
            break;
        case 5:
            menu = m_mAstucci;
            break;
        default:
            return;
        }
        menu->popup(QCursor::pos());
    } catch (...) {
        host::host().ReportError(QStringLiteral("sBar_PanelClick"), QString(), true);
    }
}

} // namespace xv::form
