#pragma once

#include <QDialog>

namespace tarvoke::app {

class FrmAbout : public QDialog {
public:
    FrmAbout();
};

}  // namespace tarvoke::app
