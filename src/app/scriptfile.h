#pragma once
// The text of a script file as the editor shows it, and back.

#include <QByteArray>
#include <QString>

namespace tarvoke::app {

// UTF-8; a byte that starts no valid UTF-8 sequence becomes the character of
// the same number (Latin-1), so nothing is lost from view. CR LF becomes "\n".
QString decodeScriptBytes(const QByteArray& bytes);
QByteArray encodeScriptText(const QString& text);

}  // namespace tarvoke::app

#include <functional>
#include <optional>
#include <string>

namespace tarvoke::app {

class Dialogs;

// The file's text for the editor; nothing when it cannot be read.
std::optional<QString> readScriptFile(const std::string& path);
// Writes the text beside the old file and renames it over. On failure the
// old file stays and the user is told why; returns whether it was saved.
bool saveScriptFile(Dialogs& dialogs, const std::string& path, const QString& text);
// Asks before a save replaces what is at path; true when nothing is there
// or the user answered Yes.
bool mayReplace(Dialogs& dialogs, const std::string& path);
// Before a window closes on text changed since the last New, Open or Save:
// asks whether to save it and does what the answer says. True when the window
// may close: the text was saved (by save) or discarded.
bool offerToSave(Dialogs& dialogs, const std::function<bool()>& save);
// A path from a dialog as the bytes of the file system.
std::string localPath(const QString& path);
// The file's name in a path, for a caption.
QString displayFileName(const std::string& path);

}  // namespace tarvoke::app
