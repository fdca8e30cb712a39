#pragma once
// The closed list of script commands: one line per name, with its number and
// parameters. The name look-up, the reverse look-up and the dispatch all read
// from these lists. Where two names share a number, the first one listed is
// the name a dump prints.

#include <cstdint>
#include <string_view>

namespace tarvoke::engine {

// Control flow (0..7, run by the loop itself) and built-ins (8..25).
#define TARVOKE_BUILTIN_COMMANDS(X)                                         \
    X(Call, "call", 0)               /* call(function)                   */ \
    X(Function, "function", 1)       /* function(name)                   */ \
    X(EndFunction, "endfunction", 2) /* endfunction()                    */ \
    X(If, "if", 3)                   /* if(a op b)                       */ \
    X(Else, "else", 4)               /* else()                           */ \
    X(EndIf, "endif", 5)             /* endif()                          */ \
    X(While, "while", 6)             /* while(a op b)                    */ \
    X(EndWhile, "endwhile", 7)       /* endwhile()                       */ \
    X(String, "string", 8)           /* string(name, value)              */ \
    X(Int, "int", 9)                 /* int(name, value)                 */ \
    X(Double, "double", 10)          /* double(name, value)              */ \
    X(Set, "set", 11)                /* set(name, value): table by form  */ \
    X(Add, "add", 12)                /* add(name, operand)               */ \
    X(Subtract, "subtract", 13)      /* subtract(name, operand)          */ \
    X(Divide, "divide", 14)          /* divide(name, operand)            */ \
    X(Multiply, "multiply", 15)      /* multiply(name, operand)          */ \
    X(Power, "power", 16)            /* power(name, operand)             */ \
    X(Tan, "tan", 17)                /* tan(name)                        */ \
    X(Cos, "cos", 18)                /* cos(name)                        */ \
    X(Sin, "sin", 19)                /* sin(name)                        */ \
    X(Log, "log", 20)                /* log(name)                        */ \
    X(Factorial, "factorial", 21)    /* factorial(name)                  */ \
    X(Message, "message", 22)        /* message(text, style, title)      */ \
    X(Parse, "parse", 23)            /* parse(name, start, length)       */ \
    X(Combine, "combine", 12)        /* same as add                      */ \
    X(RemoveAll, "removeall", 13)    /* same as subtract                 */ \
    X(Replace, "replace", 24)        /* replace(name, find, with)        */ \
    X(For, "for", 24)                /* same as replace                  */ \
    X(Timer, "timer", 25)            /* no effect                        */

// Host commands (100..157). 129 and 134 have no name.
#define TARVOKE_HOST_COMMANDS(X)                                                                 \
    X(MsgBox, "msgbox", 100)                   /* msgbox(text)                                */ \
    X(Pause, "pause", 101)                     /* pause(ms)                                   */ \
    X(KeyUp, "keyup", 102)                     /* keyup(vk)                                   */ \
    X(Start, "start", 103)                     /* start(file)                                 */ \
    X(LeftUp, "leftup", 104)                   /* leftup()                                    */ \
    X(PauseS, "pauses", 105)                   /* pauses(seconds)                             */ \
    X(PauseM, "pausem", 106)                   /* pausem(minutes)                             */ \
    X(PauseH, "pauseh", 107)                   /* pauseh(hours)                               */ \
    X(RightUp, "rightup", 108)                 /* rightup()                                   */ \
    X(KeyDown, "keydown", 109)                 /* keydown(vk)                                 */ \
    X(StartEx, "startex", 110)                 /* startex(file, params, state)                */ \
    X(MiddleUp, "middleup", 111)               /* middleup()                                  */ \
    X(LeftDown, "leftdown", 112)               /* leftdown()                                  */ \
    X(LeftUpEx, "leftupex", 113)               /* leftupex(x, y)                              */ \
    X(SendKeys, "sendkeys", 114)               /* sendkeys(keys)                              */ \
    X(LeftClick, "leftclick", 115)             /* leftclick()                                 */ \
    X(RightDown, "rightdown", 116)             /* rightdown()                                 */ \
    X(MoveMouse, "movemouse", 117)             /* movemouse(x, y)                             */ \
    X(RightUpEx, "rightupex", 118)             /* rightupex(x, y)                             */ \
    X(LoadImage, "loadimage", 119)             /* loadimage(image, path)                      */ \
    X(SaveImage, "saveimage", 120)             /* saveimage(image, path)                      */ \
    X(RightClick, "rightclick", 121)           /* rightclick()                                */ \
    X(LeftDownEx, "leftdownex", 122)           /* leftdownex(x, y)                            */ \
    X(MiddleDown, "middledown", 123)           /* middledown()                                */ \
    X(MiddleUpEx, "middleupex", 124)           /* middleupex(x, y)                            */ \
    X(FindWindow, "findwindow", 125)           /* findwindow(class, title)                    */ \
    X(SelectWindow, "selectwindow", 125)       /* same as findwindow                          */ \
    X(RightDownEx, "rightdownex", 126)         /* rightdownex(x, y)                           */ \
    X(MiddleClick, "middleclick", 127)         /* middleclick()                               */ \
    X(MiddleDownEx, "middledownex", 128)       /* middledownex(x, y)                          */ \
    X(FindWindowEx, "findwindowex", 130)       /* findwindowex(class)                         */ \
    X(SelectSubWindow, "selectsubwindow", 130) /* same as findwindowex                        */ \
    X(IgnorePauses, "ignorepauses", 131)       /* ignorepauses(word)                          */ \
    X(CaptureScreen, "capturescreen", 132)     /* capturescreen(image)                        */ \
    X(SetPausePercent, "setpausepercent", 133) /* setpausepercent(percent)                    */ \
    X(CreateColorRange, "createcolorrange", 135) /* (range, six bounds)                       */ \
    X(DeselectWindow, "deselectwindow", 136)   /* deselectwindow()                            */ \
    X(MoveMouseToColorRange, "movemousetocolorrange", 137)     /* (image, range)              */ \
    X(MoveMouseToColorRangeEx, "movemousetocolorrangeex", 138) /* (image, range, x1..y2)      */ \
    X(MoveMouseToCenterScreen, "movemousetocenterscreen", 139) /* ()                          */ \
    X(MoveMouseToColorRangeFromCenterScreen, "movemousetocolorrangefromcenterscreen", 140)      \
    X(OrigionalPlayTime, "origionalplaytime", 141) /* (seconds): read by Correct Time         */ \
    X(IsPixel, "ispixel", 142)                 /* (var, image, x, y, range)                   */ \
    X(IsPixelIn, "ispixelin", 143)             /* (var, image, x1, y1, x2, y2, range)         */ \
    X(IsSaturation, "issaturation", 144)       /* (var, image, x, y, value)                   */ \
    X(IsSaturationInArea, "issaturationinarea", 145)     /* (var, image, x1..y2, value)       */ \
    X(IsSaturationEx, "issaturationex", 146)   /* (var, image, x, y, value, tolerance)        */ \
    X(IsSaturationInAreaEx, "issaturationinareaex", 147) /* (var, image, x1..y2, value, tol)  */ \
    X(EnableRepeat, "enablerepeat", 148)       /* enablerepeat()                              */ \
    X(DisableRepeat, "disablerepeat", 149)     /* disablerepeat()                             */ \
    X(GetSaturation, "getsaturation", 150)     /* (var, image, x, y)                          */ \
    X(GetSaturationIn, "getsaturationin", 151) /* (var, image, x1, y1, x2, y2)                */ \
    X(IsImage, "isimage", 152)                 /* (var, image, sub, x, y)                     */ \
    X(IsImageEx, "isimageex", 153)             /* (var, image, sub, x, y, tolerance)          */ \
    X(IsImageInArea, "isimageinarea", 154)     /* (var, image, sub, x1, y1, x2, y2)           */ \
    X(IsImageInAreaEx, "isimageinareaex", 155) /* (var, image, sub, x1, y1, x2, y2, tol)      */ \
    X(FirstFindMode, "firstfindmode", 156)     /* firstfindmode()                             */ \
    X(RandomFindMode, "randomfindmode", 157)   /* randomfindmode()                            */

enum class Command : int32_t {
    Unknown = -1,
#define TARVOKE_ENUM_ENTRY(id, name, number) id = number,
    TARVOKE_BUILTIN_COMMANDS(TARVOKE_ENUM_ENTRY) TARVOKE_HOST_COMMANDS(TARVOKE_ENUM_ENTRY)
#undef TARVOKE_ENUM_ENTRY
};

constexpr int32_t kFirstHostCommand = 100;
constexpr int32_t kLastHostCommand = 157;

// Name to number within one list; -1 when the name is not in it.
int32_t builtinCommandNumber(std::string_view lowerName);
int32_t hostCommandNumber(std::string_view lowerName);

// Number to the first name listed for it; empty when it has none.
std::string_view builtinCommandName(int32_t number);
std::string_view hostCommandName(int32_t number);

}  // namespace tarvoke::engine
