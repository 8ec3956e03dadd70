#pragma once

#include "Views/Components/SectionPage.h"

class ProgressLine;
class QVBoxLayout;
class SectionHeader;
class StatePage;
class StatusLine;
class Theme;

/// The frame of a section's page: header, a thin line that moves while data is refreshed, the content or what stands
/// in its place, and the status line. Nothing jumps when the content gives way to a message.
class SectionScaffold : public SectionPage
{
    Q_OBJECT

public:
    /// The scaffold owns `content`.
    SectionScaffold(const Theme &theme, const QString &title, QWidget *content, QWidget *parent = nullptr);

    SectionHeader &header() const { return *m_header; }

    StatePage &page() const { return *m_page; }

    StatusLine &status() const { return *m_status; }

    /// A line of the section's own between header and content, for instance more filters or a result.
    void addBar(QWidget *bar);

    /// A refresh of what is on show is under way.
    void setRefreshing(bool isRefreshing);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    QVBoxLayout *m_column;
    SectionHeader *m_header;
    ProgressLine *m_progress; // on the header's lower edge
    StatePage *m_page;
    StatusLine *m_status;
};
