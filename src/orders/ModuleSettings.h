// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

namespace xv::host {
class IHost;
}

namespace xv::orders {

// The order module's settings, read afresh for every new order so that changes made in the suite
// take effect at once.
struct ModuleSettings
{
    QString EMAIL_FROM;
    QString tipogestione;
    QString tipomovimento;
    bool checkAddRigaFlex = false;
    bool checkControparti = false;
    QString sql;
    QString sql_tEventi;
    QString SQL_SelControparti;
    // The order headers the operator chooses from for control slips and changes of state: a table or
    // view whose first two columns are the number and the series, with a column [STATO COMMISSIONE].
    QString sql_Commissioni;
};

ModuleSettings readModuleSettings(host::IHost& host);

// The customer pick list with the typed name put where "[and_ragsoc]" stands.
QString customerListSql(const QString& pattern, const QString& typedName);

} // namespace xv::orders
