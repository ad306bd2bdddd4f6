// SPDX-License-Identifier: MIT
#pragma once

class QWidget;

namespace xv::hostui {

// Puts the real message boxes, input boxes, list windows, preview and progress windows and the wait
// cursor behind the host's seams, and the system's printers with them. The program calls it once at start;
// tests put scripted answers there instead.
void installHostWindows();

// What asks the operator nothing: the system's printers, the progress bar and the wait cursor behind the
// host's seams. installHostWindows does it too; tests that script the boxes call it alone.
void installSystemServices();

// The window the host's boxes belong to, when it is one.
QWidget* boxParent();

} // namespace xv::hostui
