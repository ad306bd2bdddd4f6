// SPDX-License-Identifier: MIT
#pragma once

#include <QDirIterator>
#include <QFile>
#include <QStringList>

#include <sys/stat.h>

namespace xv::test {

// Every folder and file from root down whose mode lets anyone but the owner in, each with its mode.
inline QStringList openToOthers(const QString& root)
{
    QStringList found;
    const auto check = [&found](const QString& path) {
        struct stat st
        {
        };
        if (::stat(QFile::encodeName(path).constData(), &st) != 0)
            found << path + QStringLiteral(" (illeggibile)");
        else if ((st.st_mode & (S_IRWXG | S_IRWXO)) != 0)
            found << QStringLiteral("%1 %2").arg(path).arg(st.st_mode & 07777, 4, 8, QLatin1Char('0'));
    };
    check(root);
    QDirIterator it(root, QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden,
                    QDirIterator::Subdirectories);
    while (it.hasNext())
        check(it.next());
    return found;
}

// The process's umask for the length of a scope; a program started meanwhile inherits it.
class Umask
{
public:
    explicit Umask(mode_t mask) : m_before(::umask(mask)) {}
    ~Umask() { ::umask(m_before); }
    Umask(const Umask&) = delete;
    Umask& operator=(const Umask&) = delete;

private:
    mode_t m_before;
};

} // namespace xv::test
