// SPDX-License-Identifier: MIT
#include "orders/TextChecks.h"
#include "QtPrinters.h"

#include "data/TypeCodes.h"

#include <gtest/gtest.h>

namespace {

using namespace xv;
using orders::refusedText;

const QString kNul = QStringLiteral("a") + QChar(u'\0');

// Two lines of a text column and a number column.
orders::GridRows twoLines(const QString& description, const QString& quantity)
{
    orders::GridRows grid;
    grid.names = QStringList{"Descrizione1", "qta"};
    grid.typeCodes = {data::TypeCode::Text, data::TypeCode::Single};
    grid.lines = {{"Bomboniera", "1"}, {description, quantity}};
    return grid;
}

TEST(TextChecks, NameTheFirstFieldThenTheLineThatHoldsATextThatCannotBeKept)
{
    const QVector<orders::FieldText> clean{{"Cliente", "txt_ragsoc", "Rossi"},
                                           {"Telefono", "txt_telefono", "0831"}};
    QVector<orders::FieldText> header = clean;
    header[1].text = kNul;
    header.push_back({"E-mail", "txt_email", kNul});

    const auto inHeader = refusedText(header, twoLines(kNul, "1"));
    ASSERT_TRUE(inHeader);
    EXPECT_EQ(inHeader->message, "Attenzione il campo 'Telefono' contiene un carattere nullo (codice 0) alla "
                                 "posizione 2, che non si può salvare: correggere il testo.");
    EXPECT_EQ(inHeader->focus, "txt_telefono");

    const auto inLine = refusedText(clean, twoLines(kNul, "1"));
    ASSERT_TRUE(inLine);
    EXPECT_TRUE(
        inLine->message.startsWith("Attenzione la riga 2, colonna 'Descrizione1', contiene un carattere "
                                   "nullo"))
        << inLine->message.toStdString();
    EXPECT_EQ(inLine->focus, QString());

    // A number cell is read as a number, whatever else it holds.
    EXPECT_FALSE(refusedText(clean, twoLines("Confetti", "2" + kNul)));
}

} // namespace
