// SPDX-License-Identifier: MIT
#include "frm_Commissioni.h"

#include "ui_frm_Commissioni.h"

#include "host/Services.h"

#include <QCloseEvent>
#include <QLabel>

namespace xv::form {

namespace {

const QString kFormSection = QStringLiteral("frmCommissioni");
constexpr int kPanelCount = 5;

} // namespace

frm_Commissioni::frm_Commissioni(QWidget* parent) : QMainWindow(parent), m_ui(std::make_unique<Ui::frm_Commissioni>())
{
    m_ui->setupUi(this);
    for (int panel = 1; panel <= kPanelCount; ++panel) {
        auto* label = new QLabel(this);
        label->setObjectName(QStringLiteral("sBarPanel%1").arg(panel));
        label->setFrameShape(QFrame::StyledPanel);
        m_ui->sBar->addWidget(label, panel <= 2 ? 2 : 1);
        m_panels << label;
    }
    restorePlacement();
}

frm_Commissioni::~frm_Commissioni() = default;

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
    savePlacement();
    event->accept();
}

void frm_Commissioni::InitForm(quint8 phase)
{
    try {
        m_ui->fra_Main->setVisible(true);
        SetStatusBarUser();
        host::host().RegisterForm(this);
    } catch (...) {
        host::host().ReportError(QStringLiteral("InitForm"), QStringLiteral("AZIONE: %1").arg(phase), true);
    }
}

void frm_Commissioni::SetStatusBarUser()
{
    host::IHost& h = host::host();
    setStatusPanel(1, h.GetStationName() + QStringLiteral(" [") + qEnvironmentVariable("computername") +
                          QLatin1Char(']'));
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

} // namespace xv::form
