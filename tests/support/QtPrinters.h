// SPDX-License-Identifier: MIT
#pragma once

#include <QDateTime>
#include <QString>
#include <QVariant>

#include <ostream>

// Readable failure messages for Qt's values.
inline void PrintTo(const QString& value, std::ostream* os)
{
    *os << '"' << value.toStdString() << '"';
}

inline void PrintTo(const QVariant& value, std::ostream* os)
{
    *os << "QVariant(" << value.typeName() << ", " << value.toString().toStdString() << ')';
}

inline void PrintTo(const QDateTime& value, std::ostream* os)
{
    *os << value.toString(Qt::ISODateWithMs).toStdString();
}
