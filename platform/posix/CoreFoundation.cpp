#include <CoreFoundation/CoreFoundation.h>

#include <algorithm>
#include <boost/locale/utf.hpp>
#include <charconv>
#include <cstring>
#include <limits>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <type_traits>
#include <utility>
#include <vector>

#include "platform/Assertion.h"
#include "platform/posix/CoreObject.h"

namespace {

constexpr CFIndex kUnlimited = std::numeric_limits<CFIndex>::max();
constexpr CFIndex kFixed = 0;

}  // namespace

struct __CFString {
    CoreHeader header;
    std::string utf8;
    CFIndex utf16Length;

    bool Equals(const __CFString& other) const { return utf8 == other.utf8; }
};

struct __CFData {
    CoreHeader header;
    std::vector<UInt8> bytes;
    CFIndex capacity;

    bool Equals(const __CFData& other) const { return bytes == other.bytes; }
};

struct __CFArray {
    CoreHeader header;
    std::vector<const void*> values;
    CFIndex capacity;
    CFArrayCallBacks callBacks;

    ~__CFArray() {
        if (callBacks.release == nullptr) return;
        for (const void* value : values) callBacks.release(kCFAllocatorDefault, value);
    }

    bool Equals(const __CFArray& other) const {
        const auto same = [this](const void* value1, const void* value2) {
            if (value1 == value2) return true;
            return callBacks.equal != nullptr && callBacks.equal(value1, value2) != 0;
        };
        return std::equal(values.begin(), values.end(), other.values.begin(), other.values.end(),
                          same);
    }
};

static_assert(std::is_standard_layout_v<__CFString> && std::is_standard_layout_v<__CFData> &&
                  std::is_standard_layout_v<__CFArray>,
              "a pointer to an object is a pointer to its header");

namespace {

/// The number of UTF-16 code units of `text`, or nothing when it is not well-formed UTF-8.
std::optional<CFIndex> CountUtf16Units(std::string_view text) {
    using Utf8 = boost::locale::utf::utf_traits<char>;
    using Utf16 = boost::locale::utf::utf_traits<char16_t>;
    CFIndex units = 0;
    for (auto position = text.begin(); position != text.end();) {
        const auto character = Utf8::decode(position, text.end());
        if (!boost::locale::utf::is_valid_codepoint(character)) return std::nullopt;
        units += Utf16::width(character);
    }
    return units;
}

CFStringRef CreateString(std::string_view text) {
    const auto units = CountUtf16Units(text);
    if (!units) return nullptr;
    return new __CFString{{&CoreOperationsFor<__CFString>::table}, std::string(text), *units};
}

void RequireRoom(CFIndex present, CFIndex added, CFIndex capacity) {
    TAVARIN_REQUIRE(added >= 0);
    TAVARIN_REQUIRE(added <= capacity - present);
}

CFMutableArrayRef CreateArray(CFIndex capacity, const CFArrayCallBacks* callBacks) {
    const CFArrayCallBacks none{};
    return new __CFArray{{&CoreOperationsFor<__CFArray>::table},
                         {},
                         capacity,
                         callBacks == nullptr ? none : *callBacks};
}

const void* RetainValue(CFAllocatorRef, const void* value) {
    return CFRetain(value);
}

void ReleaseValue(CFAllocatorRef, const void* value) {
    CFRelease(value);
}

void AddValue(__CFArray& array, const void* value) {
    array.values.push_back(value);
    const auto retain = array.callBacks.retain;
    if (retain != nullptr) array.values.back() = retain(kCFAllocatorDefault, value);
}

}  // namespace

extern "C" {

const CFArrayCallBacks kCFTypeArrayCallBacks{0, RetainValue, ReleaseValue, nullptr, CFEqual};

CFTypeRef CFRetain(CFTypeRef object) {
    auto& references = HeaderOf(object).references;
    if (references != kImmortal) ++references;
    return object;
}

void CFRelease(CFTypeRef object) {
    const CoreHeader& header = HeaderOf(object);
    if (header.references == kImmortal) return;
    if (--header.references == 0) header.operations->destroy(object);
}

CFIndex CFGetRetainCount(CFTypeRef object) {
    return HeaderOf(object).references;
}

Boolean CFEqual(CFTypeRef object1, CFTypeRef object2) {
    const CoreOperations* operations = HeaderOf(object1).operations;
    if (operations != HeaderOf(object2).operations) return false;
    return object1 == object2 || operations->equal(object1, object2);
}

CFStringRef CFStringCreateWithCString(CFAllocatorRef, const char* text, CFStringEncoding encoding) {
    if (text == nullptr || encoding != kCFStringEncodingUTF8) return nullptr;
    return CreateString(text);
}

CFStringRef CFStringCreateWithBytes(CFAllocatorRef, const UInt8* bytes, CFIndex count,
                                    CFStringEncoding encoding, Boolean isExternalRepresentation) {
    constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
    TAVARIN_REQUIRE(count >= 0);
    if (encoding != kCFStringEncodingUTF8) return nullptr;
    if (count == 0) return CreateString({});
    std::string_view text(reinterpret_cast<const char*>(bytes), count);
    if (isExternalRepresentation && text.starts_with(byteOrderMark)) {
        text.remove_prefix(byteOrderMark.size());
    }
    return CreateString(text);
}

CFIndex CFStringGetLength(CFStringRef string) {
    TAVARIN_REQUIRE(string != nullptr);
    return string->utf16Length;
}

CFIndex CFStringGetMaximumSizeForEncoding(CFIndex length, CFStringEncoding encoding) {
    constexpr CFIndex bytesPerUnit = 3;
    constexpr CFIndex longest = std::numeric_limits<CFIndex>::max() / bytesPerUnit;
    if (encoding != kCFStringEncodingUTF8 || length > longest) return kCFNotFound;
    return length * bytesPerUnit;
}

Boolean CFStringGetCString(CFStringRef string, char* buffer, CFIndex size,
                           CFStringEncoding encoding) {
    TAVARIN_REQUIRE(string != nullptr);
    if (encoding != kCFStringEncodingUTF8) return false;
    if (buffer == nullptr || std::cmp_less_equal(size, string->utf8.size())) return false;
    std::memcpy(buffer, string->utf8.c_str(), string->utf8.size() + 1);
    return true;
}

const char* CFStringGetCStringPtr(CFStringRef string, CFStringEncoding encoding) {
    TAVARIN_REQUIRE(string != nullptr);
    if (encoding != kCFStringEncodingUTF8) return nullptr;
    return string->utf8.find('\0') == std::string::npos ? string->utf8.c_str() : nullptr;
}

SInt32 CFStringGetIntValue(CFStringRef string) {
    TAVARIN_REQUIRE(string != nullptr);
    std::string_view text = string->utf8;
    text.remove_prefix(std::min(text.find_first_not_of(" \t\n\v\f\r"), text.size()));
    const bool negative = text.starts_with('-');
    if (negative || text.starts_with('+')) text.remove_prefix(1);
    if (text.starts_with('-')) return 0;

    std::int64_t magnitude = 0;
    const auto parsed = std::from_chars(text.data(), text.data() + text.size(), magnitude);
    if (parsed.ec == std::errc::result_out_of_range) magnitude = std::int64_t{1} << 32;
    using Range = std::numeric_limits<SInt32>;
    return static_cast<SInt32>(
        std::clamp<std::int64_t>(negative ? -magnitude : magnitude, Range::min(), Range::max()));
}

CFStringRef __CFStringMakeConstantString(const char* text) {
    static std::mutex mutex;
    static auto& strings = *new std::map<std::string, CFStringRef, std::less<>>;
    const std::lock_guard lock(mutex);
    const auto known = strings.find(text);
    if (known != strings.end()) return known->second;
    const CFStringRef string = CreateString(text);
    TAVARIN_REQUIRE(string != nullptr);
    string->header.references = kImmortal;
    return strings.emplace(text, string).first->second;
}

CFDataRef CFDataCreate(CFAllocatorRef, const UInt8* bytes, CFIndex length) {
    TAVARIN_REQUIRE(length >= 0);
    return new __CFData{{&CoreOperationsFor<__CFData>::table}, {bytes, bytes + length}, kFixed};
}

CFMutableDataRef CFDataCreateMutable(CFAllocatorRef, CFIndex capacity) {
    TAVARIN_REQUIRE(capacity >= 0);
    return new __CFData{
        {&CoreOperationsFor<__CFData>::table}, {}, capacity == 0 ? kUnlimited : capacity};
}

CFIndex CFDataGetLength(CFDataRef data) {
    TAVARIN_REQUIRE(data != nullptr);
    return static_cast<CFIndex>(data->bytes.size());
}

const UInt8* CFDataGetBytePtr(CFDataRef data) {
    TAVARIN_REQUIRE(data != nullptr);
    return data->bytes.data();
}

UInt8* CFDataGetMutableBytePtr(CFMutableDataRef data) {
    TAVARIN_REQUIRE(data != nullptr);
    TAVARIN_REQUIRE(data->capacity != kFixed);
    return data->bytes.data();
}

void CFDataSetLength(CFMutableDataRef data, CFIndex length) {
    TAVARIN_REQUIRE(data != nullptr);
    RequireRoom(0, length, data->capacity);
    data->bytes.resize(static_cast<std::size_t>(length));
}

void CFDataAppendBytes(CFMutableDataRef data, const UInt8* bytes, CFIndex length) {
    RequireRoom(CFDataGetLength(data), length, data->capacity);
    data->bytes.insert(data->bytes.end(), bytes, bytes + length);
}

CFArrayRef CFArrayCreate(CFAllocatorRef, const void** values, CFIndex count,
                         const CFArrayCallBacks* callBacks) {
    TAVARIN_REQUIRE(count >= 0);
    const CFMutableArrayRef array = CreateArray(kFixed, callBacks);
    for (CFIndex index = 0; index < count; ++index) AddValue(*array, values[index]);
    return array;
}

CFMutableArrayRef CFArrayCreateMutable(CFAllocatorRef, CFIndex capacity,
                                       const CFArrayCallBacks* callBacks) {
    TAVARIN_REQUIRE(capacity >= 0);
    return CreateArray(capacity == 0 ? kUnlimited : capacity, callBacks);
}

void CFArrayAppendValue(CFMutableArrayRef array, const void* value) {
    RequireRoom(CFArrayGetCount(array), 1, array->capacity);
    AddValue(*array, value);
}

CFIndex CFArrayGetCount(CFArrayRef array) {
    TAVARIN_REQUIRE(array != nullptr);
    return static_cast<CFIndex>(array->values.size());
}

const void* CFArrayGetValueAtIndex(CFArrayRef array, CFIndex index) {
    TAVARIN_REQUIRE(array != nullptr);
    TAVARIN_REQUIRE(index >= 0 && std::cmp_less(index, array->values.size()));
    return array->values[static_cast<std::size_t>(index)];
}
}
