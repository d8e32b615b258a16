#include "window_fixture.h"

#include <QComboBox>
#include <QLineEdit>
#include <QLoggingCategory>
#include <QThread>

#include <algorithm>
#include <functional>

#include <poll.h>

QString nameOf(Kind kind)
{
    const char *names[] = {"Modbus TCP-RTU", "Modbus RTU-TCP", "Modbus universal"};
    return names[static_cast<int>(kind)];
}

void addKindRows()
{
    QTest::addColumn<Kind>("kind");
    for (const Kind kind : allKinds)
        QTest::newRow(qPrintable(nameOf(kind))) << kind;
}

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(none)");
}

QList<QByteArrayList> tableOf(const QString &file)
{
    QList<QByteArrayList> rows;
    for (const QByteArray &line : contentOf(TEST_DATA + file).split('\n')) {
        if (line.isEmpty() || line.startsWith('#'))
            continue;
        rows.append(QByteArrayList());
        for (const QByteArray &cell : line.split('|'))
            rows.last().append(QByteArray::fromPercentEncoding(cell));
    }
    return rows;
}

QList<QByteArrayList> rowsOf(const QString &file, Kind kind)
{
    QList<QByteArrayList> rows;
    for (const QByteArrayList &row : tableOf(file)) {
        if (row[0].contains(QByteArray::number(static_cast<int>(kind))))
            rows.append(row.mid(1));
    }
    return rows;
}

void addRowsOf(const QString &file)
{
    QTest::addColumn<Kind>("kind");
    QTest::addColumn<QByteArrayList>("row");
    for (const Kind kind : allKinds) {
        for (QByteArrayList row : rowsOf(file, kind)) {
            const QByteArray name = nameOf(kind).toUtf8() + ' ' + row[0] + ' ' + row[1];
            for (QByteArray &cell : row)
                cell = expand(cell, kind);
            QTest::newRow(name) << kind << row;
        }
    }
}

QVector<ParameterCase> parametersOf(Kind kind, bool readOnlyToo)
{
    QVector<ParameterCase> parameters;
    for (const QByteArrayList &row : rowsOf("parameters.txt", kind)) {
        if (readOnlyToo || !row[5].isEmpty())
            parameters.append({row[0], row[1], row[2], row[3], row[4].toInt(), row[5], row[6]});
    }
    return parameters;
}

QStringList fieldsOf(Kind kind)
{
    QStringList fields;
    for (const ParameterCase &parameter : parametersOf(kind))
        fields.append(parameter.widget);
    return fields;
}

QByteArrayList writeCommandsOf(Kind kind)
{
    QByteArrayList commands;
    for (const ParameterCase &write : parametersOf(kind, false))
        commands.append(write.command);
    return commands << (kind == Kind::Universal ? "reset" : "RESET");
}

QByteArray acknowledgementOf(Kind kind)
{
    return kind == Kind::Universal ? "ok" : "OK";
}

QByteArray expand(QByteArray text, Kind kind)
{
    for (const QByteArrayList &row : tableOf("texts.txt"))
        text.replace('<' + row[0] + '>', row[1]);
    const QStringList all = fieldsOf(Kind::Universal);
    QStringList universal = all;
    for (const QString &field : fieldsOf(Kind::RtuTcp))
        universal.removeAll(field);
    return text.replace("<kind>", nameOf(kind).toUtf8())
        .replace("<ok>", acknowledgementOf(kind))
        .replace("<all>", all.join(' ').toUtf8())
        .replace("<universal>", universal.join(' ').toUtf8());
}

static constexpr int limitMs = 5000;

WindowFixture::WindowFixture(Kind kind)
    : module(simulator::Options{kind})
{
    QLoggingCategory::setFilterRules("default.debug=false\ndefault.warning=false");
    module.faults.delayMs = 1;
    module.restartMs = 50;
    connect(&module, &simulator::SimulatedModule::commandReceived, this,
            [this](const QByteArray &command) { commands.append(command); });
    if (!module.start())
        qFatal("%s", qPrintable(module.errorString()));
    choosePort(module.portPath());
    find<QComboBox>("conbox0")->setCurrentIndex(static_cast<int>(kind));
    window.show();
}

void WindowFixture::connectAndFillForm()
{
    module.faults.silent = true;
    click("connect");
    click("scan_parameters"); // a stopped read enables writes
    click("scan_parameters");
    for (const ParameterCase &parameter : parametersOf(Kind::Universal))
        enter(parameter.widget, parameter.inForm);
}

QString WindowFixture::state()
{
    QStringList state{text("statusbar"), text("connect"), text("scan_parameters"),
                      text("applyButton")};
    for (int i = 0; i < timers.size(); ++i) {
        if (timers[i]->isActive())
            state.append(i % 2 == 0 ? "read" : "write");
    }
    if (find<QWidget>("statusbar")->findChild<QTimer *>())
        state.append("a status that does not stay");
    const bool connected = text("connect") == "Отсоединиться";
    const QStringList enabledWhenConnected{"scan_parameters", "applyButton", "Reset",
                                           "reset_allparameters"};
    for (const QString &name :
         enabledWhenConnected + QStringList{"conbox0", "serialPortInfoListBox", "scanport"}) {
        if (isEnabled(name) != (connected == enabledWhenConnected.contains(name)))
            state.append(name);
    }
    return state.join(", ");
}

QTimer *WindowFixture::activeTimer()
{
    const auto timer = std::find_if(timers.begin(), timers.end(), std::mem_fn(&QTimer::isActive));
    return timer == timers.end() ? nullptr : *timer;
}

QString WindowFixture::known(const QByteArray &name) const
{
    return expand('<' + name + '>', module.kind());
}

QString WindowFixture::markOf(const QString &field)
{
    return marks.key(mark(field), mark(field));
}

QString WindowFixture::shown(const QString &field)
{
    return field + ": " + text(field) + ", " + markOf(field);
}

void WindowFixture::markAll()
{
    for (const QString &field : fieldsOf(Kind::Universal))
        find<QWidget>(field)->setStyleSheet(marks["green"]);
}

QStringList WindowFixture::marked(const QString &mark)
{
    return fieldsWhere([&](const QString &field) {
        return mark.isEmpty() ? !markOf(field).isEmpty() : markOf(field) == mark;
    });
}

QStringList WindowFixture::filled()
{
    return fieldsWhere([this](const QString &field) { return !text(field).isEmpty(); });
}

QStringList WindowFixture::fieldsWhere(const std::function<bool(const QString &)> &holds)
{
    QStringList fields = fieldsOf(Kind::Universal);
    fields.erase(std::remove_if(fields.begin(), fields.end(), std::not_fn(holds)), fields.end());
    return fields;
}

void WindowFixture::start(const QString &button)
{
    click(button);
    QVERIFY(activeTimer());
    QCOMPARE(activeTimer()->interval(), 1000);
    setTick(oneHourMs);
}

void WindowFixture::tick(int count)
{
    for (; count > 0 && activeTimer(); --count) {
        QTimerEvent event(activeTimer()->timerId());
        QCoreApplication::sendEvent(activeTimer(), &event);
    }
}

bool WindowFixture::tickAndAwaitCommand()
{
    const auto before = commands.size();
    tick();
    return waitUntil([&] { return commands.size() > before; }, limitMs);
}

bool WindowFixture::deliver(const QByteArray &bytes)
{
    module.send(bytes);
    return hasUnread(limitMs) && waitUntil([this] { return !hasUnread(0); }, limitMs);
}

bool WindowFixture::deliverWithTick(const QByteArray &bytes)
{
    QTimer *timer = activeTimer();
    timer->setInterval(1);
    module.send(bytes);
    const bool arrived = hasUnread(limitMs);
    QThread::msleep(10);
    QCoreApplication::processEvents();
    if (timer->isActive())
        timer->setInterval(oneHourMs);
    return arrived && waitUntil([this] { return !hasUnread(0); }, limitMs);
}

bool WindowFixture::writeRows(int count)
{
    for (int row = 0; row < count; ++row) {
        if (!tickAndAwaitCommand() || !deliver(acknowledgementOf(module.kind())))
            return false;
        tick();
    }
    return true;
}

bool WindowFixture::hasUnread(int waitMs)
{
    pollfd line{module.slaveFd(), POLLIN, 0};
    return poll(&line, 1, waitMs) == 1 && (line.revents & POLLIN) != 0;
}
