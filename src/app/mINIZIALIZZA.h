// SPDX-License-Identifier: MIT
#pragma once

#include <QtGlobal>

namespace xv::app {

// The host's readiness as the suite's Boolean: -1 ready, 0 not.
qint16 Inizializza();

} // namespace xv::app
