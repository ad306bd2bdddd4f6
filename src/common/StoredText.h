// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

namespace xv::common {

// Why the database could not keep a text exactly as it stands, in words that follow the name of the
// field ("contiene un carattere nullo ..."); empty when it can. Such a text is refused, never changed
// on the way in: what is saved is what the operator sees.
QString unstorableText(const QString& text);

} // namespace xv::common
