#include "app/app.h"

#include "app/aboutdialog.h"
#include "app/advancedwindow.h"
#include "app/basicwindow.h"
#include "app/debugwindow.h"
#include "app/modechoicewindow.h"
#include "app/settingsdialog.h"
#include "app/splashwindow.h"
#include "app/whitedebugwindow.h"

namespace tarvoke::app {

App::App(AppOptions options) : m_options(std::move(options)) {
    session.platform = m_options.platform;
}

App::~App() = default;

void App::loadSettings() {
    const LoadedSettings loaded = app::loadSettings(m_options.settingsFile);
    session.repeat = loaded.settings.repeat;
    mouseMove = loaded.settings.mouseMove;
    extendedClicks = loaded.settings.extendedClicks;
    session.ignorePauses = loaded.settings.ignorePauses;
    basicMode = loaded.settings.basicMode;
    firstRun = loaded.firstRun;
    if (firstRun) session.pauseFactor = 1.0;
}

void App::saveSettings() {
    app::saveSettings(m_options.settingsFile, {session.repeat, mouseMove, extendedClicks, session.ignorePauses, basicMode});
}

void App::exitProgram() {
    playback.stopPlay();
    saveSettings();
    endProcess();
}

SplashWindow& App::splashWindow() {
    if (!m_splashWindow) m_splashWindow = std::make_unique<SplashWindow>(*this);
    return *m_splashWindow;
}

ModeChoiceWindow& App::modeChoiceWindow() {
    if (!m_modeChoiceWindow) m_modeChoiceWindow = std::make_unique<ModeChoiceWindow>(*this);
    return *m_modeChoiceWindow;
}

AdvancedWindow& App::advancedWindow() {
    if (!m_advancedWindow) m_advancedWindow = std::make_unique<AdvancedWindow>(*this);
    return *m_advancedWindow;
}

BasicWindow& App::basicWindow() {
    if (!m_basicWindow) m_basicWindow = std::make_unique<BasicWindow>(*this);
    return *m_basicWindow;
}

WhiteDebugWindow& App::whiteDebugWindow() {
    if (!m_whiteDebugWindow) m_whiteDebugWindow = std::make_unique<WhiteDebugWindow>(*this);
    return *m_whiteDebugWindow;
}

DebugWindow& App::debugWindow() {
    if (!m_debugWindow) m_debugWindow = std::make_unique<DebugWindow>(*this);
    return *m_debugWindow;
}

void App::showModeWindow() {
    if (basicMode) {
        BasicWindow& basic = basicWindow();
        basic.show();
        basic.timers().setHotkeyPoll(true);
    } else {
        advancedWindow().show();
    }
}

void App::hideModeChoice() {
    if (m_modeChoiceWindow) m_modeChoiceWindow->hide();
}

void App::showSettings() {
    auto* dialog = new SettingsDialog(*this);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->show();
}

void App::showAbout() {
    auto* dialog = new AboutDialog();
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->show();
}

void App::openReadme() {
    dialogs().openDocument(QString::fromStdString((m_options.programFolder / "readme.txt").string()));
}

}  // namespace tarvoke::app
