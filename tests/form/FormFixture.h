// SPDX-License-Identifier: MIT
#pragma once

#include "TestDatabase.h"

#include "form/frm_Commissioni.h"
#include "host/Host.h"

#include <QLineEdit>

#include <memory>

namespace xv::lines {
class FlexGrid;
}

namespace xv::test {

// The real order form, offscreen, through a real host on a fresh database of each engine. Orders are the
// documents of a type that has an order counter: an old one is there from the start.
class FormTest : public EngineTest
{
protected:
    void SetUp() override;
    void TearDown() override;
    // The host the form will use; a test may hand a host of its own that watches the form's calls.
    virtual std::unique_ptr<host::Host> makeHost(const host::HostOptions& options);

    form::frm_Commissioni& openForm();
    // This year's counter at lastNumber, the form open and a new order started.
    form::frm_Commissioni& openNewOrder(int lastNumber);
    void typeNumberAndEnter(const QString& number);

    QLineEdit* field(const char* name) const;
    QWidget* widget(const char* name) const;
    QString text(const char* name) const { return field(name)->text(); }
    QAction* documentButton(int index) const;
    QAction* linesButton(int index) const;
    lines::FlexGrid* grid() const;
    data::Database& db() { return m_host->GetConnection(); }

    host::Host* m_host = nullptr;
    std::unique_ptr<form::frm_Commissioni> m_form;
    int m_year = 0;
};

} // namespace xv::test
