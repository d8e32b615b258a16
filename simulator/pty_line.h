#pragma once

#include <QObject>
#include <QTemporaryDir>

#include <memory>

namespace simulator {

/// The module's end of a serial line: a pseudo-terminal whose other end is opened, like any serial
/// port, under a path that stays the same however often the line is hung up and opened again.
class PtyLine : public QObject {
    Q_OBJECT

public:
    /// The path is a symbolic link made by open(); without one given, it lies in a private folder.
    explicit PtyLine(const QString &linkPath = QString(), QObject *parent = nullptr);
    ~PtyLine() override;

    /// False, with errorString() set, if there is no pty to be had or the link cannot be made. A
    /// link that leads nowhere or to a pty is replaced; anything else under its name is left alone.
    bool open();
    bool isOpen() const { return master >= 0; }
    QString errorString() const { return message; }

    QString path() const { return linkPath; }
    /// The descriptor of the end that others open, which this holds open too; readable for as long
    /// as they have not read what was written. -1 while the line is hung up.
    int farEnd() const { return slave; }

    /// Never blocks: what the line cannot take is lost, as from a UART that nobody reads.
    void write(const QByteArray &bytes);

    /// Whoever has the port open sees it vanish; the link goes too.
    void hangUp();

signals:
    /// All that had come when the line was looked at.
    void received(const QByteArray &bytes);
    /// Somebody has read something at the far end since the last write().
    void wasRead();

private:
    bool openPty();
    bool makeLink();
    bool fail(const QString &what);
    void watch(int descriptor, void (PtyLine::*react)());
    void readAll();
    bool takeAccesses();
    void reportAccesses();

    std::unique_ptr<QTemporaryDir> folder;
    QString linkPath;
    QString ptyPath;
    QString message;
    int master = -1;
    int slave = -1;
    int accesses = -1; ///< tells when someone reads or closes the far end
};

} // namespace simulator
