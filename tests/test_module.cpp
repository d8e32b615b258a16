// The simulated module by itself, and the command module-simulator.

#include "window_fixture.h"

#include <QProcess>

#include <csignal>

#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

class TestModule : public QObject {
    Q_OBJECT

    /// The replies of a module to these commands, without line ends.
    static QByteArrayList talk(simulator::SimulatedModule *module, const QByteArrayList &commands)
    {
        QByteArrayList replies;
        QSerialPort port(module->portPath());
        port.open(QIODevice::ReadWrite);
        bool isOff = false; // possibly too briefly to be polled
        connect(module, &simulator::SimulatedModule::disconnected, &port, [&] { isOff = true; });
        const auto answered = [&] { return port.bytesAvailable() > 0 || isOff; };
        for (const QByteArray &command : commands) {
            port.write(command);
            replies.append(QTest::qWaitFor(answered) ? port.readAll().trimmed() : "(nothing)");
        }
        return replies;
    }

private slots:
    void checksValues()
    {
        for (const QByteArrayList &row : tableOf("values.txt")) {
            for (const bool good : {true, false}) {
                for (const QByteArray &value : row[good ? 2 : 3].split(',')) {
                    const QByteArray bytes = row[1] + value;
                    const auto command = simulator::parseCommand(allKinds[row[0].toInt()], bytes);
                    QVERIFY2((command.type == simulator::Command::Type::Write) == good, bytes);
                }
            }
        }
    }

    void talksInItsDialect()
    {
        for (const Kind kind : allKinds) {
            const bool universal = kind == Kind::Universal;
            simulator::SimulatedModule module(simulator::Options{kind});
            module.restartMs = 1;
            QVERIFY(module.start());
            const QByteArray yes = universal ? "ok" : "OK";
            const QByteArray no = universal ? "?" : "ERROR";
            QCOMPARE(
                talk(&module, {"ip", "CHANGE IP:1.2.3.4", "ip", "CHANGE IP:1.2.3", "Ip", "RESET"}),
                (QByteArrayList{"ip 192.168.0.1", yes, "ip 1.2.3.4", no, no, ""}));
            QTRY_VERIFY(QFile::exists(module.portPath()));
            // Values survive a restart, but not a factory reset.
            QCOMPARE(talk(&module, {"ip", "LOAD SETTING:DEFAULT"}),
                     (QByteArrayList{"ip 1.2.3.4", universal ? "" : no}));
            QTRY_VERIFY(QFile::exists(module.portPath()));
            QCOMPARE(talk(&module, {"ip"}),
                     QByteArrayList{universal ? "ip 192.168.0.1" : "ip 1.2.3.4"});
        }
    }

    void injectsFaults()
    {
        simulator::SimulatedModule module(simulator::Options{Kind::Universal});
        QVERIFY(module.start());
        const auto sayAll = [&](auto count) {
            QByteArrayList replies;
            QSerialPort port(module.portPath());
            port.open(QIODevice::ReadWrite);
            connect(&port, &QSerialPort::readyRead, &port, [&] { replies.append(port.readAll()); });
            port.write("PORT TCP");
            if (QTest::qWaitFor([&] { return replies.size() >= count; }))
                QTest::qWait(50); // nothing else may arrive
            return replies;
        };
        using Faults = simulator::Faults;
        const QByteArray good = "PORT TCP 502\r\n";
        const QVector<QPair<bool Faults::*, QByteArrayList>> cases{
            {&Faults::split, {"PORT TC", "P 502\r\n"}},
            {&Faults::empty, {"\r\n", good}},
            {&Faults::garbage, {QByteArray::fromHex("a71b5b33316d3f00ffc3288007fe9c41"), good}},
            {&Faults::silent, {}},
        };
        for (const auto &[fault, replies] : cases) {
            module.faults = {};
            module.faults.*fault = true;
            QCOMPARE(sayAll(replies.size()), replies);
        }
        module.faults = {};
        module.faults.answers["PORT TCP"] = "x";
        QCOMPARE(sayAll(1), QByteArrayList{"PORT TCP x\r\n"});
        module.faults.hangUpAfter = 1;
        QCOMPARE(sayAll(0), QByteArrayList());
        QVERIFY(!QFile::exists(module.portPath()));
        module.reconnect();
        module.faults = {};
        module.faults.refuse = "PORT TCP";
        QCOMPARE(talk(&module, {"CHANGE PORT TCP:10000", "PORT TCP"}),
                 (QByteArrayList{"?", good.trimmed()}));
    }

    void clearsExclusiveModeOfAKilledClient()
    {
        simulator::SimulatedModule module(simulator::Options{});
        QVERIFY(module.start());
        const int killed = open(module.portPath().toUtf8(), O_RDWR | O_NOCTTY);
        int exclusive = 0;
        QVERIFY(ioctl(killed, TIOCEXCL) == 0);
        if (ioctl(killed, TIOCGEXCL, &exclusive) != 0)
            QSKIP("the emulator does not know TIOCGEXCL");
        QVERIFY(exclusive != 0 && close(killed) == 0); // leaves exclusive access behind
        QTRY_VERIFY(ioctl(module.slaveFd(), TIOCGEXCL, &exclusive) == 0 && exclusive == 0);
    }

    void reportsInvalidOptions()
    {
        for (const QByteArrayList &row : tableOf("options.txt")) {
            QStringList options;
            for (const QByteArray &option : row.mid(1))
                options.append(option);
            QProcess simulator;
            if (!begin(&simulator, options))
                QSKIP("an emulated program cannot start another one");
            QVERIFY(simulator.waitForFinished());
            QVERIFY2(simulator.exitCode() == row[0].toInt(), row.join('|'));
            const bool isHelp = simulator.exitCode() == 0;
            QCOMPARE(simulator.readAllStandardError().startsWith("module-simulator: "), !isHelp);
            QCOMPARE(simulator.readAllStandardOutput().isEmpty(), !isHelp);
        }
    }

    void removesTheLinkOnTermination()
    {
        const QTemporaryDir folder;
        const QString link = folder.filePath("port");
        QVERIFY(QFile::link("/dev/pts/nowhere", link)); // left by a simulator that was killed
        for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
            QProcess simulator;
            if (!begin(&simulator, {"--link", link}))
                QSKIP("an emulated program cannot start another one");
            QVERIFY(simulator.waitForReadyRead());
            QCOMPARE(simulator.readLine().trimmed(), link.toUtf8());
            QVERIFY(QFile::exists(link));
            kill(static_cast<pid_t>(simulator.processId()), signal);
            QVERIFY(simulator.waitForFinished());
            QCOMPARE(simulator.exitCode(), 0);
            QVERIFY(!QFileInfo(link).isSymLink());
        }
    }

private:
    static bool begin(QProcess *simulator, const QStringList &options)
    {
        simulator->start(MODULE_SIMULATOR, options);
        return !QByteArray(MODULE_SIMULATOR).isEmpty();
    }
};

QTEST_MAIN(TestModule)
#include "test_module.moc"
