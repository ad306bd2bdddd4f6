// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <QStringList>
#include <QVector>

namespace xv::host {
class IHost;
}

namespace xv::lines {

// One component of an assembled article: its code (Codice_P), the quantity in one assembled article
// (Qta_P, as plain '.'-decimal text) and "0", the three texts the order form has always kept per component.
enum ComponentField : int {
    Component_codice = 0,
    Component_qta = 1,
    Component_flag = 2,
};

// The bill of materials of an article ('P' rows of Produzione), in the order it was written.
QString compositionSql(const QString& articleCode);

// The components of an article, none for an article that is not assembled. Throws on a database error.
QVector<QStringList> articleComponents(host::IHost& host, const QString& articleCode);

// The quantity of a component for a number of assembled articles, as txt_qta takes it.
QString componentQuantityText(const QStringList& component, qint16 articles);

} // namespace xv::lines
