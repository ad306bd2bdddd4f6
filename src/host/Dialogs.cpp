// SPDX-License-Identifier: MIT
#include "Dialogs.h"

#include <QAbstractButton>
#include <QApplication>
#include <QInputDialog>
#include <QMessageBox>
#include <QPointer>

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

Answer showMessageBox(const MessageRequest& request)
{
    QMessageBox box(state().parent);
    box.setWindowTitle(request.title);
    box.setText(request.text);
    switch (request.icon) {
    case Icon::Critical:
        box.setIcon(QMessageBox::Critical);
        break;
    case Icon::Question:
        box.setIcon(QMessageBox::Question);
        break;
    case Icon::Exclamation:
        box.setIcon(QMessageBox::Warning);
        break;
    case Icon::Information:
        box.setIcon(QMessageBox::Information);
        break;
    case Icon::None:
        break;
    }
    switch (request.buttons) {
    case Buttons::Ok:
        box.setStandardButtons(QMessageBox::Ok);
        break;
    case Buttons::OkCancel:
        box.setStandardButtons(QMessageBox::Ok | QMessageBox::Cancel);
        break;
    case Buttons::YesNo:
        box.setStandardButtons(QMessageBox::Yes | QMessageBox::No);
        break;
    case Buttons::YesNoCancel:
        box.setStandardButtons(QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel);
        break;
    }
    const std::pair<QMessageBox::StandardButton, QString> captions[] = {
        {QMessageBox::Yes, QStringLiteral("Sì")},
        {QMessageBox::No, QStringLiteral("No")},
        {QMessageBox::Cancel, QStringLiteral("Annulla")},
    };
    for (const auto& [which, caption] : captions) {
        if (QAbstractButton* button = box.button(which))
            button->setText(caption);
    }
    switch (box.exec()) {
    case QMessageBox::Yes:
        return Answer::Yes;
    case QMessageBox::No:
        return Answer::No;
    case QMessageBox::Cancel:
        return Answer::Cancel;
    default:
        return request.buttons == Buttons::Ok         ? Answer::Ok
               : request.buttons == Buttons::OkCancel ? Answer::Cancel
                                                      : Answer::No;
    }
}

} // namespace

Answer Dialogs::message(const QString& text, Buttons buttons, Icon icon, const QString& title)
{
    const MessageRequest request{text, title, buttons, icon};
    if (state().messageHandler)
        return state().messageHandler(request);
    return showMessageBox(request);
}

std::optional<QString> Dialogs::input(const QString& prompt, const QString& title, const QString& proposed)
{
    const InputRequest request{prompt, title, proposed};
    if (state().inputHandler)
        return state().inputHandler(request);
    bool ok = false;
    const QString answer =
        QInputDialog::getText(state().parent, title, prompt, QLineEdit::Normal, proposed, &ok);
    if (!ok)
        return std::nullopt;
    return answer;
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
