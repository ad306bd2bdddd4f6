// SPDX-License-Identifier: MIT
#pragma once

#include "data/Recordset.h"

#include <QColor>
#include <QDate>
#include <QPair>
#include <QString>
#include <QStringList>
#include <QVariant>
#include <QVector>
#include <QtGlobal>

#include <functional>
#include <optional>

class QObject;

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

// The suite's host services, one interface a concern, so that a unit asks for the part it uses.
//
// Errors: an operation that fails throws common::RuntimeError (a subclass where a caller treats the case
// apart), and nothing else signals failure. The one exception is the suite's own lock answer "Errore",
// which the modules act on (they go ahead without the lock) and which is documented at LockRecord.

// Settings, the shop's defaults and colours, and the folders the program works in.
class HostSettings
{
public:
    virtual ~HostSettings() = default;
    virtual QString GetSetting(const QString& section, const QString& key, const QString& defaultValue,
                               const QString& store) = 0;
    virtual void SaveSetting(const QString& section, const QString& key, const QString& value,
                             const QString& store) = 0;
    // Settings are read once and kept, so a colour or a number costs no query; this reads them again,
    // to pick up what another workstation changed. SaveSetting keeps the kept copy up to date.
    virtual void RefreshSettings() = 0;
    // Every key of a section with its value, as stored, keys in order.
    virtual QVector<QPair<QString, QString>> SectionSettings(const QString& section,
                                                             const QString& store) = 0;

    virtual bool IsControlSlipMode() = 0;
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
};

// The shared connection and what is read through it.
class HostData
{
public:
    virtual ~HostData() = default;
    virtual Database& GetConnection() = 0;
    // The cursor and lock arguments are kept for the callers' sake; every recordset is static.
    virtual Recordset OpenRecordset(const QString& sql, int cursorType = -1, int lockType = 0) = 0;
    // kind 4 lists the columns of a table: fields "Column" and "Type", in the table's order.
    virtual Recordset OpenSchema(int kind, const QString& table) = 0;
    virtual QString LookupByTwoKeys(const QString& table, const QString& firstKeyField,
                                    const QString& secondKeyField, const QString& firstKeyValue,
                                    const QString& secondKeyValue, const QString& resultField) = 0;
    virtual void FillMenuFromQuery(MenuArray& menu, const QString& sql, const QString& captionField,
                                   const QString& tagField) = 0;
};

// Record locks between workstations.
class HostLocks
{
public:
    virtual ~HostLocks() = default;
    // Empty when the lock is granted, a text naming who holds the record when it is held elsewhere, and
    // "Errore" when the attempt itself failed (the failure is logged): the modules then go ahead without
    // the lock rather than stop the shop's work.
    virtual QString LockRecord(quintptr window, qint32 number, const QString& table) = 0;
    virtual bool ReleaseRecordLock(quintptr window) = 0;
    virtual void ClearRecordLock() = 0;
};

// Who works where, the windows the suite follows, and what the operator is asked in the suite's name.
class HostMessages
{
public:
    virtual ~HostMessages() = default;
    virtual QString GetAppTitle() = 0;
    virtual QString GetDataName() = 0;
    virtual QString GetCaptionDetail() = 0;
    virtual QString GetUserName() = 0;
    virtual QString GetStationName() = 0;

    virtual QObject* AttachForm(QObject* form, bool attach) = 0;
    virtual void RegisterForm(QObject* form) = 0;
    // Asked after a document was written: whether to print it now.
    virtual bool AskPrintQuestion() = 0;
    // Told when a module's window has written a document, so that the suite can follow what changed.
    virtual void DocumentWritten(QObject* form) = 0;
    virtual void FilterKeyPress(int& keyCode) = 0;
    virtual int PadWidth(const QString& text, int width, int mode = 0) = 0;
};

// Reports and printing.
class HostReports
{
public:
    virtual ~HostReports() = default;
    // Prints the control slips of the rows of an SQL text and answers how many; throws BadSelection when
    // the text cannot be read.
    virtual int PrintReport(const QString& sql) = 0;
};

// Mail.
class HostMail
{
public:
    virtual ~HostMail() = default;
    // result: the text shown to the operator, whether the mail went or not (it says which).
    virtual void SendMail(const QString& recipient, const QString& subject, const QString& body,
                          const QString& copy, const QString& blindCopy, QString& result) = 0;
    virtual QString GetMailFooter() = 0;
};

// The error being handled, told to the operator and the log.
class HostErrors
{
public:
    virtual ~HostErrors() = default;
    // Reports the error being handled (call it from a catch block) with the procedure's source text.
    virtual void ReportError(const QString& source, const QString& text, bool show) = 0;
};

// The suite's host object: every concern, and the start and end of the session.
class IHost : public HostSettings,
              public HostData,
              public HostLocks,
              public HostMessages,
              public HostReports,
              public HostMail,
              public HostErrors
{
public:
    ~IHost() override = default;
    virtual bool Initialize() = 0;
    virtual void Terminate() = 0;
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
    // newest first, at most limit of them; when after holds a row of an earlier page (its values as
    // read), the rows that follow it.
    using SearchSql = std::function<QString(const QString& filterText, int limit, const QVariantList& after)>;
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
