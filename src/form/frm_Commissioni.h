// SPDX-License-Identifier: MIT
#pragma once

#include <QMainWindow>
#include <QVector>

#include <memory>

class QLabel;

namespace Ui {
class frm_Commissioni;
}

namespace xv::form {

// The order form: the one window of the program.
class frm_Commissioni : public QMainWindow
{
    Q_OBJECT

public:
    explicit frm_Commissioni(QWidget* parent = nullptr);
    ~frm_Commissioni() override;

    // Called once start-up has succeeded, with the phase kept in the form's settings.
    void InitForm(quint8 phase);

    // The text of a status-bar panel, numbered from 1 as the panels are.
    QString statusPanelText(int panel) const;

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void SetStatusBarUser();
    void setStatusPanel(int panel, const QString& text);
    void restorePlacement();
    void savePlacement();

    const std::unique_ptr<Ui::frm_Commissioni> m_ui;
    QVector<QLabel*> m_panels;
};

} // namespace xv::form
