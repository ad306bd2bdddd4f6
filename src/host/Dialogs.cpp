// SPDX-License-Identifier: MIT
#include "Dialogs.h"

#include <QLoggingCategory>
#include <QPointer>
#include <QWidget>

Q_LOGGING_CATEGORY(lcDialogs, "xv.host.dialogs")

namespace xv::host {

namespace {

struct State
{
    QPointer<QWidget> parent;
    Dialogs::MessageHandler messageHandler;
    Dialogs::InputHandler inputHandler;
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

void Dialogs::setParent(QWidget* parent)
{
    state().parent = parent;
}

QWidget* Dialogs::parent()
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

} // namespace xv::host
