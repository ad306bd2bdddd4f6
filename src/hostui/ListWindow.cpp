// SPDX-License-Identifier: MIT
#include "ListWindow.h"

#include "common/RuntimeError.h"
#include "host/Dialogs.h"
#include "host/Services.h"
#include "hostui/HostWindows.h"
#include "hostui/ListModel.h"

#include <QRegularExpression>

#include <utility>

namespace xv::hostui {

using common::ErrorNumber;
using common::RuntimeError;
using host::Dialogs;
using host::host;


namespace {

struct State
{
    ListWindows::Handler handler;
    ListWindows::SettingsHandler settingsHandler;
};

State& state()
{
    static State s;
    return s;
}

} // namespace

ListAnswer ListWindows::choose(const ListRequest& request, const Recordset& rows)
{
    if (state().handler)
        return state().handler(request, rows);
    ListDialog dialog(request, rows, boxParent());
    if (dialog.exec() != QDialog::Accepted)
        return {};
    return dialog.answer();
}

bool ListWindows::editSettings(const QString& caption, const QString& store, const QString& section)
{
    SettingsRequest request{caption, store, section, {}};
    QHash<QString, QString> before;
    for (const auto& [key, value] : host().SectionSettings(section, store)) {
        request.entries.push_back({key, value});
        before.insert(key.toLower(), value);
    }

    std::optional<QVector<SettingEntry>> edited;
    if (state().settingsHandler) {
        edited = state().settingsHandler(request);
    } else {
        SettingsDialog dialog(request, boxParent());
        if (dialog.exec() == QDialog::Accepted)
            edited = dialog.entries();
    }
    if (!edited)
        return false;
    for (const SettingEntry& entry : *edited) {
        const QString key = entry.key.trimmed();
        if (key.isEmpty())
            continue;
        const auto old = before.constFind(key.toLower());
        if (old != before.constEnd() && *old == entry.value)
            continue;
        host().SaveSetting(section, key, entry.value, store);
    }
    return true;
}

void ListWindows::setHandler(Handler handler)
{
    state().handler = std::move(handler);
}

void ListWindows::setSettingsHandler(SettingsHandler handler)
{
    state().settingsHandler = std::move(handler);
}

namespace {

struct Choice
{
    Recordset shown;
    QVector<int> rows;
};

std::optional<Choice> showList(const ListRequest& request, const Recordset& rows)
{
    ListAnswer answer = ListWindows::choose(request, rows);
    if (!answer.confirmed || answer.rows.isEmpty())
        return std::nullopt;
    Choice choice{answer.shown ? *answer.shown : rows, answer.rows};
    for (int row : choice.rows) {
        if (row < 0 || row >= choice.shown.recordCount())
            throw RuntimeError(ErrorNumber::InvalidProcedureCall,
                               QStringLiteral("Riga scelta inesistente: %1").arg(row));
    }
    return choice;
}

Recordset chosenRecordset(const Choice& choice)
{
    const QVector<QVector<QVariant>> values = rowValues(choice.shown);
    QVector<QVector<QVariant>> chosen;
    for (int row : choice.rows)
        chosen.push_back(values[row]);
    return Recordset::fromRows(fieldNames(choice.shown), std::move(chosen));
}

struct ListSource
{
    QString sql;
    QString store;
    QString section;
    bool settings() const { return sql.isEmpty(); }
};

ListSource parseSource(const QString& source)
{
    const QString text = source.trimmed();
    static const QRegularExpression selectText(QStringLiteral("^select\\b"),
                                               QRegularExpression::CaseInsensitiveOption);
    if (selectText.match(text).hasMatch())
        return {text, {}, {}};
    const QString lower = text.toLower();
    if (lower == QLatin1String("config_comm"))
        return {{}, QStringLiteral("docs"), QStringLiteral("comm")};
    if (lower == QLatin1String("config_co"))
        return {{}, QStringLiteral("docs"), QStringLiteral("co")};
    static const QRegularExpression tableName(QStringLiteral("^(?:\\[[^\\]]+\\]|[A-Za-z_][A-Za-z0-9_.]*)$"));
    if (!tableName.match(text).hasMatch())
        throw RuntimeError(ErrorNumber::InvalidProcedureCall,
                           QStringLiteral("Origine dell'elenco non valida: '%1'").arg(source));
    return {QStringLiteral("select * from ") + text, {}, {}};
}

} // namespace

ListWindow::ListWindow(int searchLimit) : m_searchLimit(searchLimit) {}

void ListWindow::SetPrintHeading(const QString& title, const QDate& day)
{
    m_printTitle = title;
    m_printDay = day;
}

void ListWindow::SelectFromList(const QString& source, int mode, const QString& caption, bool& confirmed)
{
    confirmed = false;
    m_selected = Recordset();
    const ListSource parsed = parseSource(source);
    if (parsed.settings()) {
        confirmed = ListWindows::editSettings(caption, parsed.store, parsed.section);
        return;
    }
    const Recordset rows = host().OpenRecordset(parsed.sql);
    m_selected = Recordset::fromRows(fieldNames(rows), {});
    ListRequest request;
    request.caption = caption;
    request.sql = parsed.sql;
    request.multiSelect = mode == 1;
    request.printable = true;
    request.printTitle = std::exchange(m_printTitle, QString());
    request.printDay = std::exchange(m_printDay, QDate());
    const auto choice = showList(request, rows);
    if (!choice)
        return;
    m_selected = chosenRecordset(*choice);
    confirmed = true;
}

Recordset ListWindow::GetSelectedRows()
{
    return m_selected;
}

std::optional<Recordset> ListWindow::choosePaged(ListRequest request, const SearchSql& sqlFor)
{
    m_selected = Recordset();
    request.sql = sqlFor({}, m_searchLimit, {});
    request.printable = true;
    const Recordset rows = host().OpenRecordset(request.sql);
    m_selected = Recordset::fromRows(fieldNames(rows), {});
    // Only a shortened list needs the database asked again: a whole one is filtered as it stands.
    if (rows.recordCount() >= m_searchLimit) {
        request.note = QStringLiteral("(ultime %1, altre scorrendo: usare Cerca)").arg(m_searchLimit);
        request.search = [sqlFor, limit = m_searchLimit](const QString& text) {
            return host().OpenRecordset(sqlFor(text, limit, {}));
        };
        // Each page reads only the orders it shows, so the database is asked as the operator types.
        request.searchPauseMs = 0;
        request.page = [sqlFor](const QString& text, int count, const QVariantList& after) {
            return host().OpenRecordset(sqlFor(text, count, after));
        };
        request.pageSize = m_searchLimit;
    }
    const auto choice = showList(request, rows);
    if (!choice)
        return std::nullopt;
    m_selected = chosenRecordset(*choice);
    return rows;
}

void ListWindow::SelectFromPages(const SearchSql& sqlFor, int mode, const QString& caption, bool& confirmed)
{
    ListRequest request;
    request.caption = caption;
    request.multiSelect = mode == 1;
    confirmed = choosePaged(std::move(request), sqlFor).has_value();
}

std::optional<QStringList> ListWindow::Search(const QString& caption, const SearchSql& sqlFor)
{
    ListRequest request;
    request.caption = caption;
    const std::optional<Recordset> rows = choosePaged(std::move(request), sqlFor);
    if (!rows)
        return std::nullopt;
    const QVector<QVariant> row = rowValues(m_selected).constFirst();
    const QVector<ColumnKind> kinds = columnKinds(*rows, rowValues(*rows));
    QStringList texts;
    for (int column = 0; column < row.size(); ++column)
        texts << makeCell(row[column], kinds.value(column)).text;
    return texts;
}

std::optional<QVariantList> ListWindow::PickRow(const QString& caption, const QString& sql)
{
    m_selected = Recordset();
    const Recordset rows = host().OpenRecordset(sql);
    m_selected = Recordset::fromRows(fieldNames(rows), {});
    if (rows.isEmpty())
        return std::nullopt;
    ListRequest request;
    request.caption = caption;
    request.sql = sql;
    const auto choice = showList(request, rows);
    if (!choice)
        return std::nullopt;
    m_selected = chosenRecordset(*choice);
    return rowValues(m_selected).constFirst();
}

} // namespace xv::hostui
