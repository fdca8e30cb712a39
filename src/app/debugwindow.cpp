#include "app/debugwindow.h"

#include <QCoreApplication>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScrollBar>
#include <QVBoxLayout>

#include "app/app.h"

namespace tarvoke::app {

DebugWindow::DebugWindow(App& app) : m_app(app) {
    setWindowTitle("Debug");
    auto* layout = new QVBoxLayout(this);
    getDebugButton = new QPushButton("Get Debug");
    dumps = new QPlainTextEdit;
    dumps->setObjectName("dumps");
    dumps->setLineWrapMode(QPlainTextEdit::NoWrap);
    layout->addWidget(getDebugButton);
    layout->addWidget(dumps, 1);
    resize(480, 360);
    connect(getDebugButton, &QPushButton::clicked, this, [this] { appendDump(); });
}

void DebugWindow::appendDump() {
    QTextCursor end(dumps->document());
    end.movePosition(QTextCursor::End);
    end.insertText(QString::fromStdString(m_app.engine.getDebug()));
    // Lets the box lay the new text out before it scrolls to its end.
    QCoreApplication::processEvents(QEventLoop::AllEvents);
    dumps->verticalScrollBar()->setValue(dumps->verticalScrollBar()->maximum());
}

}  // namespace tarvoke::app
