// The checker walks the statements as the load splits them (the same
// normalisation, the same split, the same command table) and maps each
// finding back through the normalisation to the bytes the user wrote.

#include "engine/check.h"

#include <algorithm>
#include <cstring>
#include <unordered_map>
#include <unordered_set>

#include "engine/commands.h"
#include "engine/numeric.h"
#include "engine/scripttext.h"

namespace tarvoke::engine {
namespace {

// Every name the load knows, lower-case, in the table's order.
const std::vector<std::string>& knownNames() {
    static const std::vector<std::string> names = [] {
        std::vector<std::string> all;
#define TARVOKE_NAME_ENTRY(id, name, ...) all.push_back(lowerAscii(name));
        TARVOKE_BUILTIN_COMMANDS(TARVOKE_NAME_ENTRY) TARVOKE_HOST_COMMANDS(TARVOKE_NAME_ENTRY)
#undef TARVOKE_NAME_ENTRY
        return all;
    }();
    return names;
}

size_t editDistance(std::string_view a, std::string_view b) {
    std::vector<size_t> row(b.size() + 1);
    for (size_t j = 0; j <= b.size(); ++j) row[j] = j;
    for (size_t i = 1; i <= a.size(); ++i) {
        size_t diagonal = row[0];
        row[0] = i;
        for (size_t j = 1; j <= b.size(); ++j) {
            const size_t above = row[j];
            row[j] = std::min({row[j] + 1, row[j - 1] + 1, diagonal + (a[i - 1] == b[j - 1] ? 0 : 1)});
            diagonal = above;
        }
    }
    return row[b.size()];
}

std::string_view nearestName(std::string_view name) {
    std::string_view best;
    size_t bestDistance = SIZE_MAX;
    for (const std::string& known : knownNames()) {
        const size_t distance = editDistance(name, known);
        if (distance < bestDistance) best = known, bestDistance = distance;
    }
    return best;
}

// How many parameters a built-in reads; host commands read their row's shape.
int builtinReads(Command command) {
    switch (command) {
    case Command::EndFunction:
    case Command::Else:
    case Command::EndIf:
    case Command::EndWhile:
    case Command::Timer: return 0;
    case Command::Call:
    case Command::Function:
    case Command::If:
    case Command::While:
    case Command::Tan:
    case Command::Cos:
    case Command::Sin:
    case Command::Log:
    case Command::Factorial: return 1;
    case Command::Message:
    case Command::Parse:
    case Command::Replace: return 3;
    default: return 2;
    }
}

// Built-ins that store into the variable their first parameter names.
bool writesFirst(int32_t number) {
    return number >= static_cast<int32_t>(Command::String) && number <= static_cast<int32_t>(Command::Replace) &&
           number != static_cast<int32_t>(Command::Message);
}

bool isNumericParam(Param param) {
    return param == Param::Coordinate || param == Param::Byte || param == Param::Int16 || param == Param::Int32;
}

bool converts(Param param, std::string_view text) {
    if (text == "lx" || text == "ly") return true;  // the last find, a number whenever it is read
    switch (param) {
    case Param::Byte: return textToByte(text).has_value();
    case Param::Int32: return textToInt32(text).has_value();
    default: return textToInt16(text).has_value();
    }
}

// A text to show in a message, cut where it would swamp the line.
std::string shown(std::string_view text) {
    constexpr size_t kMost = 40;
    if (text.size() <= kMost) return "`" + std::string(text) + "`";
    size_t cut = kMost;
    while (cut > 0 && (static_cast<unsigned char>(text[cut]) & 0xC0) == 0x80) --cut;  // not inside a UTF-8 sequence
    return "`" + std::string(text.substr(0, cut)) + "...`";
}

std::string_view unquoted(std::string_view text) {
    if (text.empty() || text[0] != '"') return text;
    return text.size() < 2 ? std::string_view() : text.substr(1, text.size() - 2);
}

// A parameter's text when it holds no variable the script writes: a quoted
// text without its quotes, "$name" as "name", a number, or (with
// wordsToo) a word no one has written yet.
std::optional<std::string_view> literalValue(std::string_view raw, const std::unordered_set<std::string>& written,
                                             bool wordsToo) {
    if (!raw.empty() && raw[0] == '"') return unquoted(raw);
    if (!raw.empty() && raw[0] == '$') return raw.substr(1);
    if (isNumericText(raw)) return raw;
    if (!wordsToo || raw == "lx" || raw == "ly" || written.count(std::string(raw))) return std::nullopt;
    return raw;
}

// True also for a text that is no "0x" text: only those are decoded.
bool isEvenHexRun(std::string_view text) {
    if (!isHexText(text)) return true;
    size_t digits = 0;
    for (char c : text.substr(2)) {
        if (c == ' ') continue;  // the decoding drops blanks before it pairs the digits
        if (!((c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F'))) return false;
        ++digits;
    }
    return digits % 2 == 0;
}

// The slot an image parameter names, as the image commands read it: every
// "imagesave" taken out of the text, then a number.
std::optional<int> imageSlotOf(std::string_view value) {
    static constexpr std::string_view kPrefix = "imagesave";
    std::string text;
    size_t start = 0;
    for (size_t hit; (hit = value.find(kPrefix, start)) != std::string_view::npos; start = hit + kPrefix.size())
        text.append(value.substr(start, hit - start));
    text.append(value.substr(start));
    if (!isNumericText(text)) return std::nullopt;
    const auto slot = textToInt16(text);
    return slot ? std::optional<int>(*slot) : std::nullopt;
}

constexpr size_t kSlots = 8;

class Checker {
public:
    Checker(std::string_view text, const PictureSize* pictureSize) : m_text(text), m_pictureSize(pictureSize) {}

    std::vector<Finding> run() {
        m_code = normaliseSource(m_text, SourceForm::Text, &m_openComment);
        std::string buffer;
        const size_t rest = splitStatements(
            m_code, buffer, [this](std::string_view statement, size_t first) { check(statement, first); },
            [this, &buffer](size_t offset) {
                m_dropped.push_back(offset);
                if (!buffer.empty())
                    add(offset, "`;` dropped: no `(` and `)` since the last statement, so the text runs on");
            });
        if (rest < m_code.size()) add(rest, "text after the last `;` is ignored");
        if (m_openComment)
            m_findings.push_back({*m_openComment, "comment never closed: the rest of the file is ignored", {}, true});
        finish();
        return located();
    }

private:
    struct Pending {
        size_t offset;  // in the code, until located() finds it in the file
        std::string message;
        std::optional<size_t> related;  // a place whose line ends the message
        bool inFile = false;
    };
    struct Unwritten {
        size_t offset;
        std::string name;
        std::string message;
    };

    // Findings keep their place in the code; the file is looked at once, at
    // the end, so that a script without findings costs no more than a load.
    void add(size_t codeOffset, std::string message, std::optional<size_t> related = std::nullopt) {
        m_findings.push_back({codeOffset, std::move(message), related});
    }
    // A place in a statement, counting the ";" that were dropped inside it.
    size_t placeOf(size_t first, std::string_view statement, std::string_view at) const {
        size_t offset = first + static_cast<size_t>(at.data() - statement.data());
        for (auto d = std::lower_bound(m_dropped.begin(), m_dropped.end(), first); d != m_dropped.end() && *d <= offset; ++d)
            ++offset;
        return offset;
    }

    void check(std::string_view statement, size_t first) {
        const std::string_view name = getCommandName(statement);
        const int32_t number = static_cast<int32_t>(commandNumber(name));
        const std::string_view parameterText = getParameterText(statement);
        std::vector<std::string_view>& parameters = m_parameters;  // kept: a recording has a million statements
        parameters.clear();
        forEachParameter(parameterText, [&](std::string_view piece) { parameters.push_back(piece); });
        auto at = [&](std::string_view where) { return placeOf(first, statement, where); };
        // A parameter that is not there is pointed at by the ")" it is missing before.
        auto parameterAt = [&](size_t k) {
            return k < parameters.size() ? at(parameters[k]) : at(statement.substr(std::min(statement.rfind(')'), statement.size() - 1)));
        };

        if (number == static_cast<int32_t>(Command::Unknown)) {
            if (name.empty()) add(at(statement), "statement without a command name");
            else add(at(statement), "unknown command " + shown(name) + ", did you mean `" + suggestion(name) + "`?");
        }
        const HostRow* row = hostRow(number);
        if (parameters.size() > kSlots) {
            add(at(parameters[kSlots]), std::to_string(parameters.size()) +
                                                        " parameters: a statement keeps at most 8, so all are dropped");
        } else if (number != static_cast<int32_t>(Command::Unknown)) {
            // Correct Time reads the number origionalplaytime holds.
            const size_t reads = number == static_cast<int32_t>(Command::OrigionalPlayTime) ? 1
                                 : row ? row->shape.count
                                       : static_cast<size_t>(builtinReads(static_cast<Command>(number)));
            if (parameters.size() > reads)
                add(at(parameters[reads]), shown(name) + " reads " + std::to_string(reads) + " parameter" +
                                               (reads == 1 ? "" : "s") + ", this statement has " +
                                               std::to_string(parameters.size()));
        }
        const bool condition = number == static_cast<int32_t>(Command::If) || number == static_cast<int32_t>(Command::While);
        if (!condition)
            for (std::string_view piece : parameters)
                if (const std::string_view text = unquoted(piece); !isEvenHexRun(text))
                    add(at(piece), shown(text) + " starts with `0x` but is no even run of hex digits");
        // The statement still counts (an if still opens), with no parameter.
        const bool dropped = parameters.size() > kSlots;
        if (dropped) parameters.clear();

        const std::string_view firstParameter = parameters.empty() ? std::string_view() : parameters[0];
        switch (static_cast<Command>(number)) {
        case Command::If: m_openIfs.push_back(at(statement)); break;
        case Command::While: m_openWhiles.push_back(at(statement)); break;
        case Command::Else:
            if (m_openIfs.empty()) add(at(statement), "`else` without `if`");
            break;
        case Command::EndIf:
            if (m_openIfs.empty()) add(at(statement), "`endif` without `if`");
            else m_openIfs.pop_back();
            break;
        case Command::EndWhile:
            if (m_openWhiles.empty()) add(at(statement), "`endwhile` without `while`");
            else m_openWhiles.pop_back();
            break;
        case Command::Function: {
            const auto [known, added] = m_functions.emplace(std::string(firstParameter), parameterAt(0));
            if (!added)
                add(parameterAt(0), "function " + shown(firstParameter) + " is defined twice; `call` enters the first, on line ",
                    known->second);
            break;
        }
        case Command::Call: m_calls.push_back({parameterAt(0), std::string(firstParameter), {}}); break;
        default: break;
        }
        if (writesFirst(number) || (row && row->shape.count > 0 &&
                                    (row->shape.params[0] == Param::Test || row->shape.params[0] == Param::Measure)))
            m_written.emplace(firstParameter);
        if (!row || dropped) return;

        for (size_t k = 0; k < row->shape.count; ++k) {
            if (!isNumericParam(row->shape.params[k])) continue;
            const std::string_view raw = k < parameters.size() ? parameters[k] : std::string_view();
            auto where = [&] { return "parameter " + std::to_string(k + 1) + " of " + shown(name); };
            if (raw.empty()) {
                add(parameterAt(k), where() + " is missing: a number belongs there");
                continue;
            }
            const auto value = literalValue(raw, m_written, false);
            if (!value) {
                if (raw != "lx" && raw != "ly")
                    m_unwritten.push_back({at(raw), std::string(raw),
                                           where() + ": " + shown(raw) + " is no number, and no variable of that name is ever written"});
                continue;
            }
            if (converts(row->shape.params[k], *value)) continue;
            add(at(raw), where() + ": " + shown(*value) + (isNumericText(*value) ? " is out of its range" : " is no number"));
        }
        checkPictures(*row, parameters, at(statement));
    }

    // Asked once per name: a recording may repeat one mistake a million times.
    const std::string& suggestion(std::string_view name) {
        auto [known, added] = m_suggestions.try_emplace(std::string(name));
        if (added) known->second = nearestName(name);
        return known->second;
    }

    // Which picture each slot holds, as far as literal loads tell, and the
    // area searches whose area is larger than their sub-image.
    void checkPictures(const HostRow& row, const std::vector<std::string_view>& parameters, size_t offset) {
        auto slot = [&](size_t k) -> std::optional<int> {
            if (k >= parameters.size()) return std::nullopt;
            const auto value = literalValue(parameters[k], m_written, true);
            return value ? imageSlotOf(*value) : std::nullopt;
        };
        if (row.command == Command::LoadImage || row.command == Command::CaptureScreen) {
            const auto filled = slot(0);
            if (!filled) return;
            m_sizes.erase(*filled);
            if (row.command != Command::LoadImage || !m_pictureSize || !*m_pictureSize || parameters.size() < 2) return;
            if (const auto path = literalValue(parameters[1], m_written, true))
                if (const auto size = (*m_pictureSize)(std::string(*path))) m_sizes[*filled] = *size;
            return;
        }
        if (row.command != Command::IsImageInArea && row.command != Command::IsImageInAreaEx) return;
        int corner[4];
        for (size_t k = 0; k < 4; ++k) {
            const auto value = k + 3 < parameters.size() ? literalValue(parameters[k + 3], m_written, false) : std::nullopt;
            const auto number = value ? textToInt16(*value) : std::nullopt;
            if (!number) return;
            corner[k] = *number;
        }
        const int width = corner[2] - corner[0] + 1, height = corner[3] - corner[1] + 1;
        if (width < 1 || height < 1) return;
        const auto sub = slot(2);
        const auto known = sub ? m_sizes.find(*sub) : m_sizes.end();
        const std::pair<int, int> size = known != m_sizes.end() ? known->second : std::pair{1, 1};
        if (width <= size.first && height <= size.second) return;
        add(offset, "area larger than the sub-image: " + shown(lowerAscii(row.name)) +
                        " compares up to the area's far corner and seldom matches; use `LocateImage`");
    }

    void finish() {
        for (size_t offset : m_openIfs) add(offset, "`if` without `endif`");
        for (size_t offset : m_openWhiles) add(offset, "`while` without `endwhile`");
        for (const Unwritten& call : m_calls)
            if (!m_functions.count(call.name)) add(call.offset, "`call` of " + shown(call.name) + ", which no function defines");
        for (Unwritten& word : m_unwritten)
            if (!m_written.count(word.name)) add(word.offset, std::move(word.message));
    }

    // Places in the code to places in the file, then to lines and columns, in file order.
    std::vector<Finding> located() {
        std::vector<size_t> places;
        for (const Pending& pending : m_findings) {
            if (!pending.inFile) places.push_back(pending.offset);
            if (pending.related) places.push_back(*pending.related);
        }
        std::sort(places.begin(), places.end());
        places.erase(std::unique(places.begin(), places.end()), places.end());
        const std::vector<size_t> inFile = places.empty() ? places : sourceOffsets(m_text, SourceForm::Text, places);
        auto fileOffset = [&](size_t place) {
            const size_t offset = inFile[static_cast<size_t>(std::lower_bound(places.begin(), places.end(), place) - places.begin())];
            return std::min(offset, m_text.empty() ? 0 : m_text.size() - 1);
        };
        for (Pending& pending : m_findings) {
            if (!pending.inFile) pending.offset = fileOffset(pending.offset);
            if (pending.related) pending.related = fileOffset(*pending.related);
        }

        std::vector<size_t> lineStarts{0};
        for (const char* p = m_text.data(); (p = static_cast<const char*>(std::memchr(p, '\n', m_text.data() + m_text.size() - p)));)
            lineStarts.push_back(static_cast<size_t>(++p - m_text.data()));
        auto lineOf = [&](size_t offset) {
            return static_cast<size_t>(std::upper_bound(lineStarts.begin(), lineStarts.end(), offset) - lineStarts.begin());
        };
        std::stable_sort(m_findings.begin(), m_findings.end(),
                         [](const Pending& a, const Pending& b) { return a.offset < b.offset; });
        std::vector<Finding> findings;
        findings.reserve(m_findings.size());
        for (Pending& pending : m_findings) {
            const size_t line = lineOf(pending.offset);
            if (pending.related) pending.message += std::to_string(lineOf(*pending.related));
            findings.push_back({static_cast<int>(line), static_cast<int>(pending.offset - lineStarts[line - 1] + 1),
                                std::move(pending.message)});
        }
        return findings;
    }

    std::string_view m_text;
    const PictureSize* m_pictureSize;
    std::string m_code;
    std::optional<size_t> m_openComment;  // in the file
    std::vector<size_t> m_dropped;  // offsets in the code, ascending
    std::vector<Pending> m_findings;
    std::vector<size_t> m_openIfs, m_openWhiles;
    std::unordered_map<std::string, size_t> m_functions;  // name to where it is first defined
    std::vector<Unwritten> m_calls;
    std::vector<Unwritten> m_unwritten;
    std::unordered_set<std::string> m_written;
    std::unordered_map<int, std::pair<int, int>> m_sizes;
    std::unordered_map<std::string, std::string> m_suggestions;
    std::vector<std::string_view> m_parameters;
};

}  // namespace

std::vector<Finding> checkScript(std::string_view fileText) { return Checker(fileText, nullptr).run(); }

std::vector<Finding> checkScript(std::string_view fileText, const PictureSize& pictureSize) {
    return Checker(fileText, &pictureSize).run();
}

}  // namespace tarvoke::engine
