// Renders the program's windows into docs/screenshots/ for the README (run
// by docs/screenshots/make.sh on a private desktop). The windows act on the
// fake platform, so nothing on the desktop is touched.

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QLabel>
#include <QPainter>
#include <QTemporaryDir>
#include <QTextBlock>
#include <QToolTip>

#include "app/advancedwindow.h"
#include "app/app.h"
#include "app/basicwindow.h"
#include "app/modechoicewindow.h"
#include "app/settingsdialog.h"
#include "app/splashwindow.h"
#include "platform/fake/fakeplatform.h"

using namespace tarvoke;
using namespace tarvoke::app;

namespace {

void save(QWidget& window, const QString& folder, const QString& name) {
    window.show();
    for (int i = 0; i < 20; ++i) QApplication::processEvents();
    window.grab().save(folder + "/" + name + ".png");
    window.hide();
}

}  // namespace

int main(int argc, char** argv) {
    QApplication application(argc, argv);
    const QString folder = argc > 1 ? argv[1] : ".";
    QDir().mkpath(folder);
    // The settings of a first Basic Mode start, in a folder of their own.
    QTemporaryDir settingsFolder;
    QFile settings(settingsFolder.filePath("settings.dat"));
    if (!settings.open(QIODevice::WriteOnly) || settings.write("1,1,1,0,1,") < 0) return 1;
    settings.close();
    platform::fake::FakePlatform fake;
    QtDialogs dialogs;
    App app({settingsFolder.path().toStdString(), settingsFolder.filePath("settings.dat").toStdString(),
             fake.platform(), &dialogs, [](int) {}, nullptr});
    app.loadSettings();

    save(app.splashWindow(), folder, "splash");
    save(app.modeChoiceWindow(), folder, "choice");

    AdvancedWindow& advanced = app.advancedWindow();
    advanced.setWindowTitle("Tarvoke - login.tk");
    advanced.setText(
        "Function(Main);\n"
        "OrigionalPlayTime(4.2);\n"
        "SetPausePercent(100);\n"
        "Start(firefox);\n"
        "Pause(1500);\n"
        "MoveMouse(640, 310);\n"
        "LeftClick();\n"
        "SendKeys(user@example.org{TAB});\n"
        "Pause(120);\n"
        "If(lx > 600);\n"
        "Message(Signed in, information, Tarvoke);\n"
        "EndIf();\n"
        "EndFunction();");
    advanced.resize(640, 420);
    save(advanced, folder, "advanced-mode");

    // A mistake found: Check (F7) lists it, the editor underlines it and its
    // tooltip says why. The tooltip is drawn in, as it is a window of its own
    // and shows only under the pointer.
    advanced.setWindowTitle("Tarvoke - login.tk");
    advanced.setText(
        "Function(Main);\n"
        "Start(firefox);\n"
        "Pause(1500);\n"
        "MoveMouse(640, 310);\n"
        "SendKeys(\"user@example.org\"); # the login #\n"
        "Pause(120);\n"
        "LeftClik();\n"
        "\n"
        "EndFunction();");
    advanced.resize(640, 460);
    advanced.show();
    advanced.checkAction->trigger();
    advanced.editor->goTo(7, 4);
    for (int i = 0; i < 20; ++i) QApplication::processEvents();
    QTextCursor marked(advanced.editor->document()->findBlockByNumber(6));
    marked.setPosition(marked.position() + 3);
    const QPoint point = advanced.editor->cursorRect(marked).center();
    QLabel tip(advanced.editor->messageAt(point));
    tip.setPalette(QToolTip::palette());
    tip.setBackgroundRole(QPalette::ToolTipBase);
    tip.setForegroundRole(QPalette::ToolTipText);
    tip.setAutoFillBackground(true);
    tip.setFrameStyle(QFrame::Box | QFrame::Plain);
    tip.setMargin(3);
    tip.adjustSize();
    QPixmap picture = advanced.grab();
    QPainter painter(&picture);
    painter.drawPixmap(advanced.editor->viewport()->mapTo(&advanced, point + QPoint(4, 14)), tip.grab());
    picture.save(folder + "/editor-finding.png");
    advanced.hide();

    BasicWindow& basic = app.basicWindow();
    basic.setWindowTitle("Tarvoke Basic Mode - login.tk");
    save(basic, folder, "basic-mode");

    SettingsDialog settingsDialog(app);
    save(settingsDialog, folder, "settings");
    return 0;
}
