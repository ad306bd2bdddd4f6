// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

#include <functional>
#include <optional>

class QObject;
class QPagedPaintDevice;

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

// A document to look at before it is printed: paint draws it, page after page, on the device it is given.
struct PreviewRequest
{
    QString title;
    std::function<void(QPagedPaintDevice&)> paint;
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
    using PreviewHandler = std::function<void(const PreviewRequest&)>;
    using OpenHandler = std::function<void(const QString& path)>;

    static Answer message(const QString& text, Buttons buttons, Icon icon, const QString& title);
    // The operator's answer, or nothing when the box was cancelled.
    static std::optional<QString> input(const QString& prompt, const QString& title, const QString& proposed);
    // Shows a document in a preview window, from which the operator may also print it.
    static void preview(const QString& title, const std::function<void(QPagedPaintDevice&)>& paint);
    // Opens a file the program wrote (a PDF) with the program the system has for it.
    static void openDocument(const QString& path);

    // The window the boxes belong to.
    static void setParent(QObject* parent);
    static QObject* parent();

    // The real boxes are put in place by the host's windows at start-up; tests put scripted answers.
    static void setMessageHandler(MessageHandler handler);
    static void setInputHandler(InputHandler handler);
    static void setPreviewHandler(PreviewHandler handler);
    static void setOpenHandler(OpenHandler handler);
};

} // namespace xv::host
