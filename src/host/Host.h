// SPDX-License-Identifier: MIT
#pragma once

#include "common/RuntimeError.h"
#include "data/Backup.h"
#include "host/HostInterface.h"

#include <QHash>
#include <QObject>
#include <QPointer>

#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>

namespace xv::host {

struct HostOptions
{
    QString dataPath;                      // folder of the log, the embedded database and local files
    std::optional<QString> connectionText; // where the data are; unset: configuration file, then embedded
    bool fillDemoData = true;              // fill the embedded default database, when new, with the demo shop
    bool startCounters = true;             // give any other new database this year's order counter
    QString userName;                      // empty: the operating system's user
    QString stationName;                   // empty: the machine's name
    bool dailyBackup = false;              // copy an SQLite database into backup/ at the day's first start

    // Reads XVELARIO_DATA, XVELARIO_DB, XVELARIO_USER and XVELARIO_STATION; the program's own start, so
    // the day's copy is taken.
    static HostOptions fromEnvironment();
    // The data folder, with its closing separator.
    QString dataFolder() const;
    // Where the data are: the connection named, else the one of xvelario.conf in the data folder, else the
    // embedded database there (embeddedDefault tells which).
    data::ConnectionConfig connection(bool* embeddedDefault = nullptr) const;
};

// The folder of the database copies inside the data folder.
QString backupFolder(const HostOptions& options);
// How many daily copies are kept: the setting DaConservare of section BACKUP (store eKELA), 14 when it
// says nothing usable.
int backupsToKeep(Database& db);

// What fills the embedded default database with a demo shop when it is first made; the program's start-up
// hands it in, so that a tool or a test without it starts from an empty shop.
void setDemoShopFiller(std::function<void(Database&)> fill);

class Host : public IHost
{
public:
    explicit Host(HostOptions options);
    ~Host() override;

    bool Initialize() override;
    void Terminate() override;

    QString GetSetting(const QString& section, const QString& key, const QString& defaultValue,
                       const QString& store) override;
    void SaveSetting(const QString& section, const QString& key, const QString& value,
                     const QString& store) override;
    void RefreshSettings() override;
    QVector<QPair<QString, QString>> SectionSettings(const QString& section, const QString& store) override;

    Database& GetConnection() override;
    Recordset OpenRecordset(const QString& sql, int cursorType = -1, int lockType = 0) override;
    Recordset OpenSchema(int kind, const QString& table) override;
    QString LookupByTwoKeys(const QString& table, const QString& firstKeyField, const QString& secondKeyField,
                            const QString& firstKeyValue, const QString& secondKeyValue,
                            const QString& resultField) override;

    QString GetAppTitle() override;
    QString GetDataName() override;
    QString GetCaptionDetail() override;
    QString GetUserName() override;
    QString GetStationName() override;

    void ReportError(const QString& source, const QString& text, bool show) override;

    QObject* AttachForm(QObject* form, bool attach) override;
    void RegisterForm(QObject* form) override;

    QString LockRecord(quintptr window, qint32 number, const QString& table) override;
    bool ReleaseRecordLock(quintptr window) override;
    void ClearRecordLock() override;

    bool IsControlSlipMode() override;
    bool AskPrintQuestion() override;
    void DocumentWritten(QObject* form) override;
    void FilterKeyPress(int& keyCode) override;
    void FillMenuFromQuery(MenuArray& menu, const QString& sql, const QString& captionField,
                           const QString& tagField) override;
    void SendMail(const QString& recipient, const QString& subject, const QString& body, const QString& copy,
                  const QString& blindCopy, QString& result) override;
    QString GetMailFooter() override;
    int PrintReport(const QString& sql) override;

    qint16 GetDefaultPayment() override;
    qint16 GetVatDefault() override;
    qint16 GetStockThreshold() override;
    WalkInAddress GetWalkInAddress() override;

    Colour GetLockedColor() override;
    Colour GetDisabledColor() override;
    Colour GetInactiveColor() override;
    Colour GetActiveColor() override;
    Colour GetCollectedColor() override;
    Colour GetIssuedColor() override;

    QString GetDataPath() override;
    bool FileExists(const QString& path, int attributes = 0) override;
    int PadWidth(const QString& text, int width, int mode = 0) override;

    QString logFilePath() const;
    // The day's copy runs on a thread of its own, so that the first start of a day opens the form at once;
    // this waits for it to end and tells its failure if it has not been told yet. Terminate waits too.
    void waitForDailyBackup();
    QObject* registeredForm() const { return m_form; }
    // How many documents windows have reported written since the start.
    int documentsWritten() const { return m_documentsWritten; }

private:
    void writeLog(const QString& line);
    void logError(const QString& source, const QString& text, const common::ErrorInfo& info) noexcept;
    Colour colourSetting(const QString& key, Colour defaultColour);
    qint16 numberSetting(const QString& key, qint16 defaultValue);
    void readSettings(const QString& source, const QString& text);
    void clearStaleLocks();
    void carryLockOver();
    void startDailyBackup();
    void tellDailyBackupFailure();

    HostOptions m_options;
    std::unique_ptr<Database> m_db;
    // Held while an SQLite database is open, so that no restore replaces it under this program.
    std::unique_ptr<data::UseMark> m_useMark;
    // The day's copy: its thread, and its failure until the operator is told of it.
    std::thread m_dailyCopy;
    struct DailyCopyState
    {
        std::mutex mutex;
        QString target;
        std::optional<common::ErrorInfo> failure;
        // Tells the failure; cleared when the host goes. Both only on the main thread.
        std::function<void()> teller;
    };
    std::shared_ptr<DailyCopyState> m_dailyCopyState = std::make_shared<DailyCopyState>();
    // The stored settings by store, section and key in lower case; read on first use.
    QHash<QString, QString> m_settings;
    bool m_settingsRead = false;
    // The columns of each table asked for, by its name in lower case: the tables are laid out once at the
    // start and every load and save of an order asks for those of movimenti.
    QHash<QString, QVector<QVector<QVariant>>> m_columns;
    QPointer<QObject> m_form;
    struct HeldLock
    {
        QString table;
        qint32 number = 0;
        quintptr window = 0;
    };
    std::optional<HeldLock> m_lastLock;
    int m_documentsWritten = 0;
};

// A colour setting's text: "&HFF00" (the suite's hexadecimal form, blue-green-red) or a decimal number.
std::optional<Colour> parseColour(const QString& text);

} // namespace xv::host
