// The window before anything is connected: what it is made of, and its views.

#include "window_driver.h"

#include <QComboBox>
#include <QCryptographicHash>
#include <QGridLayout>
#include <QMenu>
#include <QMetaMethod>
#include <QRegularExpression>
#include <QResource>

/// Lines on the window and its slots, on the objects of its form and what they show, on the cells
/// in which they stand, on their order, and on what is hidden in the view of each kind.
static QStringList describe(MainWindow &window)
{
    QStringList lines{"title: " + window.windowTitle()};
    const QByteArray sheet = window.styleSheet().toUtf8();
    const QByteArray hash = QCryptographicHash::hash(sheet, QCryptographicHash::Sha256).toHex();
    lines.append("style sheet: " + QByteArray::number(sheet.size()) + " bytes, " + hash);
    // Stored as it is: the PNG inside stands behind a directory of four images.
    const QResource icon(":/images/KelvaneRTUTCP.ico");
    const QByteArray stored(reinterpret_cast<const char *>(icon.data()), int(icon.size()));
    lines.append("icon: " + stored.left(6).toHex() + ", PNG at "
                 + QByteArray::number(stored.indexOf("\x89PNG")));
    for (const QSize &size : window.windowIcon().availableSizes())
        lines.last().append(QString(", %1x%2").arg(size.width()).arg(size.height()));
    for (const QTimer *timer : window.findChildren<QTimer *>(QString(), Qt::FindDirectChildrenOnly))
        lines.append(QString::asprintf("timer: %d ms, active %d, single shot %d", timer->interval(),
                                       timer->isActive(), timer->isSingleShot()));
    const QMetaObject &meta = *window.metaObject();
    for (int i = meta.methodOffset(); i < meta.methodCount(); ++i) {
        const bool isPrivate = meta.method(i).access() == QMetaMethod::Private;
        lines.append((isPrivate ? "private " : "") + meta.method(i).methodSignature());
    }

    const QRegularExpression ours("^(?!qt_|_)."); // names of objects, unlike the toolkit's
    for (QObject *object : window.findChildren<QObject *>(ours)) {
        QString text = object->property("text").toString() + object->property("title").toString();
        auto *combo = qobject_cast<QComboBox *>(object);
        for (int i = 0;
             combo && object->objectName() != "serialPortInfoListBox" && i < combo->count(); ++i)
            text += combo->itemText(i) + '|';
        const bool isDisabled = object->property("enabled") == false;
        lines.append(QString("%1 %2 \"%3\"%4 in %5")
                         .arg(object->metaObject()->className(), object->objectName(), text,
                              isDisabled ? " disabled" : "", object->parent()->objectName()));
    }

    for (QLayout *layout : window.findChildren<QLayout *>(ours)) {
        for (int i = 0; i < layout->count(); ++i) {
            int row = i, column = 0, rows = 1, columns = 1;
            if (auto *grid = qobject_cast<QGridLayout *>(layout))
                grid->getItemPosition(i, &row, &column, &rows, &columns);
            QLayoutItem *item = layout->itemAt(i);
            QString name = QString::asprintf("spacer %dx%d", item->sizeHint().width(),
                                             item->sizeHint().height());
            if (item->widget())
                name = item->widget()->objectName();
            else if (item->layout())
                name = item->layout()->objectName();
            lines.append(layout->objectName()
                         + QString::asprintf(" %d %d %d %d: ", row, column, rows, columns) + name);
        }
    }

    QStringList focus{"focus:"}; // the order in which the widgets were made
    for (QWidget *next = window.nextInFocusChain(); next != &window;
         next = next->nextInFocusChain())
        focus.append(next->objectName());
    QStringList menu{"menu:"};
    for (const QAction *action : window.findChild<QMenu *>("menu")->actions())
        menu.append(action->objectName());
    lines << focus.filter(ours).join(' ') << menu.join(' ');

    for (const int kind : {0, 1, 2, 0, 1, 0, 2, 1}) { // the first 0 is the view of the start
        window.findChild<QComboBox *>("conbox0")->setCurrentIndex(kind);
        QString view =
            QString::asprintf("kind %d, %dx%d, hidden:", kind, window.width(), window.height());
        for (const QWidget *widget : window.findChildren<QWidget *>(ours))
            view += widget->isVisible() ? "" : ' ' + widget->objectName();
        lines.append(view);
    }
    return lines;
}

class TestForm : public QObject {
    Q_OBJECT

private slots:
    void formIsAsDesigned()
    {
        MainWindow window;
        window.setFixedSize(754, 550);
        window.show();
        const QStringList expected = QString(contentOf(TEST_DATA "form.txt")).split('\n');
        const QStringList actual = describe(window) << ""; // the last line, too, has an end
        if (actual != expected)
            qWarning("The form is now:\n%s", qPrintable(actual.join('\n')));
        QCOMPARE(actual, expected);
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
