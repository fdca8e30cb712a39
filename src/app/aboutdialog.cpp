#include "app/aboutdialog.h"

#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace tarvoke::app {

AboutDialog::AboutDialog() {
    setWindowTitle("About Tarvoke 1.4");
    auto* title = new QLabel("<b>Tarvoke</b> 1.4");
    auto* text = new QLabel(
        "Records mouse and keyboard input as scripts,\n"
        "plays them back and looks at the screen.\n\n"
        "Hotkeys: Ctrl+9 play, Ctrl+8 record, Ctrl+0 stop.");
    auto* ok = new QPushButton("Ok");
    ok->setDefault(true);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(title);
    layout->addWidget(text);
    layout->addWidget(ok, 0, Qt::AlignRight);
    connect(ok, &QPushButton::clicked, this, &QDialog::close);
}

}  // namespace tarvoke::app
