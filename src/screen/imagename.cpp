#include "screen/imagename.h"

#include <string>

#include "engine/numeric.h"

namespace tarvoke::screen {

std::optional<int16_t> imageIndex(std::string_view name) {
    static constexpr std::string_view kPrefix = "imagesave";
    std::string rest;
    size_t start = 0;
    for (size_t hit; (hit = name.find(kPrefix, start)) != std::string_view::npos; start = hit + kPrefix.size())
        rest.append(name.substr(start, hit - start));
    rest.append(name.substr(start));
    if (!engine::isNumericText(rest)) return std::nullopt;
    return engine::TextToInt16(rest);
}

std::optional<int> rangeIndex(std::string_view name) {
    if (name.size() < 11) return std::nullopt;
    const char c = name[10];
    if (c < '0' || c > '9') return std::nullopt;
    return c - '0';
}

}  // namespace tarvoke::screen
