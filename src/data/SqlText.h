// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

namespace xv::data {

// Every value spliced into an SQL text goes through here, so that a quote in a customer's name can
// never end the literal early: callers write "... where codice='" + sqlEscape(code) + "'".
QString sqlEscape(const QString& value);

// The value as a complete SQL text literal, quotes included.
QString sqlQuoted(const QString& value);

} // namespace xv::data
