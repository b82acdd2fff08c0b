#!/bin/sh
# scripts/check-plugin refuses what a panel's loader would: a plugin for Qt 4 that asks for a newer C library than the
# panel has, or has no symbol table that the panel's can read. The plugins are empty ones, linked against empty
# libraries.
#
#   check_plugin.sh ROOT COMPILER
set -eu
root=$1
compiler=$2

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
trap 'exit 130' INT TERM HUP
cd "$work"

cat >plugin.cpp <<'PLUGIN'
extern "C" {
#define ENTRY __attribute__((visibility("default")))
void ofQt();
void ofLibc();
extern const char verification[];
const char verification[] =
    "pattern=QT_PLUGIN_VERIFICATION_DATA\n"
    "version=4.7.3\n"
    "debug=false\n"
    "buildkey=arm linux gnueabi-g++ full-config";
ENTRY void CreateDriver() { ofQt(); }
ENTRY void qt_plugin_instance() { ofLibc(); }
ENTRY const char* qt_plugin_query_verification_data() { return verification; }
#ifdef QT5
ENTRY void qt_plugin_query_metadata() {}
#endif
}
PLUGIN

# library NAME FUNCTION VERSION
library() {
    echo "extern \"C\" void $2() {}" >library.cpp
    echo "$3 { *; };" >versions
    "$compiler" -shared -fPIC -nostdlib library.cpp -o "$1" -Wl,-soname,"$1" -Wl,--version-script=versions
}
# plugin VERSION QT [OPTION...]: plugin.so, which asks for that version of the C library.
plugin() {
    library libc.so.6 ofLibc "GLIBC_$1"
    library "$2" ofQt Qt
    shift
    qt=$1
    shift
    "$compiler" -O1 -shared -fPIC -fvisibility=hidden -nostdlib -Wl,--hash-style=both "$@" plugin.cpp "./$qt" \
        ./libc.so.6 -o plugin.so
}
check() { "$root/scripts/check-plugin" "$@" plugin.so >said 2>&1; }
fail() { cat said >&2; echo "$*" >&2; exit 1; }
refused() { ! check "$@" || fail "taken: $*"; }

plugin 2.4 libQtCore.so.4
check || fail 'a plugin for GLIBC_2.4'
check --glibc 2.4 || fail 'a plugin for GLIBC_2.4 on a panel with that'

plugin 2.8 libQtCore.so.4
check || fail 'a plugin for GLIBC_2.8'
refused --glibc 2.4

plugin 2.9 libQtCore.so.4
refused
grep -q 'WRONG: it asks for GLIBC_2.9' said || fail 'no word about GLIBC_2.9'
check --glibc 2.9 || fail 'a plugin for GLIBC_2.9 on a panel with that'
check --glibc 2.17 || fail 'a plugin for GLIBC_2.9 on a panel with 2.17'

# What comes out when the SDK's C library was forgotten.
plugin 2.34 libQtCore.so.4
refused
refused --glibc 2.9
check --glibc 2.34 || fail 'a plugin for GLIBC_2.34 on a panel with that'

# Qt 5 is of no one time.
plugin 2.34 libQt5Core.so.5 -DQT5
check || fail 'a plugin for Qt 5'
refused --glibc 2.9

plugin 2.4 libQtCore.so.4 -Wl,--hash-style=gnu
refused
grep -q 'no symbol table' said || fail 'no word about the symbol table'
