#!/bin/sh
# The Debian package, unpacked into an empty root, reads a tag there with what it brought along.
#
#   deb.sh SOURCE BUILD CPACK
set -eu
source=$1
build=$2
cpack=$3

work=$(mktemp -d)
simulator=
stop() {
    [ -z "$simulator" ] || kill "$simulator" 2>/dev/null || :
    rm -rf "$work"
}
trap stop EXIT
trap 'exit 130' HUP INT TERM
fail() { echo "$*" >&2; exit 1; }

# Packed by somebody whose files are nobody else's business.
(umask 077 && "$cpack" --config "$build/CPackConfig.cmake" -B "$work/cpack") >"$work/cpack.log" 2>&1 ||
    { cat "$work/cpack.log" >&2; exit 1; }
package=$(echo "$work"/cpack/micro800_*.deb)
client=$(echo "$work"/cpack/libmicro800-cip-dev_*.deb)
[ "$(find "$work/cpack" -maxdepth 1 -name '*.deb' | wc -l)" = 2 ] || fail 'not two packages'
root=$work/root
dpkg-deb -x "$package" "$root"
dpkg-deb -I "$package" control >"$work/control"
cat "$work/control"

# Its contents, no more and no less, apart from the documents.
find "$root" -type f -printf '%P\n' | grep -v '^usr/share/doc/' | sort >"$work/files"
lib=$(sed -n 's,/libab_micro800_ethernet\.so$,,p' "$work/files")
sort >"$work/expected" <<LIST
usr/bin/micro800
usr/bin/micro800-sim
$lib/libab_micro800_ethernet.so
usr/share/bash-completion/completions/micro800
usr/share/bash-completion/completions/micro800-sim
usr/share/man/man1/micro800-check.1.gz
usr/share/man/man1/micro800-discover.1.gz
usr/share/man/man1/micro800-doctor.1.gz
usr/share/man/man1/micro800-identify.1.gz
usr/share/man/man1/micro800-info.1.gz
usr/share/man/man1/micro800-plan.1.gz
usr/share/man/man1/micro800-project.1.gz
usr/share/man/man1/micro800-read.1.gz
usr/share/man/man1/micro800-record.1.gz
usr/share/man/man1/micro800-restore.1.gz
usr/share/man/man1/micro800-save.1.gz
usr/share/man/man1/micro800-serve.1.gz
usr/share/man/man1/micro800-sim.1.gz
usr/share/man/man1/micro800-tags.1.gz
usr/share/man/man1/micro800-watch.1.gz
usr/share/man/man1/micro800-write.1.gz
usr/share/man/man1/micro800.1.gz
LIST
diff "$work/expected" "$work/files" || fail 'files of the package: < expected, > found'
for document in README.md CONTRIBUTING.md SECURITY.md CHANGELOG.md changelog.gz copyright apps/simulator/README.md docs/commissioning.md docs/troubleshooting.md docs/panel.md; do
    [ -s "$root/usr/share/doc/micro800/$document" ] || fail "no $document in the package"
done
for needed in libqt5core5a libqt5sql5 libqt5network5 libqt5sql5-sqlite libmicrohttpd12 libc6; do
    grep -q "^Depends:.*$needed" "$work/control" || fail "the package does not depend on $needed"
done
grep -q '^Package: micro800$' "$work/control" || fail 'the package has another name'
case $lib in
    usr/lib/micro800 | usr/lib/*-linux-gnu*/micro800) ;;
    *) fail "the plugin is in $lib" ;;
esac

# What Debian asks of any package. A folder of the building machine in a file would be looked into, or be
# shown to somebody, on another.
! dpkg-deb --ctrl-tarfile "$package" | tar -t | grep -E '(pre|post)(inst|rm)' || fail 'it runs scripts when it is installed'
dpkg-deb -c "$package" | awk '
    { kind = substr($1, 1, 1); program = $6 ~ /^\.\/usr\/bin\// }
    $2 != "root/root" { print "owner:", $0; bad = 1 }
    kind == "d" && $1 != "drwxr-xr-x" { print "mode:", $0; bad = 1 }
    kind != "d" && $1 != (program && $6 !~ /\/$/ ? "-rwxr-xr-x" : "-rw-r--r--") { print "mode:", $0; bad = 1 }
    END { exit bad }' || fail 'owners or modes'
for binary in usr/bin/micro800 usr/bin/micro800-sim "$lib/libab_micro800_ethernet.so"; do
    ! readelf -dW "$root/$binary" | grep -E 'RPATH|RUNPATH' || fail "$binary looks for libraries in places of its own"
    ! readelf -SW "$root/$binary" | grep -E '\.debug_|\.symtab' || fail "$binary is not stripped"
    ! grep -aqF -e "$build" -e "$source" "$root/$binary" || fail "$binary names folders of the building machine"
done

# The client library: tests/packaging/client_library.sh uses it.
dpkg-deb -x "$client" "$work/client"
for file in libmicro800-cip.a micro800-cip.pc micro800-cip-config.cmake logix_services.h read_tag.cpp; do
    [ -n "$(find "$work/client" -name "$file" -size +0)" ] || fail "no $file in the package of the client library"
done
! dpkg-deb --ctrl-tarfile "$client" | tar -t | grep -E '(pre|post)(inst|rm)' || fail 'the client library runs scripts when it is installed'
! dpkg-deb -c "$client" | awk '{ print $1, $2 }' | grep -vE '^(drwxr-xr-x|-rw-r--r--) root/root$' ||
    fail 'owners or modes of the client library'

[ "$(dpkg-deb -f "$package" Version)" = "$(dpkg-parsechangelog -l "$source/packaging/deb/changelog" -S Version)" ] ||
    fail 'the version of the package is not that of packaging/deb/changelog'
# The address of the maintainers is to be set by the distributor of the package.
command -v lintian >/dev/null || fail 'lintian is not installed'
lintian --no-cfg --fail-on none "$package" "$client" >"$work/lintian" 2>"$work/lintian.log" || fail 'lintian failed'
! grep -vE '^N:|bogus-mail-host' "$work/lintian" || fail 'what lintian says about the package'

# A read, with the installed programs and the installed plugin. HOME and the build are out of reach.
unset MICRO800_PLUGIN LD_LIBRARY_PATH
cd "$work"
"$root/usr/bin/micro800-sim" --port 0 --tag COUNTER:DINT=42 --tag 'LEVEL:INT[0..2]=7,-8,9' >port &
simulator=$!
tries=0
while [ ! -s port ]; do
    tries=$((tries + 1))
    if [ $tries -gt 200 ] || ! kill -0 "$simulator"; then
        fail 'the installed simulator did not start'
    fi
    sleep 0.05
done
said=$("$root/usr/bin/micro800" read --host 127.0.0.1 --port "$(head -n 1 port)" DINT0:COUNTER 'INT0:LEVEL[1]')
echo "$said"
echo "$said" | grep -q 'COUNTER.*\b42\b' || fail 'COUNTER was not read as 42'
echo "$said" | grep -q 'LEVEL\[1\].*-8\b' || fail 'LEVEL[1] was not read as -8'

"$root/usr/bin/micro800" identify --host 127.0.0.1 --port "$(head -n 1 port)" >identity || fail 'identify failed'
grep -q '2080-LC50-48QWB' identity || { cat identity >&2; fail 'identify does not name the product'; }

# The plugin that it took is the installed one.
mv "$root/$lib/libab_micro800_ethernet.so" elsewhere.so
! "$root/usr/bin/micro800" info >said 2>&1 || fail 'it found a plugin outside the package'
mv elsewhere.so "$root/$lib/libab_micro800_ethernet.so"

# Manual pages: the name line that indexes are made of, and every option of --help.
pages=$root/usr/share/man/man1
gzip -d "$pages"/*.gz
for page in "$pages"/*.1; do
    name=$(basename "$page" .1)
    grep -A 1 '^\.SH "NAME"' "$page" | sed 's/\\//g' | grep -q "^$name - ." || fail "$name.1 has no name line"
done
"$root/usr/bin/micro800" read --help | grep -oE '^ +--[a-z-]+' | tr -d ' ' >options
[ -s options ] || fail 'micro800 read --help shows no options'
while read -r option; do
    sed 's/\\-/-/g' "$pages/micro800-read.1" | grep -qe "$option" || fail "micro800-read.1 lacks $option"
done <options

# Completion, as the shell would ask.
if command -v bash >/dev/null; then
    PATH=$root/usr/bin:$PATH bash -euc '
        . "$0/usr/share/bash-completion/completions/micro800"
        complete_words() { COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1)); _micro800; echo "${COMPREPLY[*]}"; }
        [ "$(complete_words micro800 wr)" = write ]
        [ "$(complete_words micro800 id)" = identify ]
        [ "$(complete_words micro800 identify --time)" = --timeout ]
        [ -z "$(complete_words micro800 identify UDI)" ]
        [ "$(complete_words micro800 read --hos)" = --host ]
        [ "$(complete_words micro800 read UDI)" = UDINT0: ]
        [ "$(complete_words micro800 disc)" = discover ]
        [ "$(complete_words micro800 discover --bro)" = --broadcast ]
        [[ " $(complete_words micro800 discover --interface l) " == *" lo "* ]]
        [ "$(complete_words micro800 tags --cs)" = --csv ]
        [ "$(complete_words micro800 check UDI)" = UDINT0: ]
        [ "$(complete_words micro800 check --so)" = --sort ]
        [ "$(complete_words micro800 doctor --rea)" = --reads ]
        [ "$(complete_words micro800 res)" = restore ]
        [ "$(complete_words micro800 pl)" = plan ]
        [ "$(complete_words micro800 plan --read)" = --read-ms ]
        [ "$(complete_words micro800 save REA)" = REAL0: ]
        [ "$(complete_words micro800 save --ke)" = --keep-going ]
        [ "$(complete_words micro800 serve UDI)" = UDINT0: ]
        [ "$(complete_words micro800 serve --allow)" = --allow-write ]
        [ "$(complete_words micro800 save --outp)" = --output ]
        [ "$(complete_words micro800-sim --ramp-)" = --ramp-tag ]
    ' "$root" || fail 'completion'
fi
