// The window before anything is connected: what a person sees of it, for each kind of module.

#include "texts.h"
#include "window_driver.h"

#include <QAbstractButton>
#include <QComboBox>
#include <QGroupBox>
#include <QLabel>
#include <QMenu>

/// One thing on the form; a star behind it says that it is disabled.
static QString describe(const QWidget *widget)
{
    QString text = widget->property("text").toString();
    if (auto *combo = qobject_cast<const QComboBox *>(widget)) {
        QStringList items;
        for (int i = 0; i < combo->count(); ++i)
            items.append(combo->itemText(i));
        text = '<' + items.join('|') + '>';
    } else if (qobject_cast<const QAbstractButton *>(widget)) {
        text = '(' + text + ')';
    } else if (!qobject_cast<const QLabel *>(widget)) {
        text = '[' + text + ']';
    }
    return widget->isEnabled() ? text : text + '*';
}

/// What is seen in a group, line by line from the left to the right, then the groups inside it.
// NOLINTNEXTLINE(misc-no-recursion): they stand in one another.
static QStringList describeGroup(const QGroupBox *group)
{
    QMap<int, QMap<int, QString>> cells;
    QMap<int, QStringList> groups;
    for (const QWidget *child :
         group->findChildren<QWidget *>(QString(), Qt::FindDirectChildrenOnly)) {
        const QPoint middle = child->geometry().center();
        if (!child->isVisible())
            continue;
        if (auto *inner = qobject_cast<const QGroupBox *>(child)) {
            groups[middle.x() + middle.y()] = describeGroup(inner);
            continue;
        }
        auto line = cells.lowerBound(middle.y() - 5);
        if (line == cells.end() || line.key() > middle.y() + 5)
            line = cells.insert(middle.y(), {});
        line->insert(middle.x(), describe(child));
    }
    QStringList lines{"-- " + group->title()};
    for (const auto &line : cells)
        lines.append(QStringList(line.values()).join("  "));
    for (const QStringList &inner : groups)
        lines += inner;
    return lines;
}

class TestForm : public QObject {
    Q_OBJECT

private slots:
    void formIsAsDesigned()
    {
        User user;
        user.window.show();
        auto *kinds = user.find<QComboBox>("conbox0");
        user.find<QComboBox>("serialPortInfoListBox")->clear(); // other ones on each computer
        const auto see = [&] {
            QTest::qWait(1); // for the layout
            const QSize size = user.window.size();
            return QStringList(QString("== %1 x %2").arg(size.width()).arg(size.height()))
                + describeGroup(user.find<QGroupBox>("groupBox"));
        };
        const QStringList atStart = see();
        QMap<int, QStringList> views;
        for (const int kind : {2, 0, 1, 0, 2, 1, 2, 0}) {
            kinds->setCurrentIndex(kind);
            const QStringList view = see();
            if (!views.contains(kind))
                views[kind] = view;
            QCOMPARE(view, views[kind]); // whichever was shown before
        }

        QStringList menu;
        for (const QAction *action : user.find<QMenu>("menu")->actions())
            menu.append(action->text());
        QStringList icons;
        for (const QSize &size : user.window.windowIcon().availableSizes())
            icons.append(QString::number(size.width()));
        const QStringList actual =
            QStringList{user.window.windowTitle(), "icon: " + icons.join(' '),
                        user.find<QMenu>("menu")->title() + ": " + menu.join(", ")}
            + atStart + views[2] + views[0] + views[1];
        const QString expected = contentOf(TEST_DATA "form.txt");
        if (actual.join('\n') + '\n' != expected)
            qInfo("The form is now:\n%s", qPrintable(actual.join('\n')));
        QCOMPARE(actual, expected.trimmed().split('\n'));
    }

    void buttonsStartWithTheTextsThatTheCodeLooksFor()
    {
        User user;
        QCOMPARE(user.text("connect"), QString(text::connectPort));
        QCOMPARE(user.text("scan_parameters"), QString(text::scan));
    }

    void offClearsTheSlaveId()
    {
        WindowDriver driver;
        driver.enter("lineEdit_tcp_id", "17");
        for (const bool off : {true, false}) {
            driver.click("checkBox");
            QCOMPARE(driver.isEnabled("lineEdit_tcp_id"), !off);
            QCOMPARE(driver.mark("lineEdit_tcp_id"), off ? lilac : "");
            QCOMPARE(driver.text("lineEdit_tcp_id"), QString());
        }
    }
};

QTEST_MAIN(TestForm)
#include "test_form.moc"
