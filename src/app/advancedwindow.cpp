#include "app/advancedwindow.h"

#include <QCloseEvent>
#include <QDockWidget>
#include <QListWidget>
#include <QMenuBar>
#include <QPlainTextEdit>
#include <QTimer>
#include <QTextBlock>
#include <QTextLayout>
#include <QVBoxLayout>

#include "app/app.h"
#include "app/basicwindow.h"
#include "app/debugwindow.h"
#include "app/finddialog.h"
#include "app/manifest.h"
#include "app/paths.h"
#include "app/replacedialog.h"
#include "app/scriptfile.h"
#include "engine/check.h"
#include "playback/compiledscript.h"
#include "screen/imagefiles.h"

namespace tarvoke::app {

namespace {

const QString kOpenFilter = "Tarvoke Script Files|*.tk|Tarvoke Executable|*.exe|All Files|*.*";
const QString kSaveFilter = "Tarvoke Script Files|*.tk|All Files|*.*";
// Above this many characters a script is checked on Open, Save and Check
// only: a check of a long recording takes longer than a pause in typing.
constexpr int kCheckWhileTypingLimit = 1 << 20;

// The checker's findings in the editor's terms. The checker counts columns
// in UTF-8 bytes, the editor in characters.
std::vector<EditorFinding> findingsIn(const QString& text, const engine::PictureSize& pictureSize) {
    const QByteArray bytes = text.toUtf8();
    std::vector<EditorFinding> found;
    qsizetype lineStart = 0;
    int line = 1;
    for (const engine::Finding& finding :
         engine::checkScript(std::string_view(bytes.constData(), bytes.size()), pictureSize)) {
        if (finding.line < line) lineStart = 0, line = 1;
        for (; line < finding.line && lineStart < bytes.size(); ++line) {
            const qsizetype end = bytes.indexOf('\n', lineStart);
            lineStart = end < 0 ? bytes.size() : end + 1;
        }
        qsizetype lineEnd = bytes.indexOf('\n', lineStart);
        if (lineEnd < 0) lineEnd = bytes.size();
        const qsizetype upTo = std::min(lineStart + std::max(finding.column - 1, 0), lineEnd);
        const int column = static_cast<int>(QString::fromUtf8(bytes.mid(lineStart, upTo - lineStart)).size());
        found.push_back({finding.line, column, finding.column, QString::fromStdString(finding.message)});
    }
    return found;
}

}  // namespace

AdvancedWindow::AdvancedWindow(App& app) : m_app(app) {
    writeManifest();
    setWindowTitle(kAdvancedCaption);
    editor = new ScriptEditor;
    editor->setObjectName("editor");
    editor->setLineWrapMode(QPlainTextEdit::NoWrap);
    QFont font("Verdana", 10);
    // Kerning and ligatures are of no use in a script, and shaping a long
    // line for them is most of the cost of a keystroke in it.
    font.setStyleStrategy(QFont::PreferNoShaping);
    editor->setFont(font);
    connect(editor, &QPlainTextEdit::cursorPositionChanged, this, [this] { keepCaretLineLaidOut(); });
    auto* central = new QWidget;
    auto* layout = new QVBoxLayout(central);
    layout->setContentsMargins(8, 8, 8, 8);
    layout->addWidget(editor);
    setCentralWidget(central);
    checkList = new QListWidget;
    checkDock = new QDockWidget("Check");
    checkDock->setObjectName("check");
    checkDock->setWidget(checkList);
    checkDock->hide();
    addDockWidget(Qt::BottomDockWidgetArea, checkDock);
    auto jump = [this](QListWidgetItem* item) {
        if (const QPoint at = item->data(Qt::UserRole).toPoint(); at.y() > 0) editor->goTo(at.y(), at.x());
    };
    connect(checkList, &QListWidget::itemActivated, this, jump);
    connect(checkList, &QListWidget::itemClicked, this, jump);
    m_checkTimer = new QTimer(this);
    m_checkTimer->setSingleShot(true);
    m_checkTimer->setInterval(700);
    connect(m_checkTimer, &QTimer::timeout, this, [this] { checkScript(); });
    // Colours and underlines change the document too, but not its revision.
    connect(editor->document(), &QTextDocument::contentsChanged, this, [this] {
        const int revision = editor->document()->revision();
        if (std::exchange(m_checkedRevision, revision) == revision) return;
        if (editor->document()->characterCount() < kCheckWhileTypingLimit) m_checkTimer->start();
    });
    resize(640, 480);
    buildMenus();
    setText(kTemplate);

    m_recordTimers = std::make_unique<RecordTimers>(app, recorder::Form::Main);
    auto hotkeyRecord = [this] {
        m_app.recorder.startedByHotkey = true;
        startRecording();
    };
    m_timers = std::make_unique<PlayTimers>(
        app, *this,
        HotkeyActions{[this] { stopScript(); }, [this] { m_app.playback.pauseScript(); }, hotkeyRecord,
                      [this] { playScript(); }});
    m_correctTime = std::make_unique<CorrectTimeRun>(
        app, CallingWindow{[this] { stopScript(); }, [this] { return text(); },
                           [this](const QString& t) { editText(t); }, m_timers.get(), false});
    m_timers->isCorrectTimeOn = [this] { return m_correctTime->on(); };
    m_timers->onAfterStop = [this] {
        m_correctTime->turnOff();
        closeRecording();
        repeatAction->setChecked(m_app.session.repeat);
    };

    // Advanced Mode always starts with these on.
    m_app.session.repeat = true;
    m_app.mouseMove = true;
    m_app.extendedClicks = true;
    m_find.fresh = true;
    m_app.session.pauseFactor = 1.0;
    m_app.session.targetWindow = 0;
    repeatAction->setChecked(true);
    m_app.playback.setView(m_timers.get());
    m_timers->setHotkeyPoll(true);
}

void AdvancedWindow::buildMenus() {
    auto add = [this](QMenu* menu, const char* caption, QKeySequence shortcut, auto handler) {
        QAction* action = menu->addAction(caption);
        if (!shortcut.isEmpty()) action->setShortcut(shortcut);
        QObject::connect(action, &QAction::triggered, this, handler);
        return action;
    };

    QMenu* file = menuBar()->addMenu("File");
    newAction = add(file, "New", QKeySequence("Ctrl+N"), [this] { newScript(); });
    file->addSeparator();
    openAction = add(file, "Open", QKeySequence("Ctrl+O"), [this] { openScript(); });
    saveAction = add(file, "Save", QKeySequence("Ctrl+S"), [this] { saveScript(); });
    saveAsAction = add(file, "Save As", QKeySequence(), [this] { saveScriptAs(); });
    compileAction = add(file, "Compile", QKeySequence(), [this] { compileScript(); });
    file->addSeparator();
    basicModeAction = add(file, "Basic Mode", QKeySequence(), [this] { switchToBasicMode(); });
    file->addSeparator();
    settingsAction = add(file, "Settings", QKeySequence(), [this] { m_app.showSettings(); });
    file->addSeparator();
    exitAction = add(file, "Exit", QKeySequence(), [this] { exitProgram(); });

    QMenu* edit = menuBar()->addMenu("Edit");
    cutAction = add(edit, "Cut", QKeySequence("Ctrl+X"), [this] { editor->cut(); });
    copyAction = add(edit, "Copy", QKeySequence("Ctrl+C"), [this] { editor->copy(); });
    pasteAction = add(edit, "Paste", QKeySequence("Ctrl+V"), [this] { editor->paste(); });
    deleteAction = add(edit, "Delete", QKeySequence("Del"), [this] { deleteText(); });
    edit->addSeparator();
    findAction = add(edit, "Find...", QKeySequence("Ctrl+F"), [this] { showFindDialog(); });
    findNextAction = add(edit, "Find Next", QKeySequence("F3"), [this] { findNext(); });
    replaceAction = add(edit, "Replace...", QKeySequence("Ctrl+R"), [this] { showReplaceDialog(); });
    goToLineAction = add(edit, "Go to Line...", QKeySequence("Ctrl+G"), [this] { goToLine(); });
    edit->addSeparator();
    selectAllAction = add(edit, "Select All", QKeySequence("Ctrl+A"), [this] { editor->selectAll(); });

    QMenu* script = menuBar()->addMenu("Script");
    playAction = add(script, "Play", QKeySequence(), [this] { playScript(); });
    playSelectionAction =
        add(script, "Play Selection", QKeySequence("Ctrl+E"), [this] { playSelection(); });
    script->addSeparator();
    repeatAction = add(script, "Repeat", QKeySequence(), [this] { toggleRepeat(); });
    repeatAction->setCheckable(true);
    script->addSeparator();
    recordAction = add(script, "Record", QKeySequence(), [this] { recordScript(); });
    script->addSeparator();
    stopAction = add(script, "Stop", QKeySequence(), [this] { stopScript(); });
    script->addSeparator();
    correctTimeAction = add(script, "Correct Time", QKeySequence(), [this] { correctTime(); });
    debugAction = add(script, "Debug", QKeySequence(), [this] { showDebug(); });
    checkAction = add(script, "Check", QKeySequence("F7"), [this] { showCheck(); });

    QMenu* help = menuBar()->addMenu("Help");
    aboutAction = add(help, "About", QKeySequence(), [this] { m_app.showAbout(); });
    help->addSeparator();
    readmeAction = add(help, "Readme", QKeySequence(), [this] { m_app.openReadme(); });
}

QString AdvancedWindow::text() const { return editor->toPlainText(); }

void AdvancedWindow::setText(const QString& text) {
    if (text != editor->toPlainText()) editor->setPlainText(text);
}

void AdvancedWindow::editText(const QString& text) {
    if (text == editor->toPlainText()) return;
    QTextCursor cursor(editor->document());
    cursor.select(QTextCursor::Document);
    cursor.insertText(text);
    editor->moveCursor(QTextCursor::Start);
}

bool AdvancedWindow::changed() const { return editor->document()->isModified(); }

void AdvancedWindow::setChanged(bool changed) { editor->document()->setModified(changed); }

// Qt lays a paragraph out as a whole and, to spare memory, forgets its glyphs
// after each layout, so every keystroke shaped the caret's whole line three
// times over (layout, caret, paint): typing into one long line cost the
// square of its length. The caret's line keeps its glyphs; the line it left
// is laid out once more without them, which frees them.
void AdvancedWindow::keepCaretLineLaidOut() {
    const QTextBlock caret = editor->textCursor().block();
    const QTextBlock kept = m_keptLine.block();
    if (kept == caret && kept.layout()->cacheEnabled()) return;
    if (kept.isValid() && kept != caret && kept.layout()->cacheEnabled()) {
        kept.layout()->setCacheEnabled(false);
        editor->document()->markContentsDirty(kept.position(), kept.length());
    }
    caret.layout()->setCacheEnabled(true);
    m_keptLine = QTextCursor(caret);
}

bool AdvancedWindow::newScript() {
    const QString current = text();
    const bool ask = !(current.isEmpty() || current == kTemplate || current == kTemplate + "\n");
    if (ask && !m_app.dialogs().askYesNo("Confirm Recording",
                                         "There is an existing script open. If you create a new script "
                                         "Tarvoke will delete the existing script. Do you wish to continue?"))
        return false;
    stopScript();
    setWindowTitle(kAdvancedCaption);
    m_app.filePath.clear();
    setText(kTemplate);
    setChanged(false);
    return true;
}

void AdvancedWindow::openScript() {
    if (!newScript()) return;  // a No keeps the text, and the Open with it
    std::string path = localPath(m_app.dialogs().openFileName("Open Tarvoke script file", kOpenFilter, "tk"));
    if (!isValidPath(path) || path.empty()) return;
    m_app.session.scriptFolder = folderOf(path);
    // A compiled program: its body, one statement a line. A name in capitals
    // ("EXE") is read as a script.
    if (path.ends_with("exe")) {
        openCompiledScript(path);
        return;
    }
    const auto content = readScriptFile(path);
    if (!content) return;
    setWindowTitle(captionWith(kAdvancedCaption, displayFileName(path)));
    m_app.filePath = path;
    setText(*content);
    setChanged(false);
    m_app.scriptText = text().toStdString();
    checkScript();
}

void AdvancedWindow::openCompiledScript(const std::string& path) {
    // What is read back is the compact body; the caption and the path stay
    // as New left them, so a Save asks for a name.
    const auto tail = playback::readCompiledTail(path);
    if (!tail) {
        m_app.dialogs().tell("Tarvoke", "This file holds no compiled script.", Dialogs::Icon::Stop);
        return;
    }
    setText(decodeScriptBytes(QByteArray::fromStdString(playback::bodyAsLines(tail->body))));
    setChanged(false);
    m_app.scriptText = text().toStdString();
}

void AdvancedWindow::compileScript() {
    std::string path = localPath(
        m_app.dialogs().saveFileName("Save Executable", "Executable Files|*.exe|All Files|*.*", "exe"));
    if (!path.ends_with(".exe")) path += ".exe";
    // Cancel gives ".exe", which holds no folder: it is told as a bad name.
    if (!isValidPath(path)) {
        m_app.dialogs().tell("Error", "Invalid Filename!", Dialogs::Icon::Stop);
        return;
    }
    if (path.empty()) return;
    const bool repeat = m_app.dialogs().askYesNo("Repeat?", "Would you like the script to repeat infinitely until stopped?");
    // Written beside the target and renamed over it: a failed compile leaves
    // what was there.
    const std::string runtime = (m_app.programFolder() / playback::kRuntimeFileName).string();
    if (!playback::compileScript(runtime, path, text().toStdString(), repeat).empty()) {
        m_app.dialogs().tell("Error", "Could not create exectuable!", Dialogs::Icon::Stop);
        return;
    }
    m_app.dialogs().tell("Compiled", "Tarvoke executable was compiled.", Dialogs::Icon::Exclamation);
}

bool AdvancedWindow::saveScript() {
    if (m_app.filePath.empty()) return saveScriptAs();
    if (!saveScriptFile(m_app.dialogs(), m_app.filePath, text())) return false;
    setChanged(false);
    checkScript();
    return true;
}

bool AdvancedWindow::saveScriptAs() {
    std::string path = localPath(m_app.dialogs().saveFileName("Save Tarvoke script file", kSaveFilter, "tk"));
    if (!path.ends_with(".tk")) path += ".tk";
    if (!isValidPath(path) || path.empty()) return false;
    if (!mayReplace(m_app.dialogs(), path)) return false;
    return writeScript(path);
}

bool AdvancedWindow::writeScript(const std::string& path) {
    if (!saveScriptFile(m_app.dialogs(), path, text())) return false;
    m_app.session.scriptFolder = folderOf(path);
    setWindowTitle(captionWith(kAdvancedCaption, displayFileName(path)));
    m_app.filePath = path;
    setChanged(false);
    checkScript();
    return true;
}

void AdvancedWindow::switchToBasicMode() {
    m_timers->setPlayTimer(false);
    m_timers->setHotkeyPoll(false);
    BasicWindow& other = m_app.basicWindow();
    other.timers().setHotkeyPoll(true);
    const QString caption = windowTitle();
    if (caption != kAdvancedCaption) other.setWindowTitle(captionWith(kBasicCaption, nameInCaption(caption, kAdvancedCaption)));
    other.setText(text());
    other.setChanged(changed());
    m_app.basicMode = true;
    m_app.hideModeChoice();
    hide();
    m_app.playback.setView(&other.timers());
    other.show();
}

void AdvancedWindow::exitProgram() {
    if (changed() && !offerToSave(m_app.dialogs(), [this] { return saveScript(); })) return;
    stopScript();
    m_app.saveSettings();
    m_app.endProcess();
}

void AdvancedWindow::closeEvent(QCloseEvent* event) {
    event->ignore();
    exitProgram();
}

void AdvancedWindow::deleteText() {
    QTextCursor cursor = editor->textCursor();
    if (cursor.selectionStart() >= editor->document()->characterCount() - 1) return;
    if (!cursor.hasSelection()) cursor.movePosition(QTextCursor::NextCharacter, QTextCursor::KeepAnchor);
    cursor.removeSelectedText();
    editor->setTextCursor(cursor);
}

void AdvancedWindow::showFindDialog() {
    auto* dialog = new FindDialog(*this);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->show();
}

void AdvancedWindow::findNext() {
    if (!m_find.text.isEmpty()) search();
}

void AdvancedWindow::showReplaceDialog() {
    auto* dialog = new ReplaceDialog(*this);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->show();
}

void AdvancedWindow::search() {
    const int selStart = editor->textCursor().selectionStart();
    if (const auto hit = findOnce(text(), selStart, m_find)) {
        QTextCursor cursor = editor->textCursor();
        cursor.setPosition(hit->start);
        cursor.setPosition(hit->start + hit->length, QTextCursor::KeepAnchor);
        editor->setTextCursor(cursor);
        return;
    }
    // A plain box with the program's title, which is empty.
    m_app.dialogs().tell("", "Cannot find \"" + m_find.text + "\"");
}

void AdvancedWindow::playScript() {
    if (m_app.playback.resumeIfPending()) return;
    stopScript();
    m_app.scriptText = text().toStdString();
    m_app.playback.start(m_app.scriptText, true);
}

void AdvancedWindow::playSelection() {
    stopScript();
    const QTextCursor cursor = editor->textCursor();
    QString part = cursor.hasSelection() ? cursor.selectedText().replace(QChar::ParagraphSeparator, '\n')
                                         : text().mid(cursor.position());
    m_app.scriptText = part.toStdString();
    m_app.playback.start(m_app.scriptText, false);
}

void AdvancedWindow::toggleRepeat() {
    m_app.session.repeat = !m_app.session.repeat;
    repeatAction->setChecked(m_app.session.repeat);
}

void AdvancedWindow::stopScript() { m_app.playback.stopPlay(); }

void AdvancedWindow::correctTime() { m_correctTime->start(); }

void AdvancedWindow::showDebug() {
    DebugWindow& debug = m_app.debugWindow();
    debug.show();
    debug.raise();
    debug.appendDump();
}

void AdvancedWindow::goToLine() {
    const int lines = editor->blockCount();
    const int current = editor->textCursor().blockNumber() + 1;
    if (const auto line = m_app.dialogs().askNumber("Go to Line", QString("Line (1 - %1):").arg(lines), current, 1, lines))
        editor->goTo(*line);
}

void AdvancedWindow::checkScript() {
    m_checkTimer->stop();
    // Pictures are looked for where a run from this window finds them.
    const engine::PictureSize pictureSize = [this](const std::string& path) -> std::optional<std::pair<int, int>> {
        platform::PixelGrid picture;
        if (!m_app.session.platform.pictures ||
            !m_app.session.platform.pictures->load(screen::loadPath(m_app.session.scriptFolder, path), picture))
            return std::nullopt;
        return std::pair{picture.width, picture.height};
    };
    const std::vector<EditorFinding> findings = findingsIn(text(), pictureSize);
    editor->markFindings(findings);
    checkList->clear();
    for (const EditorFinding& finding : findings) {
        auto* item = new QListWidgetItem(QString("%1:%2: %3").arg(finding.line).arg(finding.byteColumn).arg(finding.message));
        item->setData(Qt::UserRole, QPoint(finding.column, finding.line));
        checkList->addItem(item);
    }
    if (findings.empty()) checkList->addItem("No mistakes found.");
}

void AdvancedWindow::showCheck() {
    checkScript();
    if (checkDock->isHidden()) {
        checkDock->show();
        resizeDocks({checkDock}, {height() / 4}, Qt::Vertical);
    }
    checkDock->raise();
    checkList->setCurrentRow(0);
}

void AdvancedWindow::recordScript() {
    m_app.recorder.startedByHotkey = false;
    startRecording();
}

void AdvancedWindow::startRecording() {
    stopScript();
    if (!text().isEmpty() && !confirmRecording(m_app)) return;
    m_timers->hideForRun();
    m_recordTimers->start(*m_timers);
}

// A branch of Stop: the recording becomes the editor's unsaved script.
void AdvancedWindow::closeRecording() {
    const std::optional<std::string> script = m_recordTimers->closeIfRecording();
    if (!script) return;
    setText(QString::fromStdString(*script));
    setChanged(true);
    setWindowTitle(captionWith(kAdvancedCaption, "Untitled"));
    m_app.filePath.clear();
}

}  // namespace tarvoke::app
