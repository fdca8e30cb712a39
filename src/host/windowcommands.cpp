#include "host/windowcommands.h"

namespace tarvoke::host {
namespace {

constexpr int32_t kShowNormal = 1;
constexpr int32_t kShowMinimized = 2;
constexpr int32_t kShowMaximized = 3;

}  // namespace

void findWindow(Session& session, const std::optional<std::string>& windowClass,
                const std::optional<std::string>& title) {
    session.hTargetWindow = session.platform.windows->findWindow(windowClass, title);
}

void findWindowEx(Session& session, const std::optional<std::string>& windowClass) {
    session.hTargetWindow = session.platform.windows->findWindowEx(session.hTargetWindow, 0, windowClass, std::nullopt);
}

void deselectWindow(Session& session) { session.hTargetWindow = 0; }

void StartProgram(Session& session, const std::string& sFile) { StartProgramEx(session, sFile, {}, kShowNormal); }

void StartProgramEx(Session& session, const std::string& sFile, const std::string& sText, int32_t lngShow) {
    // With no file there is nothing to open.
    if (sFile.empty()) return;
    session.platform.programs->shellExecute("Open", sFile, sText, lngShow);
}

void startEx(Session& session, const std::string& file, const std::string& text, const std::string& state) {
    if (state == "normal") StartProgramEx(session, file, text, kShowNormal);
    else if (state == "minimized") StartProgramEx(session, file, text, kShowMinimized);
    else if (state == "maximized") StartProgramEx(session, file, text, kShowMaximized);
}

}  // namespace tarvoke::host
