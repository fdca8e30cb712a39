// The dispatch of the host commands 100 to 157: one branch per number, each
// resolving its parameters and handing them to the routine of its family.
// A branch never reports anything; a step that fails leaves the command
// without effect (see each routine).

#include "host/dispatch.h"

#include "engine/commands.h"
#include "host/commandcontext.h"
#include "host/mousekeys.h"
#include "host/pauses.h"
#include "host/screencommands.h"
#include "host/windowcommands.h"
#include "platform/input.h"

namespace tarvoke::host {
namespace {

using engine::Command;
using namespace platform;

void exButtonCommand(CommandContext& c, uint32_t message, uint32_t flag) {
    const std::string x = c.text(1);
    const std::string y = c.text(2);
    exButton(c.session(), x, y, message, flag);
}

void msgBox(CommandContext& c) {
    // Flags 0 (OK, no icon) and the program's title, which start-up empties.
    const std::string text = c.text(1);
    c.platform().messages->show(0, "", text);
}

// Commands that only make input. Their input may wait in the platform's
// buffer until the next command of another kind, or the event loop's next
// turn, so that a burst of them leaves at once; any other command might be
// slow (a file, a program's start) and sends it first.
bool onlyMakesInput(Command command) {
    switch (command) {
    case Command::LeftDown:
    case Command::LeftUp:
    case Command::LeftClick:
    case Command::RightDown:
    case Command::RightUp:
    case Command::RightClick:
    case Command::MiddleDown:
    case Command::MiddleUp:
    case Command::MiddleClick:
    case Command::LeftDownEx:
    case Command::LeftUpEx:
    case Command::RightDownEx:
    case Command::RightUpEx:
    case Command::MiddleDownEx:
    case Command::MiddleUpEx:
    case Command::MoveMouse:
    case Command::KeyDown:
    case Command::KeyUp:
    case Command::SendKeys: return true;
    default: return false;
    }
}

}  // namespace

void HostCommands::execute(engine::SC& engine, int32_t functionID, int32_t lngLine) {
    CommandContext c(engine, lngLine);
    Session& s = c.session();
    const auto command = static_cast<Command>(functionID);
    if (!onlyMakesInput(command)) c.platform().input->flush();
    switch (command) {
    case Command::MsgBox: msgBox(c); break;
    case Command::Pause: pause(engine, lngLine); break;
    case Command::PauseS: pauseUnits(engine, lngLine, PauseUnit::Seconds); break;
    case Command::PauseM: pauseUnits(engine, lngLine, PauseUnit::Minutes); break;
    case Command::PauseH: pauseUnits(engine, lngLine, PauseUnit::Hours); break;
    case Command::SetPausePercent: setPausePercent(engine, c.text(1)); break;
    case Command::IgnorePauses: ignorePauses(engine, c.text(1)); break;

    case Command::LeftDown: plainButton(s, kLeftDown); break;
    case Command::LeftUp: plainButton(s, kLeftUp); break;
    case Command::LeftClick: plainButton(s, kLeftDown, kLeftUp); break;
    case Command::RightDown: plainButton(s, kRightDown); break;
    case Command::RightUp: plainButton(s, kRightUp); break;
    case Command::RightClick: plainButton(s, kRightDown, kRightUp); break;
    case Command::MiddleDown: plainButton(s, kMiddleDown); break;
    case Command::MiddleUp: plainButton(s, kMiddleUp); break;
    case Command::MiddleClick: plainButton(s, kMiddleDown, kMiddleUp); break;
    case Command::LeftDownEx: exButtonCommand(c, 513, kLeftDown); break;
    case Command::LeftUpEx: exButtonCommand(c, 514, kLeftUp); break;
    case Command::RightDownEx: exButtonCommand(c, 516, kRightDown); break;
    case Command::RightUpEx: exButtonCommand(c, 517, kRightUp); break;
    case Command::MiddleDownEx: exButtonCommand(c, 519, kMiddleDown); break;
    case Command::MiddleUpEx: exButtonCommand(c, 520, kMiddleUp); break;
    case Command::MoveMouse: {
        const std::string x = c.text(1);
        const std::string y = c.text(2);
        moveMouse(s, x, y);
        break;
    }
    case Command::MoveMouseToCenterScreen: moveMouseToCenterScreen(s); break;
    case Command::KeyDown: keyDown(s, c.text(1)); break;
    case Command::KeyUp: keyUp(s, c.text(1)); break;
    case Command::SendKeys: sendKeys(s, c.text(1)); break;

    case Command::FindWindow: {
        const auto windowClass = c.optionalText(1);
        const auto title = c.optionalText(2);
        findWindow(s, windowClass, title);
        break;
    }
    case Command::FindWindowEx: findWindowEx(s, c.optionalText(1)); break;
    case Command::DeselectWindow: deselectWindow(s); break;
    case Command::Start: StartProgram(s, c.text(1)); break;
    case Command::StartEx: {
        const std::string file = c.text(1);
        const std::string text = c.text(2);
        const std::string state = c.text(3);
        startEx(s, file, text, state);
        break;
    }

    case Command::EnableRepeat: s.bRepeat = true; break;
    case Command::DisableRepeat: s.bRepeat = false; break;
    case Command::FirstFindMode: s.bFirstFind = true; break;
    case Command::RandomFindMode: s.bFirstFind = false; break;
    case Command::OrigionalPlayTime: break;  // read from the script text by Correct Time

    case Command::LoadImage:
    case Command::SaveImage:
    case Command::CaptureScreen:
    case Command::CreateColorRange:
    case Command::MoveMouseToColorRange:
    case Command::MoveMouseToColorRangeEx:
    case Command::MoveMouseToColorRangeFromCenterScreen:
    case Command::IsPixel:
    case Command::IsPixelIn:
    case Command::IsSaturation:
    case Command::IsSaturationInArea:
    case Command::IsSaturationEx:
    case Command::IsSaturationInAreaEx:
    case Command::GetSaturation:
    case Command::GetSaturationIn:
    case Command::IsImage:
    case Command::IsImageEx:
    case Command::IsImageInArea:
    case Command::IsImageInAreaEx: runScreenCommand(engine, functionID, lngLine); break;

    default: break;  // 129, 134 and numbers outside the table have no branch
    }
}

}  // namespace tarvoke::host
