#pragma once

#include <CoreFoundation/CoreFoundation.h>

/// \file
/// Core Foundation's application preferences over the real user defaults, and what reading their
/// values takes. Names and behaviour are those of Apple's documentation. To be called on one
/// thread.

typedef CFTypeRef CFPropertyListRef;
typedef unsigned long CFTypeID;
typedef const struct __CFNumber* CFNumberRef;
typedef const struct __CFBoolean* CFBooleanRef;

typedef CFIndex CFNumberType;
/// The only number type supported.
enum : CFNumberType { kCFNumberSInt32Type = 3 };

extern "C" {

/// Which kind of object this is.
CFTypeID CFGetTypeID(CFTypeRef object);
CFTypeID CFStringGetTypeID(void);
CFTypeID CFNumberGetTypeID(void);
CFTypeID CFBooleanGetTypeID(void);

/// Writes the number to an SInt32. False, with what fits best written, when it does not fit.
Boolean CFNumberGetValue(CFNumberRef number, CFNumberType type, void* value);

/// Whether a truth value is true.
Boolean CFBooleanGetValue(CFBooleanRef boolean);

/// The user's value for `key` in the domain `applicationID`, or else in the domain of all
/// applications; null when neither has one. Texts, numbers and truth values come as such, anything
/// else as a string that begins with no digit. The caller releases the result.
CFPropertyListRef CFPreferencesCopyAppValue(CFStringRef key, CFStringRef applicationID);

/// Sets the user's value for `key` in the domain `applicationID`, or removes it when `value` is
/// null. Values are strings and numbers. Written to disk when the user defaults are, and when the
/// process ends.
void CFPreferencesSetAppValue(CFStringRef key, CFPropertyListRef value, CFStringRef applicationID);

/// Writes to disk what was set. False when that fails.
Boolean CFPreferencesAppSynchronize(CFStringRef applicationID);
}
