#!/bin/sh
# The programs and the plugin have what compiler and linker can do against errors that an attacker would use.
#
#   hardening.sh READELF FILE...
set -eu
readelf=$1
shift

failed=0
wrong() {
    echo "$file: $*" >&2
    failed=1
}

checked_calls=
for file in "$@"; do
    "$readelf" -hW "$file" | grep -q 'Type: *DYN' || wrong 'is at one address always (no PIE)'
    "$readelf" -lW "$file" | grep -q GNU_RELRO || wrong 'has no read-only relocations'
    "$readelf" -lW "$file" | grep 'GNU_STACK' | grep -qv 'RWE' || wrong 'has a stack that can be run'
    "$readelf" -dW "$file" | grep -qE 'BIND_NOW|FLAGS_1.*NOW' || wrong 'leaves its tables open (no -z now)'
    symbols=$("$readelf" --dyn-syms -W "$file")
    echo "$symbols" | grep -qE '__stack_chk_(fail|guard)' || wrong 'has no stack protector'
    checked_calls="$checked_calls $(echo "$symbols" | grep -oE '__[a-z]+_chk\b' | tr '\n' ' ')"
done
# Which of them calls a function that there is a checked form of, is its own matter.
file=$*
echo "$checked_calls" | grep -q '__snprintf_chk' || wrong 'no checked calls (no fortify)'
exit $failed
