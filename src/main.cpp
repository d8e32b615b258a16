#include "application.h"
#include "mainwindow.h"

int main(int argc, char *argv[])
{
    Application application(argc, argv);
    MainWindow window;
    window.setFixedSize(MainWindow::startSize);
    window.show();
    return Application::exec();
}
