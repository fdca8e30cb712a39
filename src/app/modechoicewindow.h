#pragma once
// The first-run dialog: Basic Mode or Advanced Mode.

#include <QWidget>

class QRadioButton;
class QPushButton;

namespace tarvoke::app {

class App;

class ModeChoiceWindow : public QWidget {
public:
    explicit ModeChoiceWindow(App& app);

    QRadioButton* basicOption;
    QRadioButton* advancedOption;
    QPushButton* okButton;

    // Saves the chosen mode and shows its window.
    void confirm();

protected:
    // Closing the dialog by its frame ends the program.
    void closeEvent(QCloseEvent* event) override;

private:
    App& m_app;
};

}  // namespace tarvoke::app
