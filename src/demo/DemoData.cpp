// SPDX-License-Identifier: MIT
#include "DemoData.h"

#include "common/RuntimeError.h"
#include "data/Database.h"

#include <QSqlError>
#include <QSqlQuery>
#include <QStringList>
#include <QTime>
#include <QVariant>
#include <QVector>

#include <algorithm>
#include <array>
#include <cmath>
#include <iterator>
#include <random>
#include <utility>
#include <vector>

namespace xv::demo {

using data::Engine;
using data::Transaction;

using common::ErrorNumber;
using common::RuntimeError;

namespace {

// ---------------------------------------------------------------------------------------------
// The shop as it is described once: catalogue, suppliers, agents, places and names. Only prices,
// stock, people and orders are drawn from the seed.

enum class Family { Bomboniere, Astucci, Fazzoletti, Confetti, Biglietti };

struct FamilyInfo
{
    const char* category;
    const char* prefix;
    const char* unit;
    int minCents;
    int maxCents;
};

const FamilyInfo kFamilies[] = {
    {"BOMBONIERE", "BOM", "PZ", 800, 4500}, {"ASTUCCI", "AST", "PZ", 80, 600},
    {"FAZZOLETTI", "FAZ", "PZ", 250, 1200}, {"CONFETTI", "CNF", "KG", 1400, 3200},
    {"BIGLIETTI", "BIG", "PZ", 30, 250},
};

const FamilyInfo& info(Family family)
{
    return kFamilies[static_cast<int>(family)];
}

struct CatalogueEntry
{
    Family family;
    const char* description;
    int supplier; // index into kSuppliers
};

// Codes are given in this order within each family: BOM001 is the first favour box, and so on.
const CatalogueEntry kCatalogue[] = {
    {Family::Bomboniere, "Bomboniera portaconfetti in porcellana Capodimonte", 2},
    {Family::Bomboniere, "Cuore d'argento con cristalli", 3},
    {Family::Bomboniere, "Scatolina in argento 925 con coperchio", 3},
    {Family::Bomboniere, "Vasetto in vetro soffiato con tappo in sughero", 4},
    {Family::Bomboniere, "Albero della vita in argento", 3},
    {Family::Bomboniere, "Angioletto in porcellana biscuit", 2},
    {Family::Bomboniere, "Portafoto in argento laminato", 3},
    {Family::Bomboniere, "Campanella in cristallo molato", 4},
    {Family::Bomboniere, "Lanterna in vetro con luce LED", 4},
    {Family::Bomboniere, "Clessidra in vetro e legno", 8},
    {Family::Bomboniere, "Candela profumata in barattolo di vetro", 8},
    {Family::Bomboniere, "Portachiavi in argento con ciondolo", 3},
    {Family::Bomboniere, "Piattino in porcellana decorato a mano", 2},
    {Family::Bomboniere, "Carillon in legno con ballerina", 8},
    {Family::Bomboniere, "Tegola in ceramica dipinta", 2},
    {Family::Bomboniere, "Cornice in peltro con strass", 3},
    {Family::Bomboniere, "Elefantino portafortuna in argento", 3},
    {Family::Bomboniere, "Orologio da tavolo in argento", 3},
    {Family::Bomboniere, "Profumatore per ambienti con bastoncini", 8},
    {Family::Bomboniere, "Orsetto in porcellana con fiocco", 2},
    {Family::Bomboniere, "Ciotolina in vetro di Murano", 4},
    {Family::Bomboniere, "Rosario in argento con scatolina", 3},
    {Family::Bomboniere, "Calice in cristallo inciso", 4},
    {Family::Bomboniere, "Barattolo in ceramica con coperchio a cuore", 2},
    {Family::Bomboniere, "Corno portafortuna in corallo e argento", 3},
    {Family::Astucci, "Astuccio in raso bianco con finestra", 5},
    {Family::Astucci, "Scatola portaconfetti in cartoncino perlato", 5},
    {Family::Astucci, "Sacchetto in tulle con coulisse", 6},
    {Family::Astucci, "Scatolina a cuore in plexiglass", 8},
    {Family::Astucci, "Portaconfetti in organza avorio", 6},
    {Family::Astucci, "Astuccio in velluto blu", 5},
    {Family::Astucci, "Scatola a baule in carta kraft", 5},
    {Family::Astucci, "Cofanetto rigido con nastro di raso", 5},
    {Family::Astucci, "Sacchetto in lino naturale", 6},
    {Family::Astucci, "Scatolina esagonale trasparente", 8},
    {Family::Astucci, "Cono portaconfetti in carta glitter", 5},
    {Family::Astucci, "Scatola a piramide rosa", 5},
    {Family::Astucci, "Scatola a piramide celeste", 5},
    {Family::Astucci, "Barchetta portaconfetti in legno", 8},
    {Family::Astucci, "Tubo trasparente con tappo argentato", 8},
    {Family::Fazzoletti, "Fazzoletto in lino ricamato a mano", 6},
    {Family::Fazzoletti, "Fazzoletto in cotone con bordo in pizzo", 6},
    {Family::Fazzoletti, "Fazzoletto portaconfetti in tulle", 6},
    {Family::Fazzoletti, "Fazzoletto in organza con bordo in raso", 6},
    {Family::Fazzoletti, "Fazzoletto in lino con iniziali ricamate", 6},
    {Family::Fazzoletti, "Fazzoletto in seta avorio", 6},
    {Family::Fazzoletti, "Fazzoletto a punto giorno", 6},
    {Family::Fazzoletti, "Fazzoletto in batista con merletto", 6},
    {Family::Fazzoletti, "Fazzoletto rosa con ricamo a fiori", 6},
    {Family::Fazzoletti, "Fazzoletto celeste con ricamo orsetto", 6},
    {Family::Fazzoletti, "Fazzoletto in chiffon con perline", 6},
    {Family::Fazzoletti, "Fazzoletto in lino grezzo con nappina", 6},
    {Family::Confetti, "Confetti Sulmona mandorla pelata 1kg", 0},
    {Family::Confetti, "Confetti Sulmona mandorla Avola 1kg", 0},
    {Family::Confetti, "Confetti al cioccolato fondente 1kg", 1},
    {Family::Confetti, "Confetti al cioccolato bianco e cocco 1kg", 1},
    {Family::Confetti, "Confetti gusti misti alla frutta 1kg", 1},
    {Family::Confetti, "Confetti rosa alla mandorla 1kg", 0},
    {Family::Confetti, "Confetti celesti alla mandorla 1kg", 0},
    {Family::Confetti, "Confetti rossi per laurea 1kg", 0},
    {Family::Confetti, "Confetti argentati per nozze d'argento 1kg", 1},
    {Family::Confetti, "Confetti dorati per nozze d'oro 1kg", 1},
    {Family::Confetti, "Confetti al pistacchio 1kg", 0},
    {Family::Confetti, "Confetti alla nocciola 1kg", 1},
    {Family::Confetti, "Confetti ricci di Sulmona 1kg", 0},
    {Family::Confetti, "Confetti tenerezze al limoncello 1kg", 1},
    {Family::Confetti, "Cioccolatini incartati assortiti 1kg", 1},
    {Family::Biglietti, "Biglietto bomboniera stampato formato piccolo", 7},
    {Family::Biglietti, "Biglietto pergamena con nastrino", 7},
    {Family::Biglietti, "Biglietto con foto personalizzata", 7},
    {Family::Biglietti, "Biglietto in cartoncino perlato con dicitura", 7},
    {Family::Biglietti, "Bigliettino a forma di cuore", 5},
    {Family::Biglietti, "Biglietto sagomato angioletto", 5},
    {Family::Biglietti, "Biglietto in plexiglass inciso", 8},
    {Family::Biglietti, "Biglietto con rosa in rilievo", 7},
    {Family::Biglietti, "Partecipazione con busta", 7},
    {Family::Biglietti, "Segnaposto stampato", 7},
};

// Favour boxes the shop assembles itself; they follow the plain favour boxes in the BOM numbering and
// are never delivered, so their supplier is the one of their first component.
struct Assembly
{
    const char* description;
    std::array<const char*, 4> components;
    std::array<double, 4> quantities;
};

const Assembly kAssemblies[] = {
    {"Bomboniera completa matrimonio Capodimonte", {"BOM001", "AST001", "CNF001", "BIG002"}, {1, 1, 0.03, 1}},
    {"Bomboniera completa battesimo con angioletto",
     {"BOM006", "AST013", "CNF007", "BIG006"},
     {1, 1, 0.03, 1}},
    {"Bomboniera completa comunione con rosario", {"BOM022", "AST002", "CNF001", nullptr}, {1, 1, 0.03, 0}},
    {"Bomboniera completa laurea con clessidra", {"BOM010", "AST007", "CNF008", nullptr}, {1, 1, 0.05, 0}},
    {"Bomboniera completa nozze d'argento", {"BOM002", "AST006", "CNF009", "BIG004"}, {1, 1, 0.03, 1}},
    {"Bomboniera fazzoletto e confetti", {"FAZ003", "CNF003", nullptr, nullptr}, {1, 0.05, 0, 0}},
};

struct Person
{
    const char* name;
    const char* email;
};

const Person kAgents[] = {
    {"Ferraro Luca", "luca.ferraro@example.it"},
    {"Marino Chiara", "chiara.marino@example.com"},
    {"Galli Roberto", "roberto.galli@example.it"},
    {"Conti Francesca", "f.conti@example.com"},
};

struct SupplierInfo
{
    const char* name;
    const char* address;
    const char* cap;
    const char* town;
    const char* province;
    const char* phone;
    const char* email;
    int agent; // index into kAgents
};

const SupplierInfo kSuppliers[] = {
    {"Confetteria Sulmonese Srl", "Via dei Confettieri 14", "67039", "Sulmona", "AQ", "0864 5550142",
     "ordini@confetteria-sulmonese.example.it", 0},
    {"Dolciaria Valle Peligna Spa", "Zona Industriale Lotto 7", "67035", "Pratola Peligna", "AQ",
     "0864 5550377", "vendite@vallepeligna.example.com", 0},
    {"Porcellane del Vesuvio Snc", "Via Vesuvio 210", "80056", "Ercolano", "NA", "081 5550918",
     "info@porcellanevesuvio.example.it", 1},
    {"Argenteria Partenopea Srl", "Via dei Tribunali 88", "80138", "Napoli", "NA", "081 5554410",
     "commerciale@argenteria-partenopea.example.it", 1},
    {"Vetreria Artistica Lagunare Sas", "Fondamenta dei Vetrai 5", "30141", "Venezia", "VE", "041 5550263",
     "ordini@vetreria-lagunare.example.com", 2},
    {"Cartotecnica Irpina Srl", "Via Appia 301", "83100", "Avellino", "AV", "0825 5551187",
     "ordini@cartotecnica-irpina.example.it", 2},
    {"Ricami e Merletti Sorrentini Snc", "Via San Cesareo 19", "80067", "Sorrento", "NA", "081 5556622",
     "laboratorio@merlettisorrentini.example.it", 3},
    {"Tipografia Flegrea Srl", "Via Napoli 77", "80078", "Pozzuoli", "NA", "081 5558731",
     "stampa@tipografiaflegrea.example.it", 3},
    {"Oggettistica Tirrenica Srl", "Via Ligea 45", "84121", "Salerno", "SA", "089 5552094",
     "ordini@oggettistica-tirrenica.example.com", 1},
};

struct Town
{
    const char* name;
    const char* cap;
    const char* province;
    const char* area; // telephone prefix
    int weight;
};

const Town kTowns[] = {
    {"Napoli", "80133", "NA", "081", 30},
    {"Pozzuoli", "80078", "NA", "081", 5},
    {"Torre del Greco", "80059", "NA", "081", 5},
    {"Castellammare di Stabia", "80053", "NA", "081", 4},
    {"Afragola", "80021", "NA", "081", 4},
    {"Giugliano in Campania", "80014", "NA", "081", 4},
    {"Sorrento", "80067", "NA", "081", 2},
    {"Caserta", "81100", "CE", "0823", 6},
    {"Aversa", "81031", "CE", "081", 4},
    {"Salerno", "84121", "SA", "089", 6},
    {"Nocera Inferiore", "84014", "SA", "081", 3},
    {"Battipaglia", "84091", "SA", "0828", 2},
    {"Avellino", "83100", "AV", "0825", 3},
    {"Benevento", "82100", "BN", "0824", 3},
    {"Roma", "00185", "RM", "06", 10},
    {"Latina", "04100", "LT", "0773", 3},
    {"Formia", "04023", "LT", "0771", 2},
    {"Frosinone", "03100", "FR", "0775", 2},
    {"Cassino", "03043", "FR", "0776", 2},
    {"Milano", "20121", "MI", "02", 1},
    {"Bari", "70121", "BA", "080", 1},
};

const char* const kStreets[] = {
    "Via Roma",         "Corso Umberto I", "Via Toledo",
    "Via Garibaldi",    "Via Mazzini",     "Corso Vittorio Emanuele",
    "Via dei Mille",    "Via Appia Nuova", "Via Tuscolana",
    "Viale Europa",     "Via Nazionale",   "Piazza Municipio",
    "Via San Giovanni", "Via Cavour",      "Via Manzoni",
    "Via Foria",        "Via Caracciolo",  "Viale Kennedy",
};

const char* const kSurnames[] = {
    "Rossi",     "Esposito", "Russo",     "Romano",  "Colombo",    "Ricci",      "Marino",   "Greco",
    "Bruno",     "Gallo",    "Conti",     "De Luca", "Costa",      "Giordano",   "Mancini",  "Rizzo",
    "Lombardi",  "Moretti",  "Barbieri",  "Fontana", "Santoro",    "Mariani",    "Rinaldi",  "Caruso",
    "Ferrara",   "Leone",    "Longo",     "Gentile", "Martinelli", "Vitale",     "Serra",    "Coppola",
    "De Santis", "D'Angelo", "Marchetti", "Parisi",  "Villa",      "Cirillo",    "D'Amico",  "Sorrentino",
    "Iovine",    "Capuano",  "Palumbo",   "Amato",   "Di Maio",    "Napolitano", "Ruggiero", "Carbone",
};

const char* const kMaleNames[] = {
    "Marco",    "Luca",     "Giuseppe", "Antonio",  "Francesco", "Alessandro", "Gennaro",  "Salvatore",
    "Vincenzo", "Ciro",     "Pasquale", "Giovanni", "Andrea",    "Matteo",     "Lorenzo",  "Davide",
    "Stefano",  "Raffaele", "Domenico", "Paolo",    "Fabio",     "Simone",     "Emanuele", "Riccardo",
};

const char* const kFemaleNames[] = {
    "Giulia",   "Maria",  "Sofia", "Anna",   "Francesca", "Chiara",   "Sara",  "Martina",
    "Alessia",  "Carla",  "Rosa",  "Teresa", "Carmela",   "Giovanna", "Lucia", "Valentina",
    "Federica", "Ilaria", "Elena", "Aurora", "Greta",     "Beatrice", "Noemi", "Annunziata",
};

// Customers everybody on the team knows by name; the first one keeps an apostrophe in every order
// file, which is where quoting mistakes show.
const char* const kFirstCustomers[] = {"D'Angelo Carla", "Rossi Maria", "Esposito Gennaro"};

bool isFirstCustomer(const QString& name)
{
    return std::any_of(std::begin(kFirstCustomers), std::end(kFirstCustomers),
                       [&name](const char* fixed) { return name == QString::fromUtf8(fixed); });
}

struct Ceremony
{
    const char* name;
    int weight;
    int minLead; // days between the order and the ceremony
    int maxLead;
    bool couple;
    std::array<const char*, 3> phrases;
};

const Ceremony kCeremonies[] = {
    {"Matrimonio", 30, 60, 300, true, {"Il giorno più bello", "Oggi sposi", "Insieme per sempre"}},
    {"Battesimo", 14, 15, 90, false, {"Il mio Battesimo", "Benvenuto al mondo", "Un dono dal cielo"}},
    {"Prima Comunione", 16, 20, 120, false, {"La mia Prima Comunione", "Gesù è con me", "Il mio giorno"}},
    {"Cresima", 9, 20, 120, false, {"Ricordo della Santa Cresima", "Il mio giorno speciale", "Con gioia"}},
    {"Laurea", 8, 10, 60, false, {"Traguardo raggiunto", "Il sogno si avvera", "Con tanta gioia"}},
    {"Nozze d'argento", 5, 30, 150, true, {"25 anni insieme", "Ancora sì", "Nozze d'argento"}},
    {"Nozze d'oro", 4, 30, 150, true, {"50 anni d'amore", "Per sempre insieme", "Nozze d'oro"}},
    {"Diciottesimo", 6, 15, 90, false, {"I miei 18 anni", "Diciotto candeline", "Si diventa grandi"}},
    {"Nascita", 8, 7, 45, false, {"Benvenuto al mondo", "Fiocco rosa", "Fiocco azzurro"}},
};

const char* const kCardNotes[] = {
    "",
    "",
    "",
    "Stampa in corsivo oro",
    "Carattere corsivo, colore argento",
    "Aggiungere la data sul retro",
    "Nastro avorio",
    "Confezionare a parte i biglietti",
};

const char* const kReferences[] = {
    "Ordine telefonico",
    "Passato in negozio",
    "Preventivo via e-mail",
    "Cliente abituale",
    "Consegna a domicilio concordata",
};

struct Operator
{
    const char* login;
    const char* name;
    int active;
};

const Operator kOperators[] = {
    {"admin", "Amministratore", 1}, {"cassa1", "Russo Anna", 1},
    {"cassa2", "Colombo Paolo", 1}, {"laboratorio", "Laboratorio confezionamento", 1},
    {"stagista", "Amato Noemi", 0},
};

// Lines per order: one to six with these weights, so an order averages exactly 3.5 lines.
constexpr std::array<int, 6> kLineWeights = {10, 15, 25, 25, 15, 10};
constexpr double kAverageLines = 3.5;
constexpr int kDeliveriesPerSupplier = 10;

QString text(const char* utf8)
{
    return QString::fromUtf8(utf8);
}

QVariant nullText()
{
    return QVariant(QMetaType::fromType<QString>());
}

QVariant nullNumber()
{
    return QVariant(QMetaType::fromType<int>());
}

QString stamp(QDate date, QTime time = QTime(0, 0))
{
    return QStringLiteral("%1 %2").arg(date.toString(Qt::ISODate), time.toString(QStringLiteral("HH:mm:ss")));
}

// value / divisor rounded half up, as a till rounds; money here is never negative.
qint64 divideRounded(qint64 value, qint64 divisor)
{
    return (value + divisor / 2) / divisor;
}

// std's distributions may differ between standard libraries; these draw from the engine directly so a
// seed gives the same shop everywhere.
class Dice
{
public:
    explicit Dice(quint32 seed) : m_engine(seed) {}

    int between(int low, int high)
    {
        const auto span = static_cast<quint64>(static_cast<qint64>(high) - low + 1);
        return static_cast<int>(low + static_cast<qint64>(static_cast<quint64>(m_engine()) % span));
    }
    bool chance(int percent) { return between(1, 100) <= percent; }
    template <typename T, std::size_t N> const T& pick(const T (&items)[N])
    {
        return items[between(0, static_cast<int>(N) - 1)];
    }
    template <typename Weights> int weighted(const Weights& weights)
    {
        int sum = 0;
        for (int w : weights)
            sum += w;
        int roll = between(0, sum - 1);
        int index = 0;
        for (int w : weights) {
            if (roll < w)
                return index;
            roll -= w;
            ++index;
        }
        return index - 1;
    }
    template <typename T> void shuffle(std::vector<T>& items)
    {
        for (int i = static_cast<int>(items.size()) - 1; i > 0; --i)
            std::swap(items[i], items[between(0, i)]);
    }
    QString digits(int count)
    {
        QString result;
        for (int i = 0; i < count; ++i)
            result += QLatin1Char(static_cast<char>('0' + between(0, 9)));
        return result;
    }

private:
    std::mt19937 m_engine;
};

// One prepared insert reused for every row: preparing is what costs on a million rows.
class BoundInsert
{
public:
    BoundInsert(Database& db, const QString& table, const QStringList& columns, bool returnsRowid = false)
        : m_query(db.handle()), m_columns(static_cast<int>(columns.size())), m_returnsRowid(returnsRowid)
    {
        QStringList marks;
        for (int i = 0; i < m_columns; ++i)
            marks << QStringLiteral("?");
        m_sql = QStringLiteral("insert into %1 (%2) values (%3)")
                    .arg(table, columns.join(QStringLiteral(", ")), marks.join(QLatin1Char(',')));
        if (returnsRowid)
            m_sql += QStringLiteral(" returning rowid");
        m_query.setForwardOnly(true);
        if (!m_query.prepare(m_sql))
            fail();
    }

    // The new row's rowid when the insert was built to return it, else 0.
    int run(const QVariant* values)
    {
        for (int i = 0; i < m_columns; ++i)
            m_query.bindValue(i, values[i]);
        if (!m_query.exec())
            fail();
        if (!m_returnsRowid)
            return 0;
        if (!m_query.next())
            fail();
        const int rowid = m_query.value(0).toInt();
        m_query.finish();
        return rowid;
    }
    int run(const QVariantList& values)
    {
        Q_ASSERT(values.size() == m_columns);
        return run(values.constData());
    }

private:
    [[noreturn]] void fail() const
    {
        throw RuntimeError(ErrorNumber::DatabaseError,
                           QStringLiteral("%1\n[%2]").arg(m_query.lastError().text().trimmed(), m_sql));
    }

    QSqlQuery m_query;
    QString m_sql;
    int m_columns;
    bool m_returnsRowid;
};

// movimenti in the order the insert binds them; the names are those of the table.
enum Mov : int {
    Tipogestione,
    Tipomovimento,
    RowidUtente,
    Riga,
    RowidTestata,
    RowidDeposito,
    Numero,
    Documento,
    Serie,
    DataDocumento,
    DataReg,
    DataDal,
    OraDal,
    DataAl,
    OraAl,
    CodiceMed,
    RowidMed,
    Descrizione1,
    Descrizione2,
    RowidControparti,
    Nominativo,
    CodeNominativo,
    Indirizzo,
    Cap,
    Comune,
    Spedizione,
    Provincia,
    Strada,
    Telefono,
    Cellulare,
    Email,
    Qta,
    Quantita,
    Prezzo,
    Prezzo2,
    Sconto1,
    Sconto2,
    CodiceIva,
    Percentuale,
    Imponibile,
    Imposta,
    Totale,
    Attrib00,
    Attrib01,
    Attrib02,
    Attrib03,
    Attrib04,
    Attrib05,
    Attrib06,
    Attrib07,
    Attrib08,
    Attrib09,
    Attrib10,
    StatoRiga,
    Tipo,
    Note,
    RowidPagamento,
    Pagamento,
    Referente,
    Riferimenti,
    MovCount
};

const char* const kMovColumns[] = {
    "Tipogestione",    "Tipomovimento",  "rowid_utente", "Riga",
    "rowid_testata",   "rowid_deposito", "numero",       "documento",
    "serie",           "datadocumento",  "datareg",      "Datadal",
    "oradal",          "Dataal",         "oraal",        "codice_med",
    "rowid_med",       "Descrizione1",   "Descrizione2", "rowid_controparti",
    "Nominativo",      "codenominativo", "Indirizzo",    "Cap",
    "comune",          "Spedizione",     "provincia",    "Strada",
    "telefono",        "Cellulare",      "Email",        "qta",
    "quantita",        "prezzo",         "prezzo2",      "sconto1",
    "sconto2",         "codice_iva",     "percentuale",  "imponibile",
    "imposta",         "totale",         "attrib00",     "attrib01",
    "attrib02",        "attrib03",       "attrib04",     "attrib05",
    "attrib06",        "attrib07",       "attrib08",     "attrib09",
    "attrib10",        "StatoRiga",      "Tipo",         "note",
    "Rowid_Pagamento", "pagamento",      "referente",    "riferimenti",
};
static_assert(std::size(kMovColumns) == MovCount);

QStringList columnList(const char* const* names, int count)
{
    QStringList list;
    for (int i = 0; i < count; ++i)
        list << QLatin1String(names[i]);
    return list;
}

struct Article
{
    int rowid = 0;
    QString code;
    QString description;
    Family family = Family::Bomboniere;
    bool assembled = false;
    int priceCents = 0;
    int costCents = 0;
    bool byWeight = false;
};

struct Party
{
    int rowid = 0;
    QString code;
    QString name;
    QString address;
    QString cap;
    QString town;
    QString province;
    QVariant phone;
    QVariant mobile;
    QVariant email;
};

struct Line
{
    const Article* article = nullptr;
    int quantity = 0;
    qint64 totalCents = 0;
};

struct Delivery
{
    QDate date;
    int supplier = 0;
    std::vector<int> articles; // indices into the supplier's articles
};

class Generator
{
public:
    Generator(Database& db, const DemoOptions& options)
        : m_db(db), m_options(options), m_dice(options.seed), m_postgres(db.engine() == Engine::PostgreSQL),
          m_firstDay(options.today.year() - 1, 1, 1)
    {
    }

    DemoSummary run()
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

private:
    // SQLite keeps a currency as a double; PostgreSQL's numeric gets the exact decimal text.
    QVariant money(qint64 cents) const
    {
        Q_ASSERT(cents >= 0);
        if (m_postgres)
            return QStringLiteral("%1.%2").arg(cents / 100).arg(cents % 100 * 100, 4, 10, QLatin1Char('0'));
        return static_cast<double>(cents) / 100.0;
    }

    void writeSettings()
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

    void writeOperators()
    {
        BoundInsert insert(
            m_db, QStringLiteral("Utenti"),
            {QStringLiteral("nomeutente"), QStringLiteral("nominativo"), QStringLiteral("attivo")}, true);
        for (const Operator& op : kOperators) {
            const int rowid = insert.run(QVariantList{text(op.login), text(op.name), op.active});
            if (m_operatorRowid == 0)
                m_operatorRowid = rowid;
        }
    }

    QStringList partyColumns() const
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

    QString mobileNumber()
    {
        static const char* const prefixes[] = {"333", "335", "338", "340", "347", "349", "320", "328"};
        return QStringLiteral("%1 %2").arg(text(m_dice.pick(prefixes)), m_dice.digits(7));
    }

    QString streetAddress()
    {
        return QStringLiteral("%1 %2").arg(text(m_dice.pick(kStreets))).arg(m_dice.between(1, 250));
    }

    void writeAgents()
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

    void writeSuppliers()
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

    int priceFor(Family family, bool assembled)
    {
        const FamilyInfo& fi = info(family);
        const int low = assembled ? 1500 : fi.minCents;
        const int step = fi.maxCents >= 1000 ? 50 : 10;
        return m_dice.between(low / step, fi.maxCents / step) * step;
    }

    void writeCatalogue()
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
                           {QStringLiteral("codice"), QStringLiteral("descrizione"),
                            QStringLiteral("categoria"), QStringLiteral("tipo"), QStringLiteral("um"),
                            QStringLiteral("prezzo_vendita"), QStringLiteral("prezzo_acquisto"),
                            QStringLiteral("quantita_reale"), QStringLiteral("quantita_disponibile"),
                            QStringLiteral("quantita_ordinata"), QStringLiteral("quantita_impegnata"),
                            QStringLiteral("rowid_fornitore")},
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
            article.rowid = insert.run(
                QVariantList{article.code, article.description, text(info(article.family).category),
                             article.assembled ? QStringLiteral("A") : QStringLiteral("S"),
                             text(info(article.family).unit), money(article.priceCents),
                             money(article.costCents), double(real), double(real - committed),
                             double(ordered), double(committed), m_suppliers[m_articleSupplier[i]].rowid});
            m_byFamily[static_cast<int>(article.family)].push_back(static_cast<int>(i));
        }
    }

    int indexOfCode(const QString& code) const
    {
        for (std::size_t i = 0; i < m_articles.size(); ++i) {
            if (m_articles[i].code == code)
                return static_cast<int>(i);
        }
        throw RuntimeError(ErrorNumber::InvalidProcedureCall,
                           QStringLiteral("Articolo dimostrativo sconosciuto: %1").arg(code));
    }

    void writeAssemblies()
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

    void writeCustomers()
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

    QString emailOf(const QString& name)
    {
        // "De Luca Anna" -> anna.deluca@example.it: surname words first, given name last.
        const QStringList words = name.toLower().split(QLatin1Char(' '), Qt::SkipEmptyParts);
        QString surname;
        for (qsizetype w = 0; w + 1 < words.size(); ++w)
            surname += words[w];
        surname.remove(QLatin1Char('\''));
        const QString domain =
            m_dice.chance(60) ? QStringLiteral("example.it") : QStringLiteral("example.com");
        return QStringLiteral("%1.%2@%3").arg(words.isEmpty() ? QString() : words.last(), surname, domain);
    }

    QDate randomDay()
    {
        const int span = static_cast<int>(m_firstDay.daysTo(m_options.today));
        QDate day = m_firstDay.addDays(m_dice.between(0, span));
        // The shop is closed on Sundays.
        if (day.dayOfWeek() == 7)
            day = day > m_firstDay ? day.addDays(-1) : day.addDays(1);
        return std::min(day, m_options.today);
    }

    std::array<QVariant, MovCount> blankRow() const
    {
        std::array<QVariant, MovCount> row;
        row.fill(nullText());
        row[RowidUtente] = m_operatorRowid;
        // The order form writes every column of a line from its text cells, so an order row holds no
        // null beyond the few columns that may be empty: a 0 here, as the form writes it.
        row[RowidTestata] = 0;
        row[RowidDeposito] = 0;
        row[RowidMed] = nullNumber();
        row[RowidControparti] = nullNumber();
        row[RowidPagamento] = nullNumber();
        row[Descrizione2] = QStringLiteral("");
        row[Spedizione] = QStringLiteral("");
        row[Sconto1] = 0.0;
        row[Sconto2] = 0.0;
        row[CodiceIva] = 22;
        row[Percentuale] = 22.0;
        row[Prezzo2] = money(0);
        row[Imposta] = money(0);
        row[Tipo] = QStringLiteral("R");
        return row;
    }

    void copyParty(std::array<QVariant, MovCount>& row, const Party& party) const
    {
        row[RowidControparti] = party.rowid;
        row[Nominativo] = party.name;
        row[CodeNominativo] = party.code;
        row[Indirizzo] = party.address;
        row[Cap] = party.cap;
        row[Comune] = party.town;
        row[Provincia] = party.province;
        row[Telefono] = party.phone;
        row[Cellulare] = party.mobile;
        row[Email] = party.email;
    }

    void setLine(std::array<QVariant, MovCount>& row, int riga, const Article& article, int quantity,
                 int priceCents) const
    {
        const qint64 total = qint64(priceCents) * quantity;
        row[Riga] = riga;
        row[CodiceMed] = article.code;
        row[RowidMed] = article.rowid;
        row[Descrizione1] = article.description;
        row[Qta] = double(quantity);
        row[Quantita] = double(quantity);
        row[Prezzo] = money(priceCents);
        row[Totale] = money(total);
        // The price includes VAT at 22%: the taxable part is total / 1.22.
        row[Imponibile] = money(divideRounded(total * 100, 122));
    }

    std::vector<int> supplierArticles(int supplier) const
    {
        std::vector<int> result;
        for (std::size_t i = 0; i < m_articles.size(); ++i) {
            if (m_articleSupplier[i] == supplier && !m_articles[i].assembled)
                result.push_back(static_cast<int>(i));
        }
        return result;
    }

    void writeDeliveries()
    {
        std::vector<Delivery> deliveries;
        for (int s = 0; s < static_cast<int>(m_suppliers.size()); ++s) {
            const std::vector<int> articles = supplierArticles(s);
            // The first delivery stocks the whole range, so every bought article has a known supplier.
            Delivery first;
            first.supplier = s;
            first.date = std::min(m_firstDay.addDays(m_dice.between(1, 20)), m_options.today);
            for (std::size_t a = 0; a < articles.size(); ++a)
                first.articles.push_back(static_cast<int>(a));
            deliveries.push_back(first);
            for (int d = 1; d < kDeliveriesPerSupplier; ++d) {
                Delivery delivery;
                delivery.supplier = s;
                delivery.date = randomDay();
                std::vector<int> order(articles.size());
                for (std::size_t a = 0; a < order.size(); ++a)
                    order[a] = static_cast<int>(a);
                m_dice.shuffle(order);
                order.resize(
                    std::min<std::size_t>(order.size(), static_cast<std::size_t>(m_dice.between(2, 5))));
                std::sort(order.begin(), order.end());
                delivery.articles = order;
                deliveries.push_back(delivery);
            }
        }
        std::stable_sort(deliveries.begin(), deliveries.end(),
                         [](const Delivery& a, const Delivery& b) { return a.date < b.date; });

        BoundInsert insert(m_db, QStringLiteral("movimenti"), columnList(kMovColumns, MovCount));
        std::array<QVariant, MovCount> row = blankRow();
        int year = 0;
        int number = 0;
        for (const Delivery& delivery : deliveries) {
            if (delivery.date.year() != year) {
                year = delivery.date.year();
                number = 0;
            }
            ++number;
            const std::vector<int> articles = supplierArticles(delivery.supplier);
            row[Tipogestione] = QStringLiteral("0");
            row[Tipomovimento] = QStringLiteral("CF");
            row[Numero] = QStringLiteral("F%1").arg(number);
            row[Documento] = QStringLiteral("DDTF");
            row[Serie] = QString::number(year);
            row[DataDocumento] = stamp(delivery.date);
            row[DataReg] = stamp(delivery.date, QTime(m_dice.between(8, 12), m_dice.between(0, 59)));
            copyParty(row, m_suppliers[delivery.supplier]);
            row[Strada] = QStringLiteral("");
            int riga = 0;
            for (int a : delivery.articles) {
                const Article& article = m_articles[articles[a]];
                const int quantity =
                    article.byWeight ? m_dice.between(2, 12) * 5 : m_dice.between(5, 50) * 10;
                setLine(row, ++riga, article, quantity, article.costCents);
                insert.run(row.data());
                ++m_summary.movimentiRows;
            }
            m_deliveryCounters[year == m_options.today.year() ? 1 : 0] = {number, delivery.date};
        }
    }

    void writeOrders()
    {
        const int total = std::max(0, m_options.orders);
        // Numbers are handed out as orders are registered, so they follow date and time together.
        std::vector<std::pair<QDate, int>> moments;
        moments.reserve(static_cast<std::size_t>(total));
        for (int i = 0; i < total; ++i)
            moments.emplace_back(randomDay(), m_dice.between(9 * 3600, 19 * 3600 + 59 * 60));
        std::sort(moments.begin(), moments.end());

        BoundInsert insert(m_db, QStringLiteral("movimenti"), columnList(kMovColumns, MovCount));
        std::array<QVariant, MovCount> row = blankRow();
        std::vector<int> ceremonyWeights;
        for (const Ceremony& c : kCeremonies)
            ceremonyWeights.push_back(c.weight);
        int reportedPercent = 0;
        if (m_options.progress)
            m_options.progress(0, total);

        int year = 0;
        int number = 0;
        for (int i = 0; i < total; ++i) {
            const QDate date = moments[static_cast<std::size_t>(i)].first;
            const QTime registered = QTime(0, 0).addSecs(moments[static_cast<std::size_t>(i)].second);
            if (date.year() != year) {
                year = date.year();
                number = 0;
            }
            ++number;
            const Party& customer = i == 0 || m_customers.size() == 1
                                        ? m_customers.front()
                                        : m_customers[static_cast<std::size_t>(
                                              m_dice.between(0, static_cast<int>(m_customers.size()) - 1))];
            const Ceremony& ceremony = kCeremonies[m_dice.weighted(ceremonyWeights)];
            const QDate ceremonyDay = date.addDays(m_dice.between(ceremony.minLead, ceremony.maxLead));
            const QDate pickUp = std::max(ceremonyDay.addDays(-m_dice.between(1, 7)), date.addDays(3));
            const QDate pickUpTo = pickUp.addDays(m_dice.between(0, 3));
            const QTime from(m_dice.between(9, 17), m_dice.chance(50) ? 0 : 30);
            const QTime to = from.addSecs(3600 * m_dice.between(1, 2));

            const std::vector<Line> lines = orderLines(i == total - 1 && total > 1);
            qint64 orderTotal = 0;
            bool cards = false;
            bool confetti = false;
            for (const Line& line : lines) {
                orderTotal += line.totalCents;
                cards = cards || line.article->family == Family::Biglietti;
                confetti = confetti || line.article->family == Family::Confetti;
            }
            const qint64 deposit = m_dice.chance(25) ? 0 : divideRounded(orderTotal * 30, 100 * 1000) * 1000;

            QString state = QStringLiteral("EMESSO");
            bool booked = false;
            if (pickUp < m_options.today && m_dice.chance(90)) {
                state = QStringLiteral("RITIRATO");
                booked = m_dice.chance(50);
            }

            row[Tipogestione] = booked ? QStringLiteral("EVENTO") : QStringLiteral("0");
            row[Tipomovimento] = booked ? QStringLiteral("ENTRATA") : QStringLiteral("CO");
            row[Numero] = QString::number(number);
            row[Documento] = QStringLiteral("COMM");
            row[Serie] = QString::number(year);
            row[DataDocumento] = stamp(date);
            row[DataReg] = stamp(date, registered);
            row[DataDal] = stamp(pickUp);
            row[OraDal] = stamp(QDate(1899, 12, 30), from);
            row[DataAl] = stamp(pickUpTo);
            row[OraAl] = stamp(QDate(1899, 12, 30), to);
            copyParty(row, customer);
            if (row[Telefono].isNull())
                row[Telefono] = QStringLiteral("");
            row[Strada] = m_dice.chance(30) ? nullText() : QVariant(QStringLiteral(""));
            row[Attrib00] = cards ? QString::number(m_dice.between(0, 2)) : QStringLiteral("");
            row[Attrib01] = m_dice.chance(30) ? QStringLiteral("1") : QStringLiteral("0");
            row[Attrib02] = confetti ? QString::number(m_dice.pick({3, 5, 5, 5, 7})) : QStringLiteral("");
            row[Attrib03] = m_dice.chance(20) ? QString::number(m_dice.between(1, 3)) : QStringLiteral("");
            row[Attrib04] = text(ceremony.name);
            row[Attrib05] = stamp(ceremonyDay);
            row[Attrib06] = ceremony.couple ? QStringLiteral("%1 e %2").arg(text(m_dice.pick(kMaleNames)),
                                                                            text(m_dice.pick(kFemaleNames)))
                                            : text(m_dice.chance(50) ? m_dice.pick(kMaleNames)
                                                                     : m_dice.pick(kFemaleNames));
            row[Attrib07] = cards ? text(m_dice.pick(kCardNotes)) : QStringLiteral("");
            row[Attrib08] = text(ceremony.phrases[static_cast<std::size_t>(m_dice.between(0, 2))]);
            row[Attrib09] = m_dice.chance(15) ? QString::number(m_dice.between(1, 2)) : QStringLiteral("");
            row[Attrib10] = QStringLiteral("");
            row[StatoRiga] = state;
            row[Note] = pickUp.toString(QStringLiteral("dd/MM/yyyy"));
            row[RowidPagamento] = 1;
            row[Pagamento] = QStringLiteral("CONTANTI");
            row[Referente] = nullText();
            row[Riferimenti] = m_dice.chance(30) ? text(m_dice.pick(kReferences)) : QStringLiteral("");

            for (std::size_t l = 0; l < lines.size(); ++l) {
                const Line& line = lines[l];
                setLine(row, static_cast<int>(l) + 1, *line.article, line.quantity, line.article->priceCents);
                // The deposit and the order total are kept on the first line only.
                row[Prezzo2] = money(l == 0 ? deposit : 0);
                row[Imposta] = money(l == 0 ? orderTotal : 0);
                insert.run(row.data());
                ++m_summary.movimentiRows;
            }
            m_orderCounters[year == m_options.today.year() ? 1 : 0] = {number, date};
            ++m_summary.orders;
            const int percent = static_cast<int>(qint64(i + 1) * 100 / total);
            if (m_options.progress && percent != reportedPercent) {
                reportedPercent = percent;
                m_options.progress(i + 1, total);
            }
        }
        writeCounters();
    }

    const Article& anyOf(Family family)
    {
        const std::vector<int>& members = m_byFamily[static_cast<int>(family)];
        return m_articles[static_cast<std::size_t>(
            members[static_cast<std::size_t>(m_dice.between(0, static_cast<int>(members.size()) - 1))])];
    }

    // A favour box first, then what goes with it in the order a shop assistant writes it down.
    std::vector<Line> orderLines(bool withApostrophe)
    {
        const int count = m_dice.weighted(kLineWeights) + 1;
        std::vector<Family> extras = {Family::Astucci, Family::Confetti, Family::Biglietti,
                                      Family::Fazzoletti, Family::Bomboniere};
        m_dice.shuffle(extras);
        extras.resize(static_cast<std::size_t>(count - 1));
        std::sort(extras.begin(), extras.end(), [](Family a, Family b) {
            // Favour box extras (for the witnesses) go last.
            const auto rank = [](Family f) { return f == Family::Bomboniere ? 99 : static_cast<int>(f); };
            return rank(a) < rank(b);
        });
        const int pieces = m_dice.between(2, 15) * 10;
        std::vector<Line> lines;
        const Article* box =
            withApostrophe ? &m_articles[static_cast<std::size_t>(indexOfCode(QStringLiteral("BOM002")))]
                           : &anyOf(Family::Bomboniere);
        lines.push_back({box, pieces, 0});
        for (Family family : extras) {
            Line line;
            line.article = &anyOf(family);
            if (family == Family::Confetti) {
                line.quantity = m_dice.between(1, 5);
            } else if (family == Family::Bomboniere) {
                while (line.article == box && m_byFamily[0].size() > 1)
                    line.article = &anyOf(family);
                line.quantity = m_dice.between(1, 10);
            } else {
                line.quantity = pieces;
            }
            lines.push_back(line);
        }
        for (Line& line : lines)
            line.totalCents = qint64(line.article->priceCents) * line.quantity;
        return lines;
    }

    struct Counter
    {
        int number = 0;
        QDate last;
    };

    void writeCounters()
    {
        BoundInsert insert(m_db, QStringLiteral("numeratori"),
                           {QStringLiteral("codtipodoc"), QStringLiteral("tipodocumento"),
                            QStringLiteral("serie"), QStringLiteral("numero"), QStringLiteral("dataultdoc")});
        for (int y = 0; y < 2; ++y) {
            const QString serie = QString::number(m_firstDay.year() + y);
            const Counter& order = m_orderCounters[y];
            insert.run(QVariantList{QStringLiteral("CO"), QStringLiteral("COMM"), serie, order.number,
                                    order.last.isValid() ? QVariant(stamp(order.last)) : nullText()});
            const Counter& delivery = m_deliveryCounters[y];
            insert.run(QVariantList{QStringLiteral("CF"), QStringLiteral("DDTF"), serie, delivery.number,
                                    delivery.last.isValid() ? QVariant(stamp(delivery.last)) : nullText()});
        }
    }

    Database& m_db;
    const DemoOptions& m_options;
    Dice m_dice;
    bool m_postgres;
    QDate m_firstDay;
    int m_operatorRowid = 0;
    std::vector<int> m_agentRowids;
    std::vector<Party> m_suppliers;
    std::vector<Party> m_customers;
    std::vector<Article> m_articles;
    std::vector<int> m_articleSupplier;
    std::array<std::vector<int>, std::size(kFamilies)> m_byFamily;
    std::array<Counter, 2> m_orderCounters;
    std::array<Counter, 2> m_deliveryCounters;
    DemoSummary m_summary;
};

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
