// Advanced Mode: files and captions, questions before text is lost, editing,
// Find and Replace, path rules, the file's text.

#include <QLineEdit>
#include <QPlainTextEdit>
#include <QtTest>

#include "app/advancedwindow.h"
#include "app/finddialog.h"
#include "app/paths.h"
#include "app/replacedialog.h"
#include "app/scriptfile.h"
#include "app_fixture.h"

using namespace tarvoke::app;
using namespace tarvoke::app::testing;
using Choice = Dialogs::SaveChoice;

namespace {

void select(AdvancedWindow& window, int start, int length) {
    QTextCursor cursor = window.editor->textCursor();
    cursor.setPosition(start);
    cursor.setPosition(start + length, QTextCursor::KeepAnchor);
    window.editor->setTextCursor(cursor);
}

Selection selectionOf(AdvancedWindow& window) {
    const QTextCursor cursor = window.editor->textCursor();
    return {cursor.selectionStart(), cursor.selectionEnd() - cursor.selectionStart()};
}

}  // namespace

class AdvancedWindowTest : public QObject {
    Q_OBJECT

private slots:
    void captionsFollowTheFileOperations() {
        AppFixture f;
        AdvancedWindow& window = f.app->advancedWindow();
        QCOMPARE(window.windowTitle(), "Tarvoke");
        QCOMPARE(window.text(), kTemplate);
        // A file that holds no compiled script opens nothing; a name in capitals is a script.
        f.writeFile("tool.exe", "binary");
        f.writeFile("first.TK.EXE", "Function(Main);\r\nPause(5);\r\nEndFunction();\r\n");
        f.dialogs.paths = {f.qpath("tool.exe"), f.qpath("first.TK.EXE")};
        window.openScript();
        QCOMPARE(window.windowTitle(), "Tarvoke");
        QVERIFY(f.app->filePath.empty());
        window.openScript();
        QCOMPARE(window.windowTitle(), "Tarvoke - first.TK.EXE");
        QCOMPARE(window.text(), "Function(Main);\nPause(5);\nEndFunction();\n");
        QCOMPARE(f.app->filePath, f.path("first.TK.EXE"));
        QCOMPARE(f.app->session.scriptFolder, f.path(""));
        window.setText(kTemplate);
        window.newScript();  // the untouched template: no question
        QCOMPARE(window.windowTitle(), "Tarvoke");
        QVERIFY(f.app->filePath.empty());
        window.readmeAction->trigger();  // the guide beside the program
        QCOMPARE(f.dialogs.opened, QStringList{f.qpath("readme.txt")});
    }

    void failedSaveKeepsTheOldFileAndSaysWhy() {
        AppFixture f;
        AdvancedWindow& window = f.app->advancedWindow();
        f.writeFile("kept.tk", "old text");
        f.dialogs.paths = {f.qpath("kept.tk")};
        window.openScript();
        testing::ReadOnlyFolder readOnly(f.folder.path());
        if (!readOnly.ok()) QSKIP("cannot make a read-only folder here");
        window.setText("new text");
        window.saveScript();
        QCOMPARE(f.readFile("kept.tk"), QByteArray("old text"));
        QCOMPARE(f.dialogs.told.size(), 1);
        const QString said = "Tarvoke: The script could not be saved: ";
        QVERIFY(f.dialogs.told[0].startsWith(said) && f.dialogs.told[0].size() > said.size());
        f.dialogs.paths = {f.qpath("elsewhere.tk")};
        window.saveScriptAs();
        QCOMPARE(window.windowTitle(), "Tarvoke - kept.tk");
        QCOMPARE(f.app->filePath, f.path("kept.tk"));
        QCOMPARE(f.app->session.scriptFolder, f.path(""));
        QCOMPARE(QDir(f.folder.path()).entryList(QDir::Files), QStringList{"kept.tk"});
    }

    // Typed text, then Open: a No to the question of New ends the Open too,
    // and the typing can still be taken back; a Yes opens the file.
    void openAsksBeforeTheTextGoes() {
        for (const bool yes : {false, true}) {
            AppFixture f;
            AdvancedWindow& window = f.app->advancedWindow();
            f.writeFile("other.tk", "Pause(2);");
            QTest::keyClicks(window.editor, "Pause(1);");
            const QString typed = window.text();
            f.dialogs.answers = {yes};
            f.dialogs.paths = {f.qpath("other.tk")};
            window.openAction->trigger();
            QCOMPARE(f.dialogs.asked.size(), size_t(1));
            QCOMPARE(f.dialogs.paths.empty(), yes);
            QCOMPARE(window.text(), yes ? "Pause(2);" : typed);
            QCOMPARE(window.changed(), !yes);
            window.editor->undo();
            QCOMPARE(window.text(), yes ? "Pause(2);" : kTemplate);
        }
    }

    // Closing the window, or File Exit, with the text changed since the last
    // New, Open or Save: Save, Discard or Cancel; a Save that does not happen
    // keeps the program open.
    void closingOffersToSaveChanges() {
        struct {
            bool typed;
            Choice choice;
            QString file;    // the script's path: "" none yet, "dir" a folder
            QString saveAs;  // what the Save As dialog returns
            bool closes, saved;  // saved: script.tk holds the typed text
        } const rows[] = {{false, Choice::Cancel, "script.tk", "", true, false},
                          {true, Choice::Discard, "script.tk", "", true, false},
                          {true, Choice::Cancel, "script.tk", "", false, false},
                          {true, Choice::Save, "script.tk", "", true, true},
                          {true, Choice::Save, "", "script", true, true},
                          {true, Choice::Save, "", "", false, false},
                          {true, Choice::Save, "dir", "", false, false}};
        for (const auto& [typed, choice, file, saveAs, closes, saved] : rows)
            for (const bool byMenu : {false, true}) {
                AppFixture f;
                AdvancedWindow& window = f.app->advancedWindow();
                f.writeFile("script.tk", "old");
                QDir(f.folder.path()).mkdir("dir");
                if (!file.isEmpty()) {
                    f.dialogs.paths = {f.qpath(file)};
                    window.openScript();
                    f.app->filePath = f.path(file);  // a folder does not open
                }
                if (typed) QTest::keyClicks(window.editor, "Pause(1);");
                f.dialogs.saveChoices = {choice};
                f.dialogs.paths = {saveAs.isEmpty() ? QString() : f.qpath(saveAs)};
                byMenu ? window.exitAction->trigger() : void(window.close());
                QCOMPARE(f.dialogs.asked.size(), size_t(typed ? 1 + (saveAs.isEmpty() ? 0 : 1) : 0));
                QCOMPARE(f.exits, closes ? 1 : 0);
                QCOMPARE(f.readFile("settings.dat"), closes ? "1,1,1,0,1," : "<missing>");  // saved at the exit
                QCOMPARE(f.readFile("script.tk"), saved ? window.text().toUtf8() : QByteArray("old"));
                QCOMPARE(window.changed(), typed && !saved);
                QCOMPARE(f.dialogs.told.size(), file == "dir" ? 1 : 0);
            }
    }

    // Save As asks before it replaces what is there; through a symbolic link
    // it writes the file the link leads to, and the link stays.
    void saveAsAsksBeforeReplacing() {
        // What is at the chosen name ("", "file" or "link"), and the answer.
        const std::pair<QString, bool> rows[] = {{"", true}, {"file", true}, {"file", false}, {"link", true}};
        for (const auto& [there, yes] : rows) {
            AppFixture f;
            AdvancedWindow& window = f.app->advancedWindow();
            f.writeFile("real.tk", "old");
            if (there == "file") f.writeFile("chosen.tk", "old");
            if (there == "link") QFile::link("real.tk", f.qpath("chosen.tk"));
            window.editText("new");
            f.dialogs.answers = {yes};
            f.dialogs.paths = {f.qpath("chosen")};
            QCOMPARE(window.saveScriptAs(), yes);
            QCOMPARE(f.dialogs.asked.size(), size_t(there.isEmpty() ? 0 : 1));
            QCOMPARE(f.readFile("chosen.tk"), QByteArray(yes ? "new" : "old"));
            QCOMPARE(QFileInfo(f.qpath("chosen.tk")).isSymLink(), there == "link");
            QCOMPARE(f.readFile("real.tk"), QByteArray(there == "link" ? "new" : "old"));
            QCOMPARE(window.windowTitle(), yes ? "Tarvoke - chosen.tk" : "Tarvoke");
            QCOMPARE(f.app->filePath, yes ? f.path("chosen.tk") : "");
            QCOMPARE(window.changed(), !yes);
        }
    }

    // CR LF becomes "\n"; bytes that are not UTF-8 are read as Latin-1.
    void scriptBytesBecomeEditorText() {
        const auto latin1 = [](const char* bytes) { return QString::fromLatin1(bytes); };
        const std::pair<QByteArray, QString> rows[] = {
            {"a\r\nb\r\n", "a\nb\n"}, {"a\rb", "a\rb"}, {"caf\xc3\xa9", QString::fromUtf8("caf\xc3\xa9")},
            {"caf\xe9!", latin1("caf\xe9!")}, {"x\xe2\x82", latin1("x\xe2\x82")},  // a cut sequence
            {"\xc0\xaf", latin1("\xc0\xaf")}, {"\xed\xa0\x80", latin1("\xed\xa0\x80")},  // overlong, surrogate
            {"\xf0\x9f\x98\x80", QString::fromUtf8("\xf0\x9f\x98\x80")}};
        for (const auto& [bytes, text] : rows) QCOMPARE(decodeScriptBytes(bytes), text);
    }

    void pathRules() {
        // The path, whether it is valid, and what is left of it.
        const std::tuple<const char*, bool, const char*> rows[] = {
            {"/home/a/s.tk", true, "/home/a/s.tk"}, {"", false, ""},  {" ", false, " "}, {".", false, "."},
            {"s.tk", false, "s.tk"}, {"/a/\tb\r\n.tk", true, "/a/b.tk"}, {"\r\n", false, ""},
            {"/2024/a:b*?.tk", true, "/2024/a:b*?.tk"}};
        for (const auto& [path, valid, cleaned] : rows) {
            std::string text = path;
            QCOMPARE(isValidPath(text), valid);
            QCOMPARE(QString::fromStdString(text), cleaned);
        }
    }

    void findSteps() {
        struct {
            const char* text;
            int caret;
            bool down, matchCase;  // matchCase searches "ab", else "AB"
            bool fresh;
            int findFrom, hit;  // hit -1: not found
        } const rows[] = {{"ab ab ab", 0, true, false, true, 0, 0},  {"ab ab ab", 0, true, false, false, 0, 3},
                          {"ab ab ab", 1, true, false, false, 0, 3}, {"ab ab ab", 7, true, false, false, 0, -1},
                          {"xx AB", 0, true, false, true, 0, 3},     {"xx AB ab", 0, true, true, true, 0, 6},
                          {"ab ab", 0, false, false, true, 0, -1},   {"ab ab ab", 8, false, false, true, 0, 6},
                          {"ab ab ab", 3, false, false, false, 3, 0}};
        for (const auto& row : rows) {
            FindState state{row.matchCase ? "ab" : "AB", row.matchCase, row.down, row.findFrom, row.fresh};
            const auto found = findOnce(row.text, row.caret, state);
            QCOMPARE(found ? found->start : -1, row.hit);
            QCOMPARE(state.findFrom, found ? found->start : row.caret);
            QVERIFY(!state.fresh);
        }
    }

    // The dialog takes the selection, Find Next walks the hits and reports
    // the end; a later dialog starts behind the caret.
    void findDialogAndFindNext() {
        AppFixture f;
        AdvancedWindow& window = f.app->advancedWindow();
        window.setText("Pause(1);\nPause(2);\nPause(3);");
        window.findNext();  // nothing searched yet: nothing happens
        QVERIFY(f.dialogs.told.empty());
        select(window, 0, 5);
        FindDialog find(window);
        QCOMPARE(find.findEdit->text(), "Pause");
        find.findEdit->setText("pause");
        select(window, 0, 0);
        find.search();
        QCOMPARE(selectionOf(window), (Selection{0, 5}));
        for (int start : {10, 20, 20}) {
            window.findNext();
            QCOMPARE(selectionOf(window), (Selection{start, 5}));
        }
        QCOMPARE(f.dialogs.told, QStringList{": Cannot find \"pause\""});
        select(window, 0, 0);
        FindDialog again(window);
        again.findEdit->setText("pause");
        again.search();
        QCOMPARE(selectionOf(window), (Selection{10, 5}));
    }

    // Every occurrence, exact in case, as one step that Undo takes back.
    void replaceAll() {
        const std::tuple<QString, QString, QString, QString> rows[] = {
            {"Pause(1);Pause(2);", "Pause", "PauseS", "PauseS(1);PauseS(2);"},
            {"pause Pause", "Pause", "x", "pause x"}, {"abc", "", "x", "abc"}, {"a;b;", ";", "", "ab"}};
        for (const auto& [text, find, replacement, result] : rows) {
            AppFixture f;
            AdvancedWindow& window = f.app->advancedWindow();
            window.setText(text);
            ReplaceDialog dialog(window);
            dialog.findEdit->setText(find);
            dialog.replacementEdit->setText(replacement);
            dialog.replaceAll();
            QCOMPARE(window.text(), result);
            QCOMPARE(window.changed(), result != text);
            window.editor->undo();
            QCOMPARE(window.text(), text);
        }
    }

    void deleteTakesOneCharacterOrTheSelection() {
        AppFixture f;
        AdvancedWindow& window = f.app->advancedWindow();
        window.setText("ab\ncd");
        const std::tuple<int, int, const char*> steps[] = {{2, 0, "abcd"}, {1, 2, "ad"}, {2, 0, "ad"}};
        for (const auto& [start, length, result] : steps) {
            select(window, start, length);
            window.deleteText();
            QCOMPARE(window.text(), result);
        }
    }
};

QTEST_MAIN(AdvancedWindowTest)
#include "advancedwindow_test.moc"
