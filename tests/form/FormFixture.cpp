// SPDX-License-Identifier: MIT
#include "FormFixture.h"

#include "TestOrders.h"

#include "host/Services.h"
#include "lines/FlexGrid.h"

#include <QApplication>
#include <QTest>

namespace xv::test {

void FormTest::SetUp()
{
    EngineTest::SetUp();
    if (IsSkipped() || HasFatalFailure())
        return;
    std::unique_ptr<host::Host> h = makeHost(database().hostOptions());
    m_host = h.get();
    ASSERT_TRUE(m_host->Initialize());
    host::setHost(std::move(h));
    host::setFormSettings(std::make_unique<host::IniFormSettings>(database().dataPath() + "finestre.ini"));
    m_year = QDate::currentDate().year();
    addCounter(db(), m_year - 5, 99);
}

void FormTest::TearDown()
{
    m_form.reset();
    host::resetServices();
    EngineTest::TearDown();
}

std::unique_ptr<host::Host> FormTest::makeHost(const host::HostOptions& options)
{
    return std::make_unique<host::Host>(options);
}

form::frm_Commissioni& FormTest::openForm()
{
    m_form = std::make_unique<form::frm_Commissioni>();
    m_form->show();
    m_form->InitForm(0);
    QApplication::processEvents();
    return *m_form;
}

form::frm_Commissioni& FormTest::openNewOrder(int lastNumber)
{
    addCounter(db(), m_year, lastNumber);
    openForm().tbComandiDocumento_ButtonClick(documentButton(1));
    return *m_form;
}

void FormTest::typeNumberAndEnter(const QString& number)
{
    QLineEdit* box = field("txt_numeroCommissione");
    box->clear();
    QTest::keyClicks(box, number);
    QTest::keyClick(box, Qt::Key_Return);
}

QLineEdit* FormTest::field(const char* name) const
{
    return m_form->findChild<QLineEdit*>(QString::fromLatin1(name));
}

QWidget* FormTest::widget(const char* name) const
{
    return m_form->findChild<QWidget*>(QString::fromLatin1(name));
}

QAction* FormTest::documentButton(int index) const
{
    return m_form->tbComandiDocumento().button(index);
}

QAction* FormTest::linesButton(int index) const
{
    return m_form->tbComandiRighe().button(index);
}

lines::FlexGrid* FormTest::grid() const
{
    return m_form->grid();
}

} // namespace xv::test
