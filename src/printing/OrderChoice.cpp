// SPDX-License-Identifier: MIT
#include "OrderChoice.h"

namespace xv::printing {

QString statusChoiceCaption(const QString& fromState, const QString& toState)
{
    return QStringLiteral("Trova le Commissioni in [") + fromState + QStringLiteral("] da passare in [") +
           toState + QLatin1Char(']');
}

QString statusQuestion(const QString& toState)
{
    return QStringLiteral("Le commissioni selezionate sono state ") +
           (toState == QLatin1String("RITIRATO") ? QStringLiteral("RITIRATE ?") : QStringLiteral("EMESSE ?"));
}

SlipScope slipScope(qint16 mode)
{
    switch (mode) {
    case 1:
        return SlipScope::OpenOrder;
    case 2:
        return SlipScope::ChosenOrders;
    default:
        return SlipScope::SelectedLine;
    }
}

QString slipQuestion(SlipScope scope, const QString& numero, const QString& serie)
{
    switch (scope) {
    case SlipScope::OpenOrder:
        return QStringLiteral("Stampare tutte le righe della commissione N°") + numero + QLatin1Char('/') +
               serie + QStringLiteral(" ?");
    case SlipScope::ChosenOrders:
        return {};
    case SlipScope::SelectedLine:
        break;
    }
    return QStringLiteral("Stampare la riga selezionata della commissione N° ") + numero + QLatin1Char('/') +
           serie + QStringLiteral(" ?");
}

} // namespace xv::printing
