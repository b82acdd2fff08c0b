#!/bin/sh
# The installed client library builds a program outside this tree, with CMake and with pkg-config; both programs read
# a tag. Each installed header compiles alone.
#
#   client_library.sh BUILD CMAKE CXX
set -eu
build=$1
cmake=$2
cxx=$3

work=$(mktemp -d)
simulator=
stop() {
    [ -z "$simulator" ] || kill "$simulator" 2>/dev/null || :
    rm -rf "$work"
}
trap stop EXIT
trap 'exit 130' HUP INT TERM
fail() { echo "$*" >&2; exit 1; }

DESTDIR=$work/root "$cmake" --install "$build" --prefix /usr --component client >"$work/log" ||
    { cat "$work/log" >&2; exit 1; }
# A package must work in another place than the one it was installed to.
mv "$work/root/usr" "$work/moved"
! grep -rlF -e "$build" -e "$work/root" "$work/moved" || fail 'an installed file names a folder of the build'
mv "$work"/moved/share/doc/libmicro800-cip-dev/examples "$work/outside"
cd "$work/outside"

built=no
"$cmake" -S . -B cmake -DCMAKE_CXX_COMPILER="$cxx" -DCMAKE_PREFIX_PATH="$work/moved" >"$work/log" 2>&1 &&
    "$cmake" --build cmake >>"$work/log" 2>&1 && built=yes
[ "$built" = yes ] || { cat "$work/log" >&2; fail 'find_package'; }
for wrong in 0.9 2.0; do
    sed "s/micro800-cip 1.0/micro800-cip $wrong/" CMakeLists.txt >"$work/changed"
    mkdir -p "$work/wrong"
    cp read_tag.cpp "$work/wrong"
    cp "$work/changed" "$work/wrong/CMakeLists.txt"
    ! "$cmake" -S "$work/wrong" -B "$work/wrong/build" -DCMAKE_CXX_COMPILER="$cxx" \
        -DCMAKE_PREFIX_PATH="$work/moved" >/dev/null 2>&1 || fail "version $wrong is accepted"
done

PKG_CONFIG_PATH=$(dirname "$(find "$work/moved" -name micro800-cip.pc)")
export PKG_CONFIG_PATH
flags=$(pkg-config --cflags micro800-cip)
libraries=$(pkg-config --libs micro800-cip)
# shellcheck disable=SC2086  # options
"$cxx" -std=c++17 -fPIC -Wall -Werror -o with-pkg-config read_tag.cpp $flags $libraries || fail 'pkg-config'
# shellcheck disable=SC2086
(cd "$work/moved/include/micro800" && find . -name '*.h' | sort | while read -r header; do
    echo "#include \"$header\""
    "$cxx" -std=c++17 -fPIC -fsyntax-only -x c++-header $flags "$header" || exit 1
done) >"$work/headers" || fail 'a header does not compile alone'
grep -q logix_services "$work/headers" || fail 'no headers'

"$build/bin/micro800-sim" --port 0 --tag COUNTER:DINT=42 >"$work/port" &
simulator=$!
tries=0
while [ ! -s "$work/port" ]; do
    tries=$((tries + 1))
    if [ $tries -gt 400 ] || ! kill -0 "$simulator"; then
        fail 'the simulator did not start'
    fi
    sleep 0.05
done
for program in cmake/read_tag ./with-pkg-config; do
    said=$("$program" 127.0.0.1 "$(head -n 1 "$work/port")" COUNTER)
    [ "$said" = 'COUNTER = 42' ] || fail "$program: $said"
done
