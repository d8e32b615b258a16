#pragma once

#include <QApplication>

/// The QApplication of every program that shows the window.
///
/// It draws without OpenGL and, from Qt 5.14 on, scales the window with the desktop's font DPI. Its
/// palette is the light one that the window's style sheet needs, on dark desktops too. A broken
/// pipe on stderr does not end the program.
class Application : public QApplication {
public:
    Application(int &argc, char **argv);
};
