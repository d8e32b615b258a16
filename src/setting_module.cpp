#include "setting_module.h"

#include "serialized_objects.h"
#include "texts.h"

#include <QFileDialog>
#include <QFileInfo>
#include <QSaveFile>
#include <QSet>
#include <QSettings>
#include <QTemporaryDir>

#include <optional>
#include <variant>

namespace {

struct Key {
    const char *name;
    std::variant<QString setting_module::*, int setting_module::*> member;
};

const Key keys[] = {
    {"MODUL/Name", &setting_module::moduleName},
    {"IP_ADRESS", &setting_module::ipAddress},
    {"MASK", &setting_module::mask},
    {"GATEWAY", &setting_module::gateway},
    {"PORT_TCP", &setting_module::portTcp},
    {"SPEED_RS485", &setting_module::speedRs485},
    {"STOP_BIT", &setting_module::stopBit},
    {"PARITY", &setting_module::parity},
    {"MODE_TCP", &setting_module::modeTcp},
    {"TIMEOUT_RESPONSE", &setting_module::timeoutResponse},
    {"Client_TCP/IP_SERVER_TCP", &setting_module::ipServerTcp},
    {"Client_TCP/TIMEOUT_TCP", &setting_module::timeoutTcp},
    {"Client_TCP/RTU_VIRTUAL_ID", &setting_module::rtuVirtualId},
    {"Client_TCP/TCP_SLAVE_ID", &setting_module::tcpSlaveId},
};

void read(const QSettings &settings, const char *key, QString &member)
{
    member = settings.value(key, QString()).toString();
}

void read(const QSettings &settings, const char *key, int &member)
{
    member = settings.value(key, 0).toInt();
}

/// The content of a file; none if it cannot be read, is no regular file, is too large or contains
/// an object.
std::optional<QByteArray> contentOf(const QFileInfo &info)
{
    constexpr qint64 maxBytes = 1 << 22; // Nine full line edits are saved in up to 2 MiB.
    if (!info.isFile() || info.size() > maxBytes)
        return std::nullopt;
    QFile file(info.filePath());
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    QByteArray content = file.read(info.size());
    if (content.size() != info.size() || containsSerializedObject(content))
        return std::nullopt;
    return content;
}

#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0)
bool isUtf8(const QByteArray &text)
{
    // fromUtf8() would drop a byte order mark at the beginning.
    const QByteArray longer = 'x' + text;
    return QString::fromUtf8(longer.constData(), longer.size()).toUtf8() == longer;
}
#endif

/// Returns false if the content cannot be written, for example because the disk is full.
bool write(QFileDevice &file, const QByteArray &content)
{
    return file.open(QIODevice::WriteOnly) && file.write(content) == content.size() && file.flush();
}

/// Whether QSettings has written all of its keys to this text, one a line. It reports no error if
/// the disk is full after a part of a section of more than 16 KiB.
bool isComplete(const QByteArray &ini, const QSettings &settings)
{
    QSet<QString> names; // A key of the section "[]" replaces its namesake in "[General]".
    for (const QString &key : settings.allKeys())
        names.insert(key.mid(key.startsWith('/') ? 1 : 0));
    int lines = 0;
    for (const QByteArray &line : ini.split('\n'))
        lines += int(line.contains('='));
    return ini.endsWith('\n') && lines == names.size();
}

} // namespace

setting_module::setting_module(QObject *parent)
    : QObject(parent)
{
}

setting_module::~setting_module()
{
    delete settings;
}

/// Opens a copy of the content in `settings`, or the original if the copy cannot be written to the
/// folder. Returns whether the copy was written. docs/developers.md says why QSettings must
/// not open every file itself.
bool setting_module::openCopy(const QByteArray &content, const QString &folder,
                              const QString &original)
{
    delete settings; // while its copy exists, because this may write to it
    scratch = std::make_unique<QTemporaryDir>(folder + "/.TRset-XXXXXX");
    QFile copy(scratch->filePath("copy"));
    const bool copied = write(copy, content);
    settings = new QSettings(copied ? copy.fileName() : original, QSettings::IniFormat);
#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0)
    // Qt 6 and editors write UTF-8, Qt 5 writes escapes. The codec is for reading only, because
    // with it Qt 5 would write surrogate pairs wrongly.
    if (isUtf8(content))
        settings->setIniCodec("UTF-8");
    settings->allKeys(); // decodes the values
    settings->setIniCodec(static_cast<QTextCodec *>(nullptr));
#endif
    return copied;
}

void setting_module::LoadNTSetting()
{
    fileName = QFileDialog::getOpenFileName(nullptr, tr(text::settings), QString(),
                                            tr(text::settingsFilter));
    LoadNTSetting(fileName);
}

void setting_module::SaveNTSetting()
{
    fileName = QFileDialog::getSaveFileName(nullptr, tr(text::settings), QString(),
                                            tr(text::settingsFilter));
    SaveNTSetting(fileName);
}

void setting_module::LoadNTSetting(QString FileName)
{
    const std::optional<QByteArray> content = contentOf(QFileInfo(FileName));
    openCopy(content.value_or(QByteArray()), QDir::tempPath(), content ? FileName : QString());
    for (const Key &key : keys) {
        std::visit([&](auto member) { read(*settings, key.name, this->*member); }, key.member);
    }
}

void setting_module::SaveNTSetting(QString FileName)
{
    const QFileInfo file(FileName);
    const std::optional<QByteArray> content = file.exists() ? contentOf(file) : QByteArray();
    if (!content || FileName.isEmpty()) {
        openCopy(QByteArray(), QDir::tempPath());
        return;
    }
    QDir().mkpath(file.path());
    // The folder for temporary files may be full when that of the file is not.
    const QString besideFile = file.exists() ? file.canonicalPath() : file.path();
    for (const QString &folder : {QDir::tempPath(), besideFile}) {
        if (openCopy(*content, folder) && saveCopy(file))
            return;
    }
}

/// Writes the members to the copy and replaces the file by it, or leaves the file unchanged.
/// Returns whether it is replaced.
bool setting_module::saveCopy(const QFileInfo &file)
{
    for (const Key &key : keys) {
        std::visit([&](auto member) { settings->setValue(key.name, this->*member); }, key.member);
    }
    settings->sync();
    if (settings->status() == QSettings::AccessError)
        return false;
    const std::optional<QByteArray> content = contentOf(QFileInfo(settings->fileName()));
    scratch.reset(); // makes room, if it is beside the file
    QSaveFile target(file.filePath());
    return content && isComplete(*content, *settings) && write(target, *content) && target.commit();
}
