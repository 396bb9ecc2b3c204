#include "utils/TextUtils.h"

#include <algorithm>
#include <cstring>

#include "platform/Assertion.h"

namespace {

constexpr std::int32_t maxPStringLength = 255;
constexpr std::int32_t maxConvertedLength = 254;

unsigned char LowerCase(unsigned char c) {
    return c >= 'A' && c <= 'Z' ? c + ('a' - 'A') : c;
}

unsigned char UpperCase(unsigned char c) {
    return c >= 'a' && c <= 'z' ? c - ('a' - 'A') : c;
}

signed char Folded(unsigned char c) {
    return static_cast<signed char>(LowerCase(c));
}

template <typename Number>
std::int32_t Order(Number first, Number second) {
    return first < second ? -1 : first > second ? 1 : 0;
}

void StringReverse(char* text) {
    const std::size_t length = std::strlen(text);
    if (length < 2) return;
    std::reverse(text, text + length);
}

}  // namespace

void ltoa(std::int64_t value, char* buffer, int) {
    // Negating as unsigned is defined for the most negative number too.
    std::uint64_t rest = static_cast<std::uint64_t>(value);
    if (value < 0) rest = 0 - rest;
    char* out = buffer;
    do {
        *out++ = static_cast<char>('0' + rest % 10);
        rest /= 10;
    } while (rest != 0);
    if (value < 0) *out++ = '-';
    *out = '\0';
    StringReverse(buffer);
}

void itoa(std::int32_t value, char* buffer, int base) {
    ltoa(value, buffer, base);
}

std::int32_t strcmpi(const char* first, const char* second) {
    for (; *first != '\0'; ++first, ++second) {
        if (*second == '\0') return 1;
        const signed char left = Folded(static_cast<unsigned char>(*first));
        const signed char right = Folded(static_cast<unsigned char>(*second));
        if (left != right) return Order(left, right);
    }
    return *second != '\0' ? -1 : 0;
}

void lstrcpyn(char* destination, const char* source, std::int32_t size) {
    for (; size > 1 && *source != '\0'; --size) *destination++ = *source++;
    *destination = '\0';
}

std::int32_t StringTruncate(char* text, std::int32_t n) {
    const auto length = static_cast<std::int32_t>(std::strlen(text));
    if (length > n) text[std::max(n, 1) - 1] = '\0';
    return length;
}

char* substituteToken(const char* token, char* text, const char* replacement) {
    const std::size_t tokenLength = std::strlen(token);
    const std::size_t replacementLength = std::strlen(replacement);
    for (char* found = std::strstr(text, token); found != nullptr;
         found = std::strstr(text, token)) {
        TAVARIN_REQUIRE(std::strstr(replacement, token) == nullptr);
        if (replacementLength > tokenLength) {
            const std::size_t size = std::strlen(text) + 1;
            char* larger = new char[size + (replacementLength - tokenLength)];
            std::memcpy(larger, text, size);
            found = larger + (found - text);
            delete[] text;
            text = larger;
        }
        const char* rest = found + tokenLength;
        std::memmove(found + replacementLength, rest, std::strlen(rest) + 1);
        std::memcpy(found, replacement, replacementLength);
    }
    return text;
}

void PtoCcpy(char* destination, unsigned char const* source) {
    const std::size_t length = source[0];
    std::memmove(destination, source + 1, length);
    destination[length] = '\0';
}

std::int32_t CtoPcpy(unsigned char* destination, const char* source) {
    std::int32_t length = 0;
    for (; length < maxConvertedLength && source[length] != '\0'; ++length)
        destination[length + 1] = static_cast<unsigned char>(source[length]);
    destination[0] = static_cast<unsigned char>(length);
    return length;
}

std::int32_t PtoCcmp(unsigned char const* string, const char* text) {
    char copy[maxPStringLength + 1];
    PtoCcpy(copy, string);
    return static_cast<std::int16_t>(std::strcmp(copy, text));
}

void pstrcpy(unsigned char* destination, unsigned char const* source) {
    std::memmove(destination, source, source[0] + std::size_t{1});
}

void pstrcpyn(unsigned char* destination, unsigned char const* source, std::int32_t n) {
    const std::int32_t length = std::clamp(n, 0, static_cast<std::int32_t>(source[0]));
    std::memmove(destination + 1, source + 1, static_cast<std::size_t>(length));
    destination[0] = static_cast<unsigned char>(length);
}

std::int32_t pstrcat(unsigned char* destination, unsigned char const* source) {
    const std::int32_t length = destination[0];
    const std::int32_t appended =
        std::min(static_cast<std::int32_t>(source[0]), maxPStringLength - length);
    std::memmove(destination + 1 + length, source + 1, static_cast<std::size_t>(appended));
    destination[0] = static_cast<unsigned char>(length + appended);
    return appended;
}

std::int32_t pstrcmp(unsigned char const* first, unsigned char const* second) {
    const std::int32_t common = std::min(first[0], second[0]);
    for (std::int32_t i = 1; i <= common; ++i)
        if (first[i] != second[i]) return Order(first[i], second[i]);
    return Order(first[0], second[0]);
}

std::int32_t pstrcmpi(unsigned char const* first, unsigned char const* second) {
    const std::int32_t common = std::min(first[0], second[0]);
    for (std::int32_t i = 1; i <= common; ++i)
        if (Folded(first[i]) != Folded(second[i]))
            return Order(Folded(first[i]), Folded(second[i]));
    return Order(first[0], second[0]);
}

bool PStringEndCompare(unsigned char const* string, unsigned char const* ending) {
    if (ending[0] > string[0]) return false;
    unsigned char const* tail = string + 1 + (string[0] - ending[0]);
    return std::equal(ending + 1, ending + 1 + ending[0], tail,
                      [](unsigned char left, unsigned char right) {
                          return UpperCase(left) == UpperCase(right);
                      });
}

std::int32_t PStringTruncate(unsigned char* string, std::int32_t n) {
    const std::int32_t length = string[0];
    if (length > n) string[0] = static_cast<unsigned char>(std::max(n, 0));
    return length;
}

bool PStringContains(unsigned char const* string, unsigned char const* part,
                     std::int32_t* position) {
    const std::int32_t length = string[0];
    const std::int32_t partLength = part[0];
    if (length < partLength) return false;
    std::int32_t found = 0;
    // The last possible start, length - partLength + 1, is left out: part of the contract.
    for (std::int32_t start = 1; start <= length - partLength && found == 0; ++start)
        if (std::memcmp(string + start, part + 1, static_cast<std::size_t>(partLength)) == 0)
            found = start;
    if (position != nullptr) *position = found;
    return found != 0;
}
