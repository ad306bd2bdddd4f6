// SPDX-License-Identifier: MIT
// The demo shop as it is described once: catalogue, suppliers, agents, places and names. Only prices,
// stock, people and documents are drawn from the seed.
#pragma once

#include <QString>

#include <algorithm>
#include <array>
#include <iterator>

namespace xv::demo {

enum class Family { Bomboniere, Astucci, Fazzoletti, Confetti, Biglietti };

struct FamilyInfo
{
    const char* category;
    const char* prefix;
    const char* unit;
    int minCents;
    int maxCents;
};

inline const FamilyInfo kFamilies[] = {
    {"BOMBONIERE", "BOM", "PZ", 800, 4500}, {"ASTUCCI", "AST", "PZ", 80, 600},
    {"FAZZOLETTI", "FAZ", "PZ", 250, 1200}, {"CONFETTI", "CNF", "KG", 1400, 3200},
    {"BIGLIETTI", "BIG", "PZ", 30, 250},
};

inline const FamilyInfo& info(Family family)
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
inline const CatalogueEntry kCatalogue[] = {
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

inline const Assembly kAssemblies[] = {
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

inline const Person kAgents[] = {
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

inline const SupplierInfo kSuppliers[] = {
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

inline const Town kTowns[] = {
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

inline const char* const kStreets[] = {
    "Via Roma",         "Corso Umberto I", "Via Toledo",
    "Via Garibaldi",    "Via Mazzini",     "Corso Vittorio Emanuele",
    "Via dei Mille",    "Via Appia Nuova", "Via Tuscolana",
    "Viale Europa",     "Via Nazionale",   "Piazza Municipio",
    "Via San Giovanni", "Via Cavour",      "Via Manzoni",
    "Via Foria",        "Via Caracciolo",  "Viale Kennedy",
};

inline const char* const kSurnames[] = {
    "Rossi",     "Esposito", "Russo",     "Romano",  "Colombo",    "Ricci",      "Marino",   "Greco",
    "Bruno",     "Gallo",    "Conti",     "De Luca", "Costa",      "Giordano",   "Mancini",  "Rizzo",
    "Lombardi",  "Moretti",  "Barbieri",  "Fontana", "Santoro",    "Mariani",    "Rinaldi",  "Caruso",
    "Ferrara",   "Leone",    "Longo",     "Gentile", "Martinelli", "Vitale",     "Serra",    "Coppola",
    "De Santis", "D'Angelo", "Marchetti", "Parisi",  "Villa",      "Cirillo",    "D'Amico",  "Sorrentino",
    "Iovine",    "Capuano",  "Palumbo",   "Amato",   "Di Maio",    "Napolitano", "Ruggiero", "Carbone",
};

inline const char* const kMaleNames[] = {
    "Marco",    "Luca",     "Giuseppe", "Antonio",  "Francesco", "Alessandro", "Gennaro",  "Salvatore",
    "Vincenzo", "Ciro",     "Pasquale", "Giovanni", "Andrea",    "Matteo",     "Lorenzo",  "Davide",
    "Stefano",  "Raffaele", "Domenico", "Paolo",    "Fabio",     "Simone",     "Emanuele", "Riccardo",
};

inline const char* const kFemaleNames[] = {
    "Giulia",   "Maria",  "Sofia", "Anna",   "Francesca", "Chiara",   "Sara",  "Martina",
    "Alessia",  "Carla",  "Rosa",  "Teresa", "Carmela",   "Giovanna", "Lucia", "Valentina",
    "Federica", "Ilaria", "Elena", "Aurora", "Greta",     "Beatrice", "Noemi", "Annunziata",
};

// Customers everybody on the team knows by name; the first one keeps an apostrophe in every order
// file, which is where quoting mistakes show.
inline const char* const kFirstCustomers[] = {"D'Angelo Carla", "Rossi Maria", "Esposito Gennaro"};

inline bool isFirstCustomer(const QString& name)
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

inline const Ceremony kCeremonies[] = {
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

inline const char* const kCardNotes[] = {
    "",
    "",
    "",
    "Stampa in corsivo oro",
    "Carattere corsivo, colore argento",
    "Aggiungere la data sul retro",
    "Nastro avorio",
    "Confezionare a parte i biglietti",
};

inline const char* const kReferences[] = {
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

inline const Operator kOperators[] = {
    {"admin", "Amministratore", 1}, {"cassa1", "Russo Anna", 1},
    {"cassa2", "Colombo Paolo", 1}, {"laboratorio", "Laboratorio confezionamento", 1},
    {"stagista", "Amato Noemi", 0},
};

// Lines per order: one to six with these weights (3.5 on average), except one order in forty, a large
// wedding of twelve lines; so an order averages 3.5 * 39/40 + 12/40 lines.
inline constexpr std::array<int, 6> kLineWeights = {10, 15, 25, 25, 15, 10};
inline constexpr int kLargeOrderOneIn = 40;
inline constexpr int kLargeOrderLines = 12;
inline constexpr double kAverageLines =
    (3.5 * (kLargeOrderOneIn - 1) + kLargeOrderLines) / kLargeOrderOneIn;
inline constexpr int kDeliveriesPerSupplier = 10;
// The years the documents cover: two years back from the first of January, last year, this year up to
// today. Numbers restart every year, so every number but the highest is found in more than one year.
inline constexpr int kYears = 3;

} // namespace xv::demo
