// SPDX-License-Identifier: MIT
#include "StoredText.h"

namespace xv::common {

QString unstorableText(const QString& text)
{
    // PostgreSQL keeps no NUL in a text, and other programs reading an SQLite file end the text there. An
    // order must save alike on either engine, so a NUL is refused on both; dropping it instead would save
    // a text other than the one on screen without the operator knowing.
    if (const qsizetype at = text.indexOf(QChar(u'\0')); at >= 0)
        return QStringLiteral(
                   "contiene un carattere nullo (codice 0) alla posizione %1, che non si può salvare")
            .arg(at + 1);
    // Half of a character beyond the basic plane, cut from its other half, has no form to be stored in.
    if (!text.isValidUtf16())
        return QStringLiteral("contiene un carattere incompleto, che non si può salvare");
    return {};
}

} // namespace xv::common
