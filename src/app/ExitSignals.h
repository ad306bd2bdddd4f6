// SPDX-License-Identifier: MIT
#pragma once

namespace xv::app {

// A session logout (SIGTERM) or Ctrl+C (SIGINT) ends the program as a normal exit: the event loop is
// left with status 0, without the closing question, so that the form and the host's services are
// released in order, the record lock with them. Call it once the application object exists.
void installExitSignals();

// True once one of those signals has come; a start still under way checks it before the event loop.
bool exitSignalled();

} // namespace xv::app
