#pragma once

#include "application.h"
#include "simulated_module.h"
#include "ui_driver.h"

#include <QMessageBox>
#include <QTest>

/// QTEST_MAIN with the program's Application.
#define WINDOW_TEST_MAIN(Test) /* NOLINT(cppcoreguidelines-macro-usage) */                         \
    int main(int argc, char *argv[])                                                               \
    {                                                                                              \
        const Application application(argc, argv);                                                 \
        Test test;                                                                                 \
        return QTest::qExec(&test, argc, argv);                                                    \
    }

using Kind = simulator::ModuleKind; ///< the simulator's; the program has a type of its own
Q_DECLARE_METATYPE(Kind)
constexpr int oneHourMs = 3600 * 1000;
constexpr Kind allKinds[] = {Kind::TcpRtu, Kind::RtuTcp, Kind::Universal};
QString nameOf(Kind kind);
void addKindRows(); ///< adds a row for each module kind, with a column "kind"

QByteArray contentOf(const QString &path);
/// The rows of a table in data/. Bars separate cells, %xx is a byte, lines that begin with # are
/// comments.
QList<QByteArrayList> tableOf(const QString &file);
/// The rows whose first cell contains the number of the kind, without that cell.
QList<QByteArrayList> rowsOf(const QString &file, Kind kind);
void addRowsOf(const QString &file); ///< adds a test row for each, with columns "kind" and "row"

/// A parameter with a value, as in the form and on the line; see data/parameters.txt.
struct ParameterCase {
    QString widget;
    QString inForm;
    QByteArray query;
    QByteArray onLine;
    QByteArray command; ///< empty if it is display-only
};
/// In the order in which they are read and written.
QVector<ParameterCase> parametersOf(Kind kind, bool displayOnlyToo = true);
QByteArrayList writeCommandsOf(Kind kind); ///< the commands of a complete write, with the restart
QByteArray acknowledgementOf(Kind kind);

/// Style sheets of the marks.
inline const QString green = "background-color:  #90ee90;";
inline const QString red = "background-color: #FF2400";
inline const QString lilac = "background-color:  #f5edff;";

/// WindowFixture::state() of a consistent window.
namespace state {
inline const QString connected = "Connected, Отсоединиться, Сканировать, Запись параметры";
inline const QString disconnected = "Disconnected, Cоединиться, Сканировать, Запись параметры";
inline const QString reading =
    "Connected, Отсоединиться, Стоп сканирования, Запись параметры, read";
inline const QString writing = "Connected, Отсоединиться, Сканировать, Остановить запись, write";
} // namespace state

/// All message boxes of the program, as UiDriver::boxes lists them; %1 is the name of the kind.
namespace box {
inline const QString portDenied = "Critical: Отказано в доступе: Ошибка соединения";
inline const QString portLost = "Critical: Critical Error: Ошибка соединения";
inline const QString emptyDelivery = "Critical: нет соединения с модуля: Ошибка соединения";
inline const QString refused = "Critical: Ошибка: <FONT COLOR='#800000'> Ошибка записи </FONT>";
inline const QString refusedTightly =
    "Critical: Ошибка: <FONT COLOR='#800000'>Ошибка записи </FONT>";
inline const QString noFile = "Critical: Ошибка: Файл конфигурации не выбран";
inline const QString factoryReset =
    "NoIcon: Сброс: Вы действительно хотите cбросить к заводским настройкам?";
inline const QString noConnection = "Critical: Ошибка соединения: нет соединения с модулем %1";
inline const QString success = "Information: Результы изменения: <FONT COLOR='#008000'>Изменение "
                               "параметров %1 было успешно</FONT>";
} // namespace box

/// A window with a simulated module at its port, whose ticks the test triggers.
class WindowFixture : public UiDriver {
public:
    explicit WindowFixture(Kind kind = Kind::Universal);

    /// Makes the module silent, connects, enables writes by a stopped read, and fills all fields.
    void connectAndFillForm();

    /// The status, the texts of the three buttons, "read" or "write" for each active sequence, and
    /// each control whose enabled state does not match the connection.
    QString state();
    QTimer *activeTimer(); ///< of the running sequence, or nullptr
    void markAll();        ///< marks all fields green
    /// Names of the fields of all kinds with this mark, or with any mark.
    QStringList marked(const QString &styleSheet = QString());
    QStringList filled(); ///< names of the fields that are not empty

    void start(const QString &button); ///< starts a sequence that ticks by tick() only
    void tick(int count = 1);
    bool tickAndAwaitCommand();            ///< returns whether the module received a command
    bool deliver(const QByteArray &bytes); ///< returns whether the window has read the bytes
    /// The same, but blocks the window until the next tick is due as well.
    bool deliverWithTick(const QByteArray &bytes);
    bool writeRows(int count); ///< continues a write, acknowledging each command

    simulator::SimulatedModule module;
    QByteArrayList commands; ///< received by the module

private:
    QStringList fieldsWhere(const std::function<bool(const QString &)> &holds);
    /// Whether the window has unread data, now or within that time.
    bool hasUnread(int waitMs);
};
