#include "app/settingsdialog.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QPushButton>
#include <QVBoxLayout>

#include "app/app.h"
#include "app/priority.h"

namespace tarvoke::app {

SettingsDialog::SettingsDialog(App& app) : m_app(app) {
    setWindowTitle("Settings");
    auto* recordingFrame = new QGroupBox("Recording");
    mouseMoveBox = new QCheckBox("Mouse Move");
    extendedClicksBox = new QCheckBox("Use Extended Clicks");
    auto* recording = new QVBoxLayout(recordingFrame);
    recording->addWidget(mouseMoveBox);
    recording->addWidget(extendedClicksBox);

    auto* playingFrame = new QGroupBox("Playing");
    ignorePausesBox = new QCheckBox("Ignore Pauses");
    highPriorityBox = new QCheckBox("High Priority");
    auto* playing = new QVBoxLayout(playingFrame);
    playing->addWidget(ignorePausesBox);
    playing->addWidget(highPriorityBox);

    auto* ok = new QPushButton("OK");
    auto* cancel = new QPushButton("Cancel");
    ok->setDefault(true);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch(1);
    buttons->addWidget(ok);
    buttons->addWidget(cancel);

    auto* frames = new QHBoxLayout;
    frames->addWidget(recordingFrame);
    frames->addWidget(playingFrame);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(frames);
    layout->addLayout(buttons);

    mouseMoveBox->setChecked(m_app.mouseMove);
    extendedClicksBox->setChecked(m_app.extendedClicks);
    ignorePausesBox->setChecked(m_app.session.ignorePauses);
    connect(ok, &QPushButton::clicked, this, [this] { apply(); });
    connect(cancel, &QPushButton::clicked, this, &QDialog::close);
}

void SettingsDialog::apply() {
    m_app.mouseMove = mouseMoveBox->isChecked();
    m_app.extendedClicks = extendedClicksBox->isChecked();
    m_app.session.ignorePauses = ignorePausesBox->isChecked();
    if (highPriorityBox->isChecked()) raiseProcessPriority();
    close();
}

}  // namespace tarvoke::app
