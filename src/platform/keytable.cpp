#include "platform/keytable.h"

#include <array>

namespace tarvoke::platform {
namespace {

constexpr KeyMeaning sym(uint32_t keysym, std::string_view name, uint32_t fallback = 0) {
    return {KeyKind::Keysym, keysym, fallback, 0, 0, name};
}
constexpr KeyMeaning physical(uint16_t evdevCode, std::string_view legend) {
    return {KeyKind::Physical, 0, 0, evdevCode, 0, legend};
}
constexpr KeyMeaning button(uint8_t number, std::string_view name) { return {KeyKind::Button, 0, 0, 0, number, name}; }

constexpr uint32_t kAltR = 0xffea;
constexpr uint32_t kIsoLevel3Shift = 0xfe03;

constexpr std::array<std::string_view, 24> kFunctionKeyNames = {
    "F1",  "F2",  "F3",  "F4",  "F5",  "F6",  "F7",  "F8",  "F9",  "F10", "F11", "F12",
    "F13", "F14", "F15", "F16", "F17", "F18", "F19", "F20", "F21", "F22", "F23", "F24"};
constexpr std::array<std::string_view, 10> kKeypadDigitNames = {"KP_0", "KP_1", "KP_2", "KP_3", "KP_4",
                                                                "KP_5", "KP_6", "KP_7", "KP_8", "KP_9"};
constexpr std::string_view kDigitNames = "0123456789";
constexpr std::string_view kLetterNames = "abcdefghijklmnopqrstuvwxyz";

constexpr std::array<KeyMeaning, 256> buildTable() {
    std::array<KeyMeaning, 256> t{};
    t[1] = button(1, "left button");
    t[2] = button(3, "right button");
    t[3] = sym(0xff69, "Cancel");
    t[4] = button(2, "middle button");
    t[5] = button(8, "back side button");
    t[6] = button(9, "forward side button");
    t[8] = sym(0xff08, "BackSpace");
    t[9] = sym(0xff09, "Tab");
    t[12] = sym(0xff0b, "Clear");
    t[13] = sym(0xff0d, "Return");
    // The generic modifiers press the left key; reading them asks both sides.
    t[16] = sym(0xffe1, "Shift_L");
    t[17] = sym(0xffe3, "Control_L");
    t[18] = sym(0xffe9, "Alt_L");
    t[19] = sym(0xff13, "Pause");
    t[20] = sym(0xffe5, "Caps_Lock");
    t[21] = sym(0xff31, "Hangul");
    t[23] = sym(0xff38, "Hangul_Jeonja");
    t[24] = sym(0xff33, "Hangul_End");
    t[25] = sym(0xff34, "Hangul_Hanja");
    t[27] = sym(0xff1b, "Escape");
    t[28] = sym(0xff23, "Henkan_Mode");
    t[29] = sym(0xff22, "Muhenkan");
    t[31] = sym(0xff7e, "Mode_switch");
    t[32] = sym(0x20, "space");
    t[33] = sym(0xff55, "Prior");
    t[34] = sym(0xff56, "Next");
    t[35] = sym(0xff57, "End");
    t[36] = sym(0xff50, "Home");
    t[37] = sym(0xff51, "Left");
    t[38] = sym(0xff52, "Up");
    t[39] = sym(0xff53, "Right");
    t[40] = sym(0xff54, "Down");
    t[41] = sym(0xff60, "Select");
    t[43] = sym(0xff62, "Execute");
    t[44] = sym(0xff61, "Print");
    t[45] = sym(0xff63, "Insert");
    t[46] = sym(0xffff, "Delete");
    t[47] = sym(0xff6a, "Help");
    for (int i = 0; i < 10; ++i) t[48 + i] = sym(0x30 + i, kDigitNames.substr(i, 1));
    for (int i = 0; i < 26; ++i) t[65 + i] = sym(0x61 + i, kLetterNames.substr(i, 1));
    t[91] = sym(0xffeb, "Super_L");
    t[92] = sym(0xffec, "Super_R");
    t[93] = sym(0xff67, "Menu");
    t[95] = sym(0x1008ff2f, "XF86Sleep");
    for (int i = 0; i < 10; ++i) t[96 + i] = sym(0xffb0 + i, kKeypadDigitNames[i]);
    t[106] = sym(0xffaa, "KP_Multiply");
    t[107] = sym(0xffab, "KP_Add");
    t[108] = sym(0xffac, "KP_Separator");
    t[109] = sym(0xffad, "KP_Subtract");
    t[110] = sym(0xffae, "KP_Decimal");
    t[111] = sym(0xffaf, "KP_Divide");
    for (int i = 0; i < 24; ++i) t[112 + i] = sym(0xffbe + i, kFunctionKeyNames[i]);
    t[144] = sym(0xff7f, "Num_Lock");
    t[145] = sym(0xff14, "Scroll_Lock");
    t[160] = sym(0xffe1, "Shift_L");
    t[161] = sym(0xffe2, "Shift_R");
    t[162] = sym(0xffe3, "Control_L");
    t[163] = sym(0xffe4, "Control_R");
    t[164] = sym(0xffe9, "Alt_L");
    t[165] = sym(kAltR, "Alt_R", kIsoLevel3Shift);
    t[166] = sym(0x1008ff26, "XF86Back");
    t[167] = sym(0x1008ff27, "XF86Forward");
    t[168] = sym(0x1008ff29, "XF86Refresh");
    t[169] = sym(0x1008ff28, "XF86Stop");
    t[170] = sym(0x1008ff1b, "XF86Search");
    t[171] = sym(0x1008ff30, "XF86Favorites");
    t[172] = sym(0x1008ff18, "XF86HomePage");
    t[173] = sym(0x1008ff12, "XF86AudioMute");
    t[174] = sym(0x1008ff11, "XF86AudioLowerVolume");
    t[175] = sym(0x1008ff13, "XF86AudioRaiseVolume");
    t[176] = sym(0x1008ff17, "XF86AudioNext");
    t[177] = sym(0x1008ff16, "XF86AudioPrev");
    t[178] = sym(0x1008ff15, "XF86AudioStop");
    t[179] = sym(0x1008ff14, "XF86AudioPlay");
    t[180] = sym(0x1008ff19, "XF86Mail");
    t[181] = sym(0x1008ff32, "XF86AudioMedia");
    t[182] = sym(0x1008ff33, "XF86MyComputer");
    t[183] = sym(0x1008ff1d, "XF86Calculator");
    // The OEM keys mean a place on the keyboard, whatever it types.
    t[186] = physical(39, ";:");
    t[187] = physical(13, "=+");
    t[188] = physical(51, ",<");
    t[189] = physical(12, "-_");
    t[190] = physical(52, ".>");
    t[191] = physical(53, "/?");
    t[192] = physical(41, "`~");
    t[219] = physical(26, "[{");
    t[220] = physical(43, "\\|");
    t[221] = physical(27, "]}");
    t[222] = physical(40, "'\"");
    t[226] = physical(86, "<>");
    return t;
}

constexpr std::array<KeyMeaning, 256> kTable = buildTable();

}  // namespace

const KeyMeaning& keyMeaning(uint8_t vk) { return kTable[vk]; }

KeySides sidesOf(uint8_t vk) {
    switch (vk) {
    case 16: return {160, 161};
    case 17: return {162, 163};
    case 18: return {164, 165};
    default: return {};
    }
}

uint32_t effectiveKeysym(const KeyMeaning& meaning, const KeyboardView& view) {
    if (meaning.fallbackKeysym != 0 && !view.carriesKeysym(meaning.keysym) &&
        view.carriesKeysym(meaning.fallbackKeysym))
        return meaning.fallbackKeysym;
    return meaning.keysym;
}

bool isVirtualKeyDown(uint8_t vk, const KeyboardView& view) {
    if (const KeySides sides = sidesOf(vk); sides.left != 0)
        return isVirtualKeyDown(sides.left, view) || isVirtualKeyDown(sides.right, view);
    const KeyMeaning& meaning = keyMeaning(vk);
    switch (meaning.kind) {
    case KeyKind::None: return false;
    case KeyKind::Button: return view.buttonDown(meaning.button);
    case KeyKind::Keysym: return view.keysymDown(effectiveKeysym(meaning, view));
    case KeyKind::Physical: return view.physicalDown(meaning.evdevCode);
    }
    return false;
}

}  // namespace tarvoke::platform
