#include "app/modechoicewindow.h"

#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>

#include "app/app.h"
#include "app/basicwindow.h"
#include "app/advancedwindow.h"

namespace tarvoke::app {

FrmChoice::FrmChoice(App& app) : m_app(app) {
    setWindowTitle("Tarvoke Start");
    auto* lblChoice = new QLabel("Choose one of the following:");
    optBasic = new QRadioButton("Start Tarvoke in Basic Mode");
    optAdvanced = new QRadioButton("Start Tarvoke in Advanced Mode");
    optBasic->setChecked(true);
    cmdOK = new QPushButton("OK");
    cmdOK->setDefault(true);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(lblChoice);
    layout->addWidget(optBasic);
    layout->addWidget(optAdvanced);
    layout->addWidget(cmdOK, 0, Qt::AlignRight);
    connect(cmdOK, &QPushButton::clicked, this, [this] { cmdOK_Click(); });
}

void FrmChoice::cmdOK_Click() {
    m_app.bBasicMode = optBasic->isChecked();
    m_app.SaveSettings();
    m_app.showModeWindow();
    hide();
}

void FrmChoice::closeEvent(QCloseEvent*) { m_app.endProcess(); }

}  // namespace tarvoke::app
