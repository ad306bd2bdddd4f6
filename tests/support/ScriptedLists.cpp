// SPDX-License-Identifier: MIT
#include "ScriptedLists.h"

#include <gtest/gtest.h>

namespace xv::test {

using hostui::ListAnswer;
using hostui::ListWindows;

ScriptedLists::ScriptedLists()
{
    ListWindows::setHandler([this](const hostui::ListRequest& request, const data::Recordset& rows) {
        m_requests.push_back(request);
        m_shown.push_back(rows);
        if (m_expectedLists.empty()) {
            ADD_FAILURE() << "unexpected list window: '" << request.caption.toStdString() << "' "
                          << request.sql.toStdString();
            return ListAnswer();
        }
        const ExpectedList expected = m_expectedLists.front();
        m_expectedLists.pop_front();
        EXPECT_TRUE(request.caption.contains(expected.caption))
            << "list window '" << request.caption.toStdString() << "' lacks '"
            << expected.caption.toStdString() << "'";
        return expected.answer(request, rows);
    });
    ListWindows::setSettingsHandler(
        [this](const hostui::SettingsRequest& request) -> std::optional<QVector<hostui::SettingEntry>> {
            m_settingsRequests.push_back(request);
            if (m_expectedSettings.empty()) {
                ADD_FAILURE() << "unexpected settings window: " << request.caption.toStdString();
                return std::nullopt;
            }
            const ExpectedSettings expected = m_expectedSettings.front();
            m_expectedSettings.pop_front();
            EXPECT_TRUE(request.caption.contains(expected.caption))
                << "settings window '" << request.caption.toStdString() << "' lacks '"
                << expected.caption.toStdString() << "'";
            return expected.answer(request);
        });
}

ScriptedLists::~ScriptedLists()
{
    ListWindows::setHandler({});
    ListWindows::setSettingsHandler({});
    for (const ExpectedList& expected : m_expectedLists)
        ADD_FAILURE() << "expected list window never shown: " << expected.caption.toStdString();
    for (const ExpectedSettings& expected : m_expectedSettings)
        ADD_FAILURE() << "expected settings window never shown: " << expected.caption.toStdString();
}

void ScriptedLists::expectList(const QString& containingCaption, Answerer answer)
{
    m_expectedLists.push_back({containingCaption, std::move(answer)});
}

void ScriptedLists::expectChoice(const QString& containingCaption, QVector<int> rows)
{
    expectList(containingCaption, [rows](const hostui::ListRequest&, const data::Recordset& shown) {
        for (int row : rows) {
            if (row < 0 || row >= shown.recordCount())
                ADD_FAILURE() << "scripted choice of row " << row << " among " << shown.recordCount();
        }
        return ListAnswer{true, rows, std::nullopt};
    });
}

void ScriptedLists::expectCancel(const QString& containingCaption)
{
    expectList(containingCaption,
               [](const hostui::ListRequest&, const data::Recordset&) { return ListAnswer(); });
}

void ScriptedLists::expectSettings(const QString& containingCaption, SettingsAnswerer answer)
{
    m_expectedSettings.push_back({containingCaption, std::move(answer)});
}

} // namespace xv::test
