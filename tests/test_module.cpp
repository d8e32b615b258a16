// The simulated module by itself, and the command module-simulator.

#include "window_fixture.h"

#include <QElapsedTimer>
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
            const QByteArray yes = acknowledgementOf(kind);
            const QByteArray no = universal ? "?" : "ERROR";
            COMPARE(
                talk(&module, {"ip", "CHANGE IP:1.2.3.4", "ip", "CHANGE IP:1.2.3", "Ip", "RESET"}),
                (QByteArrayList{"ip 192.168.0.1", yes, "ip 1.2.3.4", no, no, ""}));
            QTRY_VERIFY(QFile::exists(module.portPath()));
            // Values survive a restart, but not a factory reset.
            COMPARE(talk(&module, {"ip", "LOAD SETTING:DEFAULT"}),
                    (QByteArrayList{"ip 1.2.3.4", universal ? "" : no}));
            QTRY_VERIFY(QFile::exists(module.portPath()));
            COMPARE(talk(&module, {"ip"}),
                    QByteArrayList{universal ? "ip 192.168.0.1" : "ip 1.2.3.4"});
        }
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
            QVERIFY2(simulator.exitCode() == row[0].toInt(), row.join(' '));
            const bool isHelp = simulator.exitCode() == 0;
            QCOMPARE(simulator.readAllStandardError().startsWith("module-simulator: "), !isHelp);
            QCOMPARE(simulator.readAllStandardOutput().isEmpty(), !isHelp);
        }
    }

    void optionsTakeEffect()
    {
        for (const QByteArrayList &row : tableOf("faults.txt")) {
            QProcess simulator;
            if (!begin(&simulator, QString(row[1]).split(' ')))
                QSKIP("an emulated program cannot start another one");
            QVERIFY(simulator.waitForReadyRead());
            QSerialPort port(simulator.readLine().trimmed());
            QVERIFY(port.open(QIODevice::ReadWrite));
            QByteArrayList printed;
            const auto isComplete = [&] {
                while (simulator.canReadLine())
                    printed.append(simulator.readLine().mid(14).trimmed()); // without the time
                if (printed.size() == 1 && port.bytesAvailable() > 100)
                    printed.append("flood");
                return printed.size() >= row.size() - 3;
            };
            QElapsedTimer clock;
            clock.start();
            port.write(row[2]);
            if (QTest::qWaitFor(isComplete, 30000) && !clock.hasExpired(row[0].toInt()))
                printed.append("too early");
            QTest::qWait(100); // nothing else may arrive
            isComplete();
            COMPARE(printed, row.mid(3));
            simulator.terminate();
            QVERIFY(simulator.waitForFinished());
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
