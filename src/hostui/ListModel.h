// SPDX-License-Identifier: MIT
#pragma once

#include "data/Recordset.h"

#include <QAbstractTableModel>
#include <QSortFilterProxyModel>
#include <QStringList>
#include <QVariant>
#include <QVector>

#include <functional>

namespace xv::hostui {

using data::Recordset;

// How a column of a list is shown and sorted.
enum class ColumnKind { Text, Number, Money };

// A cell as shown, and what its column sorts by: amounts and numbers by value, dates by time, anything
// else by its text.
struct Cell
{
    QString text;
    QVariant key;
};

Cell makeCell(const QVariant& value, ColumnKind kind);
QStringList fieldNames(const Recordset& rows);
QVector<QVector<QVariant>> rowValues(Recordset rows);
QVector<ColumnKind> columnKinds(const Recordset& rows, const QVector<QVector<QVariant>>& values);
// One text per row that tells two rows apart, nulls from empty texts included.
QString rowKey(const QVector<QVariant>& row);

// The rows of a list as texts, each cell with the key its column sorts by.
class ListModel : public QAbstractTableModel
{
public:
    static constexpr int SortRole = Qt::UserRole + 1;

    ListModel(QStringList fields, QVector<ColumnKind> kinds, QObject* parent)
        : QAbstractTableModel(parent), m_fields(std::move(fields)), m_kinds(std::move(kinds))
    {
    }

    void setRows(const QVector<QVector<QVariant>>& rows)
    {
        beginResetModel();
        m_texts.clear();
        m_sortKeys.clear();
        m_texts.reserve(rows.size());
        m_sortKeys.reserve(rows.size());
        addCells(rows);
        endResetModel();
    }

    void appendRows(const QVector<QVector<QVariant>>& rows)
    {
        if (rows.isEmpty())
            return;
        const int first = static_cast<int>(m_texts.size());
        beginInsertRows({}, first, first + static_cast<int>(rows.size()) - 1);
        addCells(rows);
        endInsertRows();
    }

    // Where more rows come from when the view reaches the end of those it has.
    void setFetcher(std::function<bool()> canFetch, std::function<void()> fetch)
    {
        m_canFetch = std::move(canFetch);
        m_fetch = std::move(fetch);
    }
    bool canFetchMore(const QModelIndex& parent) const override
    {
        return !parent.isValid() && m_canFetch && m_canFetch();
    }
    void fetchMore(const QModelIndex& parent) override
    {
        if (!parent.isValid() && m_fetch)
            m_fetch();
    }

    QString text(int row, int column) const { return m_texts.value(row).value(column); }
    bool rightAligned(int column) const { return m_kinds.value(column) != ColumnKind::Text; }

    int rowCount(const QModelIndex& parent = {}) const override
    {
        return parent.isValid() ? 0 : static_cast<int>(m_texts.size());
    }
    int columnCount(const QModelIndex& parent = {}) const override
    {
        return parent.isValid() ? 0 : static_cast<int>(m_fields.size());
    }

    QVariant data(const QModelIndex& index, int role) const override
    {
        if (!index.isValid())
            return {};
        switch (role) {
        case Qt::DisplayRole:
        case Qt::ToolTipRole:
            return m_texts[index.row()][index.column()];
        case SortRole:
            return m_sortKeys[index.row()][index.column()];
        case Qt::TextAlignmentRole:
            return static_cast<int>((rightAligned(index.column()) ? Qt::AlignRight : Qt::AlignLeft) |
                                    Qt::AlignVCenter);
        default:
            return {};
        }
    }

    QVariant headerData(int section, Qt::Orientation orientation, int role) const override
    {
        if (orientation == Qt::Horizontal && role == Qt::DisplayRole)
            return m_fields.value(section);
        return QAbstractTableModel::headerData(section, orientation, role);
    }

private:
    void addCells(const QVector<QVector<QVariant>>& rows)
    {
        for (const auto& row : rows) {
            QStringList texts;
            QVector<QVariant> keys;
            for (int column = 0; column < m_fields.size(); ++column) {
                Cell cell = makeCell(row[column], m_kinds[column]);
                texts << std::move(cell.text);
                keys << std::move(cell.key);
            }
            m_texts.push_back(std::move(texts));
            m_sortKeys.push_back(std::move(keys));
        }
    }

    std::function<bool()> m_canFetch;
    std::function<void()> m_fetch;
    QStringList m_fields;
    QVector<ColumnKind> m_kinds;
    QVector<QStringList> m_texts;
    QVector<QVector<QVariant>> m_sortKeys;
};

// Sorts by the cells' keys rather than their texts.
class ListProxyModel : public QSortFilterProxyModel
{
public:
    using QSortFilterProxyModel::QSortFilterProxyModel;

protected:
    bool lessThan(const QModelIndex& left, const QModelIndex& right) const override;
};

} // namespace xv::hostui
