#include "first_frame.h"

#include <QMainWindow>

int main(int argc, char *argv[])
{
    // To be set before there is an application that could look at its arguments.
    if (argc > 3 && qstrcmp(argv[3], "raster") == 0)
        QCoreApplication::setAttribute(Qt::AA_ForceRasterWidgets);
    FirstFrameApplication application(argc, argv);
    QMainWindow window;
    window.show();
    return QApplication::exec();
}
