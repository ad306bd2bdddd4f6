// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

#include <stdexcept>

namespace xv::common {

// Error numbers kept from the suite's run-time library, so that logs and operators see the numbers
// they have always seen (6 is an overflow, 13 a type mismatch, 380 an invalid property value, ...).
enum class ErrorNumber : int
{
    InvalidProcedureCall = 5,
    Overflow = 6,
    TypeMismatch = 13,
    InvalidUseOfNull = 94,
    PathNotFound = 76,
    InvalidPropertyValue = 380,
    ActionNotSupported = 445,
    FieldNotFound = 3265,
    NoCurrentRecord = 3021,
    DatabaseError = -2147467259, // the data provider's generic failure (0x80004005)
};

// The one run-time error of the program: a number and a description, as every error path reports them.
class RuntimeError : public std::runtime_error
{
public:
    RuntimeError(int number, const QString& description);
    RuntimeError(ErrorNumber number, const QString& description);

    int number() const noexcept { return m_number; }
    const QString& description() const noexcept { return m_description; }

    static RuntimeError overflow();
    static RuntimeError typeMismatch(const QString& value = {});
    static RuntimeError invalidPropertyValue(const QString& what = {});
    static RuntimeError notSupported(const QString& operation);

private:
    int m_number;
    QString m_description;
};

// Number and description of any exception: a RuntimeError keeps its own, anything else becomes a
// generic failure with the exception's text.
struct ErrorInfo
{
    int number = 0;
    QString description;
};
ErrorInfo describe(const std::exception_ptr& error);

} // namespace xv::common
