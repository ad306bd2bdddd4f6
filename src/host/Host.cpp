// SPDX-License-Identifier: MIT
#include "Host.h"

#include "common/Conversions.h"
#include "common/RuntimeError.h"
#include "data/Database.h"
#include "demo/DemoData.h"
#include "host/Dialogs.h"
#include "data/Schema.h"
#include "data/SqlText.h"
#include "data/TypeCodes.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLoggingCategory>
#include <QSettings>
#include <QSqlQuery>
#include <QStandardPaths>
#include <QSysInfo>
#include <QTextStream>
#include <QWidget>

#include <cstdio>

Q_LOGGING_CATEGORY(lcHost, "xv.host")

namespace xv::host {

using common::ErrorNumber;
using common::RuntimeError;
using data::ColumnInfo;
using data::ConnectionConfig;
using data::Engine;
using data::Transaction;
using data::sqlEscape;
namespace TypeCode = data::TypeCode;

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

HostOptions HostOptions::fromEnvironment()
{
    HostOptions options;
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

Host::Host(HostOptions options) : m_options(std::move(options))
{
    m_options.dataPath = withSeparator(QDir::cleanPath(m_options.dataPath));
}

Host::~Host() = default;

QString Host::logFilePath() const
{
    return m_options.dataPath + QStringLiteral("xvelario.log");
}

void Host::writeLog(const QString& line)
{
    QDir().mkpath(m_options.dataPath);
    QFile file(logFilePath());
    if (file.open(QIODevice::Append | QIODevice::Text)) {
        QTextStream out(&file);
        out << line << '\n';
    } else {
        qCWarning(lcHost) << "cannot write the log" << logFilePath() << line;
    }
}

bool Host::Initialize()
{
    bool createdHere = false;
    ConnectionConfig config;
    try {
        if (!QDir().mkpath(m_options.dataPath))
            throw RuntimeError(
                ErrorNumber::InvalidProcedureCall,
                QStringLiteral("Impossibile creare la cartella dei dati %1").arg(m_options.dataPath));
        QString connectionText;
        if (m_options.connectionText) {
            connectionText = *m_options.connectionText;
        } else {
            const QSettings local(m_options.dataPath + QStringLiteral("xvelario.conf"), QSettings::IniFormat);
            connectionText = local.value(QStringLiteral("database/connection")).toString();
        }
        if (connectionText.isEmpty())
            connectionText = QStringLiteral("sqlite:") + m_options.dataPath + QStringLiteral("xvelario.db");
        config = ConnectionConfig::fromText(connectionText);
        createdHere = config.engine == Engine::SQLite && !QFileInfo::exists(config.sqlitePath);
        m_db = std::make_unique<Database>(config);
        const int before = data::migrate(*m_db);
        if (before == 0 && createdHere && m_options.fillDemoData) {
            const demo::DemoSummary summary = demo::fillDemoData(*m_db, demo::DemoOptions());
            qCInfo(lcHost) << "demo data:" << summary.orders << "orders," << summary.movimentiRows << "rows";
        }
        return true;
    } catch (...) {
        const common::ErrorInfo info = common::describe(std::current_exception());
        const QString line = QStringLiteral("%1\tInitialize\t%2\tErrore %3: %4")
                                 .arg(QDateTime::currentDateTime().toString(Qt::ISODate), config.describe())
                                 .arg(info.number)
                                 .arg(info.description);
        m_db.reset();
        // A database we created and could not finish must not be taken for a ready one next time.
        if (createdHere) {
            QFile::remove(config.sqlitePath);
            QFile::remove(config.sqlitePath + QStringLiteral("-wal"));
            QFile::remove(config.sqlitePath + QStringLiteral("-shm"));
        }
        writeLog(line);
        std::fprintf(stderr, "xVELARIO: impossibile avviare il collegamento ai dati: %s\n",
                     qPrintable(info.description));
        return false;
    }
}

void Host::Terminate()
{
    if (m_db && m_lastLock)
        ReleaseRecordLock(m_lastLock->window);
    m_db.reset();
}

Database& Host::GetConnection()
{
    if (!m_db)
        throw RuntimeError(ErrorNumber::DatabaseError, QStringLiteral("Nessuna connessione ai dati aperta"));
    return *m_db;
}

QString Host::GetSetting(const QString& section, const QString& key, const QString& defaultValue,
                         const QString& store)
{
    if (!m_db)
        return defaultValue;
    QSqlQuery query = m_db->executeBound(
        QStringLiteral("select valore from impostazioni where archivio=? and sezione=? and chiave=?"),
        {store.toLower(), section.toLower(), key.toLower()});
    if (!query.next() || query.value(0).isNull())
        return defaultValue;
    return query.value(0).toString();
}

void Host::SaveSetting(const QString& section, const QString& key, const QString& value, const QString& store)
{
    Database& db = GetConnection();
    Transaction transaction(db);
    const QVariantList keys{store.toLower(), section.toLower(), key.toLower()};
    db.executeBound(QStringLiteral("delete from impostazioni where archivio=? and sezione=? and chiave=?"),
                    keys);
    db.executeBound(
        QStringLiteral("insert into impostazioni (archivio, sezione, chiave, valore) values (?,?,?,?)"),
        keys + QVariantList{value});
    transaction.commit();
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
    QVector<QVector<QVariant>> rows;
    for (const ColumnInfo& column : data::tableColumns(GetConnection(), table))
        rows.push_back({column.name, column.typeCode});
    if (rows.isEmpty())
        throw RuntimeError(ErrorNumber::DatabaseError, QStringLiteral("Tabella sconosciuta: %1").arg(table));
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
    const common::ErrorInfo info = common::describe(std::current_exception());
    writeLog(QStringLiteral("%1\t%2\t%3\tErrore %4: %5")
                 .arg(QDateTime::currentDateTime().toString(Qt::ISODate), source, text)
                 .arg(info.number)
                 .arg(QString(info.description).replace(QLatin1Char('\n'), QLatin1Char(' '))));
    qCWarning(lcHost).noquote() << source << text << info.number << info.description;
    if (!show)
        return;
    QString message;
    if (!text.isEmpty())
        message += text + QStringLiteral("\n\n");
    message += QStringLiteral("Errore n. %1: %2\nOrigine: %3").arg(info.number).arg(info.description, source);
    Dialogs::message(message, Buttons::Ok, Icon::Critical, GetAppTitle());
}

QWidget* Host::AttachForm(QWidget* form, bool attach)
{
    if (attach)
        Dialogs::setParent(form);
    return form;
}

void Host::RegisterForm(QWidget* form)
{
    m_form = form;
    Dialogs::setParent(form);
}

QString Host::LockRecord(quintptr window, qint32 number, const QString& table)
{
    try {
        Database& db = GetConnection();
        QSqlQuery held = db.executeBound(
            QStringLiteral(
                "select finestra, postazione, utente, dal from blocchi_record where tabella=? and record=?"),
            {table.toLower(), number});
        if (held.next()) {
            const bool mine =
                held.value(0).toULongLong() == window && held.value(1).toString() == GetStationName();
            if (mine)
                return {};
            return QStringLiteral("Il documento N. %1 è in uso da %2 sulla postazione %3 dal %4")
                .arg(number)
                .arg(held.value(2).toString(), held.value(1).toString(),
                     data::variantText(QVariant(data::variantDateTime(held.value(3)))));
        }
        Transaction transaction(db);
        db.executeBound(
            QStringLiteral("insert into blocchi_record (tabella, record, finestra, postazione, utente, dal) "
                           "values (?,?,?,?,?,?)"),
            {table.toLower(), number, QVariant::fromValue<qulonglong>(window), GetStationName(),
             GetUserName(), db.toStorage(QDateTime::currentDateTime(), TypeCode::Date)});
        transaction.commit();
        m_lastLock = HeldLock{table.toLower(), number, window};
        return {};
    } catch (...) {
        ReportError(QStringLiteral("LockRecord"), QString(), false);
        return QStringLiteral("Errore");
    }
}

bool Host::ReleaseRecordLock(quintptr window)
{
    try {
        GetConnection().executeBound(
            QStringLiteral("delete from blocchi_record where finestra=? and postazione=?"),
            {QVariant::fromValue<qulonglong>(window), GetStationName()});
        if (m_lastLock && m_lastLock->window == window)
            m_lastLock.reset();
        return true;
    } catch (...) {
        ReportError(QStringLiteral("ReleaseRecordLock"), QString(), false);
        return false;
    }
}

void Host::ClearRecordLock()
{
    if (!m_lastLock)
        return;
    GetConnection().executeBound(QStringLiteral("delete from blocchi_record where tabella=? and record=?"),
                                 {m_lastLock->table, m_lastLock->number});
    m_lastLock.reset();
}

bool Host::IsControlSlipMode()
{
    return common::numericValue(GetSetting(QStringLiteral("comm"), QStringLiteral("StampaComande"),
                                           QStringLiteral("0"), QStringLiteral("DOCS"))) != 0.0;
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

void Host::SendMail(const QString&, const QString&, const QString&, const QString&, const QString&, QString&)
{
    throw RuntimeError::notSupported(QStringLiteral("SendMail"));
}

QString Host::GetMailFooter()
{
    return GetSetting(QStringLiteral("MAIL"), QStringLiteral("Firma"),
                      QStringLiteral("\n\n--\n") + GetAppTitle() + QStringLiteral(" - ") + GetDataName(),
                      kSuiteStore);
}

int Host::PrintReport(const QString&)
{
    throw RuntimeError::notSupported(QStringLiteral("PrintReport"));
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
