# Shared by the scripts here; to be sourced.

say() { printf '\n== %s\n' "$*"; }

# Installs the Debian packages named that are not there yet.
need() {
    local missing=() package
    for package in "$@"; do
        dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'install ok installed' || missing+=("$package")
    done
    if [ ${#missing[@]} -eq 0 ]; then
        return
    fi
    say "Installing ${missing[*]}"
    local as_root=()
    if [ "$(id -u)" -ne 0 ]; then
        as_root=(sudo)
    fi
    "${as_root[@]}" apt-get update -qq
    "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${missing[@]}" \
        >/dev/null
}

# Configures and builds one preset: build PRESET [TARGET...], with further configure options in CONFIGURE_OPTIONS.
build() {
    local preset=$1
    shift
    say "Building ($preset)"
    cmake --preset "$preset" "${CONFIGURE_OPTIONS[@]}" >/dev/null
    cmake --build --preset "$preset" ${1:+--target "$@"} | tail -n 1
}

BUILD_PACKAGES=(cmake ninja-build g++ libxerces-c-dev libexpat1-dev libedit-dev libre2-dev nlohmann-json3-dev
    libcpp-httplib-dev pkg-config)
PACKAGE_PACKAGES=(dpkg-dev file help2man lintian)
TEST_PACKAGES=(libgtest-dev libxml2-utils python3 curl "${PACKAGE_PACKAGES[@]}" bash-completion)
BROWSER_PACKAGES=(chromium chromium-driver python3-selenium)
CONFIGURE_OPTIONS=()
