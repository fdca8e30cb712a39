// Every window lays its controls out without clipping or overlap, at the
// scale of the run: registered twice, with QT_SCALE_FACTOR 1 and 2.

#include <QAbstractButton>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QtTest>

#include "app/aboutdialog.h"
#include "app/advancedwindow.h"
#include "app/basicwindow.h"
#include "app/finddialog.h"
#include "app/modechoicewindow.h"
#include "app/settingsdialog.h"
#include "app/splashwindow.h"
#include "app_fixture.h"

using namespace tarvoke::app;

namespace {

// The controls a user reads or operates: text must fit and none may cover another.
bool isControl(const QWidget* widget) {
    return qobject_cast<const QAbstractButton*>(widget) || qobject_cast<const QLabel*>(widget) ||
           qobject_cast<const QLineEdit*>(widget) || qobject_cast<const QPlainTextEdit*>(widget);
}

QStringList layoutFaults(QWidget& window) {
    window.show();
    for (int i = 0; i < 10; ++i) QCoreApplication::processEvents();
    QStringList faults;
    QList<QPair<QRect, QString>> placed;
    for (QWidget* child : window.findChildren<QWidget*>()) {
        if (!child->isVisibleTo(&window) || !isControl(child)) continue;
        const QString name = QString("%1 '%2'").arg(child->metaObject()->className(), child->property("text").toString());
        const QRect rect(child->mapTo(&window, QPoint(0, 0)), child->size());
        if (!window.rect().contains(rect)) faults << name + " reaches outside the window";
        const QSize needed = child->minimumSizeHint();
        if (!qobject_cast<QPlainTextEdit*>(child) && (child->width() < needed.width() || child->height() < needed.height()))
            faults << name + " is smaller than its text needs";
        for (const auto& [other, otherName] : placed)
            if (rect.intersects(other)) faults << name + " covers " + otherName;
        placed.append({rect, name});
    }
    window.hide();
    return faults;
}

}  // namespace

class LayoutTest : public QObject {
    Q_OBJECT

private slots:
    // Basic Mode also at its smallest size, below which its layout does not go.
    void everyWindowFitsItsControls() {
        testing::AppFixture f("1,1,1,0,1,");
        App& app = *f.app;
        SettingsDialog settings(app);
        AboutDialog about;
        FindDialog find(app.advancedWindow());
        const QList<QPair<QString, QWidget*>> windows = {
            {"splash", &app.splashWindow()}, {"choice", &app.modeChoiceWindow()}, {"Advanced Mode", &app.advancedWindow()},
            {"Basic Mode", &app.basicWindow()}, {"settings", &settings}, {"about", &about}, {"find", &find},
            {"Basic Mode at its smallest", &app.basicWindow()}};
        for (const auto& [name, window] : windows) {
            if (name.endsWith("smallest")) window->resize(window->minimumSizeHint());
            const QStringList faults = layoutFaults(*window);
            QVERIFY2(faults.isEmpty(), qPrintable(name + ": " + faults.join("; ")));
        }
    }
};

QTEST_MAIN(LayoutTest)
#include "layout_test.moc"
