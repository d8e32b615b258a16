// Measures the latency of clicks during a read, when a module may flood the window. Prints the
// median and the maximum in µs.

#include "application.h"
#include "ui_driver.h"

#include <QComboBox>
#include <QElapsedTimer>
#include <QLoggingCategory>

#include <algorithm>
#include <cstdio>
#include <stdexcept>

namespace {

constexpr int clicks = 100;
constexpr int pauseMs = 20;

void measure(UiDriver *user, const QString &port)
{
    user->find<QComboBox>("conbox0")->setCurrentIndex(2);
    user->window.show();
    user->choosePort(port);
    user->click("connect");
    user->click("scan_parameters");
    user->waitFor("reply", [user] { return !user->mark("comboBox_mode").isEmpty(); });

    QVector<qint64> waits;
    QElapsedTimer clock;
    while (waits.size() < clicks) {
        clock.start();
        bool answered = false;
        const auto click = [&] {
            user->click("checkBox");
            answered = true;
        };
        QMetaObject::invokeMethod(&user->window, click, Qt::QueuedConnection);
        user->waitFor("answer", [&] { return answered; });
        waits.append(clock.nsecsElapsed() / 1000);
        user->waitFor("pause", [&] { return clock.hasExpired(pauseMs); });
    }
    std::sort(waits.begin(), waits.end());
    std::printf("%lld %lld %s\n", waits[clicks / 2], waits.last(), qVersion());
}

} // namespace

int main(int argc, char *argv[])
{
    Application application(argc, argv);
    QLoggingCategory::setFilterRules("default.debug=false");
    try {
        UiDriver user;
        measure(&user, QCoreApplication::arguments().value(1));
    } catch (const std::runtime_error &error) {
        std::fprintf(stderr, "bench-click-latency: %s\n", error.what());
        return 1;
    }
    return 0;
}
