#pragma once

#include <QList>
#include <QWidget>

class Card;
class DashboardHeader;
class DashboardViewModel;
class KeyValueGrid;
class ProgressLine;
class QScrollArea;
class SecretForm;
class StatePage;
class TextLabel;
class Theme;
class UsageBar;

/// The dashboard of one server, laid out from its view model.
class DashboardView : public QWidget
{
    Q_OBJECT

public:
    /// Both outlive the view.
    DashboardView(const Theme &theme, DashboardViewModel &model, QWidget *parent = nullptr);

    DashboardHeader &header() const { return *m_header; }

    StatePage &page() const { return *m_page; }

    KeyValueGrid &facts() const { return *m_facts; }

    const QList<UsageBar *> &fileSystems() const { return m_fileSystems; }

    SecretForm &secretForm() const { return *m_secretForm; }

private:
    QWidget *makeContent();
    void update();
    void showPage();
    void showConnectionError();
    void showFacts();
    void retry();

    const Theme &m_theme;
    DashboardViewModel &m_model;
    DashboardHeader *m_header;
    ProgressLine *m_progress;
    KeyValueGrid *m_facts;
    TextLabel *m_refreshError;
    Card *m_fileSystemsCard;
    QList<UsageBar *> m_fileSystems;
    SecretForm *m_secretForm;
    StatePage *m_page;
};
