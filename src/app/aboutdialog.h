#pragma once

#include <QDialog>

namespace tarvoke::app {

class AboutDialog : public QDialog {
public:
    AboutDialog();
};

}  // namespace tarvoke::app
