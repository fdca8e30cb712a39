#include "app/finddialog.h"

#include <QCheckBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>

#include "app/advancedwindow.h"
#include "app/findtext.h"

namespace tarvoke::app {

FindDialog::FindDialog(AdvancedWindow& window) : m_window(window) {
    setWindowTitle("Find");
    findEdit = new QLineEdit(window.editor->textCursor().selectedText());
    auto* directionFrame = new QGroupBox("Direction");
    upOption = new QRadioButton("Up");
    downOption = new QRadioButton("Down");
    downOption->setChecked(true);
    auto* direction = new QHBoxLayout(directionFrame);
    direction->addWidget(upOption);
    direction->addWidget(downOption);
    matchCaseBox = new QCheckBox("Match case");
    auto* findNext = new QPushButton("Find Next");
    auto* cancel = new QPushButton("Cancel");
    findNext->setDefault(true);

    auto* form = new QFormLayout;
    form->addRow("Find:", findEdit);
    auto* options = new QHBoxLayout;
    options->addWidget(matchCaseBox);
    options->addWidget(directionFrame);
    auto* buttons = new QVBoxLayout;
    buttons->addWidget(findNext);
    buttons->addWidget(cancel);
    buttons->addStretch(1);
    auto* left = new QVBoxLayout;
    left->addLayout(form);
    left->addLayout(options);
    auto* layout = new QHBoxLayout(this);
    layout->addLayout(left, 1);
    layout->addLayout(buttons);

    connect(findNext, &QPushButton::clicked, this, [this] { search(); });
    connect(cancel, &QPushButton::clicked, this, &QDialog::close);
}

void FindDialog::search() {
    FindState& state = m_window.findState();
    state.text = findEdit->text();
    state.matchCase = matchCaseBox->isChecked();
    state.down = downOption->isChecked();
    state.findFrom = m_window.editor->textCursor().selectionStart();
    m_window.search();
    close();
}

}  // namespace tarvoke::app
