#include "runplatform.h"

#include <cstdio>

namespace tarvoke::player {

void printLine(std::string_view line) {
    std::fwrite(line.data(), 1, line.size(), stdout);
    std::fputc('\n', stdout);
}

// The dry run never waits, so it turns the loop now and then itself: a
// signal or Ctrl+0 is seen in a long stretch of statements too.
RunPlatform::RunPlatform(platform::PollLoop& loop, Desktop* desktop, PictureModule& pictures, bool writePictures)
    : m_dryRun(printLine,
               [this, &loop] {
                   if (m_pacer.turnDue()) loop.turn(false);
               }),
      m_desktop(desktop),
      m_pictures(pictures) {
    m_dryRun.setPictureFiles(&pictures, writePictures);
}

platform::Platform RunPlatform::platform() {
    if (!m_desktop) return m_dryRun.platform();
    platform::Platform desktop = m_desktop->platform();
    desktop.pictures = &m_pictures;
    return desktop;
}

}  // namespace tarvoke::player
