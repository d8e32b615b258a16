#include "first_frame.h"
#include "mainwindow.h"

// As the program itself starts, line by line.
int main(int argc, char *argv[])
{
    QCoreApplication::setAttribute(Qt::AA_ForceRasterWidgets);
    FirstFrameApplication application(argc, argv);
    MainWindow window;
    window.setFixedSize(MainWindow::startSize);
    window.show();
    return QApplication::exec();
}
