#pragma once

#include <QDialog>
#include <QList>
#include <QUrl>

class Theme;

/// What the program is: its name, version and licence, and where to turn to. It closes by Escape and deletes itself.
class AboutView : public QDialog
{
    Q_OBJECT

public:
    struct Link {
        QString text;
        QUrl target;
    };

    /// The name and the version are the application's.
    AboutView(const Theme &theme, const QList<Link> &links, QWidget *parent);
};
