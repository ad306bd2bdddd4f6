// SPDX-License-Identifier: MIT
#include "ScriptedDialogs.h"

#include <gtest/gtest.h>

namespace xv::test {

using host::Answer;
using host::Dialogs;

ScriptedDialogs::ScriptedDialogs()
{
    Dialogs::setMessageHandler([this](const host::MessageRequest& request) {
        m_messages.push_back(request);
        if (m_expectedMessages.empty()) {
            ADD_FAILURE() << "unexpected message box: " << request.text.toStdString();
            return request.buttons == host::Buttons::Ok ? Answer::Ok : Answer::Cancel;
        }
        const Expected expected = m_expectedMessages.front();
        m_expectedMessages.pop_front();
        EXPECT_TRUE(request.text.contains(expected.containing))
            << "message box '" << request.text.toStdString() << "' lacks '"
            << expected.containing.toStdString() << "'";
        return expected.answer;
    });
    Dialogs::setInputHandler([](const host::InputRequest& request) -> std::optional<QString> {
        ADD_FAILURE() << "unexpected input box: " << request.prompt.toStdString();
        return std::nullopt;
    });
}

ScriptedDialogs::~ScriptedDialogs()
{
    Dialogs::setMessageHandler({});
    Dialogs::setInputHandler({});
    for (const Expected& expected : m_expectedMessages)
        ADD_FAILURE() << "expected message box never shown: " << expected.containing.toStdString();
}

void ScriptedDialogs::expectMessage(const QString& containing, Answer answer)
{
    m_expectedMessages.push_back({containing, answer});
}

} // namespace xv::test
