#include "platform/FileSystem.h"

#import <Foundation/Foundation.h>

namespace FileSystem {
namespace {

/// Null when the bytes are not UTF-8.
NSString* Text(const std::string& bytes) {
    return [NSString stringWithCString:bytes.c_str() encoding:NSUTF8StringEncoding];
}

std::string Bytes(NSString* text) {
    const char* bytes = [text UTF8String];
    return bytes == nullptr ? std::string() : std::string(bytes);
}

Failure Describe(BOOL succeeded, NSError* error) {
    if (succeeded) return std::nullopt;
    return Bytes([error localizedDescription]);
}

Failure NotText() {
    return "The path is not valid UTF-8.";
}

Failure SetAttributes(const std::string& path, NSDictionary* attributes) {
    NSString* text = Text(path);
    if (text == nil) return NotText();
    NSError* error = nil;
    const BOOL set = [[NSFileManager defaultManager] setAttributes:attributes
                                                      ofItemAtPath:text
                                                             error:&error];
    return Describe(set, error);
}

}  // namespace

CAutoreleasePool::CAutoreleasePool() : m_pPool([[NSAutoreleasePool alloc] init]) {}

CAutoreleasePool::~CAutoreleasePool() {
    [static_cast<NSAutoreleasePool*>(m_pPool) drain];
}

/// A file manager of its own and its enumerator, both retained; the enumerator goes first.
struct CDirectoryEnumerator::State {
    NSFileManager* fileManager;
    NSDirectoryEnumerator* enumerator;

    explicit State(NSString* path)
        : fileManager([[NSFileManager alloc] init]),
          enumerator(path == nil ? nil : [[fileManager enumeratorAtPath:path] retain]) {}

    ~State() {
        [enumerator release];
        [fileManager release];
    }
};

CDirectoryEnumerator::CDirectoryEnumerator(const std::string& path)
    : m_pState(std::make_unique<State>(Text(path))) {}

CDirectoryEnumerator::~CDirectoryEnumerator() = default;

bool CDirectoryEnumerator::Next(std::string* item) {
    NSString* next = [m_pState->enumerator nextObject];
    if (next == nil) return false;
    *item = Bytes(next);
    return true;
}

std::optional<Attributes> GetAttributes(const std::string& path) {
    NSString* text = Text(path);
    if (text == nil) return std::nullopt;
    NSDictionary* found = [[NSFileManager defaultManager] attributesOfItemAtPath:text error:NULL];
    if (found == nil) return std::nullopt;
    Attributes attributes;
    attributes.nSize = [found fileSize];
    attributes.dModified = [[found fileModificationDate] timeIntervalSince1970];
    attributes.fBusy = [[found objectForKey:NSFileBusy] boolValue];
    return attributes;
}

Item GetItem(const std::string& path) {
    NSString* text = Text(path);
    BOOL directory = NO;
    if (text == nil) return Item::Missing;
    if (![[NSFileManager defaultManager] fileExistsAtPath:text isDirectory:&directory]) {
        return Item::Missing;
    }
    return directory ? Item::Directory : Item::File;
}

Failure SetModificationTime(const std::string& path, double seconds) {
    NSDate* modified = [NSDate dateWithTimeIntervalSince1970:seconds];
    return SetAttributes(path, [NSDictionary dictionaryWithObject:modified
                                                           forKey:NSFileModificationDate]);
}

Failure SetCreatorAndType(const std::string& path, unsigned long creator, unsigned long type) {
    NSNumber* creatorCode = [NSNumber numberWithUnsignedLong:creator];
    NSNumber* typeCode = [NSNumber numberWithUnsignedLong:type];
    return SetAttributes(
        path, [NSDictionary dictionaryWithObjectsAndKeys:creatorCode, NSFileHFSCreatorCode,
                                                         typeCode, NSFileHFSTypeCode, nil]);
}

Failure Move(const std::string& from, const std::string& to) {
    NSString* source = Text(from);
    NSString* target = Text(to);
    if (source == nil || target == nil) return NotText();
    NSError* error = nil;
    const BOOL moved = [[NSFileManager defaultManager] moveItemAtPath:source
                                                               toPath:target
                                                                error:&error];
    return Describe(moved, error);
}

Failure CreateDirectories(const std::string& path) {
    NSString* text = Text(path);
    if (text == nil) return NotText();
    NSError* error = nil;
    const BOOL created = [[NSFileManager defaultManager] createDirectoryAtPath:text
                                                   withIntermediateDirectories:YES
                                                                    attributes:nil
                                                                         error:&error];
    return Describe(created, error);
}

std::string TemporaryDirectory() {
    NSString* directory = NSTemporaryDirectory();
    return directory == nil ? "/tmp" : Bytes(directory);
}

std::string ProgramPath() {
    return Bytes([[NSBundle mainBundle] executablePath]);
}

void Log(const std::string& line) {
    NSLog(@"%@", Text(line));
}

}  // namespace FileSystem
