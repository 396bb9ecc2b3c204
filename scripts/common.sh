# shellcheck shell=sh disable=SC2034 # variables are for the scripts that source this
# Sourced by the scripts beside it: talking to the user, installing what is missing, building.

root=$(cd "$(dirname "$0")/.." && pwd)
jobs=$(getconf _NPROCESSORS_ONLN 2>/dev/null || echo 2)

say() { printf '\n== %s\n' "$*"; }
skip() { printf -- '-- left out: %s\n' "$*"; }

# Debian packages that the plain C++ parts, the reference host, the tools and their tests need.
required_packages="cmake g++ ninja-build pkg-config libboost-dev libgtest-dev"
host_packages="liblua5.4-dev libsndfile1-dev libsoxr-dev libcli11-dev nlohmann-json3-dev"

# AppKit, for the colour scheme and what draws with it. GNUstep's own configuration program runs make.
appkit_packages="make gobjc++ libgnustep-gui-dev libx11-dev gnustep-back0.29-cairo fonts-dejavu-core"
# The LV2 plug-ins, and the hosts that they are tested in.
plugin_packages="lv2-dev libxcb1-dev"
plugin_host_packages="lilv-utils sordi jalv jackd2 libjack-jackd2-dev"
# A display for the windows where there is none, and a pointer to click with.
display_packages="xvfb openbox xdotool"
# Workstations that scripts/try-workstations drives.
workstation_packages="ardour qtractor jalv libqt5x11extras5"
# What scripts/view-pictures takes besides: user defaults to set, and the screen to keep.
picture_packages="gnustep-base-runtime imagemagick"
# What a build for macOS takes, besides a compiler from npm, and what reads Objective-C++ as Apple's.
mac_packages="googletest llvm dpkg-dev clang"
# What searches the model of the word protocol, and compiles the searches.
model_packages="spin gcc libc6-dev"
# What the speed is compared with; measuring goes without what is missing.
bench_packages="python3 libbenchmark-dev libmsgpack-cxx-dev rapidjson-dev libprotobuf-dev protobuf-compiler
    libzmq3-dev libnng-dev libdbus-1-dev"

is_installed() { dpkg-query -W -f '${db:Status-Status}' "$1" 2>/dev/null | grep -qx installed; }

as_root() {
    if [ "$(id -u)" -eq 0 ]; then
        "$@"
    elif command -v sudo >/dev/null 2>&1; then
        sudo "$@"
    else
        return 1
    fi
}

# install_packages NAME...: installs those that are missing; asks for root only if there are any.
install_packages() {
    missing=""
    for package in "$@"; do
        is_installed "$package" || missing="$missing $package"
    done
    [ -z "$missing" ] && return 0
    if ! command -v apt-get >/dev/null 2>&1; then
        skip "installing$missing (this machine has no apt-get; install them by hand)"
        return 1
    fi
    say "Installing$missing"
    # shellcheck disable=SC2086 # the list is meant to be split
    if as_root env DEBIAN_FRONTEND=noninteractive apt-get update -qq &&
        as_root env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq \
            --no-install-recommends $missing >/dev/null; then
        return 0
    fi
    skip "installing$missing (no permission, or no such package here)"
    return 1
}

# build PRESET [TARGET...]: configures and builds below build/PRESET.
build() {
    preset=$1
    shift
    say "Configuring ($preset)"
    log="$root/build/configure-$preset.log"
    mkdir -p "$root/build"
    if ! cmake --preset "$preset" -S "$root" >"$log" 2>&1; then
        cat "$log"
        return 1
    fi
    grep '^-- left out' "$log" || true
    say "Building ($preset)"
    cmake --build "$root/build/$preset" --parallel "$jobs" ${1:+--target "$@"}
}
