#pragma once

#include "Views/Components/SectionPage.h"

#include <QPointer>

class AlertDialog;
class DashboardContent;
class DashboardHeader;
class DashboardViewModel;
class ProgressLine;
class SecretForm;
class StatePage;
class Theme;

/// The dashboard of one server, laid out from its view model.
class DashboardView : public SectionPage
{
    Q_OBJECT

public:
    /// Both outlive the view.
    DashboardView(const Theme &theme, DashboardViewModel &model, QWidget *parent = nullptr);

    DashboardHeader &header() const { return *m_header; }

    StatePage &page() const { return *m_page; }

    DashboardContent &content() const { return *m_content; }

    /// What is asked at the moment, if anything: "Connection Failed", or whether to disconnect.
    AlertDialog *connectionAlert() const;
    AlertDialog *disconnectAlert() const;

    /// Where a secret is typed, in the alert about a failed connection; null when none is wanted.
    SecretForm *secretForm() const;

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void update();
    void showPage();
    void followAlerts();
    bool mayInterrupt();
    void showConnectionAlert();
    void showDisconnectAlert();

    const Theme &m_theme;
    DashboardViewModel &m_model;
    DashboardHeader *m_header;
    ProgressLine *m_progress;
    DashboardContent *m_content;
    StatePage *m_page;
    QPointer<AlertDialog> m_connectionAlert;
    QPointer<AlertDialog> m_disconnectAlert;
    QPointer<SecretForm> m_secretForm;
    QPointer<QWidget> m_awaited; // a window or a menu that the alert must not open over
};
