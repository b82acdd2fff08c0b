#!/bin/sh
# The scripts where things are not as at their author's: a tree whose path has a blank and an umlaut, a temporary
# folder with a blank, CDPATH set, no root and no sudo, a sudo that passes no variables on, a signal, a tree that was
# moved. What they would start are stand-ins that write down how they were called.
#
#   scripts.sh ROOT
set -eu
unset CDPATH TMPDIR

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
trap 'exit 130' HUP INT TERM

tree="$work/ein Pfad mit ä"
mkdir -p "$tree/build/bin" "$work/bin" "$work/empty/scripts" "$work/temporary files"
cp -R "$1/scripts" "$tree"
export TMPDIR="$work/temporary files"
export SAID="$work/said"

# The programs that the scripts may find, and no others: sudo is there or not as the case wants it.
for program in basename cat dirname env grep head kill ls mktemp rm sed seq sh sleep sort tr; do
    ln -s "$(command -v "$program")" "$work/bin/$program"
done
path=$work/bin
# stand_in FILE: the program on standard input.
stand_in() {
    { echo '#!/bin/sh'; cat; } >"$1"
    chmod +x "$1"
}
stand_in "$path/id" <<'P'
echo "${USER_ID:-0}"
P
stand_in "$path/dpkg-query" <<'P'
[ -z "${NOTHING_INSTALLED:-}" ] && echo 'install ok installed'
P
stand_in "$path/apt-get" <<'P'
echo "apt-get $* DEBIAN_FRONTEND=${DEBIAN_FRONTEND:-}" >>"$SAID"
P
stand_in "$path/cmake" <<'P'
echo "cmake in $PWD: $*, LC_ALL=${LC_ALL:-}" >>"$SAID"
[ -z "${SLOW:-}" ] || exec sleep 60
P

fail() {
    cat "$work/output" "$SAID" >&2
    echo "$*" >&2
    exit 1
}
# run NAME=VALUE... SCRIPT: starts it in the tree; what it and the stand-ins say is kept.
run() {
    : >"$SAID"
    (cd "$tree" && env PATH="$path" "$@") >"$work/output" 2>&1
}
said() { grep -qF -e "$1" "$SAID"; }
told() { grep -qF -e "$1" "$work/output"; }
nothing_left() { [ -z "$(ls -A "$TMPDIR")" ] || fail "left over: $(ls -A "$TMPDIR")"; }

run scripts/build || fail 'scripts/build'
said "cmake in $tree: --preset release" || fail 'cmake was not called in the tree'
nothing_left
run LC_ALL= LC_CTYPE= LANG=C scripts/build || fail 'scripts/build in the locale C'
said 'LC_ALL=C.UTF-8' || fail 'a locale in which Qt cannot read the path'
run LC_ALL= LC_CTYPE= LANG=de_DE.UTF-8 scripts/build || fail 'scripts/build in another locale'
! said 'LC_ALL=C' || fail 'the locale of the user was replaced'

run CDPATH="$work/empty" sh scripts/build || fail 'scripts/build with CDPATH'
said "cmake in $tree: --preset release" || fail 'CDPATH led somewhere else'

# Packages are missing.
! run NOTHING_INSTALLED=1 USER_ID=1000 scripts/build || fail 'went on without packages'
told 'Run this as root' || fail 'no word about root'
told 'apt-get install --no-install-recommends g++ cmake' || fail 'no command to run'
[ ! -s "$SAID" ] || fail 'apt-get was called without root'
stand_in "$path/sudo" <<'P'
exec env -i PATH="$PATH" SAID="$SAID" "$@"
P
run NOTHING_INSTALLED=1 USER_ID=1000 scripts/build || fail 'scripts/build with sudo'
grep -q 'apt-get.*install g++.*DEBIAN_FRONTEND=noninteractive' "$SAID" || fail 'sudo dropped DEBIAN_FRONTEND'
stand_in "$path/sudo" <<'P'
exit 1
P
! run NOTHING_INSTALLED=1 USER_ID=1000 scripts/build || fail 'went on without a password'
told 'Run this as root' || fail 'no word about root when sudo refuses'

# Another place.
echo "CMAKE_HOME_DIRECTORY:INTERNAL=$tree" >"$tree/build/CMakeCache.txt"
run scripts/build || fail 'a build folder of this tree was refused'
mkdir "$work/elsewhere"
for former in "$work/gone" "$work/elsewhere"; do
    echo "CMAKE_HOME_DIRECTORY:INTERNAL=$former" >"$tree/build/CMakeCache.txt"
    ! run scripts/build || fail 'a build folder of another tree was taken'
    told "build was made for the tree in $former" || fail 'no word about the move'
    told "rm -r '$tree/build'" || fail 'no command to run'
    [ ! -s "$SAID" ] || fail 'cmake was called all the same'
done
rm "$tree/build/CMakeCache.txt"

# The demonstration hands a folder below the temporary one on.
stand_in "$tree/build/bin/micro800-sim" <<'P'
echo 4711
exec sleep 60
P
stand_in "$tree/build/bin/micro800" <<'P'
for word; do echo "[$word]"; done >>"$SAID"
case $* in *NO_SUCH_TAG*) exit 1 ;; esac
P
run scripts/demo || fail 'scripts/demo'
said '[DINT0:SETPOINT]' || fail 'the demonstration did not write'
grep -qxE '\[.*/temporary files/[^/]*/app\]' "$SAID" || fail 'the project of the demonstration is in pieces'
nothing_left

# So does the live page, which hands its own arguments on and ends both programs.
run scripts/live --listen 127.0.0.1:0 || fail 'scripts/live'
said '[serve]' || fail 'no page'
said '[4711]' || fail 'the page does not know the simulator'
said '[--listen]' || fail 'the arguments were not handed on'
nothing_left

# A signal reaches the whole group, as from a terminal.
for signal in HUP INT TERM; do
    : >"$SAID"
    # shellcheck disable=SC2016
    (cd "$tree" && SLOW=1 setsid --wait sh -c 'echo $$ >"$0" && exec "$@"' "$work/group" \
        env --default-signal="$signal" PATH="$path" scripts/build) >"$work/output" 2>&1 &
    started=$!
    tries=0
    while [ ! -s "$SAID" ]; do
        tries=$((tries + 1))
        [ $tries -le 200 ] || fail 'scripts/build did not start'
        sleep 0.05
    done
    [ -n "$(ls -A "$TMPDIR")" ] || fail 'nothing to be left over'
    kill -s "$signal" -- "-$(cat "$work/group")"
    ! wait $started || fail "exit 0 after SIG$signal"
    nothing_left
done
