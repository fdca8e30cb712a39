#include "app/scriptmessages.h"

#include <QMessageBox>

namespace tarvoke::app {

void ScriptMessageBoxes::show(uint32_t flags, const std::string& title, const std::string& text) {
    QMessageBox::Icon icon = QMessageBox::NoIcon;
    switch (flags & 0x70) {
    case 16: icon = QMessageBox::Critical; break;
    case 32: icon = QMessageBox::Question; break;
    case 48: icon = QMessageBox::Warning; break;
    case 64: icon = QMessageBox::Information; break;
    default: break;
    }
    QMessageBox box(icon, QString::fromStdString(title), QString::fromStdString(text), QMessageBox::Ok);
    box.exec();
}

}  // namespace tarvoke::app
