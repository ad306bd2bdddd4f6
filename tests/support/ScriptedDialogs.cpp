// SPDX-License-Identifier: MIT
#include "ScriptedDialogs.h"

#include <gtest/gtest.h>

#include <QPrinter>

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
    Dialogs::setOpenHandler([this](const QString& path) { m_opened << path; });
    Dialogs::setPreviewHandler([this](const host::PreviewRequest& request) {
        if (m_expectedPreviews.empty()) {
            ADD_FAILURE() << "unexpected preview: " << request.title.toStdString();
            return;
        }
        EXPECT_TRUE(request.title.contains(m_expectedPreviews.front()))
            << "preview '" << request.title.toStdString() << "' lacks '"
            << m_expectedPreviews.front().toStdString() << "'";
        m_expectedPreviews.pop_front();
        const QString path = m_previewDir.filePath(QStringLiteral("anteprima-%1.pdf").arg(m_previews.size()));
        QPrinter printer(QPrinter::HighResolution);
        printer.setOutputFormat(QPrinter::PdfFormat);
        printer.setOutputFileName(path);
        request.paint(printer);
        m_previews.push_back({request.title, path});
    });
}

ScriptedDialogs::~ScriptedDialogs()
{
    Dialogs::setMessageHandler({});
    Dialogs::setInputHandler({});
    Dialogs::setPreviewHandler({});
    Dialogs::setOpenHandler({});
    for (const Expected& expected : m_expectedMessages)
        ADD_FAILURE() << "expected message box never shown: " << expected.containing.toStdString();
    for (const QString& expected : m_expectedPreviews)
        ADD_FAILURE() << "expected preview never shown: " << expected.toStdString();
}

void ScriptedDialogs::expectPreview(const QString& titleContaining)
{
    m_expectedPreviews.push_back(titleContaining);
}

void ScriptedDialogs::expectMessage(const QString& containing, Answer answer)
{
    m_expectedMessages.push_back({containing, answer});
}

} // namespace xv::test
