#include "mainwindow.h"

#include <QApplication>

int main(int argc, char *argv[])
{
    QApplication application(argc, argv);
    MainWindow window;
    window.setFixedSize(754, 550);
    window.show();
    return QApplication::exec();
}
