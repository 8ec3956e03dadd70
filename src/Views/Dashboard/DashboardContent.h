#pragma once

#include <QList>
#include <QScrollArea>

class Card;
class Disclosure;
class DashboardViewModel;
class KeyValueGrid;
class QVBoxLayout;
class TextLabel;
class Theme;
class UsageBar;
struct SystemInfo;

/// What the dashboard shows of a server whose facts are known: two cards, and three sections that open and close.
class DashboardContent : public QScrollArea
{
    Q_OBJECT

public:
    /// File systems that get a line of their own; a server may tell of any number.
    static constexpr qsizetype kMostLines = 200;

    /// Both outlive it.
    DashboardContent(const Theme &theme, DashboardViewModel &model, QWidget *parent = nullptr);

    KeyValueGrid &facts() const { return *m_facts; }

    const QList<UsageBar *> &fileSystems() const { return m_fileSystems; }

    /// What stands above the cards when something failed; empty otherwise.
    QString trouble() const;

    /// One of DashboardViewModel's keys.
    Disclosure &section(const QString &key) const;

private:
    QWidget *makeCards(QWidget *parent);
    void addSection(QVBoxLayout &column, const QString &key, Disclosure *section);
    void update();
    void showFacts();
    void showFileSystems(const SystemInfo &info);
    void followSections();

    const Theme &m_theme;
    DashboardViewModel &m_model;
    TextLabel *m_trouble;
    Card *m_information = nullptr;
    KeyValueGrid *m_facts = nullptr;
    Card *m_fileSystemsCard = nullptr;
    QList<UsageBar *> m_fileSystems;
    TextLabel *m_moreFileSystems = nullptr;
    QList<std::pair<QString, Disclosure *>> m_sections;
};
