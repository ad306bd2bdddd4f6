// SPDX-License-Identifier: MIT
#pragma once

namespace xv::data {

// Data type codes as the suite's data access reports them; the grid and the save act on these.
namespace TypeCode {
constexpr int SmallInt = 2;
constexpr int Integer = 3;
constexpr int Single = 4;
constexpr int Double = 5;
constexpr int Currency = 6;
constexpr int Date = 7;
constexpr int Boolean = 11;
constexpr int BigInt = 20;
constexpr int Numeric = 131;
constexpr int Text = 130;
} // namespace TypeCode

} // namespace xv::data
