#include <CoreFoundation/CFPreferences.h>
#import <Foundation/Foundation.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <type_traits>

#include "platform/Assertion.h"
#include "platform/posix/CoreObject.h"

struct __CFNumber {
    CoreHeader header;
    std::int64_t value;

    bool Equals(const __CFNumber& other) const { return value == other.value; }
};

struct __CFBoolean {
    CoreHeader header;
    bool value;

    bool Equals(const __CFBoolean& other) const { return value == other.value; }
};

static_assert(std::is_standard_layout_v<__CFNumber> && std::is_standard_layout_v<__CFBoolean>,
              "a pointer to an object is a pointer to its header");

namespace {

/// A pool for callers that may have none.
class CPool {
public:
    CPool() : m_pool([[NSAutoreleasePool alloc] init]) {}
    ~CPool() { [m_pool drain]; }
    CPool(CPool const&) = delete;
    CPool& operator=(CPool const&) = delete;

private:
    NSAutoreleasePool* m_pool;
};

CFTypeID TypeIdOf(const CoreOperations* operations) {
    return reinterpret_cast<CFTypeID>(operations);
}

NSString* AsNSString(CFStringRef string) {
    return [NSString stringWithUTF8String:CFStringGetCStringPtr(string, kCFStringEncodingUTF8)];
}

// A truth value is a number of a class of its own.
bool IsBoolean(id value) {
    return [value isKindOfClass:[[NSNumber numberWithBool:YES] class]];
}

CFPropertyListRef AsCoreObject(id value) {
    if (IsBoolean(value)) {
        return new __CFBoolean{{&CoreOperationsFor<__CFBoolean>::table}, [value boolValue] != NO};
    }
    if ([value isKindOfClass:[NSNumber class]]) {
        return new __CFNumber{{&CoreOperationsFor<__CFNumber>::table}, [value longLongValue]};
    }
    NSString* text = [value isKindOfClass:[NSString class]] ? value : @"(not a text or number)";
    return CFStringCreateWithCString(kCFAllocatorDefault, [text UTF8String], kCFStringEncodingUTF8);
}

id AsFoundationObject(CFPropertyListRef value) {
    if (CFGetTypeID(value) == CFNumberGetTypeID()) {
        return [NSNumber numberWithLongLong:static_cast<CFNumberRef>(value)->value];
    }
    TAVARIN_REQUIRE(CFGetTypeID(value) == CFStringGetTypeID());
    return AsNSString(static_cast<CFStringRef>(value));
}

bool Synchronize() {
    const CPool pool;
    return [[NSUserDefaults standardUserDefaults] synchronize];
}

// The user defaults are written by and by, by a run loop that may never turn again.
void SynchronizeAtExit() {
    static const int nRegistered = std::atexit([] { Synchronize(); });
    static_cast<void>(nRegistered);
}

}  // namespace

extern "C" {

CFTypeID CFGetTypeID(CFTypeRef object) {
    return TypeIdOf(HeaderOf(object).operations);
}

CFTypeID CFStringGetTypeID(void) {
    return CFGetTypeID(CFSTR(""));
}

CFTypeID CFNumberGetTypeID(void) {
    return TypeIdOf(&CoreOperationsFor<__CFNumber>::table);
}

CFTypeID CFBooleanGetTypeID(void) {
    return TypeIdOf(&CoreOperationsFor<__CFBoolean>::table);
}

Boolean CFBooleanGetValue(CFBooleanRef boolean) {
    TAVARIN_REQUIRE(boolean != nullptr);
    return boolean->value;
}

Boolean CFNumberGetValue(CFNumberRef number, CFNumberType type, void* value) {
    TAVARIN_REQUIRE(number != nullptr);
    TAVARIN_REQUIRE(type == kCFNumberSInt32Type);
    using Range = std::numeric_limits<SInt32>;
    const std::int64_t fitting =
        std::clamp<std::int64_t>(number->value, Range::min(), Range::max());
    *static_cast<SInt32*>(value) = static_cast<SInt32>(fitting);
    return fitting == number->value;
}

CFPropertyListRef CFPreferencesCopyAppValue(CFStringRef key, CFStringRef applicationID) {
    const CPool pool;
    NSUserDefaults* defaults = [NSUserDefaults standardUserDefaults];
    NSString* name = AsNSString(key);
    id value = [[defaults persistentDomainForName:AsNSString(applicationID)] objectForKey:name];
    if (value == nil) {
        value = [[defaults persistentDomainForName:NSGlobalDomain] objectForKey:name];
    }
    return value == nil ? nullptr : AsCoreObject(value);
}

void CFPreferencesSetAppValue(CFStringRef key, CFPropertyListRef value, CFStringRef applicationID) {
    const CPool pool;
    NSUserDefaults* defaults = [NSUserDefaults standardUserDefaults];
    NSString* domain = AsNSString(applicationID);
    NSMutableDictionary* values = [NSMutableDictionary dictionary];
    NSDictionary* present = [defaults persistentDomainForName:domain];
    if (present != nil) [values setDictionary:present];
    if (value == nullptr) {
        [values removeObjectForKey:AsNSString(key)];
    } else {
        [values setObject:AsFoundationObject(value) forKey:AsNSString(key)];
    }
    [defaults setPersistentDomain:values forName:domain];
    SynchronizeAtExit();
}

Boolean CFPreferencesAppSynchronize(CFStringRef) {
    return Synchronize();
}
}
