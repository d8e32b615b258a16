#include "setting_module.h"

#include "texts.h"

#include <QFileDialog>
#include <QFileInfo>
#include <QSettings>

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

/// Whether QSettings may be let at the file: it reads a file whole, before a load and before a save
/// alike, so a pipe or a huge file would hold up the window.
bool isHarmless(const QFileInfo &file)
{
    constexpr qint64 mostBytes = 1 << 20; // some thousand times a settings file
    return file.isFile() && file.isReadable() && file.size() <= mostBytes;
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

void setting_module::open(const QString &name)
{
    delete settings;
    settings = new QSettings(name, QSettings::IniFormat);
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
    open(isHarmless(QFileInfo(FileName)) ? FileName : QString());
    for (const Key &key : keys) {
        std::visit([&](auto member) { read(*settings, key.name, this->*member); }, key.member);
    }
}

void setting_module::SaveNTSetting(QString FileName)
{
    const QFileInfo file(FileName);
    if (FileName.isEmpty() || (file.exists() && !isHarmless(file)))
        return;
    open(FileName);
    for (const Key &key : keys) {
        std::visit([&](auto member) { settings->setValue(key.name, this->*member); }, key.member);
    }
    settings->sync();
}
