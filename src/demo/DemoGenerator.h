// SPDX-License-Identifier: MIT
// The demo shop's writer: its people and catalogue (DemoData.cpp), then its documents (DemoOrders.cpp).
#pragma once

#include "demo/DemoData.h"
#include "demo/DemoRows.h"
#include "demo/DemoShop.h"

#include <array>
#include <vector>

namespace xv::demo {

struct Article
{
    int rowid = 0;
    QString code;
    QString description;
    Family family = Family::Bomboniere;
    bool assembled = false;
    int priceCents = 0;
    int costCents = 0;
    bool byWeight = false;
};

struct Party
{
    int rowid = 0;
    QString code;
    QString name;
    QString address;
    QString cap;
    QString town;
    QString province;
    QVariant phone;
    QVariant mobile;
    QVariant email;
};

struct Line
{
    const Article* article = nullptr;
    int quantity = 0;
    qint64 totalCents = 0;
};

struct Delivery
{
    QDate date;
    int supplier = 0;
    std::vector<int> articles; // indices into the supplier's articles
};

class Generator
{
public:
    Generator(Database& db, const DemoOptions& options);
    DemoSummary run();

private:
    QVariant money(qint64 cents) const;
    void writeSettings();
    void writeOperators();
    QStringList partyColumns() const;
    QString mobileNumber();
    QString streetAddress();
    void writeAgents();
    void writeSuppliers();
    int priceFor(Family family, bool assembled);
    void writeCatalogue();
    int indexOfCode(const QString& code) const;
    void writeAssemblies();
    void writeCustomers();
    QString emailOf(const QString& name);
    QDate randomDay();
    std::array<QVariant, MovCount> blankRow() const;
    void copyParty(std::array<QVariant, MovCount>& row, const Party& party) const;
    void setLine(std::array<QVariant, MovCount>& row, int riga, const Article& article, int quantity,
                 int priceCents) const;
    std::vector<int> supplierArticles(int supplier) const;
    void writeDeliveries();
    void writeOrders();
    const Article& anyOf(Family family);
    std::vector<Line> orderLines(bool withApostrophe);
    void writeCounters();

    struct Counter
    {
        int number = 0;
        QDate last;
    };

    Database& m_db;
    const DemoOptions& m_options;
    Dice m_dice;
    bool m_postgres;
    QDate m_firstDay;
    int m_operatorRowid = 0;
    std::vector<int> m_agentRowids;
    std::vector<Party> m_suppliers;
    std::vector<Party> m_customers;
    std::vector<Article> m_articles;
    std::vector<int> m_articleSupplier;
    std::array<std::vector<int>, std::size(kFamilies)> m_byFamily;
    // By year, from the first.
    std::array<Counter, kYears> m_orderCounters;
    std::array<Counter, kYears> m_deliveryCounters;
    DemoSummary m_summary;
};

} // namespace xv::demo
