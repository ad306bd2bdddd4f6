// SPDX-License-Identifier: MIT
#include "FormFixture.h"

#include "TestOrders.h"

#include "common/Money.h"
#include "common/RuntimeError.h"
#include "host/Services.h"
#include "lines/FlexGrid.h"
#include "lines/GridColumns.h"

#include <QApplication>
#include <QTest>

namespace xv::test {

void WatchingHost::ReportError(const QString& source, const QString& text, bool show)
{
    reported << source + QLatin1Char('|') + text;
    if (!keepErrors)
        Host::ReportError(source, text, show);
}

void WatchingHost::FilterKeyPress(int& keyCode)
{
    if (!filterKeys)
        return Host::FilterKeyPress(keyCode);
    if (keyCode == 'x')
        keyCode = 0;
    else if (keyCode == 'q')
        keyCode = 'Q';
}

int WatchingHost::PadWidth(const QString& text, int width, int mode)
{
    if (padWidthFailures > 0) {
        --padWidthFailures;
        throw common::RuntimeError::invalidPropertyValue(QStringLiteral("PadWidth"));
    }
    return Host::PadWidth(text, width, mode);
}

void FormTest::SetUp()
{
    EngineTest::SetUp();
    if (IsSkipped() || HasFatalFailure())
        return;
    auto h = std::make_unique<WatchingHost>(database().hostOptions());
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

form::frm_Commissioni& FormTest::startOrder()
{
    openNewOrder(7);
    field("txt_ragsoc")->setText("Rossi Maria");
    field("txt_dataEvento")->setText("20/06/2027");
    field("txt_soggettiEvento")->setText("Marco e Giulia");
    m_form->AbilitaRighe();
    activate();
    // The operator moves on to the lines, leaving the header as it was typed.
    field("txt_codice")->setFocus(Qt::TabFocusReason);
    return *m_form;
}

void FormTest::activate()
{
    m_form->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(m_form.get()));
}

void FormTest::typeNumberAndEnter(const QString& number)
{
    QLineEdit* box = field("txt_numeroCommissione");
    box->clear();
    QTest::keyClicks(box, number);
    QTest::keyClick(box, Qt::Key_Return);
}

void FormTest::addArticle(const QString& code, const QString& description, qint64 priceRaw,
                          const QVariant& real, const QVariant& available, const QString& category)
{
    db().executeBound(
        "insert into med (codice, descrizione, prezzo_vendita, quantita_reale, "
        "quantita_disponibile, categoria) values (?, ?, ?, ?, ?, ?)",
        {code, description, common::Money::fromRaw(priceRaw).toDecimalText(), real, available, category});
}

void FormTest::addSupplierOf(const QString& code, const QString& agent, int quantity, const QDate& day)
{
    const auto lastKey = [this] { return test::scalar(db(), "select max(rowid) from controparti").toInt(); };
    db().executeBound(
        "insert into controparti (tipocontroparte, ragsoc, codagente) values ('F', 'Fornitore', "
        "(select rowid from controparti where ragsoc=?))",
        {agent});
    test::addOrderLine(db(), "3", day.isValid() ? day : QDate(m_year - 1, 1, 10),
                       {{"Tipomovimento", "CF"},
                        {"documento", "DDTF"},
                        {"rowid_controparti", lastKey()},
                        {"codice_med", code},
                        {"qta", quantity}});
}

void FormTest::fillLine(const QString& code, const QString& quantity)
{
    field("txt_codice")->setText(code);
    m_form->Informazioni_MED();
    field("txt_qta")->setText(quantity);
}

void FormTest::addLine(const QString& code, const QString& quantity)
{
    fillLine(code, quantity);
    m_form->tbComandiRighe_ButtonClick(linesButton(1));
}

void FormTest::addShopArticles()
{
    addArticle("BOM001", "Bomboniera in porcellana", 800000, 100, 90);
    addArticle("CNF002", "Confetti alla mandorla", 150000, 50, 40);
    addArticle("SCT003", "Scatolina in latta", 20000, 20, 20);
}

form::frm_Commissioni& FormTest::completeOrder(std::initializer_list<const char*> quantities)
{
    addShopArticles();
    form::frm_Commissioni& form = startOrder();
    field("txt_telefono")->setText("0831 123456");
    field("txt_tipoEvento")->setText("Matrimonio");
    field("txt_dataRitiro")->setText("20/06/2027");
    const char* codes[] = {"BOM001", "CNF002", "SCT003"};
    int i = 0;
    for (const char* quantity : quantities)
        addLine(codes[i++ % 3], quantity);
    field("txt_Acconto")->setText("10");
    field("txt_frase")->setText("Con affetto");
    return form;
}

void FormTest::type(const char* name, const QString& text)
{
    QLineEdit* box = field(name);
    box->setFocus(Qt::TabFocusReason);
    ASSERT_TRUE(box->hasFocus()) << name;
    box->selectAll();
    if (text.isEmpty())
        QTest::keyClick(box, Qt::Key_Delete);
    else
        QTest::keyClicks(box, text);
}

void FormTest::clickCell(int row, int col)
{
    const QRect cell = grid()->visualRect(grid()->model()->index(row, col));
    QTest::mouseClick(grid()->viewport(), Qt::LeftButton, {}, cell.center());
}

QString FormTest::focusName() const
{
    QWidget* w = QApplication::focusWidget();
    return w ? w->objectName() : QString();
}

QStringList FormTest::column(int col) const
{
    QStringList cells;
    for (int r = lines::FirstDataRow; r < grid()->rows(); ++r)
        cells << grid()->textMatrix(r, col);
    return cells;
}

} // namespace xv::test
