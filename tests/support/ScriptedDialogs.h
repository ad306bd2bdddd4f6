// SPDX-License-Identifier: MIT
#pragma once

#include "QtPrinters.h"
#include "host/Dialogs.h"

#include <QStringList>
#include <QVector>

#include <deque>
#include <optional>

namespace xv::test {

// Answers the program's message and input boxes by script while it lives. A box nobody expected
// fails the test, and so does an expected box that never came.
class ScriptedDialogs
{
public:
    ScriptedDialogs();
    ~ScriptedDialogs();
    ScriptedDialogs(const ScriptedDialogs&) = delete;
    ScriptedDialogs& operator=(const ScriptedDialogs&) = delete;

    // The next message box must contain this text; it is answered with the given answer.
    void expectMessage(const QString& containing, host::Answer answer = host::Answer::Ok);
    void expectInput(std::optional<QString> answer);

    const QVector<host::MessageRequest>& messages() const { return m_messages; }
    const QVector<host::InputRequest>& inputs() const { return m_inputs; }

private:
    struct Expected
    {
        QString containing;
        host::Answer answer;
    };
    std::deque<Expected> m_expectedMessages;
    std::deque<std::optional<QString>> m_expectedInputs;
    QVector<host::MessageRequest> m_messages;
    QVector<host::InputRequest> m_inputs;
};

} // namespace xv::test
