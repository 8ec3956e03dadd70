#pragma once

#include <QPushButton>

class ContentViewModel;
class QMenu;
class ServerStore;
class Theme;
struct Server;

/// The name of the selected server with a menu of all servers.
class ServerMenuButton : public QPushButton
{
    Q_OBJECT

public:
    /// All of it outlives the button.
    ServerMenuButton(const Theme &theme, ServerStore &store, ContentViewModel &model, QWidget *parent = nullptr);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    void update();
    void fillMenu();
    QString name() const;
    QString stateText(const Server &server) const;
    QColor dotColor(const Server &server) const;

    const Theme &m_theme;
    ServerStore &m_store;
    ContentViewModel &m_model;
    QMenu *m_menu;
};
