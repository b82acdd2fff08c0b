#!/bin/sh
# What Debian's shellcheck says about the tree's shell scripts: nothing.
#
#   shell_scripts.sh ROOT
set -eu
unset CDPATH
cd "$1"

command -v shellcheck >/dev/null || { echo 'shellcheck is not installed' >&2; exit 1; }
# The sample, which shellcheck must find fault with, and only with that.
# shellcheck disable=SC2016
said=$(printf '#!/bin/sh\nrm $1\n' | shellcheck -f gcc -) && { echo 'self-test: a wrong script was taken' >&2; exit 1; }
[ "$(echo "$said" | grep -c 'SC[0-9]')" = 1 ] || { echo "self-test: $said" >&2; exit 1; }

# Scripts are known by their first line, or by the shell that they name for shellcheck.
scripts=$(find . -path './build*' -prune -o -path ./.git -prune -o -type f -size -100k -print0 |
    xargs -0 grep -lE '^(#!/bin/(ba)?sh|# shellcheck shell=)' | sort)
for expected in ./.ci/run ./scripts/build ./scripts/lib.sh ./packaging/completion/micro800 ./tests/lint/house_rules.sh; do
    echo "$scripts" | grep -qxF "$expected" || { echo "self-test: $expected was not looked at" >&2; exit 1; }
done
echo "$scripts" | tr '\n' '\0' | xargs -0 shellcheck -f gcc
echo "$(echo "$scripts" | wc -l) scripts"
