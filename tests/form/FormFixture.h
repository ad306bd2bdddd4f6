// SPDX-License-Identifier: MIT
#pragma once

#include "TestDatabase.h"

#include "form/frm_Commissioni.h"
#include "host/Host.h"

#include <QDate>
#include <QLineEdit>
#include <QStringList>
#include <QTest>

#include <memory>

namespace xv::lines {
class FlexGrid;
}

namespace xv::test {

// The real host, watching the form's calls: the errors it reports (still shown unless keepErrors), the
// lines' colours it reads, and, when filterKeys, a key filter that drops 'x' and types 'Q' for 'q'.
class WatchingHost : public host::Host
{
public:
    using Host::Host;
    void ReportError(const QString& source, const QString& text, bool show) override;
    void FilterKeyPress(int& keyCode) override;
    host::Colour GetLockedColor() override { return colours << "locked", Host::GetLockedColor(); }
    host::Colour GetIssuedColor() override { return colours << "issued", Host::GetIssuedColor(); }
    host::Colour GetCollectedColor() override { return colours << "collected", Host::GetCollectedColor(); }
    int PadWidth(const QString& text, int width, int mode) override;

    bool keepErrors = false;
    bool filterKeys = false;
    QStringList reported;
    QStringList colours;
    // PadWidth raises an invalid property value this many times before it answers again.
    int padWidthFailures = 0;
};

// The real order form, offscreen, through a real host on a fresh database of each engine. Orders are the
// documents of a type that has an order counter: an old one is there from the start.
class FormTest : public EngineTest
{
protected:
    void SetUp() override;
    void TearDown() override;

    form::frm_Commissioni& openForm();
    // This year's counter at lastNumber, the form open and a new order started.
    form::frm_Commissioni& openNewOrder(int lastNumber);
    // A new order whose header is filled, so that lines can be entered, with the window active so that
    // the focus moves as on screen, and the focus on the article code.
    form::frm_Commissioni& startOrder();
    void activate();
    void typeNumberAndEnter(const QString& number);

    void addArticle(const QString& code, const QString& description, qint64 priceRaw,
                    const QVariant& real = 100, const QVariant& available = 90,
                    const QString& category = QString());
    // The entry fields as the operator leaves them for an article: its code loaded, a quantity typed.
    void fillLine(const QString& code, const QString& quantity);
    void addLine(const QString& code, const QString& quantity);
    // The shop's three articles the order tests sell: BOM001 at 80, CNF002 at 15 and SCT003 at 2.
    void addShopArticles();
    // A new order, number 8 of this year, with a line for each quantity (the three articles in turn), a
    // deposit of 10, the cards' phrase and its header filled so that every check passes.
    form::frm_Commissioni& completeOrder(std::initializer_list<const char*> quantities = {"1", "2", "3"});

    // Types into a field as the operator does: the field takes the focus, the text is replaced.
    void type(const char* name, const QString& text);
    void pressEnter(const char* name) { QTest::keyClick(field(name), Qt::Key_Return); }
    void typeAndEnter(const char* name, const QString& text)
    {
        type(name, text);
        pressEnter(name);
    }
    // A supplier whose agent is the counterpart named, and a delivery note of the article from them.
    void addSupplierOf(const QString& code, const QString& agent, int quantity = 50, const QDate& day = {});
    void clickCell(int row, int col);

    QLineEdit* field(const char* name) const
    {
        return m_form->findChild<QLineEdit*>(QString::fromLatin1(name));
    }
    QWidget* widget(const char* name) const { return m_form->findChild<QWidget*>(QString::fromLatin1(name)); }
    QString text(const char* name) const { return field(name)->text(); }
    QString focusName() const;
    QAction* documentButton(int index) const { return m_form->tbComandiDocumento().button(index); }
    QAction* linesButton(int index) const { return m_form->tbComandiRighe().button(index); }
    lines::FlexGrid* grid() const { return m_form->grid(); }
    QStringList column(int col) const;
    data::Database& db() { return m_host->GetConnection(); }

    WatchingHost* m_host = nullptr;
    std::unique_ptr<form::frm_Commissioni> m_form;
    int m_year = 0;
};

} // namespace xv::test
