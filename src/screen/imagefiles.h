#pragma once
// The three commands that fill or write a slot: capture, load and save.
// None of them reports anything; a failed step leaves what the rules say.

#include <string>

#include "platform/capture.h"
#include "platform/pictures.h"
#include "screen/imagestore.h"

namespace tarvoke::screen {

// "sstemp" captures into the recorder's private capture; any other text
// must be an image name. An index outside the store still captures, and
// the picture is dropped. A capture that fails leaves the slot empty.
void CaptureScreen(ImageStore& store, platform::ScreenCapture& screen, const std::string& sImage);

// sPath is the full path already. A file that cannot be read empties the slot.
void LoadImage(ImageStore& store, platform::Pictures& pictures, const std::string& sImage, const std::string& sPath);

// Writes the slot, or, when the slot is empty or no slot, the last picture
// that passed through the work surface.
void SaveImage(ImageStore& store, platform::Pictures& pictures, const std::string& sImage, const std::string& sPath);

// Scripts write paths with "\" or "/"; both are "/" here.
std::string slashPath(std::string path);
// The path loadimage reads: one leading separator removed, glued to the script folder.
std::string loadPath(const std::string& sScriptFolder, const std::string& path);

}  // namespace tarvoke::screen
