// SPDX-License-Identifier: MIT
#pragma once

#include <QPoint>
#include <QSize>
#include <QString>
#include <QtGlobal>

class QWidget;

namespace xv::app {

// Program-wide values left by the module start-up for the rest of the run.
inline QString ConnectionText;
inline bool AltairEnabled = false;
inline bool AutoMail = false;
inline qint16 GMenu = 0;
inline qint16 CircleMenuButton = 0;
inline QString CircleMenuButton2;

// The screen's mouse pointer, by the suite's numbers: 0 default, 11 hourglass.
void setMousePointer(int pointer);

// Makes the host ready and places the module's window; false when the module may not go on.
// form is replaced by the reference the host hands back.
bool InitModulo(QWidget*& form, bool maximise, bool centre, bool keepCaption);

// Set when start-up refused to go on and the program must end without a message.
bool programEndRequested();
void clearProgramEndRequest();

// Where the window is put when it is centred: 160 twips above the true centre, on purpose.
QPoint centredPosition(const QSize& screen, const QSize& window, int dpiY);

} // namespace xv::app
