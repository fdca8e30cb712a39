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

class SplashWindow;
class ModeChoiceWindow;
class AdvancedWindow;
class BasicWindow;
class WhiteDebugWindow;
class DebugWindow;

// The new-script template.
inline const QString kTemplate = QStringLiteral("Function(Main);\n\nEndFunction();");

// The main windows' captions: the bare one while no script has a name, else
// the bare one, " - " and the script's file name (or "Untitled").
inline const QString kAdvancedCaption = QStringLiteral("Tarvoke");
inline const QString kBasicCaption = QStringLiteral("Tarvoke Basic Mode");
inline QString captionWith(const QString& bare, const QString& name) { return bare + " - " + name; }
inline QString nameInCaption(const QString& caption, const QString& bare) { return caption.mid(captionWith(bare, "").size()); }

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
    // Whether a recording runs, how it started, and the growing recording,
    // shared by both windows.
    recorder::RecorderState recorder;

    // Module-level state of the windows.
    bool mouseMove = true;
    bool extendedClicks = true;
    bool basicMode = true;
    bool firstRun = false;
    std::string scriptText;
    std::string filePath;

    Dialogs& dialogs() { return *m_options.dialogs; }
    const std::filesystem::path& programFolder() const { return m_options.programFolder; }
    platform::KeyState* keys() { return m_options.keys ? m_options.keys : session.platform.keys; }

    void loadSettings();
    void saveSettings();
    // Stops what runs, saves the settings and ends the process.
    void exitProgram();
    void endProcess() { m_options.endProcess(0); }

    SplashWindow& splashWindow();
    ModeChoiceWindow& modeChoiceWindow();
    AdvancedWindow& advancedWindow();
    BasicWindow& basicWindow();
    WhiteDebugWindow& whiteDebugWindow();
    DebugWindow& debugWindow();
    // Shows the window of the saved mode, with Basic Mode's hotkey poll on.
    void showModeWindow();
    bool advancedWindowLoaded() const { return m_advancedWindow != nullptr; }
    bool basicWindowLoaded() const { return m_basicWindow != nullptr; }
    void hideModeChoice();

    // Dialogs that unload themselves when done.
    void showSettings();
    void showAbout();
    void openReadme();

private:
    AppOptions m_options;
    std::unique_ptr<SplashWindow> m_splashWindow;
    std::unique_ptr<ModeChoiceWindow> m_modeChoiceWindow;
    std::unique_ptr<AdvancedWindow> m_advancedWindow;
    std::unique_ptr<BasicWindow> m_basicWindow;
    std::unique_ptr<WhiteDebugWindow> m_whiteDebugWindow;
    std::unique_ptr<DebugWindow> m_debugWindow;
};

}  // namespace tarvoke::app
