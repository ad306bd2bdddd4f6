// SPDX-License-Identifier: MIT
#pragma once

#include "host/HostInterface.h"
#include "data/Recordset.h"

#include <QDialog>
#include <QString>
#include <QStringList>
#include <QVariant>
#include <QVector>

#include <functional>
#include <optional>

class QItemSelection;
class QLabel;
class QLineEdit;
class QPagedPaintDevice;
class QPushButton;
class QTableView;
class QTableWidget;
class QTimer;

namespace xv::hostui {

using data::Recordset;
using host::IListWindow;

class ListModel;
class ListProxyModel;

// No column of a list window grows wider than this, in pixels: long texts show in full as tooltips.
constexpr int kMaxColumnWidth = 320;

struct ListRequest
{
    QString caption;
    QString sql;
    bool multiSelect = false;
    bool printable = false;
    // What the printed list says at its head instead of the caption and today's date: a list of one day's
    // work prints that day, whenever it is printed.
    QString printTitle;
    QDate printDay;
    // Said after the row count while nothing is typed in the filter, e.g. that only the newest rows came.
    QString note;
    // When set, a filter text is also looked up in the database after a pause in typing, so that rows left
    // out of a shortened list can still be found; the rows it gives are added to those already shown.
    std::function<Recordset(const QString& filterText)> search;
    // How long a pause in typing must be before search runs: none for a search that answers at once.
    int searchPauseMs = 250;
    // When set, the rows come a page at a time: this gives the count rows that follow the row after (its
    // values as read) for a filter text (for an empty one, those first given), newest first, and the list
    // asks again when the operator scrolls to its end.
    std::function<Recordset(const QString& filterText, int count, const QVariantList& after)> page;
    int pageSize = 0;
};

struct ListAnswer
{
    bool confirmed = false;
    // Indexes into the shown rows, in the order the operator selected them.
    QVector<int> rows;
    // Set when a search added rows to the list: the rows the indexes refer to. Unset: the rows given.
    std::optional<Recordset> shown;
};

struct SettingEntry
{
    QString key;
    QString value;
    friend bool operator==(const SettingEntry&, const SettingEntry&) = default;
};

struct SettingsRequest
{
    QString caption;
    QString store;
    QString section;
    QVector<SettingEntry> entries; // as stored, keys lower case
};

// Every list window goes through here, so that code below the form never opens one itself and tests can
// answer by script.
class ListWindows
{
public:
    using Handler = std::function<ListAnswer(const ListRequest&, const Recordset&)>;
    // The entries as the operator left them, or nothing when the window was cancelled.
    using SettingsHandler = std::function<std::optional<QVector<SettingEntry>>(const SettingsRequest&)>;

    static ListAnswer choose(const ListRequest& request, const Recordset& rows);
    // Lets the operator change and add the settings of one section; true when they were saved.
    static bool editSettings(const QString& caption, const QString& store, const QString& section);

    // Replaces the real windows (tests); an empty handler brings them back.
    static void setHandler(Handler handler);
    static void setSettingsHandler(SettingsHandler handler);
};

// The list window proper. The accessors let a caller (and a test) drive it without a modal loop.
class ListDialog : public QDialog
{
    Q_OBJECT

public:
    ListDialog(ListRequest request, const Recordset& rows, QWidget* parent = nullptr);
    ~ListDialog() override;

    QLineEdit* filterEdit() const { return m_filter; }
    QTableView* tableView() const { return m_view; }
    QString counterText() const;
    int visibleRowCount() const;
    // The shown recordset's row at a position of the list as it is now filtered and sorted.
    int rowAt(int visibleRow) const;
    // A cell as the operator sees it, by the row's index in the shown recordset.
    QString cellText(int row, int column) const;
    const Recordset& shownRows() const { return m_shown; }
    bool extended() const { return m_extended; }
    // A typed text the database has still to be asked about.
    bool searchPending() const;

    // The rows Enter would choose now: those selected, in the order they were selected, or else the
    // highlighted one.
    QVector<int> chosenRows() const;
    // What the operator chose; nothing confirmed unless the window was accepted.
    ListAnswer answer() const;

    // The rows shown, in the shown order, as a table with a title line.
    QString printableHtml() const;
    // The printout's title: the heading asked for, else the caption, else "Elenco".
    QString printTitle() const;
    void printTo(QPagedPaintDevice& printer) const;
    bool savePdf(const QString& path) const;
    // The print button: the rows shown to the shop's printer, or to a PDF file the operator is told of.
    void printShown();
    void previewShown();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void setRows(const QVector<QVector<QVariant>>& rows, bool extended);
    void filterChanged(const QString& text);
    void runSearch();
    bool canFetchMore() const;
    void fetchMore();
    void rememberFetched(const QString& text, const QVector<QVector<QVariant>>& read, int asked);
    void followSelection(const QItemSelection& selected, const QItemSelection& deselected);
    void keepARowHighlighted();
    void refreshState();
    void chooseNow();
    void saveWithDialog();
    int sourceRow(const QModelIndex& proxyIndex) const;

    ListRequest m_request;
    QStringList m_fields;
    Recordset m_given;
    QVector<QVector<QVariant>> m_original; // the values of m_given
    QVector<QVector<QVariant>> m_rows;     // the values shown: m_original and what a search added
    Recordset m_shown;
    bool m_extended = false;
    // Rows of the unfiltered list that scrolling added after those given.
    bool m_originalGrown = false;
    bool m_originalMore = false;
    // Which filter text the rows read a page at a time belong to, how many came, whether more may follow.
    QString m_fetchText;
    QVariantList m_lastFetched;
    bool m_moreToFetch = false;
    QVector<int> m_selectionOrder;

    ListModel* m_model = nullptr;
    ListProxyModel* m_proxy = nullptr;
    QLineEdit* m_filter = nullptr;
    QTableView* m_view = nullptr;
    QLabel* m_counter = nullptr;
    QPushButton* m_chooseButton = nullptr;
    QTimer* m_searchTimer = nullptr;
};

// Key and value pairs of one settings section; keys already stored are read-only.
class SettingsDialog : public QDialog
{
    Q_OBJECT

public:
    explicit SettingsDialog(const SettingsRequest& request, QWidget* parent = nullptr);

    QTableWidget* table() const { return m_table; }
    // A new empty row whose key the operator types in.
    void addEntry();
    // The entries with a key, as edited.
    QVector<SettingEntry> entries() const;

private:
    QTableWidget* m_table = nullptr;
};

// The program's list-window object: the windows in which the operator views rows and chooses.
class ListWindow : public IListWindow
{
public:
    static constexpr int kSearchLimit = 100;

    // searchLimit: how many of the newest rows a search window reads at a time, when it opens and each
    // time the operator scrolls to the end of the list.
    explicit ListWindow(int searchLimit = kSearchLimit);

    // source: a table or view name, an SQL text starting with select, or a settings key (config_comm,
    // config_CO). mode 1 lets the operator choose several rows. Throws the database's error for a bad text.
    void SelectFromList(const QString& source, int mode, const QString& caption, bool& confirmed) override;
    Recordset GetSelectedRows() override;
    void SelectFromPages(const SearchSql& sqlFor, int mode, const QString& caption, bool& confirmed) override;
    std::optional<QStringList> Search(const QString& caption, const SearchSql& sqlFor) override;
    std::optional<QVariantList> PickRow(const QString& caption, const QString& sql) override;
    void SetPrintHeading(const QString& title, const QDate& day) override;

private:
    // Opens the first page of sqlFor in a list window and keeps what the operator chose.
    std::optional<Recordset> choosePaged(ListRequest request, const SearchSql& sqlFor);

    int m_searchLimit;
    Recordset m_selected;
    // The heading the next list prints, then forgotten.
    QString m_printTitle;
    QDate m_printDay;
};

} // namespace xv::hostui
