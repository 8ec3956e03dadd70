#pragma once

#include "Views/Shell/ServerListModel.h"

#include <QPointer>
#include <QPushButton>

class ContentViewModel;
class QUuid;
class ServerPopup;
class ServerStore;
class Theme;
struct Server;

/// The name of the selected server; pressing it opens a list of all servers.
class ServerMenuButton : public QPushButton
{
    Q_OBJECT

public:
    /// All of it outlives the button.
    ServerMenuButton(const Theme &theme, ServerStore &store, ContentViewModel &model, QWidget *parent = nullptr);

    void openList();

    /// The list, while it is open.
    ServerPopup *popup() const;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

Q_SIGNALS:
    /// Of a server in the list, at a place on the screen.
    void menuRequested(const QUuid &server, const QPoint &place);

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    void update();
    QString name() const;
    ServerListModel::State stateOf(const Server &server) const;
    void followConnecting(const QUuid &server);

    const Theme &m_theme;
    ServerStore &m_store;
    ContentViewModel &m_model;
    QPointer<ServerPopup> m_popup;
};
