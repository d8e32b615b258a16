#pragma once

#include <QVector>

#include <optional>
#include <variant>

class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class Ui_MainWindow;

/// The kinds of converter module, numbered like the items of the form's kind combo box.
enum class ModuleKind { TcpRtu, RtuTcp, Universal };

/// The kind at an index of that combo box; none for an index that it does not have.
std::optional<ModuleKind> moduleKindAt(int index);

/// A set of module kinds, one bit each.
using ModuleKinds = unsigned;
constexpr ModuleKinds setOf(ModuleKind kind)
{
    return 1U << static_cast<unsigned>(kind);
}

/// The words that a module uses. TCP-RTU and RTU-TCP modules, whose mode is fixed, share one
/// dialect. The universal module has its own parity codes, acknowledgement and restart command.
enum class Dialect { Fixed, Universal };
constexpr Dialect dialectOf(ModuleKind kind)
{
    return kind == ModuleKind::Universal ? Dialect::Universal : Dialect::Fixed;
}

/// The code of one combo box item on the line.
struct Code {
    int item;          ///< index in the parameter's combo box
    const char *reply; ///< reported by the module
    const char *write =
        reply; ///< sent to the module; if an item has several codes, the first is sent
};
using Codes = QVector<Code>;

/// What a parameter does differently from the others.
enum Trait : unsigned {
    NoTraits = 0,
    RefusedByQuestionMark = 1U << 0, ///< a universal module refuses it with "?" and nothing else
    WriteErrorWithoutLeadingSpace = 1U << 1, ///< the text of the box that reports a refused write
    KeepsMarkAtScanStart = 1U << 2,
    KeepsMarkAtStyleclear = 1U << 3,
    TracedInFixedDialect = 1U << 4, ///< its write command is printed as debug output
    TracedInUniversalDialect = 1U << 5,
    Traced = TracedInFixedDialect | TracedInUniversalDialect,
};

/// One module parameter: how it is shown, read and written. How it is saved is defined in
/// setting_module.cpp and mainwindow_files.cpp.
struct Parameter {
    ModuleKinds kinds; ///< the kinds that show, read and write it
    const char
        *query; ///< sent to read it; the reply repeats it, adds one separator, then the value
    int width;  ///< maximum length of the value in a reply, in characters
    const char *writeCommand; ///< sent with the value appended; nullptr if it is read-only
    QLabel *Ui_MainWindow::*label;
    std::variant<QLineEdit * Ui_MainWindow::*, QComboBox * Ui_MainWindow::*> field;
    unsigned traits = NoTraits;
    Codes fixedCodes = {};             ///< of a combo box
    Codes universalCodes = fixedCodes; ///< where the universal dialect has its own
    const char *traceLabel = nullptr;  ///< precedes the write command in the debug output
    QCheckBox *Ui_MainWindow::*offSwitch = nullptr; ///< checked for the value "off"

    bool belongsTo(ModuleKind kind) const { return (kinds & setOf(kind)) != 0; }
    bool isUniversalOnly() const { return kinds == setOf(ModuleKind::Universal); }
    bool has(Trait trait) const { return (traits & trait) != 0; }
    const Codes &codes(Dialect dialect) const
    {
        return dialect == Dialect::Fixed ? fixedCodes : universalCodes;
    }
};

/// All parameters, in the order in which they are read and written.
const QVector<Parameter> &parameters();

/// The parameters that a read of this kind queries, in order.
QVector<const Parameter *> readList(ModuleKind kind);

/// A write ends with an error if none of this many first commands is acknowledged.
constexpr int checkedCommandCount = 2;

/// The parameters that a write of this kind sends, in order.
QVector<const Parameter *> writeList(ModuleKind kind);
