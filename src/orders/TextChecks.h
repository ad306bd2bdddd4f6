// SPDX-License-Identifier: MIT
#pragma once

#include "orders/OrderSave.h"

#include <QString>
#include <QVector>

#include <optional>

namespace xv::orders {

// A text box of the order's header as the operator knows it: its caption, its name and its text.
struct FieldText
{
    QString caption;
    QString field;
    QString text;
};

// A text the database could not keep as it stands: the message that names where it is, and the field to
// go to (none for a cell of a line).
struct TextRefusal
{
    QString message;
    QString focus;
};

// The first such text of an order about to be saved: in the header's fields, in their order, then in
// the text cells of the lines, line by line. None when every text can be kept as typed.
std::optional<TextRefusal> refusedText(const QVector<FieldText>& header, const GridRows& grid);

} // namespace xv::orders
