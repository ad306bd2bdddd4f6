// SPDX-License-Identifier: MIT
#pragma once

class QWidget;

namespace xv::form {
class frm_Commissioni;
}

namespace xv::app {

// The program's entry: starts the module against the host and hands over to the order form.
void Main();

// The program's one form instance, as the host handed it back (null before Main).
QWidget* programForm();
void releaseProgramForm();

} // namespace xv::app
