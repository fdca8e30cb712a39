#pragma once
// Path rules of the file dialogs, for POSIX paths: a path must hold a "/";
// every other character legal in a file name is allowed.

#include <string>

namespace tarvoke::app {

// Removes tabs, carriage returns and line feeds from path (the caller's text
// changes), then checks it: not empty, not " " or ".", a "/" somewhere, no NUL.
bool isValidPath(std::string& path);
// The text up to and including the last "/".
std::string folderOf(const std::string& path);
// The text behind the last "/".
std::string fileNameOf(const std::string& path);

}  // namespace tarvoke::app
