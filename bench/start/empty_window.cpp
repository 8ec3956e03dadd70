// The least that a program with a window costs: an empty one of the size of ours. With the argument "rows", a bare
// list of five names in our font: what Qt asks for the first text, which a program that shows a list cannot go below.

#include "App/StartMeasure.h"
#include "Views/Components/FirstPaint.h"

#include <QApplication>
#include <QListView>
#include <QMainWindow>
#include <QStringListModel>
#include <cstdio>
#include <cstring>

using namespace Qt::StringLiterals;

int main(int argc, char **argv)
{
    const QApplication app(argc, argv);
    QMainWindow window;
    if (argc > 1 && std::strcmp(argv[1], "rows") == 0) {
        auto *list = new QListView;
        list->setFont(QFont(u"Inter"_s));
        list->setModel(
            new QStringListModel({u"server-0"_s, u"server-1"_s, u"server-2"_s, u"server-3"_s, u"server-4"_s}, list));
        window.setCentralWidget(list);
    }
    window.resize(1280, 800);
    new FirstPaint(window, [] {
        std::fputs(qPrintable(StartMeasure::now().line() + u'\n'), stdout);
        QCoreApplication::quit();
    });
    window.show();
    return QApplication::exec();
}
