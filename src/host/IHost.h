// SPDX-License-Identifier: MIT
#pragma once

#include "data/Recordset.h"

#include <QColor>
#include <QDate>
#include <QString>
#include <QStringList>
#include <QVariant>
#include <QtGlobal>

#include <functional>
#include <optional>

class QWidget;

namespace xv::data {
class Database;
}

namespace xv::host {

// The host hands out the data layer's connection and recordsets.
using data::Database;
using data::Recordset;

// Colours as the suite keeps them: 0x00BBGGRR, so 0xFF is red and 0xFF00 green.
using Colour = quint32;

inline QColor toQColor(Colour colour)
{
    return QColor(static_cast<int>(colour & 0xFF), static_cast<int>((colour >> 8) & 0xFF),
                  static_cast<int>((colour >> 16) & 0xFF));
}

inline Colour fromQColor(const QColor& colour)
{
    return static_cast<Colour>(colour.red()) | (static_cast<Colour>(colour.green()) << 8) |
           (static_cast<Colour>(colour.blue()) << 16);
}

// A pop-up menu array the host can fill: one item per index, with a caption and a Tag.
class MenuArray
{
public:
    virtual ~MenuArray() = default;
    virtual void clearItems() = 0;
    virtual void setItem(int index, const QString& caption, const QString& tag) = 0;
};

// The address a walk-in customer gets when the name is not among the known customers.
struct WalkInAddress
{
    QString indirizzo;
    QString cap;
    QString comune;
    QString provincia;
};

// The suite's host object: the shared services every module of the suite leans on.
class IHost
{
public:
    virtual ~IHost() = default;

    virtual bool Initialize() = 0;
    virtual void Terminate() = 0;

    virtual QString GetSetting(const QString& section, const QString& key, const QString& defaultValue,
                               const QString& store) = 0;
    virtual void SaveSetting(const QString& section, const QString& key, const QString& value,
                             const QString& store) = 0;
    // Settings are read once and kept, so a colour or a number costs no query; this reads them again,
    // to pick up what another workstation changed. SaveSetting keeps the kept copy up to date.
    virtual void RefreshSettings() = 0;

    virtual Database& GetConnection() = 0;
    // The cursor and lock arguments are kept for the callers' sake; every recordset is static.
    virtual Recordset OpenRecordset(const QString& sql, int cursorType = -1, int lockType = 0) = 0;
    // kind 4 lists the columns of a table: fields "Column" and "Type", in the table's order.
    virtual Recordset OpenSchema(int kind, const QString& table) = 0;
    virtual QString LookupByTwoKeys(const QString& table, const QString& firstKeyField,
                                    const QString& secondKeyField, const QString& firstKeyValue,
                                    const QString& secondKeyValue, const QString& resultField) = 0;

    virtual QString GetAppTitle() = 0;
    virtual QString GetDataName() = 0;
    virtual QString GetCaptionDetail() = 0;
    virtual QString GetUserName() = 0;
    virtual QString GetStationName() = 0;

    // Reports the error being handled (call it from a catch block) with the procedure's source text.
    virtual void ReportError(const QString& source, const QString& text, bool show) = 0;

    virtual QWidget* AttachForm(QWidget* form, bool attach) = 0;
    virtual void RegisterForm(QWidget* form) = 0;

    virtual QString LockRecord(quintptr window, qint32 number, const QString& table) = 0;
    virtual bool ReleaseRecordLock(quintptr window) = 0;
    virtual void ClearRecordLock() = 0;

    virtual bool IsControlSlipMode() = 0;
    // Asked after a document was written: whether to print it now.
    virtual bool AskPrintQuestion() = 0;
    // Told when a module's window has written a document, so that the suite can follow what changed.
    virtual void DocumentWritten(QWidget* form) = 0;
    virtual void FilterKeyPress(int& keyCode) = 0;
    virtual void FillMenuFromQuery(MenuArray& menu, const QString& sql, const QString& captionField,
                                   const QString& tagField) = 0;
    virtual void SendMail(const QString& recipient, const QString& subject, const QString& body,
                          const QString& copy, const QString& blindCopy, QString& result) = 0;
    virtual QString GetMailFooter() = 0;
    // Prints the control slips of the rows of an SQL text; answers the rows found, -1 for a bad text.
    virtual int PrintReport(const QString& sql) = 0;

    virtual qint16 GetDefaultPayment() = 0;
    virtual qint16 GetVatDefault() = 0;
    virtual qint16 GetStockThreshold() = 0;
    virtual WalkInAddress GetWalkInAddress() = 0;

    virtual Colour GetLockedColor() = 0;
    virtual Colour GetDisabledColor() = 0;
    virtual Colour GetInactiveColor() = 0;
    // Background of the input field being typed in.
    virtual Colour GetActiveColor() = 0;
    virtual Colour GetCollectedColor() = 0;
    virtual Colour GetIssuedColor() = 0;

    virtual QString GetDataPath() = 0;
    virtual bool FileExists(const QString& path, int attributes = 0) = 0;
    virtual int PadWidth(const QString& text, int width, int mode = 0) = 0;
};

// The form settings object: per-workstation settings of the windows.
class IFormSettings
{
public:
    virtual ~IFormSettings() = default;
    virtual QString GetSetting(const QString& section, const QString& key, const QString& defaultValue) = 0;
    virtual void SaveSetting(const QString& section, const QString& key, const QString& value) = 0;
};

// The list-window object: shows rows in a window and lets the operator choose.
class IListWindow
{
public:
    virtual ~IListWindow() = default;
    virtual void SelectFromList(const QString& source, int mode, const QString& caption, bool& confirmed) = 0;
    virtual Recordset GetSelectedRows() = 0;
    // An SQL text of the rows to search among: those matching a filter text (all for an empty one),
    // newest first, at most limit of them.
    using SearchSql = std::function<QString(const QString& filterText, int limit)>;
    // SelectFromList over rows read a page at a time (a filter text typed is looked up through sqlFor too),
    // for sources too large to be read whole.
    virtual void SelectFromPages(const SearchSql& sqlFor, int mode, const QString& caption, bool& confirmed) = 0;
    // A search window: the chosen row's values as shown, as text; nothing when the operator cancelled.
    virtual std::optional<QStringList> Search(const QString& caption, const SearchSql& sqlFor) = 0;
    // The values of the row the operator chose among those of an SQL text, asked even when there is only
    // one; nothing when cancelled or when the text gives no rows.
    virtual std::optional<QVariantList> PickRow(const QString& caption, const QString& sql) = 0;
    // What the next list window prints at its head instead of its caption and today's date; the list of
    // one day's work says that day. Only the next window takes it.
    virtual void SetPrintHeading(const QString& title, const QDate& day) = 0;
};

} // namespace xv::host
