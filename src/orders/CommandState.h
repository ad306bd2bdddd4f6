// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <optional>

namespace xv::orders {

// What the order form's commands and field groups may do, derived from the two mode Tags and the
// number of lines alone: browse ("N","M"), new ("X","S"), modify ("X","A").
struct CommandState
{
    bool linesAdd = true; // ADD, REMOVE and EDIT of the lines toolbar
    bool linesReset = false;
    bool newEnabled = true;
    QString newCaption;
    bool modifyEnabled = false;
    std::optional<QString> modifyCaption; // unset: left as it is
    bool deleteEnabled = false;
    QString deleteCaption;
    bool findEnabled = false;
    bool printEnabled = false;
    bool gridEnabled = false;
    bool mainEnabled = false; // fra_Main, fra_Cliente, txt_ragsoc and the six frames follow it
    bool numberEnabled = false;
    bool dateRegEnabled = false;
    QString linesPanel;
};

CommandState commandState(const QString& modeTag1, const QString& modeTag2, qint64 lineCount);

} // namespace xv::orders
