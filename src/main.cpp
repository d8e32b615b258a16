#include "application.h"
#include "mainwindow.h"

#include <QApplication>

int main(int argc, char *argv[])
{
    prepareApplication();
    QApplication application(argc, argv);
    dressApplication();
    MainWindow window;
    window.setFixedSize(MainWindow::startSize);
    window.show();
    return QApplication::exec();
}
