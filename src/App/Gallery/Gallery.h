#pragma once

#include <QWidget>

class ModalWindow;
class QVBoxLayout;
class Theme;

/// Every shared component in every state, with invented data.
class Gallery : public QWidget
{
    Q_OBJECT

public:
    explicit Gallery(const Theme &theme, QWidget *parent = nullptr);

    /// All of it as one picture, the windows above it included.
    QImage picture();

private:
    void addButtons();
    void addFields();
    void addForms();
    void addHandledControls();
    void addMarks();
    void addFigures();
    void addCharts();
    void addDisclosures();
    void addHeaders();
    void addPages();
    QVBoxLayout &addGroup(const QString &title);

    const Theme &m_theme;
    QVBoxLayout *m_column;
};

/// A question and a sheet as a section would open them.
namespace GalleryWindows
{

ModalWindow *question(const Theme &theme, QWidget *parent);
ModalWindow *sheet(const Theme &theme, QWidget *parent);

} // namespace GalleryWindows
