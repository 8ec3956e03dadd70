#pragma once

#include <QObject>
#include <QTimer>

class ContentView;
class DashboardViewModel;
class ServerStore;
class Theme;

/// Pictures of the real window with the first server's data, light and dark, at both layouts' sizes and one with
/// doubled pixels. The names of the files go to standard output.
class WindowPictures : public QObject
{
    Q_OBJECT

public:
    /// All of it outlives this object.
    WindowPictures(ContentView &window, Theme &theme, ServerStore &store, const QString &directory);

    /// Selects the first server and waits for its facts.
    void start();

Q_SIGNALS:
    /// With the exit code: 1 when the data did not come in time or a file could not be written.
    void finished(int exitCode);

private:
    struct Picture;
    static const QList<Picture> &pictures();
    void check();
    void prepareNext();
    void takeNext();
    void showOnScreen(int pixelRatio);
    void fail(const QString &reason);

    ContentView &m_window;
    Theme &m_theme;
    ServerStore &m_store;
    QString m_directory;
    QTimer m_timeLimit;
    bool m_isDone = false;
    bool m_isWritten = true;
    qsizetype m_next = 0;
};
