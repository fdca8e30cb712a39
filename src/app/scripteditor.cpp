#include "app/scripteditor.h"

#include <QHelpEvent>
#include <QPainter>
#include <QTextBlock>
#include <QToolTip>

namespace tarvoke::app {

namespace {

// The margin left of the text; it paints through the editor, which knows
// where each visible line stands.
class LineNumberArea : public QWidget {
public:
    explicit LineNumberArea(ScriptEditor& editor) : QWidget(&editor), m_editor(editor) {}
    QSize sizeHint() const override { return {m_editor.lineNumberWidth(), 0}; }

protected:
    void paintEvent(QPaintEvent* event) override { m_editor.paintLineNumbers(event->rect()); }

private:
    ScriptEditor& m_editor;
};

// How far a mark reaches from its first character: to the end of the word or
// parameter it stands on, at least one character.
int markLength(const QString& line, int start) {
    int end = start;
    while (end < line.size() && !QStringView(u"(),;").contains(line[end])) ++end;
    return std::max(end - start, 1);
}

}  // namespace

ScriptEditor::ScriptEditor() : highlighter(new ScriptHighlighter(document())), m_lineNumbers(new LineNumberArea(*this)) {
    connect(this, &QPlainTextEdit::blockCountChanged, this, [this] { placeLineNumbers(); });
    // Only what scrolled in, or the lines that changed, are painted again.
    connect(this, &QPlainTextEdit::updateRequest, this, [this](const QRect& rect, int dy) {
        if (dy)
            m_lineNumbers->scroll(0, dy);
        else
            m_lineNumbers->update(0, rect.y(), m_lineNumbers->width(), rect.height());
    });
    placeLineNumbers();
}

int ScriptEditor::lineNumberWidth() const {
    int digits = 1;
    for (int count = std::max(1, blockCount()); count >= 10; count /= 10) ++digits;
    return 8 + fontMetrics().horizontalAdvance(QLatin1Char('9')) * digits;
}

void ScriptEditor::placeLineNumbers() {
    setViewportMargins(lineNumberWidth(), 0, 0, 0);
    const QRect inside = contentsRect();
    m_lineNumbers->setGeometry(inside.left(), inside.top(), lineNumberWidth(), inside.height());
}

void ScriptEditor::resizeEvent(QResizeEvent* event) {
    QPlainTextEdit::resizeEvent(event);
    placeLineNumbers();
}

void ScriptEditor::paintLineNumbers(const QRect& area) {
    QPainter painter(m_lineNumbers);
    painter.fillRect(area, palette().color(QPalette::Window));
    painter.setPen(palette().color(QPalette::PlaceholderText));
    const int right = m_lineNumbers->width() - 4;
    QTextBlock block = firstVisibleBlock();
    int number = block.blockNumber() + 1;
    qreal top = blockBoundingGeometry(block).translated(contentOffset()).top();
    while (block.isValid() && top <= area.bottom()) {
        const qreal height = blockBoundingRect(block).height();
        if (block.isVisible() && top + height >= area.top())
            painter.drawText(0, qRound(top), right, fontMetrics().height(), Qt::AlignRight, QString::number(number));
        block = block.next();
        top += height;
        ++number;
    }
}

void ScriptEditor::markFindings(const std::vector<EditorFinding>& findings) {
    // Every line is looked at: edits move, split and join marked lines.
    for (QTextBlock block = document()->firstBlock(); block.isValid(); block = block.next())
        if (block.userData()) {
            block.setUserData(nullptr);
            highlighter->colourLine(block);
        }
    LineMarks* marks = nullptr;
    QTextBlock block;
    for (const EditorFinding& finding : findings) {
        if (!block.isValid() || block.blockNumber() != finding.line - 1) {
            if (marks) highlighter->colourLine(block);
            marks = nullptr;
            block = document()->findBlockByNumber(finding.line - 1);
            if (!block.isValid()) continue;
            marks = static_cast<LineMarks*>(block.userData());
            if (!marks) {
                marks = new LineMarks;
                block.setUserData(marks);
            }
            marks->revision = block.revision();
        }
        const QString line = block.text();
        const int start = std::clamp(finding.column, 0, std::max(0, static_cast<int>(line.size()) - 1));
        marks->marks.push_back({start, markLength(line, start), finding.message});
    }
    if (marks) highlighter->colourLine(block);
}

QString ScriptEditor::messageAt(const QPoint& point) const {
    const QTextCursor cursor = cursorForPosition(point);
    const std::vector<Mark>* marks = ScriptHighlighter::marksOf(cursor.block());
    if (!marks) return {};
    // The cursor falls between two characters: the one it follows counts too.
    const int column = cursor.positionInBlock();
    QStringList messages;
    for (const Mark& mark : *marks)
        if (column >= mark.start && column <= mark.start + mark.length) messages << mark.message;
    return messages.join('\n');
}

bool ScriptEditor::viewportEvent(QEvent* event) {
    if (event->type() != QEvent::ToolTip) return QPlainTextEdit::viewportEvent(event);
    const auto* help = static_cast<QHelpEvent*>(event);
    const QString message = messageAt(help->pos());
    if (message.isEmpty()) {
        QToolTip::hideText();
        return true;
    }
    // Shown while the pointer stays on the line.
    const QTextBlock line = cursorForPosition(help->pos()).block();
    QToolTip::showText(help->globalPos(), message, viewport(),
                       blockBoundingGeometry(line).translated(contentOffset()).toRect());
    return true;
}

void ScriptEditor::goTo(int line, int column) {
    const QTextBlock block = document()->findBlockByNumber(std::clamp(line, 1, blockCount()) - 1);
    QTextCursor cursor(block);
    cursor.setPosition(block.position() + std::clamp(column, 0, block.length() - 1));
    setTextCursor(cursor);
    centerCursor();
    setFocus();
}

}  // namespace tarvoke::app
