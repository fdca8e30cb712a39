#pragma once
// The engine's debug print: each "Get Debug" appends a dump of the
// statements, functions and variables as the engine holds them now.

#include <QWidget>

class QPlainTextEdit;
class QPushButton;

namespace tarvoke::app {

class App;

class DebugWindow : public QWidget {
public:
    explicit DebugWindow(App& app);

    QPushButton* getDebugButton;
    QPlainTextEdit* dumps;

    // Appends one dump and scrolls to the end.
    void appendDump();

private:
    App& m_app;
};

}  // namespace tarvoke::app
