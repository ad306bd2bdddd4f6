// SPDX-License-Identifier: MIT
#include "CommandState.h"

namespace xv::orders {

CommandState commandState(const QString& modeTag1, const QString& modeTag2, qint64 lineCount)
{
    const bool hasLines = lineCount > 0;
    const bool editing = modeTag1 == QLatin1String("X");
    const bool browse = modeTag1 == QLatin1String("N") && modeTag2 == QLatin1String("M");
    CommandState s;
    s.linesAdd = true;
    s.linesReset = hasLines;
    s.newEnabled = true;
    // No blank before the bracket at run time, unlike the design-time caption: kept on purpose.
    s.newCaption = editing && (modeTag2 == QLatin1String("A") || modeTag2 == QLatin1String("S"))
                       ? QStringLiteral("Annulla[F2]")
                       : QStringLiteral("Nuovo[F2]");
    s.modifyEnabled = hasLines;
    s.gridEnabled = hasLines && editing;
    if (browse)
        s.modifyCaption = QStringLiteral("Modifica[F3]");
    else if (editing && modeTag2 == QLatin1String("A"))
        s.modifyCaption = QStringLiteral("Aggiorna[F3]");
    else if (editing && modeTag2 == QLatin1String("S"))
        s.modifyCaption = QStringLiteral("Salva[F3]");
    s.deleteEnabled = hasLines && modeTag1 == QLatin1String("N");
    s.deleteCaption = QStringLiteral("Elimina [F4]");
    s.findEnabled = browse;
    s.printEnabled = hasLines && modeTag1 == QLatin1String("N");
    s.mainEnabled = editing;
    s.numberEnabled = browse;
    s.dateRegEnabled = !(editing && modeTag2 == QLatin1String("A"));
    s.linesPanel = QStringLiteral("Tot.Righe: ") + QString::number(lineCount);
    return s;
}

} // namespace xv::orders
