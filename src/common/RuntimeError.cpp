// SPDX-License-Identifier: MIT
#include "RuntimeError.h"

namespace xv::common {

RuntimeError::RuntimeError(int number, const QString& description)
    : std::runtime_error(description.toStdString()), m_number(number), m_description(description)
{
}

RuntimeError::RuntimeError(ErrorNumber number, const QString& description)
    : RuntimeError(static_cast<int>(number), description)
{
}

RuntimeError RuntimeError::overflow()
{
    return RuntimeError(ErrorNumber::Overflow, QStringLiteral("Overflow"));
}

RuntimeError RuntimeError::typeMismatch(const QString& value)
{
    if (value.isNull())
        return RuntimeError(ErrorNumber::TypeMismatch, QStringLiteral("Tipo non corrispondente"));
    return RuntimeError(ErrorNumber::TypeMismatch, QStringLiteral("Tipo non corrispondente: '%1'").arg(value));
}

RuntimeError RuntimeError::invalidPropertyValue(const QString& what)
{
    if (what.isEmpty())
        return RuntimeError(ErrorNumber::InvalidPropertyValue, QStringLiteral("Valore della proprietà non valido"));
    return RuntimeError(ErrorNumber::InvalidPropertyValue,
                        QStringLiteral("Valore della proprietà non valido: %1").arg(what));
}

RuntimeError RuntimeError::notSupported(const QString& operation)
{
    return RuntimeError(ErrorNumber::ActionNotSupported,
                        QStringLiteral("Operazione non ancora disponibile: %1").arg(operation));
}

ErrorInfo describe(const std::exception_ptr& error)
{
    if (!error)
        return {};
    try {
        std::rethrow_exception(error);
    } catch (const RuntimeError& e) {
        return {e.number(), e.description()};
    } catch (const std::exception& e) {
        return {static_cast<int>(ErrorNumber::DatabaseError), QString::fromLocal8Bit(e.what())};
    } catch (...) {
        return {static_cast<int>(ErrorNumber::DatabaseError), QStringLiteral("Errore sconosciuto")};
    }
}

} // namespace xv::common
