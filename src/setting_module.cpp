#include "setting_module.h"

#include "ini_objects.h"
#include "texts.h"

#include <QFileDialog>
#include <QFileInfo>
#include <QSaveFile>
#include <QSettings>
#include <QTemporaryDir>
#include <QUuid>

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

/// The text with single halves of surrogate pairs spelled by number. A backslash that the reader
/// drops with the character behind it ends each number.
QString spelled(const QString &text, const QString &backslash)
{
    QString result;
    for (int i = 0; i < text.size(); ++i) {
        const QChar ch = text[i];
        if (ch.isHighSurrogate() && i + 1 < text.size() && text[i + 1].isLowSurrogate())
            result += text.mid(i++, 2);
        else if (ch.isSurrogate())
            result += backslash + 'x' + QString::number(ch.unicode(), 16) + backslash + '.';
        else
            result += ch;
    }
    return result;
}

/// What a file holds; none if it cannot be read, or is nothing that could be read at once.
std::optional<QByteArray> contentOf(const QFileInfo &info)
{
    constexpr qint64 mostBytes = 1 << 22; // Eleven full line edits take up to 3 MiB.
    if (!info.isFile() || info.size() > mostBytes)
        return std::nullopt;
    QFile file(info.filePath());
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    const QByteArray content = file.read(info.size());
    if (content.size() != info.size())
        return std::nullopt;
    return content;
}

/// False if it cannot be written, also for a full disk.
bool write(QFileDevice &file, const QByteArray &content)
{
    return file.open(QIODevice::WriteOnly) && file.write(content) == content.size() && file.flush();
}

/// Puts the content in the place of the file, or leaves that as it was.
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

/// Opens a copy of the file in `settings`, of an empty one where there is none or it cannot be
/// read. Whether the copy may take the file's place.
///
/// QSettings is not let at the file itself: it waits for a lock, and keeps what it could not write
/// in a cache of the process, by file name, to write it when a file of that name is opened next.
bool setting_module::open(const QFileInfo &file)
{
    std::optional<QByteArray> content = file.exists() ? contentOf(file) : QByteArray();
    if (content && namesObject(*content))
        content.reset();
    delete settings;
    scratch = std::make_unique<QTemporaryDir>();
    QFile copy(scratch->filePath("copy"));
    const bool copied = write(copy, content.value_or(QByteArray()));
    // A load does not need room for a copy.
    settings =
        new QSettings(content && !copied ? file.filePath() : copy.fileName(), QSettings::IniFormat);
#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0)
    // Letters that take several bytes come from Qt 6 or an editor; Qt 5 itself writes escapes. So
    // it does here too, for through a codec it would lose the letters that are surrogate pairs.
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
    // Qt 6 cannot write a single half of a pair, nor read a byte order mark that begins a text.
    const QString backslash = QUuid::createUuid().toString(); // until QSettings has written it
    for (const QString &key : settings->allKeys()) {
        const QVariant value = settings->value(key);
        if (value.userType() == QMetaType::QString)
            settings->setValue(key, spelled(value.toString(), backslash));
    }
    settings->sync();
    if (settings->status() == QSettings::AccessError)
        return;
    std::optional<QByteArray> content = contentOf(QFileInfo(settings->fileName()));
    if (!content)
        return;
    content->replace("\xef\xbb\xbf", "\\xfeff\\.").replace(backslash.toUtf8(), "\\");
    replace(file, *content);
}
