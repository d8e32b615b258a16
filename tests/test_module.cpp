// The simulated module by itself, and the command module-simulator.

#include "window_fixture.h"

#include <QElapsedTimer>
#include <QProcess>

#include <algorithm>
#include <csignal>

#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

class TestModule : public QObject {
    Q_OBJECT

private slots:
    void init()
    {
        if (QByteArray(MODULE_SIMULATOR).isEmpty())
            QSKIP("an emulated program cannot start another one");
    }

    void clearsExclusiveModeOfAKilledClient()
    {
        simulator::SimulatedModule module(simulator::Options{});
        QVERIFY(module.start());
        const int killed = open(module.portPath().toUtf8(), O_RDWR | O_NOCTTY);
        QVERIFY(ioctl(killed, TIOCEXCL) == 0 && close(killed) == 0);
        int exclusive = 1;
        QTRY_VERIFY(ioctl(module.slaveFd(), TIOCGEXCL, &exclusive) == 0 && exclusive == 0);
    }

    void executesCommandsAndMisbehaves()
    {
        for (QByteArrayList row : tableOf("conversations.txt")) {
            for (QByteArray &cell : row)
                cell = expand(cell, row[1].contains("rtu") ? Kind::TcpRtu : Kind::Universal);
            QProcess simulator;
            simulator.start(MODULE_SIMULATOR, QString(row[1]).split(' '));
            if (row.size() > 2) {
                COMPARE(converse(&simulator, row), row.mid(2));
                simulator.terminate();
                QVERIFY(simulator.waitForFinished());
                continue;
            }
            QVERIFY2(simulator.waitForFinished(), row[1]);
            const bool fails = row[0] != "0";
            QVERIFY2(simulator.exitCode() == row[0].toInt(), row[1]);
            QCOMPARE(simulator.readAllStandardError().startsWith("module-simulator: "), fails);
            QCOMPARE(simulator.readAllStandardOutput().isEmpty(), fails);
        }
    }

    void removesTheLinkOnTermination()
    {
        const QTemporaryDir folder;
        const QString link = folder.filePath("port");
        QVERIFY(QFile::link("/dev/pts/nowhere", link)); // left by a simulator that was killed
        for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
            QProcess simulator;
            simulator.start(MODULE_SIMULATOR, {"--link", link});
            QVERIFY(simulator.waitForReadyRead());
            QCOMPARE(simulator.readLine().trimmed(), link.toUtf8());
            QVERIFY(QFile::exists(link));
            QVERIFY(simulator.processId() > 0 && kill(pid_t(simulator.processId()), signal) == 0);
            QVERIFY(simulator.waitForFinished());
            QCOMPARE(simulator.exitCode(), 0);
            QVERIFY(!QFileInfo(link).isSymLink());
        }
    }

private:
    /// Sends the commands of a row of conversations.txt. Returns what the module prints.
    static QByteArrayList converse(QProcess *simulator, const QByteArrayList &row)
    {
        if (!simulator->waitForReadyRead())
            return {"no port"};
        const QByteArray path = simulator->readLine().trimmed();
        // Not a QSerialPort, which would keep the event loop busy while the line is hung up.
        int port = -1;
        ssize_t received = 0;
        int expected = 0;
        QByteArrayList printed;
        const auto areThere = [&](int count) {
            while (simulator->canReadLine())
                printed.append(simulator->readLine().mid(14).chopped(1)); // without the time
            char bytes[512];
            received += std::max(read(port, bytes, sizeof bytes), ssize_t(0));
            if (printed.size() == 1 && received > 100)
                printed.append("flood");
            return printed.size() >= count;
        };
        QElapsedTimer clock;
        clock.start();
        for (const QByteArray &line : row.mid(2)) {
            if (line.startsWith("command  ")) {
                close(port); // a restart has hung it up, perhaps
                port = open(path, O_RDWR | O_NOCTTY | O_NONBLOCK);
                if (write(port, line.constData() + 9, size_t(line.size() - 9)) < 0)
                    return printed << "no line";
            }
            ++expected;
            if (!QTest::qWaitFor([&] { return areThere(expected); }, 30000))
                break;
        }
        if (clock.elapsed() < row[0].toInt())
            printed.append("too early");
        QTest::qWait(100); // nothing else may arrive
        areThere(0);
        close(port);
        return printed;
    }
};

QTEST_MAIN(TestModule)
#include "test_module.moc"
