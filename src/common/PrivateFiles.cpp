// SPDX-License-Identifier: MIT
#include "PrivateFiles.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace xv::common {

void restrictNewFilesToOwner()
{
    ::umask(S_IRWXG | S_IRWXO);
}

bool makePrivateFolder(const QString& path)
{
    if (!QDir().mkpath(path))
        return false;
    return QFile::setPermissions(path,
                                 QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
}

bool makePrivateFile(const QString& path)
{
    // Created with its final mode in the one call, so it is never open to others in between.
    const QByteArray name = QFile::encodeName(path);
    const int fd = ::open(name.constData(), O_WRONLY | O_CREAT | O_CLOEXEC, S_IRUSR | S_IWUSR);
    if (fd < 0)
        return false;
    const bool done = ::fchmod(fd, S_IRUSR | S_IWUSR) == 0;
    ::close(fd);
    return done;
}

} // namespace xv::common
