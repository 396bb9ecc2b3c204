#include "Source/Preferences.h"

#include <CoreFoundation/CFPreferences.h>
#include <CoreFoundation/CoreFoundation.h>

#include <algorithm>
#include <memory>

std::string strAutoSwitch = "AutoSwitch";

namespace {

bool fSavedSinceWritten = false;

struct CReleaseCore {
    void operator()(const void* object) const { CFRelease(object); }
};
using CCoreOwner = std::unique_ptr<const void, CReleaseCore>;

CCoreOwner MakeString(std::string const& strText) {
    return CCoreOwner(
        CFStringCreateWithCString(kCFAllocatorDefault, strText.c_str(), kCFStringEncodingUTF8));
}

CFStringRef AsString(CCoreOwner const& owner) {
    return static_cast<CFStringRef>(owner.get());
}

CFStringRef Domain() {
    return CFSTR(TAVARIN_BUNDLE_IDENTIFIER);
}

std::int32_t AsInteger(CFPropertyListRef value) {
    if (CFGetTypeID(value) == CFStringGetTypeID()) {
        return CFStringGetIntValue(static_cast<CFStringRef>(value));
    }
    if (CFGetTypeID(value) == CFBooleanGetTypeID()) {
        return CFBooleanGetValue(static_cast<CFBooleanRef>(value)) ? 1 : 0;
    }
    SInt32 nValue = 0;
    if (CFGetTypeID(value) == CFNumberGetTypeID()) {
        CFNumberGetValue(static_cast<CFNumberRef>(value), kCFNumberSInt32Type, &nValue);
    }
    return nValue;
}

}  // namespace

std::int32_t GetInt(std::string const& strKey, std::int32_t nDefault, std::int32_t nMin,
                    std::int32_t nMax) {
    const CCoreOwner key = MakeString(strKey);
    const CCoreOwner value(CFPreferencesCopyAppValue(AsString(key), Domain()));
    const std::int32_t nValue = value ? AsInteger(value.get()) : nDefault;
    return std::min(std::max(nValue, nMin), nMax);
}

void SaveInt(std::string const& strKey, std::int32_t nValue) {
    const CCoreOwner key = MakeString(strKey);
    const CCoreOwner value = MakeString(std::to_string(nValue));
    CFPreferencesSetAppValue(AsString(key), value.get(), Domain());
    fSavedSinceWritten = true;
}

void WritePreferences() {
    if (!fSavedSinceWritten) return;
    fSavedSinceWritten = false;
    CFPreferencesAppSynchronize(Domain());
}
