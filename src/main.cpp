#include "mainwindow.h"

#include <QApplication>

int main(int argc, char *argv[])
{
    // Nothing here needs OpenGL; without this the X11 plugin loads it with all its libraries.
    QCoreApplication::setAttribute(Qt::AA_ForceRasterWidgets);
    QApplication application(argc, argv);
    MainWindow window;
    window.setFixedSize(MainWindow::startSize);
    window.show();
    return QApplication::exec();
}
