// Advanced Mode: files and captions, questions before text is lost, editing,
// Find and Replace, path rules, the file's text, the language in the editor.

#include <QDockWidget>
#include <QLineEdit>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QTextBlock>
#include <QToolTip>
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

// The format the editor shows at a 1-based line and a 0-based character.
QTextCharFormat formatAt(AdvancedWindow& window, int line, int column) {
    const QTextBlock block = window.editor->document()->findBlockByNumber(line - 1);
    for (const QTextLayout::FormatRange& range : block.layout()->formats())
        if (column >= range.start && column < range.start + range.length) return range.format;
    return {};
}

Token tokenAt(AdvancedWindow& window, int line, int column) {
    return static_cast<Token>(formatAt(window, line, column).property(ScriptHighlighter::kTokenProperty).toInt());
}

bool underlinedAt(AdvancedWindow& window, int line, int column) {
    return formatAt(window, line, column).underlineStyle() == QTextCharFormat::SpellCheckUnderline;
}

QPoint pointAt(AdvancedWindow& window, int line, int column) {
    QTextCursor cursor(window.editor->document()->findBlockByNumber(line - 1));
    cursor.setPosition(cursor.position() + column);
    return window.editor->cursorRect(cursor).center() + QPoint(2, 0);
}

}  // namespace

class AdvancedWindowTest : public QObject {
    Q_OBJECT

private slots:
    void captionsFollowTheFileOperations() {
        AppFixture f;
        AdvancedWindow& window = f.app->advancedWindow();
        // A file that holds no compiled script opens nothing and says so (the
        // kinds of such files: playback_test); a name in capitals is a script.
        f.writeFile("tool.exe", "binary");
        f.writeFile("first.TK.EXE", "Function(Main);\r\nPause(5);\r\nEndFunction();\r\n");
        f.dialogs.paths = {f.qpath("tool.exe"), f.qpath("first.TK.EXE")};
        window.openScript();
        QCOMPARE(f.dialogs.told, QStringList{"Tarvoke: This file holds no compiled script."});
        QCOMPARE(window.windowTitle(), "Tarvoke");
        QCOMPARE(window.text(), kTemplate);
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

    // A save that the folder refuses keeps the old file, the caption and the
    // path, and says why; once the folder takes files again, Save writes there.
    void failedSaveKeepsTheOldFileAndSaysWhy() {
        AppFixture f;
        AdvancedWindow& window = f.app->advancedWindow();
        f.writeFile("kept.tk", "old text");
        f.dialogs.paths = {f.qpath("kept.tk")};
        window.openScript();
        window.setText("new text");
        {
            testing::ReadOnlyFolder readOnly(f.folder.path());
            if (!readOnly.ok()) QSKIP("cannot make a read-only folder here");
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
        window.saveScript();  // no dialog is left to ask: it writes to the path
        QCOMPARE(f.readFile("kept.tk"), QByteArray("new text"));
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

    // Replace All: every occurrence, exact in case, as one step that Undo
    // takes back. Delete: one character, or the selection.
    void replaceAllAndDelete() {
        AppFixture f;
        AdvancedWindow& window = f.app->advancedWindow();
        const std::tuple<QString, QString, QString, QString> rows[] = {
            {"Pause(1);Pause(2);", "Pause", "PauseS", "PauseS(1);PauseS(2);"},
            {"pause Pause", "Pause", "x", "pause x"}, {"abc", "", "x", "abc"}, {"a;b;", ";", "", "ab"}};
        for (const auto& [text, find, replacement, result] : rows) {
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
        window.setText("ab\ncd");
        const std::tuple<int, int, const char*> steps[] = {{2, 0, "abcd"}, {1, 2, "ad"}, {2, 0, "ad"}};
        for (const auto& [start, length, result] : steps) {
            select(window, start, length);
            window.deleteText();
            QCOMPARE(window.text(), result);
        }
    }

    // Colours as the loader reads the text; the checker's findings (every
    // kind: tests/scripts/check/findings.tk) underlined with their message as
    // a tooltip, listed by F7, and a click in the list goes there; Ctrl+G
    // goes to a line.
    void editorShowsTheLanguage() {
        AppFixture f;
        AdvancedWindow& window = f.app->advancedWindow();
        window.show();
        QVERIFY(QTest::qWaitForWindowActive(&window));
        const QString text = "Function(Main);\n"
                             "  LeftClik(); MoveMouse(-640, x1);\n"
                             "SendKeys(\"a#b#c\", 0x4G);#a\n"
                             "comment#Pause(1)\n"
                             "Pause(2);\n"
                             "LeftClick(1,2,3,4,5,6,7,8,9);\n"
                             "EndFunction();\n"
                             "Function(Main);EndFunction();RightClick;\n"
                             "# never closed";
        window.setText(text);
        const struct {
            int line, column;
            Token token;
        } rows[] = {{1, 0, Token::Command},        {1, 8, Token::Plain},         {2, 2, Token::UnknownCommand},
                    {2, 10, Token::Plain},         {2, 14, Token::Command},      {2, 24, Token::Number},
                    {2, 27, Token::Number},        {2, 31, Token::Plain},        {3, 9, Token::Quoted},
                    {3, 11, Token::Comment},       {3, 13, Token::Comment},      {3, 14, Token::Quoted},
                    {3, 18, Token::Hex},           {3, 21, Token::Hex},          {3, 25, Token::Comment},
                    {4, 0, Token::Comment},        {4, 7, Token::Comment},       {4, 8, Token::Command},
                    {4, 14, Token::Number},        {5, 0, Token::Plain},         {6, 0, Token::Command}};
        for (const auto& row : rows)
            QVERIFY2(tokenAt(window, row.line, row.column) == row.token,
                     qPrintable(QString("line %1 column %2").arg(row.line).arg(row.column)));

        QTest::keyClick(window.windowHandle(), Qt::Key_F7);
        QVERIFY(window.checkDock->isVisible());
        // Where each finding is underlined, and what the list says of it.
        const struct {
            int line, column;
            const char* listed;
        } findings[] = {{2, 2, "2:3: unknown command `leftclik`, did you mean `leftclick`?"},
                        {2, 30, "2:31: parameter 2 of `movemouse`: `x1` is no number, and no variable of that name "
                                "is ever written"},
                        {3, 18, "3:19: `sendkeys` reads 1 parameter, this statement has 2"},
                        {3, 18, "3:19: `0x4g` starts with `0x` but is no even run of hex digits"},
                        {6, 26, "6:27: 9 parameters: a statement keeps at most 8, so all are dropped"},
                        {8, 9, "8:10: function `main` is defined twice; `call` enters the first, on line 1"},
                        {8, 39, "8:40: `;` dropped: no `(` and `)` since the last statement, so the text runs on"},
                        {9, 0, "9:1: comment never closed: the rest of the file is ignored"}};
        QCOMPARE(window.checkList->count(), std::size(findings));
        for (size_t i = 0; i < std::size(findings); ++i) {
            const auto& [line, column, listed] = findings[i];
            QCOMPARE(window.checkList->item(i)->text(), listed);
            QVERIFY(underlinedAt(window, line, column) && !underlinedAt(window, line, column - 1));
            const QPoint point = pointAt(window, line, column);
            QHelpEvent help(QEvent::ToolTip, point, window.editor->viewport()->mapToGlobal(point));
            QApplication::sendEvent(window.editor->viewport(), &help);
            QVERIFY(QToolTip::text().split('\n').contains(QString(listed).section(": ", 1)));
            emit window.checkList->itemActivated(window.checkList->item(i));
            const QTextCursor caret = window.editor->textCursor();
            QCOMPARE(caret.blockNumber() + 1, line);
            QCOMPARE(caret.positionInBlock(), column);
        }
        QVERIFY(!underlinedAt(window, 1, 0));
        // An edit of the line hides its marks until the next check, which
        // comes once typing pauses.
        emit window.checkList->itemActivated(window.checkList->item(0));
        QTest::keyClick(window.editor, Qt::Key_Space);
        QVERIFY(!underlinedAt(window, findings[0].line, findings[0].column + 1));
        QTRY_VERIFY(underlinedAt(window, findings[0].line, findings[0].column + 1));

        // A "#" typed at the top of a long script: the lines in view change at
        // once, the others while the program waits for input.
        window.setText(QString("Pause(1);\n").repeated(3 * ScriptHighlighter::kLinesAtOnce));
        window.checkScript();
        while (window.editor->highlighter->pending()) QCoreApplication::processEvents();
        window.editor->goTo(1);
        QTest::keyClick(window.editor, Qt::Key_NumberSign);
        QCOMPARE(tokenAt(window, 100, 0), Token::Comment);
        QVERIFY(window.editor->highlighter->pending());
        while (window.editor->highlighter->pending()) QCoreApplication::processEvents();
        QCOMPARE(tokenAt(window, window.editor->blockCount() - 1, 0), Token::Comment);
        // A line too long to colour still opens its comment.
        window.setText("Pause(1);" + QString(ScriptHighlighter::kColouredLineLimit, ' ') + "#\nPause(1);#\nPause(1);");
        QCOMPARE(tokenAt(window, 1, 0), Token::Plain);
        QCOMPARE(tokenAt(window, 2, 0), Token::Comment);
        QCOMPARE(tokenAt(window, 3, 0), Token::Command);
        window.editText(text);

        f.dialogs.numbers = {4, 99};
        for (const int line : {4, 9}) {  // 99 goes to the last line
            QTest::keyClick(window.windowHandle(), Qt::Key_G, Qt::ControlModifier);
            QCOMPARE(window.editor->textCursor().blockNumber() + 1, line);
        }
        QTest::keyClick(window.windowHandle(), Qt::Key_G, Qt::ControlModifier);  // Cancel
        QCOMPARE(window.editor->textCursor().blockNumber() + 1, 9);
    }
};

QTEST_MAIN(AdvancedWindowTest)
#include "advancedwindow_test.moc"
