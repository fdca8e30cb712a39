#pragma once
// The closed list of script commands: one row per name with its number, and
// for a host command whether it only makes input, its handler and the shape
// of its parameters. The loader's look-up (case-insensitive), the dump, the
// dispatch and the recorder all read these rows; adding a command is one row
// and one handler. Names are spelt as the recorder writes them; the dump
// prints them in lower case. Where two names share a number, the first one
// listed is the name a dump prints.

#include <array>
#include <cstdint>
#include <string_view>

namespace tarvoke::engine {

// Control flow (0..7, run by the loop itself) and built-ins (8..25).
#define TARVOKE_BUILTIN_COMMANDS(X)                                         \
    X(Call, "Call", 0)               /* call(function)                   */ \
    X(Function, "Function", 1)       /* function(name)                   */ \
    X(EndFunction, "EndFunction", 2) /* endfunction()                    */ \
    X(If, "If", 3)                   /* if(a op b)                       */ \
    X(Else, "Else", 4)               /* else()                           */ \
    X(EndIf, "EndIf", 5)             /* endif()                          */ \
    X(While, "While", 6)             /* while(a op b)                    */ \
    X(EndWhile, "EndWhile", 7)       /* endwhile()                       */ \
    X(String, "String", 8)           /* string(name, value)              */ \
    X(Int, "Int", 9)                 /* int(name, value)                 */ \
    X(Double, "Double", 10)          /* double(name, value)              */ \
    X(Set, "Set", 11)                /* set(name, value): table by form  */ \
    X(Add, "Add", 12)                /* add(name, operand)               */ \
    X(Subtract, "Subtract", 13)      /* subtract(name, operand)          */ \
    X(Divide, "Divide", 14)          /* divide(name, operand)            */ \
    X(Multiply, "Multiply", 15)      /* multiply(name, operand)          */ \
    X(Power, "Power", 16)            /* power(name, operand)             */ \
    X(Tan, "Tan", 17)                /* tan(name)                        */ \
    X(Cos, "Cos", 18)                /* cos(name)                        */ \
    X(Sin, "Sin", 19)                /* sin(name)                        */ \
    X(Log, "Log", 20)                /* log(name)                        */ \
    X(Factorial, "Factorial", 21)    /* factorial(name)                  */ \
    X(Message, "Message", 22)        /* message(text, style, title)      */ \
    X(Parse, "Parse", 23)            /* parse(name, start, length)       */ \
    X(Combine, "Combine", 12)        /* same as add                      */ \
    X(RemoveAll, "RemoveAll", 13)    /* same as subtract                 */ \
    X(Replace, "Replace", 24)        /* replace(name, find, with)        */ \
    X(For, "For", 24)                /* same as replace                  */ \
    X(Timer, "Timer", 25)            /* no effect                        */

// Host commands (100..158); 129 and 134 have no name. Columns: id, name,
// number, its Effect, the handler
// host defines, and the parameters in order (see Param).
#define TARVOKE_HOST_COMMANDS(X)                                                                              \
    X(MsgBox, "MsgBox", 100, Other, msgBox, (Text))                                                           \
    X(Pause, "Pause", 101, Other, pause, (Text))                                                              \
    X(KeyUp, "KeyUp", 102, Input, keyUp, (Byte))                                                              \
    X(Start, "Start", 103, Other, start, (Text))                                                              \
    X(LeftUp, "LeftUp", 104, Input, leftUp, ())                                                               \
    X(PauseS, "PauseS", 105, Other, pauseSeconds, (Text))                                                     \
    X(PauseM, "PauseM", 106, Other, pauseMinutes, (Text))                                                     \
    X(PauseH, "PauseH", 107, Other, pauseHours, (Text))                                                       \
    X(RightUp, "RightUp", 108, Input, rightUp, ())                                                            \
    X(KeyDown, "KeyDown", 109, Input, keyDown, (Byte))                                                        \
    X(StartEx, "StartEx", 110, Other, startEx, (Text, Text, Text))          /* file, params, state */         \
    X(MiddleUp, "MiddleUp", 111, Input, middleUp, ())                                                         \
    X(LeftDown, "LeftDown", 112, Input, leftDown, ())                                                         \
    X(LeftUpEx, "LeftUpEx", 113, Input, leftUpEx, (Coordinate, Coordinate))                                   \
    X(SendKeys, "SendKeys", 114, Input, sendKeys, (Text))                                                     \
    X(LeftClick, "LeftClick", 115, Input, leftClick, ())                                                      \
    X(RightDown, "RightDown", 116, Input, rightDown, ())                                                      \
    X(MoveMouse, "MoveMouse", 117, Input, moveMouse, (Int32, Int32))                                          \
    X(RightUpEx, "RightUpEx", 118, Input, rightUpEx, (Coordinate, Coordinate))                                \
    X(LoadImage, "LoadImage", 119, Finds, loadImage, (Image, Text))                                           \
    X(SaveImage, "SaveImage", 120, Finds, saveImage, (Image, Text))                                           \
    X(RightClick, "RightClick", 121, Input, rightClick, ())                                                   \
    X(LeftDownEx, "LeftDownEx", 122, Input, leftDownEx, (Coordinate, Coordinate))                             \
    X(MiddleDown, "MiddleDown", 123, Input, middleDown, ())                                                   \
    X(MiddleUpEx, "MiddleUpEx", 124, Input, middleUpEx, (Coordinate, Coordinate))                             \
    X(FindWindow, "FindWindow", 125, Other, findWindow, (OptionalText, OptionalText)) /* class, title */      \
    X(SelectWindow, "SelectWindow", 125, Other, findWindow, (OptionalText, OptionalText))                     \
    X(RightDownEx, "RightDownEx", 126, Input, rightDownEx, (Coordinate, Coordinate))                          \
    X(MiddleClick, "MiddleClick", 127, Input, middleClick, ())                                                \
    X(MiddleDownEx, "MiddleDownEx", 128, Input, middleDownEx, (Coordinate, Coordinate))                       \
    X(FindWindowEx, "FindWindowEx", 130, Other, findWindowEx, (OptionalText))                                 \
    X(SelectSubWindow, "SelectSubWindow", 130, Other, findWindowEx, (OptionalText))                           \
    X(IgnorePauses, "IgnorePauses", 131, Other, ignorePauses, (Text))                                         \
    X(CaptureScreen, "CaptureScreen", 132, Finds, captureScreen, (Text))                                      \
    X(SetPausePercent, "SetPausePercent", 133, Other, setPausePercent, (Text))                                \
    X(CreateColorRange, "CreateColorRange", 135, Finds, createColorRange,                                     \
      (Range, Int16, Int16, Int16, Int16, Int16, Int16))                    /* min rbg, max rbg */             \
    X(DeselectWindow, "DeselectWindow", 136, Other, deselectWindow, ())                                       \
    X(MoveMouseToColorRange, "MoveMouseToColorRange", 137, Finds, moveMouseToColorRange, (Image, Range))      \
    X(MoveMouseToColorRangeEx, "MoveMouseToColorRangeEx", 138, Finds, moveMouseToColorRangeEx,                \
      (Image, Range, Int16, Int16, Int16, Int16))                                                             \
    X(MoveMouseToCenterScreen, "MoveMouseToCenterScreen", 139, Other, moveMouseToCenterScreen, ())            \
    X(MoveMouseToColorRangeFromCenterScreen, "MoveMouseToColorRangeFromCenterScreen", 140, Finds,             \
      moveMouseToColorRangeFromCenterScreen, (Image, Range, Int16, Int16, Int16, Int16)) /* offsets */        \
    X(OrigionalPlayTime, "OrigionalPlayTime", 141, Other, nothing, ())      /* read by Correct Time */        \
    X(IsPixel, "IsPixel", 142, Finds, isPixel, (Test, Image, Int16, Int16, Range))                            \
    X(IsPixelIn, "IsPixelIn", 143, Finds, isPixelIn, (Test, Image, Int16, Int16, Int16, Int16, Range))        \
    X(IsSaturation, "IsSaturation", 144, Finds, isSaturation, (Test, Image, Int16, Int16, Number))            \
    X(IsSaturationInArea, "IsSaturationInArea", 145, Finds, isSaturationInArea,                               \
      (Test, Image, Int16, Int16, Int16, Int16, Number))                                                      \
    X(IsSaturationEx, "IsSaturationEx", 146, Finds, isSaturationEx, (Test, Image, Int16, Int16, Number, Number)) \
    X(IsSaturationInAreaEx, "IsSaturationInAreaEx", 147, Finds, isSaturationInAreaEx,                         \
      (Test, Image, Int16, Int16, Int16, Int16, Number, Number))                                              \
    X(EnableRepeat, "EnableRepeat", 148, Other, enableRepeat, ())                                             \
    X(DisableRepeat, "DisableRepeat", 149, Other, disableRepeat, ())                                          \
    X(GetSaturation, "GetSaturation", 150, Finds, getSaturation, (Measure, Image, Int16, Int16))              \
    X(GetSaturationIn, "GetSaturationIn", 151, Finds, getSaturationIn, (Measure, Image, Int16, Int16, Int16, Int16)) \
    X(IsImage, "IsImage", 152, Finds, isImage, (Test, Image, Image, Int16, Int16))                            \
    X(IsImageEx, "IsImageEx", 153, Finds, isImageEx, (Test, Image, Image, Int16, Int16, Number))              \
    X(IsImageInArea, "IsImageInArea", 154, Finds, isImageInArea, (Test, Image, Image, Int16, Int16, Int16, Int16)) \
    X(IsImageInAreaEx, "IsImageInAreaEx", 155, Finds, isImageInAreaEx,                                        \
      (Test, Image, Image, Int16, Int16, Int16, Int16, Number))                                               \
    X(FirstFindMode, "FirstFindMode", 156, Other, firstFindMode, ())                                          \
    X(RandomFindMode, "RandomFindMode", 157, Other, randomFindMode, ())                                       \
    X(LocateImage, "LocateImage", 158, Finds, locateImage,                                                    \
      (Test, Image, Image, Int16, Int16, Int16, Int16, Number))             /* sub-image over its own size */

enum class Command : int32_t {
    Unknown = -1,
#define TARVOKE_ENUM_ENTRY(id, name, number, ...) id = number,
    TARVOKE_BUILTIN_COMMANDS(TARVOKE_ENUM_ENTRY) TARVOKE_HOST_COMMANDS(TARVOKE_ENUM_ENTRY)
#undef TARVOKE_ENUM_ENTRY
};

constexpr int32_t kFirstHostCommand = 100;
constexpr int32_t kLastHostCommand = 158;

// Input: the command only makes input. Its input may wait in the platform's
// buffer until the next command of another kind, or the event loop's next
// turn, so that a burst of them leaves at once; any other command might be
// slow (a file, a program's start) and sends it first.
// Finds: an image or colour command, which may note a find in "lx" and "ly";
// a click still being looked up is settled before it starts.
enum class Effect : uint8_t { Input, Finds, Other };

// How a parameter is decoded before the handler sees it. Text resolves a
// variable or literal to its text; OptionalText is no text at all where the
// script left the slot empty. Coordinate takes "lx", "ly" or a 16-bit
// number; Byte, Int16 and Int32 take a whole numeric text rounded to that
// range. A number that does not convert fails the step. Number reads a
// whole numeric text as a double, 0 where it is none; Image and Range name
// a slot or are none, which the handler answers. Test and Measure are the
// raw name of the variable that receives the answer.
enum class Param : uint8_t { Text, OptionalText, Coordinate, Byte, Int16, Int32, Number, Image, Range, Test, Measure };

struct Shape {
    std::array<Param, 8> params{};
    uint8_t count = 0;
};

struct HostRow {
    std::string_view name;
    Command command;
    Effect effect;
    Shape shape;
};

namespace rows {
using enum Param;
using enum Effect;
template <typename... P>
constexpr Shape shape(P... params) {
    return Shape{{params...}, static_cast<uint8_t>(sizeof...(P))};
}
#define TARVOKE_HOST_ROW(id, name, number, effect, handler, params) HostRow{name, Command::id, effect, shape params},
inline constexpr std::array kHost{TARVOKE_HOST_COMMANDS(TARVOKE_HOST_ROW)};
#undef TARVOKE_HOST_ROW
}  // namespace rows

// Name to number, whatever the case; Command::Unknown for a name in no row.
Command commandNumber(std::string_view name);
// Number to the first name listed for it, lower-case as the dump prints it;
// empty when it has none.
std::string_view commandName(int32_t number);
// The name a script writes, as the recorder writes it.
std::string_view scriptName(Command command);
// The row of a host command, by number; null for any other number.
const HostRow* hostRow(int32_t number);

}  // namespace tarvoke::engine
