// Every window lays its controls out without clipping or overlap, at the
// scale of the run: registered twice, with QT_SCALE_FACTOR 1 and 2.

#include <QAbstractButton>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QtTest>

#include "app/aboutdialog.h"
#include "app/basicwindow.h"
#include "app/modechoicewindow.h"
#include "app/finddialog.h"
#include "app/replacedialog.h"
#include "app/advancedwindow.h"
#include "app/settingsdialog.h"
#include "app/splashwindow.h"
#include "app_fixture.h"

using namespace tarvoke::app;
using tarvoke::app::testing::AppFixture;

namespace {

// The controls a user reads or operates: text must fit and none may cover
// another.
bool isControl(const QWidget* widget) {
    return qobject_cast<const QAbstractButton*>(widget) || qobject_cast<const QLabel*>(widget) ||
           qobject_cast<const QLineEdit*>(widget) || qobject_cast<const QPlainTextEdit*>(widget);
}

QStringList layoutFaults(QWidget& window) {
    window.show();
    for (int i = 0; i < 10; ++i) QCoreApplication::processEvents();
    QStringList faults;
    const QRect inside = window.rect();
    QList<QPair<QRect, QString>> placed;
    for (QWidget* child : window.findChildren<QWidget*>()) {
        if (!child->isVisibleTo(&window) || !isControl(child)) continue;
        const QString name = QString("%1 '%2'").arg(child->metaObject()->className(),
                                                   child->property("text").toString());
        const QRect rect(child->mapTo(&window, QPoint(0, 0)), child->size());
        if (!inside.contains(rect)) faults << name + " reaches outside the window";
        if (!qobject_cast<QPlainTextEdit*>(child) && (child->width() < child->minimumSizeHint().width() ||
                                                       child->height() < child->minimumSizeHint().height()))
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
    void everyWindowFitsItsControls() {
        AppFixture f("1,1,1,0,1,", true);
        App& app = *f.app;
        SettingsDialog settings(app);
        AboutDialog about;
        FindDialog find(app.advancedWindow());
        const QList<QPair<QString, QWidget*>> windows = {
            {"splash", &app.splashWindow()}, {"choice", &app.modeChoiceWindow()}, {"Advanced Mode", &app.advancedWindow()},
            {"Basic Mode", &app.basicWindow()}, {"settings", &settings},    {"about", &about},
            {"find", &find},
        };
        for (const auto& [name, window] : windows) {
            const QStringList faults = layoutFaults(*window);
            QVERIFY2(faults.isEmpty(), qPrintable(name + ": " + faults.join("; ")));
        }
    }

    // A window made smaller than its layout allows keeps its controls apart.
    void basicModeKeepsItsLayoutAtItsSmallestSize() {
        AppFixture f("1,1,1,0,1,", true);
        BasicWindow& basic = f.app->basicWindow();
        basic.resize(basic.minimumSizeHint());
        const QStringList faults = layoutFaults(basic);
        QVERIFY2(faults.isEmpty(), qPrintable(faults.join("; ")));
    }
};

QTEST_MAIN(LayoutTest)
#include "layout_test.moc"
