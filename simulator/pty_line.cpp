#include "pty_line.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSocketNotifier>

#include <cerrno>
#include <cstdlib>
#include <cstring>

#include <fcntl.h>
#include <sys/inotify.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

namespace simulator {

PtyLine::PtyLine(const QString &path, QObject *parent)
    : QObject(parent)
{
    if (path.isEmpty()) {
        // A short path, because the list of ports is narrow.
        folder = std::make_unique<QTemporaryDir>(QDir::tempPath() + "/pty-XXXXXX");
        linkPath = folder->filePath("module");
    } else {
        linkPath = QFileInfo(path).absoluteFilePath();
    }
}

PtyLine::~PtyLine()
{
    hangUp();
}

bool PtyLine::open()
{
    if (isOpen())
        return true;
    if (!openPty() || !makeLink()) {
        hangUp();
        return false;
    }
    watch(master, &PtyLine::readAll);
    watch(accessFd, &PtyLine::reportAccesses);
    return true;
}

void PtyLine::watch(int descriptor, void (PtyLine::*react)())
{
    auto *notifier = new QSocketNotifier(descriptor, QSocketNotifier::Read, this);
    connect(notifier, &QSocketNotifier::activated, this, react);
}

bool PtyLine::openPty()
{
    master = posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    char name[64];
    if (master < 0 || grantpt(master) != 0 || unlockpt(master) != 0
        || ptsname_r(master, name, sizeof name) != 0)
        return fail("cannot open a pty");
    ptyPath = QFile::decodeName(name);

    // Stays open as long as the line: without any open slave, the master would report a hang-up
    // continuously, and its notifier would fire continuously.
    slave = ::open(name, O_RDWR | O_NOCTTY | O_CLOEXEC);
    termios settings;
    if (slave < 0 || tcgetattr(slave, &settings) != 0)
        return fail(QString("cannot open %1").arg(ptyPath));
    cfmakeraw(&settings);
    if (tcsetattr(slave, TCSANOW, &settings) != 0)
        return fail(QString("cannot set up %1").arg(ptyPath));
    accessFd = inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
    if (inotify_add_watch(accessFd, name, IN_ACCESS | IN_CLOSE) < 0)
        return fail(QString("cannot watch %1").arg(ptyPath));
    return true;
}

bool PtyLine::makeLink()
{
    // A link left by a killed simulator may by now point to another program's pty.
    const QFileInfo old(linkPath);
    if (old.isSymLink()
        && (!old.exists() || old.symLinkTarget().startsWith(QLatin1String("/dev/pts/"))))
        QFile::remove(linkPath);
    if (symlink(QFile::encodeName(ptyPath), QFile::encodeName(linkPath)) != 0)
        return fail(QString("cannot make the link %1").arg(linkPath));
    return true;
}

bool PtyLine::fail(const QString &what)
{
    message = what + ": " + QString::fromLocal8Bit(std::strerror(errno));
    return false;
}

void PtyLine::readAll()
{
    QByteArray bytes;
    char buffer[512];
    ssize_t count = 0;
    while ((count = ::read(master, buffer, sizeof buffer)) > 0)
        bytes.append(buffer, static_cast<int>(count));
    if (!bytes.isEmpty())
        emit received(bytes);
}

/// Handles the slave's pending events. Returns whether a client has read from it.
bool PtyLine::handleAccesses()
{
    bool read = false;
    alignas(inotify_event) char buffer[512];
    ssize_t size = 0;
    while ((size = ::read(accessFd, buffer, sizeof buffer)) > 0) {
        // The events have no names appended, because the watched file is no folder.
        for (const char *next = buffer; next < buffer + size; next += sizeof(inotify_event)) {
            inotify_event event;
            std::memcpy(&event, next, sizeof event);
            read = read || (event.mask & IN_ACCESS) != 0;
            // The slave stays open here, so the exclusive access of a client that was killed would
            // lock out the next one.
            if ((event.mask & IN_CLOSE) != 0)
                ioctl(slave, TIOCNXCL);
        }
    }
    return read;
}

void PtyLine::reportAccesses()
{
    if (handleAccesses())
        emit wasRead();
}

void PtyLine::write(const QByteArray &bytes)
{
    handleAccesses(); // discards reads of earlier bytes
    int done = 0;
    while (isOpen() && done < bytes.size()) {
        const ssize_t count =
            ::write(master, bytes.constData() + done, static_cast<size_t>(bytes.size() - done));
        if (count <= 0)
            return;
        done += static_cast<int>(count);
    }
}

void PtyLine::hangUp()
{
    for (auto *notifier : findChildren<QSocketNotifier *>()) {
        // Not deleted here, because its own signal may have led here.
        notifier->setEnabled(false);
        notifier->deleteLater();
    }
    // Another line may have replaced the link.
    const QFileInfo link(linkPath);
    if (isOpen() && link.isSymLink() && link.symLinkTarget() == ptyPath)
        QFile::remove(linkPath);
    for (int *descriptor : {&accessFd, &slave, &master}) {
        if (*descriptor >= 0)
            ::close(*descriptor);
        *descriptor = -1;
    }
}

} // namespace simulator
