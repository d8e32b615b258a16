// The baseline: an empty window with the program's Application.

#include "application.h"

#include <QMainWindow>

int main(int argc, char *argv[])
{
    const Application application(argc, argv);
    QMainWindow window;
    window.show();
    return Application::exec();
}
