// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <QtGlobal>

namespace xv::printing {

// The change of state of the chosen orders between "EMESSO" and "RITIRATO": the list window's caption and
// the question asked before the change.
QString statusChoiceCaption(const QString& fromState, const QString& toState);
QString statusQuestion(const QString& toState);

// The control slips: which rows they print.
enum class SlipScope { OpenOrder = 1, ChosenOrders = 2, SelectedLine = 3 };
SlipScope slipScope(qint16 mode);
// The question asked before printing; empty for the chosen orders, which print without one.
QString slipQuestion(SlipScope scope, const QString& numero, const QString& serie);

} // namespace xv::printing
