// The window before anything is connected: what a person sees of it, for each kind of module.

#include "texts.h"
#include "window_driver.h"

#include <QAbstractButton>
#include <QAccessible>
#include <QApplication>
#include <QComboBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QPushButton>
#include <QStyleOptionFrame>

#include <cmath>

/// What a screen reader says of a field.
static QString labelOf(QWidget *field)
{
    const auto labels = QAccessible::queryAccessibleInterface(field)->relations(QAccessible::Label);
    return labels.isEmpty() ? "no label" : labels.first().first->text(QAccessible::Name);
}

/// One thing on the form; a star behind it says that it is disabled.
static QString describe(QWidget *widget)
{
    QString text = widget->property("text").toString();
    if (auto *combo = qobject_cast<QComboBox *>(widget)) {
        QStringList items;
        for (int i = 0; i < combo->count(); ++i)
            items.append(combo->itemText(i));
        text = '<' + labelOf(combo) + ": " + items.join('|') + '>';
    } else if (qobject_cast<QAbstractButton *>(widget)) {
        text = '(' + text + ')';
    } else if (!qobject_cast<QLabel *>(widget)) {
        text = '[' + labelOf(widget) + ": " + text + ']';
    }
    return widget->isEnabled() ? text : text + '*';
}

/// What is seen in a group, line by line from the left to the right, then the groups inside it.
// NOLINTNEXTLINE(misc-no-recursion): they stand in one another.
static QStringList describeGroup(const QGroupBox *group)
{
    QMap<int, QMap<int, QString>> cells;
    QMap<int, QStringList> groups;
    for (QWidget *child : group->findChildren<QWidget *>(QString(), Qt::FindDirectChildrenOnly)) {
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
    for (const auto &line : cells) // the label's own name of a field needs no mention
        lines.append(QStringList(line.values()).join("  ").remove(line.first() + ": "));
    for (const QStringList &inner : groups)
        lines += inner;
    return lines;
}

/// Of the colours in a picture, by the rules for web pages: of the one that is most of it to the
/// one that stands out most from it.
static double contrast(const QImage &picture)
{
    const auto brightness = [](QRgb colour) {
        double sum = 0.05;
        const QPair<double, int> parts[] = {
            {0.2126, qRed(colour)}, {0.7152, qGreen(colour)}, {0.0722, qBlue(colour)}};
        for (const auto &[weight, part] : parts)
            sum += weight * std::pow((part / 255.0 + 0.055) / 1.055, 2.4);
        return sum;
    };
    QMap<QRgb, int> colours;
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x)
            ++colours[picture.pixel(x, y)];
    }
    const QList<int> counts = colours.values();
    const int most = *std::max_element(counts.begin(), counts.end());
    const double ground = brightness(colours.key(most));
    double highest = 1;
    for (const QRgb colour : colours.keys()) {
        const double other = brightness(colour);
        highest = std::max({highest, other / ground, ground / other});
    }
    return highest;
}

/// Of a line edit, for a text and its cursor.
static int roomIn(const QLineEdit *edit)
{
    QStyleOptionFrame option;
    option.initFrom(edit);
    return edit->style()->subElementRect(QStyle::SE_LineEditContents, &option, edit).width() - 5;
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

    void nothingIsCut_data() { addKindRows(); }
    void nothingIsCut()
    {
        QFETCH(Kind, kind);
        WindowDriver driver(kind);
        if (driver.window.logicalDpiX() != 96)
            QSKIP("without a display, this Qt has letters of another size");
        auto *ports = driver.find<QComboBox>("serialPortInfoListBox");
        ports->clear();
        ports->addItem("ttyUSB0");
        const QMap<QString, QString> widest{{"MAC", "D0-D0-D0-D0-D0-D0"},
                                            {"version", "10.10.1000"},
                                            {"portTCP", "60000"},
                                            {"timewait", "60000"},
                                            {"timeout", "255"},
                                            {"rtu_virtual_id", "255"},
                                            {"tcp_id", "255"}};
        const QList<QStringList> labels{{text::connectPort, text::scan, "Записать параметры"},
                                        {text::disconnectPort, text::stopScan, text::stopApply}};
        for (QStringList texts : labels) {
            for (const char *button : {"connect", "scan_parameters", "applyButton"})
                driver.find<QPushButton>(button)->setText(texts.takeFirst());
            QTest::qWait(1); // for the layout
            for (QWidget *widget :
                 driver.find<QWidget>("centralwidget")->findChildren<QWidget *>()) {
                QSize needed = widget->sizeHint();
                if (auto *edit = qobject_cast<QLineEdit *>(widget)) {
                    const QString text =
                        widest.value(edit->objectName().section('_', 1), "255.255.255.255");
                    needed.setWidth(edit->width() - roomIn(edit)
                                    + edit->fontMetrics().boundingRect(text).width());
                }
                const bool fits = widget->size().expandedTo(needed) == widget->size();
                QVERIFY2(fits || !widget->isVisible() || qobject_cast<QGroupBox *>(widget),
                         qPrintable(widget->objectName()));
            }
        }
    }

    void everyTextCanBeRead()
    {
        QApplication::setPalette(QPalette(Qt::black)); // as on a dark desktop
        WindowDriver driver;
        const auto isReadable = [](QWidget *widget) {
            QTest::qWait(1);                                              // for the style
            const QRect inside = widget->rect().adjusted(12, 3, -12, -3); // of frame and cursor
            return contrast(widget->grab(inside).toImage()) >= 4.5;
        };
        for (const char *name :
             {"label_21", "conbox0", "connect", "applyButton", "checkBox", "menuBar"})
            QVERIFY2(isReadable(driver.find<QWidget>(name)), name);
        for (const char *name : {"lineEdit_MAC", "lineEdit_version", "lineEdit_ip"}) {
            driver.find<QLineEdit>(name)->setText("255.255.255.255");
            for (const QString &mark : {QString(), green, lilac}) {
                driver.find<QWidget>(name)->setStyleSheet(mark);
                QVERIFY2(isReadable(driver.find<QWidget>(name)), qPrintable(name + mark));
            }
        }
        driver.enter("lineEdit_ip", "255.255.255.255.255.255.255.255");
        driver.find<QLineEdit>("lineEdit_ip")->selectAll();
        QVERIFY(isReadable(driver.find<QWidget>("lineEdit_ip")));
        for (const char *text : {text::writeError, text::writeSucceeded}) {
            QMessageBox box(QMessageBox::NoIcon, "", text, QMessageBox::Ok, &driver.window);
            box.show();
            QVERIFY2(isReadable(box.findChild<QLabel *>("qt_msgbox_label")), text);
        }
    }

    void statusOutlivesTheMenu()
    {
        WindowDriver driver;
        driver.click("connect");
        auto *bar = driver.find<QMenuBar>("menuBar");
        QTest::mouseClick(bar, Qt::LeftButton, {}, bar->actionGeometry(bar->actions()[0]).center());
        auto *menu = driver.find<QMenu>("menu");
        QVERIFY(menu->isVisible());
        QTest::keyClick(menu, Qt::Key_Down);
        QTest::keyClick(menu, Qt::Key_Escape);
        QCOMPARE(driver.text("statusbar"), QString("Connected"));
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
