#pragma once

#include "App/CommandLine.h"

#include <QObject>
#include <memory>

class AppDelegate;
class ContentView;
class Theme;
struct AppState;

/// The program: makes every object that there is one of, hands each to whoever needs it, and shows the window.
class TarnwellApp : public QObject
{
    Q_OBJECT

public:
    /// Needs a QApplication. Reads the settings and the stored servers; starts nothing else.
    explicit TarnwellApp(const CommandLine &line);
    ~TarnwellApp() override;

    /// Shows the window, and begins what the command line asks for.
    void start();

    ContentView &window() const;
    Theme &theme() const;
    const AppState &state() const;

private:
    struct Objects;
    void wire();
    void afterFirstPaint();

    CommandLine m_line;
    std::unique_ptr<Objects> m_objects;
};
