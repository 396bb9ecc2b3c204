#pragma once

#include <cstdint>

/// \file
/// The few Core Foundation calls that this system makes, for machines without the framework.
///
/// Names, types and behaviour are those of Apple's documentation, so the same sources compile
/// against either. What a function "creates" belongs to the caller, who gives it back with
/// CFRelease; what it "gets" belongs to the object asked. Reference counts may be changed from any
/// thread; an object's contents are one thread's at a time. Misuse (a null object, an index out of
/// range, growing a fixed-size object) stops the process with the condition that failed, and
/// exhausted memory throws std::bad_alloc.

typedef std::uint8_t UInt8;
typedef std::int32_t SInt32;
typedef std::uint32_t UInt32;
typedef unsigned char Boolean;
typedef signed long CFIndex;

typedef const void* CFTypeRef;
typedef const struct __CFAllocator* CFAllocatorRef;
typedef const struct __CFString* CFStringRef;
typedef const struct __CFData* CFDataRef;
typedef struct __CFData* CFMutableDataRef;
typedef const struct __CFArray* CFArrayRef;
typedef struct __CFArray* CFMutableArrayRef;

struct CFRange {
    CFIndex location;
    CFIndex length;
};

inline CFRange CFRangeMake(CFIndex location, CFIndex length) {
    return {location, length};
}

/// The only allocator: the C++ heap.
inline constexpr CFAllocatorRef kCFAllocatorDefault = nullptr;

enum : CFIndex { kCFNotFound = -1 };

typedef UInt32 CFStringEncoding;

/// The only encoding supported; every other one makes a call fail as an unknown encoding does.
enum : CFStringEncoding { kCFStringEncodingUTF8 = 0x08000100 };

/// How an array treats its values; a null entry means: nothing to do, or compare the pointers.
struct CFArrayCallBacks {
    CFIndex version;
    const void* (*retain)(CFAllocatorRef allocator, const void* value);
    void (*release)(CFAllocatorRef allocator, const void* value);
    CFStringRef (*copyDescription)(const void* value);
    Boolean (*equal)(const void* value1, const void* value2);
};

extern "C" {

/// For arrays of the objects declared here: retained when added, released with the array.
extern const CFArrayCallBacks kCFTypeArrayCallBacks;

CFTypeRef CFRetain(CFTypeRef object);
void CFRelease(CFTypeRef object);

/// The number of owners; a constant string answers the greatest CFIndex.
CFIndex CFGetRetainCount(CFTypeRef object);

/// True for objects of one kind with equal contents, whether mutable or not.
Boolean CFEqual(CFTypeRef object1, CFTypeRef object2);

/// Null when `text` is null, holds malformed UTF-8, or `encoding` is not supported.
CFStringRef CFStringCreateWithCString(CFAllocatorRef allocator, const char* text,
                                      CFStringEncoding encoding);

/// As CFStringCreateWithCString, for `count` bytes that may hold zeros. A leading byte-order mark
/// is dropped when `isExternalRepresentation` is true and kept as a character otherwise.
CFStringRef CFStringCreateWithBytes(CFAllocatorRef allocator, const UInt8* bytes, CFIndex count,
                                    CFStringEncoding encoding, Boolean isExternalRepresentation);

/// The length in UTF-16 code units: a character beyond the basic plane counts as two.
CFIndex CFStringGetLength(CFStringRef string);

/// The bytes that `length` UTF-16 code units take at most, without a terminator; kCFNotFound when
/// that number does not fit or the encoding is not supported.
CFIndex CFStringGetMaximumSizeForEncoding(CFIndex length, CFStringEncoding encoding);

/// Writes the text and a terminator. False, with `buffer` unchanged, when `size` bytes do not hold
/// both or the encoding is not supported.
Boolean CFStringGetCString(CFStringRef string, char* buffer, CFIndex size,
                           CFStringEncoding encoding);

/// The text as the string itself keeps it, valid as long as the string; null when there is no such
/// form (another encoding, or a text that holds zeros). Always be ready for null.
const char* CFStringGetCStringPtr(CFStringRef string, CFStringEncoding encoding);

/// The decimal number that the text begins with, after white space and a sign; 0 when there is
/// none, and the nearest 32-bit number when it is out of range. What follows is not looked at.
SInt32 CFStringGetIntValue(CFStringRef string);

/// The string behind CFSTR: one object per text, which lives until the process ends.
CFStringRef __CFStringMakeConstantString(const char* text);

CFDataRef CFDataCreate(CFAllocatorRef allocator, const UInt8* bytes, CFIndex length);

/// Empty data that can grow up to `capacity` bytes, or without limit when `capacity` is 0.
CFMutableDataRef CFDataCreateMutable(CFAllocatorRef allocator, CFIndex capacity);

CFIndex CFDataGetLength(CFDataRef data);

/// The bytes, valid until the data grows or is released; may be null when there are none.
const UInt8* CFDataGetBytePtr(CFDataRef data);
UInt8* CFDataGetMutableBytePtr(CFMutableDataRef data);

/// Cuts the data, or extends it with zero bytes.
void CFDataSetLength(CFMutableDataRef data, CFIndex length);
void CFDataAppendBytes(CFMutableDataRef data, const UInt8* bytes, CFIndex length);

/// A fixed array of `count` values. Null `callBacks` keep the plain pointers.
CFArrayRef CFArrayCreate(CFAllocatorRef allocator, const void** values, CFIndex count,
                         const CFArrayCallBacks* callBacks);

/// An empty array that can grow up to `capacity` values, or without limit when `capacity` is 0.
CFMutableArrayRef CFArrayCreateMutable(CFAllocatorRef allocator, CFIndex capacity,
                                       const CFArrayCallBacks* callBacks);

void CFArrayAppendValue(CFMutableArrayRef array, const void* value);
CFIndex CFArrayGetCount(CFArrayRef array);
const void* CFArrayGetValueAtIndex(CFArrayRef array, CFIndex index);
}

/// A constant string from a literal; not to be released.
#define CFSTR(literal) __CFStringMakeConstantString("" literal "")
