#include "first_frame.h"

#include <QMainWindow>

int main(int argc, char *argv[])
{
    FirstFrameApplication application(argc, argv);
    QMainWindow window;
    window.show();
    return QApplication::exec();
}
