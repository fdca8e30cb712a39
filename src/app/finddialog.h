#pragma once
// Find and Replace, shown beside frmMain without blocking it; each closes
// itself when it has done its work.

#include <QDialog>

class QCheckBox;
class QLineEdit;
class QRadioButton;

namespace tarvoke::app {

class FrmMain;

class FrmFind : public QDialog {
public:
    explicit FrmFind(FrmMain& main);

    QLineEdit* txtFind;
    QRadioButton* optUp;
    QRadioButton* optDown;
    QCheckBox* chkMatch;

    void cmdFind_Click();

private:
    FrmMain& m_main;
};

class FrmReplace : public QDialog {
public:
    explicit FrmReplace(FrmMain& main);

    QLineEdit* txtFind;
    QLineEdit* txtReplace;

    void cmdReplaceAll_Click();

private:
    FrmMain& m_main;
};

}  // namespace tarvoke::app
