// SPDX-License-Identifier: MIT
#pragma once

#include "QtPrinters.h"
#include "host/Dialogs.h"

#include <QStringList>
#include <QTemporaryDir>
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

    // The next preview window must have this text in its title; what it shows is painted into a PDF file,
    // which previews() names.
    void expectPreview(const QString& titleContaining);
    struct Preview
    {
        QString title;
        QString pdfPath;
    };
    const QVector<Preview>& previews() const { return m_previews; }
    // The files the program asked to open.
    const QStringList& opened() const { return m_opened; }

private:
    struct Expected
    {
        QString containing;
        host::Answer answer;
    };
    std::deque<Expected> m_expectedMessages;
    QVector<host::MessageRequest> m_messages;
    std::deque<QString> m_expectedPreviews;
    QVector<Preview> m_previews;
    QStringList m_opened;
    QTemporaryDir m_previewDir;
};

} // namespace xv::test
