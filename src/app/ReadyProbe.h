// SPDX-License-Identifier: MIT
#pragma once

namespace xv::form {
class frm_Commissioni;
}

namespace xv::app {

// For measuring the program as a user starts it (see the README): with XVELARIO_EXIT_WHEN_READY=1 the
// program, once its form is shown and ready for keys, writes "xVELARIO ready" and its peak memory on
// standard error and ends with status 0. Before that, XVELARIO_OPEN_ORDER=<number> opens that order as if
// typed and confirmed with Enter, and XVELARIO_SEARCH=<text> opens the order search window, types the text
// into its filter, lets the search run and closes it. Answers whether the probe is on.
bool startReadyProbe(form::frm_Commissioni& form);

// The process's peak resident memory so far (VmHWM), in kB; 0 where the system does not say.
long peakMemoryKb();

} // namespace xv::app
