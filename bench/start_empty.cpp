// The baselines: an empty window with the program's Application, or with Qt's defaults.

#include "application.h"

#include <QMainWindow>

int main(int argc, char *argv[])
{
#ifdef DEFAULT_WINDOW
    const QApplication application(argc, argv);
#else
    const Application application(argc, argv);
#endif
    QMainWindow window;
    window.show();
    return QApplication::exec();
}
