// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

namespace xv::data {

// Why the file at this path must not be opened as this program's database, read without changing a
// byte of it; empty when it may: no file or an empty one (a database still to create), an SQLite
// database without tables, or one that holds this program's schema.
QString foreignFileReason(const QString& path);

} // namespace xv::data
