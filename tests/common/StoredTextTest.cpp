// SPDX-License-Identifier: MIT
#include "common/StoredText.h"

#include <gtest/gtest.h>

namespace {

using xv::common::unstorableText;

TEST(StoredText, OnlyANulOrHalfACharacterCannotBeKept)
{
    const QChar nul(u'\0');
    const struct
    {
        QString text;
        const char* why; // the start of the reason; empty when the text can be kept
    } cases[] = {
        {QString(), ""},
        {QStringLiteral("'; drop table movimenti; --"), ""},
        {QStringLiteral("a\tb\r\nc\x01\x1f\x7f"), ""},
        {QStringLiteral("Auguri 🎉 𝄞"), ""},
        {QString(10000, u'x'), ""},
        {QStringLiteral("Rossi") + nul + QStringLiteral("Maria"),
         "contiene un carattere nullo (codice 0) alla posizione 6"},
        {QString(nul), "contiene un carattere nullo (codice 0) alla posizione 1"},
        {QStringLiteral("abc") + QChar(0xD83C), "contiene un carattere incompleto"},
        {QChar(0xDF89) + QStringLiteral("abc"), "contiene un carattere incompleto"},
    };
    for (const auto& c : cases) {
        const QString why = unstorableText(c.text);
        const QString expected = QString::fromUtf8(c.why);
        EXPECT_TRUE(expected.isEmpty() ? why.isEmpty() : why.startsWith(expected))
            << c.text.left(20).toStdString() << " -> " << why.toStdString();
    }
}

} // namespace
