// SPDX-License-Identifier: MIT
#include "Dialogs.h"

#include <QLoggingCategory>
#include <QObject>
#include <QPointer>

Q_LOGGING_CATEGORY(lcDialogs, "xv.host.dialogs")

namespace xv::host {

namespace {

struct State
{
    QPointer<QObject> parent;
    Dialogs::MessageHandler messageHandler;
    Dialogs::InputHandler inputHandler;
    Dialogs::PreviewHandler previewHandler;
    Dialogs::OpenHandler openHandler;
};

State& state()
{
    static State s;
    return s;
}

} // namespace

Answer defaultAnswer(Buttons buttons)
{
    switch (buttons) {
    case Buttons::Ok:
        return Answer::Ok;
    case Buttons::OkCancel:
    case Buttons::YesNoCancel:
        return Answer::Cancel;
    case Buttons::YesNo:
        return Answer::No;
    }
    return Answer::Cancel;
}

Answer Dialogs::message(const QString& text, Buttons buttons, Icon icon, const QString& title)
{
    const MessageRequest request{text, title, buttons, icon};
    if (state().messageHandler)
        return state().messageHandler(request);
    // No window to show it in (a tool or a test without scripted answers): the safe answer, logged.
    qCWarning(lcDialogs).noquote() << "no message window:" << request.title << request.text;
    return defaultAnswer(request.buttons);
}

std::optional<QString> Dialogs::input(const QString& prompt, const QString& title, const QString& proposed)
{
    const InputRequest request{prompt, title, proposed};
    if (state().inputHandler)
        return state().inputHandler(request);
    qCWarning(lcDialogs).noquote() << "no input window:" << title << prompt;
    return std::nullopt;
}

void Dialogs::preview(const QString& title, const std::function<void(QPagedPaintDevice&)>& paint)
{
    if (state().previewHandler)
        return state().previewHandler(PreviewRequest{title, paint});
    qCWarning(lcDialogs).noquote() << "no preview window:" << title;
}

void Dialogs::openDocument(const QString& path)
{
    if (state().openHandler)
        return state().openHandler(path);
    qCWarning(lcDialogs).noquote() << "nothing to open documents with:" << path;
}

void Dialogs::setParent(QObject* parent)
{
    state().parent = parent;
}

QObject* Dialogs::parent()
{
    return state().parent;
}

void Dialogs::setMessageHandler(MessageHandler handler)
{
    state().messageHandler = std::move(handler);
}

void Dialogs::setInputHandler(InputHandler handler)
{
    state().inputHandler = std::move(handler);
}

void Dialogs::setPreviewHandler(PreviewHandler handler)
{
    state().previewHandler = std::move(handler);
}

void Dialogs::setOpenHandler(OpenHandler handler)
{
    state().openHandler = std::move(handler);
}

} // namespace xv::host
