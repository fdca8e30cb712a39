#include "app/frmmain.h"

#include <QCloseEvent>
#include <QFile>
#include <QMenuBar>
#include <QPlainTextEdit>
#include <QTextBlock>
#include <QTextLayout>
#include <QVBoxLayout>

#include "app/app.h"
#include "app/frmbasic.h"
#include "app/frmfind.h"
#include "app/manifest.h"
#include "app/paths.h"
#include "app/scriptfile.h"

namespace tarvoke::app {

namespace {

const QString kOpenFilter = "Tarvoke Script Files|*.tk|Tarvoke Executable|*.exe|All Files|*.*";
const QString kSaveFilter = "Tarvoke Script Files|*.tk|All Files|*.*";

}  // namespace

FrmMain::FrmMain(App& app) : m_app(app) {
    WriteManifest();
    setWindowTitle("Tarvoke");
    txtLog = new QPlainTextEdit;
    txtLog->setObjectName("txtLog");
    txtLog->setLineWrapMode(QPlainTextEdit::NoWrap);
    QFont font("Verdana", 10);
    // Kerning and ligatures are of no use in a script, and shaping a long
    // line for them is most of the cost of a keystroke in it.
    font.setStyleStrategy(QFont::PreferNoShaping);
    txtLog->setFont(font);
    connect(txtLog, &QPlainTextEdit::cursorPositionChanged, this, [this] { keepCaretLineLaidOut(); });
    auto* central = new QWidget;
    auto* layout = new QVBoxLayout(central);
    layout->setContentsMargins(8, 8, 8, 8);
    layout->addWidget(txtLog);
    setCentralWidget(central);
    resize(640, 480);
    buildMenus();
    setText(kTemplate);

    m_recordTimers = std::make_unique<RecordTimers>(app, recorder::Form::Main);
    auto hotkeyRecord = [this] {
        m_app.recorder.bHotkeyRecord = true;
        StartRecording();
    };
    m_timers = std::make_unique<PlayTimers>(
        app, *this,
        HotkeyActions{[this] { mnuScriptStop_Click(); }, [this] { m_app.playback.pauseScript(); }, hotkeyRecord,
                      [this] { mnuScriptPlay_Click(); }});
    m_timers->onAfterStop = [this] {
        closeRecording();
        mnuScriptRepeat->setChecked(m_app.session.repeat);
    };

    // Form_Load: Advanced Mode always starts with these on.
    m_app.session.repeat = true;
    m_app.bMouseMove = true;
    m_app.bExtendedClicks = true;
    m_find.bFindFresh = true;
    m_app.session.pauseFactor = 1.0;
    m_app.session.targetWindow = 0;
    mnuScriptRepeat->setChecked(true);
    m_app.playback.setView(m_timers.get());
    m_timers->setInputsTimer(true);
}

void FrmMain::buildMenus() {
    auto add = [this](QMenu* menu, const char* caption, QKeySequence shortcut, auto handler) {
        QAction* action = menu->addAction(caption);
        if (!shortcut.isEmpty()) action->setShortcut(shortcut);
        QObject::connect(action, &QAction::triggered, this, handler);
        return action;
    };
    auto later = [](QMenu* menu, const char* caption) {
        QAction* action = menu->addAction(caption);
        action->setEnabled(false);
        return action;
    };

    QMenu* file = menuBar()->addMenu("File");
    mnuNew = add(file, "New", QKeySequence("Ctrl+N"), [this] { mnuNew_Click(); });
    file->addSeparator();
    mnuFileOpen = add(file, "Open", QKeySequence("Ctrl+O"), [this] { mnuFileOpen_Click(); });
    mnuFileSave = add(file, "Save", QKeySequence("Ctrl+S"), [this] { mnuFileSave_Click(); });
    mnuFileSaveAs = add(file, "Save As", QKeySequence(), [this] { mnuFileSaveAs_Click(); });
    mnuFileCompile = later(file, "Compile");
    file->addSeparator();
    mnuFileBasicMode = add(file, "Basic Mode", QKeySequence(), [this] { mnuFileBasicMode_Click(); });
    file->addSeparator();
    mnuFileSettings = add(file, "Settings", QKeySequence(), [this] { m_app.showSettings(); });
    file->addSeparator();
    mnuExit = add(file, "Exit", QKeySequence(), [this] { mnuExit_Click(); });

    QMenu* edit = menuBar()->addMenu("Edit");
    mnuEditCut = add(edit, "Cut", QKeySequence("Ctrl+X"), [this] { txtLog->cut(); });
    mnuEditCopy = add(edit, "Copy", QKeySequence("Ctrl+C"), [this] { txtLog->copy(); });
    mnuEditPaste = add(edit, "Paste", QKeySequence("Ctrl+V"), [this] { txtLog->paste(); });
    mnuEditDelete = add(edit, "Delete", QKeySequence("Del"), [this] { mnuEditDelete_Click(); });
    edit->addSeparator();
    mnuEditFind = add(edit, "Find...", QKeySequence("Ctrl+F"), [this] { mnuEditFind_Click(); });
    mnuEditFindNext = add(edit, "Find Next", QKeySequence("F3"), [this] { mnuEditFindNext_Click(); });
    mnuEditReplace = add(edit, "Replace...", QKeySequence("Ctrl+R"), [this] { mnuEditReplace_Click(); });
    edit->addSeparator();
    mnuEditSelectAll = add(edit, "Select All", QKeySequence("Ctrl+A"), [this] { txtLog->selectAll(); });

    QMenu* script = menuBar()->addMenu("Script");
    mnuScriptPlay = add(script, "Play", QKeySequence(), [this] { mnuScriptPlay_Click(); });
    mnuScriptPlaySelection =
        add(script, "Play Selection", QKeySequence("Ctrl+E"), [this] { mnuScriptPlaySelection_Click(); });
    script->addSeparator();
    mnuScriptRepeat = add(script, "Repeat", QKeySequence(), [this] { mnuScriptRepeat_Click(); });
    mnuScriptRepeat->setCheckable(true);
    script->addSeparator();
    mnuScriptRecord = add(script, "Record", QKeySequence(), [this] { mnuScriptRecord_Click(); });
    script->addSeparator();
    mnuScriptStop = add(script, "Stop", QKeySequence(), [this] { mnuScriptStop_Click(); });
    script->addSeparator();
    mnuScriptCorrectTime = later(script, "Correct Time");
    mnuScriptDebug = later(script, "Debug");

    QMenu* help = menuBar()->addMenu("Help");
    mnuHelpAbout = add(help, "About", QKeySequence(), [this] { m_app.showAbout(); });
    help->addSeparator();
    mnuReadme = add(help, "Readme", QKeySequence(), [this] { m_app.openReadme(); });
}

QString FrmMain::text() const { return txtLog->toPlainText(); }

void FrmMain::setText(const QString& text) {
    if (text != txtLog->toPlainText()) txtLog->setPlainText(text);
}

void FrmMain::editText(const QString& text) {
    if (text == txtLog->toPlainText()) return;
    QTextCursor cursor(txtLog->document());
    cursor.select(QTextCursor::Document);
    cursor.insertText(text);
    txtLog->moveCursor(QTextCursor::Start);
}

bool FrmMain::changed() const { return txtLog->document()->isModified(); }

void FrmMain::setChanged(bool changed) { txtLog->document()->setModified(changed); }

// Qt lays a paragraph out as a whole and, to spare memory, forgets its glyphs
// after each layout, so every keystroke shaped the caret's whole line three
// times over (layout, caret, paint): typing into one long line cost the
// square of its length. The caret's line keeps its glyphs; the line it left
// is laid out once more without them, which frees them.
void FrmMain::keepCaretLineLaidOut() {
    const QTextBlock caret = txtLog->textCursor().block();
    const QTextBlock kept = m_keptLine.block();
    if (kept == caret && kept.layout()->cacheEnabled()) return;
    if (kept.isValid() && kept != caret && kept.layout()->cacheEnabled()) {
        kept.layout()->setCacheEnabled(false);
        txtLog->document()->markContentsDirty(kept.position(), kept.length());
    }
    caret.layout()->setCacheEnabled(true);
    m_keptLine = QTextCursor(caret);
}

bool FrmMain::mnuNew_Click() {
    const QString current = text();
    const bool ask = !(current.isEmpty() || current == kTemplate || current == kTemplate + "\n");
    if (ask && !m_app.dialogs().askYesNo("Confirm Recording",
                                         "There is an existing script open. If you create a new script "
                                         "Tarvoke will delete the existing script. Do you wish to continue?"))
        return false;
    mnuScriptStop_Click();
    setWindowTitle("Tarvoke");
    m_app.sFilePath.clear();
    setText(kTemplate);
    setChanged(false);
    return true;
}

void FrmMain::mnuFileOpen_Click() {
    if (!mnuNew_Click()) return;  // a No keeps the text, and the Open with it
    std::string path = localPath(m_app.dialogs().openFileName("Open Tarvoke script file", kOpenFilter, "tk"));
    if (!IsValidPath(path) || path.empty()) return;
    m_app.session.scriptFolder = GetFolder(path);
    // A compiled script: read back once compiling exists; a name in capitals
    // ("EXE") is read as a script.
    if (path.ends_with("exe")) return;
    const auto content = readScriptFile(path);
    if (!content) return;
    setWindowTitle("Tarvoke - " + QFile::decodeName(QByteArray::fromStdString(GetFileName(path))));
    m_app.sFilePath = path;
    setText(*content);
    setChanged(false);
    m_app.sScriptText = text().toStdString();
}

bool FrmMain::mnuFileSave_Click() {
    if (m_app.sFilePath.empty()) return mnuFileSaveAs_Click();
    if (!saveScriptFile(m_app.dialogs(), m_app.sFilePath, text())) return false;
    setChanged(false);
    return true;
}

bool FrmMain::mnuFileSaveAs_Click() {
    std::string path = localPath(m_app.dialogs().saveFileName("Save Tarvoke script file", kSaveFilter, "tk"));
    if (!path.ends_with(".tk")) path += ".tk";
    if (!IsValidPath(path) || path.empty()) return false;
    if (!mayReplace(m_app.dialogs(), path)) return false;
    return writeScript(path);
}

bool FrmMain::writeScript(const std::string& path) {
    if (!saveScriptFile(m_app.dialogs(), path, text())) return false;
    m_app.session.scriptFolder = GetFolder(path);
    setWindowTitle("Tarvoke - " + QFile::decodeName(QByteArray::fromStdString(GetFileName(path))));
    m_app.sFilePath = path;
    setChanged(false);
    return true;
}

void FrmMain::mnuFileBasicMode_Click() {
    m_timers->setPlayTimer(false);
    m_timers->setInputsTimer(false);
    FrmBasic& other = m_app.frmBasic();
    other.timers().setInputsTimer(true);
    const QString caption = windowTitle();
    if (caption != "Tarvoke") other.setWindowTitle("Tarvoke Basic Mode - " + caption.mid(10));
    other.setText(text());
    other.setChanged(changed());
    m_app.bBasicMode = true;
    m_app.hideChoice();
    hide();
    m_app.playback.setView(&other.timers());
    other.show();
}

void FrmMain::mnuExit_Click() {
    if (changed() && !offerToSave(m_app.dialogs(), [this] { return mnuFileSave_Click(); })) return;
    mnuScriptStop_Click();
    m_app.SaveSettings();
    m_app.endProcess();
}

void FrmMain::closeEvent(QCloseEvent* event) {
    event->ignore();
    mnuExit_Click();
}

void FrmMain::mnuEditDelete_Click() {
    QTextCursor cursor = txtLog->textCursor();
    if (cursor.selectionStart() >= txtLog->document()->characterCount() - 1) return;
    if (!cursor.hasSelection()) cursor.movePosition(QTextCursor::NextCharacter, QTextCursor::KeepAnchor);
    cursor.removeSelectedText();
    txtLog->setTextCursor(cursor);
}

void FrmMain::mnuEditFind_Click() {
    auto* dialog = new FrmFind(*this);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->show();
}

void FrmMain::mnuEditFindNext_Click() {
    if (!m_find.sFindText.isEmpty()) FindIt();
}

void FrmMain::mnuEditReplace_Click() {
    auto* dialog = new FrmReplace(*this);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->show();
}

void FrmMain::FindIt() {
    const int selStart = txtLog->textCursor().selectionStart();
    if (const auto hit = app::FindIt(text(), selStart, m_find)) {
        QTextCursor cursor = txtLog->textCursor();
        cursor.setPosition(hit->start);
        cursor.setPosition(hit->start + hit->length, QTextCursor::KeepAnchor);
        txtLog->setTextCursor(cursor);
        return;
    }
    // A plain box with the program's title, which is empty.
    m_app.dialogs().tell("", "Cannot find \"" + m_find.sFindText + "\"");
}

void FrmMain::mnuScriptPlay_Click() {
    if (m_app.playback.resumeIfPending()) return;
    mnuScriptStop_Click();
    m_app.sScriptText = text().toStdString();
    m_app.playback.start(m_app.sScriptText, true);
}

void FrmMain::mnuScriptPlaySelection_Click() {
    mnuScriptStop_Click();
    const QTextCursor cursor = txtLog->textCursor();
    QString part = cursor.hasSelection() ? cursor.selectedText().replace(QChar::ParagraphSeparator, '\n')
                                         : text().mid(cursor.position());
    m_app.sScriptText = part.toStdString();
    m_app.playback.start(m_app.sScriptText, false);
}

void FrmMain::mnuScriptRepeat_Click() {
    m_app.session.repeat = !m_app.session.repeat;
    mnuScriptRepeat->setChecked(m_app.session.repeat);
}

void FrmMain::mnuScriptStop_Click() { m_app.playback.stopPlay(); }

void FrmMain::mnuScriptRecord_Click() {
    m_app.recorder.bHotkeyRecord = false;
    StartRecording();
}

void FrmMain::StartRecording() {
    mnuScriptStop_Click();
    if (!text().isEmpty() && !confirmRecording(m_app)) return;
    m_timers->hideForRun();
    m_recordTimers->start();
}

// A branch of Stop: the recording becomes the editor's unsaved script.
void FrmMain::closeRecording() {
    const std::optional<std::string> script = m_recordTimers->closeIfRecording();
    if (!script) return;
    setText(QString::fromStdString(*script));
    setChanged(true);
    setWindowTitle("Tarvoke - Untitled");
    m_app.sFilePath.clear();
}

}  // namespace tarvoke::app
