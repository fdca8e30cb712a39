#include "app/app.h"

#include "app/frmabout.h"
#include "app/frmbasic.h"
#include "app/frmchoice.h"
#include "app/frmmain.h"
#include "app/frmsettings.h"
#include "app/frmsplash2.h"

namespace tarvoke::app {

App::App(AppOptions options) : m_options(std::move(options)) {
    session.platform = m_options.platform;
}

App::~App() = default;

void App::LoadSettings() {
    const LoadedSettings loaded = app::LoadSettings(m_options.settingsFile);
    session.repeat = loaded.settings.bRepeat;
    bMouseMove = loaded.settings.bMouseMove;
    bExtendedClicks = loaded.settings.bExtendedClicks;
    session.ignorePauses = loaded.settings.bIgnorePauses;
    bBasicMode = loaded.settings.bBasicMode;
    bFirstRun = loaded.bFirstRun;
    if (bFirstRun) session.pauseFactor = 1.0;
}

void App::SaveSettings() {
    app::SaveSettings(m_options.settingsFile,
                      {session.repeat, bMouseMove, bExtendedClicks, session.ignorePauses, bBasicMode});
}

void App::exitProgram() {
    playback.stopPlay();
    SaveSettings();
    endProcess();
}

FrmSplash2& App::frmSplash2() {
    if (!m_frmSplash2) m_frmSplash2 = std::make_unique<FrmSplash2>(*this);
    return *m_frmSplash2;
}

FrmChoice& App::frmChoice() {
    if (!m_frmChoice) m_frmChoice = std::make_unique<FrmChoice>(*this);
    return *m_frmChoice;
}

FrmMain& App::frmMain() {
    if (!m_frmMain) m_frmMain = std::make_unique<FrmMain>(*this);
    return *m_frmMain;
}

FrmBasic& App::frmBasic() {
    if (!m_frmBasic) m_frmBasic = std::make_unique<FrmBasic>(*this);
    return *m_frmBasic;
}

void App::showModeWindow() {
    if (bBasicMode) {
        FrmBasic& basic = frmBasic();
        basic.show();
        basic.timers().setInputsTimer(true);
    } else {
        frmMain().show();
    }
}

void App::hideChoice() {
    if (m_frmChoice) m_frmChoice->hide();
}

void App::showSettings() {
    auto* dialog = new FrmSettings(*this);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->show();
}

void App::showAbout() {
    auto* dialog = new FrmAbout();
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->show();
}

void App::openReadme() {
    dialogs().openDocument(QString::fromStdString((m_options.programFolder / "readme.txt").string()));
}

}  // namespace tarvoke::app
