// SPDX-License-Identifier: MIT
#pragma once

#include "host/HostInterface.h"

#include <functional>
#include <memory>

namespace xv::host {

// The three service objects of the suite, each made the first time it is needed and kept for the run.
IHost& host();
IFormSettings& formSettings();
IListWindow& listWindow();

// Puts other service objects in place (tests, or a start-up with other options); null brings back
// the default, made again on next use.
void setHost(std::unique_ptr<IHost> service);
void setFormSettings(std::unique_ptr<IFormSettings> service);
void setListWindow(std::unique_ptr<IListWindow> service);
void resetServices();
// How the list-window object is made on first use; the host's windows set it at start.
void setListWindowFactory(std::function<std::unique_ptr<IListWindow>()> factory);

// Form settings kept per workstation in an INI file of the data folder.
class IniFormSettings : public IFormSettings
{
public:
    explicit IniFormSettings(QString filePath);
    QString GetSetting(const QString& section, const QString& key, const QString& defaultValue) override;
    void SaveSetting(const QString& section, const QString& key, const QString& value) override;

private:
    QString m_filePath;
};

} // namespace xv::host
