// SPDX-License-Identifier: MIT
#include "OrderSession.h"

namespace xv::orders {

QString OrderSession::modeTag1() const
{
    return m_mode == FormMode::Browse ? QStringLiteral("N") : QStringLiteral("X");
}

QString OrderSession::modeTag2() const
{
    switch (m_mode) {
    case FormMode::New:
        return QStringLiteral("S");
    case FormMode::Modify:
        return QStringLiteral("A");
    case FormMode::Browse:
        break;
    }
    return QStringLiteral("M");
}

CommandState OrderSession::commands(qint64 lineCount) const
{
    return commandState(modeTag1(), modeTag2(), lineCount);
}

bool OrderSession::newOrCancel()
{
    // Nothing of the order shown before carries into the next one: key, number, customer, state, the
    // identity of its save.
    m_order = Order();
    const bool starting = m_mode == FormMode::Browse;
    m_mode = starting ? FormMode::New : FormMode::Browse;
    return starting;
}

void OrderSession::beginChanges()
{
    m_mode = FormMode::Modify;
}

void OrderSession::show(Order loaded)
{
    m_order = std::move(loaded);
}

void OrderSession::written()
{
    m_mode = FormMode::Browse;
}

} // namespace xv::orders
