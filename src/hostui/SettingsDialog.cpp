// SPDX-License-Identifier: MIT
#include "ListWindow.h"

#include <QHBoxLayout>
#include <QHeaderView>
#include <QKeyEvent>
#include <QPushButton>
#include <QTableWidget>
#include <QVBoxLayout>

namespace xv::hostui {

SettingsDialog::SettingsDialog(const SettingsRequest& request, QWidget* parent) : QDialog(parent)
{
    setWindowTitle(request.caption.trimmed().isEmpty()
                       ? QStringLiteral("Impostazioni %1 - %2").arg(request.store, request.section)
                       : request.caption);
    m_table = new QTableWidget(static_cast<int>(request.entries.size()), 2, this);
    m_table->setHorizontalHeaderLabels({QStringLiteral("Chiave"), QStringLiteral("Valore")});
    m_table->verticalHeader()->hide();
    m_table->horizontalHeader()->setStretchLastSection(true);
    m_table->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_table->setSelectionMode(QAbstractItemView::SingleSelection);
    m_table->setEditTriggers(QAbstractItemView::DoubleClicked | QAbstractItemView::EditKeyPressed |
                             QAbstractItemView::AnyKeyPressed);
    for (int row = 0; row < request.entries.size(); ++row) {
        auto* key = new QTableWidgetItem(request.entries[row].key);
        key->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable);
        m_table->setItem(row, 0, key);
        m_table->setItem(row, 1, new QTableWidgetItem(request.entries[row].value));
    }
    m_table->resizeColumnToContents(0);
    if (m_table->columnWidth(0) > kMaxColumnWidth)
        m_table->setColumnWidth(0, kMaxColumnWidth);
    if (m_table->rowCount() > 0)
        m_table->setCurrentCell(0, 1);

    auto* addButton = new QPushButton(QStringLiteral("Aggiungi"), this);
    auto* saveButton = new QPushButton(QStringLiteral("Salva"), this);
    auto* cancelButton = new QPushButton(QStringLiteral("Annulla"), this);
    // Enter confirms a cell being edited; saving the whole section is a deliberate click.
    addButton->setAutoDefault(false);
    saveButton->setAutoDefault(false);
    cancelButton->setAutoDefault(false);
    connect(addButton, &QPushButton::clicked, this, [this] { addEntry(); });
    connect(saveButton, &QPushButton::clicked, this, [this] { accept(); });
    connect(cancelButton, &QPushButton::clicked, this, [this] { reject(); });

    auto* buttons = new QHBoxLayout;
    buttons->addWidget(addButton);
    buttons->addStretch(1);
    buttons->addWidget(saveButton);
    buttons->addWidget(cancelButton);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(m_table, 1);
    layout->addLayout(buttons);
    resize(700, 450);
}

void SettingsDialog::addEntry()
{
    const int row = m_table->rowCount();
    m_table->insertRow(row);
    m_table->setItem(row, 0, new QTableWidgetItem);
    m_table->setItem(row, 1, new QTableWidgetItem);
    m_table->setCurrentCell(row, 0);
    m_table->editItem(m_table->item(row, 0));
}

QVector<SettingEntry> SettingsDialog::entries() const
{
    QVector<SettingEntry> entries;
    for (int row = 0; row < m_table->rowCount(); ++row) {
        const QTableWidgetItem* key = m_table->item(row, 0);
        const QTableWidgetItem* value = m_table->item(row, 1);
        if (!key || key->text().trimmed().isEmpty())
            continue;
        entries.push_back({key->text().trimmed(), value ? value->text() : QString()});
    }
    return entries;
}


} // namespace xv::hostui
