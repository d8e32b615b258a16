#pragma once

#include "mainwindow.h"
#include "simulated_module.h"

#include <QAbstractButton>
#include <QFileDialog>
#include <QMessageBox>
#include <QTest>
#include <QTimer>

#include <functional>

using Kind = simulator::ModuleKind; ///< as the module has it; the program has its own
Q_DECLARE_METATYPE(Kind)
constexpr Kind allKinds[] = {Kind::TcpRtu, Kind::RtuTcp, Kind::Universal};
QString nameOf(Kind kind);
void addKindRows(); ///< a row for each module kind with a column "kind"

QByteArray contentOf(const QString &path);
/// The rows of a table in data/, split at their bars, with %xx turned into bytes. Lines that begin
/// with # are for people.
QList<QByteArrayList> tableOf(const QString &file);

/// One parameter with a value, as the form and the line have them; see data/parameters.txt.
struct ParameterCase {
    QString widget;
    QString inForm;
    QByteArray query;
    QByteArray onLine;
    QByteArray command; ///< empty if it is display only
};
QVector<ParameterCase> parametersOf(Kind kind); ///< in the order in which they are read
QVector<ParameterCase> writesOf(Kind kind);     ///< those of them that are written
QByteArrayList writeCommandsOf(Kind kind);      ///< of a whole write, up to the restart
QByteArray acknowledgementOf(Kind kind);

/// Style sheets of the marks.
inline const QString green = "background-color:  #90ee90;";
inline const QString red = "background-color: #FF2400";
inline const QString lilac = "background-color:  #f5edff;";

/// What WindowDriver::state() says of a window in which everything agrees.
namespace state {
inline const QString connected = "Connected, Отсоединиться, Сканировать, Запись параметры";
inline const QString disconnected = "Disconnected, Cоединиться, Сканировать, Запись параметры";
inline const QString writing = "Connected, Отсоединиться, Сканировать, Остановить запись, write";
} // namespace state

/// Every box that the program has, as WindowDriver::boxes lists it; %1 is the name of the kind.
namespace box {
inline const QString portDenied = "Отказано в доступе: Ошибка соединения";
inline const QString portLost = "Critical Error: Ошибка соединения";
inline const QString emptyDelivery = "нет соединения с модуля: Ошибка соединения";
inline const QString refused = "Ошибка: <FONT COLOR='#800000'> Ошибка записи </FONT>";
inline const QString refusedTightly = "Ошибка: <FONT COLOR='#800000'>Ошибка записи </FONT>";
inline const QString noFile = "Ошибка: Файл конфигурации не выбран";
inline const QString factoryReset =
    "Сброс: Вы действительно хотите cбросить к заводским настройкам?";
inline const QString noConnection = "Ошибка соединения: нет соединения с модулем %1";
inline const QString success = "Результы изменения: <FONT COLOR='#008000'>Изменение параметров %1 "
                               "было успешно</FONT>";
} // namespace box

/// The real window with a simulated module on its line, used by object names as a person uses it.
class WindowDriver : public QObject {
public:
    explicit WindowDriver(Kind kind = Kind::Universal);
    ~WindowDriver() override;

    template <class Widget> Widget *find(const QString &name)
    {
        auto *widget = window.findChild<Widget *>(name);
        if (!widget)
            qFatal("no object %s", qPrintable(name));
        return widget;
    }

    void choosePort(const QString &port);
    void connectPort() { click("connect"); }
    void prepare(); ///< for a silent module: connects, arms the apply button, fills the form
    void click(const QString &button) { find<QAbstractButton>(button)->click(); }
    bool isEnabled(const QString &name) { return find<QWidget>(name)->isEnabled(); }
    QString mark(const QString &name) { return find<QWidget>(name)->styleSheet(); }
    QString text(const QString &name); ///< of a button, line edit, label; "#index" of a combo box
    void enter(const QString &name, const QString &text); ///< into a line edit, or an item's index

    /// Status, texts of the three buttons, "read" or "write" while that is going on, "marks" if
    /// there are any, and each control that is not enabled as the link wants it.
    QString state();
    QTimer *activeTimer(); ///< of the running sequence, or nullptr

    void start(const QString &button); ///< a sequence; time passes by tick() only from here on
    void tick();
    bool tickCommand(); ///< a tick that sends; true when the module has the command
    bool deliver(const QByteArray &bytes); ///< to the window; true when it has handled them
    /// The same, while the window's thread is held up until the next tick is due as well.
    bool deliverWithTick(const QByteArray &bytes);
    bool writeRows(int count); ///< of a write that was started, each acknowledged

    /// What the user does with a box, else agrees to it, and with a file dialog.
    std::function<void(QMessageBox *)> handleBox;
    std::function<void(QFileDialog *)> handleDialog;
    static void answer(QDialog *fileDialog, const QString &path); ///< an empty path cancels

    simulator::SimulatedModule module;
    MainWindow window;
    const QList<QTimer *> timers; ///< of the window: read, write, read, write
    QByteArrayList commands;      ///< that the module received
    QStringList boxes;            ///< "title: text" of each that opened
    QStringList debugLines;       ///< of the window
    int deliveriesTraced() const { return debugLines.filter("\"data 2:").size(); }

private:
    void lookForDialogs();
    void waitForArrival();
};
