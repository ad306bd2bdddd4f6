// SPDX-License-Identifier: MIT
#pragma once

namespace xv::data {

// How a column is declared, and so how its values are stored and read back.
enum class ColumnKind { Key, SmallInt, Integer, Single, Double, Currency, Date, Text };

struct ColumnSpec
{
    const char* name;
    ColumnKind kind;
};

// The order lines, the one table an order lives in: every row repeats the whole header. This list is the
// only place the columns are named: the table is created from it, and the lines grid numbers its columns
// from it, so that the grid column of a field and the table column it is stored in cannot drift apart.
#define XV_MOVIMENTI_COLUMNS(X) \
    X(rowid, Key) \
    X(Tipogestione, Text) \
    X(Tipomovimento, Text) \
    X(rowid_utente, Integer) \
    X(Riga, SmallInt) \
    X(rowid_testata, Integer) \
    X(rowid_deposito, Integer) \
    X(numero, Text) \
    X(documento, Text) \
    X(serie, Text) \
    X(datadocumento, Date) \
    X(datareg, Date) \
    X(Datadal, Date) \
    X(oradal, Date) \
    X(Dataal, Date) \
    X(oraal, Date) \
    X(codice_med, Text) \
    X(rowid_med, Integer) \
    X(Descrizione1, Text) \
    X(Descrizione2, Text) \
    X(rowid_controparti, Integer) \
    X(Nominativo, Text) \
    X(codenominativo, Text) \
    X(Indirizzo, Text) \
    X(Cap, Text) \
    X(comune, Text) \
    X(Spedizione, Text) \
    X(provincia, Text) \
    X(Strada, Text) \
    X(telefono, Text) \
    X(Cellulare, Text) \
    X(Email, Text) \
    X(qta, Single) \
    X(quantita, Double) \
    X(prezzo, Currency) \
    X(prezzo2, Currency) \
    X(sconto1, Single) \
    X(sconto2, Single) \
    X(codice_iva, SmallInt) \
    X(percentuale, Single) \
    X(imponibile, Currency) \
    X(imposta, Currency) \
    X(totale, Currency) \
    X(attrib00, Text) \
    X(attrib01, Text) \
    X(attrib02, Text) \
    X(attrib03, Text) \
    X(attrib04, Text) \
    X(attrib05, Date) \
    X(attrib06, Text) \
    X(attrib07, Text) \
    X(attrib08, Text) \
    X(attrib09, Text) \
    X(attrib10, Text) \
    X(StatoRiga, Text) \
    X(Tipo, Text) \
    X(note, Text) \
    X(Rowid_Pagamento, Integer) \
    X(pagamento, Text) \
    X(referente, Text) \
    X(riferimenti, Text)

inline constexpr ColumnSpec kMovimentiColumns[] = {
#define XV_COLUMN_SPEC(name, kind) {#name, ColumnKind::kind},
    XV_MOVIMENTI_COLUMNS(XV_COLUMN_SPEC)
#undef XV_COLUMN_SPEC
};

} // namespace xv::data
