#include "application.h"

#include <QApplication>
#include <QPalette>

#include <csignal>

#if QT_VERSION < QT_VERSION_CHECK(5, 14, 0)
/// As the user or the desktop has set it, by number or by name of the screen. The library takes the
/// letters' dpi through it, so that it would make the window grow and leave them as they are.
static double firstScreenFactor()
{
    const QByteArray factors = qgetenv("QT_SCREEN_SCALE_FACTORS");
    const double factor = factors.split(';').first().split('=').last().toDouble();
    return factor > 0 ? factor : 1;
}
#endif

void prepareApplication()
{
    // That nobody reads the traces any more is no reason to end in the middle of a write.
    std::signal(SIGPIPE, SIG_IGN);
    // Nothing here needs OpenGL; without this the X11 plugin loads it with all its libraries.
    QCoreApplication::setAttribute(Qt::AA_ForceRasterWidgets);
    // Letters must not outgrow the window, whose size is fixed in pixels: either both grow, by
    // whatever factor, or neither. Qt 6 does the former unasked.
#if QT_VERSION < QT_VERSION_CHECK(5, 14, 0)
    if (!qEnvironmentVariableIsSet("QT_FONT_DPI"))
        qputenv("QT_FONT_DPI", QByteArray::number(qRound(96 * firstScreenFactor())));
#elif QT_VERSION < QT_VERSION_CHECK(6, 0, 0)
    QCoreApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
    QGuiApplication::setHighDpiScaleFactorRoundingPolicy(
        Qt::HighDpiScaleFactorRoundingPolicy::PassThrough);
#endif
}

void dressApplication()
{
    QPalette palette(QColor("#eeeeee"), QColor("#f5f5f5"));
    // Lighter than the text that can be edited, and still to be read on every mark.
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        palette.setColor(QPalette::Disabled, role, "#555555");
    // The style sheet marks what is selected in a field with a light colour as well.
    palette.setColor(QPalette::Highlight, "#9cc9f0");
    palette.setColor(QPalette::HighlightedText, Qt::black);
    QApplication::setPalette(palette);
}
