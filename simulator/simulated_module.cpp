#include "simulated_module.h"

namespace simulator {

namespace {

// Long enough for the client to read what was sent before the line hangs up.
constexpr int hangUpDelayMs = 50;

// An escape sequence, a NUL in the middle, and bytes that are not UTF-8.
const char noiseHex[] = "a71b5b33316d3f00ffc3288007fe9c41";

} // namespace

SimulatedModule::SimulatedModule(const Options &options)
    : faults(options.faults)
    , restartMs(options.restartMs)
    , moduleKind(options.kind)
    , values(factoryValues(options.kind))
    , line(options.linkPath)
    , timerContext(std::make_unique<QObject>())
{
    restartTimer.setSingleShot(true);
    connect(&restartTimer, &QTimer::timeout, this, &SimulatedModule::reconnect);
    connect(&floodTimer, &QTimer::timeout, this, &SimulatedModule::flood);
    connect(&line, &PtyLine::received, this, &SimulatedModule::handleCommand);
    connect(&line, &PtyLine::wasRead, this, &SimulatedModule::sendNext);
}

SimulatedModule::~SimulatedModule() = default;

bool SimulatedModule::start()
{
    return line.open();
}

void SimulatedModule::setValue(const QByteArray &query, const QByteArray &value)
{
    if (values.contains(query))
        values[query] = value;
}

void SimulatedModule::send(const QByteArray &bytes)
{
    line.write(bytes);
}

void SimulatedModule::hangUp()
{
    if (!line.isOpen())
        return;
    timerContext = std::make_unique<QObject>();
    unsent.clear();
    line.hangUp();
    emit disconnected();
}

void SimulatedModule::reconnect()
{
    restartTimer.stop();
    if (line.isOpen() || !line.open())
        return;
    restarting = false;
    emit reconnected();
}

void SimulatedModule::handleCommand(const QByteArray &bytes)
{
    if (restarting)
        return;
    emit commandReceived(bytes);
    if (faults.hangUpAfter > 0 && --faults.hangUpAfter == 0)
        hangUp();
    if (faults.floodMs > 0 && !floodTimer.isActive()) {
        floodEnd.setRemainingTime(faults.floodMs);
        floodTimer.start(0);
    }
    // A slot of commandReceived() may have hung up as well.
    if (line.isOpen())
        execute(parseCommand(moduleKind, bytes));
}

void SimulatedModule::execute(const Command &command)
{
    switch (command.type) {
    case Command::Type::Query:
        reply(queryReply(command.query,
                         faults.reportedValues.value(command.query, values[command.query])));
        break;
    case Command::Type::Write:
        if (command.query == faults.refuse) {
            reply(refusal(moduleKind));
        } else {
            values[command.query] = command.value;
            reply(acknowledgement(moduleKind));
        }
        break;
    case Command::Type::FactoryReset:
        values = factoryValues(moduleKind);
        restart();
        break;
    case Command::Type::Restart:
        restart();
        break;
    case Command::Type::Invalid:
        reply(refusal(moduleKind));
        break;
    }
}

void SimulatedModule::reply(const QByteArray &bytes)
{
    if (faults.silent)
        return;
    QByteArrayList deliveries;
    if (faults.garbage)
        deliveries.append(QByteArray::fromHex(noiseHex));
    if (faults.empty)
        deliveries.append("\r\n");
    const auto firstPart = faults.split ? bytes.size() / 2 : 0;
    if (firstPart > 0)
        deliveries.append(bytes.left(firstPart));
    deliveries.append(bytes.mid(firstPart));

    // Coarse timers may fire together and so merge replies.
    QTimer::singleShot(faults.delayMs, Qt::PreciseTimer, timerContext.get(), [this, deliveries] {
        const bool waiting = !unsent.isEmpty();
        unsent += deliveries;
        if (!waiting)
            sendNext();
    });
}

void SimulatedModule::sendNext()
{
    if (unsent.isEmpty())
        return;
    const QByteArray delivery = unsent.takeFirst();
    send(delivery);
    emit deliverySent(delivery);
}

void SimulatedModule::flood()
{
    // Without NUL, because each delivery that begins with it opens a message box.
    if (floodEnd.hasExpired() || !line.isOpen())
        floodTimer.stop();
    else
        send(QByteArray::fromHex(noiseHex).replace('\0', '?').repeated(256));
}

void SimulatedModule::restart()
{
    restarting = true;
    QTimer::singleShot(hangUpDelayMs, timerContext.get(), [this] {
        restartTimer.start(restartMs);
        hangUp();
    });
}

} // namespace simulator
