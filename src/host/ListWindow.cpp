// SPDX-License-Identifier: MIT
#include "ListWindow.h"

#include "common/Dates.h"
#include "common/RuntimeError.h"
#include "host/Database.h"
#include "host/Dialogs.h"
#include "host/Services.h"
#include "host/SqlText.h"
#include "host/TypeCodes.h"

#include <QAbstractTableModel>
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
#include <QPrintDialog>
#include <QPrinter>
#include <QPushButton>
#include <QRegularExpression>
#include <QSet>
#include <QSortFilterProxyModel>
#include <QSqlQuery>
#include <QTableView>
#include <QTableWidget>
#include <QTextDocument>
#include <QTimer>
#include <QVBoxLayout>

#include <algorithm>

namespace xv::host {

using common::ErrorNumber;
using common::RuntimeError;

namespace {

constexpr int kMaxColumnWidth = 320;
constexpr int kSearchPauseMs = 250;
// Columns that hold amounts whatever the engine says: SQLite reports a sum over a currency column as a
// plain number, so the name is all there is to go by.
const char* const kMoneyNames[] = {
    "totale",  "acconto",        "prezzo",          "prezzo2",           "imponibile",
    "imposta", "prezzo_vendita", "prezzo_acquisto", "totalecommissione", "totaleacconto",
    "saldo"};

enum class ColumnKind { Text, Number, Money };

bool isNullValue(const QVariant& value)
{
    return value.isNull() || !value.isValid();
}

bool isNumberType(int typeId)
{
    switch (typeId) {
    case QMetaType::Short:
    case QMetaType::UShort:
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::Long:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
    case QMetaType::Float:
    case QMetaType::Double:
        return true;
    default:
        return false;
    }
}

// PostgreSQL hands numeric values over as text; a currency column always has four decimals.
bool isFourDecimalText(const QVariant& value)
{
    static const QRegularExpression pattern(QStringLiteral("^-?\\d+\\.\\d{4}$"));
    return value.metaType().id() == QMetaType::QString && pattern.match(value.toString()).hasMatch();
}

QString numberText(double value)
{
    QLocale locale;
    locale.setNumberOptions(QLocale::OmitGroupSeparator);
    return locale.toString(value, 'f', QLocale::FloatingPointShortest);
}

QStringList fieldNames(const Recordset& rows)
{
    QStringList names;
    for (int i = 0; i < rows.fieldCount(); ++i)
        names << rows.fieldName(i);
    return names;
}

QVector<QVector<QVariant>> rowValues(Recordset rows)
{
    QVector<QVector<QVariant>> values;
    values.reserve(rows.recordCount());
    for (rows.moveFirst(); !rows.eof(); rows.moveNext()) {
        QVector<QVariant> row(rows.fieldCount());
        for (int i = 0; i < rows.fieldCount(); ++i)
            row[i] = rows.value(i);
        values.push_back(std::move(row));
    }
    return values;
}

QVector<ColumnKind> columnKinds(const Recordset& rows, const QVector<QVector<QVariant>>& values)
{
    constexpr int kSampled = 50;
    QVector<ColumnKind> kinds;
    for (int column = 0; column < rows.fieldCount(); ++column) {
        const QString name = rows.fieldName(column);
        const int code = rows.typeCode(name);
        const bool moneyName =
            std::any_of(std::begin(kMoneyNames), std::end(kMoneyNames),
                        [&](const char* money) { return name.toLower() == QLatin1String(money); });
        if (code == TypeCode::Currency || moneyName) {
            kinds << ColumnKind::Money;
            continue;
        }
        const bool declaredNumber = code == TypeCode::SmallInt || code == TypeCode::Integer ||
                                    code == TypeCode::Single || code == TypeCode::Double ||
                                    code == TypeCode::BigInt || code == TypeCode::Numeric;
        ColumnKind kind = declaredNumber ? ColumnKind::Number : ColumnKind::Text;
        int seen = 0;
        for (const auto& row : values) {
            const QVariant& value = row[column];
            if (isNullValue(value))
                continue;
            if (declaredNumber && isFourDecimalText(value)) {
                kind = ColumnKind::Money;
                break;
            }
            if (!declaredNumber && seen == 0 && isNumberType(value.metaType().id()))
                kind = ColumnKind::Number;
            if (++seen >= kSampled)
                break;
        }
        kinds << kind;
    }
    return kinds;
}

// A cell as shown, and what its column sorts by: amounts and numbers by value, dates by time, anything
// else by its text.
struct Cell
{
    QString text;
    QVariant key;
};

// Dates sort as a count of seconds: a QDateTime in local time would consult the time zone for every cell.
QVariant dateKey(const QDate& date, const QTime& time)
{
    return QVariant::fromValue(date.toJulianDay() * 86400 + time.msecsSinceStartOfDay() / 1000);
}

Cell dateCell(const QDate& date, const QTime& time)
{
    QString text = common::shortDate(date);
    if (time != QTime(0, 0))
        text += QLatin1Char(' ') + time.toString(QStringLiteral("HH:mm:ss"));
    return {text, dateKey(date, time)};
}

// SQLite keeps dates as ISO text, so a date column arrives as a string.
std::optional<Cell> isoDateCell(const QString& text)
{
    static const QRegularExpression pattern(
        QStringLiteral("^(\\d{4})-(\\d{2})-(\\d{2})(?:[ T](\\d{2}):(\\d{2})(?::(\\d{2})(?:\\.\\d+)?)?)?$"));
    const QRegularExpressionMatch match = pattern.match(text);
    if (!match.hasMatch())
        return std::nullopt;
    const QDate date(match.captured(1).toInt(), match.captured(2).toInt(), match.captured(3).toInt());
    const QTime time(match.captured(4).toInt(), match.captured(5).toInt(), match.captured(6).toInt());
    if (!date.isValid() || !time.isValid())
        return std::nullopt;
    return dateCell(date, time);
}

Cell makeCell(const QVariant& value, ColumnKind kind)
{
    if (isNullValue(value))
        return {};
    const int type = value.metaType().id();
    if (kind == ColumnKind::Money && (isNumberType(type) || type == QMetaType::QString)) {
        try {
            const common::Money amount = variantMoney(value);
            return {amount.toCurrencyText(), amount.toDouble()};
        } catch (const RuntimeError&) {
            return {value.toString(), value.toString().toLower()};
        }
    }
    switch (type) {
    case QMetaType::QDateTime: {
        const QDateTime when = value.toDateTime();
        return when.isValid() ? dateCell(when.date(), when.time()) : Cell();
    }
    case QMetaType::QDate:
        return dateCell(value.toDate(), QTime(0, 0));
    case QMetaType::Bool:
        return {value.toBool() ? QStringLiteral("Sì") : QStringLiteral("No"), value.toBool() ? 1.0 : 0.0};
    case QMetaType::Double:
    case QMetaType::Float:
        return {numberText(value.toDouble()), value.toDouble()};
    case QMetaType::QString: {
        const QString text = value.toString();
        if (auto date = isoDateCell(text))
            return *date;
        bool ok = false;
        const double number = text.toDouble(&ok);
        if (!ok)
            return {text, text.toLower()};
        if (kind == ColumnKind::Number && text.contains(QLatin1Char('.')))
            return {numberText(number), number};
        return {text, number};
    }
    default:
        return {variantText(value),
                isNumberType(type) ? QVariant(value.toDouble()) : QVariant(value.toString())};
    }
}

// Sort keys of different kinds never compare by value: empty cells first, then numbers, dates, texts.
enum class SortClass { Empty, Number, Date, Text };

SortClass sortClass(const QVariant& key)
{
    if (!key.isValid())
        return SortClass::Empty;
    switch (key.metaType().id()) {
    case QMetaType::Double:
        return SortClass::Number;
    case QMetaType::LongLong:
        return SortClass::Date;
    default:
        return SortClass::Text;
    }
}

QString rowKey(const QVector<QVariant>& row)
{
    QStringList parts;
    for (const QVariant& value : row)
        parts << (isNullValue(value) ? QStringLiteral("\x01") : variantText(value));
    return parts.join(QChar(0x1f));
}

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
void orient(QPrinter& printer, int columns)
{
    constexpr int kPortraitColumns = 6;
    printer.setPageOrientation(columns > kPortraitColumns ? QPageLayout::Landscape : QPageLayout::Portrait);
}

struct State
{
    ListWindows::Handler handler;
    ListWindows::SettingsHandler settingsHandler;
};

State& state()
{
    static State s;
    return s;
}

} // namespace

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
        endResetModel();
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
    QStringList m_fields;
    QVector<ColumnKind> m_kinds;
    QVector<QStringList> m_texts;
    QVector<QVector<QVariant>> m_sortKeys;
};

class ListProxyModel : public QSortFilterProxyModel
{
public:
    using QSortFilterProxyModel::QSortFilterProxyModel;

protected:
    bool lessThan(const QModelIndex& left, const QModelIndex& right) const override
    {
        const QVariant a = left.data(ListModel::SortRole);
        const QVariant b = right.data(ListModel::SortRole);
        const SortClass kindA = sortClass(a);
        const SortClass kindB = sortClass(b);
        if (kindA != kindB)
            return kindA < kindB;
        switch (kindA) {
        case SortClass::Number:
            return a.toDouble() < b.toDouble();
        case SortClass::Date:
            return a.toLongLong() < b.toLongLong();
        case SortClass::Text:
            return QString::localeAwareCompare(a.toString(), b.toString()) < 0;
        case SortClass::Empty:
            break;
        }
        return false;
    }
};

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
        auto* printButton = new QPushButton(QStringLiteral("Stampa..."), this);
        auto* pdfButton = new QPushButton(QStringLiteral("Salva PDF..."), this);
        printButton->setAutoDefault(false);
        pdfButton->setAutoDefault(false);
        buttons->addWidget(printButton);
        buttons->addWidget(pdfButton);
        connect(printButton, &QPushButton::clicked, this, [this] { printWithDialog(); });
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
    m_searchTimer->setInterval(kSearchPauseMs);

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
    m_extended = extended;
    m_shown = extended ? Recordset::fromRows(m_fields, rows) : m_given;
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
        return;
    }
    try {
        const Recordset found = m_request.search(text);
        QVector<QVector<QVariant>> rows = m_original;
        if (found.fieldCount() == m_fields.size()) {
            QSet<QString> seen;
            for (const auto& row : m_original)
                seen.insert(rowKey(row));
            for (auto& row : rowValues(found)) {
                QString key = rowKey(row);
                if (!seen.contains(key)) {
                    seen.insert(std::move(key));
                    rows.push_back(std::move(row));
                }
            }
        }
        const bool added = rows.size() > m_original.size();
        if (added || m_extended)
            setRows(rows, added);
    } catch (...) {
        reportCaught(QStringLiteral("ListDialog.Cerca"), m_request.caption);
    }
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

QString ListDialog::printableHtml() const
{
    const QString title =
        m_request.caption.trimmed().isEmpty() ? QStringLiteral("Elenco") : m_request.caption;
    QString subtitle = common::shortDate(QDate::currentDate()) + QStringLiteral(" - ") + counterText();
    if (!m_filter->text().trimmed().isEmpty())
        subtitle += QStringLiteral(" - Cerca: ") + m_filter->text().trimmed();
    QString html =
        QStringLiteral("<html><body><h3>%1</h3><p>%2</p>"
                       "<table border=\"1\" cellspacing=\"0\" cellpadding=\"3\" width=\"100%\"><tr>")
            .arg(title.toHtmlEscaped(), subtitle.toHtmlEscaped());
    for (const QString& field : m_fields)
        html += QStringLiteral("<th>%1</th>").arg(field.toHtmlEscaped());
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

void ListDialog::printTo(QPrinter& printer) const
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
    QPrinter printer(QPrinter::HighResolution);
    printer.setOutputFormat(QPrinter::PdfFormat);
    printer.setOutputFileName(path);
    printer.setDocName(windowTitle());
    orient(printer, static_cast<int>(m_fields.size()));
    printTo(printer);
    const QFileInfo written(path);
    return written.exists() && written.size() > 0;
}

void ListDialog::printWithDialog()
{
    try {
        QPrinter printer(QPrinter::HighResolution);
        printer.setDocName(windowTitle());
        orient(printer, static_cast<int>(m_fields.size()));
        QPrintDialog dialog(&printer, this);
        dialog.setWindowTitle(QStringLiteral("Stampa"));
        if (dialog.exec() == QDialog::Accepted)
            printTo(printer);
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

ListAnswer ListWindows::choose(const ListRequest& request, const Recordset& rows)
{
    if (state().handler)
        return state().handler(request, rows);
    ListDialog dialog(request, rows, Dialogs::parent());
    if (dialog.exec() != QDialog::Accepted)
        return {};
    return dialog.answer();
}

bool ListWindows::editSettings(const QString& caption, const QString& store, const QString& section)
{
    SettingsRequest request{caption, store, section, {}};
    QSqlQuery query = host().GetConnection().executeBound(
        QStringLiteral(
            "select chiave, valore from impostazioni where archivio=? and sezione=? order by chiave"),
        {store.toLower(), section.toLower()});
    QHash<QString, QString> before;
    while (query.next()) {
        request.entries.push_back({query.value(0).toString(), query.value(1).toString()});
        before.insert(query.value(0).toString().toLower(), query.value(1).toString());
    }

    std::optional<QVector<SettingEntry>> edited;
    if (state().settingsHandler) {
        edited = state().settingsHandler(request);
    } else {
        SettingsDialog dialog(request, Dialogs::parent());
        if (dialog.exec() == QDialog::Accepted)
            edited = dialog.entries();
    }
    if (!edited)
        return false;
    for (const SettingEntry& entry : *edited) {
        const QString key = entry.key.trimmed();
        if (key.isEmpty())
            continue;
        const auto old = before.constFind(key.toLower());
        if (old != before.constEnd() && *old == entry.value)
            continue;
        host().SaveSetting(section, key, entry.value, store);
    }
    return true;
}

void ListWindows::setHandler(Handler handler)
{
    state().handler = std::move(handler);
}

void ListWindows::setSettingsHandler(SettingsHandler handler)
{
    state().settingsHandler = std::move(handler);
}

namespace {

struct Choice
{
    Recordset shown;
    QVector<int> rows;
};

std::optional<Choice> showList(const ListRequest& request, const Recordset& rows)
{
    ListAnswer answer = ListWindows::choose(request, rows);
    if (!answer.confirmed || answer.rows.isEmpty())
        return std::nullopt;
    Choice choice{answer.shown ? *answer.shown : rows, answer.rows};
    for (int row : choice.rows) {
        if (row < 0 || row >= choice.shown.recordCount())
            throw RuntimeError(ErrorNumber::InvalidProcedureCall,
                               QStringLiteral("Riga scelta inesistente: %1").arg(row));
    }
    return choice;
}

Recordset chosenRecordset(const Choice& choice)
{
    const QVector<QVector<QVariant>> values = rowValues(choice.shown);
    QVector<QVector<QVariant>> chosen;
    for (int row : choice.rows)
        chosen.push_back(values[row]);
    return Recordset::fromRows(fieldNames(choice.shown), std::move(chosen));
}

struct ListSource
{
    QString sql;
    QString store;
    QString section;
    bool settings() const { return sql.isEmpty(); }
};

ListSource parseSource(const QString& source)
{
    const QString text = source.trimmed();
    static const QRegularExpression selectText(QStringLiteral("^select\\b"),
                                               QRegularExpression::CaseInsensitiveOption);
    if (selectText.match(text).hasMatch())
        return {text, {}, {}};
    const QString lower = text.toLower();
    if (lower == QLatin1String("config_comm"))
        return {{}, QStringLiteral("docs"), QStringLiteral("comm")};
    if (lower == QLatin1String("config_co"))
        return {{}, QStringLiteral("docs"), QStringLiteral("co")};
    static const QRegularExpression tableName(QStringLiteral("^(?:\\[[^\\]]+\\]|[A-Za-z_][A-Za-z0-9_.]*)$"));
    if (!tableName.match(text).hasMatch())
        throw RuntimeError(ErrorNumber::InvalidProcedureCall,
                           QStringLiteral("Origine dell'elenco non valida: '%1'").arg(source));
    return {QStringLiteral("select * from ") + text, {}, {}};
}

QString orderListSql(const QString& filterText, int limit)
{
    QString condition;
    if (!filterText.isEmpty()) {
        condition = QStringLiteral(" where numero='%1' or lower(Nominativo) like '%%2%'")
                        .arg(sqlEscape(filterText), sqlEscape(filterText.toLower()));
    }
    return QStringLiteral(
               "select numero, serie, DataComm, Nominativo, Cerimonia, DataCerimonia, NomeFesteggiato, "
               "[STATO COMMISSIONE], Totale from Doc_Commissioni_testate%1 "
               "order by serie desc, val(numero) desc limit %2")
        .arg(condition, QString::number(limit));
}

} // namespace

ListWindow::ListWindow(int orderLimit) : m_orderLimit(orderLimit) {}

void ListWindow::SelectFromList(const QString& source, int mode, const QString& caption, bool& confirmed)
{
    confirmed = false;
    m_selected = Recordset();
    const ListSource parsed = parseSource(source);
    if (parsed.settings()) {
        confirmed = ListWindows::editSettings(caption, parsed.store, parsed.section);
        return;
    }
    const Recordset rows = host().OpenRecordset(parsed.sql);
    m_selected = Recordset::fromRows(fieldNames(rows), {});
    ListRequest request;
    request.caption = caption;
    request.sql = parsed.sql;
    request.multiSelect = mode == 1;
    request.printable = true;
    const auto choice = showList(request, rows);
    if (!choice)
        return;
    m_selected = chosenRecordset(*choice);
    confirmed = true;
}

Recordset ListWindow::GetSelectedRows()
{
    return m_selected;
}

std::optional<QStringList> ListWindow::SearchOrders(const QString& caption)
{
    m_selected = Recordset();
    ListRequest request;
    request.caption = caption.trimmed().isEmpty() ? QStringLiteral("Trova Commissioni") : caption;
    request.sql = orderListSql({}, m_orderLimit);
    request.printable = true;
    const Recordset rows = host().OpenRecordset(request.sql);
    m_selected = Recordset::fromRows(fieldNames(rows), {});
    // Only a shortened list needs the database asked again: a whole one is filtered as it stands.
    if (rows.recordCount() >= m_orderLimit) {
        request.note = QStringLiteral("(ultime %1: usare Cerca)").arg(m_orderLimit);
        request.search = [limit = m_orderLimit](const QString& text) {
            return host().OpenRecordset(orderListSql(text, limit));
        };
    }
    const auto choice = showList(request, rows);
    if (!choice)
        return std::nullopt;
    m_selected = chosenRecordset(*choice);
    const QVector<QVariant> row = rowValues(m_selected).constFirst();
    const QVector<ColumnKind> kinds = columnKinds(rows, rowValues(rows));
    QStringList texts;
    for (int column = 0; column < row.size(); ++column)
        texts << makeCell(row[column], kinds.value(column)).text;
    return texts;
}

std::optional<QVariantList> ListWindow::PickRow(const QString& caption, const QString& sql)
{
    m_selected = Recordset();
    const Recordset rows = host().OpenRecordset(sql);
    m_selected = Recordset::fromRows(fieldNames(rows), {});
    if (rows.isEmpty())
        return std::nullopt;
    ListRequest request;
    request.caption = caption;
    request.sql = sql;
    const auto choice = showList(request, rows);
    if (!choice)
        return std::nullopt;
    m_selected = chosenRecordset(*choice);
    return rowValues(m_selected).constFirst();
}

} // namespace xv::host
