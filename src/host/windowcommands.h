#pragma once
// Window and program commands: choosing the target window by class and title,
// and starting files and programs.

#include <optional>
#include <string>

#include "host/session.h"

namespace tarvoke::host {

// The target becomes the first top-level window of that class and title
// (an absent text matches anything), or 0: a failed choice means no target.
void findWindow(Session& session, const std::optional<std::string>& windowClass,
                const std::optional<std::string>& title);
// The target becomes its first child of that class, whatever the title; with
// no target the top-level windows are searched.
void findWindowEx(Session& session, const std::optional<std::string>& windowClass);
void deselectWindow(Session& session);

// Opens a file or program with the verb "Open" in a normal window.
void StartProgram(Session& session, const std::string& sFile);
// The same with a window state; sText reaches the program as its arguments.
void StartProgramEx(Session& session, const std::string& sFile, const std::string& sText, int32_t lngShow);
// startex: the state word decides the window state, exactly and
// case-sensitively; any other word starts nothing.
void startEx(Session& session, const std::string& file, const std::string& text, const std::string& state);

}  // namespace tarvoke::host
