#include "Views/Dashboard/DashboardView.h"

#include "Views/Components/AlertDialog.h"
#include "Views/Components/Labels.h"
#include "Views/Components/ProgressLine.h"
#include "Views/Components/StatePage.h"
#include "Views/Dashboard/DashboardContent.h"
#include "Views/Dashboard/DashboardHeader.h"
#include "Views/Dashboard/DashboardViewModel.h"
#include "Views/Dashboard/SecretForm.h"

#include <QApplication>
#include <QEvent>
#include <QPushButton>
#include <QVBoxLayout>

using WantedSecret = DashboardViewModel::WantedSecret;

DashboardView::DashboardView(const Theme &theme, DashboardViewModel &model, QWidget *parent)
    : SectionPage(parent)
    , m_theme(theme)
    , m_model(model)
    , m_header(new DashboardHeader(theme, model, this))
    , m_progress(new ProgressLine(theme, this))
    , m_content(new DashboardContent(theme, model, this))
    , m_page(new StatePage(theme, m_content, this))
{
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(m_header);
    column->addWidget(m_progress);
    column->addWidget(m_page, 1);

    connect(this, &SectionPage::activeChanged, this, &DashboardView::followAlerts);
    connect(&model, &DashboardViewModel::changed, this, &DashboardView::update);
    connect(m_page, &StatePage::retryRequested, &model, [&model] {
        if (model.isConnected()) {
            model.refreshSystemInfo();
        } else {
            model.initiateConnection();
        }
    });
    update();
}

AlertDialog *DashboardView::connectionAlert() const
{
    return m_connectionAlert;
}

AlertDialog *DashboardView::disconnectAlert() const
{
    return m_disconnectAlert;
}

SecretForm *DashboardView::secretForm() const
{
    return m_secretForm;
}

void DashboardView::update()
{
    m_progress->setActive(m_model.isRefreshing() || m_model.isConnecting());
    showPage();
    followAlerts();
}

void DashboardView::showPage()
{
    const QString name = m_model.server().name;
    if (m_model.systemInfo()) {
        m_page->showContent();
    } else if (m_model.isConnected() && m_model.isRefreshing()) {
        m_page->showLoading({tr("Loading system information..."), tr("Gathering server details via SSH..."), {}});
    } else if (m_model.isConnected()) {
        m_page->showError({tr("No System Information"), tr("Unable to retrieve system information from the server"),
                           m_model.refreshError().value_or(QString())});
    } else if (m_model.isConnecting()) {
        m_page->showLoading(
            {tr("Connecting..."), tr("Establishing connection to %1 to view system information").arg(name), {}});
    } else {
        m_page->showEmpty({.title = tr("Not Connected"),
                           .text = tr("Connect to %1 to view system information").arg(name),
                           .detail = m_model.connectionErrorDetail(),
                           .explanation = m_model.connectionErrorMessage()},
                          tr("Connect"));
    }
}

// An alert that comes by itself waits until nothing else is asked and its page is on show: it would take the keyboard
// away from what is being typed.
bool DashboardView::mayInterrupt()
{
    QWidget *const modal = QApplication::activeModalWidget();
    QWidget *const other = modal ? modal : QApplication::activePopupWidget();
    if (other && other != m_awaited) {
        m_awaited = other;
        other->installEventFilter(this);
        connect(other, &QObject::destroyed, this, &DashboardView::followAlerts, Qt::QueuedConnection);
    }
    return isActive() && !other;
}

bool DashboardView::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == m_awaited && event->type() == QEvent::Hide) {
        m_awaited->removeEventFilter(this);
        m_awaited.clear();
        QMetaObject::invokeMethod(this, &DashboardView::followAlerts, Qt::QueuedConnection);
    }
    return SectionPage::eventFilter(watched, event);
}

void DashboardView::followAlerts()
{
    if (m_model.showingConnectionError() && !m_connectionAlert && mayInterrupt()) {
        showConnectionAlert();
    } else if (!m_model.showingConnectionError() && m_connectionAlert) {
        m_connectionAlert->reject();
    }
    if (m_model.showingDisconnectAlert() && !m_disconnectAlert) {
        showDisconnectAlert();
    } else if (!m_model.showingDisconnectAlert() && m_disconnectAlert) {
        m_disconnectAlert->reject();
    }
}

void DashboardView::showConnectionAlert()
{
    auto *extra = new QWidget;
    auto *column = new QVBoxLayout(extra);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(12);
    auto *detail =
        new TextLabel(m_theme, TextStyle::Mono, m_model.connectionErrorDetail(), TextLabel::Shade::Dim, extra);
    detail->setWordWrap(true);
    detail->setSelectable();
    detail->setAccessibleName(tr("What ssh said"));
    detail->setVisible(!m_model.connectionErrorDetail().isEmpty());
    column->addWidget(detail);
    const WantedSecret wanted = m_model.wantedSecret();
    if (wanted != WantedSecret::None) {
        m_secretForm = new SecretForm(extra);
        m_secretForm->setSecretName(wanted == WantedSecret::Passphrase ? tr("Passphrase") : tr("Password"));
        column->addWidget(m_secretForm);
    }

    m_connectionAlert = new AlertDialog(m_theme,
                                        {.title = tr("Connection Failed"),
                                         .text = m_model.connectionErrorMessage(),
                                         .buttons = {{tr("OK"), ButtonKind::Normal}},
                                         .extra = extra},
                                        this);
    connect(m_connectionAlert, &AlertDialog::answered, this, [this] {
        m_connectionAlert.clear(); // it may be needed again before this one is gone
        m_secretForm.clear();
        m_model.dismissConnectionError();
    });
    m_connectionAlert->open();
    if (m_secretForm) {
        connect(m_secretForm, &SecretForm::submitted, &m_model,
                [this](const QString &secret) { m_model.initiateConnection(secret); });
        if (m_model.isAttemptAskedFor()) { // else the keyboard may be meant for something else
            m_secretForm->setFocus();
        }
    }
}

void DashboardView::showDisconnectAlert()
{
    const QString name = m_model.server().name;
    m_disconnectAlert = new AlertDialog(
        m_theme,
        {.title = tr("Disconnect from Server"),
         .text = tr("Are you sure you want to disconnect from %1? Any existing terminal sessions will be closed.")
                     .arg(name),
         .buttons = {{tr("Cancel"), ButtonKind::Normal}, {tr("Disconnect"), ButtonKind::Danger}}},
        this);
    connect(m_disconnectAlert, &AlertDialog::answered, this, [this](qsizetype button) {
        m_disconnectAlert.clear();
        if (button == 1) {
            m_model.confirmDisconnect();
        } else {
            m_model.setShowingDisconnectAlert(false);
        }
    });
    m_disconnectAlert->open();
}
