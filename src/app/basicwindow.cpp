#include "app/basicwindow.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QCloseEvent>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>

#include "app/app.h"
#include "app/advancedwindow.h"
#include "app/paths.h"
#include "app/scriptfile.h"
#include "engine/numeric.h"

namespace tarvoke::app {

namespace {

const QString kFilter = "Tarvoke Script Files|*.tk|All Files|*.*";

}  // namespace

BasicWindow::BasicWindow(App& app) : m_app(app) {
    setWindowTitle(kBasicCaption);
    m_text = kTemplate;
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
        HotkeyActions{[this] { stopScript(); }, [this] { m_app.playback.pauseScript(); }, [this] { recordScript(); },
                      [this] { playScript(); }});
    // The script is not shown here: the calibrated text replaces it as it is.
    m_correctTime = std::make_unique<CorrectTimeRun>(
        app, CallingWindow{[this] { stopScript(); }, [this] { return text(); },
                           [this](const QString& t) {
                               if (t != m_text) setChanged(true);
                               setText(t);
                           },
                           m_timers.get(), true});
    m_timers->isCorrectTimeOn = [this] { return m_correctTime->on(); };
    m_timers->onAfterStop = [this] {
        m_correctTime->turnOff();
        closeRecording();
    };
    m_timers->isPlayXSelected = [this] { return playXOption->isChecked(); };

    // The controls show the settings as loaded.
    m_app.session.pauseFactor = 1.0;
    m_app.session.targetWindow = 0;
    m_playOptions->setExclusive(false);
    repeatOption->setChecked(m_app.session.repeat);
    m_playOptions->setExclusive(true);
    mouseMoveBox->setChecked(m_app.mouseMove);
    extendedClicksBox->setChecked(m_app.extendedClicks);
    m_app.playback.setView(m_timers.get());
}

QWidget* BasicWindow::buildMainFrame() {
    auto* frame = new QGroupBox("Main");
    auto* row = new QHBoxLayout(frame);
    auto button = [&](const char* caption) {
        auto* b = new QPushButton(caption);
        b->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
        row->addWidget(b, 1);
        return b;
    };
    recordButton = button("Record");
    saveButton = button("Save");
    openButton = button("Open...");
    advancedModeButton = button("Advanced Mode");
    correctTimeButton = button("Correct Time");
    playButton = button("Play");
    connect(recordButton, &QPushButton::clicked, this, [this] { recordScript(); });
    connect(saveButton, &QPushButton::clicked, this, [this] { saveScript(); });
    connect(openButton, &QPushButton::clicked, this, [this] { openScript(); });
    connect(advancedModeButton, &QPushButton::clicked, this, [this] { switchToAdvancedMode(); });
    connect(correctTimeButton, &QPushButton::clicked, this, [this] { m_correctTime->start(); });
    connect(playButton, &QPushButton::clicked, this, [this] { playScript(); });
    return frame;
}

QWidget* BasicWindow::buildPlayFrame() {
    auto* frame = new QGroupBox("Play Options");
    playOnceOption = new QRadioButton("Play Once");
    repeatOption = new QRadioButton("Play Repeatedly");
    playXOption = new QRadioButton("Play X amount of times:");
    playCountEdit = new QLineEdit("1");
    playCountEdit->setMaximumWidth(80);
    m_playOptions = new QButtonGroup(this);
    m_playOptions->addButton(playOnceOption);
    m_playOptions->addButton(repeatOption);
    m_playOptions->addButton(playXOption);
    auto* layout = new QVBoxLayout(frame);
    layout->addWidget(playOnceOption);
    layout->addWidget(repeatOption);
    layout->addWidget(playXOption);
    layout->addWidget(playCountEdit);
    layout->addStretch(1);
    connect(playOnceOption, &QRadioButton::clicked, this, [this] { choosePlayOnce(); });
    connect(repeatOption, &QRadioButton::clicked, this, [this] { chooseRepeat(); });
    connect(playXOption, &QRadioButton::clicked, this, [this] { choosePlayX(); });
    return frame;
}

QWidget* BasicWindow::buildRecordFrame() {
    auto* frame = new QGroupBox("Record Options");
    mouseMoveBox = new QCheckBox("Record Mouse Movements");
    extendedClicksBox = new QCheckBox("Use Extended mouse positioned clicks");
    auto* layout = new QVBoxLayout(frame);
    layout->addWidget(mouseMoveBox);
    layout->addWidget(extendedClicksBox);
    connect(mouseMoveBox, &QCheckBox::clicked, this, [this] { m_app.mouseMove = mouseMoveBox->isChecked(); });
    connect(extendedClicksBox, &QCheckBox::clicked, this, [this] { m_app.extendedClicks = extendedClicksBox->isChecked(); });
    return frame;
}

QWidget* BasicWindow::buildHelpFrame() {
    auto* frame = new QGroupBox("Help");
    aboutButton = new QPushButton("About");
    readmeButton = new QPushButton("Readme");
    auto* layout = new QHBoxLayout(frame);
    layout->addWidget(aboutButton);
    layout->addWidget(readmeButton);
    connect(aboutButton, &QPushButton::clicked, this, [this] { m_app.showAbout(); });
    connect(readmeButton, &QPushButton::clicked, this, [this] { m_app.openReadme(); });
    return frame;
}

void BasicWindow::choosePlayOnce() {
    m_app.session.repeat = false;
    playOnceOption->setChecked(true);
}

void BasicWindow::chooseRepeat() {
    m_app.session.repeat = true;
    repeatOption->setChecked(true);
}

void BasicWindow::choosePlayX() { m_app.session.repeat = false; }

void BasicWindow::stopScript() { m_app.playback.stopPlay(); }

void BasicWindow::recordScript() {
    stopScript();
    // The untouched template is no script to lose.
    if (!m_text.isEmpty() && m_text != kTemplate && !confirmRecording(m_app)) return;
    setWindowTitle(captionWith(kBasicCaption, "Untitled"));
    m_timers->hideForRun();
    m_recordTimers->start(*m_timers);
}

// A branch of Stop: the recording becomes the unsaved script.
void BasicWindow::closeRecording() {
    const std::optional<std::string> script = m_recordTimers->closeIfRecording();
    if (!script) return;
    // Ctrl+6 and Ctrl+7 may have changed the settings these boxes show.
    mouseMoveBox->setChecked(m_app.mouseMove);
    extendedClicksBox->setChecked(m_app.extendedClicks);
    m_text = QString::fromStdString(*script);
    m_changed = true;
    setWindowTitle(captionWith(kBasicCaption, "Untitled"));
    m_app.filePath.clear();
}

void BasicWindow::playScript() {
    if (m_app.playback.resumeIfPending()) return;
    stopScript();
    if (playXOption->isChecked()) {
        const std::string count = playCountEdit->text().toStdString();
        const auto target = engine::isNumericText(count) ? engine::textToInt32(count) : std::nullopt;
        if (!target) {
            m_app.dialogs().tell("Error", "The Play X times must be numeric!", Dialogs::Icon::Stop);
            return;
        }
        m_app.playback.setPlayTarget(*target);
    }
    m_app.scriptText = m_text.toStdString();
    m_app.playback.start(m_app.scriptText, false);
}

void BasicWindow::openScript() {
    if (!m_text.isEmpty() &&
        !m_app.dialogs().askYesNo("Confirm Recording",
                                  "There is an existing script open. If you open a new script Tarvoke will "
                                  "delete the existing script. Do you wish to continue?"))
        return;
    std::string path = localPath(m_app.dialogs().openFileName("Open Tarvoke script file", kFilter, "tk"));
    if (!isValidPath(path) || path.empty()) return;
    m_app.session.scriptFolder = folderOf(path);
    const auto content = readScriptFile(path);
    if (!content) return;
    setWindowTitle(captionWith(kBasicCaption, displayFileName(path)));
    m_app.filePath = path;
    m_text = *content;
    m_changed = false;
    m_app.scriptText = m_text.toStdString();
}

bool BasicWindow::saveScript() {
    if (windowTitle() == kBasicCaption) return false;  // nothing recorded or opened
    return saveWithDialog();
}

bool BasicWindow::saveWithDialog() {
    std::string path = localPath(m_app.dialogs().saveFileName("Save Tarvoke script file", kFilter, "tk"));
    if (!isValidPath(path) || path.empty()) return false;
    if (!mayReplace(m_app.dialogs(), path)) return false;
    if (!saveScriptFile(m_app.dialogs(), path, m_text)) return false;
    m_app.session.scriptFolder = folderOf(path);
    setWindowTitle(captionWith(kBasicCaption, displayFileName(path)));
    m_app.filePath = path;
    m_changed = false;
    return true;
}

void BasicWindow::switchToAdvancedMode() {
    m_timers->setPlayTimer(false);
    m_timers->setHotkeyPoll(false);
    AdvancedWindow& other = m_app.advancedWindow();
    other.timers().setHotkeyPoll(true);
    const QString caption = windowTitle();
    if (caption != kBasicCaption) other.setWindowTitle(captionWith(kAdvancedCaption, nameInCaption(caption, kBasicCaption)));
    other.setText(m_text);
    other.setChanged(m_changed);
    m_app.basicMode = false;
    m_app.hideModeChoice();
    hide();
    m_app.playback.setView(&other.timers());
    other.show();
}

void BasicWindow::closeEvent(QCloseEvent* event) {
    event->ignore();
    // Text brought from Advanced Mode may be changed under the bare caption,
    // where Save does nothing: the question's Save asks for a name all the same.
    if (m_changed && !offerToSave(m_app.dialogs(), [this] { return saveWithDialog(); })) return;
    stopScript();
    m_app.saveSettings();
    m_app.endProcess();
}

}  // namespace tarvoke::app
