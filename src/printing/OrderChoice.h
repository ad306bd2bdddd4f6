// SPDX-License-Identifier: MIT
#pragma once

namespace xv::printing {
} // namespace xv::printing
