#pragma once
// The script editor of Advanced Mode: plain text with line numbers in a
// margin, the language's colours, and the checker's findings underlined with
// their message as a tooltip.

#include <QPlainTextEdit>
#include <vector>

#include "app/scripthighlighter.h"

namespace tarvoke::app {

// A finding where the editor shows it: 1-based line, 0-based character in
// it; and its column as the checker counts it (1-based, in bytes).
struct EditorFinding {
    int line = 1;
    int column = 0;
    int byteColumn = 1;
    QString message;
};

class ScriptEditor : public QPlainTextEdit {
public:
    ScriptEditor();

    ScriptHighlighter* highlighter;

    // Underlines these findings in place of the last ones.
    void markFindings(const std::vector<EditorFinding>& findings);
    // The messages of the findings under a point of the viewport, one a line.
    QString messageAt(const QPoint& point) const;
    // Puts the caret at a 1-based line (held to the lines there are) and a
    // character in it, and shows it.
    void goTo(int line, int column = 0);

    int lineNumberWidth() const;
    void paintLineNumbers(const QRect& area);

protected:
    void resizeEvent(QResizeEvent* event) override;
    bool viewportEvent(QEvent* event) override;

private:
    void placeLineNumbers();

    QWidget* m_lineNumbers;
};

}  // namespace tarvoke::app
