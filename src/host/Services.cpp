// SPDX-License-Identifier: MIT
#include "Services.h"

#include "common/PrivateFiles.h"
#include "common/RuntimeError.h"
#include "host/Host.h"

#include <QFileInfo>

#include <QSettings>

namespace xv::host {

namespace {

struct Registry
{
    std::unique_ptr<IHost> host;
    std::unique_ptr<IFormSettings> formSettings;
    std::unique_ptr<IListWindow> listWindow;
    std::function<std::unique_ptr<IListWindow>()> listWindowFactory;
};

Registry& registry()
{
    static Registry r;
    return r;
}

} // namespace

IHost& host()
{
    auto& slot = registry().host;
    if (!slot)
        slot = std::make_unique<Host>(HostOptions::fromEnvironment());
    return *slot;
}

IFormSettings& formSettings()
{
    auto& slot = registry().formSettings;
    if (!slot) {
        QString folder = HostOptions::fromEnvironment().dataPath;
        if (!folder.endsWith(QLatin1Char('/')))
            folder += QLatin1Char('/');
        slot = std::make_unique<IniFormSettings>(folder + QStringLiteral("xvelario-finestre.ini"));
    }
    return *slot;
}

IListWindow& listWindow()
{
    auto& slot = registry().listWindow;
    if (!slot) {
        if (!registry().listWindowFactory)
            throw common::RuntimeError(common::ErrorNumber::ActionNotSupported,
                                       QStringLiteral("Nessuna finestra di elenco disponibile"));
        slot = registry().listWindowFactory();
    }
    return *slot;
}

void setHost(std::unique_ptr<IHost> service)
{
    registry().host = std::move(service);
}

void setFormSettings(std::unique_ptr<IFormSettings> service)
{
    registry().formSettings = std::move(service);
}

void setListWindow(std::unique_ptr<IListWindow> service)
{
    registry().listWindow = std::move(service);
}

void setListWindowFactory(std::function<std::unique_ptr<IListWindow>()> factory)
{
    registry().listWindowFactory = std::move(factory);
}

void resetServices()
{
    registry().listWindow.reset();
    registry().formSettings.reset();
    registry().host.reset();
}

IniFormSettings::IniFormSettings(QString filePath) : m_filePath(std::move(filePath)) {}

QString IniFormSettings::GetSetting(const QString& section, const QString& key, const QString& defaultValue)
{
    const QSettings settings(m_filePath, QSettings::IniFormat);
    return settings.value(section + QLatin1Char('/') + key, defaultValue).toString();
}

void IniFormSettings::SaveSetting(const QString& section, const QString& key, const QString& value)
{
    // Made the owner's alone before the first value goes in; later saves keep its mode.
    common::makePrivateFolder(QFileInfo(m_filePath).absolutePath());
    common::makePrivateFile(m_filePath);
    QSettings settings(m_filePath, QSettings::IniFormat);
    settings.setValue(section + QLatin1Char('/') + key, value);
}

} // namespace xv::host
