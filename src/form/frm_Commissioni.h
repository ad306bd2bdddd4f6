// SPDX-License-Identifier: MIT
#pragma once

#include "common/Money.h"
#include "data/Import.h"
#include "form/FormAdapters.h"
#include "lines/ArticleStore.h"
#include "lines/ReorderMail.h"
#include "orders/ModuleSettings.h"
#include "orders/NewLine.h"
#include "orders/Order.h"
#include "orders/OrderSave.h"
#include "orders/OrderSelections.h"
#include "orders/OrderSession.h"
#include "printing/OrderChoice.h"
#include "printing/Statement.h"

#include <QDateTime>
#include <QMainWindow>
#include <QMap>
#include <QPalette>
#include <QPointer>
#include <QVector>

#include <functional>
#include <memory>
#include <optional>

class QCheckBox;
class QFocusEvent;
class QKeyEvent;
class QLabel;
class QLineEdit;
class QMenu;
class QRadioButton;

namespace Ui {
class frm_Commissioni;
}

namespace xv::lines {
class FlexGrid;
}

namespace xv::form {

// The suite's code of a key (113 for F2, 27 for Esc), which the keyboard table is written in.
int suiteKeyCode(int qtKey);

// How a close was asked for, as the form's closing question is told: the window's own close button, or
// the program (EXIT, Esc).
inline constexpr int kUnloadFromWindowMenu = 0;
inline constexpr int kUnloadFromCode = 1;

// The order form: the one window of the program. Its procedures keep the names the shop's staff
// and the suite's other modules know them by; the rules they apply live in the orders and lines units.
class frm_Commissioni : public QMainWindow
{
    Q_OBJECT

public:
    explicit frm_Commissioni(QWidget* parent = nullptr);
    ~frm_Commissioni() override;

    // Called once start-up has succeeded, with the phase kept in the form's settings.
    void InitForm(quint8 phase);

    // --- settings and menus
    void GET_Impostazioni();
    void GET_Categorie();
    const orders::ModuleSettings& settings() const { return m_settings; }

    // --- lines grid
    void Flex_Init();
    void AbilitaRighe();
    lines::FlexGrid* grid() const;

    // --- modes
    void StateOfButtons();
    void NuovoAnnulla(QAction* button);
    void SetModificaTags();
    void ClearTextBoxes();
    void ResetTutto();
    QString ModeTag1() const;
    QString ModeTag2() const;
    qint64 LineCount() const;
    const QString& StatoCommissione() const { return m_order.statoRiga; }

    // --- finding and loading
    // The order this year with the number, else last year's; an order that does not exist clears the form.
    bool Flex_CaricaDocumento(const QString& number, const QString& year);
    // Exactly the order with this key, of any year.
    bool Flex_CaricaDocumento(const orders::OrderKey& key);
    void Documento_Trova();
    void Documento_TrovaNumero();
    void SetTextBoxDocumento();
    void SetTextBoxControparte();

    // --- checks before saving
    // True when every check passed; otherwise one message was shown and the focus is on the field named.
    bool CheckPreSalvataggio();
    // For leaving a header date field: an empty or wrong registration date becomes today's.
    void Documento_ControllaDate();

    // --- saving, updating and deleting
    // The save command: checks, the question, the header into the lines, the write, then the order is
    // read back. True when the order was written and shown again.
    bool Documento_Salva();
    void Documento_CopiaTestata();
    // Writes ("S" a new order, "A" a saved one) or deletes ("E") the order in one transaction; false when
    // nothing was changed (an error, reported, or a delete not confirmed).
    bool SalvaAggiornaElimina(const QString& mode);

    // --- adding, changing and removing lines
    // Answers whether a line was written: a refused line leaves the grid as it was.
    bool Flex_AggiungiRiga();
    void CheckPreInserimentoRiga(bool& allowed);
    void CheckComposizione(const QString& articleCode, qint16& count);
    const QVector<QStringList>& components() const { return m_components; }
    void Flex_EliminaRiga();
    void flx_Movimenti_Click();

    // --- totals
    void CalcolaTotaleRiga(double quantity, common::Money price);
    void Flex_RicalcolaTotali();
    void Flex_RicalcolaRiga();

    // --- article panel and stock check
    void Informazioni_MED();
    void ResetInfoArticolo();
    void CheckPreInserimentoArticolo();
    void CheckQtaMED();
    void InviaRiordino();
    QLabel* lblInfoArt(int index) const;
    // The duplicate-line check's answer: the grid row the next line overwrites (0: a new line is added)
    // and that line's article row id.
    qint16 existingRow() const { return m_existingRow; }
    qint32 rowidMed() const { return m_rowidMed; }
    // What the last stock check left for the reorder mail.
    float missingQuantity() const { return m_reorder ? m_reorder->missing : 0; }
    bool reorderMailAllowed() const { return m_reorder.has_value(); }
    const QString& reorderQuestionText() const { return m_reorderQuestion; }

    // --- reorder mail
    // Offers the list of all agents; whichever is picked, the mail goes to the agent of the article panel.
    void btn_SendMail_Click();
    void tAgenti_Click(int index);
    QMenu* mAgenti() const { return m_mAgenti; }
    MenuItemArray& tAgenti() { return *m_tAgenti; }

    // --- printing: the order statement
    // Prints the statement of the open order and marks all its lines collected; true when both were done.
    bool Documento_StampaRicevutaRitiro();
    // The statement, and the control slips of the open order's lines, in a preview window: nothing is
    // marked collected, and paper comes only if the operator prints from there.
    void Documento_AnteprimaEstratto();
    void Documento_AnteprimaCControllo();

    // --- printing: control slips, change of state, cards list
    void tbComandi_ButtonMenuClick(QAction* entry);
    // Moves the orders the operator chooses from one state to the other; prints nothing.
    void Documenti_StampaCControllo(const QString& fromState, const QString& toState);
    void Documenti_CO_StampaControllo();
    // 1: all lines of the open order; 2: the orders chosen; otherwise the line selected in the grid.
    void Documento_StampaCControllo(qint16 mode);
    void Documento_StampaBigliettini();
    // A click on a status-bar panel, numbered from 1.
    void sBar_PanelClick(int panel);

    // --- import of the catalogue and the counterparts from a spreadsheet's CSV
    // What to import and from which file; nothing when the operator cancelled.
    struct ImportChoice
    {
        data::ImportTable table = data::ImportTable::Articoli;
        QString path;
    };
    using ImportChooser = std::function<std::optional<ImportChoice>(QWidget* parent)>;
    // The real choice opens a list of the kinds and a file window; tests choose by script. Empty puts the
    // real one back.
    static void setImportChooser(ImportChooser chooser);
    // Asks what to import, brings it in with a progress bar and tells the counts, or every refused row.
    void Documenti_Importa();

    // --- text fields: every text box of the form comes through these
    void TextBox_GotFocus(QLineEdit* box);
    // True when the key was used up here (Enter, which moves on or adds the line).
    bool TextBox_KeyDown(QLineEdit* box, int keyCode);
    // What leaving a field does (loading the article, the stock check, reading a date, ...); false when
    // the field refused what it holds and keeps the focus.
    bool TextBox_LostFocus(QLineEdit* box);

    // --- accessories
    void chk_Confetti_Click(int index);
    void chk_Biglietti_Click();
    void opt_Biglietti_Click(int index);
    void opt_Amuleto_Click(int index);

    // --- commands
    void tbComandiDocumento_ButtonClick(QAction* button);
    void tbComandiRighe_ButtonClick(QAction* button);
    void Form_KeyDown(int& keyCode, int shift);
    // The character a key types, through the host's filter: 0 afterwards means nothing is typed.
    void Form_KeyPress(int& keyCode);
    void Form_Resize();
    // How many keys the form's key handling has run for, so that a test can see each key handled once.
    int keysHandled() const { return m_keysHandled; }
    // Closing asks first; cancel set keeps the form open with everything typed.
    void Form_QueryUnload(bool& cancel, int unloadMode);
    void Form_Unload();

    // The text of a status-bar panel, numbered from 1 as the panels are.
    QString statusPanelText(int panel) const;
    KeyedToolBar& tbComandiDocumento() { return m_documentBar; }
    KeyedToolBar& tbComandiRighe() { return m_linesBar; }
    MenuItemArray& tBomboniere() { return *m_tBomboniere; }
    MenuItemArray& tAstucci() { return *m_tAstucci; }
    MenuItemArray& tFazzoletti() { return *m_tFazzoletti; }
    QMenu* mFasi() const { return m_mFasi; }
    QLabel* lblInfo(int index) const;
    QCheckBox* chk_Confetti(int index) const;
    QRadioButton* opt_Biglietti(int index) const;
    QRadioButton* opt_Amuleto(int index) const;

    // The order open on the form, and the mode the form is in.
    const orders::Order& order() const { return m_session.order(); }
    const orders::OrderSession& session() const { return m_session; }

protected:
    void closeEvent(QCloseEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    void setupControls();
    // The document toolbar's two mode Tags show the session's mode.
    void showMode();
    void SetStatusBarUser();
    void setStatusPanel(int panel, const QString& text);
    void restorePlacement();
    void savePlacement();
    void setBackground(QWidget* widget, host::Colour colour);
    bool showLoadedOrder(const std::function<orders::Order()>& load);
    void showOpenOrder();
    void showAccessories();
    void setCardFields(bool ticked, int format);
    void showCustomer();
    void pickCustomer();
    void grid_RightButtonDown(const QPoint& globalPos);
    void menuItemChosen(MenuItemArray& items, int index);
    // True when a box refused to be left: it has the focus again and must not see itself lose it.
    bool fieldFocusChanged(QLineEdit* box, const QFocusEvent& event);
    void leaveHeaderField(QLineEdit* box);
    bool leaveDateField(QLineEdit* box);
    bool leaveCodeField();
    bool leavePriceField();
    void moveOnFrom(QLineEdit* box);
    void focusNewOrder();
    void refuseField(QLineEdit* box, const QString& message);
    void setStockMarker(QLabel* marker, const QString& quantityText);
    void numberKeyPressed();
    void setOptionGroup(const QMap<int, QRadioButton*>& options, int checked, bool enabled);
    bool typedKeyFiltered(QWidget* receiver, QKeyEvent* key);
    void addComponentLines();
    orders::LineEntry lineEntry() const;
    void copyLineBack(int row);
    orders::GridRows gridRows() const;
    void putGridLines(const QVector<QStringList>& lines, std::initializer_list<int> columns);
    void printAfterSaving();
    // --- control slips and change of state: the menus' entries and the status-bar panels wired up
    void setupMenuControls();
    // --- printing: the order statement
    // The open order as its statement shows it, read from the form, with the shop's settings for it.
    printing::StatementInput statementInput() const;
    // False, with the field named and the focus on it, when a text of the order could not be kept as typed.
    bool textsCanBeSaved();
    // A header field typed in and not yet left, as leaving it would take it; false when it refused.
    bool finishHeaderField();

    const std::unique_ptr<Ui::frm_Commissioni> m_ui;
    KeyedToolBar m_documentBar;
    KeyedToolBar m_linesBar;
    QVector<QLabel*> m_panels;
    QMap<int, QLabel*> m_lblInfo;
    QMap<int, QLabel*> m_lblInfoArt;
    QMap<int, QCheckBox*> m_chkConfetti;
    QMap<int, QRadioButton*> m_optBiglietti;
    QMap<int, QRadioButton*> m_optAmuleto;
    QMenu* m_mBomboniere = nullptr;
    QMenu* m_mAstucci = nullptr;
    QMenu* m_mFazzoletti = nullptr;
    QMenu* m_mFasi = nullptr;
    std::unique_ptr<MenuItemArray> m_tBomboniere;
    std::unique_ptr<MenuItemArray> m_tAstucci;
    std::unique_ptr<MenuItemArray> m_tFazzoletti;

    orders::ModuleSettings m_settings;
    orders::OrderSession m_session;
    // The order open, as the procedures name it.
    orders::Order& m_order = m_session.order();
    QString m_initFlag;
    int m_nextLinePosition = 2;
    // The line last clicked, and its kind, which lines written afterwards carry.
    qint32 m_selectedRow = 0;
    QString m_lineTipo;
    QVector<QStringList> m_components;
    bool m_refilteringKey = false;
    bool m_leavingField = false;
    int m_keysHandled = 0;
    // The key press being delivered and the widget it last reached, until the key is released.
    struct KeyDelivery
    {
        const QEvent* event = nullptr;
        QPointer<QWidget> receiver;
    };
    KeyDelivery m_keyDelivery;

    // The duplicate-line check's answer for the next line added: the grid row to overwrite (0: append)
    // and that line's article row id.
    qint16 m_existingRow = 0;
    qint32 m_rowidMed = 0;
    // What the article panel shows, kept as values so that the stock check need not read labels.
    struct ArticlePanel
    {
        QString realStock;
        std::optional<lines::Agent> agent; // the shown article's own; none without a supplier on record
    };
    ArticlePanel m_panel;
    bool m_articleMissing = false; // the code last looked up is not in the catalogue
    // The reorder the last stock check offered, for the article still on the panel: any lookup withdraws it.
    std::optional<lines::ReorderOffer> m_reorder;
    QString m_reorderQuestion;
    // The agents' pop-up list of the reorder mail button.
    void setupReorderMail();
    QMenu* m_mAgenti = nullptr;
    std::unique_ptr<MenuItemArray> m_tAgenti;
    // The text box that has the focus, the look it had before it took the active colour, and a box
    // whose leaving has already been handled (by Enter) before its focus actually moves.
    QPointer<QLineEdit> m_fieldWithFocus;
    QPalette m_restingPalette;
    bool m_fieldColoured = false;
    QPointer<QLineEdit> m_leftAlready;
    // The orders chosen for a change of state or for their control slips, from the choice to the end.
    orders::ChosenOrders m_chosen;
    // --- printing: the order statement
    // The phase the form was opened in, which the statement's title names.
    QString m_phase;
};

} // namespace xv::form
