// Host commands against the fake platform: each case is a script and the
// operations it makes, as the dry run prints them (handles decimal).

#include "engine_fixture.h"
#include "host/sendkeys.h"

namespace tarvoke::test {
namespace {

using Lines = std::vector<std::string>;

struct Case {
    const char* name;
    const char* script;
    Lines expected;
};

class HostTest : public EngineTest {
protected:
    HostTest() {
        notepad = fake.windows.addWindow("notepad", "Untitled - Notepad");
        edit = fake.windows.addWindow("edit", "", notepad);
        fake.windows.addWindow("other", "x");
        fake.windows.addWindow("summer", "\u00e9t\u00e9 \u0101\u013a");
    }
    Lines play(const std::string& script) {
        fake.transcript.clear();
        run(script);
        return fake.transcript;
    }
    template <size_t N>
    void checkAll(const Case (&cases)[N]) {
        for (const Case& c : cases) {
            session.targetWindow = 0;
            session.lastX = session.lastY = 0;
            session.pauseFactor = 1.0;
            session.ignorePauses = false;
            EXPECT_EQ(play(c.script), c.expected) << c.name << ": " << c.script;
        }
    }
    platform::WindowId notepad = 0, edit = 0;
};

// Each button, click and Ex flag, and the screen's centre: examples/host_commands.tk.
// A plain button notes the cursor: tests/scripts/host/mouse_keys.tk.
const Case kMouseAndKeys[] = {
    {"a missing y does nothing, not even the move", "LeftDownEx(10);", {}},
    {"Ex is 16-bit, MoveMouse 32-bit", "LeftDownEx(40000, 10); MoveMouse(40000, 10);", {"SetCursorPos 40000 10"}},
    {"bad numbers move nothing", "MoveMouse(abc, 1); MoveMouse(1); MoveMouse(\"lx\", 5);", {}},
    {"key codes are bytes rounded to even", "KeyDown(256); KeyDown(-1); KeyDown(); KeyDown(65.5); KeyUp(64.5);",
     {"keybd_event 66 0", "keybd_event 64 2"}},
    {"moves leave lx and ly", "LeftDownEx(5, 6); MoveMouse(10, 20); MoveMouseToCenterScreen(); LeftUpEx(lx, ly);",
     {"SetCursorPos 5 6", "mouse_event 2", "SetCursorPos 10 20", "SetCursorPos 960 540", "SetCursorPos 5 6",
      "mouse_event 4"}},
    {"quoted lx goes through ResolveCoordinate", "LeftDownEx(7, 8); LeftDownEx(\"lx\", 5);",
     {"SetCursorPos 7 8", "mouse_event 2", "SetCursorPos 7 5", "mouse_event 2"}},
    {"lx and ly can be crossed", "LeftDownEx(3, 4); LeftUpEx(ly, lx);",
     {"SetCursorPos 3 4", "mouse_event 2", "SetCursorPos 4 3", "mouse_event 4"}},
    {"parameters resolve through variables", "String(s, \"42\"); Int(n, 7); KeyDown(s); KeyUp(n); KeyDown($9);",
     {"keybd_event 42 0", "keybd_event 7 2", "keybd_event 9 0"}},
    {"a rejected key string sends nothing", "SendKeys(\"{FOO}\"); SendKeys(\"(a\");", {}},
};

TEST_F(HostTest, MouseAndKeysOnTheInputStream) { checkAll(kMouseAndKeys); }

const Case kTargetWindow[] = {
    {"Ex buttons send the position in pixels of 15 twips",
     "SelectWindow(notepad); LeftDownEx(300, 150); LeftUpEx(-30, 0); RightDownEx(1,1); RightUpEx(1,1);"
     " MiddleDownEx(1,1); MiddleUpEx(1,1);",
     {"FindWindow \"notepad\" null", "SendMessage 1001 513 0 0x000A0014", "SendMessage 1001 514 0 0x0000FFFE",
      "SendMessage 1001 516 0 0x00000000", "SendMessage 1001 517 0 0x00000000", "SendMessage 1001 519 0 0x00000000",
      "SendMessage 1001 520 0 0x00000000"}},
    {"the target leaves lx, ly and the cursor", "SelectWindow(notepad); LeftDownEx(300, 150); MoveMouse(lx, ly);",
     {"FindWindow \"notepad\" null", "SendMessage 1001 513 0 0x000A0014", "SetCursorPos 0 0"}},
    {"keys go as messages with lParam 0x10001", "SelectWindow(notepad); KeyDown(65); KeyUp(65);",
     {"FindWindow \"notepad\" null", "SendMessage 1001 256 65 0x00010001", "SendMessage 1001 257 65 0x00010001"}},
    {"plain buttons and key strings ignore the target", "SelectWindow(notepad); LeftDown(); SendKeys(a);",
     {"FindWindow \"notepad\" null", "mouse_event 2", "SendKeys \"a\""}},
    {"a failed choice clears the target", "SelectWindow(notepad); SelectWindow(\"a\", \"b\"); KeyDown(65);",
     {"FindWindow \"notepad\" null", "FindWindow \"a\" \"b\"", "keybd_event 65 0"}},
    {"class and title match without regard to case", "FindWindow(\"NotePad\", \"UNTITLED - notepad\"); KeyDown(1);",
     {"FindWindow \"NotePad\" \"UNTITLED - notepad\"", "SendMessage 1001 256 1 0x00010001"}},
    {"case beyond ASCII too, and nothing more", "FindWindow(, \"\u00c9T\u00c9 \u0100\u0139\"); KeyDown(1);"
     " FindWindow(, \"untitled\"); KeyDown(2);",
     {"FindWindow null \"\u00c9T\u00c9 \u0100\u0139\"", "SendMessage 1004 256 1 0x00010001",
      "FindWindow null \"untitled\"", "keybd_event 2 0"}},
    {"a quoted empty title is no null", "FindWindow(notepad, \"\"); KeyDown(1);",
     {"FindWindow \"notepad\" \"\"", "keybd_event 1 0"}},
    {"a sub-window by class, second parameter ignored", "SelectWindow(notepad); SelectSubWindow(edit, b); KeyDown(1);",
     {"FindWindow \"notepad\" null", "FindWindowEx 1001 \"edit\"", "SendMessage 1002 256 1 0x00010001"}},
    {"no target: sub-windows among the top level", "FindWindowEx(other); KeyDown(1);",
     {"FindWindowEx 0 \"other\"", "SendMessage 1003 256 1 0x00010001"}},
    {"a failed chain starts again at the top level", "SelectWindow(notepad); SelectSubWindow(none); SelectSubWindow(other);",
     {"FindWindow \"notepad\" null", "FindWindowEx 1001 \"none\"", "FindWindowEx 0 \"other\""}},
    {"DeselectWindow returns to the input stream", "SelectWindow(notepad); DeselectWindow(); KeyDown(1);",
     {"FindWindow \"notepad\" null", "keybd_event 1 0"}},
};

TEST_F(HostTest, TargetWindow) { checkAll(kTargetWindow); }

// Input may wait for the next command of another kind, which might be slow
// (a file, a program's start, a wait), and is sent on before it.
TEST_F(HostTest, HeldInputLeavesBeforeAnyOtherCommand) {
    const std::pair<const char*, int> cases[] = {
        {"LeftClick(); RightDown(); RightUp(); MiddleClick(); LeftDownEx(1, 2); MoveMouse(3, 4); KeyDown(65);"
         "KeyUp(65); SendKeys(ab); int(n, 1); add(n, 1); LeftClick();", 0},
        {"LeftClick(); Pause(1);", 1},
        {"LeftClick(); Start(notes.txt); LeftClick(); SaveImage(1, x.bmp);", 2},
        {"SendKeys(a); SelectWindow(notepad, null); MsgBox(hi);", 2},
    };
    for (const auto& [script, flushes] : cases) {
        fake.input.flushes = 0;
        run(std::string("function(main);") + script + "endfunction();");
        EXPECT_EQ(fake.input.flushes, flushes) << script;
    }
}

// The target, even once its window closed, the pause factor and the modes.
TEST_F(HostTest, TheTargetTheFactorAndTheModesOutliveTheRun) {
    run("SelectWindow(notepad); SetPausePercent(10); DisableRepeat(); RandomFindMode();");
    EXPECT_FALSE(session.repeat);
    EXPECT_FALSE(session.firstFind);
    fake.windows.removeWindow(notepad);
    EXPECT_EQ(play("KeyDown(1); Pause(100); EnableRepeat(); FirstFindMode();"),
              (Lines{"SendMessage 1001 256 1 0x00010001", "Wait 10"}));
    EXPECT_TRUE(session.repeat);
    EXPECT_TRUE(session.firstFind);
}

const Case kProgramsAndMessages[] = {
    {"quoted or not", "Start(notepad.exe); Start(\"My Notes.txt\");",
     {"ShellExecute \"Open\" \"notepad.exe\" \"\" 1", "ShellExecute \"Open\" \"My Notes.txt\" \"\" 1"}},
    {"no file opens nothing", "Start(); StartEx(, , normal);", {}},
    {"window states", "StartEx(a, , normal); StartEx(a, , Minimized); StartEx(a, \"-x y\", maximized);",
     {"ShellExecute \"Open\" \"a\" \"\" 1", "ShellExecute \"Open\" \"a\" \"\" 2", "ShellExecute \"Open\" \"a\" \"-x y\" 3"}},
    {"other states start nothing", "StartEx(a, , hidden); StartEx(a, , \"Minimized\"); StartEx(a);", {}},
    {"msgbox: flags 0, empty title", "MsgBox(0x41); MsgBox(); MsgBox(\"a\", \"b\");",
     {"MessageBox 0 \"\" \"0x41\"", "MessageBox 0 \"\" \"\"", "MessageBox 0 \"\" \"a\""}},
    {"unknown commands and OrigionalPlayTime do nothing", "Foo(1,2); OrigionalPlayTime(12.5); Timer(); KeyDown(1);",
     {"keybd_event 1 0"}},
};

TEST_F(HostTest, ProgramsAndMessages) { checkAll(kProgramsAndMessages); }

const Case kPauses[] = {
    {"nothing positive, nothing waited", "Pause(0); Pause(-5); Pause(abc); Pause(); Pause(0.4); PauseS(-1); PauseM(abc);",
     {}},
    {"a minute is sixty waits of a second", "PauseM(1);", Lines(60, "Wait 1000")},
    {"pieces of 9999, the last of 0 after a multiple above one", "Pause(9999); Pause(19998);",
     {"Wait 9999", "Wait 9999", "Wait 9999", "Wait 0"}},
    {"one over the piece", "Pause(10000);", {"Wait 9999", "Wait 1"}},
    {"the guard rounds the unscaled value", "Pause(0.6);", {"Wait 1"}},
    {"half speed rounds ties to even", "SetPausePercent(50); Pause(101); Pause(3); PauseS(3); PauseH(1);",
     {"Wait 50", "Wait 2", "Wait 1000", "Wait 1000"}},
    {"the scaled length decides the pieces", "SetPausePercent(300); Pause(5000);", {"Wait 9999", "Wait 5001"}},
    {"0 percent yields once and skips whole units", "SetPausePercent(0); Pause(100); PauseS(5);", {"Wait 0"}},
    {"a negative factor waits nothing", "SetPausePercent(-50); Pause(100); PauseS(2); PauseM(1); PauseH(1);",
     {"Wait 0"}},
    {"a text percent is passed over", "SetPausePercent(abc); Pause(10);", {"Wait 10"}},
    {"ignored pauses read nothing", "IgnorePauses(True); Pause(100); PauseS(1); PauseM(1); PauseH(1);", {}},
    {"only the exact word true", "IgnorePauses(\"True\"); Pause(7);", {"Wait 7"}},
};

TEST_F(HostTest, Pauses) { checkAll(kPauses); }

TEST_F(HostTest, AStopEndsThePauseAndThePiecesToCome) {
    fake.onYield = [&] {
        if (fake.transcript.size() == 1) engine.stopExecution();
    };
    EXPECT_EQ(play("Pause(40000); KeyDown(1);"), (Lines{"Wait 9999"}));
    EXPECT_EQ(play("PauseH(1); KeyDown(1);"), (Lines{"Wait 1000"}));
}

// A test whose coordinates do not convert answers true; one without its
// image answers false. (Measures: the saturation tests.)
TEST_F(HostTest, AnswersTakeTheVariablesKind) {
    // What is declared first, the x coordinate, and the answer's text and kind.
    const std::tuple<const char*, const char*, const char*, engine::ValueKind> cases[] = {
        {"", "x", "True", engine::ValueKind::Text},         {"", "1", "False", engine::ValueKind::Text},
        {"Int(r, 7);", "x", "0", engine::ValueKind::Long},     {"Int(r, 7);", "1", "1", engine::ValueKind::Long},
        {"Double(r, 3);", "x", "0", engine::ValueKind::Double}, {"Double(r, 3);", "1", "1", engine::ValueKind::Double},
    };
    for (const auto& [declare, x, value, kind] : cases) {
        run(std::string(declare) + "IsPixel(r, imagesave0, " + x + ", 2, colorrange0);");
        EXPECT_EQ(valueOf("r"), value) << declare << x;
        EXPECT_EQ(typeOf("r"), kind) << declare << x;
    }
}


// The SendKeys notation, table-driven: each key string and the strokes it
// gives, written "v16" press, "^16" release, 'a' typed; "rejected" when the
// whole string is refused.

std::string describe(const std::optional<std::vector<platform::KeyStroke>>& strokes) {
    if (!strokes) return "rejected";
    std::string out;
    for (const auto& s : *strokes) {
        if (!out.empty()) out += ' ';
        if (s.kind == platform::KeyStroke::Kind::Type) out += "'" + s.text + "'";
        else out += (s.kind == platform::KeyStroke::Kind::Press ? "v" : "^") + std::to_string(s.vk);
    }
    return out;
}

const std::pair<const char*, const char*> kCases[] = {
    {"", ""}, {"ab", "'a' 'b'"}, {"[x]", "'[' 'x' ']'"}, {"é€", "'é' '€'"}, {"+a", "v16 'a' ^16"},
    {"^(ab)c", "v17 'a' 'b' ^17 'c'"}, {"%{F4}", "v18 v115 ^115 ^18"}, {"+^a", "v16 v17 'a' ^17 ^16"},
    {"(ab)", "'a' 'b'"}, {"+()", "v16 ^16"}, {"~", "v13 ^13"}, {"^~", "v17 v13 ^13 ^17"},
    {"{ENTER}{enter}", "v13 ^13 v13 ^13"}, {"{BS}{BKSP}{BACKSPACE}", "v8 ^8 v8 ^8 v8 ^8"},
    {"{F1}{F16}", "v112 ^112 v127 ^127"}, {"{LEFT 3}", "v37 ^37 v37 ^37 v37 ^37"}, {"{LEFT 0}", ""},
    {"{a 3}", "'a' 'a' 'a'"}, {"{é 2}", "'é' 'é'"}, {"{+}{^}{%}{~}", "'+' '^' '%' '~'"},
    {"{{}{}}{(}{)}", "'{' '}' '(' ')'"}, {"{ }", "' '"}, {"+{} 2}", "v16 '}' '}' ^16"},
};

TEST(SendKeys, ParsesTheNotation) {
    for (const auto& [keys, strokes] : kCases) EXPECT_EQ(describe(host::parseSendKeys(keys)), strokes) << "keys: " << keys;
    for (const char* keys : {"{FOO}", "{F17}", "{F0}", "{F01}", "{LEFT x}", "{LEFT 3 4}", "{LEFT", "{}", "a}", "(a",
                             "a)", "+", "a+", "+)", "ab{FOO}"})
        EXPECT_EQ(describe(host::parseSendKeys(keys)), "rejected") << "keys: " << keys;
}

// Nesting is as deep as the text: nothing runs out of stack. A long text
// is made a piece at a time: no piece holds much of it.
TEST(SendKeys, DeepAndLongTexts) {
    const std::string opens(1'000'000, '('), closes(1'000'000, ')');
    EXPECT_FALSE(host::parseSendKeys(opens));
    EXPECT_EQ(describe(host::parseSendKeys(opens + "a" + closes)), "'a'");
    const auto held = host::parseSendKeys(std::string(1'000'000, '+') + "a");
    ASSERT_TRUE(held);
    EXPECT_EQ(held->size(), 2'000'001u);

    const std::string keys = "+(" + std::string(100'000, 'a') + "){LEFT 9999}";
    host::KeyStringStrokes strokes(keys);
    std::vector<platform::KeyStroke> piece;
    size_t total = 0, largest = 0;
    for (; strokes.next(piece); total += piece.size()) largest = std::max(largest, piece.size());
    EXPECT_EQ(total, 100'002u + 2 * 9999);
    EXPECT_LT(largest, 25'000u);
}
}  // namespace
}  // namespace tarvoke::test
