#include "app/scriptmessages.h"

#include <QMessageBox>

namespace tarvoke::app {

namespace {

// The icon bits of a script's message box style.
enum IconStyle : uint32_t {
    kIconBits = 0x70,
    kStopIcon = 16,
    kQuestionIcon = 32,
    kWarningIcon = 48,
    kInformationIcon = 64,
};

}  // namespace

void ScriptMessageBoxes::show(uint32_t flags, const std::string& title, const std::string& text) {
    QMessageBox::Icon icon = QMessageBox::NoIcon;
    switch (flags & kIconBits) {
    case kStopIcon: icon = QMessageBox::Critical; break;
    case kQuestionIcon: icon = QMessageBox::Question; break;
    case kWarningIcon: icon = QMessageBox::Warning; break;
    case kInformationIcon: icon = QMessageBox::Information; break;
    default: break;
    }
    QMessageBox box(icon, QString::fromStdString(title), QString::fromStdString(text), QMessageBox::Ok);
    box.exec();
}

}  // namespace tarvoke::app
