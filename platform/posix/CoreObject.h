#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include <atomic>
#include <limits>

#include "platform/Assertion.h"

/// \file
/// What every object behind a CFTypeRef begins with, so that CFRetain, CFRelease and CFEqual work
/// on any of them without knowing its kind. Internal to the platform folder.
///
/// A kind of object is a standard-layout struct whose first member is a CoreHeader built from
/// `&CoreOperationsFor<Kind>::table`, with an operation `bool Equals(Kind const&) const`. It is
/// made with `new` and starts with one owner.

/// The reference count of an object that lives until the process ends.
inline constexpr CFIndex kImmortal = std::numeric_limits<CFIndex>::max();

/// What can be done to an object of one kind; the address of the table tells the kind.
struct CoreOperations {
    void (*destroy)(const void* object);
    bool (*equal)(const void* object1, const void* object2);
};

/// The first member of every object.
struct CoreHeader {
    const CoreOperations* operations;
    mutable std::atomic<CFIndex> references{1};
};

template <typename Object>
struct CoreOperationsFor {
    static void Destroy(const void* object) { delete static_cast<const Object*>(object); }
    static bool Equal(const void* object1, const void* object2) {
        return static_cast<const Object*>(object1)->Equals(*static_cast<const Object*>(object2));
    }
    static constexpr CoreOperations table{Destroy, Equal};
};

inline const CoreHeader& HeaderOf(CFTypeRef object) {
    TAVARIN_REQUIRE(object != nullptr);
    return *static_cast<const CoreHeader*>(object);
}
