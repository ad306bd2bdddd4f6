// SPDX-License-Identifier: MIT
#pragma once

namespace xv::lines {

// The order-lines grid keeps one cell per field of a line, in this fixed order, so that the procedures that
// fill, read and save the lines can address a field by name whatever the operator sees.
enum Col : int
{
    Col_rowid = 0,
    Col_Tipogestione = 1,
    Col_Tipomovimento = 2,
    Col_rowid_utente = 3,
    Col_Riga = 4,
    Col_rowid_testata = 5,
    Col_rowid_deposito = 6,
    Col_numero = 7,
    Col_documento = 8,
    Col_serie = 9,
    Col_datadocumento = 10,
    Col_datareg = 11,
    Col_Datadal = 12,
    Col_oradal = 13,
    Col_Dataal = 14,
    Col_oraal = 15,
    Col_codice_med = 16,
    Col_rowid_med = 17,
    Col_Descrizione1 = 18,
    Col_Descrizione2 = 19,
    Col_rowid_controparti = 20,
    Col_Nominativo = 21,
    Col_codenominativo = 22,
    Col_Indirizzo = 23,
    Col_Cap = 24,
    Col_comune = 25,
    Col_Spedizione = 26,
    Col_provincia = 27,
    Col_Strada = 28,
    Col_telefono = 29,
    Col_Cellulare = 30,
    Col_Email = 31,
    Col_qta = 32,
    Col_quantita = 33,
    Col_prezzo = 34,
    Col_prezzo2 = 35,
    Col_sconto1 = 36,
    Col_sconto2 = 37,
    Col_codice_iva = 38,
    Col_percentuale = 39,
    Col_imponibile = 40,
    Col_imposta = 41,
    Col_totale = 42,
    Col_attrib00 = 43,
    Col_attrib01 = 44,
    Col_attrib02 = 45,
    Col_attrib03 = 46,
    Col_attrib04 = 47,
    Col_attrib05 = 48,
    Col_attrib06 = 49,
    Col_attrib07 = 50,
    Col_attrib08 = 51,
    Col_attrib09 = 52,
    Col_attrib10 = 53,
    Col_StatoRiga = 54,
    Col_Tipo = 55,
    Col_note = 56,
    Col_Rowid_Pagamento = 57,
    Col_pagamento = 58,
    Col_referente = 59,
    Col_riferimenti = 60,
    ColCount = 61
};

// Rows 0 and 1 are hidden and carry each column's field name and type code, which the save procedure
// reads back; the order's lines start below them.
constexpr int FirstDataRow = 2;

struct VisibleColumn
{
    int col;
    int twips;
};

// Every other column has width 0: it only carries data for the procedures.
inline constexpr VisibleColumn kVisibleColumns[] = {
    {Col_Riga, 600},    {Col_codice_med, 2560}, {Col_Descrizione1, 6900}, {Col_qta, 1100},
    {Col_prezzo, 2000}, {Col_imponibile, 2100}, {Col_note, 1500},
};

} // namespace xv::lines
