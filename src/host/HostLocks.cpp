// SPDX-License-Identifier: MIT
#include "Host.h"

#include "data/Database.h"
#include "data/SqlText.h"
#include "data/TypeCodes.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QLoggingCategory>
#include <QSqlQuery>
#include <QSysInfo>

#ifdef Q_OS_UNIX
#include <cerrno>
#include <csignal>
#include <sys/types.h>
#endif

Q_DECLARE_LOGGING_CATEGORY(lcHost)

namespace xv::host {

using data::Engine;
using data::Transaction;

namespace {

// A lock row names its session: on PostgreSQL the server backend (number and start, since numbers are
// reused), on SQLite the process and machine, one file serving one workstation. A lock whose session
// has gone was left by a crashed or killed program and no longer holds the order.
const QString kHolderPg =
    QStringLiteral("select b.finestra, b.postazione, b.utente, b.dal, b.processo, b.macchina, "
                   "coalesce(b.processo = pg_backend_pid(), false), "
                   "exists (select 1 from pg_stat_activity a where a.pid = b.processo "
                   "and (a.backend_start is null or a.backend_start = b.avvio)) "
                   "from blocchi_record b where b.tabella = ? and b.record = ?");
const QString kHolderSqlite =
    QStringLiteral("select finestra, postazione, utente, dal, processo, macchina from blocchi_record "
                   "where tabella = ? and record = ?");

const QString kInsertPg = QStringLiteral(
    "insert into blocchi_record (tabella, record, finestra, postazione, utente, dal, processo, macchina, "
    "avvio) values (?, ?, ?, ?, ?, ?, pg_backend_pid(), ?, "
    "(select backend_start from pg_stat_activity where pid = pg_backend_pid())) "
    "on conflict (tabella, record) do nothing");
const QString kInsertSqlite = QStringLiteral(
    "insert into blocchi_record (tabella, record, finestra, postazione, utente, dal, processo, macchina) "
    "values (?, ?, ?, ?, ?, ?, ?, ?) on conflict (tabella, record) do nothing");

const QString kStaleOfStationPg = QStringLiteral(
    "delete from blocchi_record b where b.postazione = ? and not exists (select 1 from pg_stat_activity a "
    "where a.pid = b.processo and (a.backend_start is null or a.backend_start = b.avvio))");

struct Holder
{
    quintptr window = 0;
    QString station;
    QString user;
    QVariant since;
    qint64 process = 0;
    QString machine;
    bool ownSession = false;
    bool alive = true;
};

QString thisMachine()
{
    return QSysInfo::machineHostName();
}

qint64 thisProcess()
{
    return QCoreApplication::applicationPid();
}

bool processRuns(qint64 pid)
{
#ifdef Q_OS_UNIX
    if (pid <= 0 || pid != static_cast<qint64>(static_cast<pid_t>(pid)))
        return false;
    return ::kill(static_cast<pid_t>(pid), 0) == 0 || errno == EPERM;
#else
    Q_UNUSED(pid);
    return true; // no way to tell here: the lock stands
#endif
}

// On SQLite only a process of this machine can be checked; one of another machine is taken for live.
bool sqliteSessionAlive(qint64 process, const QString& machine)
{
    return machine != thisMachine() || process == thisProcess() || processRuns(process);
}

std::optional<Holder> readHolder(Database& db, const QString& table, qint32 number)
{
    const bool pg = db.engine() == Engine::PostgreSQL;
    QSqlQuery query = db.executeBound(pg ? kHolderPg : kHolderSqlite, {table, number});
    if (!query.next())
        return std::nullopt;
    Holder holder;
    holder.window = static_cast<quintptr>(query.value(0).toULongLong());
    holder.station = query.value(1).toString();
    holder.user = query.value(2).toString();
    holder.since = query.value(3);
    holder.process = query.value(4).toLongLong();
    holder.machine = query.value(5).toString();
    if (pg) {
        holder.ownSession = query.value(6).toBool();
        holder.alive = query.value(7).toBool();
    } else {
        holder.ownSession = holder.process == thisProcess() && holder.machine == thisMachine();
        holder.alive = sqliteSessionAlive(holder.process, holder.machine);
    }
    return holder;
}

QString heldMessage(qint32 number, const Holder& holder)
{
    return QStringLiteral("Il documento N. %1 è in uso da %2 sulla postazione %3 dal %4")
        .arg(number)
        .arg(holder.user, holder.station, data::variantText(QVariant(data::variantDateTime(holder.since))));
}

} // namespace

QString Host::LockRecord(quintptr window, qint32 number, const QString& table)
{
    try {
        Database& db = GetConnection();
        const QString name = table.toLower();
        // Finding the order held by someone else writes nothing, so it opens no transaction.
        const std::optional<Holder> held = readHolder(db, name, number);
        if (held && held->ownSession && held->window == window && held->station == GetStationName())
            return {};
        if (held && held->alive)
            return heldMessage(number, *held);
        Transaction transaction(db);
        if (held) {
            qCInfo(lcHost) << "lock of order" << number << "left by" << held->station << "process"
                           << held->process << "on" << held->machine << "expired";
            db.executeBound(QStringLiteral("delete from blocchi_record where tabella = ? and record = ? "
                                           "and processo = ? and finestra = ?"),
                            {name, number, held->process, QVariant::fromValue<qulonglong>(held->window)});
        }
        const bool pg = db.engine() == Engine::PostgreSQL;
        QVariantList values{name,
                            number,
                            QVariant::fromValue<qulonglong>(window),
                            GetStationName(),
                            GetUserName(),
                            db.toStorage(QDateTime::currentDateTime(), data::TypeCode::Date)};
        if (!pg)
            values << thisProcess();
        values << thisMachine();
        if (db.executeBound(pg ? kInsertPg : kInsertSqlite, values).numRowsAffected() != 1) {
            // Another workstation took the order between the look and the write.
            const std::optional<Holder> winner = readHolder(db, name, number);
            return winner ? heldMessage(number, *winner) : QStringLiteral("Errore");
        }
        transaction.commit();
        m_lastLock = HeldLock{name, number, window};
        return {};
    } catch (...) {
        ReportError(QStringLiteral("LockRecord"), QString(), false);
        return QStringLiteral("Errore");
    }
}

bool Host::ReleaseRecordLock(quintptr window)
{
    try {
        Database& db = GetConnection();
        const QVariant handle = QVariant::fromValue<qulonglong>(window);
        if (db.engine() == Engine::PostgreSQL)
            db.executeBound(QStringLiteral("delete from blocchi_record where finestra = ? and postazione = ? "
                                           "and processo = pg_backend_pid()"),
                            {handle, GetStationName()});
        else
            db.executeBound(QStringLiteral("delete from blocchi_record where finestra = ? and postazione = ? "
                                           "and processo = ? and macchina = ?"),
                            {handle, GetStationName(), thisProcess(), thisMachine()});
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

// A lock names the server session that holds it, and a session the server closed reads as gone: once the
// connection is open again the lock is made to name the new session, or other workstations would take the
// order being changed here. One taken meanwhile by another workstation stays theirs.
void Host::carryLockOver()
{
    if (!m_lastLock || !m_db || m_db->engine() != Engine::PostgreSQL)
        return;
    const int kept =
        m_db->executeBound(
                QStringLiteral("update blocchi_record set processo = pg_backend_pid(), avvio = (select "
                               "backend_start from pg_stat_activity where pid = pg_backend_pid()) "
                               "where tabella = ? and record = ? and finestra = ? and postazione = ?"),
                {m_lastLock->table, m_lastLock->number, QVariant::fromValue<qulonglong>(m_lastLock->window),
                 GetStationName()})
            .numRowsAffected();
    if (kept == 0) {
        qCWarning(lcHost) << "the lock of order" << m_lastLock->number
                          << "was taken by another workstation while the server could not be reached";
        m_lastLock.reset();
    }
}

void Host::clearStaleLocks()
{
    // A lock left behind by this workstation's last run would otherwise hold its order until someone
    // else tried it; a run still going on this workstation keeps its locks.
    try {
        Database& db = GetConnection();
        int cleared = 0;
        if (db.engine() == Engine::PostgreSQL) {
            cleared = db.executeBound(kStaleOfStationPg, {GetStationName()}).numRowsAffected();
        } else {
            QSqlQuery query = db.executeBound(
                QStringLiteral("select tabella, record, processo from blocchi_record where macchina = ?"),
                {thisMachine()});
            QVector<QVariantList> stale;
            while (query.next()) {
                if (!sqliteSessionAlive(query.value(2).toLongLong(), thisMachine()))
                    stale.push_back({query.value(0), query.value(1), query.value(2)});
            }
            for (const QVariantList& key : stale)
                db.executeBound(QStringLiteral("delete from blocchi_record where tabella = ? and record = ? "
                                               "and processo = ?"),
                                key);
            cleared = static_cast<int>(stale.size());
        }
        if (cleared > 0)
            qCInfo(lcHost) << cleared << "lock(s) left by an earlier run cleared";
    } catch (...) {
        // The orders stay locked until their locks expire on use: no reason to refuse the start.
        logError(QStringLiteral("Initialize"), QStringLiteral("blocchi_record"),
                 common::describe(std::current_exception()));
    }
}

} // namespace xv::host
