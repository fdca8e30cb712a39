#pragma once
// What a run of the player or of a compiled program acts on: the desktop
// when one is open, else the dry run, which prints each action as a line on
// standard output. Picture files are read through the picture module either
// way.

#include <string_view>

#include "desktop.h"
#include "picturemodule.h"
#include "platform/dryrun/dryrun.h"
#include "platform/loop/pollloop.h"
#include "platform/turnpacer.h"

namespace tarvoke::player {

// One line on standard output, as the dry run and --explain print them.
void printLine(std::string_view line);

class RunPlatform {
public:
    RunPlatform(platform::PollLoop& loop, Desktop* desktop, PictureModule& pictures, bool writePictures);
    // The platform the session is to act on.
    platform::Platform platform();
    platform::dryrun::DryRunPlatform& dryRun() { return m_dryRun; }

private:
    platform::TurnPacer m_pacer;
    platform::dryrun::DryRunPlatform m_dryRun;
    Desktop* m_desktop;
    PictureModule& m_pictures;
};

}  // namespace tarvoke::player
