#!/bin/sh
# The qmake project builds the plugin from the same sources as CMake does.
#
#   qmake_project.sh ROOT BUILD QMAKE      BUILD contains CMake's compile_commands.json
set -eu
root=$1
build=$2
qmake=$3
project=$root/drivers/ab_micro800_ethernet/ab_micro800_ethernet.pro

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
trap 'exit 130' HUP INT TERM
cd "$work"

# sources: the product's files among the paths below the tree on standard input.
sources() { grep -E '^(runtime|common|eip|drivers)/[a-z0-9_/]+\.cpp$' | sort -u; }

sed -n 's/^ *"file": "\(.*\)".*/\1/p' "$build/compile_commands.json" |
    awk -v root="$root/" 'index($0, root) == 1 { print substr($0, length(root) + 1) }' | sources >cmake.txt
# shellcheck disable=SC2016
sed -n 's,^ *$$ROOT/\([^ ]*\.cpp\).*,\1,p' "$project" | sources >qmake.txt
[ -s cmake.txt ] || { echo 'CMake compiles no product file' >&2; exit 1; }
diff cmake.txt qmake.txt || { echo 'the qmake project and CMake have different sources (< CMake, > qmake)' >&2; exit 1; }

QT_SELECT=5 "$qmake" "$project" >/dev/null
make -j "$(getconf _NPROCESSORS_ONLN)" >make.log 2>&1 || { cat make.log >&2; exit 1; }
"$root/scripts/check-plugin" libab_micro800_ethernet.so
