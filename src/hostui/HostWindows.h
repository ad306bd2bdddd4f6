// SPDX-License-Identifier: MIT
#pragma once

namespace xv::hostui {

// Puts the real message boxes, input boxes and list windows behind the host's seams. The program calls
// it once at start; tests put scripted answers there instead.
void installHostWindows();

} // namespace xv::hostui
