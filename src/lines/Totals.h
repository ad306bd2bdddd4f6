// SPDX-License-Identifier: MIT
#pragma once

#include "common/Money.h"

#include <QString>
#include <QStringList>
#include <QtGlobal>

namespace xv::lines {

// The amounts of the order lines are computed from, and written back to, the texts the grid holds, in the
// default locale: the same rounding at every step keeps saved orders and reprints in agreement.

// Price times quantity as currency text; throws RuntimeError Overflow when the product is not an amount.
QString lineAmountText(double quantity, common::Money price);

struct LineAmounts
{
    common::Money gross;
    QString imponibile;
    QString imposta;
    QString totale;
};

// Both discounts are percentages of the gross amount, not one applied after the other. The tax is plain
// decimal text, unrounded; the total deliberately leaves the tax out and equals the taxable amount.
LineAmounts newLineAmounts(const QString& lineAmountText, const QString& sconto1, const QString& sconto2,
                           const QString& percentuale);

// Blank cells count as 0; any other text that is no amount throws RuntimeError TypeMismatch.
common::Money orderTotal(const QStringList& imponibileCells);

// Rounded to a whole number after every line; throws RuntimeError Overflow beyond 32 bits.
qint32 quantityTotal(const QStringList& qtaCells);
QString quantityTotalText(qint32 total);

} // namespace xv::lines
