#include "app/frmbasic.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QCloseEvent>
#include <QFile>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>

#include "app/app.h"
#include "app/frmmain.h"
#include "app/paths.h"
#include "app/scriptfile.h"
#include "engine/numeric.h"

namespace tarvoke::app {

namespace {

const QString kBareCaption = "Tarvoke Basic Mode";
const QString kFilter = "Tarvoke Script Files|*.tk|All Files|*.*";

QString fileNameOf(const std::string& path) { return QFile::decodeName(QByteArray::fromStdString(GetFileName(path))); }

}  // namespace

FrmBasic::FrmBasic(App& app) : m_app(app) {
    setWindowTitle(kBareCaption);
    m_txtLog = kTemplate;
    auto* layout = new QGridLayout(this);
    layout->addWidget(buildMainFrame(), 0, 0, 1, 2);
    layout->addWidget(buildPlayFrame(), 1, 0, 2, 1);
    layout->addWidget(buildRecordFrame(), 1, 1);
    layout->addWidget(buildHelpFrame(), 2, 1);
    layout->setColumnStretch(0, 1);
    layout->setColumnStretch(1, 1);
    layout->setRowStretch(2, 1);

    m_recordTimers = std::make_unique<RecordTimers>(app, recorder::Form::Basic);
    m_timers = std::make_unique<PlayTimers>(
        app, *this,
        HotkeyActions{[this] { StopScript(); }, [this] { m_app.playback.pauseScript(); }, [this] { cmdRecord_Click(); },
                      [this] { cmdPlay_Click(); }});
    m_timers->onAfterStop = [this] { closeRecording(); };
    m_timers->isPlayXSelected = [this] { return optPlayX->isChecked(); };

    // Form_Load: the controls show the settings as loaded.
    m_app.session.pauseFactor = 1.0;
    m_app.session.targetWindow = 0;
    m_playOptions->setExclusive(false);
    optRepeat->setChecked(m_app.session.repeat);
    m_playOptions->setExclusive(true);
    chkMM->setChecked(m_app.bMouseMove);
    chkEx->setChecked(m_app.bExtendedClicks);
    m_app.playback.setView(m_timers.get());
}

QWidget* FrmBasic::buildMainFrame() {
    auto* frame = new QGroupBox("Main");
    auto* row = new QHBoxLayout(frame);
    auto button = [&](const char* caption) {
        auto* b = new QPushButton(caption);
        b->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
        row->addWidget(b, 1);
        return b;
    };
    cmdRecord = button("Record");
    cmdSave = button("Save");
    cmdOpen = button("Open...");
    cmdAdvanced = button("Advanced Mode");
    cmdCorrectTime = button("Correct Time");
    cmdPlay = button("Play");
    cmdCorrectTime->setEnabled(false);
    connect(cmdRecord, &QPushButton::clicked, this, [this] { cmdRecord_Click(); });
    connect(cmdSave, &QPushButton::clicked, this, [this] { SaveScript(); });
    connect(cmdOpen, &QPushButton::clicked, this, [this] { cmdOpen_Click(); });
    connect(cmdAdvanced, &QPushButton::clicked, this, [this] { cmdAdvanced_Click(); });
    connect(cmdPlay, &QPushButton::clicked, this, [this] { cmdPlay_Click(); });
    return frame;
}

QWidget* FrmBasic::buildPlayFrame() {
    auto* frame = new QGroupBox("Play Options");
    optPlayOnce = new QRadioButton("Play Once");
    optRepeat = new QRadioButton("Play Repeatedly");
    optPlayX = new QRadioButton("Play X amount of times:");
    txtPlayX = new QLineEdit("1");
    txtPlayX->setMaximumWidth(80);
    m_playOptions = new QButtonGroup(this);
    m_playOptions->addButton(optPlayOnce);
    m_playOptions->addButton(optRepeat);
    m_playOptions->addButton(optPlayX);
    auto* layout = new QVBoxLayout(frame);
    layout->addWidget(optPlayOnce);
    layout->addWidget(optRepeat);
    layout->addWidget(optPlayX);
    layout->addWidget(txtPlayX);
    layout->addStretch(1);
    connect(optPlayOnce, &QRadioButton::clicked, this, [this] { optPlayOnce_Click(); });
    connect(optRepeat, &QRadioButton::clicked, this, [this] { optRepeat_Click(); });
    connect(optPlayX, &QRadioButton::clicked, this, [this] { optPlayX_Click(); });
    return frame;
}

QWidget* FrmBasic::buildRecordFrame() {
    auto* frame = new QGroupBox("Record Options");
    chkMM = new QCheckBox("Record Mouse Movements");
    chkEx = new QCheckBox("Use Extended mouse positioned clicks");
    auto* layout = new QVBoxLayout(frame);
    layout->addWidget(chkMM);
    layout->addWidget(chkEx);
    connect(chkMM, &QCheckBox::clicked, this, [this] { m_app.bMouseMove = chkMM->isChecked(); });
    connect(chkEx, &QCheckBox::clicked, this, [this] { m_app.bExtendedClicks = chkEx->isChecked(); });
    return frame;
}

QWidget* FrmBasic::buildHelpFrame() {
    auto* frame = new QGroupBox("Help");
    cmdAbout = new QPushButton("About");
    cmdReadme = new QPushButton("Readme");
    auto* layout = new QHBoxLayout(frame);
    layout->addWidget(cmdAbout);
    layout->addWidget(cmdReadme);
    connect(cmdAbout, &QPushButton::clicked, this, [this] { m_app.showAbout(); });
    connect(cmdReadme, &QPushButton::clicked, this, [this] { m_app.openReadme(); });
    return frame;
}

void FrmBasic::optPlayOnce_Click() {
    m_app.session.repeat = false;
    optPlayOnce->setChecked(true);
}

void FrmBasic::optRepeat_Click() {
    m_app.session.repeat = true;
    optRepeat->setChecked(true);
}

void FrmBasic::optPlayX_Click() { m_app.session.repeat = false; }

void FrmBasic::StopScript() { m_app.playback.stopPlay(); }

void FrmBasic::cmdRecord_Click() {
    StopScript();
    // The untouched template is no script to lose.
    if (!m_txtLog.isEmpty() && m_txtLog != kTemplate && !confirmRecording(m_app)) return;
    setWindowTitle(kBareCaption + " - Untitled");
    m_timers->hideForRun();
    m_recordTimers->start();
}

// A branch of Stop: the recording becomes the unsaved script.
void FrmBasic::closeRecording() {
    const std::optional<std::string> script = m_recordTimers->closeIfRecording();
    if (!script) return;
    // Ctrl+6 and Ctrl+7 may have changed the settings these boxes show.
    chkMM->setChecked(m_app.bMouseMove);
    chkEx->setChecked(m_app.bExtendedClicks);
    m_txtLog = QString::fromStdString(*script);
    m_changed = true;
    setWindowTitle(kBareCaption + " - Untitled");
    m_app.sFilePath.clear();
}

void FrmBasic::cmdPlay_Click() {
    if (m_app.playback.resumeIfPending()) return;
    StopScript();
    if (optPlayX->isChecked()) {
        const std::string count = txtPlayX->text().toStdString();
        const auto target = engine::isNumericText(count) ? engine::textToInt32(count) : std::nullopt;
        if (!target) {
            m_app.dialogs().tell("Error", "The Play X times must be numeric!", Dialogs::Icon::Stop);
            return;
        }
        m_app.playback.setPlayTarget(*target);
    }
    m_app.sScriptText = m_txtLog.toStdString();
    m_app.playback.start(m_app.sScriptText, false);
}

void FrmBasic::cmdOpen_Click() {
    if (!m_txtLog.isEmpty() &&
        !m_app.dialogs().askYesNo("Confirm Recording",
                                  "There is an existing script open. If you open a new script Tarvoke will "
                                  "delete the existing script. Do you wish to continue?"))
        return;
    std::string path = localPath(m_app.dialogs().openFileName("Open Tarvoke script file", kFilter, "tk"));
    if (!IsValidPath(path) || path.empty()) return;
    m_app.session.scriptFolder = GetFolder(path);
    const auto content = readScriptFile(path);
    if (!content) return;
    setWindowTitle(kBareCaption + " - " + fileNameOf(path));
    m_app.sFilePath = path;
    m_txtLog = *content;
    m_changed = false;
    m_app.sScriptText = m_txtLog.toStdString();
}

bool FrmBasic::SaveScript() {
    if (windowTitle() == kBareCaption) return false;  // nothing recorded or opened
    return saveWithDialog();
}

bool FrmBasic::saveWithDialog() {
    std::string path = localPath(m_app.dialogs().saveFileName("Save Tarvoke script file", kFilter, "tk"));
    if (!IsValidPath(path) || path.empty()) return false;
    if (!mayReplace(m_app.dialogs(), path)) return false;
    if (!saveScriptFile(m_app.dialogs(), path, m_txtLog)) return false;
    m_app.session.scriptFolder = GetFolder(path);
    setWindowTitle(kBareCaption + " - " + fileNameOf(path));
    m_app.sFilePath = path;
    m_changed = false;
    return true;
}

void FrmBasic::cmdAdvanced_Click() {
    m_timers->setPlayTimer(false);
    m_timers->setInputsTimer(false);
    FrmMain& other = m_app.frmMain();
    other.timers().setInputsTimer(true);
    const QString caption = windowTitle();
    if (caption != kBareCaption) other.setWindowTitle("Tarvoke - " + caption.mid(21));
    other.setText(m_txtLog);
    other.setChanged(m_changed);
    m_app.bBasicMode = false;
    m_app.hideChoice();
    hide();
    m_app.playback.setView(&other.timers());
    other.show();
}

void FrmBasic::closeEvent(QCloseEvent* event) {
    event->ignore();
    // Text brought from Advanced Mode may be changed under the bare caption,
    // where Save does nothing: the question's Save asks for a name all the same.
    if (m_changed && !offerToSave(m_app.dialogs(), [this] { return saveWithDialog(); })) return;
    StopScript();
    m_app.SaveSettings();
    m_app.endProcess();
}

}  // namespace tarvoke::app
