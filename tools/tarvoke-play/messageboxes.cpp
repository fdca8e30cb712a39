#include "messageboxes.h"

#include <QMessageBox>

namespace tarvoke::player {
namespace {

// The icon bits of the style: 16 stop, 32 question, 48 exclamation, 64 information.
QMessageBox::Icon iconOf(uint32_t flags) {
    switch (flags & 0x70) {
    case 16: return QMessageBox::Critical;
    case 32: return QMessageBox::Question;
    case 48: return QMessageBox::Warning;
    case 64: return QMessageBox::Information;
    default: return QMessageBox::NoIcon;
    }
}

// The button bits: 0 OK, 1 OK Cancel, 2 Abort Retry Ignore, 3 Yes No
// Cancel, 4 Yes No, 5 Retry Cancel.
QMessageBox::StandardButtons buttonsOf(uint32_t flags) {
    switch (flags & 0x7) {
    case 1: return QMessageBox::Ok | QMessageBox::Cancel;
    case 2: return QMessageBox::Abort | QMessageBox::Retry | QMessageBox::Ignore;
    case 3: return QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel;
    case 4: return QMessageBox::Yes | QMessageBox::No;
    case 5: return QMessageBox::Retry | QMessageBox::Cancel;
    default: return QMessageBox::Ok;
    }
}

}  // namespace

void QtMessageBoxes::show(uint32_t flags, const std::string& title, const std::string& text) {
    QMessageBox box(iconOf(flags), QString::fromUtf8(title.data(), static_cast<qsizetype>(title.size())),
                    QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size())), buttonsOf(flags));
    box.exec();
}

}  // namespace tarvoke::player
