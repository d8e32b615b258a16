#include "application.h"
#include "first_frame.h"
#include "mainwindow.h"

// As the program itself starts, line by line.
int main(int argc, char *argv[])
{
    prepareApplication();
    FirstFrameApplication application(argc, argv);
    dressApplication();
    MainWindow window;
    window.setFixedSize(MainWindow::startSize);
    window.show();
    return QApplication::exec();
}
