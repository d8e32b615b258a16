#pragma once

#include <QObject>
#include <QTemporaryDir>

#include <memory>

namespace simulator {

/// The module's end of a serial line: the master of a pseudo-terminal. Clients open the slave like
/// a serial port. Its path stays the same when the line is hung up and opened again.
class PtyLine : public QObject {
    Q_OBJECT

public:
    /// open() makes a symbolic link at the path, by default in a temporary folder.
    explicit PtyLine(const QString &linkPath = QString(), QObject *parent = nullptr);
    ~PtyLine() override;

    /// Returns false and sets errorString() if no pty is available or the link cannot be made. A
    /// link that is broken or points to a pty is replaced; any other file at the path is kept.
    bool open();
    bool isOpen() const { return master >= 0; }
    QString errorString() const { return message; }

    QString path() const { return linkPath; }
    /// The slave's descriptor, which stays open here. Readable as long as the clients have not read
    /// everything that was written. -1 while the line is hung up.
    int slaveFd() const { return slave; }

    /// Never blocks: bytes that the line cannot take are lost, as with a UART that nobody reads.
    void write(const QByteArray &bytes);

    /// Hangs up the line for each client and removes the link.
    void hangUp();

signals:
    /// All bytes that had arrived when the line was read.
    void received(const QByteArray &bytes);
    /// A client has read something since the last write().
    void wasRead();

private:
    bool openPty();
    bool makeLink();
    bool fail(const QString &what);
    void watch(int descriptor, void (PtyLine::*react)());
    void readAll();
    bool handleAccesses();
    void reportAccesses();

    std::unique_ptr<QTemporaryDir> folder;
    QString linkPath;
    QString ptyPath;
    QString message;
    int master = -1;
    int slave = -1;
    int accessFd = -1; ///< inotify descriptor: a client has read from or closed the slave
};

} // namespace simulator
