#!/bin/sh
# The qmake project builds the plugin from the same sources as CMake does.
#
#   qmake_project.sh ROOT BUILD QMAKE      BUILD holds CMake's compile_commands.json
set -eu
root=$1
build=$2
qmake=$3

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
QT_SELECT=5 "$qmake" "$root/drivers/ab_micro800_ethernet/ab_micro800_ethernet.pro" >/dev/null

# sources FOLDER: the product's files among the paths on standard input.
sources() { grep -oE "$root/(runtime|common|eip|drivers)/[a-z0-9_/]+\.cpp" | sort -u; }

sed -n 's/^ *"file": "\(.*\)".*/\1/p' "$build/compile_commands.json" | sources >cmake.txt
# qmake names sources relative to here when both are below one folder, such as /tmp.
make -n 2>/dev/null | grep -oE '[^ "]+\.cpp' | xargs realpath -ms -- | sources >qmake.txt
[ -s cmake.txt ] || { echo 'CMake compiles no product file' >&2; exit 1; }
diff cmake.txt qmake.txt || { echo 'the qmake project and CMake have different sources (< CMake, > qmake)' >&2; exit 1; }

make -j "$(getconf _NPROCESSORS_ONLN)" >make.log 2>&1 || { cat make.log >&2; exit 1; }
"$root/scripts/check-plugin" libab_micro800_ethernet.so
