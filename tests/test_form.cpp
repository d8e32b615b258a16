// The window before it is connected, as a person sees it, for each module kind.

#include "texts.h"
#include "window_fixture.h"

#include <QAbstractButton>
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

/// WCAG contrast ratio between the most frequent shade and the one farthest from it. Frame and
/// cursor are cropped.
static double contrast(QWidget *widget)
{
    QTest::qWait(1); // applies the style
    const QImage picture = widget->grab(widget->rect().adjusted(12, 3, -12, -3)).toImage();
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
        UiDriver user;
        user.window.show();
        auto *kinds = user.find<QComboBox>("conbox0");
        user.find<QComboBox>("serialPortInfoListBox")->clear(); // depends on the computer
        const auto see = [&] {
            QTest::qWait(1); // applies the layout
            const QSize size = user.window.size();
            QStringList seen(QString("== %1 x %2").arg(size.width()).arg(size.height()));
            for (const char *group : {"groupBox", "groupBox_2", "groupBox_client"}) {
                if (user.isVisible(group))
                    seen += describeGroup(user.find<QGroupBox>(group));
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
            QCOMPARE(view, views[kind]); // independent of the previous view
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
        QCOMPARE(user.window.styleSheet().toUtf8(), contentOf(TEST_DATA "window.qss"));
    }

    void noTextIsTruncated_data() { addKindRows(); }
    void noTextIsTruncated()
    {
        QFETCH(Kind, kind);
        WindowFixture user(kind);
        if (user.window.logicalDpiX() != 96)
            QSKIP("without a display, this Qt has another font DPI");
        user.find<QComboBox>("serialPortInfoListBox")->clear(); // paths of ptys vary
        for (const QByteArrayList &row : tableOf("widest.txt"))
            user.find<QWidget>(row[0])->setProperty("text", QString(row[1]));
        QTest::qWait(1); // for the layout
        for (QWidget *widget : user.find<QWidget>("centralwidget")->findChildren<QWidget *>()) {
            if (!widget->isVisible() || qobject_cast<QGroupBox *>(widget))
                continue;
            const QSize size = widget->size();
            QVERIFY2(size.expandedTo(sizeNeededBy(widget)) == size,
                     qPrintable(widget->objectName()));
        }
    }

    void textHasEnoughContrast()
    {
        WindowFixture user;
        for (const char *name :
             {"label_21", "conbox0", "connect", "applyButton", "checkBox", "menuBar"})
            QVERIFY2(contrast(user.find<QWidget>(name)) >= 4.5, name);
        for (const char *name : {"lineEdit_MAC", "lineEdit_version", "lineEdit_ip"}) {
            user.find<QLineEdit>(name)->setText("255.255.255.255");
            user.find<QLineEdit>(name)->home(false); // so that the cursor is cropped
            for (const QString &mark : {QString(), green, lilac, red}) {
                user.find<QWidget>(name)->setStyleSheet(mark);
                const bool exempt = mark == red && !user.isEnabled(name);
                QVERIFY2(exempt || contrast(user.find<QWidget>(name)) >= 4.5,
                         qPrintable(name + mark));
            }
        }
        user.enter("lineEdit_ip", "255.255.255.255.255.255.255.255");
        user.find<QLineEdit>("lineEdit_ip")->selectAll();
        QVERIFY(contrast(user.find<QWidget>("lineEdit_ip")) >= 4.5);
        for (const char *text : {text::writeError, text::writeSucceeded}) {
            QMessageBox box(QMessageBox::NoIcon, "", text, QMessageBox::Ok, &user.window);
            box.show();
            QVERIFY2(contrast(box.findChild<QLabel *>("qt_msgbox_label")) >= 4.5, text);
        }
    }

    void offClearsTheSlaveId()
    {
        WindowFixture user;
        user.enter("lineEdit_tcp_id", "17");
        for (const bool off : {true, false}) {
            user.click("checkBox");
            QCOMPARE(user.isEnabled("lineEdit_tcp_id"), !off);
            QCOMPARE(user.mark("lineEdit_tcp_id"), off ? lilac : "");
            QCOMPARE(user.text("lineEdit_tcp_id"), QString());
        }
    }
};

WINDOW_TEST_MAIN(TestForm)
#include "test_form.moc"
