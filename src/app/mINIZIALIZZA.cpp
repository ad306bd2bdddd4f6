// SPDX-License-Identifier: MIT
#include "mINIZIALIZZA.h"

#include "common/Conversions.h"
#include "host/Services.h"

namespace xv::app {

qint16 Inizializza()
{
    return common::toVbBool(host::host().Initialize());
}

} // namespace xv::app
