// SPDX-License-Identifier: MIT
#include "Components.h"

#include "common/Conversions.h"
#include "data/Recordset.h"
#include "data/SqlText.h"
#include "host/HostInterface.h"

namespace xv::lines {

QString compositionSql(const QString& articleCode)
{
    return QStringLiteral("SELECT * FROM Produzione WHERE Tipo='P' AND Codice_A='") +
           data::sqlEscape(articleCode) + QStringLiteral("' ORDER BY rowid");
}

QVector<QStringList> articleComponents(host::IHost& host, const QString& articleCode)
{
    QVector<QStringList> components;
    for (data::Recordset rs = host.OpenRecordset(compositionSql(articleCode)); !rs.eof(); rs.moveNext())
        components.append({rs.text(QStringLiteral("Codice_P")),
                           QString::number(rs.number(QStringLiteral("Qta_P")), 'g', 15),
                           QStringLiteral("0")});
    return components;
}

QString componentQuantityText(const QStringList& component, qint16 articles)
{
    return QString::number(common::numericValue(component.value(Component_qta)) * articles, 'g', 15);
}

} // namespace xv::lines
