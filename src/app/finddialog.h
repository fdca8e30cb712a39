#pragma once
// Find, shown beside Advanced Mode without blocking it; it closes itself when
// it has searched.

#include <QDialog>

class QCheckBox;
class QLineEdit;
class QRadioButton;

namespace tarvoke::app {

class AdvancedWindow;

class FindDialog : public QDialog {
public:
    explicit FindDialog(AdvancedWindow& window);

    QLineEdit* findEdit;
    QRadioButton* upOption;
    QRadioButton* downOption;
    QCheckBox* matchCaseBox;

    // Find Next: searches with the dialog's choices.
    void search();

private:
    AdvancedWindow& m_window;
};

}  // namespace tarvoke::app
