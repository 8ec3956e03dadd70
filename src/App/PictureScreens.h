#pragma once

#include <QByteArray>
#include <QList>
#include <QTemporaryFile>

/// Screens without a display: Qt's offscreen platform with a second screen that has two pixels for one.
class PictureScreens
{
public:
    /// Program arguments that make QApplication use them, for as long as this object lives; none if the description
    /// of the screens cannot be written.
    QList<QByteArray> arguments();

private:
    QTemporaryFile m_description;
};
