#include "FileIO/FileName.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <string_view>

#include "FileIO/FileIO.h"
#include "platform/Assertion.h"
#include "platform/FileSystem.h"

/// One walk: the enumerator goes before the extension when it ends.
class CDiskPathIterator {
public:
    std::string extension;
    FileSystem::CDirectoryEnumerator enumerator;

    CDiskPathIterator(std::string const& directory, const char* wantedExtension)
        : extension(wantedExtension), enumerator(directory) {}
};

namespace {

std::string TextOf(CFStringRef text) {
    const std::unique_ptr<char[]> converted(CFStringToCString(text));
    return converted == nullptr ? std::string() : std::string(converted.get());
}

CFStringRef CreateCFString(std::string const& text) {
    return CFStringCreateWithCString(kCFAllocatorDefault, text.c_str(), kCFStringEncodingUTF8);
}

/// Joins with one "/" however many stand at the joint; an empty part adds nothing.
std::string AppendComponent(std::string directory, std::string_view component) {
    if (directory.empty()) return std::string(component);
    component.remove_prefix(std::min(component.find_first_not_of('/'), component.size()));
    directory.erase(directory.find_last_not_of('/') + 1);
    return component.empty() && !directory.empty() ? directory
                                                   : directory.append("/").append(component);
}

/// The extension of the last name in a relative path. A dot that starts the name, or ends it,
/// makes none.
std::string_view PathExtension(std::string_view item) {
    const std::string_view name = item.substr(item.rfind('/') + 1);
    const auto dot = name.rfind('.');
    if (dot == 0 || dot == std::string_view::npos) return {};
    return name.substr(dot + 1);
}

/// Creates a directory from a template that ends in "XXXXXX"; empty on failure.
CDiskPath CreateUniqueDirectory(std::string pathTemplate) {
    if (mkdtemp(pathTemplate.data()) == nullptr) return {};
    return CDiskPath(&pathTemplate);
}

std::string LocalDate() {
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    tzset();
    localtime_r(&now, &local);
    char text[32];
    return {text, std::strftime(text, sizeof text, "%Y_%m_%d", &local)};
}

/// True on success; a failure becomes one line in the log.
bool LogFailure(const char* operation, std::string const& path,
                FileSystem::Failure const& failure) {
    if (!failure) return true;
    FileSystem::Log(std::string(operation) + ": " + path + " - " + *failure);
    return false;
}

}  // namespace

CDiskPath::CDiskPath() = default;

CDiskPath::CDiskPath(std::string const* text) : path(*text) {}

CDiskPath::CDiskPath(const char* text) : path(text) {}

CDiskPath::CDiskPath(CFStringRef text) : path(TextOf(text)) {}

CDiskPath::CDiskPath(CDiskPath const& other) : path(other.path) {}

CDiskPath& CDiskPath::operator=(CDiskPath const& other) {
    path = other.path;
    iterator.reset();
    return *this;
}

CDiskPath::~CDiskPath() = default;

bool CDiskPath::operator==(CDiskPath const& other) const {
    return path == other.path;
}

bool CDiskPath::Empty() const {
    return path.empty();
}

void CDiskPath::Set(std::string const* text) {
    path = *text;
}

std::string CDiskPath::GetFullPathString() const {
    return path;
}

CFStringRef CDiskPath::GetFullPathCFString() const {
    return CreateCFString(path);
}

bool CDiskPath::Exists() const {
    const FileSystem::CAutoreleasePool pool;
    return FileSystem::GetAttributes(path).has_value();
}

int CDiskPath::DirDelete() const {
    return path.empty() ? 0 : std::remove(path.c_str());
}

CDiskPath CDiskPath::MakeTemporaryDirectory() {
    const FileSystem::CAutoreleasePool pool;
    return CreateUniqueDirectory(AppendComponent(FileSystem::TemporaryDirectory(), "TANroXXXXXX"));
}

CDiskPath CDiskPath::CreateUniqueSubDirectory(const char* subName) const {
    const FileSystem::CAutoreleasePool pool;
    const std::string dated = AppendComponent(AppendComponent(path, subName), LocalDate());
    if (!CDiskPath(&dated).Exists() && FileSystem::CreateDirectories(dated)) return {};
    return CreateUniqueDirectory(AppendComponent(dated, "Audio_XXXXXX"));
}

bool CDiskPath::FirstFile(CFileName* out, const char* extension) {
    iterator = std::make_unique<CDiskPathIterator>(path, extension);
    return NextFile(out);
}

bool CDiskPath::NextFile(CFileName* out) {
    TAVARIN_REQUIRE(iterator != nullptr);
    std::string item;
    while (iterator->enumerator.Next(&item)) {
        if (PathExtension(item) != iterator->extension) continue;
        *out = CFileName(this, &item);
        return true;
    }
    iterator.reset();
    return false;
}

void CDiskPath::CloseFileFind() {}

CFileName::CFileName() = default;

CFileName::CFileName(CDiskPath const* directory, std::string const* fileName)
    : name(*fileName), path(*directory) {}

CFileName::CFileName(CDiskPath const* directory, const char* fileName)
    : name(fileName), path(*directory) {}

CFileName::CFileName(CDiskPath const* directory, CFStringRef fileName)
    : name(TextOf(fileName)), path(*directory) {}

CFileName::CFileName(std::string const* fullPath) : name(*fullPath) {
    const auto slash = fullPath->rfind('/');
    if (slash == std::string::npos) return;
    path.path = fullPath->substr(0, slash);
    name = fullPath->substr(slash + 1);
}

CFileName::CFileName(const char* fullPath) {
    const std::string text = fullPath;
    *this = CFileName(&text);
}

CFileName::CFileName(CFStringRef fullPath) {
    const std::string text = TextOf(fullPath);
    *this = CFileName(&text);
}

bool CFileName::operator==(CFileName const& other) const {
    return path == other.path && name == other.name;
}

bool CFileName::Empty() const {
    return path.Empty() && name.empty();
}

CFStringRef CFileName::GetNameCFString() const {
    return CreateCFString(name);
}

std::string CFileName::GetFullPath() const {
    std::string full = path.path;
    if (!full.empty() && full.back() != '/') full += '/';
    return full += name;
}

std::string CFileName::GetFullPathString() const {
    return GetFullPath();
}

CFStringRef CFileName::GetFullPathCFString() const {
    return CreateCFString(GetFullPath());
}

std::string CFileName::GetURL() const {
    std::string full = path.path + '/' + name;
    if (full.front() == '/') full.erase(0, 1);
    std::erase(full, ':');
    std::replace(full.begin(), full.end(), '\\', '/');
    return "file://localhost/" + full;
}

std::string CFileName::GetExtension() const {
    return ::GetExtension(&name);
}

void CFileName::Clean() {
    constexpr std::string_view unwanted = "\"*:<>?\\|";
    std::replace_if(
        name.begin(), name.end(), [=](char byte) { return unwanted.find(byte) != unwanted.npos; },
        '_');
}

CFileName CFileName::MakeTemporaryFileName() {
    const FileSystem::CAutoreleasePool pool;
    std::string file = AppendComponent(FileSystem::TemporaryDirectory(), "TavarinPro.XXXXXX");
    const int descriptor = mkstemp(file.data());
    if (descriptor < 0) return {};
    close(descriptor);
    return CFileName(&file);
}

int CFileName::FileDelete() const {
    const std::string full = GetFullPath();
    if (!full.empty()) static_cast<void>(std::remove(full.c_str()));
    return 0;
}

bool CFileName::RenameFile(const char* newFullPath) const {
    const FileSystem::CAutoreleasePool pool;
    const std::string full = GetFullPath();
    return LogFailure("MoveFiles", full, FileSystem::Move(full, newFullPath));
}

void CFileName::SetCreatorType(unsigned long creator, unsigned long type) const {
    const FileSystem::CAutoreleasePool pool;
    const std::string full = GetFullPath();
    LogFailure("SetCreatorType", full, FileSystem::SetCreatorAndType(full, creator, type));
}

double CFileName::GetModificationDateTime() const {
    const FileSystem::CAutoreleasePool pool;
    const auto attributes = FileSystem::GetAttributes(GetFullPath());
    return attributes ? attributes->dModified : 0.0;
}

void CFileName::SetModificationDateTime(double seconds) const {
    const FileSystem::CAutoreleasePool pool;
    const std::string full = GetFullPath();
    LogFailure("SetModificationDateTime", full, FileSystem::SetModificationTime(full, seconds));
}

bool CFileName::Exists() const {
    const FileSystem::CAutoreleasePool pool;
    return FileSystem::GetAttributes(GetFullPath()).has_value();
}

std::uint64_t CFileName::GetSize() const {
    const auto attributes = FileSystem::GetAttributes(GetFullPath());
    return attributes ? attributes->nSize : 0;
}

bool CFileName::Busy() const {
    const auto attributes = FileSystem::GetAttributes(GetFullPath());
    return attributes && attributes->fBusy;
}

bool CFileName::CanFileBeOpened(std::string* message) const {
    try {
        CFileIO file;
        file.Open(this, false, false);
        file.Close();
        return true;
    } catch (CFileIOException const& exception) {
        const std::string full = GetFullPath();
        const FileSystem::Item item = FileSystem::GetItem(full);
        if (item == FileSystem::Item::Missing) {
            *message = "The file " + full + " does not exists.";
        } else if (item == FileSystem::Item::Directory) {
            *message = "Cannot open " + full + " is a directory.";
        } else if (Busy()) {
            *message = "The file " + full + " is busy.";
        } else {
            *message = "The file " + full + " exists but cannot be opened. Error: " +
                       std::to_string(exception.GetStatus());
        }
        return false;
    }
}

std::string AddExtension(const char* name, const char* extension) {
    std::string full = name;
    if (!full.empty() && full.back() != '.') full += '.';
    return full += *extension == '.' ? extension + 1 : extension;
}

std::string GetExtension(std::string const* path) {
    const auto dot = path->rfind('.');
    return dot == std::string::npos ? std::string() : path->substr(dot + 1);
}

std::string GetExtractName(std::string const* path) {
    const auto start = path->rfind('/') + 1;
    const auto dot = path->rfind('.');
    const bool extended = dot != std::string::npos && dot > 0 && dot >= start;
    return extended ? path->substr(start, dot - start) : path->substr(start);
}

std::string ExtractPath(std::string const* path) {
    const auto slash = path->rfind('/');
    return slash == std::string::npos ? std::string() : path->substr(0, slash);
}

char* CFStringToCString(CFStringRef text) {
    if (text == nullptr) return nullptr;
    const CFIndex size =
        CFStringGetMaximumSizeForEncoding(CFStringGetLength(text), kCFStringEncodingUTF8) + 1;
    auto buffer = std::make_unique<char[]>(static_cast<std::size_t>(size));
    if (!CFStringGetCString(text, buffer.get(), size, kCFStringEncodingUTF8)) return nullptr;
    return buffer.release();
}

std::string PathNeutralToPlatform(std::string const& path) {
    return path;
}

std::string PathPlatformToNeutral(std::string const& path) {
    return PathNeutralToPlatform(path);
}
