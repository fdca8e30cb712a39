// Advanced Mode: file operations and their captions, the edit commands,
// Find and Replace, the path rules and the script file's text.

#include <QLineEdit>
#include <QPlainTextEdit>
#include <QtTest>

#include "app/filesave.h"
#include "app/findtext.h"
#include "app/frmfind.h"
#include "app/frmmain.h"
#include "app/paths.h"
#include "app/scriptfile.h"
#include "app_fixture.h"
#include "readonly_folder.h"

using namespace tarvoke::app;
using tarvoke::app::testing::AppFixture;

Q_DECLARE_METATYPE(tarvoke::app::Dialogs::SaveChoice)

namespace {

void select(FrmMain& main, int start, int length) {
    QTextCursor cursor = main.txtLog->textCursor();
    cursor.setPosition(start);
    cursor.setPosition(start + length, QTextCursor::KeepAnchor);
    main.txtLog->setTextCursor(cursor);
}

Selection selectionOf(FrmMain& main) {
    const QTextCursor cursor = main.txtLog->textCursor();
    return {cursor.selectionStart(), cursor.selectionEnd() - cursor.selectionStart()};
}

}  // namespace

class FrmMainTest : public QObject {
    Q_OBJECT

private slots:
    void newAsksOnlyForARealScript_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("asks");
        QTest::newRow("empty") << "" << false;
        QTest::newRow("template") << kTemplate << false;
        QTest::newRow("template and a line break") << kTemplate + "\n" << false;
        QTest::newRow("template and two line breaks") << kTemplate + "\n\n" << true;
        QTest::newRow("a script") << "Function(Main);\nPause(1);\nEndFunction();" << true;
    }
    void newAsksOnlyForARealScript() {
        QFETCH(QString, text);
        QFETCH(bool, asks);
        AppFixture f;
        FrmMain& main = f.app->frmMain();
        main.setText(text);
        main.setWindowTitle("Tarvoke - old.tk");
        f.app->sFilePath = "/x/old.tk";
        f.dialogs.answers = {false};
        main.mnuNew_Click();
        QCOMPARE(f.dialogs.asked.size(), size_t(asks ? 1 : 0));
        // A No keeps everything; without the question New goes on.
        QCOMPARE(main.text(), asks ? text : kTemplate);
        QCOMPARE(main.windowTitle(), asks ? QString("Tarvoke - old.tk") : QString("Tarvoke"));
        QCOMPARE(f.app->sFilePath.empty(), !asks);
    }

    void captionsFollowTheFileOperations() {
        AppFixture f;
        FrmMain& main = f.app->frmMain();
        QCOMPARE(main.windowTitle(), "Tarvoke");
        QCOMPARE(main.text(), kTemplate);

        f.writeFile("first.tk", "Function(Main);\r\nPause(5);\r\nEndFunction();\r\n");
        f.dialogs.paths = {QString::fromStdString(f.path("first.tk"))};
        main.mnuFileOpen_Click();
        QCOMPARE(main.windowTitle(), "Tarvoke - first.tk");
        QCOMPARE(main.text(), "Function(Main);\nPause(5);\nEndFunction();\n");
        QCOMPARE(f.app->sFilePath, f.path("first.tk"));
        QCOMPARE(f.app->session.scriptFolder, f.path(""));

        main.setText("Function(Main);\nPause(6);\nEndFunction();");
        main.mnuFileSave_Click();
        QCOMPARE(f.readFile("first.tk"), QByteArray("Function(Main);\nPause(6);\nEndFunction();"));

        f.dialogs.paths = {QString::fromStdString(f.path("second"))};
        main.mnuFileSaveAs_Click();
        QCOMPARE(main.windowTitle(), "Tarvoke - second.tk");
        QCOMPARE(f.app->sFilePath, f.path("second.tk"));
        QCOMPARE(f.readFile("second.tk"), QByteArray("Function(Main);\nPause(6);\nEndFunction();"));

        main.setText(kTemplate);
        main.mnuNew_Click();
        QCOMPARE(main.windowTitle(), "Tarvoke");
        QVERIFY(f.app->sFilePath.empty());

        // Save without a file asks for one; a cancelled dialog changes nothing.
        main.mnuFileSave_Click();
        QCOMPARE(main.windowTitle(), "Tarvoke");
    }

    void openOfACompiledScriptKeepsTheCaption() {
        AppFixture f;
        FrmMain& main = f.app->frmMain();
        f.writeFile("tool.exe", "binary");
        f.writeFile("TOOL.EXE", "Function(Main);\nEndFunction();");
        f.dialogs.paths = {QString::fromStdString(f.path("tool.exe")), QString::fromStdString(f.path("TOOL.EXE"))};
        main.mnuFileOpen_Click();
        QCOMPARE(main.windowTitle(), "Tarvoke");
        QVERIFY(f.app->sFilePath.empty());
        main.mnuFileOpen_Click();
        QCOMPARE(main.windowTitle(), "Tarvoke - TOOL.EXE");
    }

    void failedSaveKeepsTheOldFileAndSaysWhy() {
        AppFixture f;
        FrmMain& main = f.app->frmMain();
        f.writeFile("kept.tk", "old text");
        f.dialogs.paths = {QString::fromStdString(f.path("kept.tk"))};
        main.mnuFileOpen_Click();
        const std::string folderBefore = f.app->session.scriptFolder;
        testing::ReadOnlyFolder readOnly(f.folder.path());
        if (!readOnly.ok()) QSKIP("cannot make a read-only folder here");
        main.setText("new text");
        main.mnuFileSave_Click();
        QCOMPARE(f.readFile("kept.tk"), QByteArray("old text"));
        QCOMPARE(f.dialogs.told.size(), size_t(1));
        QCOMPARE(f.dialogs.told[0].title, "Tarvoke");
        QVERIFY(f.dialogs.told[0].text.startsWith("The script could not be saved: "));
        QVERIFY(f.dialogs.told[0].text.size() > QString("The script could not be saved: ").size());

        f.dialogs.paths = {QString::fromStdString(f.path("elsewhere.tk"))};
        main.mnuFileSaveAs_Click();
        QCOMPARE(main.windowTitle(), "Tarvoke - kept.tk");
        QCOMPARE(f.app->sFilePath, f.path("kept.tk"));
        QCOMPARE(f.app->session.scriptFolder, folderBefore);
        QCOMPARE(QDir(f.folder.path()).entryList(QDir::Files), QStringList{"kept.tk"});
    }

    // Typed text, then Open: a No to the question of New ends the Open too,
    // and the typing can still be taken back; a Yes opens the file.
    void openAsksBeforeTheTextGoes_data() {
        QTest::addColumn<bool>("yes");
        QTest::newRow("No") << false;
        QTest::newRow("Yes") << true;
    }
    void openAsksBeforeTheTextGoes() {
        QFETCH(bool, yes);
        AppFixture f;
        FrmMain& main = f.app->frmMain();
        f.writeFile("other.tk", "Function(Main);\nPause(2);\nEndFunction();");
        QTest::keyClicks(main.txtLog, "Pause(1);");
        const QString typed = main.text();
        f.dialogs.answers = {yes};
        f.dialogs.paths = {QString::fromStdString(f.path("other.tk"))};
        main.mnuFileOpen->trigger();
        QCOMPARE(f.dialogs.asked.size(), size_t(1));
        QCOMPARE(f.dialogs.paths.empty(), yes);
        QCOMPARE(main.text(), yes ? QString("Function(Main);\nPause(2);\nEndFunction();") : typed);
        QCOMPARE(main.changed(), !yes);
        if (!yes) {
            main.txtLog->undo();
            QCOMPARE(main.text(), kTemplate);
        }
    }

    // Closing the window, or File Exit, with the text changed since the last
    // New, Open or Save: Save, Discard or Cancel; a Save that does not happen
    // keeps the program open.
    void closingOffersToSaveChanges_data() {
        using Choice = Dialogs::SaveChoice;
        QTest::addColumn<bool>("typed");
        QTest::addColumn<Choice>("choice");
        QTest::addColumn<QString>("file");    // the script's path: "" none yet, "dir" a folder
        QTest::addColumn<QString>("saveAs");  // what the Save As dialog returns
        QTest::addColumn<bool>("closes");
        QTest::addColumn<bool>("saved");      // script.tk holds the typed text
        QTest::newRow("unchanged: no question") << false << Choice::Cancel << "script.tk" << "" << true << false;
        QTest::newRow("Discard") << true << Choice::Discard << "script.tk" << "" << true << false;
        QTest::newRow("Cancel") << true << Choice::Cancel << "script.tk" << "" << false << false;
        QTest::newRow("Save") << true << Choice::Save << "script.tk" << "" << true << true;
        QTest::newRow("Save asks a name") << true << Choice::Save << "" << "script" << true << true;
        QTest::newRow("Save, name cancelled") << true << Choice::Save << "" << "" << false << false;
        QTest::newRow("Save that fails") << true << Choice::Save << "dir" << "" << false << false;
    }
    void closingOffersToSaveChanges() {
        QFETCH(bool, typed);
        QFETCH(Dialogs::SaveChoice, choice);
        QFETCH(QString, file);
        QFETCH(QString, saveAs);
        QFETCH(bool, closes);
        QFETCH(bool, saved);
        for (const bool byMenu : {false, true}) {
            AppFixture f;
            FrmMain& main = f.app->frmMain();
            f.writeFile("script.tk", "old");
            QDir(f.folder.path()).mkdir("dir");
            if (!file.isEmpty()) {
                f.dialogs.paths = {QString::fromStdString(f.path(file))};
                main.mnuFileOpen_Click();
                f.app->sFilePath = f.path(file);  // a folder does not open
            }
            if (typed) QTest::keyClicks(main.txtLog, "Pause(1);");
            f.dialogs.saveChoices = {choice};
            f.dialogs.paths = {saveAs.isEmpty() ? QString() : QString::fromStdString(f.path(saveAs))};
            byMenu ? main.mnuExit->trigger() : void(main.close());
            QCOMPARE(f.dialogs.asked.size(), size_t(typed ? 1 + (saveAs.isEmpty() ? 0 : 1) : 0));
            QCOMPARE(f.exits, closes ? 1 : 0);
            QCOMPARE(f.readFile("script.tk"), saved ? main.text().toUtf8() : QByteArray("old"));
            QCOMPARE(main.changed(), typed && !saved);
            QCOMPARE(f.dialogs.told.size(), size_t(file == "dir" ? 1 : 0));
        }
    }

    // Save As asks before it replaces what is there; through a symbolic link
    // it writes the file the link leads to, and the link stays.
    void saveAsAsksBeforeReplacing_data() {
        QTest::addColumn<QString>("there");  // "", "file" or "link" at the chosen name
        QTest::addColumn<bool>("yes");
        QTest::newRow("a new name") << "" << true;
        QTest::newRow("a file, Yes") << "file" << true;
        QTest::newRow("a file, No") << "file" << false;
        QTest::newRow("a link, Yes") << "link" << true;
    }
    void saveAsAsksBeforeReplacing() {
        QFETCH(QString, there);
        QFETCH(bool, yes);
        AppFixture f;
        FrmMain& main = f.app->frmMain();
        f.writeFile("real.tk", "old");
        if (there == "file") f.writeFile("chosen.tk", "old");
        if (there == "link") QFile::link("real.tk", f.folder.path() + "/chosen.tk");
        main.editText("new");
        f.dialogs.answers = {yes};
        f.dialogs.paths = {QString::fromStdString(f.path("chosen"))};
        QCOMPARE(main.mnuFileSaveAs_Click(), yes);
        QCOMPARE(f.dialogs.asked.size(), size_t(there.isEmpty() ? 0 : 1));
        QCOMPARE(f.readFile("chosen.tk"), QByteArray(yes ? "new" : "old"));
        QCOMPARE(QFileInfo(f.folder.path() + "/chosen.tk").isSymLink(), there == "link");
        QCOMPARE(f.readFile("real.tk"), QByteArray(there == "link" ? "new" : "old"));
        QCOMPARE(main.windowTitle(), yes ? "Tarvoke - chosen.tk" : "Tarvoke");
        QCOMPARE(main.changed(), !yes);
    }

    void scriptBytesBecomeEditorText_data() {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("text");
        QTest::newRow("CR LF") << QByteArray("a\r\nb\r\n") << "a\nb\n";
        QTest::newRow("lone CR stays") << QByteArray("a\rb") << "a\rb";
        QTest::newRow("UTF-8") << QByteArray("caf\xc3\xa9") << QString::fromUtf8("caf\xc3\xa9");
        QTest::newRow("Latin-1 byte") << QByteArray("caf\xe9!") << QString("caf") + QChar(0xe9) + "!";
        QTest::newRow("cut sequence at the end") << QByteArray("x\xe2\x82") << QString("x") + QChar(0xe2) + QChar(0x82);
        QTest::newRow("overlong form") << QByteArray("\xc0\xaf") << QString(QChar(0xc0)) + QChar(0xaf);
        QTest::newRow("surrogate") << QByteArray("\xed\xa0\x80") << QString(QChar(0xed)) + QChar(0xa0) + QChar(0x80);
        QTest::newRow("four bytes") << QByteArray("\xf0\x9f\x98\x80") << QString::fromUtf8("\xf0\x9f\x98\x80");
    }
    void scriptBytesBecomeEditorText() {
        QFETCH(QByteArray, bytes);
        QFETCH(QString, text);
        QCOMPARE(decodeScriptBytes(bytes), text);
    }

    void pathRules_data() {
        QTest::addColumn<QString>("path");
        QTest::addColumn<bool>("valid");
        QTest::addColumn<QString>("cleaned");
        QTest::newRow("plain") << "/home/a/s.tk" << true << "/home/a/s.tk";
        QTest::newRow("cancelled dialog") << "" << false << "";
        QTest::newRow("blank") << " " << false << " ";
        QTest::newRow("point") << "." << false << ".";
        QTest::newRow("no slash") << "s.tk" << false << "s.tk";
        QTest::newRow("tabs and breaks removed") << "/a/\tb\r\n.tk" << true << "/a/b.tk";
        QTest::newRow("digits colons and stars are names") << "/2024/a:b*?.tk" << true << "/2024/a:b*?.tk";
        QTest::newRow("only breaks") << "\r\n" << false << "";
    }
    void pathRules() {
        QFETCH(QString, path);
        QFETCH(bool, valid);
        QFETCH(QString, cleaned);
        std::string text = path.toStdString();
        QCOMPARE(IsValidPath(text), valid);
        QCOMPARE(QString::fromStdString(text), cleaned);
    }

    void folderAndNameOfAPath() {
        QCOMPARE(QString::fromStdString(GetFolder("/home/a/s.tk")), "/home/a/");
        QCOMPARE(QString::fromStdString(GetFileName("/home/a/s.tk")), "s.tk");
        QCOMPARE(QString::fromStdString(GetFolder("s.tk")), "");
        QCOMPARE(QString::fromStdString(GetFileName("/home/a/")), "");
    }

    void findSteps_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("caret");
        QTest::addColumn<bool>("down");
        QTest::addColumn<bool>("matchCase");
        QTest::addColumn<bool>("fresh");
        QTest::addColumn<int>("findFrom");
        QTest::addColumn<int>("hit");  // -1: not found
        //                                    0123456789
        QTest::newRow("down from the caret") << "ab ab ab" << 0 << true << false << true << 0 << 0;
        QTest::newRow("down steps over the last hit") << "ab ab ab" << 0 << true << false << false << 0 << 3;
        QTest::newRow("down after the caret moved") << "ab ab ab" << 1 << true << false << false << 0 << 3;
        QTest::newRow("down stops at the end") << "ab ab ab" << 7 << true << false << false << 0 << -1;
        QTest::newRow("case folded") << "xx AB" << 0 << true << false << true << 0 << 3;
        QTest::newRow("case kept") << "xx AB ab" << 0 << true << true << true << 0 << 6;
        QTest::newRow("up from the start finds nothing") << "ab ab" << 0 << false << false << true << 0 << -1;
        QTest::newRow("up from the end") << "ab ab ab" << 8 << false << false << true << 0 << 6;
        QTest::newRow("up steps over the last hit") << "ab ab ab" << 3 << false << false << false << 3 << 0;
    }
    void findSteps() {
        QFETCH(QString, text);
        QFETCH(int, caret);
        QFETCH(bool, down);
        QFETCH(bool, matchCase);
        QFETCH(bool, fresh);
        QFETCH(int, findFrom);
        QFETCH(int, hit);
        FindState state{matchCase ? "ab" : "AB", matchCase, down, findFrom, fresh};
        if (matchCase) state.sFindText = "ab";
        const auto found = FindIt(text, caret, state);
        QCOMPARE(found ? found->start : -1, hit);
        QCOMPARE(state.intFindFrom, found ? found->start : caret);
        QVERIFY(!state.bFindFresh);
    }

    void findNextWalksTheHitsAndReportsTheEnd() {
        AppFixture f;
        FrmMain& main = f.app->frmMain();
        main.setText("Pause(1);\nPause(2);\nPause(3);");
        main.mnuEditFindNext_Click();  // nothing searched yet: nothing happens
        QVERIFY(f.dialogs.told.empty());
        select(main, 0, 0);
        FrmFind find(main);
        find.txtFind->setText("pause");
        find.cmdFind_Click();
        QCOMPARE(selectionOf(main), (Selection{0, 5}));
        main.mnuEditFindNext_Click();
        QCOMPARE(selectionOf(main), (Selection{10, 5}));
        main.mnuEditFindNext_Click();
        QCOMPARE(selectionOf(main), (Selection{20, 5}));
        main.mnuEditFindNext_Click();
        QCOMPARE(selectionOf(main), (Selection{20, 5}));
        QCOMPARE(f.dialogs.told.size(), size_t(1));
        QCOMPARE(f.dialogs.told[0].title, "");
        QCOMPARE(f.dialogs.told[0].text, "Cannot find \"pause\"");
    }

    void secondFindDialogStartsBehindTheCaret() {
        AppFixture f;
        FrmMain& main = f.app->frmMain();
        main.setText("abab");
        main.findState().bFindFresh = false;
        select(main, 0, 0);
        FrmFind find(main);
        find.txtFind->setText("ab");
        find.cmdFind_Click();
        QCOMPARE(selectionOf(main), (Selection{2, 2}));
    }

    void findDialogTakesTheSelection() {
        AppFixture f;
        FrmMain& main = f.app->frmMain();
        main.setText("LeftClick(1,2);");
        select(main, 0, 9);
        FrmFind find(main);
        QCOMPARE(find.txtFind->text(), "LeftClick");
    }

    void replaceAll_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("find");
        QTest::addColumn<QString>("replacement");
        QTest::addColumn<QString>("result");
        QTest::newRow("every one") << "Pause(1);Pause(2);" << "Pause" << "PauseS" << "PauseS(1);PauseS(2);";
        QTest::newRow("exact in case") << "pause Pause" << "Pause" << "x" << "pause x";
        QTest::newRow("empty search") << "abc" << "" << "x" << "abc";
        QTest::newRow("to nothing") << "a;b;" << ";" << "" << "ab";
    }
    void replaceAll() {
        QFETCH(QString, text);
        QFETCH(QString, find);
        QFETCH(QString, replacement);
        QFETCH(QString, result);
        AppFixture f;
        FrmMain& main = f.app->frmMain();
        main.setText(text);
        FrmReplace dialog(main);
        dialog.txtFind->setText(find);
        dialog.txtReplace->setText(replacement);
        dialog.cmdReplaceAll_Click();
        QCOMPARE(main.text(), result);
        QCOMPARE(main.changed(), result != text);  // and Undo takes it back
        main.txtLog->undo();
        QCOMPARE(main.text(), text);
    }

    void deleteTakesOneCharacterOrTheSelection() {
        AppFixture f;
        FrmMain& main = f.app->frmMain();
        main.setText("ab\ncd");
        select(main, 2, 0);
        main.mnuEditDelete_Click();
        QCOMPARE(main.text(), "abcd");
        select(main, 1, 2);
        main.mnuEditDelete_Click();
        QCOMPARE(main.text(), "ad");
        select(main, 2, 0);
        main.mnuEditDelete_Click();
        QCOMPARE(main.text(), "ad");
    }

    void menusCarryTheirShortcuts() {
        AppFixture f;
        FrmMain& main = f.app->frmMain();
        const std::pair<QAction*, const char*> expected[] = {
            {main.mnuNew, "Ctrl+N"},        {main.mnuFileOpen, "Ctrl+O"},    {main.mnuFileSave, "Ctrl+S"},
            {main.mnuFileSaveAs, ""},       {main.mnuEditCut, "Ctrl+X"},     {main.mnuEditCopy, "Ctrl+C"},
            {main.mnuEditPaste, "Ctrl+V"},  {main.mnuEditDelete, "Del"},     {main.mnuEditFind, "Ctrl+F"},
            {main.mnuEditFindNext, "F3"},   {main.mnuEditReplace, "Ctrl+R"}, {main.mnuEditSelectAll, "Ctrl+A"},
            {main.mnuScriptPlaySelection, "Ctrl+E"}, {main.mnuScriptPlay, ""}, {main.mnuScriptStop, ""}};
        for (const auto& [action, keys] : expected) QCOMPARE(action->shortcut(), QKeySequence(keys));
        QVERIFY(main.mnuScriptRecord->isEnabled());
        for (QAction* later : {main.mnuFileCompile, main.mnuScriptCorrectTime, main.mnuScriptDebug})
            QVERIFY(!later->isEnabled());
    }

    void readmeOpensTheGuideBesideTheProgram() {
        AppFixture f;
        f.app->frmMain().mnuReadme->trigger();
        QCOMPARE(f.dialogs.opened, QStringList{QString::fromStdString(f.path("readme.txt"))});
    }
};

QTEST_MAIN(FrmMainTest)
#include "frmmain_test.moc"
