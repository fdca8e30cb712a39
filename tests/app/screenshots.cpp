// Renders the program's windows into docs/screenshots/ (run by
// docs/screenshots/make.sh on a private desktop); not a test.

#include <QApplication>
#include <QDir>
#include <QPlainTextEdit>
#include <QTimer>

#include "app/basicwindow.h"
#include "app/modechoicewindow.h"
#include "app/advancedwindow.h"
#include "app/settingsdialog.h"
#include "app/splashwindow.h"
#include "app_fixture.h"

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
    testing::AppFixture f("1,1,1,0,1,", true);
    App& app = *f.app;

    save(app.splashWindow(), folder, "splash");
    save(app.modeChoiceWindow(), folder, "choice");

    AdvancedWindow& main = app.advancedWindow();
    main.setWindowTitle("Tarvoke - login.tk");
    main.setText(
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
    main.resize(640, 420);
    save(main, folder, "advanced-mode");

    BasicWindow& basic = app.basicWindow();
    basic.setWindowTitle("Tarvoke Basic Mode - login.tk");
    save(basic, folder, "basic-mode");

    SettingsDialog settings(app);
    save(settings, folder, "settings");
    return 0;
}
