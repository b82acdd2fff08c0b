# Shared by the scripts of this folder: where the tree is, and what has to be installed.
# shellcheck shell=sh

root=$(cd "$(dirname "$0")/.." && pwd)

say() {
    if [ -t 2 ]; then printf '\033[1m== %s\033[0m\n' "$*" >&2; else printf '== %s\n' "$*" >&2; fi
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
    sudo=
    [ "$(id -u)" = 0 ] || sudo=sudo
    # shellcheck disable=SC2086
    $sudo apt-get -qq update && DEBIAN_FRONTEND=noninteractive \
        $sudo apt-get -qq -y --no-install-recommends install $missing >/dev/null
}

build_packages='g++ cmake ninja-build qtbase5-dev libqt5sql5-sqlite libncurses-dev'
test_packages='libgtest-dev libgmock-dev make dpkg-dev file'
sanitizer_packages='clang-14 libclang-rt-14-dev llvm'
bench_packages='libbenchmark-dev'
