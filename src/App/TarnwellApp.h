#pragma once

#include "App/CommandLine.h"

#include <QObject>
#include <memory>

class AppDelegate;
class ContentView;
class RuntimeDirectory;
class Theme;
struct AppState;

/// The program: makes every object that there is one of, hands each to whoever needs it, and shows the window.
class TarnwellApp : public QObject
{
    Q_OBJECT

public:
    /// Needs a QApplication. Reads the settings and the stored servers; starts nothing else. `runtimeDirectory`
    /// outlives the program's objects.
    TarnwellApp(const CommandLine &line, RuntimeDirectory &runtimeDirectory);
    ~TarnwellApp() override;

    /// Shows the window, and begins what the command line asks for.
    void start();

    /// Brings the window to the front, with the token that the desktop gave somebody for it (xdg-activation), if any.
    void raiseWindow(const QByteArray &activationToken);

    /// Ends the program whatever is open: unlike a quit, which a window may refuse that has unsaved changes.
    void end();

    ContentView &window() const;
    Theme &theme() const;
    const AppState &state() const;

private:
    struct Objects;
    void wire();
    void openAbout();
    void afterFirstPaint();

    CommandLine m_line;
    std::unique_ptr<Objects> m_objects;
};
