#pragma once

#include <QObject>
#include <QString>

#include <memory>

class QFileInfo;
class QSettings;
class QTemporaryDir;

/// One parameter set and its settings file, an INI file of fourteen keys.
///
/// The members are filled before a save and read after a load. Texts are kept as they are. The
/// integers are indexes of the form's combo boxes. Nothing is checked and no failure is reported: a
/// value that cannot be read takes its default, a file that cannot be written stays unchanged.
/// Files of more than 4 MiB, and files for which containsSerializedObject() is true, are neither
/// read nor written. A save that would make such a file is dropped.
class setting_module : public QObject {
    Q_OBJECT

public:
    explicit setting_module(QObject *parent = nullptr);
    ~setting_module() override;

    QString moduleName; ///< item text of the kind combo box, with its trailing space
    QString ipAddress;
    QString mask;
    QString gateway;
    QString portTcp;
    int speedRs485 = 0;
    int stopBit = 0;
    int parity = 0;
    int modeTcp = 0;
    QString timeoutResponse; ///< ms
    QString ipServerTcp;
    QString timeoutTcp; ///< s
    QString rtuVirtualId;
    QString tcpSlaveId;            ///< or "off"
    QString fileName;              ///< answer of the last dialog, empty if it was cancelled
    QSettings *settings = nullptr; ///< owned; opened by the last load or save

public slots:
    void LoadNTSetting(); ///< asks for the file
    void SaveNTSetting(); ///< asks for the file
    void LoadNTSetting(QString FileName);
    void SaveNTSetting(QString FileName); ///< keeps the other keys of an existing file

private:
    bool openCopy(const QByteArray &content, const QString &folder,
                  const QString &original = QString());
    bool saveCopy(const QFileInfo &file);

    std::unique_ptr<QTemporaryDir> scratch; ///< holds the copy
};
