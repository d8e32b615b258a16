#include "application.h"

#include <QPalette>

#include <csignal>

#if QT_VERSION < QT_VERSION_CHECK(5, 14, 0)
/// Scale factor of the first screen in QT_SCREEN_SCALE_FACTORS ("2;1" or "name=2;..."). Qt divides
/// the font DPI by it; uncompensated, the window would grow but the text would not.
static double firstScreenFactor()
{
    const QByteArray factors = qgetenv("QT_SCREEN_SCALE_FACTORS");
    const double factor = factors.split(';').first().split('=').last().toDouble();
    return factor > 0 ? factor : 1;
}
#endif

/// Makes the settings that QApplication's constructor reads. Returns argc, so that the
/// constructor's argument list can call it.
static int &prepare(int &argc)
{
    // Ignore SIGPIPE, so that a closed stderr does not end the program.
    std::signal(SIGPIPE, SIG_IGN);
    // Nothing here needs OpenGL. Without this, the X11 plugin loads it with all its libraries.
    QCoreApplication::setAttribute(Qt::AA_ForceRasterWidgets);
    // The window's size is fixed in pixels, so either the window and its text are scaled, or
    // neither. Qt 6 scales both by default.
#if QT_VERSION < QT_VERSION_CHECK(5, 14, 0)
    if (!qEnvironmentVariableIsSet("QT_FONT_DPI"))
        qputenv("QT_FONT_DPI", QByteArray::number(qRound(96 * firstScreenFactor())));
#elif QT_VERSION < QT_VERSION_CHECK(6, 0, 0)
    QCoreApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
    QGuiApplication::setHighDpiScaleFactorRoundingPolicy(
        Qt::HighDpiScaleFactorRoundingPolicy::PassThrough);
#endif
    return argc;
}

Application::Application(int &argc, char **argv)
    : QApplication(prepare(argc), argv)
{
    QPalette palette(QColor("#eeeeee"), QColor("#f5f5f5"));
    // Values that are only shown are lighter than editable ones. Their contrast ratio is at least
    // 4.5:1 on every mark except red. Only black would reach that on red, and a disabled field is
    // rarely marked red.
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        palette.setColor(QPalette::Disabled, role, "#555555");
    // The style sheet highlights selected text in a light colour as well.
    palette.setColor(QPalette::Highlight, "#9cc9f0");
    palette.setColor(QPalette::HighlightedText, Qt::black);
    setPalette(palette);
    // A disabled button can be told from an enabled one at a glance.
    palette.setColor(QPalette::Disabled, QPalette::ButtonText, "#808080");
    setPalette(palette, "QPushButton");
}
