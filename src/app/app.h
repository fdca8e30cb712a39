#pragma once
// The program's state shared by all windows: the engine, the session of the
// host commands, playback, the settings and the windows themselves, each made
// at first use and kept to the end of the process.

#include <QString>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>

#include "app/dialogs.h"
#include "app/settings.h"
#include "engine/sc.h"
#include "host/dispatch.h"
#include "host/session.h"
#include "platform/platform.h"
#include "playback/playback.h"
#include "recorder/recorderstate.h"

namespace tarvoke::app {

class FrmSplash2;
class FrmChoice;
class FrmMain;
class FrmBasic;

// The new-script template.
inline const QString kTemplate = QStringLiteral("Function(Main);\n\nEndFunction();");

struct AppOptions {
    std::filesystem::path programFolder;
    std::filesystem::path settingsFile;
    platform::Platform platform;
    Dialogs* dialogs = nullptr;
    // Ends the process at once (tests record the call instead).
    std::function<void(int status)> endProcess;
    // Reads which hotkeys are down; null: the platform's key state.
    platform::KeyState* keys = nullptr;
};

class App {
public:
    explicit App(AppOptions options);
    ~App();

    host::Session session;
    host::HostCommands commands{session};
    engine::SC engine{commands};
    playback::Playback playback{engine, session};
    // bRecording, bHotkeyRecord and the growing recording, shared by both windows.
    recorder::RecorderState recorder;

    // Module-level state of the windows.
    bool bMouseMove = true;
    bool bExtendedClicks = true;
    bool bBasicMode = true;
    bool bFirstRun = false;
    std::string sScriptText;
    std::string sFilePath;

    Dialogs& dialogs() { return *m_options.dialogs; }
    const std::filesystem::path& programFolder() const { return m_options.programFolder; }
    platform::KeyState* keys() { return m_options.keys ? m_options.keys : session.platform.keys; }

    void LoadSettings();
    void SaveSettings();
    // Stops what runs, saves the settings and ends the process.
    void exitProgram();
    void endProcess() { m_options.endProcess(0); }

    FrmSplash2& frmSplash2();
    FrmChoice& frmChoice();
    FrmMain& frmMain();
    FrmBasic& frmBasic();
    // Shows the window of the saved mode, with Basic Mode's hotkey poll on.
    void showModeWindow();
    bool frmMainLoaded() const { return m_frmMain != nullptr; }
    bool frmBasicLoaded() const { return m_frmBasic != nullptr; }
    void hideChoice();

    // Dialogs that unload themselves when done.
    void showSettings();
    void showAbout();
    void openReadme();

private:
    AppOptions m_options;
    std::unique_ptr<FrmSplash2> m_frmSplash2;
    std::unique_ptr<FrmChoice> m_frmChoice;
    std::unique_ptr<FrmMain> m_frmMain;
    std::unique_ptr<FrmBasic> m_frmBasic;
};

}  // namespace tarvoke::app
