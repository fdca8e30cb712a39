// Compile in Advanced Mode, and Open of what it wrote.

#include <QtTest>

#include "app/advancedwindow.h"
#include "app_fixture.h"

using namespace tarvoke::app;
using namespace tarvoke::app::testing;

class CompileTest : public QObject {
    Q_OBJECT

private slots:
    void compileWritesTheProgramAndOpenReadsItBack() {
        struct Row {
            const char* name;
            QString path;  // from the dialog; "" is Cancel
            bool runtime, repeat;
            QString told, file;  // the box, and the file expected ("" none)
        };
        const Row rows[] = {
            {"Cancel", "", true, true, "Error: Invalid Filename!", ""},
            {"no extension, repeat", "prog", true, true, "Compiled: Tarvoke executable was compiled.", "prog.exe"},
            {"one run", "once.exe", true, false, "Compiled: Tarvoke executable was compiled.", "once.exe"},
            {"no runtime", "kept.exe", false, false, "Error: Could not create exectuable!", ""},
        };
        for (const Row& row : rows) {
            AppFixture f;
            if (row.runtime) f.writeFile("Compiler.dll", "RUNTIME!");
            f.writeFile("kept.exe", "old");
            AdvancedWindow& w = f.app->advancedWindow();
            w.setText("Function(Main);\nMsgBox(\"Hi There\");\nEndFunction();");
            f.dialogs.paths = {row.path.isEmpty() ? QString() : f.qpath(row.path)};
            f.dialogs.answers = {row.repeat};
            QVERIFY(w.compileAction->isEnabled());
            w.compileAction->trigger();
            QCOMPARE(f.dialogs.told.value(0), row.told);
            QCOMPARE(f.dialogs.lastIcon, row.told.startsWith("Error") ? Dialogs::Icon::Stop : Dialogs::Icon::Exclamation);
            QCOMPARE(f.readFile("kept.exe"), QByteArray("old"));  // a failed compile leaves it
            if (row.file.isEmpty()) continue;
            const QByteArray body = "function(main);msgbox(Hi There);endfunction();";
            QCOMPARE(f.readFile(row.file), "RUNTIME" + QByteArray(row.repeat ? "1" : "0") + body + QByteArray("\x08\0\0\0", 4));
            QVERIFY(QFileInfo(f.qpath(row.file)).isExecutable());

            // Open reads the body back, one statement a line, as a new script.
            f.dialogs.paths = {f.qpath(row.file)};
            w.openScript();
            QCOMPARE(w.text(), "function(main);\nmsgbox(Hi There);\nendfunction();\n");
            QCOMPARE(w.windowTitle(), "Tarvoke");
            QVERIFY(f.app->filePath.empty());
        }
        // A file whose length field is out of range holds no script.
        AppFixture f;
        f.writeFile("tool.exe", QByteArray("binary\xff\xff\xff\x7f"));
        f.dialogs.paths = {f.qpath("tool.exe")};
        f.app->advancedWindow().openScript();
        QCOMPARE(f.dialogs.told, QStringList{"Tarvoke: This file holds no compiled script."});
        QCOMPARE(f.app->advancedWindow().text(), kTemplate);
    }
};

QTEST_MAIN(CompileTest)
#include "compile_test.moc"
