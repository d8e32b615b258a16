#include "setting_module.h"

#include "serialized_objects.h"
#include "texts.h"

#include <QFileDialog>
#include <QFileInfo>
#include <QSaveFile>
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

/// The content of a file; none if it cannot be read, is no regular file or is too large.
std::optional<QByteArray> contentOf(const QFileInfo &info)
{
    constexpr qint64 maxBytes = 1 << 22; // Nine full line edits are saved in up to 2 MiB.
    if (!info.isFile() || info.size() > maxBytes)
        return std::nullopt;
    QFile file(info.filePath());
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    QByteArray content = file.read(info.size());
    if (content.size() != info.size())
        return std::nullopt;
    return content;
}

/// Returns false if the content cannot be written, for example because the disk is full.
bool write(QFileDevice &file, const QByteArray &content)
{
    return file.open(QIODevice::WriteOnly) && file.write(content) == content.size() && file.flush();
}

/// Replaces the content of the file, or leaves the file unchanged.
void replace(const QFileInfo &info, const QByteArray &content)
{
    QDir().mkpath(info.path());
    QSaveFile file(info.filePath());
    if (write(file, content))
        file.commit();
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

/// Opens a copy of the file in `settings`. The copy is empty if there is no file or it cannot be
/// read. Returns whether the copy may replace the file. Why QSettings must not open the file itself
/// is told in docs/developers.md.
bool setting_module::open(const QFileInfo &file)
{
    std::optional<QByteArray> content = file.exists() ? contentOf(file) : QByteArray();
    if (content && containsSerializedObject(*content))
        content.reset();
    delete settings;
    scratch = std::make_unique<QTemporaryDir>();
    QFile copy(scratch->filePath("copy"));
    const bool copied = write(copy, content.value_or(QByteArray()));
    // If the copy cannot be written (disk full), load the original.
    settings =
        new QSettings(content && !copied ? file.filePath() : copy.fileName(), QSettings::IniFormat);
#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0)
    // Qt 6 and editors write UTF-8, Qt 5 writes escapes. The codec is for reading only, because
    // with it Qt 5 would write surrogate pairs wrongly.
    if (isUtf8(content.value_or(QByteArray())))
        settings->setIniCodec("UTF-8");
    settings->allKeys(); // decodes the values
    settings->setIniCodec(static_cast<QTextCodec *>(nullptr));
#endif
    return content && copied;
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
    open(QFileInfo(FileName));
    for (const Key &key : keys) {
        std::visit([&](auto member) { read(*settings, key.name, this->*member); }, key.member);
    }
}

void setting_module::SaveNTSetting(QString FileName)
{
    const QFileInfo file(FileName);
    if (!open(file) || FileName.isEmpty())
        return;
    for (const Key &key : keys) {
        std::visit([&](auto member) { settings->setValue(key.name, this->*member); }, key.member);
    }
    settings->sync();
    if (settings->status() == QSettings::AccessError)
        return;
    const std::optional<QByteArray> content = contentOf(QFileInfo(settings->fileName()));
    if (content)
        replace(file, *content);
}
