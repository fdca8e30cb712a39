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

#include "app/findtext.h"
#include "app/advancedwindow.h"

namespace tarvoke::app {

FrmFind::FrmFind(FrmMain& main) : m_main(main) {
    setWindowTitle("Find");
    txtFind = new QLineEdit(main.txtLog->textCursor().selectedText());
    auto* fraDirection = new QGroupBox("Direction");
    optUp = new QRadioButton("Up");
    optDown = new QRadioButton("Down");
    optDown->setChecked(true);
    auto* direction = new QHBoxLayout(fraDirection);
    direction->addWidget(optUp);
    direction->addWidget(optDown);
    chkMatch = new QCheckBox("Match case");
    auto* cmdFind = new QPushButton("Find Next");
    auto* cmdCancel = new QPushButton("Cancel");
    cmdFind->setDefault(true);

    auto* form = new QFormLayout;
    form->addRow("Find:", txtFind);
    auto* options = new QHBoxLayout;
    options->addWidget(chkMatch);
    options->addWidget(fraDirection);
    auto* buttons = new QVBoxLayout;
    buttons->addWidget(cmdFind);
    buttons->addWidget(cmdCancel);
    buttons->addStretch(1);
    auto* left = new QVBoxLayout;
    left->addLayout(form);
    left->addLayout(options);
    auto* layout = new QHBoxLayout(this);
    layout->addLayout(left, 1);
    layout->addLayout(buttons);

    connect(cmdFind, &QPushButton::clicked, this, [this] { cmdFind_Click(); });
    connect(cmdCancel, &QPushButton::clicked, this, &QDialog::close);
}

void FrmFind::cmdFind_Click() {
    FindState& state = m_main.findState();
    state.sFindText = txtFind->text();
    state.bMatchCase = chkMatch->isChecked();
    state.bDirectionDown = optDown->isChecked();
    state.intFindFrom = m_main.txtLog->textCursor().selectionStart();
    m_main.FindIt();
    close();
}

FrmReplace::FrmReplace(FrmMain& main) : m_main(main) {
    setWindowTitle("Replace");
    txtFind = new QLineEdit;
    txtReplace = new QLineEdit;
    auto* cmdReplaceAll = new QPushButton("Replace All");
    auto* cmdCancel = new QPushButton("Cancel");
    cmdReplaceAll->setDefault(true);
    auto* form = new QFormLayout;
    form->addRow("Find:", txtFind);
    form->addRow("Replace:", txtReplace);
    auto* buttons = new QVBoxLayout;
    buttons->addWidget(cmdReplaceAll);
    buttons->addWidget(cmdCancel);
    buttons->addStretch(1);
    auto* layout = new QHBoxLayout(this);
    layout->addLayout(form, 1);
    layout->addLayout(buttons);
    connect(cmdReplaceAll, &QPushButton::clicked, this, [this] { cmdReplaceAll_Click(); });
    connect(cmdCancel, &QPushButton::clicked, this, &QDialog::close);
}

void FrmReplace::cmdReplaceAll_Click() {
    m_main.editText(replaceAll(m_main.text(), txtFind->text(), txtReplace->text()));
    close();
}

}  // namespace tarvoke::app
