// SPDX-License-Identifier: MIT
#include "ModuleSettings.h"

#include "common/Conversions.h"
#include "host/HostInterface.h"
#include "data/SqlText.h"

namespace xv::orders {

ModuleSettings readModuleSettings(host::IHost& host)
{
    const QString comm = QStringLiteral("comm");
    const QString docs = QStringLiteral("DOCS");
    ModuleSettings s;
    // The sender is the one value kept in the suite's own store, under the section "DOCS": kept as it is.
    s.EMAIL_FROM = host.GetSetting(QStringLiteral("DOCS"), QStringLiteral("EMAIL_FROM"), QString(),
                                   QStringLiteral("eKELA"));
    s.tipogestione = host.GetSetting(comm, QStringLiteral("tipogestione"), QStringLiteral("0"), docs);
    s.tipomovimento = host.GetSetting(comm, QStringLiteral("tipomovimento"), QStringLiteral("CO"), docs);
    s.checkAddRigaFlex =
        common::numericValue(host.GetSetting(comm, QStringLiteral("checkAddRigaFlex"), QStringLiteral("0"), docs)) !=
        0.0;
    s.checkControparti =
        common::numericValue(host.GetSetting(comm, QStringLiteral("checkControparti"), QStringLiteral("0"), docs)) !=
        0.0;
    s.sql = host.GetSetting(comm, QStringLiteral("sql"), QStringLiteral("mov_co"), docs);
    // The default of the events source is the key's own name: kept as it is.
    s.sql_tEventi = host.GetSetting(comm, QStringLiteral("sql_tEventi"), QStringLiteral("sql_tEventi"), docs);
    s.SQL_SelControparti = host.GetSetting(
        comm, QStringLiteral("SQL_SelControparti"),
        QStringLiteral("select distinct ragsoc,email,rowid from controparti where 1=1 [and_ragsoc] order by ragsoc asc"),
        docs);
    s.sql_Commissioni =
        host.GetSetting(comm, QStringLiteral("sql_Commissioni"), QStringLiteral("Doc_Commissioni_testate"), docs);
    return s;
}

QString customerListSql(const QString& pattern, const QString& typedName)
{
    QString sql = pattern;
    const QString filter = typedName.isEmpty()
                               ? QString()
                               : QStringLiteral("and ragsoc like '") + data::sqlEscape(typedName) + QStringLiteral("%'");
    return sql.replace(QStringLiteral("[and_ragsoc]"), filter);
}

} // namespace xv::orders
