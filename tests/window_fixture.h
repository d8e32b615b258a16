#pragma once

#include "application.h"
#include "simulated_module.h"
#include "ui_driver.h"

#include <QDebug>
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
/// The rows of a table in data/. Bars separate cells, %xx is a byte, # begins a comment line.
QList<QByteArrayList> tableOf(const QString &file);
/// The rows whose first cell contains the number of the kind, without that cell.
QList<QByteArrayList> rowsOf(const QString &file, Kind kind);
void addRowsOf(const QString &file); ///< adds test rows with columns "kind" and "row", expanded

template <class Value> QByteArray printable(const Value &value)
{
    QString text;
    QDebug(&text).noquote() << value;
    return text.toUtf8();
}
// NOLINTBEGIN(cppcoreguidelines-macro-usage)
/// Like QCOMPARE, but prints lists too, and Russian texts unescaped and in full.
#define COMPARE(actual, expected)                                                                  \
    do {                                                                                           \
        const auto &is = actual;                                                                   \
        const auto &shouldBe = expected;                                                           \
        QVERIFY2(is == shouldBe, printable(is) + "\nexpected: " + printable(shouldBe));            \
    } while (false)
/// The same, but waits until the values are equal.
#define TRY_COMPARE(actual, expected)                                                              \
    QTRY_VERIFY2((actual) == (expected), printable(actual) + "\nexpected: " + printable(expected))
// NOLINTEND(cppcoreguidelines-macro-usage)

/// A parameter with a value, as in the form and on the line; see data/parameters.txt.
struct ParameterCase {
    QString widget;
    QString inForm;
    QByteArray query;
    QByteArray onLine;
    int width;             ///< 0 for a combo box
    QByteArray command;    ///< empty if it is read-only
    QByteArray exceptions; ///< of its write
};
/// In the order in which they are read and written.
QVector<ParameterCase> parametersOf(Kind kind, bool readOnlyToo = true);
QStringList fieldsOf(Kind kind);           ///< names of the widgets
QByteArrayList writeCommandsOf(Kind kind); ///< the commands of a complete write, with the restart
QByteArray acknowledgementOf(Kind kind);

/// Style sheets by mark.
inline const QMap<QString, QString> marks{{"", ""},
                                          {"green", "background-color:  #90ee90;"},
                                          {"red", "background-color: #FF2400"},
                                          {"lilac", "background-color:  #f5edff;"},
                                          {"lilac from file", "background-color: #f5edff;"}};

/// Replaces each <name> by the text in data/texts.txt, <ok> by the acknowledgement, <all> and
/// <universal> by the names of all fields and of those that only the universal kind has.
QByteArray expand(QByteArray text, Kind kind);

/// A window with a simulated module at its port, whose ticks the test triggers.
class WindowFixture : public UiDriver {
public:
    explicit WindowFixture(Kind kind = Kind::Universal);

    /// Makes the module silent, connects, enables writes by a stopped read, and fills all fields.
    void connectAndFillForm();

    /// The status, the texts of the three buttons, "read" or "write" for each active sequence, and
    /// each control whose enabled state does not match the connection.
    QString state();
    QString known(const QByteArray &name) const; ///< a text of data/texts.txt
    QString markOf(const QString &field);        ///< a key of marks
    QString shown(const QString &field);         ///< "name: value, mark"
    QTimer *activeTimer();                       ///< of the running sequence, or nullptr
    void markAll();                              ///< marks all fields green
    /// Names of the fields of all kinds with this mark, or with any mark.
    QStringList marked(const QString &mark = QString());
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
