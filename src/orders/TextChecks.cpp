// SPDX-License-Identifier: MIT
#include "TextChecks.h"

#include "common/StoredText.h"
#include "data/TypeCodes.h"

namespace xv::orders {

std::optional<TextRefusal> refusedText(const QVector<FieldText>& header, const GridRows& grid)
{
    for (const FieldText& f : header) {
        const QString why = common::unstorableText(f.text);
        if (!why.isEmpty())
            return TextRefusal{
                QStringLiteral("Attenzione il campo '%1' %2: correggere il testo.").arg(f.caption, why),
                f.field};
    }
    for (qsizetype line = 0; line < grid.lines.size(); ++line) {
        const QStringList& cells = grid.lines[line];
        for (qsizetype c = 0; c < cells.size() && c < grid.typeCodes.size(); ++c) {
            // Other cells are read as numbers or dates, which take nothing of such a character along.
            if (grid.typeCodes[c] != data::TypeCode::Text)
                continue;
            const QString why = common::unstorableText(cells[c]);
            if (!why.isEmpty())
                return TextRefusal{
                    QStringLiteral("Attenzione la riga %1, colonna '%2', %3: correggere la riga.")
                        .arg(line + 1)
                        .arg(grid.names.value(c), why),
                    QString()};
        }
    }
    return std::nullopt;
}

} // namespace xv::orders
