# Reads what llvm-objdump --macho --private-headers says of programs and modules, and fails unless each is
# for the processor and the oldest macOS that are asked for, and linked with the system's library alone.
#
#   llvm-objdump --macho --private-headers FILE... | awk -f mach-o.awk \
#       -v files=<how many> -v processor=arm64 -v oldest=13.3

function demand(what, found, wanted) {
    if (found != wanted) {
        print file ": " what " is " (found == "" ? "not there" : found) ", not " wanted
        wrong++
    }
}

function judge() {
    if (file == "") return
    read++
    demand("the processor", tolower(cpu), processor)
    if (kind == "EXECUTE") programs++
    else demand("the kind of file", kind, "DYLIB")
    demand("the platform", platform, "macos")
    demand("the oldest macOS", minimum, oldest)
    demand("what it is linked with", libraries, "/usr/lib/libSystem.B.dylib")
}

/^[^ ].*:$/ {
    judge()
    file = substr($0, 1, length($0) - 1)
    cpu = kind = platform = minimum = libraries = ""
}
$1 ~ /^MH_MAGIC/ { cpu = $2; kind = $5 }
$1 == "cmd" { command = $2 }
command == "LC_BUILD_VERSION" && $1 == "platform" { platform = $2 }
command == "LC_BUILD_VERSION" && $1 == "minos" { minimum = $2 }
command ~ /^LC_(LOAD|LOAD_WEAK|REEXPORT|LAZY_LOAD)_DYLIB$/ && $1 == "name" {
    libraries = libraries (libraries == "" ? "" : " ") $2
}

END {
    judge()
    if (read != files) print read " of " files " files are programs or modules for macOS"
    if (read != files || wrong) exit 1
    print processor ": " programs " programs and " files - programs " module(s) for macOS " oldest \
        " and later, linked with the system's library alone"
}
