// SPDX-License-Identifier: MIT
#include "TestOrders.h"

#include "common/Money.h"
#include "data/Database.h"
#include "data/Recordset.h"

#include <QSqlQuery>

namespace xv::test {

namespace {

const QStringList kAmounts = {"prezzo", "prezzo2", "imponibile", "imposta", "totale"};

} // namespace

int addOrderLine(data::Database& db, const QString& numero, const QDate& datadocumento, LineValues values)
{
    data::Recordset t = data::Recordset::openTable(db, QStringLiteral("movimenti"));
    t.addNew();
    for (const char* text :
         {"Descrizione2", "codenominativo", "Indirizzo", "Cap", "comune", "Spedizione", "provincia",
          "telefono", "attrib00", "attrib01", "attrib02", "attrib03", "attrib06", "attrib09", "Tipo", "note",
          "pagamento", "riferimenti", "Descrizione1"})
        t.setValue(QString::fromLatin1(text), QString());
    for (const char* number :
         {"rowid_utente", "Riga", "rowid_testata", "rowid_deposito", "rowid_med", "rowid_controparti",
          "sconto1", "sconto2", "codice_iva", "percentuale", "Rowid_Pagamento"})
        t.setValue(QString::fromLatin1(number), 0);
    for (const char* date : {"datareg", "oradal", "oraal", "Datadal", "Dataal", "attrib05"})
        t.setValue(QString::fromLatin1(date), datadocumento.startOfDay());
    for (const QString& amount : kAmounts)
        t.setMoney(amount, common::Money());
    const std::pair<const char*, QVariant> defaults[] = {{"Tipogestione", "0"},
                                                         {"Tipomovimento", "CO"},
                                                         {"documento", "COMM"},
                                                         {"numero", numero},
                                                         {"serie", QString::number(datadocumento.year())},
                                                         {"datadocumento", datadocumento},
                                                         {"StatoRiga", "EMESSO"},
                                                         {"Nominativo", "Rossi Maria"},
                                                         {"attrib04", "Matrimonio"},
                                                         {"codice_med", "BOM001"},
                                                         {"qta", 1}};
    for (const auto& [name, value] : defaults)
        t.setValue(QString::fromLatin1(name), value);
    for (const auto& [name, value] : values) {
        const QString column = QString::fromLatin1(name);
        if (value.isValid() && kAmounts.contains(column, Qt::CaseInsensitive))
            t.setMoney(column, common::Money::fromDouble(value.toDouble()));
        else
            t.setValue(column, value);
    }
    t.update();
    return t.value(QStringLiteral("rowid")).toInt();
}

QString scalar(data::Database& db, const QString& sql, const QVariantList& values)
{
    QSqlQuery q = db.executeBound(sql, values);
    return q.next() ? q.value(0).toString() : QStringLiteral("<none>");
}

void addCounter(data::Database& db, int year, int lastNumber)
{
    db.executeBound(QStringLiteral("insert into numeratori (codtipodoc, tipodocumento, serie, numero) "
                                   "values ('CO', 'COMM', ?, ?)"),
                    {QString::number(year), lastNumber});
}

} // namespace xv::test
