// SPDX-License-Identifier: MIT
// How the demo shop draws its values from the seed and writes its rows.
#pragma once

#include "common/RuntimeError.h"
#include "data/Database.h"

#include <QDate>
#include <QSqlError>
#include <QSqlQuery>
#include <QStringList>
#include <QTime>
#include <QVariant>

#include <iterator>
#include <random>
#include <utility>
#include <vector>

namespace xv::demo {

using data::Database;

inline QString text(const char* utf8)
{
    return QString::fromUtf8(utf8);
}

inline QVariant nullText()
{
    return QVariant(QMetaType::fromType<QString>());
}

inline QVariant nullNumber()
{
    return QVariant(QMetaType::fromType<int>());
}

inline QString stamp(QDate date, QTime time = QTime(0, 0))
{
    return QStringLiteral("%1 %2").arg(date.toString(Qt::ISODate), time.toString(QStringLiteral("HH:mm:ss")));
}

// value / divisor rounded half up, as a till rounds; money here is never negative.
inline qint64 divideRounded(qint64 value, qint64 divisor)
{
    return (value + divisor / 2) / divisor;
}

// std's distributions may differ between standard libraries; these draw from the engine directly so a
// seed gives the same shop everywhere.
class Dice
{
public:
    explicit Dice(quint32 seed) : m_engine(seed) {}

    int between(int low, int high)
    {
        const auto span = static_cast<quint64>(static_cast<qint64>(high) - low + 1);
        return static_cast<int>(low + static_cast<qint64>(static_cast<quint64>(m_engine()) % span));
    }
    bool chance(int percent) { return between(1, 100) <= percent; }
    template <typename T, std::size_t N> const T& pick(const T (&items)[N])
    {
        return items[between(0, static_cast<int>(N) - 1)];
    }
    template <typename Weights> int weighted(const Weights& weights)
    {
        int sum = 0;
        for (int w : weights)
            sum += w;
        int roll = between(0, sum - 1);
        int index = 0;
        for (int w : weights) {
            if (roll < w)
                return index;
            roll -= w;
            ++index;
        }
        return index - 1;
    }
    template <typename T> void shuffle(std::vector<T>& items)
    {
        for (int i = static_cast<int>(items.size()) - 1; i > 0; --i)
            std::swap(items[i], items[between(0, i)]);
    }
    QString digits(int count)
    {
        QString result;
        for (int i = 0; i < count; ++i)
            result += QLatin1Char(static_cast<char>('0' + between(0, 9)));
        return result;
    }

private:
    std::mt19937 m_engine;
};

// One prepared insert reused for every row: preparing is what costs on a million rows.
class BoundInsert
{
public:
    BoundInsert(Database& db, const QString& table, const QStringList& columns, bool returnsRowid = false)
        : m_query(db.handle()), m_columns(static_cast<int>(columns.size())), m_returnsRowid(returnsRowid)
    {
        QStringList marks;
        for (int i = 0; i < m_columns; ++i)
            marks << QStringLiteral("?");
        m_sql = QStringLiteral("insert into %1 (%2) values (%3)")
                    .arg(table, columns.join(QStringLiteral(", ")), marks.join(QLatin1Char(',')));
        if (returnsRowid)
            m_sql += QStringLiteral(" returning rowid");
        m_query.setForwardOnly(true);
        if (!m_query.prepare(m_sql))
            fail();
    }

    // The new row's rowid when the insert was built to return it, else 0.
    int run(const QVariant* values)
    {
        for (int i = 0; i < m_columns; ++i)
            m_query.bindValue(i, values[i]);
        if (!m_query.exec())
            fail();
        if (!m_returnsRowid)
            return 0;
        if (!m_query.next())
            fail();
        const int rowid = m_query.value(0).toInt();
        m_query.finish();
        return rowid;
    }
    int run(const QVariantList& values)
    {
        Q_ASSERT(values.size() == m_columns);
        return run(values.constData());
    }

private:
    [[noreturn]] void fail() const
    {
        throw common::RuntimeError(
            common::ErrorNumber::DatabaseError,
            QStringLiteral("%1\n[%2]").arg(m_query.lastError().text().trimmed(), m_sql));
    }

    QSqlQuery m_query;
    QString m_sql;
    int m_columns;
    bool m_returnsRowid;
};

// movimenti in the order the insert binds them; the names are those of the table.
enum Mov : int {
    Tipogestione,
    Tipomovimento,
    RowidUtente,
    Riga,
    RowidTestata,
    RowidDeposito,
    Numero,
    Documento,
    Serie,
    DataDocumento,
    DataReg,
    DataDal,
    OraDal,
    DataAl,
    OraAl,
    CodiceMed,
    RowidMed,
    Descrizione1,
    Descrizione2,
    RowidControparti,
    Nominativo,
    CodeNominativo,
    Indirizzo,
    Cap,
    Comune,
    Spedizione,
    Provincia,
    Strada,
    Telefono,
    Cellulare,
    Email,
    Qta,
    Quantita,
    Prezzo,
    Prezzo2,
    Sconto1,
    Sconto2,
    CodiceIva,
    Percentuale,
    Imponibile,
    Imposta,
    Totale,
    Attrib00,
    Attrib01,
    Attrib02,
    Attrib03,
    Attrib04,
    Attrib05,
    Attrib06,
    Attrib07,
    Attrib08,
    Attrib09,
    Attrib10,
    StatoRiga,
    Tipo,
    Note,
    RowidPagamento,
    Pagamento,
    Referente,
    Riferimenti,
    MovCount
};

inline const char* const kMovColumns[] = {
    "Tipogestione",    "Tipomovimento",  "rowid_utente", "Riga",
    "rowid_testata",   "rowid_deposito", "numero",       "documento",
    "serie",           "datadocumento",  "datareg",      "Datadal",
    "oradal",          "Dataal",         "oraal",        "codice_med",
    "rowid_med",       "Descrizione1",   "Descrizione2", "rowid_controparti",
    "Nominativo",      "codenominativo", "Indirizzo",    "Cap",
    "comune",          "Spedizione",     "provincia",    "Strada",
    "telefono",        "Cellulare",      "Email",        "qta",
    "quantita",        "prezzo",         "prezzo2",      "sconto1",
    "sconto2",         "codice_iva",     "percentuale",  "imponibile",
    "imposta",         "totale",         "attrib00",     "attrib01",
    "attrib02",        "attrib03",       "attrib04",     "attrib05",
    "attrib06",        "attrib07",       "attrib08",     "attrib09",
    "attrib10",        "StatoRiga",      "Tipo",         "note",
    "Rowid_Pagamento", "pagamento",      "referente",    "riferimenti",
};
static_assert(std::size(kMovColumns) == MovCount);

inline QStringList columnList(const char* const* names, int count)
{
    QStringList list;
    for (int i = 0; i < count; ++i)
        list << QLatin1String(names[i]);
    return list;
}

} // namespace xv::demo
