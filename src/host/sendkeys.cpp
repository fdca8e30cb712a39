#include "host/sendkeys.h"

#include <array>
#include <cstdint>
#include <string>

namespace tarvoke::host {
namespace {

using platform::KeyStroke;

struct NamedKey {
    std::string_view name;
    uint8_t vk;
};

constexpr std::array<NamedKey, 28> kNamedKeys = {{
    {"BACKSPACE", 8}, {"BS", 8},         {"BKSP", 8},       {"BREAK", 3},     {"CAPSLOCK", 20},
    {"DELETE", 46},   {"DEL", 46},       {"DOWN", 40},      {"END", 35},      {"ENTER", 13},
    {"ESC", 27},      {"HELP", 47},      {"HOME", 36},      {"INSERT", 45},   {"INS", 45},
    {"LEFT", 37},     {"NUMLOCK", 144},  {"PGDN", 34},      {"PGUP", 33},     {"PRTSC", 44},
    {"RIGHT", 39},    {"SCROLLLOCK", 145}, {"TAB", 9},      {"UP", 38},       {"ADD", 107},
    {"SUBTRACT", 109}, {"MULTIPLY", 106}, {"DIVIDE", 111},
}};

constexpr uint8_t kEnter = 13;

std::string upper(std::string_view text) {
    std::string out(text);
    for (char& c : out)
        if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
    return out;
}

std::optional<uint8_t> namedKey(std::string_view name) {
    const std::string wanted = upper(name);
    for (const NamedKey& key : kNamedKeys)
        if (key.name == wanted) return key.vk;
    // F1 to F16.
    if (wanted.size() >= 2 && wanted.size() <= 3 && wanted[0] == 'F') {
        int number = 0;
        for (size_t i = 1; i < wanted.size(); ++i) {
            if (wanted[i] < '0' || wanted[i] > '9') return std::nullopt;
            number = number * 10 + (wanted[i] - '0');
        }
        if (wanted[1] != '0' && number >= 1 && number <= 16) return static_cast<uint8_t>(111 + number);
    }
    return std::nullopt;
}

// Bytes of the UTF-8 character that starts at text[at]; a stray byte counts
// as a character of its own.
size_t characterLength(std::string_view text, size_t at) {
    const auto lead = static_cast<unsigned char>(text[at]);
    const size_t length = lead < 0xC0 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : lead < 0xF8 ? 4 : 1;
    if (at + length > text.size()) return 1;
    for (size_t i = 1; i < length; ++i)
        if ((static_cast<unsigned char>(text[at + i]) & 0xC0) != 0x80) return 1;
    return length;
}

std::optional<uint8_t> modifierOf(char c) {
    switch (c) {
    case '+': return 16;
    case '^': return 17;
    case '%': return 18;
    default: return std::nullopt;
    }
}

// Strokes made at a time: a stroke takes some forty bytes, so a long text
// is sent in pieces of this many rather than turned into strokes whole.
constexpr size_t kPieceStrokes = 4096;

}  // namespace

// Groups and modifiers nest as deep as the text goes, so what is open is
// kept on a stack of our own rather than the call stack: a text of a million
// "(" fails like any unclosed group instead of overflowing.
class SendKeysParser {
public:
    explicit SendKeysParser(std::string_view keys) : m_keys(keys) {}

    // Reads on until `out` holds at least `atLeast` strokes or the text
    // ends; false when the text is refused by then.
    bool read(std::vector<KeyStroke>& out, size_t atLeast) {
        m_out = &out;
        while (m_at < m_keys.size() && out.size() < atLeast)
            if (!step()) return false;
        return !atEnd() || m_open.empty();  // a group never closed
    }

    // Reads the whole text making no strokes; false when it is refused.
    bool readAll() {
        m_out = nullptr;
        while (m_at < m_keys.size())
            if (!step()) return false;
        return m_open.empty();
    }

    bool atEnd() const { return m_at >= m_keys.size(); }

private:
    // A group, or a modifier waiting for the one item it applies to.
    struct Open {
        bool group;
        uint8_t modifier;
    };

    // Reads one character's worth: opens a group or a modifier, closes a
    // group, or reads a whole item (a braced key, "~", one character).
    bool step() {
        const char c = m_keys[m_at];
        if (const auto modifier = modifierOf(c)) {
            ++m_at;
            if (m_at >= m_keys.size() || m_keys[m_at] == ')') return false;
            emit(KeyStroke::Kind::Press, *modifier);
            m_open.push_back({false, *modifier});
            return true;
        }
        switch (c) {
        case '(':
            ++m_at;
            m_open.push_back({true, 0});
            return true;
        case ')':
            if (m_open.empty() || !m_open.back().group) return false;
            ++m_at;
            m_open.pop_back();
            break;
        case '{':
            if (!braces()) return false;
            break;
        case '}':
            return false;
        case '~':
            ++m_at;
            tap(kEnter);
            break;
        default: {
            const size_t length = characterLength(m_keys, m_at);
            emit(KeyStroke::Kind::Type, 0, m_keys.substr(m_at, length));
            m_at += length;
            break;
        }
        }
        itemDone();
        return true;
    }

    // An item ends the modifiers that waited for it.
    void itemDone() {
        while (!m_open.empty() && !m_open.back().group) {
            emit(KeyStroke::Kind::Release, m_open.back().modifier);
            m_open.pop_back();
        }
    }

    // "{NAME}", "{NAME n}", "{c}", "{c n}". The first character inside may
    // itself be a brace, so the closing one is looked for after it.
    bool braces() {
        const size_t start = m_at + 1;
        if (start >= m_keys.size()) return false;
        const size_t close = m_keys.find('}', start + characterLength(m_keys, start));
        if (close == std::string_view::npos) return false;
        std::string_view inside = m_keys.substr(start, close - start);
        m_at = close + 1;

        int count = 1;
        if (const size_t blank = inside.rfind(' '); blank != std::string_view::npos && blank > 0) {
            const std::string_view digits = inside.substr(blank + 1);
            if (digits.empty() || digits.size() > 4) return false;
            count = 0;
            for (char d : digits) {
                if (d < '0' || d > '9') return false;
                count = count * 10 + (d - '0');
            }
            inside = inside.substr(0, blank);
        }
        if (characterLength(inside, 0) == inside.size()) {
            for (int i = 0; m_out && i < count; ++i) emit(KeyStroke::Kind::Type, 0, inside);
            return true;
        }
        const auto vk = namedKey(inside);
        if (!vk) return false;
        for (int i = 0; m_out && i < count; ++i) tap(*vk);
        return true;
    }

    // Checking a text makes no strokes: it has no `m_out`.
    void emit(KeyStroke::Kind kind, uint8_t vk, std::string_view text = {}) {
        if (m_out) m_out->push_back({kind, vk, std::string(text)});
    }

    void tap(uint8_t vk) {
        emit(KeyStroke::Kind::Press, vk);
        emit(KeyStroke::Kind::Release, vk);
    }

    std::string_view m_keys;
    size_t m_at = 0;
    std::vector<KeyStroke>* m_out = nullptr;
    std::vector<Open> m_open;
};

bool acceptsSendKeys(std::string_view keys) { return SendKeysParser(keys).readAll(); }

KeyStringStrokes::KeyStringStrokes(std::string_view keys) : m_parser(std::make_unique<SendKeysParser>(keys)) {}

KeyStringStrokes::~KeyStringStrokes() = default;

bool KeyStringStrokes::next(std::vector<KeyStroke>& piece) {
    piece.clear();
    m_parser->read(piece, kPieceStrokes);
    return !piece.empty();
}

std::optional<std::vector<KeyStroke>> parseSendKeys(std::string_view keys) {
    if (!acceptsSendKeys(keys)) return std::nullopt;
    std::vector<KeyStroke> all, piece;
    for (KeyStringStrokes strokes(keys); strokes.next(piece);) all.insert(all.end(), piece.begin(), piece.end());
    return all;
}

}  // namespace tarvoke::host
