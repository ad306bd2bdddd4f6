// SPDX-License-Identifier: MIT
#include "ListWindow.h"

#include "common/Dates.h"
#include "common/RuntimeError.h"
#include "host/Dialogs.h"
#include "host/PrintOutput.h"
#include "host/Services.h"
#include "hostui/ListModel.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPdfWriter>
#include <QPushButton>
#include <QRegularExpression>
#include <QSet>
#include <QTableView>
#include <QTextDocument>
#include <QTimer>
#include <QVBoxLayout>

#include <algorithm>

namespace xv::hostui {

using common::RuntimeError;
using data::variantMoney;
using data::variantText;
using host::Buttons;
using host::Dialogs;
using host::host;
using host::Icon;


namespace {

// Reports an error caught in a slot: nothing may leave the event loop by exception.
void reportCaught(const QString& where, const QString& caption)
{
    try {
        host().ReportError(where, caption, true);
    } catch (...) {
        qWarning("xVELARIO: errore non riportato in %s", qPrintable(where));
    }
}

// Wide lists go across the page; the operator may still turn it in the print dialog.
void orient(QPagedPaintDevice& printer, int columns)
{
    constexpr int kPortraitColumns = 6;
    printer.setPageOrientation(columns > kPortraitColumns ? QPageLayout::Landscape : QPageLayout::Portrait);
}

} // namespace

ListDialog::ListDialog(ListRequest request, const Recordset& rows, QWidget* parent)
    : QDialog(parent), m_request(std::move(request)), m_fields(fieldNames(rows)), m_given(rows),
      m_original(rowValues(rows)), m_shown(rows)
{
    setWindowTitle(m_request.caption);

    m_model = new ListModel(m_fields, columnKinds(rows, m_original), this);
    m_proxy = new ListProxyModel(this);
    m_proxy->setSourceModel(m_model);
    m_proxy->setFilterKeyColumn(-1);
    m_proxy->setFilterCaseSensitivity(Qt::CaseInsensitive);

    auto* searchLabel = new QLabel(QStringLiteral("Cerca:"), this);
    m_filter = new QLineEdit(this);
    m_filter->setClearButtonEnabled(true);
    searchLabel->setBuddy(m_filter);
    m_counter = new QLabel(this);

    m_view = new QTableView(this);
    m_view->setModel(m_proxy);
    m_view->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_view->setSelectionMode(m_request.multiSelect ? QAbstractItemView::ExtendedSelection
                                                   : QAbstractItemView::SingleSelection);
    m_view->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_view->setTabKeyNavigation(false);
    m_view->setAlternatingRowColors(true);
    m_view->setWordWrap(false);
    m_view->verticalHeader()->hide();
    m_view->verticalHeader()->setDefaultSectionSize(fontMetrics().height() + 6);
    m_view->horizontalHeader()->setStretchLastSection(true);
    // Without this the view would sort by the first column at once and lose the order the SQL asked for.
    m_view->horizontalHeader()->setSortIndicator(-1, Qt::AscendingOrder);
    m_view->setSortingEnabled(true);

    m_chooseButton = new QPushButton(QStringLiteral("Scegli"), this);
    m_chooseButton->setDefault(true);
    auto* cancelButton = new QPushButton(QStringLiteral("Annulla"), this);

    auto* top = new QHBoxLayout;
    top->addWidget(searchLabel);
    top->addWidget(m_filter, 1);
    top->addWidget(m_counter);
    auto* buttons = new QHBoxLayout;
    if (m_request.printable) {
        auto* printButton = new QPushButton(QStringLiteral("Stampa"), this);
        printButton->setObjectName(QStringLiteral("printButton"));
        auto* previewButton = new QPushButton(QStringLiteral("Anteprima"), this);
        previewButton->setObjectName(QStringLiteral("previewButton"));
        auto* pdfButton = new QPushButton(QStringLiteral("Salva PDF..."), this);
        printButton->setAutoDefault(false);
        previewButton->setAutoDefault(false);
        pdfButton->setAutoDefault(false);
        buttons->addWidget(printButton);
        buttons->addWidget(previewButton);
        buttons->addWidget(pdfButton);
        connect(printButton, &QPushButton::clicked, this, [this] { printShown(); });
        connect(previewButton, &QPushButton::clicked, this, [this] { previewShown(); });
        connect(pdfButton, &QPushButton::clicked, this, [this] { saveWithDialog(); });
    }
    buttons->addStretch(1);
    buttons->addWidget(m_chooseButton);
    buttons->addWidget(cancelButton);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(top);
    layout->addWidget(m_view, 1);
    layout->addLayout(buttons);

    m_searchTimer = new QTimer(this);
    m_searchTimer->setSingleShot(true);
    m_searchTimer->setInterval(m_request.searchPauseMs);

    connect(m_filter, &QLineEdit::textChanged, this, [this](const QString& text) { filterChanged(text); });
    connect(m_searchTimer, &QTimer::timeout, this, [this] { runSearch(); });
    connect(m_view->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            [this](const QItemSelection& selected, const QItemSelection& deselected) {
                followSelection(selected, deselected);
            });
    connect(m_view, &QTableView::doubleClicked, this, [this] { chooseNow(); });
    connect(m_chooseButton, &QPushButton::clicked, this, [this] { chooseNow(); });
    connect(cancelButton, &QPushButton::clicked, this, [this] { reject(); });
    m_filter->installEventFilter(this);
    m_view->installEventFilter(this);

    if (m_request.page && m_request.pageSize > 0) {
        m_model->setFetcher([this] { return canFetchMore(); }, [this] { fetchMore(); });
        rememberFetched({}, m_original, m_request.pageSize);
        m_originalMore = m_moreToFetch;
    }
    setRows(m_original, false);
    m_view->resizeColumnsToContents();
    for (int column = 0; column < m_model->columnCount(); ++column) {
        if (m_view->columnWidth(column) > kMaxColumnWidth)
            m_view->setColumnWidth(column, kMaxColumnWidth);
    }
    resize(900, 500);
    m_filter->setFocus();
}

ListDialog::~ListDialog() = default;

void ListDialog::setRows(const QVector<QVector<QVariant>>& rows, bool extended)
{
    // A search replaces the rows under the operator's selection: it is carried over by the rows' values.
    QStringList keptKeys;
    for (int row : chosenRows())
        keptKeys << rowKey(m_rows.value(row));
    m_selectionOrder.clear();
    m_rows = rows;
    m_extended = extended || m_originalGrown;
    m_shown = m_extended ? Recordset::fromRows(m_fields, rows) : m_given;
    m_model->setRows(rows);
    if (!keptKeys.isEmpty()) {
        QHash<QString, int> byKey;
        for (int row = 0; row < rows.size(); ++row)
            byKey.insert(rowKey(rows[row]), row);
        for (const QString& key : keptKeys) {
            const QModelIndex index = m_proxy->mapFromSource(m_model->index(byKey.value(key, -1), 0));
            if (index.isValid())
                m_view->selectionModel()->setCurrentIndex(index, QItemSelectionModel::Select |
                                                                     QItemSelectionModel::Rows);
        }
    }
    keepARowHighlighted();
    refreshState();
}

void ListDialog::filterChanged(const QString& text)
{
    const QVector<int> before = chosenRows();
    m_proxy->setFilterFixedString(text.trimmed());
    // The view hands a hidden row's highlight to its neighbour; the operator expects the first match.
    const bool kept = std::any_of(before.cbegin(), before.cend(), [this](int row) {
        return m_proxy->mapFromSource(m_model->index(row, 0)).isValid();
    });
    if (!kept)
        m_view->selectionModel()->clearSelection();
    keepARowHighlighted();
    refreshState();
    if (m_request.search)
        m_searchTimer->start();
}

void ListDialog::runSearch()
{
    const QString text = m_filter->text().trimmed();
    if (text.isEmpty()) {
        if (m_extended)
            setRows(m_original, false);
        rememberFetched({}, m_original, 0);
        m_moreToFetch = m_originalMore;
        return;
    }
    try {
        const Recordset found = m_request.search(text);
        const QVector<QVector<QVariant>> foundRows = rowValues(found);
        QVector<QVector<QVariant>> rows = m_original;
        if (found.fieldCount() == m_fields.size()) {
            QSet<QString> seen;
            for (const auto& row : m_original)
                seen.insert(rowKey(row));
            for (const auto& row : foundRows) {
                QString key = rowKey(row);
                if (!seen.contains(key)) {
                    seen.insert(std::move(key));
                    rows.push_back(row);
                }
            }
        }
        const bool added = rows.size() > m_original.size();
        if (added || m_extended)
            setRows(rows, added);
        rememberFetched(text, foundRows, m_request.pageSize);
    } catch (...) {
        reportCaught(QStringLiteral("ListDialog.Cerca"), m_request.caption);
    }
}

void ListDialog::rememberFetched(const QString& text, const QVector<QVector<QVariant>>& read, int asked)
{
    m_fetchText = text;
    // The next page starts after the last row read, found again by its values whatever the rows shown.
    m_lastFetched = read.isEmpty() ? QVariantList() : QVariantList(read.last().cbegin(), read.last().cend());
    m_moreToFetch = m_request.page && m_request.pageSize > 0 && read.size() >= asked;
}

bool ListDialog::canFetchMore() const
{
    // Rows of a text no longer typed would only be hidden again.
    return m_moreToFetch && m_fetchText == m_filter->text().trimmed();
}

void ListDialog::fetchMore()
{
    if (!canFetchMore())
        return;
    try {
        // Only the next page is read, not every row down to its end again.
        const Recordset found = m_request.page(m_fetchText, m_request.pageSize, m_lastFetched);
        const QVector<QVector<QVariant>> values = rowValues(found);
        rememberFetched(m_fetchText, values, m_request.pageSize);
        if (found.fieldCount() != m_fields.size())
            return;
        QSet<QString> seen;
        for (const auto& row : m_rows)
            seen.insert(rowKey(row));
        QVector<QVector<QVariant>> added;
        for (const auto& row : values) {
            QString key = rowKey(row);
            if (!seen.contains(key)) {
                seen.insert(std::move(key));
                added.push_back(row);
            }
        }
        if (m_fetchText.isEmpty()) {
            m_originalMore = m_moreToFetch;
            m_original += added;
            m_originalGrown = m_originalGrown || !added.isEmpty();
        }
        if (added.isEmpty())
            return;
        m_rows += added;
        m_extended = true;
        m_shown = Recordset::fromRows(m_fields, m_rows);
        m_model->appendRows(added);
        refreshState();
    } catch (...) {
        m_moreToFetch = false;
        reportCaught(QStringLiteral("ListDialog.Altre"), m_request.caption);
    }
}

bool ListDialog::searchPending() const
{
    return m_searchTimer->isActive();
}

int ListDialog::sourceRow(const QModelIndex& proxyIndex) const
{
    return proxyIndex.isValid() ? m_proxy->mapToSource(proxyIndex).row() : -1;
}

void ListDialog::followSelection(const QItemSelection& selected, const QItemSelection& deselected)
{
    for (const QModelIndex& index : deselected.indexes()) {
        if (index.column() == 0)
            m_selectionOrder.removeAll(sourceRow(index));
    }
    for (const QItemSelectionRange& range : selected) {
        for (int row = range.top(); row <= range.bottom(); ++row) {
            const int source = sourceRow(m_proxy->index(row, 0));
            if (source < 0)
                continue;
            m_selectionOrder.removeAll(source);
            m_selectionOrder.push_back(source);
        }
    }
    refreshState();
}

void ListDialog::keepARowHighlighted()
{
    QItemSelectionModel* selection = m_view->selectionModel();
    if (m_proxy->rowCount() == 0 || selection->hasSelection())
        return;
    const QModelIndex first = m_proxy->index(0, 0);
    selection->setCurrentIndex(first, QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
    m_view->scrollTo(first);
}

QVector<int> ListDialog::chosenRows() const
{
    QVector<int> selected;
    for (const QModelIndex& index : m_view->selectionModel()->selectedRows(0))
        selected << index.row();
    std::sort(selected.begin(), selected.end());
    QSet<int> remaining;
    for (int& row : selected) {
        row = sourceRow(m_proxy->index(row, 0));
        remaining.insert(row);
    }
    QVector<int> chosen;
    for (int row : m_selectionOrder) {
        if (remaining.remove(row))
            chosen << row;
    }
    for (int row : selected) {
        if (remaining.remove(row))
            chosen << row;
    }
    return chosen;
}

void ListDialog::refreshState()
{
    m_counter->setText(counterText());
    m_chooseButton->setEnabled(m_view->selectionModel()->hasSelection());
}

QString ListDialog::counterText() const
{
    const int count = visibleRowCount();
    QString text = count == 1 ? QStringLiteral("1 riga") : QStringLiteral("%1 righe").arg(count);
    if (!m_request.note.isEmpty() && m_filter->text().trimmed().isEmpty())
        text += QLatin1Char(' ') + m_request.note;
    return text;
}

int ListDialog::visibleRowCount() const
{
    return m_proxy->rowCount();
}

int ListDialog::rowAt(int visibleRow) const
{
    return sourceRow(m_proxy->index(visibleRow, 0));
}

QString ListDialog::cellText(int row, int column) const
{
    return m_model->text(row, column);
}

void ListDialog::chooseNow()
{
    if (chosenRows().isEmpty())
        return;
    accept();
}

ListAnswer ListDialog::answer() const
{
    ListAnswer answer;
    if (result() != QDialog::Accepted)
        return answer;
    answer.rows = chosenRows();
    answer.confirmed = !answer.rows.isEmpty();
    if (m_extended)
        answer.shown = m_shown;
    return answer;
}

bool ListDialog::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() != QEvent::KeyPress)
        return QDialog::eventFilter(watched, event);
    auto* key = static_cast<QKeyEvent*>(event);
    if (watched == m_filter) {
        switch (key->key()) {
        case Qt::Key_Down:
        case Qt::Key_Up:
        case Qt::Key_PageDown:
        case Qt::Key_PageUp:
            m_view->setFocus(Qt::OtherFocusReason);
            QCoreApplication::sendEvent(m_view, key);
            return true;
        default:
            return false;
        }
    }
    if (watched == m_view) {
        const bool plain = !(key->modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier));
        // Space takes the highlighted row in or out of the choice; Ctrl with the arrows moves without
        // changing it, so that rows far apart can be chosen without the mouse.
        if (key->key() == Qt::Key_Space && m_request.multiSelect && key->modifiers() == Qt::NoModifier &&
            m_view->currentIndex().isValid()) {
            m_view->selectionModel()->select(m_view->currentIndex(),
                                             QItemSelectionModel::Toggle | QItemSelectionModel::Rows);
            return true;
        }
        if (key->key() == Qt::Key_Up && plain && m_view->currentIndex().row() <= 0) {
            m_filter->setFocus(Qt::OtherFocusReason);
            return true;
        }
        // Typing while in the list goes on refining the filter instead of jumping between rows.
        const QString text = key->text();
        const bool typing = !text.isEmpty() && text.at(0).isPrint() && text != QLatin1String(" ");
        if (plain && (typing || key->key() == Qt::Key_Backspace)) {
            m_filter->setFocus(Qt::OtherFocusReason);
            QCoreApplication::sendEvent(m_filter, key);
            return true;
        }
    }
    return QDialog::eventFilter(watched, event);
}

QString ListDialog::printTitle() const
{
    if (!m_request.printTitle.isEmpty())
        return m_request.printTitle;
    return m_request.caption.trimmed().isEmpty() ? QStringLiteral("Elenco") : m_request.caption;
}

QString ListDialog::printableHtml() const
{
    const QString title = printTitle();
    const QDate day = m_request.printDay.isValid() ? m_request.printDay : QDate::currentDate();
    QString subtitle = common::shortDate(day) + QStringLiteral(" - ") + counterText();
    if (!m_filter->text().trimmed().isEmpty())
        subtitle += QStringLiteral(" - Cerca: ") + m_filter->text().trimmed();
    QString html =
        QStringLiteral("<html><body><h3>%1</h3><p>%2</p>"
                       "<table border=\"1\" cellspacing=\"0\" cellpadding=\"3\" width=\"100%\"><tr>")
            .arg(title.toHtmlEscaped(), subtitle.toHtmlEscaped());
    for (const QString& field : m_fields)
        html += QStringLiteral("<th bgcolor=\"#e0e0e0\" align=\"left\">%1</th>").arg(field.toHtmlEscaped());
    html += QStringLiteral("</tr>");
    for (int visible = 0; visible < visibleRowCount(); ++visible) {
        const int row = rowAt(visible);
        html += QStringLiteral("<tr>");
        for (int column = 0; column < m_fields.size(); ++column) {
            html += QStringLiteral("<td%1>%2</td>")
                        .arg(m_model->rightAligned(column) ? QStringLiteral(" align=\"right\"") : QString(),
                             m_model->text(row, column).toHtmlEscaped());
        }
        html += QStringLiteral("</tr>");
    }
    return html + QStringLiteral("</table></body></html>");
}

void ListDialog::printTo(QPagedPaintDevice& printer) const
{
    QTextDocument document;
    QFont font = this->font();
    font.setPointSize(8);
    document.setDefaultFont(font);
    document.setHtml(printableHtml());
    document.print(&printer);
}

bool ListDialog::savePdf(const QString& path) const
{
    // A file left from before must not pass for one written now.
    if (QFileInfo::exists(path) && !QFile::remove(path))
        return false;
    {
        const std::unique_ptr<QPdfWriter> printer = host::pdfWriter(path, windowTitle());
        orient(*printer, static_cast<int>(m_fields.size()));
        printTo(*printer);
    }
    const QFileInfo written(path);
    return written.exists() && written.size() > 0;
}

void ListDialog::previewShown()
{
    try {
        Dialogs::preview(printTitle(), [this](QPagedPaintDevice& printer) {
            orient(printer, static_cast<int>(m_fields.size()));
            printTo(printer);
        });
    } catch (...) {
        reportCaught(QStringLiteral("ListDialog.Anteprima"), m_request.caption);
    }
}

void ListDialog::printShown()
{
    try {
        QString notice;
        QString pdf;
        {
            host::PrintOutput output(host(), printTitle());
            orient(output.device(), static_cast<int>(m_fields.size()));
            printTo(output.device());
            output.finish(QStringLiteral("La stampante non ha accettato l'elenco"));
            notice = output.notice();
            pdf = output.pdfInsteadOfPrinter();
        }
        host::tellWherePrinted(host(), notice, pdf);
    } catch (...) {
        reportCaught(QStringLiteral("ListDialog.Stampa"), m_request.caption);
    }
}

void ListDialog::saveWithDialog()
{
    QString name =
        m_request.caption.trimmed().isEmpty() ? QStringLiteral("elenco") : m_request.caption.trimmed();
    name.replace(QRegularExpression(QStringLiteral("[^\\w\\- ]")), QStringLiteral("_"));
    QString path = QFileDialog::getSaveFileName(this, QStringLiteral("Salva PDF"),
                                                QDir::home().filePath(name + QStringLiteral(".pdf")),
                                                QStringLiteral("Documenti PDF (*.pdf)"));
    if (path.isEmpty())
        return;
    if (!path.endsWith(QLatin1String(".pdf"), Qt::CaseInsensitive))
        path += QStringLiteral(".pdf");
    if (!savePdf(path))
        Dialogs::message(
            QStringLiteral("Impossibile scrivere il file %1").arg(QDir::toNativeSeparators(path)),
            Buttons::Ok, Icon::Exclamation, windowTitle());
}

} // namespace xv::hostui
