# Shared by the scripts of this folder: where the tree is, what has to be installed, and how a script ends.
# shellcheck shell=sh
# shellcheck disable=SC2034  # what others use

unset CDPATH  # cd would look elsewhere first, and say where
root=$(cd "$(dirname "$0")/.." && pwd)

# Qt reads the names of files by the locale; that of a bare system has no letters beyond ASCII.
case ${LC_ALL:-${LC_CTYPE:-${LANG:-}}} in
    *[Uu][Tt][Ff]-8* | *[Uu][Tt][Ff]8*) ;;
    *) export LC_ALL=C.UTF-8 ;;
esac

say() {
    if [ -t 2 ]; then printf '\033[1m== %s\033[0m\n' "$*" >&2; else printf '== %s\n' "$*" >&2; fi
}

# at_end FUNCTION: calls it when the script ends, also by a signal.
at_end() {
    # shellcheck disable=SC2064  # the function that is named now
    trap "$1" EXIT
    trap 'exit 129' HUP
    trap 'exit 130' INT
    trap 'exit 143' TERM
}

# as_root COMMAND...: by sudo where that is needed; false when neither root nor sudo is there.
as_root() {
    if [ "$(id -u)" = 0 ]; then
        "$@"
    else
        command -v sudo >/dev/null && sudo "$@"
    fi
}

# install PACKAGE...: installs the Debian packages that are missing.
install() {
    missing=
    for package in "$@"; do
        dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'ok installed' ||
            missing="$missing $package"
    done
    [ -n "$missing" ] || return 0
    say "installing$missing"
    # sudo passes no variables on, so env sets it after sudo.
    # shellcheck disable=SC2086
    if as_root apt-get -qq update &&
        as_root env DEBIAN_FRONTEND=noninteractive apt-get -qq -y --no-install-recommends install $missing >/dev/null; then
        return 0
    fi
    printf '%s: cannot install the Debian packages that are missing. Run this as root, then try again:\n\n    %s\n\n' \
        "$0" "apt-get update && apt-get install --no-install-recommends$missing" >&2
    exit 1
}

# own_folder FOLDER: ends the script when the build folder was made for a tree in another place. CMake cannot go
# on in it.
own_folder() {
    [ -f "$root/$1/CMakeCache.txt" ] || return 0
    made_for=$(sed -n 's/^CMAKE_HOME_DIRECTORY:INTERNAL=//p' "$root/$1/CMakeCache.txt")
    [ "$(cd "$made_for" 2>/dev/null && pwd -P)" != "$(cd "$root" && pwd -P)" ] || return 0
    printf '%s: %s was made for the tree in %s, and this one is in %s. Remove it, then try again:\n\n    %s\n\n' \
        "$0" "$1" "$made_for" "$root" "rm -r '$root/$1'" >&2
    exit 1
}

build_packages='g++ cmake ninja-build qtbase5-dev libqt5sql5-sqlite libncurses-dev libmicrohttpd-dev
    libjs-dygraphs'
test_packages='libgtest-dev libgmock-dev make pkg-config dpkg-dev file clang-format-14 shellcheck lintian tshark
    chromium chromium-driver valgrind'
sanitizer_packages='clang-14 libclang-rt-14-dev llvm'
bench_packages='libbenchmark-dev valgrind'
coverage_packages='gcovr'
soak_packages='gnuplot-nox'
