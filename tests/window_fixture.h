#pragma once

#include "application.h"
#include "simulated_module.h"
#include "ui_driver.h"

#include <QMessageBox>
#include <QTest>

/// QTEST_MAIN with the program's own application.
#define WINDOW_TEST_MAIN(Test) /* NOLINT(cppcoreguidelines-macro-usage) */                         \
    int main(int argc, char *argv[])                                                               \
    {                                                                                              \
        const Application application(argc, argv);                                                 \
        Test test;                                                                                 \
        return QTest::qExec(&test, argc, argv);                                                    \
    }

using Kind = simulator::ModuleKind; ///< as the module has it; the program has its own
Q_DECLARE_METATYPE(Kind)
constexpr int oneHourMs = 3600 * 1000; // in ms
constexpr Kind allKinds[] = {Kind::TcpRtu, Kind::RtuTcp, Kind::Universal};
QString nameOf(Kind kind);
void addKindRows(); ///< a row for each module kind with a column "kind"

QByteArray contentOf(const QString &path);
/// The rows of a table in data/, split at their bars, with %xx turned into bytes. Lines that begin
/// with # are for people.
QList<QByteArrayList> tableOf(const QString &file);
/// Those of its rows whose first cell has the number of the kind, without that cell.
QList<QByteArrayList> rowsOf(const QString &file, Kind kind);
void addRowsOf(const QString &file); ///< a row for each, with columns "kind" and "row"

/// One parameter with a value, as the form and the line have them; see data/parameters.txt.
struct ParameterCase {
    QString widget;
    QString inForm;
    QByteArray query;
    QByteArray onLine;
    QByteArray command; ///< empty if it is display only
};
/// In the order in which they are read and written.
QVector<ParameterCase> parametersOf(Kind kind, bool displayOnlyToo = true);
QByteArrayList writeCommandsOf(Kind kind); ///< of a whole write, up to the restart
QByteArray acknowledgementOf(Kind kind);

/// Style sheets of the marks.
inline const QString green = "background-color:  #90ee90;";
inline const QString red = "background-color: #FF2400";
inline const QString lilac = "background-color:  #f5edff;";

/// What WindowFixture::state() says of a window in which everything agrees.
namespace state {
inline const QString connected = "Connected, Отсоединиться, Сканировать, Запись параметры";
inline const QString disconnected = "Disconnected, Cоединиться, Сканировать, Запись параметры";
inline const QString reading =
    "Connected, Отсоединиться, Стоп сканирования, Запись параметры, read";
inline const QString writing = "Connected, Отсоединиться, Сканировать, Остановить запись, write";
} // namespace state

/// Every box that the program has, as UiDriver::boxes lists it; %1 is the name of the kind.
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

/// A user whose window has a simulated module at its port, and who has time in hand.
class WindowFixture : public UiDriver {
public:
    explicit WindowFixture(Kind kind = Kind::Universal);

    /// For a silent module: connects, arms the apply button, fills the fields of all kinds.
    void connectAndFillForm();

    /// Status, texts of the three buttons, "read" or "write" for each sequence that is running,
    /// and each control that is not enabled as the link wants it.
    QString state();
    QTimer *activeTimer(); ///< of the running sequence, or nullptr
    void markAll();        ///< fields, green
    /// Names of the fields of all kinds with this mark, or with any.
    QStringList marked(const QString &styleSheet = QString());
    QStringList filled(); ///< likewise of those that are not empty

    void start(const QString &button); ///< a sequence; time passes by tick() only from here on
    void tick(int count = 1);
    bool tickAndAwaitCommand(); ///< a tick that sends; true when the module has the command
    bool deliver(const QByteArray &bytes); ///< to the window; true when it has handled them
    /// The same, while the window's thread is held up until the next tick is due as well.
    bool deliverWithTick(const QByteArray &bytes);
    bool writeRows(int count); ///< of a write that was started, each acknowledged

    simulator::SimulatedModule module;
    QByteArrayList commands; ///< that the module received

private:
    QStringList fieldsWhere(const std::function<bool(const QString &)> &holds);
    /// Whether the window has something to read, or has so within that time.
    bool hasUnread(int waitMs);
};
