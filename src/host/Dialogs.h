// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

#include <functional>
#include <optional>

class QWidget;

namespace xv::host {

enum class Buttons { Ok, OkCancel, YesNo, YesNoCancel };
enum class Icon { None, Critical, Question, Exclamation, Information };
enum class Answer { Ok, Cancel, Yes, No };

struct MessageRequest
{
    QString text;
    QString title;
    Buttons buttons = Buttons::Ok;
    Icon icon = Icon::None;
};

struct InputRequest
{
    QString prompt;
    QString title;
    QString proposed;
};

// The answer a box gives when it is closed without a choice: Ok, No or Cancel.
Answer defaultAnswer(Buttons buttons);

// Every window that asks the operator something goes through here, so that code below the form never
// opens a window itself and tests can answer by script.
class Dialogs
{
public:
    using MessageHandler = std::function<Answer(const MessageRequest&)>;
    using InputHandler = std::function<std::optional<QString>(const InputRequest&)>;

    static Answer message(const QString& text, Buttons buttons, Icon icon, const QString& title);
    // The operator's answer, or nothing when the box was cancelled.
    static std::optional<QString> input(const QString& prompt, const QString& title, const QString& proposed);

    // The window the boxes belong to.
    static void setParent(QWidget* parent);
    static QWidget* parent();

    // The real boxes are put in place by the host's windows at start-up; tests put scripted answers.
    static void setMessageHandler(MessageHandler handler);
    static void setInputHandler(InputHandler handler);
};

} // namespace xv::host
