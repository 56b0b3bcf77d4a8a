# Shared by the scripts here; each sources it first. It answers --help with the comment at the script's head, and goes to the
# root of the tree.
case "${1-}" in
    -h | --help)
        awk 'NR > 1 { if (!/^#/) exit; sub(/^# ?/, ""); print }' "$0"
        exit 0
        ;;
esac
cd "$(dirname "${BASH_SOURCE[0]}")/.."

say() { printf '\n== %s\n' "$*"; }

# Ends with status 2 and the reason.
wrong_usage() {
    printf '%s: %s (see --help)\n' "${0##*/}" "$*" >&2
    exit 2
}

# Installs the Debian packages named that are not there yet.
need() {
    if ! command -v dpkg-query >/dev/null; then
        say "This is not a Debian system. The packages needed are called on Debian: $*"
        return
    fi
    local missing=() package
    for package in "$@"; do
        dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'install ok installed' || missing+=("$package")
    done
    if [ ${#missing[@]} -eq 0 ]; then
        return
    fi
    local as_root=()
    if [ "$(id -u)" -ne 0 ]; then
        # Without a terminal nobody can type a password.
        if ! command -v sudo >/dev/null || { [ ! -t 0 ] && ! sudo -n true 2>/dev/null; }; then
            printf '\nPackages are missing, and only an administrator can install them. Ask for:\n\n    apt-get install %s\n\n' \
                "${missing[*]}" >&2
            exit 1
        fi
        as_root=(sudo)
    fi
    say "Installing ${missing[*]}"
    "${as_root[@]}" apt-get update -qq
    "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${missing[@]}" \
        >/dev/null
}

# Unpacks Debian packages, and what they need and the system lacks, below build/servers/root; nothing is installed or started.
unpack() {
    local place=$PWD/build/servers archive
    say "Unpacking in build/servers: $*"
    mkdir -p "$place/archives/partial" "$place/root"
    quietly apt-get install -y --download-only --no-install-recommends -o Debug::NoLocking=1 \
        -o Dir::Cache::archives="$place/archives/" "$@"
    for archive in "$place"/archives/*.deb; do
        if [ ! -e "$archive.unpacked" ]; then
            dpkg-deb --extract "$archive" "$place/root"
            touch "$archive.unpacked"
        fi
    done
}

# This release of Debian, by its code name.
release_here() { (. /etc/os-release && echo "$VERSION_CODENAME"); }

# What another system needs to install packages from where this one does: the lines for a release, in the form of sources.list,
# and how they are fetched.
apt_lines() {
    local format="\$(REPO_URI) \$(CODENAME)" here lines
    here=$(release_here)
    [ -n "$(apt-get indextargets --format "$format" "Created-By: Packages")" ] || quietly apt-get update >&2
    lines=$(apt-get indextargets --format "$format" "Created-By: Packages" | awk '!seen[$0]++' |
        sed -nE "s/^(\S+) $here(|-updates|-security)$/deb \1 $1\2 main/p")
    [ -n "$lines" ] || wrong_usage "apt of this system has no mirror of Debian"
    printf '%s\n' "$lines"
}
# The first of them: a release, this one when none is named, as it came out, which mirrors have of every processor.
apt_release_line() { apt_lines "${1-$(release_here)}" | sed -n 1p; }
apt_settings() { apt-config dump | grep -E '^Acquire::(https?|Check-|Retries)' || true; }

# Lays out Debian packages of another processor, with all that they need, in a directory of their own: unpacked and not installed,
# which takes nobody's rights and no emulator. lay_out PROCESSOR DIRECTORY LINES PACKAGE...; LINES are in the form of sources.list.
# What the packages tell dpkg-shlibdeps of their libraries is gathered in DEBIAN there.
lay_out() {
    local processor=$1 root=$2 lines=$3 include link
    include=$(printf ',%s' "${@:4}")
    rm -rf "$root" "$root.new"
    mkdir -p "$root.new"
    apt_settings >"$root.apt"
    # Where libraries lie is one place under two names.
    # shellcheck disable=SC2016  # expanded by the hooks
    quietly mmdebstrap --mode=chrootless --variant=extract --architectures="$processor" --include="${include#,}" \
        --aptopt="$root.apt" --setup-hook='mkdir -p "$1/usr/lib" && ln -s usr/lib "$1/lib"' \
        --extract-hook='mkdir "$1/DEBIAN"; for package in "$1"/var/cache/apt/archives/*.deb; do for file in symbols shlibs; do
            dpkg-deb --info "$package" $file 2>/dev/null >>"$1/DEBIAN/$file" || true; done; done' \
        "$(release_here)" "$root.new" - <<<"$lines" || return 1
    rm -rf "$root.apt" "$root.new"/{dev,tmp,var}
    # Links from the root lead into this system.
    find "$root.new" -type l -lname '/*' -print0 | while IFS= read -r -d '' link; do
        ln -sfnr "$root.new$(readlink "$link")" "$link"
    done
    mv "$root.new" "$root"
}

# Runs a command and shows what it printed only when it fails.
quietly() {
    local output
    if ! output=$("$@" 2>&1); then
        printf '%s\n' "$output" >&2
        return 1
    fi
}

# Configures and builds one preset: build PRESET EFFORT [TARGET...], with further configure options in CONFIGURE_OPTIONS.
# EFFORT says what the first build takes. STRICT, "strict-", takes warnings as errors in the presets in which users build.
build() {
    local preset=$1 effort=$2
    shift 2
    # After a build without tests, one with them is a first one.
    if [ -e "build/$preset/build.ninja" ] && { [[ ${CONFIGURE_OPTIONS[*]} != *TESTING=ON* ]] ||
        grep -q '^BUILD_TESTING:BOOL=ON' "build/$preset/CMakeCache.txt"; }; then
        effort="only what has changed"
    fi
    say "Building in build/$preset: $effort"
    case $preset in
        release | windows-*) quietly cmake --preset "${STRICT-}$preset" "${CONFIGURE_OPTIONS[@]}" ;;
        *) quietly cmake --preset "$preset" "${CONFIGURE_OPTIONS[@]}" ;;
    esac
    cmake --build --preset "$preset" ${1:+--target "$@"}
}

BUILD_PACKAGES=(cmake ninja-build g++ libexpat1-dev libedit-dev libre2-dev zlib1g-dev nlohmann-json3-dev
    libmicrohttpd-dev pkg-config)
PACKAGE_PACKAGES=(dpkg-dev file help2man lintian python3)
TEST_PACKAGES=(libgtest-dev libxml2-utils curl "${PACKAGE_PACKAGES[@]}" bash-completion)
BROWSER_PACKAGES=(chromium chromium-driver python3-selenium)
SERVER_PACKAGES=(prometheus prometheus-node-exporter rsyslog rsyslog-relp rsyslog-pgsql postgresql parallel gnuplot-nox
    openssh-server)
WINDOWS_PACKAGES=(libgtest-dev python3 dpkg-dev g++-mingw-w64-x86-64-posix g++-mingw-w64-i686-posix wine64 arch-test mmdebstrap
    debian-archive-keyring)
PROCESSOR_PACKAGES=(mmdebstrap debian-archive-keyring qemu-user g++-aarch64-linux-gnu g++-arm-linux-gnueabihf g++-i686-linux-gnu
    g++-s390x-linux-gnu)
SYSROOT_PACKAGES=(libc6-dev libstdc++6 libexpat1-dev libedit-dev libre2-dev zlib1g-dev nlohmann-json3-dev libmicrohttpd-dev libgtest-dev)
BENCH_PACKAGES=(libbenchmark-dev libspdlog-dev dpkg-dev strace)
FUZZ_PACKAGES=(clang libclang-rt-dev)
CONFIGURE_OPTIONS=()
