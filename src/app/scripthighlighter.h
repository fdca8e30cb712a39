#pragma once
// Colours a script as the loader reads it, line by line: comments from "#"
// to the next "#" (inside quotes too), quoted texts, each statement's command
// name, known or not, numbers and 0x texts; and underlines the checker's
// findings kept with each line.

#include <QSyntaxHighlighter>
#include <QTextBlockUserData>
#include <QTextCharFormat>
#include <QTextCursor>
#include <QTimer>
#include <vector>

namespace tarvoke::app {

// What a character of the script is, as shown.
enum class Token { Plain, Command, UnknownCommand, Comment, Quoted, Number, Hex };

// One finding of the checker on a line: the characters it underlines.
struct Mark {
    int start = 0;
    int length = 1;
    QString message;
};

// The findings of one line, carried by the line itself so that they move with
// it when lines are added above. They stand for the text they were found in:
// once the line is edited they are hidden until the next check.
class LineMarks : public QTextBlockUserData {
public:
    std::vector<Mark> marks;
    int revision = 0;
};

class ScriptHighlighter : public QSyntaxHighlighter {
public:
    // Each format carries its Token here, for whoever asks what a character is.
    static constexpr int kTokenProperty = QTextFormat::UserProperty;

    // Lines coloured at once after a change; the rest follow in slices of
    // this many while the program waits for input.
    static constexpr int kLinesAtOnce = 2000;
    // Longer lines keep their plain look: laying out a line in many pieces
    // of colour would cost each keystroke in it more than a frame. What they
    // do to the lines behind them is still followed.
    static constexpr int kColouredLineLimit = 5000;

    explicit ScriptHighlighter(QTextDocument* document);
    static const QTextCharFormat& tokenFormat(Token token);
    // The line's findings, or none when the line changed since they were found.
    static const std::vector<Mark>* marksOf(const QTextBlock& block);
    // Colours a line now, as after a change of its own.
    void colourLine(const QTextBlock& block);
    // Whether lines still wait for their colours.
    bool pending() const { return !m_pending.empty(); }
    // Colours them now.
    void finish();

protected:
    void highlightBlock(const QString& text) override;

private:
    void colourSlice();
    void startPass();

    int m_budget = kLinesAtOnce;
    bool m_skipping = false;  // this pass has left a line behind
    std::vector<QTextCursor> m_pending;  // the first line left uncoloured by each pass
    QTimer m_slices;
};

}  // namespace tarvoke::app
