// SPDX-License-Identifier: MIT
#pragma once

#include "hostui/ListWindow.h"

#include <QVector>

#include <deque>
#include <functional>
#include <optional>

namespace xv::test {

// Answers the program's list windows and settings windows by script while it lives. A window nobody
// expected fails the test, and so does an expected window that never came.
class ScriptedLists
{
public:
    using Answerer = std::function<hostui::ListAnswer(const hostui::ListRequest&, const data::Recordset&)>;
    using SettingsAnswerer =
        std::function<std::optional<QVector<hostui::SettingEntry>>(const hostui::SettingsRequest&)>;

    ScriptedLists();
    ~ScriptedLists();
    ScriptedLists(const ScriptedLists&) = delete;
    ScriptedLists& operator=(const ScriptedLists&) = delete;

    // The next list window's caption must contain this text (an empty text matches any caption).
    void expectList(const QString& containingCaption, Answerer answer);
    // Chooses these rows of the shown recordset, in this order.
    void expectChoice(const QString& containingCaption, QVector<int> rows);
    void expectCancel(const QString& containingCaption);
    void expectSettings(const QString& containingCaption, SettingsAnswerer answer);

    const QVector<hostui::ListRequest>& requests() const { return m_requests; }
    const QVector<data::Recordset>& shown() const { return m_shown; }
    const QVector<hostui::SettingsRequest>& settingsRequests() const { return m_settingsRequests; }

private:
    struct ExpectedList
    {
        QString caption;
        Answerer answer;
    };
    struct ExpectedSettings
    {
        QString caption;
        SettingsAnswerer answer;
    };
    std::deque<ExpectedList> m_expectedLists;
    std::deque<ExpectedSettings> m_expectedSettings;
    QVector<hostui::ListRequest> m_requests;
    QVector<data::Recordset> m_shown;
    QVector<hostui::SettingsRequest> m_settingsRequests;
};

} // namespace xv::test
