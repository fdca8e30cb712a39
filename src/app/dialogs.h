#pragma once
// Everything by which the windows ask or tell the user. The program uses the
// Qt dialogs; tests put in answers of their own, so that nothing blocks.

#include <QString>
#include <optional>
#include <QWidget>

namespace tarvoke::app {

class Dialogs {
public:
    virtual ~Dialogs() = default;
    enum class Icon { None, Stop, Information, Exclamation };
    // A box with an OK button.
    virtual void tell(const QString& title, const QString& text, Icon icon = Icon::None) = 0;
    // A Yes / No question; true for Yes.
    virtual bool askYesNo(const QString& title, const QString& text) = 0;
    enum class Answer { Yes, No, Cancel };
    // A Yes / No / Cancel question. A dialog that knows no Cancel asks Yes / No.
    virtual Answer askYesNoCancel(const QString& title, const QString& text) {
        return askYesNo(title, text) ? Answer::Yes : Answer::No;
    }
    enum class SaveChoice { Save, Discard, Cancel };
    // Whether to save text that would otherwise be lost.
    virtual SaveChoice askSave(const QString& title, const QString& text) = 0;
    // The chosen path, or an empty text after Cancel. filter is in the
    // "name|pattern|name|pattern" form.
    virtual QString openFileName(const QString& title, const QString& filter, const QString& defaultExtension) = 0;
    virtual QString saveFileName(const QString& title, const QString& filter, const QString& defaultExtension) = 0;
    // Opens a document with the desktop's program for it (readme.txt).
    virtual void openDocument(const QString& path) = 0;
    // A whole number from minimum to maximum, offered first as value; none
    // after Cancel.
    virtual std::optional<int> askNumber(const QString& title, const QString& label, int value, int minimum,
                                         int maximum) = 0;
};

// The real ones: Qt message boxes and file dialogs, xdg-open.
class QtDialogs : public Dialogs {
public:
    void tell(const QString& title, const QString& text, Icon icon) override;
    bool askYesNo(const QString& title, const QString& text) override;
    Answer askYesNoCancel(const QString& title, const QString& text) override;
    SaveChoice askSave(const QString& title, const QString& text) override;
    QString openFileName(const QString& title, const QString& filter, const QString& defaultExtension) override;
    QString saveFileName(const QString& title, const QString& filter, const QString& defaultExtension) override;
    void openDocument(const QString& path) override;
    std::optional<int> askNumber(const QString& title, const QString& label, int value, int minimum,
                                 int maximum) override;
};

// "Tarvoke Script Files|*.tk|All Files|*.*" as Qt writes it:
// "Tarvoke Script Files (*.tk);;All Files (*)".
QString qtFilter(const QString& filter);

}  // namespace tarvoke::app
