// SPDX-License-Identifier: MIT
#pragma once

#include "orders/CommandState.h"
#include "orders/Order.h"

#include <QString>

namespace xv::orders {

// The order form's modes: looking orders up, typing a new one, changing the one open.
enum class FormMode { Browse, New, Modify };

// What the order form is doing, kept without a window: its mode and the order open. The form binds its
// widgets to it, and every command that moves between modes goes through it, so that the mode and the order
// open change together and a test can follow them without a form.
class OrderSession
{
public:
    FormMode mode() const { return m_mode; }
    // The mode as the two Tags of the document toolbar name it, which the rest of the suite reads: "N" and
    // "M" browsing, "X" and "S" a new order, "X" and "A" changes.
    QString modeTag1() const;
    QString modeTag2() const;
    // What the commands and field groups may do in this mode with so many lines.
    CommandState commands(qint64 lineCount) const;

    const Order& order() const { return m_order; }
    Order& order() { return m_order; }

    // New (F2): from browsing, an empty new order is started; from a new order or changes, they are given up
    // and nothing is open. Answers whether a new order was started.
    bool newOrCancel();
    // Changes (F3 while browsing) to the order open.
    void beginChanges();
    // An order read from the database (or none: an empty one) becomes the order open; the mode stays.
    void show(Order loaded);
    // The order was written or deleted: browsing again.
    void written();

private:
    FormMode m_mode = FormMode::Browse;
    Order m_order;
};

} // namespace xv::orders
