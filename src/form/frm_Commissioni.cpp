// SPDX-License-Identifier: MIT
#include "frm_Commissioni.h"

#include "ui_frm_Commissioni.h"

#include "common/Conversions.h"
#include "common/RuntimeError.h"
#include "host/Services.h"
#include "lines/FlexGrid.h"

#include <QApplication>
#include <QButtonGroup>
#include <QCheckBox>
#include <QCloseEvent>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QRadioButton>
#include <QSysInfo>
#include <QToolButton>

namespace xv::form {

namespace {

const QString kFormSection = QStringLiteral("frmCommissioni");
// Status-bar panels with their design texts; the procedures fill them by number, from 1.
const char* const kPanelTexts[] = {"", "", "Bomboniere:", "Fazzoletti:", "Astucci:", "Tot.Pezzi:", "Tot.Righe:",
                                   "Commissione n"};

} // namespace

frm_Commissioni::frm_Commissioni(QWidget* parent)
    : QMainWindow(parent), m_ui(std::make_unique<Ui::frm_Commissioni>())
{
    m_ui->setupUi(this);
    setupControls();
    setupReorderMail();
    restorePlacement();
}

frm_Commissioni::~frm_Commissioni()
{
    qApp->removeEventFilter(this);
}

void frm_Commissioni::setupControls()
{
    m_documentBar = KeyedToolBar(m_ui->tbComandiDocumento);
    m_linesBar = KeyedToolBar(m_ui->tbComandiRighe);
    m_lblInfo = controlArray<QLabel>(this, QStringLiteral("lblInfo"));
    m_lblInfoArt = controlArray<QLabel>(this, QStringLiteral("lblInfoArt"));
    m_chkConfetti = controlArray<QCheckBox>(this, QStringLiteral("chk_Confetti"));
    m_optBiglietti = controlArray<QRadioButton>(this, QStringLiteral("opt_Biglietti"));
    m_optAmuleto = controlArray<QRadioButton>(this, QStringLiteral("opt_Amuleto"));

    for (int panel = 1; panel <= static_cast<int>(std::size(kPanelTexts)); ++panel) {
        auto* label = new QLabel(QString::fromUtf8(kPanelTexts[panel - 1]), this);
        label->setObjectName(QStringLiteral("sBar_Panel%1").arg(panel));
        label->setFrameShape(QFrame::StyledPanel);
        label->setContentsMargins(4, 0, 4, 0);
        m_ui->sBar->addWidget(label, panel <= 2 ? 3 : 1);
        m_panels << label;
    }

    // The print and second document buttons open drop-down menus of keyed entries.
    auto addMenu = [this](QAction* button, const QVector<std::pair<const char*, const char*>>& entries) {
        auto* menu = new QMenu(this);
        for (const auto& [key, caption] : entries) {
            QAction* entry = menu->addAction(QString::fromUtf8(caption));
            entry->setProperty("key", QString::fromLatin1(key));
        }
        button->setMenu(menu);
        if (auto* tool = qobject_cast<QToolButton*>(m_ui->tbComandiDocumento->widgetForAction(button)))
            tool->setPopupMode(QToolButton::MenuButtonPopup);
    };
    addMenu(m_ui->act_PRINT, {{"ECM", "Estratto Conto di questa Commissione [RITIRO]"},
                              {"ANTEPRIMA_ECM", "Anteprima dell'Estratto Conto"},
                              {"SCC", "Tutte le righe di questa Commissione"},
                              {"ANTEPRIMA_SCC", "Anteprima delle righe di questa Commissione"},
                              {"SCC_INTERVALLO", "Tutte le righe delle Commissioni selezionate"},
                              {"LISTA_BIGLIETTINI", "Lista bigliettini"},
                              {"IMPOSTAZIONI_STAMPA_POSTA", "Impostazioni stampa e posta..."},
                              {"REP_DES", "Report Designer"}});
    // "Commssioni" is how the shop has always read these entries.
    addMenu(m_ui->act_FIND, {{"SCC_INTERVALLO", "Tutte le Commissioni da Stampare"},
                             {"CO_RITIRATO", "Tutte le Commssioni Emesse da Ritirare"},
                             {"CO_EMESSO", "Tutte le Commssioni Ritirate da Emettere"},
                             {"config_comm", "Configurazione App"},
                             {"IMPORTA", "Importa catalogo e anagrafiche..."}});
    setupMenuControls();

    m_mBomboniere = new QMenu(this);
    m_mBomboniere->setObjectName(QStringLiteral("mBomboniere"));
    m_mAstucci = new QMenu(this);
    m_mAstucci->setObjectName(QStringLiteral("mAstucci"));
    m_mFazzoletti = new QMenu(this);
    m_mFazzoletti->setObjectName(QStringLiteral("mFazzoletti"));
    m_mFasi = new QMenu(this);
    m_mFasi->setObjectName(QStringLiteral("mFasi"));
    m_tBomboniere = std::make_unique<MenuItemArray>(m_mBomboniere, QStringLiteral("tBomboniere"),
                                                    [this](int i) { menuItemChosen(*m_tBomboniere, i); });
    m_tAstucci = std::make_unique<MenuItemArray>(m_mAstucci, QStringLiteral("tAstucci"),
                                                 [this](int i) { menuItemChosen(*m_tAstucci, i); });
    m_tFazzoletti = std::make_unique<MenuItemArray>(m_mFazzoletti, QStringLiteral("tFazzoletti"),
                                                    [this](int i) { menuItemChosen(*m_tFazzoletti, i); });
    connect(m_ui->img_Bomboniere, &QToolButton::clicked, this,
            [this] { m_mBomboniere->popup(m_ui->img_Bomboniere->mapToGlobal(QPoint(0, m_ui->img_Bomboniere->height()))); });
    connect(m_ui->img_Astucci, &QToolButton::clicked, this,
            [this] { m_mAstucci->popup(m_ui->img_Astucci->mapToGlobal(QPoint(0, m_ui->img_Astucci->height()))); });
    connect(m_ui->img_Fazzoletti, &QToolButton::clicked, this,
            [this] { m_mFazzoletti->popup(m_ui->img_Fazzoletti->mapToGlobal(QPoint(0, m_ui->img_Fazzoletti->height()))); });
    connect(m_ui->img_Cliente, &QToolButton::clicked, this, &frm_Commissioni::pickCustomer);

    connect(m_ui->tbComandiDocumento, &QToolBar::actionTriggered, this,
            [this](QAction* action) { tbComandiDocumento_ButtonClick(action); });
    connect(m_ui->tbComandiRighe, &QToolBar::actionTriggered, this,
            [this](QAction* action) { tbComandiRighe_ButtonClick(action); });
    connect(m_ui->txt_numeroCommissione, &QLineEdit::returnPressed, this, &frm_Commissioni::numberKeyPressed);

    for (auto it = m_chkConfetti.cbegin(); it != m_chkConfetti.cend(); ++it) {
        const int index = it.key();
        connect(it.value(), &QCheckBox::clicked, this, [this, index] { chk_Confetti_Click(index); });
    }
    connect(m_ui->chk_Biglietti, &QCheckBox::clicked, this, &frm_Commissioni::chk_Biglietti_Click);
    // The quantities belong to the open order as they are typed, so the value saved is the one shown.
    connect(m_ui->txt_confetti, &QLineEdit::textChanged, this, [this](const QString& t) { m_order.confetti = t; });
    connect(m_ui->txt_mandorla, &QLineEdit::textChanged, this, [this](const QString& t) { m_order.mandorla = t; });
    for (const auto* options : {&m_optBiglietti, &m_optAmuleto}) {
        auto* group = new QButtonGroup(this);
        for (QRadioButton* option : *options)
            group->addButton(option);
    }
    m_mFasi->addAction(QStringLiteral("Estratto conto della commissione [RITIRO]"))->setEnabled(false);
    m_mFasi->addAction(QStringLiteral("Comanda di controllo della riga"))->setEnabled(false);
    for (auto it = m_optBiglietti.cbegin(); it != m_optBiglietti.cend(); ++it) {
        const int index = it.key();
        connect(it.value(), &QRadioButton::toggled, this, [this, index](bool on) {
            if (on)
                opt_Biglietti_Click(index);
        });
    }
    for (auto it = m_optAmuleto.cbegin(); it != m_optAmuleto.cend(); ++it) {
        const int index = it.key();
        connect(it.value(), &QRadioButton::toggled, this, [this, index](bool on) {
            if (on)
                opt_Amuleto_Click(index);
        });
    }
    connect(grid(), &lines::FlexGrid::rightButtonDown, this, &frm_Commissioni::grid_RightButtonDown);
    connect(grid(), &lines::FlexGrid::cellClicked, this, &frm_Commissioni::flx_Movimenti_Click);

    // Labels name their fields for assistive technology as they do on screen.
    for (QLabel* label : findChildren<QLabel*>()) {
        if (QWidget* buddy = label->buddy())
            buddy->setAccessibleName(label->text().remove(QLatin1Char('&')));
    }
    // In the tight header a label is often the widest of its column, and one drawn with its access key
    // underlined loses its last letter when given exactly the width it asks for.
    for (QLabel* label : m_ui->fra_Main->findChildren<QLabel*>()) {
        if (label->buddy())
            label->setMinimumWidth(label->sizeHint().width() + 2);
    }
    m_ui->txt_Acconto->setAccessibleName(QStringLiteral("Acconto"));
    m_ui->txt_Totale->setAccessibleName(QStringLiteral("Totale"));

    // Like the old form's key preview: function keys reach the form whichever field has the focus.
    qApp->installEventFilter(this);
}

lines::FlexGrid* frm_Commissioni::grid() const
{
    return m_ui->flx_Movimenti;
}

QLabel* frm_Commissioni::lblInfo(int index) const
{
    return m_lblInfo.value(index);
}

QCheckBox* frm_Commissioni::chk_Confetti(int index) const
{
    return m_chkConfetti.value(index);
}

QRadioButton* frm_Commissioni::opt_Biglietti(int index) const
{
    return m_optBiglietti.value(index);
}

QRadioButton* frm_Commissioni::opt_Amuleto(int index) const
{
    return m_optAmuleto.value(index);
}

void frm_Commissioni::restorePlacement()
{
    host::IFormSettings& settings = host::formSettings();
    bool okLeft = false;
    bool okTop = false;
    const int left = settings.GetSetting(kFormSection, QStringLiteral("Left"), QString()).toInt(&okLeft);
    const int top = settings.GetSetting(kFormSection, QStringLiteral("Top"), QString()).toInt(&okTop);
    const int width = settings.GetSetting(kFormSection, QStringLiteral("Width"), QString()).toInt();
    const int height = settings.GetSetting(kFormSection, QStringLiteral("Height"), QString()).toInt();
    if (width > 200 && height > 200)
        resize(width, height);
    if (okLeft && okTop)
        move(left, top);
}

void frm_Commissioni::savePlacement()
{
    host::IFormSettings& settings = host::formSettings();
    const QRect frame = frameGeometry();
    settings.SaveSetting(kFormSection, QStringLiteral("Left"), QString::number(frame.x()));
    settings.SaveSetting(kFormSection, QStringLiteral("Top"), QString::number(frame.y()));
    settings.SaveSetting(kFormSection, QStringLiteral("Width"), QString::number(width()));
    settings.SaveSetting(kFormSection, QStringLiteral("Height"), QString::number(height()));
}

void frm_Commissioni::closeEvent(QCloseEvent* event)
{
    // EXIT, Esc and the window's own close button all come through here.
    bool cancel = false;
    Form_QueryUnload(cancel, event->spontaneous() ? kUnloadFromWindowMenu : kUnloadFromCode);
    if (cancel) {
        event->ignore();
        return;
    }
    savePlacement();
    event->accept();
    Form_Unload();
}

void frm_Commissioni::InitForm(quint8 phase)
{
    m_phase = QString::number(phase);
    try {
        GET_Impostazioni();
        GET_Categorie();
        m_initFlag = QStringLiteral("S");
        m_ui->fra_Cliente->setVisible(true);
        m_ui->fra_Totali->setVisible(true);
        m_ui->fra_Main->setVisible(true);
        m_ui->fra_Evento->setVisible(true);
        lblInfo(28)->setVisible(true);
        lblInfo(30)->setVisible(true);
        SetStatusBarUser();
        host::host().RegisterForm(this);
        // The form opens in browse mode with an empty grid laid out from the table.
        Flex_Init();
        StateOfButtons();
        AbilitaRighe();
    } catch (...) {
        host::host().ReportError(QStringLiteral("InitForm"), QStringLiteral("AZIONE: %1").arg(phase), true);
    }
}

void frm_Commissioni::GET_Impostazioni()
{
    try {
        // Another workstation may have changed the shop's settings since they were last read.
        host::host().RefreshSettings();
        m_settings = orders::readModuleSettings(host::host());
        QFont font = m_ui->txt_numeroCommissione->font();
        font.setPointSize(16);
        m_ui->txt_numeroCommissione->setFont(font);
    } catch (...) {
        host::host().ReportError(QStringLiteral("GET_Impostazioni"), QString(), true);
    }
}

void frm_Commissioni::GET_Categorie()
{
    try {
        const QVector<lines::CategoryArticle> articles = lines::readMenuArticles(host::host());
        struct Target
        {
            const char* stem;
            MenuItemArray* items;
            int counter;
        };
        Target targets[] = {{"BOMBONIER", m_tBomboniere.get(), 0},
                            {"ASTUCC", m_tAstucci.get(), 0},
                            {"FAZZOLET", m_tFazzoletti.get(), 0}};
        for (const lines::CategoryArticle& article : articles) {
            // Three independent, case-sensitive stem tests: a category may feed more than one menu.
            for (Target& target : targets) {
                if (!article.category.contains(QLatin1String(target.stem), Qt::CaseSensitive))
                    continue;
                if (target.counter >= target.items->count())
                    target.items->load(target.counter);
                target.items->item(target.counter)->setText(article.code);
                ++target.counter;
            }
        }
    } catch (...) {
        host::host().ReportError(QStringLiteral("GET_Categorie"), QString(), true);
    }
}

void frm_Commissioni::menuItemChosen(MenuItemArray& items, int index)
{
    const QString code = items.item(index)->text();
    if (code.isEmpty() || !m_ui->txt_codice->isEnabled())
        return;
    m_ui->txt_codice->setText(code);
    Informazioni_MED();
    // The article is loaded: leaving the code field for the quantity has nothing more to do.
    if (m_fieldWithFocus == m_ui->txt_codice)
        m_leftAlready = m_ui->txt_codice;
    m_ui->txt_qta->setFocus(Qt::TabFocusReason);
    if (m_leftAlready && m_leftAlready->hasFocus())
        m_leftAlready = nullptr;
}

void frm_Commissioni::SetStatusBarUser()
{
    host::IHost& h = host::host();
    // Windows names the computer in "computername" (in any case); elsewhere the host name says it.
    QString computer = qEnvironmentVariable("computername");
    if (computer.isEmpty())
        computer = qEnvironmentVariable("COMPUTERNAME");
    if (computer.isEmpty())
        computer = QSysInfo::machineHostName();
    setStatusPanel(1, h.GetStationName() + QStringLiteral(" [") + computer + QLatin1Char(']'));
    setStatusPanel(2, QStringLiteral("Utente: ") + h.GetUserName());
}

void frm_Commissioni::setStatusPanel(int panel, const QString& text)
{
    m_panels.at(panel - 1)->setText(text);
}

QString frm_Commissioni::statusPanelText(int panel) const
{
    return m_panels.at(panel - 1)->text();
}

void frm_Commissioni::setBackground(QWidget* widget, host::Colour colour)
{
    // The box being typed in keeps the active colour; this is the colour it returns to when left.
    const bool typingIn = m_fieldColoured && widget == m_fieldWithFocus;
    QPalette palette = typingIn ? m_restingPalette : widget->palette();
    palette.setColor(QPalette::Base, host::toQColor(colour));
    palette.setColor(QPalette::Window, host::toQColor(colour));
    if (typingIn)
        m_restingPalette = palette;
    else
        widget->setPalette(palette);
}

bool frm_Commissioni::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::KeyRelease || event->type() == QEvent::ShortcutOverride) {
        m_keyDelivery = {};
        return false;
    }
    if (event->type() == QEvent::KeyPress) {
        auto* widget = qobject_cast<QWidget*>(watched);
        // The character the host's filter put in place of the one typed has been through the form already.
        if (m_refilteringKey)
            return false;
        if (widget && widget->window() == this && isEnabled()) {
            // A key its receiver does not take is offered to each parent in turn, the same event again:
            // the form acts on a key once, where it first arrives.
            const bool offeredAgain = event == m_keyDelivery.event && m_keyDelivery.receiver &&
                                      widget->isAncestorOf(m_keyDelivery.receiver);
            m_keyDelivery = {event, widget};
            if (offeredAgain)
                return false;
            auto* key = static_cast<QKeyEvent*>(event);
            const bool functionKey =
                (key->key() >= Qt::Key_F1 && key->key() <= Qt::Key_F12) || key->key() == Qt::Key_Escape;
            if (key->isAutoRepeat() && functionKey)
                return true;
            int code = suiteKeyCode(key->key());
            Form_KeyDown(code, static_cast<int>(key->modifiers()));
            // The text fields' own key handling refreshes the commands after the form has seen the key.
            auto* box = qobject_cast<QLineEdit*>(widget);
            if (box && isVisible())
                StateOfButtons();
            if (box && TextBox_KeyDown(box, suiteKeyCode(key->key())))
                return true;
            // Function keys belong to the form; every other key goes on to the field.
            return functionKey || typedKeyFiltered(widget, key);
        }
        return false;
    }
    if (event->type() == QEvent::FocusIn || event->type() == QEvent::FocusOut) {
        auto* box = qobject_cast<QLineEdit*>(watched);
        if (box && box->window() == this)
            return fieldFocusChanged(box, *static_cast<QFocusEvent*>(event));
    }
    return false;
}

void frm_Commissioni::leaveHeaderField(QLineEdit* watched)
{
    // Leaving a header field decides whether lines may be entered; leaving the customer fills it.
    const bool headerField = watched == m_ui->txt_numeroCommissione || watched == m_ui->txt_ragsoc ||
                             watched == m_ui->txt_dataEvento || watched == m_ui->txt_soggettiEvento ||
                             watched == m_ui->txt_dataRitiro1 || watched == m_ui->txt_dataRitiro2;
    // A list window opening takes the focus too: nothing is filled while it is up.
    if (!headerField || m_leavingField || QApplication::activeModalWidget())
        return;
    m_leavingField = true;
    try {
        if (watched == m_ui->txt_ragsoc && m_ui->txt_ragsoc->isEnabled())
            SetTextBoxControparte();
        AbilitaRighe();
    } catch (...) {
        host::host().ReportError(watched == m_ui->txt_ragsoc ? QStringLiteral("SetTextBoxControparte")
                                                             : QStringLiteral("AbilitaRighe"),
                                 QString(), true);
    }
    m_leavingField = false;
}

void frm_Commissioni::numberKeyPressed()
{
    try {
        Documento_TrovaNumero();
        // As after any key the field handles: the figures, colours and commands follow the order shown.
        Flex_RicalcolaRiga();
        Flex_RicalcolaTotali();
        StateOfButtons();
        AbilitaRighe();
    } catch (...) {
        host::host().ReportError(QStringLiteral("Documento_TrovaNumero"), QString(), true);
    }
}

} // namespace xv::form
