// SPDX-License-Identifier: MIT
#include "TestOrders.h"

#include "data/Database.h"

namespace xv::test {

int addOrderLine(data::Database& db, const QString& numero, const QDate& datadocumento,
                 const std::function<void(data::Recordset&)>& adjust)
{
    data::Recordset t = data::Recordset::openTable(db, QStringLiteral("movimenti"));
    t.addNew();
    for (const char* text : {"Descrizione2", "codenominativo", "Indirizzo", "Cap", "comune", "Spedizione",
                             "provincia", "telefono", "attrib00", "attrib01", "attrib02", "attrib03", "attrib06",
                             "attrib09", "Tipo", "note", "pagamento", "riferimenti", "Descrizione1"})
        t.setValue(QString::fromLatin1(text), QString());
    for (const char* number : {"rowid_utente", "Riga", "rowid_testata", "rowid_deposito", "rowid_med",
                               "rowid_controparti", "sconto1", "sconto2", "codice_iva", "percentuale",
                               "Rowid_Pagamento"})
        t.setValue(QString::fromLatin1(number), 0);
    const QDateTime midnight = datadocumento.startOfDay();
    for (const char* date : {"datareg", "oradal", "oraal", "Datadal", "Dataal", "attrib05"})
        t.setValue(QString::fromLatin1(date), midnight);
    for (const char* money : {"prezzo", "prezzo2", "imponibile", "imposta", "totale"})
        t.setMoney(QString::fromLatin1(money), common::Money());
    t.setValue(QStringLiteral("Tipogestione"), QStringLiteral("0"));
    t.setValue(QStringLiteral("Tipomovimento"), QStringLiteral("CO"));
    t.setValue(QStringLiteral("documento"), QStringLiteral("COMM"));
    t.setValue(QStringLiteral("numero"), numero);
    t.setValue(QStringLiteral("serie"), QString::number(datadocumento.year()));
    t.setValue(QStringLiteral("datadocumento"), datadocumento);
    t.setValue(QStringLiteral("StatoRiga"), QStringLiteral("EMESSO"));
    t.setValue(QStringLiteral("Nominativo"), QStringLiteral("Rossi Maria"));
    t.setValue(QStringLiteral("attrib04"), QStringLiteral("Matrimonio"));
    t.setValue(QStringLiteral("codice_med"), QStringLiteral("BOM001"));
    t.setValue(QStringLiteral("qta"), 1);
    if (adjust)
        adjust(t);
    t.update();
    return t.value(QStringLiteral("rowid")).toInt();
}

void addCounter(data::Database& db, int year, int lastNumber)
{
    db.executeBound(QStringLiteral("insert into numeratori (codtipodoc, tipodocumento, serie, numero) "
                                   "values ('CO', 'COMM', ?, ?)"),
                    {QString::number(year), lastNumber});
}

} // namespace xv::test
