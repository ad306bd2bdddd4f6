// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

namespace xv::common {

// A shop's data folder holds its customers' names, telephones and addresses: what the program writes there
// is readable by the account that runs it only, whatever umask the session has.

// From now on this process creates files 0600 and folders 0700 (the umask 077), also those that the
// libraries it uses create behind its back (SQLite's journals, Qt's temporary files). Every program's
// main() calls it first.
void restrictNewFilesToOwner();

// Makes the folder, with any missing parents, and leaves it 0700. False when it cannot be made.
bool makePrivateFolder(const QString& path);

// Leaves an existing file 0600; creates it empty and 0600 when it is missing, so that whatever is written
// into it next is never readable by others, not even for a moment. False when that cannot be done.
bool makePrivateFile(const QString& path);

} // namespace xv::common
