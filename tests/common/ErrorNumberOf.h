// SPDX-License-Identifier: MIT
#pragma once

#include "common/RuntimeError.h"

namespace xv::common::test {

constexpr int Overflow = static_cast<int>(ErrorNumber::Overflow);
constexpr int TypeMismatch = static_cast<int>(ErrorNumber::TypeMismatch);

// The number of the RuntimeError the action throws, 0 when it throws none.
template <typename F> int errorNumberOf(F&& action)
{
    try {
        action();
    } catch (const RuntimeError& error) {
        return error.number();
    }
    return 0;
}

} // namespace xv::common::test
