// SPDX-License-Identifier: MIT
#include "Host.h"

#include "common/Conversions.h"
#include "common/PrivateFiles.h"
#include "common/RuntimeError.h"
#include "data/Database.h"
#include "data/Schema.h"
#include "data/SqlText.h"
#include "data/SqliteFile.h"
#include "host/Dialogs.h"
#include "host/Mail.h"
#include "host/Report.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLoggingCategory>
#include <QMetaObject>
#include <QObject>
#include <QSettings>
#include <QSqlQuery>
#include <QStandardPaths>
#include <QSysInfo>
#include <QTextStream>
#include <QVariant>

#include <cstdio>

Q_LOGGING_CATEGORY(lcHost, "xv.host")

namespace xv::host {

using common::ErrorNumber;
using common::RuntimeError;
using data::ColumnInfo;
using data::ConnectionConfig;
using data::Engine;
using data::sqlEscape;
using data::Transaction;

namespace {

const QString kSuiteStore = QStringLiteral("eKELA");
const QString kSuiteSection = QStringLiteral("KELA");
const QString kColourSection = QStringLiteral("COLORI");
const QString kDefaultsSection = QStringLiteral("PREDEFINITI");
const QString kAppTitle = QStringLiteral("xVELARIO");

QString envText(const char* name)
{
    return qEnvironmentVariable(name).trimmed();
}

QString withSeparator(QString path)
{
    if (!path.endsWith(QLatin1Char('/')) && !path.endsWith(QDir::separator()))
        path += QLatin1Char('/');
    return path;
}

// The order counter of the year, at 0 so that the first order is number 1; the document type is the
// one order rows carry.
void startCounters(Database& db, int year)
{
    db.executeBound(QStringLiteral("insert into numeratori (codtipodoc, tipodocumento, serie, numero) "
                                   "values (?, ?, ?, 0)"),
                    {QStringLiteral("CO"), QStringLiteral("COMM"), QString::number(year)});
}

} // namespace

std::optional<Colour> parseColour(const QString& text)
{
    const QString t = text.trimmed();
    bool ok = false;
    qulonglong value = 0;
    if (t.startsWith(QLatin1String("&H"), Qt::CaseInsensitive)) {
        QString digits = t.mid(2);
        if (digits.endsWith(QLatin1Char('&')))
            digits.chop(1);
        value = digits.toULongLong(&ok, 16);
    } else {
        value = t.toULongLong(&ok, 10);
    }
    if (!ok || value > 0xFFFFFFu)
        return std::nullopt;
    return static_cast<Colour>(value);
}

namespace {

std::function<void(Database&)>& demoShopFiller()
{
    static std::function<void(Database&)> fill;
    return fill;
}

} // namespace

void setDemoShopFiller(std::function<void(Database&)> fill)
{
    demoShopFiller() = std::move(fill);
}

HostOptions HostOptions::fromEnvironment()
{
    HostOptions options;
    options.dailyBackup = true;
    options.dataPath = envText("XVELARIO_DATA");
    if (options.dataPath.isEmpty())
        options.dataPath = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) +
                           QStringLiteral("/xVELARIO");
    const QString db = envText("XVELARIO_DB");
    if (!db.isEmpty())
        options.connectionText = db;
    options.userName = envText("XVELARIO_USER");
    options.stationName = envText("XVELARIO_STATION");
    return options;
}

QString HostOptions::dataFolder() const
{
    return withSeparator(QDir::cleanPath(dataPath));
}

ConnectionConfig HostOptions::connection(bool* embeddedDefault) const
{
    QString text;
    if (connectionText) {
        text = *connectionText;
    } else {
        const QSettings local(dataFolder() + QStringLiteral("xvelario.conf"), QSettings::IniFormat);
        text = local.value(QStringLiteral("database/connection")).toString();
    }
    if (embeddedDefault)
        *embeddedDefault = text.isEmpty();
    if (text.isEmpty())
        text = QStringLiteral("sqlite:") + dataFolder() + QStringLiteral("xvelario.db");
    return ConnectionConfig::fromText(text);
}

QString backupFolder(const HostOptions& options)
{
    return options.dataFolder() + QStringLiteral("backup");
}

int backupsToKeep(Database& db)
{
    constexpr int kByDefault = 14;
    try {
        QSqlQuery query = db.executeBound(
            QStringLiteral("select valore from impostazioni where lower(archivio)=? "
                           "and lower(sezione)=? and lower(chiave)=?"),
            {QStringLiteral("ekela"), QStringLiteral("backup"), QStringLiteral("daconservare")});
        bool ok = false;
        const int keep = query.next() ? query.value(0).toString().trimmed().toInt(&ok) : 0;
        return ok && keep > 0 ? keep : kByDefault;
    } catch (const RuntimeError&) {
        // A database the program has not set up yet has no settings: its copies are kept as any others.
        return kByDefault;
    }
}

Host::Host(HostOptions options) : m_options(std::move(options))
{
    m_options.dataPath = m_options.dataFolder();
}

Host::~Host()
{
    waitForDailyBackup();
    m_dailyCopyState->teller = nullptr;
    // However the program ends, it leaves no lock behind on the order it had open.
    if (m_db && m_lastLock)
        ReleaseRecordLock(m_lastLock->window);
}

QString Host::logFilePath() const
{
    return m_options.dataPath + QStringLiteral("xvelario.log");
}

void Host::writeLog(const QString& line)
{
    common::makePrivateFolder(m_options.dataPath);
    common::makePrivateFile(logFilePath());
    QFile file(logFilePath());
    if (file.open(QIODevice::Append | QIODevice::Text)) {
        QTextStream out(&file);
        out << line << '\n';
    } else {
        qCWarning(lcHost) << "cannot write the log" << logFilePath() << line;
    }
}

void Host::logError(const QString& source, const QString& text, const common::ErrorInfo& info) noexcept
{
    try {
        const QString description = QString(info.description).replace(QLatin1Char('\n'), QLatin1Char(' '));
        writeLog(QStringLiteral("%1\t%2\t%3\tErrore %4: %5")
                     .arg(QDateTime::currentDateTime().toString(Qt::ISODate), source, text)
                     .arg(info.number)
                     .arg(description));
        qCWarning(lcHost).noquote() << source << text << info.number << description;
    } catch (...) {
        // Nothing is left to tell: the log itself failed.
    }
}

bool Host::Initialize()
{
    ConnectionConfig config;
    try {
        if (!common::makePrivateFolder(m_options.dataPath))
            throw RuntimeError(
                ErrorNumber::InvalidProcedureCall,
                QStringLiteral("Impossibile creare la cartella dei dati %1").arg(m_options.dataPath));
        bool embeddedDefault = false;
        config = m_options.connection(&embeddedDefault);
        // What lies where the database should be is looked at before it is opened: opening it for use
        // would already change it, and our tables have no place in another program's file.
        if (config.engine == Engine::SQLite) {
            const QString refusal = data::foreignFileReason(config.sqlitePath);
            if (!refusal.isEmpty())
                throw RuntimeError(ErrorNumber::DatabaseError, refusal);
            // Made (or kept) the owner's alone before anything is written into it.
            common::makePrivateFile(config.sqlitePath);
            m_useMark.reset();
            bool restoring = false;
            try {
                m_useMark = data::UseMark::take(config.sqlitePath, data::UseMark::Kind::Shared);
                restoring = !m_useMark;
            } catch (...) {
                // A folder the mark cannot be written in (a read-only share) does not stop the work; only
                // a restore cannot see the program there.
                logError(QStringLiteral("Initialize"), config.describe(),
                         common::describe(std::current_exception()));
            }
            if (restoring)
                throw RuntimeError(ErrorNumber::DatabaseError,
                                   QStringLiteral("È in corso il ripristino di una copia di sicurezza su %1: "
                                                  "riavviare il programma quando è finito")
                                       .arg(config.sqlitePath));
        }
        m_db = std::make_unique<Database>(config);
        m_db->setReopenedHandler([this] { carryLockOver(); });
        m_settings.clear();
        m_settingsRead = false;
        m_columns.clear();
        {
            // The schema and the first data go in together: a start that fails half-way leaves the
            // database as empty as it found it, to be set up again on the next start.
            Transaction setup(*m_db);
            const int before = data::migrate(*m_db);
            // Only the database nobody chose gets the demo shop: a database named for the shop is its
            // real one and starts without orders, ready to number this year's first.
            if (before == 0 && embeddedDefault && m_options.fillDemoData && demoShopFiller()) {
                demoShopFiller()(*m_db);
            } else if (before == 0 && m_options.startCounters) {
                startCounters(*m_db, QDate::currentDate().year());
            }
            setup.commit();
        }
        clearStaleLocks();
        if (m_options.dailyBackup && config.engine == Engine::SQLite)
            startDailyBackup();
        return true;
    } catch (...) {
        const common::ErrorInfo info = common::describe(std::current_exception());
        m_db.reset();
        m_useMark.reset();
        logError(QStringLiteral("Initialize"), config.describe(), info);
        std::fprintf(stderr, "xVELARIO: impossibile avviare il collegamento ai dati: %s\n",
                     qPrintable(info.description));
        return false;
    }
}

void Host::Terminate()
{
    waitForDailyBackup();
    if (m_db && m_lastLock)
        ReleaseRecordLock(m_lastLock->window);
    m_db.reset();
    m_useMark.reset();
    m_columns.clear();
}

void Host::startDailyBackup()
{
    waitForDailyBackup();
    const QString folder = backupFolder(m_options);
    const QString target =
        folder + QLatin1Char('/') + data::backupFileName(QDate::currentDate(), Engine::SQLite);
    if (QFileInfo::exists(target))
        return;
    // What the copy needs of this connection is read here: the connection stays with this thread.
    const QString source = m_db->config().sqlitePath;
    const int keep = backupsToKeep(*m_db);
    const std::shared_ptr<DailyCopyState> state = m_dailyCopyState;
    {
        const std::lock_guard lock(state->mutex);
        state->target = target;
        state->failure.reset();
    }
    state->teller = [this] { tellDailyBackupFailure(); };
    m_dailyCopy = std::thread([state, folder, target, source, keep] {
        try {
            data::makePrivateFolder(folder);
            data::backupSqliteFile(source, target);
            for (const QString& removed : data::rotateBackups(folder, Engine::SQLite, keep))
                qCInfo(lcHost) << "old backup removed:" << removed;
        } catch (...) {
            const common::ErrorInfo info = common::describe(std::current_exception());
            {
                const std::lock_guard lock(state->mutex);
                state->failure = info;
            }
            // Told on the main thread, where the windows are, when the program gets back to its events.
            if (QCoreApplication* application = QCoreApplication::instance())
                QMetaObject::invokeMethod(
                    application,
                    [state] {
                        if (state->teller)
                            state->teller();
                    },
                    Qt::QueuedConnection);
        }
    });
}

void Host::waitForDailyBackup()
{
    if (m_dailyCopy.joinable())
        m_dailyCopy.join();
    tellDailyBackupFailure();
}

void Host::tellDailyBackupFailure()
{
    std::optional<common::ErrorInfo> failure;
    QString target;
    {
        const std::lock_guard lock(m_dailyCopyState->mutex);
        failure.swap(m_dailyCopyState->failure);
        target = m_dailyCopyState->target;
    }
    if (!failure)
        return;
    // A shop must be able to take orders even when its copy fails: it is told, and the next start tries
    // again, since the day's copy is still missing.
    logError(QStringLiteral("CopiaGiornaliera"), target, *failure);
    try {
        Dialogs::message(QStringLiteral("La copia di sicurezza di oggi non è stata fatta:\n%1\n\nIl "
                                        "programma funziona comunque; avvisare chi cura i dati del negozio.")
                             .arg(failure->description),
                         Buttons::Ok, Icon::Exclamation, kAppTitle);
    } catch (...) {
        logError(QStringLiteral("CopiaGiornaliera"), target, common::describe(std::current_exception()));
    }
}

Database& Host::GetConnection()
{
    if (!m_db)
        throw RuntimeError(ErrorNumber::DatabaseError, QStringLiteral("Nessuna connessione ai dati aperta"));
    return *m_db;
}

namespace {

QString settingKey(const QString& store, const QString& section, const QString& key)
{
    // The unit separator cannot occur in a name typed in the settings window.
    return QStringList{store.toLower(), section.toLower(), key.toLower()}.join(QChar(0x1F));
}

} // namespace

void Host::readSettings(const QString& source, const QString& text)
{
    m_settingsRead = true;
    if (!m_db)
        return;
    try {
        QHash<QString, QString> settings;
        QSqlQuery query =
            m_db->executeBound(QStringLiteral("select archivio, sezione, chiave, valore from impostazioni"));
        while (query.next()) {
            if (!query.value(3).isNull())
                settings.insert(settingKey(query.value(0).toString(), query.value(1).toString(),
                                           query.value(2).toString()),
                                query.value(3).toString());
        }
        m_settings = std::move(settings);
    } catch (...) {
        // A setting must never stop the caller, least of all the error path asking for a title: what
        // was read before stays, and a key never read answers its default.
        logError(source, text, common::describe(std::current_exception()));
    }
}

QString Host::GetSetting(const QString& section, const QString& key, const QString& defaultValue,
                         const QString& store)
{
    if (!m_settingsRead)
        readSettings(QStringLiteral("GetSetting"), QStringList{store, section, key}.join(QLatin1Char('/')));
    return m_settings.value(settingKey(store, section, key), defaultValue);
}

void Host::RefreshSettings()
{
    readSettings(QStringLiteral("RefreshSettings"), QString());
}

QVector<QPair<QString, QString>> Host::SectionSettings(const QString& section, const QString& store)
{
    // Read from the table, not the kept copy: the keys are shown as they were written, not lowered.
    QSqlQuery query = GetConnection().executeBound(
        QStringLiteral(
            "select chiave, valore from impostazioni where archivio=? and sezione=? order by chiave"),
        {store.toLower(), section.toLower()});
    QVector<QPair<QString, QString>> entries;
    while (query.next())
        entries.push_back({query.value(0).toString(), query.value(1).toString()});
    return entries;
}

void Host::SaveSetting(const QString& section, const QString& key, const QString& value, const QString& store)
{
    Database& db = GetConnection();
    Transaction transaction(db);
    const QVariantList keys{store.toLower(), section.toLower(), key.toLower()};
    // Rows written by other tools may differ in case: they are the same setting.
    db.executeBound(QStringLiteral("delete from impostazioni where lower(archivio)=? and lower(sezione)=? "
                                   "and lower(chiave)=?"),
                    keys);
    db.executeBound(
        QStringLiteral("insert into impostazioni (archivio, sezione, chiave, valore) values (?,?,?,?)"),
        keys + QVariantList{value});
    transaction.commit();
    m_settings.insert(settingKey(store, section, key), value);
}

Recordset Host::OpenRecordset(const QString& sql, int, int)
{
    return Recordset::open(GetConnection(), sql);
}

Recordset Host::OpenSchema(int kind, const QString& table)
{
    constexpr int kColumns = 4;
    if (kind != kColumns)
        throw RuntimeError(ErrorNumber::InvalidProcedureCall,
                           QStringLiteral("Tipo di schema non gestito: %1").arg(kind));
    Database& db = GetConnection();
    const QString name = table.toLower();
    auto known = m_columns.constFind(name);
    if (known == m_columns.cend()) {
        QVector<QVector<QVariant>> rows;
        for (const ColumnInfo& column : data::tableColumns(db, table))
            rows.push_back({column.name, column.typeCode});
        if (rows.isEmpty())
            throw RuntimeError(ErrorNumber::DatabaseError, QStringLiteral("Tabella sconosciuta: %1").arg(table));
        known = m_columns.insert(name, std::move(rows));
    }
    QVector<QVector<QVariant>> rows = *known;
    return Recordset::fromRows({QStringLiteral("Column"), QStringLiteral("Type")}, std::move(rows));
}

QString Host::LookupByTwoKeys(const QString& table, const QString& firstKeyField,
                              const QString& secondKeyField, const QString& firstKeyValue,
                              const QString& secondKeyValue, const QString& resultField)
{
    const Recordset rs = OpenRecordset(QStringLiteral("select %1 from %2 where %3='%4' and %5='%6'")
                                           .arg(resultField, table, firstKeyField, sqlEscape(firstKeyValue),
                                                secondKeyField, sqlEscape(secondKeyValue)));
    if (rs.eof())
        return {};
    return rs.text(resultField);
}

QString Host::GetAppTitle()
{
    return GetSetting(kSuiteSection, QStringLiteral("AppTitle"), kAppTitle, kSuiteStore);
}

QString Host::GetDataName()
{
    QString fallback;
    if (m_db) {
        const ConnectionConfig& config = m_db->config();
        fallback = config.engine == Engine::SQLite ? QFileInfo(config.sqlitePath).completeBaseName()
                                                   : config.databaseName;
    }
    return GetSetting(kSuiteSection, QStringLiteral("NomeDati"), fallback, kSuiteStore);
}

QString Host::GetCaptionDetail()
{
    return GetUserName() + QLatin1Char('@') + GetStationName();
}

QString Host::GetUserName()
{
    if (!m_options.userName.isEmpty())
        return m_options.userName;
    QString user = envText("USER");
    if (user.isEmpty())
        user = envText("USERNAME");
    return user.isEmpty() ? QStringLiteral("operatore") : user;
}

QString Host::GetStationName()
{
    if (!m_options.stationName.isEmpty())
        return m_options.stationName;
    return QSysInfo::machineHostName().toUpper();
}

void Host::ReportError(const QString& source, const QString& text, bool show)
{
    // The error path of every procedure ends here, often because the database failed: nothing in it
    // may throw again, or the program would end and take what was typed with it.
    common::ErrorInfo info;
    try {
        info = common::describe(std::current_exception());
    } catch (...) {
        info.description = QStringLiteral("Errore sconosciuto");
    }
    logError(source, text, info);
    if (!show)
        return;
    QString title = kAppTitle;
    try {
        title = GetAppTitle();
    } catch (...) {
        logError(QStringLiteral("GetAppTitle"), QString(), common::describe(std::current_exception()));
    }
    try {
        QString message;
        if (!text.isEmpty())
            message += text + QStringLiteral("\n\n");
        message +=
            QStringLiteral("Errore n. %1: %2\nOrigine: %3").arg(info.number).arg(info.description, source);
        Dialogs::message(message, Buttons::Ok, Icon::Critical, title);
    } catch (...) {
        logError(QStringLiteral("ReportError"), source, common::describe(std::current_exception()));
    }
}

QObject* Host::AttachForm(QObject* form, bool attach)
{
    if (attach)
        Dialogs::setParent(form);
    return form;
}

void Host::RegisterForm(QObject* form)
{
    m_form = form;
    Dialogs::setParent(form);
}

bool Host::IsControlSlipMode()
{
    return common::numericValue(GetSetting(QStringLiteral("comm"), QStringLiteral("StampaComande"),
                                           QStringLiteral("0"), QStringLiteral("DOCS"))) != 0.0;
}

bool Host::AskPrintQuestion()
{
    return Dialogs::message(QStringLiteral("Stampare il documento appena registrato?"), Buttons::YesNo,
                            Icon::Question, GetAppTitle()) == Answer::Yes;
}

void Host::DocumentWritten(QObject* form)
{
    ++m_documentsWritten;
    // The log is where the shop looks for who wrote what and when.
    writeLog(QStringLiteral("%1\t%2\tDocumento registrato da %3 (%4)")
                 .arg(QDateTime::currentDateTime().toString(Qt::ISODate),
                      form ? form->property("windowTitle").toString() : QString(), GetUserName(),
                      GetStationName()));
}

void Host::FilterKeyPress(int&)
{
    // The suite's key filter exists for modules with special keyboards; this shop's keys pass unchanged.
}

void Host::FillMenuFromQuery(MenuArray& menu, const QString& sql, const QString& captionField,
                             const QString& tagField)
{
    Recordset rs = OpenRecordset(sql);
    menu.clearItems();
    for (int index = 0; !rs.eof(); rs.moveNext(), ++index)
        menu.setItem(index, rs.text(captionField), rs.text(tagField));
}

void Host::SendMail(const QString& recipient, const QString& subject, const QString& body, const QString& copy,
                    const QString& blindCopy, QString& result)
{
    const MailSettings settings = MailSettings::read(
        [this](const QString& section, const QString& key, const QString& defaultValue) {
            return GetSetting(section, key, defaultValue, kSuiteStore);
        });
    const MailMessage mail{settings.sender,          splitAddresses(recipient), splitAddresses(copy),
                           splitAddresses(blindCopy), subject,                   body};
    result = sendMail(settings, QDir(GetDataPath()).filePath(QStringLiteral("outbox")), mail);
    // Whether a reorder request went is looked up in the log; the text shown never holds the password.
    writeLog(QStringLiteral("%1\tMail\t%2\t%3")
                 .arg(QDateTime::currentDateTime().toString(Qt::ISODate),
                      (mail.to + mail.cc + mail.bcc).join(QStringLiteral(", ")),
                      QString(result).replace(QLatin1Char('\n'), QLatin1Char(' '))));
}

QString Host::GetMailFooter()
{
    return GetSetting(QStringLiteral("MAIL"), QStringLiteral("Firma"),
                      QStringLiteral("\n\n--\n") + GetAppTitle() + QStringLiteral(" - ") + GetDataName(),
                      kSuiteStore);
}

int Host::PrintReport(const QString& sql)
{
    return printReport(*this, sql);
}

qint16 Host::numberSetting(const QString& key, qint16 defaultValue)
{
    const QString text = GetSetting(kDefaultsSection, key, QString::number(defaultValue), kSuiteStore);
    return common::toInt16(common::numericValue(text));
}

qint16 Host::GetDefaultPayment()
{
    return numberSetting(QStringLiteral("Pagamento"), 1);
}

qint16 Host::GetVatDefault()
{
    return numberSetting(QStringLiteral("Iva"), 22);
}

qint16 Host::GetStockThreshold()
{
    return numberSetting(QStringLiteral("SogliaScorta"), 5);
}

WalkInAddress Host::GetWalkInAddress()
{
    const QString section = QStringLiteral("CLIENTE_OCCASIONALE");
    return {GetSetting(section, QStringLiteral("Indirizzo"), QString(), kSuiteStore),
            GetSetting(section, QStringLiteral("Cap"), QString(), kSuiteStore),
            GetSetting(section, QStringLiteral("Comune"), QString(), kSuiteStore),
            GetSetting(section, QStringLiteral("Provincia"), QString(), kSuiteStore)};
}

Colour Host::colourSetting(const QString& key, Colour defaultColour)
{
    const QString text = GetSetting(kColourSection, key, QString(), kSuiteStore);
    if (text.isEmpty())
        return defaultColour;
    // A colour mistyped in the configuration falls back to the default instead of stopping the form.
    return parseColour(text).value_or(defaultColour);
}

Colour Host::GetLockedColor()
{
    return colourSetting(QStringLiteral("Bloccato"), 0xF5F0EB);
}

Colour Host::GetDisabledColor()
{
    return colourSetting(QStringLiteral("Disabilitato"), 0xD8D8D8);
}

Colour Host::GetInactiveColor()
{
    return colourSetting(QStringLiteral("Inattivo"), 0xEEEEEE);
}

Colour Host::GetActiveColor()
{
    // A pale yellow: the field being typed in stands out without hiding what it holds.
    return colourSetting(QStringLiteral("Attivo"), 0xCCFFFF);
}

Colour Host::GetCollectedColor()
{
    // Text colours of the lines: they must read well on the locked background.
    return colourSetting(QStringLiteral("Ritirato"), 0x287800);
}

Colour Host::GetIssuedColor()
{
    return colourSetting(QStringLiteral("Emesso"), 0xA04600);
}

QString Host::GetDataPath()
{
    return m_options.dataPath;
}

bool Host::FileExists(const QString& path, int)
{
    const QFileInfo info(path);
    return info.exists() && info.isFile();
}

int Host::PadWidth(const QString& text, int width, int)
{
    return std::max(0, width - static_cast<int>(text.size()));
}

} // namespace xv::host
