#include "module_parameters.h"

#include "ui_mainwindow.h"

namespace {

QVector<Parameter> makeTable()
{
    using Ui = Ui_MainWindow;

    constexpr ModuleKinds universal = setOf(ModuleKind::Universal);
    constexpr ModuleKinds clients = universal | setOf(ModuleKind::RtuTcp);
    constexpr ModuleKinds all = clients | setOf(ModuleKind::TcpRtu);

    const Codes modes{{1, "server", "SERVER"}, {2, "client", "CLIENT"}};
    const Codes parityDigits{{1, "0"}, {2, "1"}, {3, "2"}, {1, "none"}};
    const Codes parityWords{{1, "none"}, {2, "odd"}, {3, "even"}};
    // 57600 bit/s is reported as 57200.
    const Codes speeds{{1, "1200"},   {2, "2400"},   {3, "4800"},           {4, "9600"},
                       {5, "19200"},  {6, "38400"},  {7, "57200", "57600"}, {8, "115200"},
                       {9, "128000"}, {10, "256000"}};
    const Codes stopBits{{1, "1"}, {2, "2"}};

    // clang-format off
    return {
        {universal, "MODE TCP", 6, "CHANGE MODE TCP:",
         &Ui::label_modeTcp, &Ui::comboBox_mode, NoTraits, modes},
        {universal, "version", 10, nullptr,
         &Ui::label_version, &Ui::lineEdit_version, KeepsMarkAtStyleclear},
        {all, "MAC", 18, nullptr,
         &Ui::label_24, &Ui::lineEdit_MAC},
        {all, "ip", 15, "CHANGE IP:",
         &Ui::label_21, &Ui::lineEdit_ip, Traced, {}, {}, "change ip---"},
        {all, "MASK", 16, "CHANGE MASK:",
         &Ui::label_22, &Ui::lineEdit_mask, Traced, {}, {}, "change mask---"},
        {all, "GATEWAY", 15, "CHANGE GATEWAY:",
         &Ui::label_23, &Ui::lineEdit_gateway},
        {all, "PORT TCP", 6, "CHANGE PORT TCP:",
         &Ui::label_, &Ui::lineEdit_portTCP, WriteErrorWithoutLeadingSpace | Traced},
        {all, "parity", 4, "CHANGE PARITY:",
         &Ui::label_28, &Ui::comboBox, NoTraits, parityDigits, parityWords},
        {all, "SPEED RS485", 7, "CHANGE SPEED RS485:",
         &Ui::label_speed, &Ui::comboBox_speed, Traced, speeds},
        {all, "STOP BIT", 3, "CHANGE STOP BIT:",
         &Ui::label_27, &Ui::comboBox_2, WriteErrorWithoutLeadingSpace, stopBits},
        {universal, "timeout response", 4, "change timeout response:",
         &Ui::label_timewait, &Ui::lineEdit_timewait,
         RefusedByQuestionMark | KeepsMarkAtScanStart},
        {clients, "IP SERVER TCP", 16, "CHANGE IP SERVER TCP:",
         &Ui::label_ipserver, &Ui::lineEdit_ipservertcp,
         RefusedByQuestionMark | TracedInFixedDialect},
        {clients, "TIMEOUT TCP", 5, "CHANGE TIMEOUT TCP:",
         &Ui::label_timeout, &Ui::lineEdit_timeout, RefusedByQuestionMark},
        {universal, "rtu virtual id", 3, "change rtu virtual id:",
         &Ui::label_id_rtu, &Ui::lineEdit_rtu_virtual_id,
         RefusedByQuestionMark | KeepsMarkAtScanStart},
        {universal, "tcp slave id", 3, "change tcp slave id:",
         &Ui::label_idtcp, &Ui::lineEdit_tcp_id,
         RefusedByQuestionMark | KeepsMarkAtScanStart, {}, {}, nullptr, &Ui::checkBox},
    };
    // clang-format on
}

} // namespace

std::optional<ModuleKind> moduleKindAt(int index)
{
    if (index < 0 || index > static_cast<int>(ModuleKind::Universal))
        return std::nullopt;
    return static_cast<ModuleKind>(index);
}

const QVector<Parameter> &parameters()
{
    static const QVector<Parameter> table = makeTable();
    return table;
}

QVector<const Parameter *> readList(ModuleKind kind)
{
    QVector<const Parameter *> list;
    for (const Parameter &parameter : parameters()) {
        if (parameter.belongsTo(kind))
            list.push_back(&parameter);
    }
    return list;
}

QVector<const Parameter *> writeList(ModuleKind kind)
{
    QVector<const Parameter *> list;
    for (const Parameter *parameter : readList(kind)) {
        if (parameter->writeCommand)
            list.push_back(parameter);
    }
    return list;
}
