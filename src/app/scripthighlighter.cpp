#include "app/scripthighlighter.h"

#include <algorithm>
#include <array>
#include <utility>

#include "engine/commands.h"
#include "engine/scripttext.h"

namespace tarvoke::app {

namespace {

// What the loader knows at a line end, carried to the next line as the
// block state: inside a comment, inside quotes, whether the statement's
// "(" and ")" were seen, and whether its name began on an earlier line.
enum State : int {
    InComment = 1,
    InQuotes = 2,
    SeenOpen = 4,
    SeenClose = 8,
    NameBegun = 16,
};

QTextCharFormat makeFormat(Token token, const QColor& colour, bool italic = false) {
    QTextCharFormat format;
    format.setForeground(colour);
    format.setFontItalic(italic);
    format.setProperty(ScriptHighlighter::kTokenProperty, static_cast<int>(token));
    return format;
}

bool isWordCharacter(QChar c) { return c.isLetterOrNumber() || c == '_'; }

// The end of a 0x text that starts at `start`: the parameter runs to the
// next character that means something to the loader.
int hexEnd(const QString& text, int start) {
    int end = start;
    while (end < text.size() && !QStringView(u",();#\"").contains(text[end])) ++end;
    return end;
}

}  // namespace

// A change of one line can change every line behind it (a "#" typed at the
// top of a long recording makes the rest a comment), and a new text is all
// change. So a change colours a slice of lines at once, which covers the
// view, and leaves the rest to slices run while the program is idle.
ScriptHighlighter::ScriptHighlighter(QTextDocument* document) : QSyntaxHighlighter(static_cast<QObject*>(document)) {
    // Before the base class's own handler, so that each change starts with
    // a full slice.
    connect(document, &QTextDocument::contentsChange, this, [this] { startPass(); });
    setDocument(document);
    m_slices.setSingleShot(true);
    m_slices.setInterval(0);
    connect(&m_slices, &QTimer::timeout, this, [this] { colourSlice(); });
}

// The earliest first: its pass may reach and settle the later ones.
void ScriptHighlighter::colourSlice() {
    if (m_pending.empty()) return;
    const auto first = std::min_element(m_pending.begin(), m_pending.end(),
                                        [](const QTextCursor& a, const QTextCursor& b) { return a.position() < b.position(); });
    const QTextBlock block = first->block();
    m_pending.erase(first);
    colourLine(block);
    if (!m_pending.empty()) m_slices.start();
}

void ScriptHighlighter::colourLine(const QTextBlock& block) {
    startPass();
    rehighlightBlock(block);
}

void ScriptHighlighter::startPass() {
    m_budget = kLinesAtOnce;
    m_skipping = false;
}

void ScriptHighlighter::finish() {
    while (pending()) colourSlice();
}

const QTextCharFormat& ScriptHighlighter::tokenFormat(Token token) {
    static const std::array<QTextCharFormat, 7> formats{
        QTextCharFormat(),
        makeFormat(Token::Command, QColor(0x00, 0x33, 0x99)),
        makeFormat(Token::UnknownCommand, QColor(0xc0, 0x50, 0x00)),
        makeFormat(Token::Comment, QColor(0x70, 0x70, 0x70), true),
        makeFormat(Token::Quoted, QColor(0xa3, 0x15, 0x15)),
        makeFormat(Token::Number, QColor(0x09, 0x86, 0x58)),
        makeFormat(Token::Hex, QColor(0x80, 0x00, 0x80)),
    };
    return formats[static_cast<size_t>(token)];
}

const std::vector<Mark>* ScriptHighlighter::marksOf(const QTextBlock& block) {
    const auto* data = static_cast<const LineMarks*>(block.userData());
    if (!data || data->revision != block.revision()) return nullptr;
    return &data->marks;
}

// The rules of the load's text passes (stripSource, then the split at ";"):
// a "#" opens a comment even inside quotes, and the next "#" closes it, the
// character behind a closing "#" being taken as it is; tabs count for
// nothing; a ";" ends a statement only once both "(" and ")" were seen
// since the last one (quotes do not matter there), so a name is what stands
// before the first "(" of a statement.
void ScriptHighlighter::highlightBlock(const QString& text) {
    if (m_budget <= 0) {
        // The first line left behind keeps its state, which ends the pass
        // unless the change goes on (a new text); the lines behind it then
        // lose theirs, so that the slice that colours them goes on through
        // all of them.
        if (!std::exchange(m_skipping, true)) {
            setCurrentBlockState(currentBlockState());
            m_pending.emplace_back(currentBlock());
            m_slices.start();
        } else {
            setCurrentBlockState(-1);
        }
        return;
    }
    --m_budget;
    const int entry = std::max(previousBlockState(), 0);
    bool comment = entry & InComment, quotes = entry & InQuotes;
    bool open = entry & SeenOpen, close = entry & SeenClose, nameBegun = entry & NameBegun;
    bool literal = false;          // the character behind a closing "#"
    bool parameterStart = false;   // behind a "(" or "," outside quotes
    std::string name;              // the name's characters on this line, as the loader folds them
    std::vector<int> namePositions;
    bool nameHere = false;         // the statement's name has characters on this line
    const int n = static_cast<int>(text.size());
    const bool coloured = n <= kColouredLineLimit;
    const auto paint = [&](int start, int count, Token token) {
        if (coloured) setFormat(start, count, tokenFormat(token));
    };

    for (int i = 0; i < n; ++i) {
        const QChar c = text[i];
        if (c == '\t' || c == '\r') continue;  // the load drops both
        if (c == '#' && !literal) {
            paint(i, 1, Token::Comment);
            literal = comment;
            comment = !comment;
            continue;
        }
        literal = false;
        if (comment) {
            paint(i, 1, Token::Comment);
            continue;
        }
        const bool quoted = quotes || c == '"';
        if (c == '"') quotes = !quotes;
        if (quoted) paint(i, 1, Token::Quoted);
        if (c == ')') close = true;

        if (!open) {
            if (c == '(') {
                open = true;
                parameterStart = true;
                const bool begun = std::exchange(nameBegun, false);
                if (coloured && !namePositions.empty()) {
                    const bool known = !begun && engine::commandNumber(name) != engine::Command::Unknown;
                    for (int at : namePositions) paint(at, 1, known ? Token::Command : Token::UnknownCommand);
                }
            } else if (c != ' ' || quoted) {
                // A ";" before any "(" is dropped and the name runs on.
                if (c == ';') continue;
                nameHere = true;
                if (!coloured) continue;
                // Past ASCII no name is known: any such byte will do.
                const char folded = c.unicode() < 0x80 ? static_cast<char>(c.unicode()) : '\x80';
                name += quoted ? folded : engine::lowerAscii(folded);
                namePositions.push_back(i);
            }
            continue;
        }
        if (c == ';' && close) {
            open = close = nameBegun = nameHere = false;
            name.clear();
            namePositions.clear();
            continue;
        }
        if (quoted || !coloured) {
            parameterStart = false;
            continue;
        }
        if (c == '(' || c == ',') {
            parameterStart = true;
        } else if (c != ' ') {
            if (parameterStart && c == '0' && i + 1 < n && (text[i + 1] == 'x' || text[i + 1] == 'X')) {
                const int end = hexEnd(text, i);
                paint(i, end - i, Token::Hex);
                i = end - 1;
            } else if ((c.isDigit() || (c == '-' && i + 1 < n && text[i + 1].isDigit())) &&
                       (i == 0 || !isWordCharacter(text[i - 1]))) {
                int end = i + 1;
                while (end < n && (text[end].isDigit() || text[end] == '.')) ++end;
                if (end == n || !isWordCharacter(text[end])) paint(i, end - i, Token::Number);
                i = end - 1;
            }
            parameterStart = false;
        }
    }
    if (!open && nameHere) nameBegun = true;
    setCurrentBlockState((comment ? InComment : 0) | (quotes ? InQuotes : 0) | (open ? SeenOpen : 0) |
                         (close ? SeenClose : 0) | (nameBegun ? NameBegun : 0));

    if (const std::vector<Mark>* marks = marksOf(currentBlock()))
        for (const Mark& mark : *marks)
            for (int i = mark.start; i < std::min(mark.start + mark.length, n); ++i) {
                QTextCharFormat underlined = format(i);
                underlined.setUnderlineStyle(QTextCharFormat::SpellCheckUnderline);
                underlined.setUnderlineColor(Qt::red);
                setFormat(i, 1, underlined);
            }
}

}  // namespace tarvoke::app
