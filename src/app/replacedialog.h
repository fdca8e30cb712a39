#pragma once
// Replace, shown beside Advanced Mode without blocking it; it closes itself
// when it has replaced.

#include <QDialog>

class QLineEdit;

namespace tarvoke::app {

class AdvancedWindow;

class ReplaceDialog : public QDialog {
public:
    explicit ReplaceDialog(AdvancedWindow& window);

    QLineEdit* findEdit;
    QLineEdit* replacementEdit;

    void replaceAll();

private:
    AdvancedWindow& m_window;
};

}  // namespace tarvoke::app
