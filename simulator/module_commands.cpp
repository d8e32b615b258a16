#include "module_commands.h"

#include <optional>

namespace simulator {

namespace {

/// Converts a written value to the value that is reported, or to nothing if the module refuses it.
using Rule = QByteArray (*)(const QByteArray &written);

struct Code {
    const char *written;
    const char *reported;
};

constexpr Code modeCodes[] = {{"SERVER", "server"}, {"CLIENT", "client"}};
constexpr Code parityDigits[] = {{"0", "0"}, {"1", "1"}, {"2", "2"}};
constexpr Code parityWords[] = {{"none", "none"}, {"odd", "odd"}, {"even", "even"}};
constexpr Code stopBitCodes[] = {{"1", "1"}, {"2", "2"}};
// The firmware reports 57600 wrongly; programs rely on it.
constexpr Code speedCodes[] = {{"1200", "1200"},    {"2400", "2400"},     {"4800", "4800"},
                               {"9600", "9600"},    {"19200", "19200"},   {"38400", "38400"},
                               {"57600", "57200"},  {"115200", "115200"}, {"128000", "128000"},
                               {"256000", "256000"}};

template <const auto &codes> QByteArray coded(const QByteArray &written)
{
    for (const Code &code : codes) {
        if (written == code.written)
            return code.reported;
    }
    return {};
}

/// The number, or -1 for any other text. A number has no sign, space or leading zero.
int decimal(const QByteArray &text)
{
    const int number = text.toInt();
    return number >= 0 && text == QByteArray::number(number) ? number : -1;
}

template <int lowest, int highest> QByteArray number(const QByteArray &written)
{
    const int value = decimal(written);
    return value >= lowest && value <= highest ? written : QByteArray();
}

QByteArray tcpPort(const QByteArray &written)
{
    return written == "502" ? written : number<10000, 65535>(written);
}

QByteArray slaveId(const QByteArray &written)
{
    return written == "off" ? written : number<1, 255>(written);
}

std::optional<quint32> parseAddress(const QByteArray &text)
{
    const QList<QByteArray> parts = text.split('.');
    if (parts.size() != 4)
        return std::nullopt;
    quint32 address = 0;
    for (const QByteArray &part : parts) {
        const int octet = decimal(part);
        if (octet < 0 || octet > 255)
            return std::nullopt;
        address = address << 8 | static_cast<quint32>(octet);
    }
    return address;
}

QByteArray address(const QByteArray &written)
{
    return parseAddress(written) ? written : QByteArray();
}

QByteArray mask(const QByteArray &written)
{
    const std::optional<quint32> bits = parseAddress(written);
    if (!bits)
        return {};
    // The host part of a contiguous mask is one less than a power of two.
    const quint32 host = ~*bits;
    return (host & (host + 1)) == 0 ? written : QByteArray();
}

constexpr unsigned only(ModuleKind kind)
{
    return 1U << static_cast<unsigned>(kind);
}

constexpr unsigned universal = only(ModuleKind::Universal);
constexpr unsigned fixed = only(ModuleKind::TcpRtu) | only(ModuleKind::RtuTcp);
constexpr unsigned clients = only(ModuleKind::RtuTcp) | universal;
constexpr unsigned all = fixed | universal;

struct Parameter {
    unsigned kinds;
    const char *query;
    const char *writeCommand; // nullptr: read-only
    Rule rule;
    const char *factoryValue;
};

// In the order in which they are read.
constexpr Parameter parameters[] = {
    {universal, "MODE TCP", "CHANGE MODE TCP:", coded<modeCodes>, "server"},
    {universal, "version", nullptr, nullptr, "1.0.7"},
    {all, "MAC", nullptr, nullptr, "02-00-00-12-34-56"},
    {all, "ip", "CHANGE IP:", address, "192.168.0.1"},
    {all, "MASK", "CHANGE MASK:", mask, "255.255.255.0"},
    {all, "GATEWAY", "CHANGE GATEWAY:", address, "0.0.0.0"},
    {all, "PORT TCP", "CHANGE PORT TCP:", tcpPort, "502"},
    {fixed, "parity", "CHANGE PARITY:", coded<parityDigits>, "0"},
    {universal, "parity", "CHANGE PARITY:", coded<parityWords>, "none"},
    {all, "SPEED RS485", "CHANGE SPEED RS485:", coded<speedCodes>, "9600"},
    {all, "STOP BIT", "CHANGE STOP BIT:", coded<stopBitCodes>, "1"},
    {universal, "timeout response", "change timeout response:", number<100, 60000>, "1000"},
    {clients, "IP SERVER TCP", "CHANGE IP SERVER TCP:", address, "192.168.0.10"},
    {clients, "TIMEOUT TCP", "CHANGE TIMEOUT TCP:", number<5, 240>, "180"},
    {universal, "rtu virtual id", "change rtu virtual id:", number<1, 247>, "1"},
    {universal, "tcp slave id", "change tcp slave id:", slaveId, "off"},
};

bool has(ModuleKind kind, const Parameter &parameter)
{
    return (parameter.kinds & only(kind)) != 0;
}

} // namespace

Command parseCommand(ModuleKind kind, const QByteArray &bytes)
{
    if (bytes == "RESET" || (bytes == "reset" && kind == ModuleKind::Universal))
        return {Command::Type::Restart, {}, {}};
    if (bytes == "LOAD SETTING:DEFAULT" && kind == ModuleKind::Universal)
        return {Command::Type::FactoryReset, {}, {}};

    for (const Parameter &parameter : parameters) {
        if (!has(kind, parameter))
            continue;
        if (bytes == parameter.query)
            return {Command::Type::Query, parameter.query, {}};
        const QByteArray keyword = parameter.writeCommand;
        if (!keyword.isEmpty() && bytes.startsWith(keyword)) {
            const QByteArray value = parameter.rule(bytes.mid(keyword.size()));
            const auto type = value.isEmpty() ? Command::Type::Invalid : Command::Type::Write;
            return {type, parameter.query, value};
        }
    }
    return {Command::Type::Invalid, {}, {}};
}

QVector<QByteArray> queriesOf(ModuleKind kind)
{
    QVector<QByteArray> queries;
    for (const Parameter &parameter : parameters) {
        if (has(kind, parameter))
            queries.append(parameter.query);
    }
    return queries;
}

QMap<QByteArray, QByteArray> factoryValues(ModuleKind kind)
{
    QMap<QByteArray, QByteArray> values;
    for (const Parameter &parameter : parameters) {
        if (has(kind, parameter))
            values.insert(parameter.query, parameter.factoryValue);
    }
    return values;
}

QByteArray queryReply(const QByteArray &query, const QByteArray &value)
{
    return query + ' ' + value + "\r\n";
}

QByteArray acknowledgement(ModuleKind kind)
{
    return kind == ModuleKind::Universal ? "ok\r\n" : "OK\r\n";
}

QByteArray refusal(ModuleKind kind)
{
    return kind == ModuleKind::Universal ? "?\r\n" : "ERROR\r\n";
}

} // namespace simulator
