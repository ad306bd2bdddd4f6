// SPDX-License-Identifier: MIT
#pragma once

#include "QtPrinters.h"
#include "host/Dialogs.h"

#include <QStringList>
#include <QVector>

#include <deque>

namespace xv::test {

// Answers the program's message boxes by script while it lives. A box nobody expected fails the test (an
// input box always does), and so does an expected box that never came.
class ScriptedDialogs
{
public:
    ScriptedDialogs();
    ~ScriptedDialogs();
    ScriptedDialogs(const ScriptedDialogs&) = delete;
    ScriptedDialogs& operator=(const ScriptedDialogs&) = delete;

    // The next message box must contain this text; it is answered with the given answer.
    void expectMessage(const QString& containing, host::Answer answer = host::Answer::Ok);

    const QVector<host::MessageRequest>& messages() const { return m_messages; }

private:
    struct Expected
    {
        QString containing;
        host::Answer answer;
    };
    std::deque<Expected> m_expectedMessages;
    QVector<host::MessageRequest> m_messages;
};

} // namespace xv::test
