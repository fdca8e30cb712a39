#include "app/dialogs.h"

#include <QFileDialog>
#include <QInputDialog>
#include <QLineEdit>
#include <QMessageBox>
#include <QProcess>
#include <QStringList>

namespace tarvoke::app {

QString qtFilter(const QString& filter) {
    const QStringList parts = filter.split('|');
    QStringList entries;
    for (qsizetype i = 0; i + 1 < parts.size(); i += 2) {
        const QString pattern = parts[i + 1] == "*.*" ? QStringLiteral("*") : parts[i + 1];
        entries << parts[i] + " (" + QString(pattern).replace(';', ' ') + ")";
    }
    return entries.join(";;");
}

void QtDialogs::tell(const QString& title, const QString& text, Icon icon) {
    QMessageBox box(icon == Icon::Stop          ? QMessageBox::Critical
                    : icon == Icon::Information ? QMessageBox::Information
                    : icon == Icon::Exclamation ? QMessageBox::Warning
                                                : QMessageBox::NoIcon,
                    title, text, QMessageBox::Ok);
    box.exec();
}

bool QtDialogs::askYesNo(const QString& title, const QString& text) {
    QMessageBox box(QMessageBox::Question, title, text, QMessageBox::Yes | QMessageBox::No);
    return box.exec() == QMessageBox::Yes;
}

Dialogs::Answer QtDialogs::askYesNoCancel(const QString& title, const QString& text) {
    QMessageBox box(QMessageBox::Question, title, text, QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel);
    box.setDefaultButton(QMessageBox::Yes);
    box.setEscapeButton(QMessageBox::Cancel);
    switch (box.exec()) {
    case QMessageBox::Yes: return Answer::Yes;
    case QMessageBox::No: return Answer::No;
    default: return Answer::Cancel;
    }
}

Dialogs::SaveChoice QtDialogs::askSave(const QString& title, const QString& text) {
    QMessageBox box(QMessageBox::Warning, title, text, QMessageBox::Save | QMessageBox::Discard | QMessageBox::Cancel);
    box.setDefaultButton(QMessageBox::Save);
    box.setEscapeButton(QMessageBox::Cancel);
    switch (box.exec()) {
    case QMessageBox::Save: return SaveChoice::Save;
    case QMessageBox::Discard: return SaveChoice::Discard;
    default: return SaveChoice::Cancel;
    }
}

namespace {

// Qt's completion list under the file name box is a popup: it takes the
// keyboard from the dialog while it shows, and on a busy X server the dialog
// can stay without Qt's activation once it has gone. Qt then no longer counts
// the box as focused, keeps the folder typed on the way to a file selected in
// place of the file, and puts the selection's name into the box between
// typed keys, so a typed path ends in that folder or in a garbled name. The
// box without the popup keeps the focus all along.
void withoutCompletionPopup(QFileDialog& dialog) {
    if (auto* name = dialog.findChild<QLineEdit*>(QStringLiteral("fileNameEdit"))) name->setCompleter(nullptr);
}

}  // namespace

QString QtDialogs::openFileName(const QString& title, const QString& filter, const QString& defaultExtension) {
    QFileDialog dialog(nullptr, title, QString(), qtFilter(filter));
    dialog.setAcceptMode(QFileDialog::AcceptOpen);
    dialog.setFileMode(QFileDialog::ExistingFile);
    dialog.setDefaultSuffix(defaultExtension);
    withoutCompletionPopup(dialog);
    return dialog.exec() == QDialog::Accepted ? dialog.selectedFiles().value(0) : QString();
}

QString QtDialogs::saveFileName(const QString& title, const QString& filter, const QString& defaultExtension) {
    QFileDialog dialog(nullptr, title, QString(), qtFilter(filter));
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    // The windows ask before replacing a file themselves, once the name has
    // its extension.
    dialog.setOption(QFileDialog::DontConfirmOverwrite);
    dialog.setDefaultSuffix(defaultExtension);
    withoutCompletionPopup(dialog);
    return dialog.exec() == QDialog::Accepted ? dialog.selectedFiles().value(0) : QString();
}

void QtDialogs::openDocument(const QString& path) { QProcess::startDetached("xdg-open", {path}); }

std::optional<int> QtDialogs::askNumber(const QString& title, const QString& label, int value, int minimum,
                                        int maximum) {
    bool ok = false;
    const int number = QInputDialog::getInt(nullptr, title, label, value, minimum, maximum, 1, &ok);
    return ok ? std::optional<int>(number) : std::nullopt;
}

}  // namespace tarvoke::app
