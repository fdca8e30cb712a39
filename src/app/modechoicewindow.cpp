#include "app/modechoicewindow.h"

#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>

#include "app/app.h"

namespace tarvoke::app {

ModeChoiceWindow::ModeChoiceWindow(App& app) : m_app(app) {
    setWindowTitle("Tarvoke Start");
    auto* prompt = new QLabel("Choose one of the following:");
    basicOption = new QRadioButton("Start Tarvoke in Basic Mode");
    advancedOption = new QRadioButton("Start Tarvoke in Advanced Mode");
    basicOption->setChecked(true);
    okButton = new QPushButton("OK");
    okButton->setDefault(true);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(prompt);
    layout->addWidget(basicOption);
    layout->addWidget(advancedOption);
    layout->addWidget(okButton, 0, Qt::AlignRight);
    connect(okButton, &QPushButton::clicked, this, [this] { confirm(); });
}

void ModeChoiceWindow::confirm() {
    m_app.basicMode = basicOption->isChecked();
    m_app.saveSettings();
    m_app.showModeWindow();
    hide();
}

void ModeChoiceWindow::closeEvent(QCloseEvent*) { m_app.endProcess(); }

}  // namespace tarvoke::app
