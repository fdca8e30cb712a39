#include "app/frmsettings.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QPushButton>
#include <QVBoxLayout>

#include "app/app.h"
#include "app/priority.h"

namespace tarvoke::app {

FrmSettings::FrmSettings(App& app) : m_app(app) {
    setWindowTitle("Settings");
    auto* fraRecording = new QGroupBox("Recording");
    chkMM = new QCheckBox("Mouse Move");
    chkEx = new QCheckBox("Use Extended Clicks");
    auto* recording = new QVBoxLayout(fraRecording);
    recording->addWidget(chkMM);
    recording->addWidget(chkEx);

    auto* fraPlay = new QGroupBox("Playing");
    chkPause = new QCheckBox("Ignore Pauses");
    chkPrior = new QCheckBox("High Priority");
    auto* playing = new QVBoxLayout(fraPlay);
    playing->addWidget(chkPause);
    playing->addWidget(chkPrior);

    auto* cmdOK = new QPushButton("OK");
    auto* cmdCancel = new QPushButton("Cancel");
    cmdOK->setDefault(true);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch(1);
    buttons->addWidget(cmdOK);
    buttons->addWidget(cmdCancel);

    auto* frames = new QHBoxLayout;
    frames->addWidget(fraRecording);
    frames->addWidget(fraPlay);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(frames);
    layout->addLayout(buttons);

    chkMM->setChecked(m_app.bMouseMove);
    chkEx->setChecked(m_app.bExtendedClicks);
    chkPause->setChecked(m_app.session.ignorePauses);
    connect(cmdOK, &QPushButton::clicked, this, [this] { cmdOK_Click(); });
    connect(cmdCancel, &QPushButton::clicked, this, &QDialog::close);
}

void FrmSettings::cmdOK_Click() {
    m_app.bMouseMove = chkMM->isChecked();
    m_app.bExtendedClicks = chkEx->isChecked();
    m_app.session.ignorePauses = chkPause->isChecked();
    if (chkPrior->isChecked()) raiseProcessPriority();
    close();
}

}  // namespace tarvoke::app
