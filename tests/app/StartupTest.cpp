// SPDX-License-Identifier: MIT
#include "ScriptedDialogs.h"

#include "app/aMAIN.h"
#include "app/mINIT_MODULO.h"
#include "form/frm_Commissioni.h"
#include "host/Host.h"
#include "host/Services.h"

#include <QFile>
#include <QGuiApplication>
#include <QScreen>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

using namespace xv;

// One start of the program on a fresh embedded database in a temporary folder.
class StartupTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(m_dir.isValid());
        m_options.dataPath = m_dir.path();
        m_options.connectionText = "sqlite:" + m_dir.path() + "/negozio.db";
        m_options.fillDemoData = false;
        m_options.userName = "tester";
        m_options.stationName = "BANCO1";
        app::clearProgramEndRequest();
        useHost(m_options);
        host::setFormSettings(std::make_unique<host::IniFormSettings>(m_dir.path() + "/finestre.ini"));
    }
    void TearDown() override
    {
        app::releaseProgramForm();
        app::setMousePointer(0);
        host::resetServices();
    }

    void useHost(const host::HostOptions& options)
    {
        auto h = std::make_unique<host::Host>(options);
        m_host = h.get();
        host::setHost(std::move(h));
    }
    // Stores settings before the program starts, as the suite's configuration would.
    void presetSetting(const QString& section, const QString& key, const QString& value)
    {
        ASSERT_TRUE(m_host->Initialize());
        m_host->SaveSetting(section, key, value, "eKELA");
    }
    form::frm_Commissioni* form() const { return qobject_cast<form::frm_Commissioni*>(app::programForm()); }
    bool formInitialised() const { return form() && form()->statusPanelText(2) == "Utente: tester"; }
    QString log() const
    {
        QFile file(m_host->logFilePath());
        return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
    }

    QTemporaryDir m_dir;
    host::HostOptions m_options;
    host::Host* m_host = nullptr;
};

TEST_F(StartupTest, StartsCaptionedCentredAndHandsOverToTheForm)
{
    test::ScriptedDialogs noBoxes;
    app::Main();
    ASSERT_TRUE(form());
    EXPECT_FALSE(app::programEndRequested());
    EXPECT_TRUE(form()->isVisible());
    EXPECT_TRUE(form()->isEnabled());
    EXPECT_EQ(form()->windowTitle(), "xVELARIO - Connesso ai dati negozio(tester@BANCO1)");
    EXPECT_TRUE(formInitialised());
    EXPECT_EQ(form()->statusPanelText(1).left(8), "BANCO1 [");
    EXPECT_EQ(m_host->registeredForm(), form());
    EXPECT_FALSE(form()->isMaximized());
    EXPECT_EQ(QGuiApplication::overrideCursor(), nullptr) << "the hourglass is taken back";
}

TEST_F(StartupTest, RefusedInitialisationEndsWithoutAMessageAfterClampingThePosition)
{
    QFile::remove(m_dir.path() + "/finestre.ini");
    host::formSettings().SaveSetting("frmCommissioni", "Left", "-300");
    host::formSettings().SaveSetting("frmCommissioni", "Top", "-200");
    m_options.connectionText = "sqlite:" + m_dir.path() + "/non/esiste/dati.db";
    useHost(m_options);

    test::ScriptedDialogs noBoxes;
    app::Main();
    EXPECT_TRUE(app::programEndRequested());
    ASSERT_TRUE(app::programForm());
    EXPECT_FALSE(app::programForm()->isVisible());
    EXPECT_EQ(app::programForm()->pos(), QPoint(0, 0)) << "a negative saved position is clamped to 0";
    EXPECT_FALSE(formInitialised());
    EXPECT_TRUE(log().contains("Initialize"));
}

struct PhaseCase
{
    const char* stored; // nullptr: no setting at all
    bool initialised;
    const char* error;
};

class StartupPhaseTest : public StartupTest, public ::testing::WithParamInterface<PhaseCase>
{
};

TEST_P(StartupPhaseTest, SavedPhaseIsAByteOrTheStartStopsInMain)
{
    const PhaseCase c = GetParam();
    if (c.stored)
        host::formSettings().SaveSetting("frmCommissioni", "Fase", c.stored);
    test::ScriptedDialogs dialogs;
    if (!c.initialised)
        dialogs.expectMessage("aMAIN.Main");
    app::Main();
    EXPECT_EQ(formInitialised(), c.initialised);
    if (!c.initialised) {
        EXPECT_TRUE(dialogs.messages().value(0).text.contains(QString::fromLatin1(c.error)));
        EXPECT_TRUE(log().contains("aMAIN.Main"));
    }
}

INSTANTIATE_TEST_SUITE_P(Phases, StartupPhaseTest,
                         ::testing::Values(PhaseCase{nullptr, true, ""}, PhaseCase{"0", true, ""},
                                           PhaseCase{"255", true, ""}, PhaseCase{"2,5", true, ""},
                                           PhaseCase{"300", false, "Errore n. 6"},
                                           PhaseCase{"-1", false, "Errore n. 6"},
                                           PhaseCase{"abc", false, "Errore n. 13"},
                                           PhaseCase{"", false, "Errore n. 13"}));

TEST_F(StartupTest, AnAutomailThatIsNoBooleanStopsTheStartThroughTheErrorPath)
{
    presetSetting("MAIL", "automail", "forse");
    test::ScriptedDialogs dialogs;
    dialogs.expectMessage("mINIT_MODULO.InitModulo");
    app::Main();
    EXPECT_FALSE(formInitialised());
    EXPECT_FALSE(app::programEndRequested()) << "an error is not a refusal of the host";
    EXPECT_TRUE(dialogs.messages().value(0).text.contains("Errore n. 13"));
}

TEST_F(StartupTest, ModuleValuesAreReadFromTheSuiteSettings)
{
    presetSetting("MAIL", "automail", "Vero");
    m_host->SaveSetting("KELA", "faltair", "0", "eKELA");
    m_host->SaveSetting("mainmenu", "gmenu", "2.5", "eKELA");
    m_host->SaveSetting("mainmenu", "circlemenubutton", "3.5abc", "eKELA");
    m_host->SaveSetting("mainmenu", "circlemenubutton2", "Menu Rapido", "eKELA");
    test::ScriptedDialogs noBoxes;
    app::Main();
    EXPECT_TRUE(formInitialised());
    EXPECT_FALSE(app::AltairEnabled);
    EXPECT_TRUE(app::AutoMail);
    EXPECT_EQ(app::GMenu, 2) << "halves go to the even number";
    EXPECT_EQ(app::CircleMenuButton, 4);
    EXPECT_EQ(app::CircleMenuButton2, "Menu Rapido");
}

TEST_F(StartupTest, TheWindowIsCentredUnlessMaximisedWhateverTheCallerAsksAndKeepCaptionKeepsTheTitle)
{
    test::ScriptedDialogs noBoxes;
    QWidget* centred = new form::frm_Commissioni();
    ASSERT_TRUE(app::InitModulo(centred, false, false, false));
    const QScreen* screen = centred->screen();
    // Across the middle of the screen, and a little above it (the rule itself: CentredPositionTest).
    const QPoint middle = screen->geometry().center();
    const QPoint placed = centred->frameGeometry().center();
    EXPECT_NEAR(placed.x(), middle.x(), 1);
    EXPECT_LT(placed.y(), middle.y());
    EXPECT_GT(placed.y(), middle.y() - 40);
    EXPECT_FALSE(centred->isMaximized());
    delete centred;

    QWidget* maximised = new form::frm_Commissioni();
    maximised->setWindowTitle("Titolo proprio");
    ASSERT_TRUE(app::InitModulo(maximised, true, true, true));
    EXPECT_TRUE(maximised->windowState() & Qt::WindowMaximized);
    EXPECT_EQ(maximised->windowTitle(), "Titolo proprio");
    delete maximised;
}

TEST(CentredPositionTest, SitsAHundredSixtyTwipsAboveTheTrueCentre)
{
    // 160 twips are a ninth of an inch: about 11 pixels at 96 dpi, 16 at 144 dpi.
    EXPECT_EQ(app::centredPosition(QSize(1366, 768), QSize(1200, 700), 96), QPoint(83, 23));
    EXPECT_EQ(app::centredPosition(QSize(1920, 1080), QSize(1200, 700), 144), QPoint(360, 174));
    EXPECT_EQ(app::centredPosition(QSize(800, 600), QSize(1000, 700), 96), QPoint(-100, -61));
}

} // namespace
