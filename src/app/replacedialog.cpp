#include "app/replacedialog.h"

#include <QFormLayout>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include "app/advancedwindow.h"
#include "app/findtext.h"

namespace tarvoke::app {

ReplaceDialog::ReplaceDialog(AdvancedWindow& window) : m_window(window) {
    setWindowTitle("Replace");
    findEdit = new QLineEdit;
    replacementEdit = new QLineEdit;
    auto* replace = new QPushButton("Replace All");
    auto* cancel = new QPushButton("Cancel");
    replace->setDefault(true);
    auto* form = new QFormLayout;
    form->addRow("Find:", findEdit);
    form->addRow("Replace:", replacementEdit);
    auto* buttons = new QVBoxLayout;
    buttons->addWidget(replace);
    buttons->addWidget(cancel);
    buttons->addStretch(1);
    auto* layout = new QHBoxLayout(this);
    layout->addLayout(form, 1);
    layout->addLayout(buttons);
    connect(replace, &QPushButton::clicked, this, [this] { replaceAll(); });
    connect(cancel, &QPushButton::clicked, this, &QDialog::close);
}

void ReplaceDialog::replaceAll() {
    m_window.editText(app::replaceAll(m_window.text(), findEdit->text(), replacementEdit->text()));
    close();
}

}  // namespace tarvoke::app
