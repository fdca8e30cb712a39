// Window and program commands: choosing the target window by class and title,
// and starting files and programs.

#include "host/call.h"

namespace tarvoke::host {
namespace {

using engine::Answer;

enum ShowState : int32_t { kShowNormal = 1, kShowMinimized = 2, kShowMaximized = 3 };

// Opens a file or program with the verb "Open"; text reaches the program as
// its arguments. With no file there is nothing to open.
void startProgram(Session& session, const std::string& file, const std::string& text, ShowState show) {
    if (file.empty()) return;
    session.platform.programs->shellExecute("Open", file, text, show);
}

}  // namespace

namespace handlers {

// The target becomes the first top-level window of that class and title
// (an absent text matches anything), or 0: a failed choice means no target.
Answer findWindow(Call& call) {
    call.session.targetWindow = call.session.platform.windows->findWindow(call.optionalText(0), call.optionalText(1));
    return {};
}

// The target becomes its first child of that class, whatever the title; with
// no target the top-level windows are searched.
Answer findWindowEx(Call& call) {
    Session& session = call.session;
    session.targetWindow =
        session.platform.windows->findWindowEx(session.targetWindow, 0, call.optionalText(0), std::nullopt);
    return {};
}

Answer deselectWindow(Call& call) {
    call.session.targetWindow = 0;
    return {};
}

Answer start(Call& call) {
    startProgram(call.session, call.text(0), {}, kShowNormal);
    return {};
}

// The state word decides the window state, exactly and case-sensitively; any
// other word starts nothing.
Answer startEx(Call& call) {
    const std::string& state = call.text(2);
    if (state == "normal") startProgram(call.session, call.text(0), call.text(1), kShowNormal);
    else if (state == "minimized") startProgram(call.session, call.text(0), call.text(1), kShowMinimized);
    else if (state == "maximized") startProgram(call.session, call.text(0), call.text(1), kShowMaximized);
    return {};
}

}  // namespace handlers
}  // namespace tarvoke::host
