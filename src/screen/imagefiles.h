#pragma once
// The three commands that fill or write a slot: capture, load and save.
// None of them reports anything; a failed step leaves what the rules say.

#include <string>

#include "platform/capture.h"
#include "platform/pictures.h"
#include "screen/imagestore.h"

namespace tarvoke::screen {

// An index outside the store still captures, and the picture is dropped. A
// capture that fails leaves the slot empty.
void captureScreen(ImageStore& store, platform::ScreenCapture& screen, int16_t slot);
// The same into the recorder's private capture ("sstemp").
void captureTemp(ImageStore& store, platform::ScreenCapture& screen);

// path is the full path already. A file that cannot be read empties the slot.
void loadImage(ImageStore& store, platform::Pictures& pictures, int16_t slot, const std::string& path);

// Writes the slot, or, when the slot is empty or no slot, the last picture
// that passed through the work surface.
void saveImage(ImageStore& store, platform::Pictures& pictures, int16_t slot, const std::string& path);

// Scripts write paths with "\" or "/"; both are "/" here.
std::string slashPath(std::string path);
// The path loadimage reads: one leading separator removed, glued to the script folder.
std::string loadPath(const std::string& scriptFolder, const std::string& path);

}  // namespace tarvoke::screen
