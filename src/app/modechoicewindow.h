#pragma once
// The first-run dialog: Basic Mode or Advanced Mode.

#include <QWidget>

class QRadioButton;
class QPushButton;

namespace tarvoke::app {

class App;

class FrmChoice : public QWidget {
public:
    explicit FrmChoice(App& app);

    QRadioButton* optBasic;
    QRadioButton* optAdvanced;
    QPushButton* cmdOK;

    void cmdOK_Click();

protected:
    // Closing the dialog by its frame ends the program.
    void closeEvent(QCloseEvent* event) override;

private:
    App& m_app;
};

}  // namespace tarvoke::app
