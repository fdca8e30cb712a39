#pragma once
// The tagged value that SendData sends and GetData fills, typed as the
// language's variants are: a type number, and for an array that number plus
// Array. Numbers are held as their little-endian bytes, one element after
// another, which is also how they go on the wire; texts are byte strings.

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

namespace tarvoke::net {

enum class VarType : int32_t {
    Empty = 0,
    Integer = 2,   // 16-bit
    Long = 3,      // 32-bit
    Single = 4,
    Double = 5,
    Currency = 6,  // 64-bit, ten-thousandths
    Date = 7,      // a double
    String = 8,
    Boolean = 11,  // 16-bit, true is -1
    Byte = 17,
};
constexpr int32_t kArray = 8192;

// The bytes one element of a numeric type takes; 0 for text and the rest.
constexpr size_t elementSize(VarType type) {
    switch (type) {
    case VarType::Byte: return 1;
    case VarType::Integer: case VarType::Boolean: return 2;
    case VarType::Long: case VarType::Single: return 4;
    case VarType::Double: case VarType::Currency: case VarType::Date: return 8;
    default: return 0;
    }
}

struct Value {
    int32_t type = 0;
    std::string bytes;               // the numbers, or the text
    std::vector<std::string> texts;  // an array of texts

    VarType element() const { return static_cast<VarType>(type & ~kArray); }
    bool isArray() const { return (type & kArray) != 0; }

    static Value text(std::string text) { return {static_cast<int32_t>(VarType::String), std::move(text), {}}; }
    static Value textArray(std::vector<std::string> texts) {
        return {static_cast<int32_t>(VarType::String) | kArray, {}, std::move(texts)};
    }
    static Value boolean(bool value) { return number<int16_t>(VarType::Boolean, value ? -1 : 0); }
    template <class T>
    static Value number(VarType type, T value) {
        return {static_cast<int32_t>(type), bytesOf(value), {}};
    }
    template <class T>
    static Value numbers(VarType type, const std::vector<T>& values) {
        Value result{static_cast<int32_t>(type) | kArray, {}, {}};
        for (T value : values) result.bytes += bytesOf(value);
        return result;
    }
    // Element i read as T; missing bytes read as 0.
    template <class T>
    T at(size_t i = 0) const {
        unsigned char raw[sizeof(T)] = {};
        if (i * sizeof(T) < bytes.size()) std::memcpy(raw, bytes.data() + i * sizeof(T), std::min(sizeof(T), bytes.size() - i * sizeof(T)));
        if constexpr (std::endian::native == std::endian::big) std::reverse(raw, raw + sizeof(T));
        T value;
        std::memcpy(&value, raw, sizeof(T));
        return value;
    }

private:
    template <class T>
    static std::string bytesOf(T value) {
        std::string raw(sizeof(T), '\0');
        std::memcpy(raw.data(), &value, sizeof(T));
        if constexpr (std::endian::native == std::endian::big) std::reverse(raw.begin(), raw.end());
        return raw;
    }
};

}  // namespace tarvoke::net
