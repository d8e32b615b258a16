// The window before it is connected, as a person sees it, for each module kind.

#include "window_fixture.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QComboBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QStyleOptionFrame>

#include <cmath>

/// One widget of the form; a star marks it as disabled.
static QString describe(QWidget *widget)
{
    QString text = widget->property("text").toString();
    if (auto *combo = qobject_cast<QComboBox *>(widget)) {
        QStringList items;
        for (int i = 0; i < combo->count(); ++i)
            items.append(combo->itemText(i));
        text = '<' + UiDriver::labelOf(combo) + ": " + items.join('|') + '>';
    } else if (qobject_cast<QAbstractButton *>(widget)) {
        text = '(' + text + ')';
    } else if (!qobject_cast<QLabel *>(widget)) {
        text = '[' + UiDriver::labelOf(widget) + ": " + text + ']';
    }
    return widget->isEnabled() ? text : text + '*';
}

/// The visible widgets of a group, line by line from left to right, without nested groups.
static QStringList describeGroup(const QGroupBox *group)
{
    QMap<int, QMap<int, QString>> cells;
    for (QWidget *child : group->findChildren<QWidget *>(QString(), Qt::FindDirectChildrenOnly)) {
        const QPoint middle = child->geometry().center();
        if (!child->isVisible() || qobject_cast<const QGroupBox *>(child))
            continue;
        auto line = cells.lowerBound(middle.y() - 5);
        if (line == cells.end() || line.key() > middle.y() + 5)
            line = cells.insert(middle.y(), {});
        line->insert(middle.x(), describe(child));
    }
    QStringList lines{"-- " + group->title()};
    for (const auto &line : cells) // a field's label is listed already
        lines.append(QStringList(line.values()).join("  ").remove(line.first() + ": "));
    return lines;
}

/// WCAG contrast ratio between the most frequent shade of an area and the one farthest from it.
/// Frame and cursor are cropped. By default, the area is the widget's.
static double contrast(QWidget *widget, QRect area = {})
{
    QTest::qWait(1); // applies the style
    area = area.isNull() ? widget->rect() : area;
    const QImage picture = widget->grab(area.adjusted(12, 3, -12, -3)).toImage();
    const auto part = [](int value) { return std::pow((value / 255.0 + 0.055) / 1.055, 2.4); };
    QMap<double, int> shades;
    for (int i = 0; i < picture.width() * picture.height(); ++i) {
        const QColor colour = picture.pixel(i % picture.width(), i / picture.width());
        ++shades[0.05 + 0.2126 * part(colour.red()) + 0.7152 * part(colour.green())
                 + 0.0722 * part(colour.blue())];
    }
    const QList<int> counts = shades.values();
    const double most = shades.key(*std::max_element(counts.begin(), counts.end()));
    return std::max(shades.lastKey() / most, most / shades.firstKey());
}

/// The size that the text and the cursor, or the other content, need.
static QSize sizeNeededBy(const QWidget *widget)
{
    auto *edit = qobject_cast<const QLineEdit *>(widget);
    if (!edit)
        return widget->sizeHint();
    QStyleOptionFrame option;
    option.initFrom(edit);
    const QRect room = edit->style()->subElementRect(QStyle::SE_LineEditContents, &option, edit);
    const int textWidth = edit->fontMetrics().boundingRect(edit->text()).width() + 5;
    return {edit->width() - room.width() + textWidth, edit->sizeHint().height()};
}

class TestForm : public QObject {
    Q_OBJECT

private slots:
    void formIsAsDesigned()
    {
        UiDriver driver;
        auto *kinds = driver.find<QComboBox>("conbox0");
        driver.find<QComboBox>("serialPortInfoListBox")->clear(); // depends on the computer
        driver.window.show();
        const auto see = [&] {
            QTest::qWait(1); // applies the layout
            const QSize size = driver.window.size();
            QStringList seen(QString("== %1 x %2").arg(size.width()).arg(size.height()));
            for (const char *group : {"groupBox", "groupBox_2", "groupBox_client"}) {
                if (driver.isVisible(group))
                    seen += describeGroup(driver.find<QGroupBox>(group));
            }
            return seen;
        };
        const QStringList atStart = see();
        QMap<int, QStringList> views;
        for (const int kind : {2, 0, 1, 0, 2, 1, 2, 0}) {
            kinds->setCurrentIndex(kind);
            const QStringList view = see();
            if (!views.contains(kind))
                views[kind] = view;
            COMPARE(view, views[kind]); // independent of the previous view
        }

        QStringList menu;
        for (const QAction *action : driver.find<QMenu>("menu")->actions())
            menu.append(action->text());
        QStringList icons;
        for (const QSize &size : driver.window.windowIcon().availableSizes())
            icons.append(QString::number(size.width()));
        const QStringList actual =
            QStringList{driver.window.windowTitle(), "icon: " + icons.join(' '),
                        driver.find<QMenu>("menu")->title() + ": " + menu.join(", ")}
            + atStart + views[2] + views[0] + views[1];
        const QString expected = contentOf(TEST_DATA "form.txt");
        if (actual.join('\n') + '\n' != expected) // too long for the message of a test
            qInfo("The form is now:\n%s", qPrintable(actual.join('\n')));
        QVERIFY(actual.join('\n') + '\n' == expected);
        QCOMPARE(driver.window.styleSheet().toUtf8(), contentOf(TEST_DATA "window.qss"));
    }

    void noTextIsTruncated_data() { addKindRows(); }
    void noTextIsTruncated()
    {
        QFETCH(Kind, kind);
        UiDriver driver;
        if (driver.window.logicalDpiX() != 96)
            QSKIP("without a display, this Qt has another font DPI");
        // Before the window is shown, because the list keeps the width of its first content.
        driver.find<QComboBox>("serialPortInfoListBox")->clear();
        driver.find<QComboBox>("conbox0")->setCurrentIndex(static_cast<int>(kind));
        driver.window.show();
        for (const QByteArrayList &row : tableOf("widest.txt"))
            QVERIFY2(driver.find<QWidget>(row[0])->setProperty("text", QString(row[1])), row[0]);
        QTest::qWait(1); // for the layout
        for (QWidget *widget : driver.find<QWidget>("centralwidget")->findChildren<QWidget *>()) {
            if (!widget->isVisible() || qobject_cast<QGroupBox *>(widget))
                continue;
            const QSize size = widget->size();
            QVERIFY2(size.expandedTo(sizeNeededBy(widget)) == size,
                     qPrintable(widget->objectName()));
        }
    }

    /// Also proves that every line edit takes what is typed, and that nothing else does.
    void tabWalksThroughTheForm_data() { addRowsOf("focus.txt"); }
    void tabWalksThroughTheForm()
    {
        QFETCH(Kind, kind);
        QFETCH(QByteArrayList, row);
        WindowFixture fixture(kind);
        if (row[0] == "connected")
            fixture.click("connect");
        const QString typed = QString("x_.").repeated(14);
        QStringList order;
        QTest::keyClick(&fixture.window, Qt::Key_Tab);
        while (!order.contains(fixture.window.focusWidget()->objectName())) {
            QWidget *widget = fixture.window.focusWidget();
            const QString name = widget->objectName();
            const QString before = fixture.text(name);
            QTest::keyClicks(widget, typed);
            auto *edit = qobject_cast<QLineEdit *>(widget);
            const QString after = edit ? edit->displayText() : fixture.text(name);
            QVERIFY2(after == (edit ? typed : before), qPrintable(name + " shows " + after));
            order.append(name);
            QTest::keyClick(widget, Qt::Key_Tab);
        }
        COMPARE(order.join(' '), QString(row[1]));
    }

    void textHasEnoughContrast()
    {
        WindowFixture fixture;
        for (const char *name : {"label_21", "conbox0", "connect", "checkBox", "menuBar"})
            QVERIFY2(contrast(fixture.find<QWidget>(name)) >= 4.5, name);
        const double disabled = contrast(fixture.find<QWidget>("applyButton"));
        QVERIFY2(disabled > 2.7 && disabled < 3.5, QByteArray::number(disabled));
        fixture.click("connect");
        for (const char *name : {"conbox0", "serialPortInfoListBox"})
            QVERIFY2(contrast(fixture.find<QWidget>(name)) >= 4.5, name);
        for (const char *name : {"lineEdit_MAC", "lineEdit_version", "lineEdit_ip"}) {
            fixture.find<QLineEdit>(name)->setText("255.255.255.255");
            fixture.find<QLineEdit>(name)->home(false); // so that the cursor is cropped
            for (const QString &mark : marks.keys()) {
                fixture.find<QWidget>(name)->setStyleSheet(marks[mark]);
                const double ratio = contrast(fixture.find<QWidget>(name));
                const bool exempt = mark == "red" && !fixture.isEnabled(name);
                QVERIFY2(exempt || ratio >= 4.5, qPrintable(fixture.shown(name)));
                QVERIFY2(fixture.isEnabled(name) == (ratio > 8) || mark == "red",
                         qPrintable(fixture.shown(name)));
            }
        }
        // Selected text.
        fixture.enter("lineEdit_ip", "255.255.255.255.255.255.255.255");
        fixture.find<QLineEdit>("lineEdit_ip")->selectAll();
        QVERIFY(contrast(fixture.find<QWidget>("lineEdit_ip")) >= 4.5);
        auto *menu = fixture.find<QMenu>("menu");
        menu->popup({});
        QTest::keyClick(menu, Qt::Key_Down);
        QVERIFY(contrast(menu, menu->actionGeometry(menu->activeAction())) >= 4.5);
        menu->close();
        auto *modes = fixture.find<QComboBox>("comboBox_mode");
        modes->setCurrentIndex(1);
        modes->showPopup();
        QAbstractItemView *list = modes->view();
        QVERIFY(contrast(list->viewport(), list->visualRect(list->currentIndex())) >= 4.5);
        modes->hidePopup();
    }

    void offClearsTheSlaveId()
    {
        WindowFixture fixture;
        fixture.enter("lineEdit_tcp_id", "17");
        for (const bool off : {true, false}) {
            fixture.click("checkBox");
            QCOMPARE(fixture.isEnabled("lineEdit_tcp_id"), !off);
            QVERIFY(fixture.shown("lineEdit_tcp_id").endsWith(off ? ": , lilac" : ": , "));
        }
    }
};

WINDOW_TEST_MAIN(TestForm)
#include "test_form.moc"
