// SPDX-License-Identifier: MIT
#pragma once

#include "common/RuntimeError.h"

#include <QString>
#include <QVector>

#include <functional>

class QPainter;
class QPagedPaintDevice;

namespace xv::data {
class Recordset;
}

namespace xv::host {

class IHost;

// One control slip: what the workshop reads beside the article's picture.
struct ControlSlip
{
    struct Field
    {
        QString label;
        QString value;
    };
    QVector<Field> fields;
    // Empty when the row names no picture or the file is not there: its place stays blank.
    QString picturePath;
};

// The column that names the article's picture file.
inline constexpr const char* kPictureColumn = "fotoart";

// One slip per row, every column of the rows shown but the picture's name; dates day first.
QVector<ControlSlip> controlSlips(data::Recordset& rows, const QString& picturesFolder);

// The folder the article pictures are kept in, ending in a separator: setting "CartellaImmagini" of
// section "STAMPA" (store "eKELA"), else the "immagini" folder of the data folder.
QString picturesFolder(IHost& host);

// How many slips go on one page; the sheet is cut along the dashed lines.
inline constexpr int kSlipsPerPage = 4;

// Prints the slips, kSlipsPerPage to a page, on a printer or any paged device (a PDF writer); progress is
// told the number of slips done after each. Throws when the device refuses a page or the job.
void printControlSlips(QPagedPaintDevice& printer, const QVector<ControlSlip>& slips,
                       const std::function<void(int done)>& progress = {});

// A selection that cannot be read: the operator is told the search is wrong, not that printing failed.
class BadSelection : public common::RuntimeError
{
public:
    explicit BadSelection(const QString& reason);
};

// The host's report: the slips of the rows of an SQL text through the shop's print destination.
// Answers the rows printed, 0 (nothing printed) when the text gives none; throws BadSelection when the
// text fails.
int printReport(IHost& host, const QString& sql);
// The same slips in a preview window, printed from there only if the operator chooses to; the same answers.
int previewReport(IHost& host, const QString& sql);

} // namespace xv::host
