#!/bin/sh
# A build for a panel takes the sysroot's headers and not those of the C library that the compiler brings along, also
# when they are much older than the compiler; and a sysroot is found by a relative path.
#
# The old headers are the sysroot's own, dressed up as those of 2.5: without the functions that the compiler's C++
# library expects of newer ones.
#
#   panel_sysroot.sh CMAKE TOOLCHAIN SYSROOT
set -eu
cmake=$1
toolchain=$2
sysroot=$3

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
trap 'exit 130' INT TERM HUP
fail() { cat "$work/log" >&2; echo "$*" >&2; exit 1; }

old="$work/an old panel"
mkdir -p "$old/usr/include"
ln -s "$sysroot/lib" "$old/lib"
ln -s "$sysroot/usr/lib" "$old/usr/lib"
for header in "$sysroot"/usr/include/*; do
    ln -s "$header" "$old/usr/include"
done
# without FILE WORD...: the old header does not have those words.
without() {
    header=$old/usr/include/$1
    shift
    text=$(cat "$header")
    rm "$header"
    script=
    for word in "$@"; do script="$script;s/\\<$word\\>/not_there_$word/g"; done
    echo "$text" | sed "$script" >"$header"
}
without stdlib.h aligned_alloc at_quick_exit quick_exit
without time.h timespec_get
without pthread.h pthread_cond_clockwait pthread_mutex_clocklock pthread_rwlock_clockrdlock pthread_rwlock_clockwrlock
without features.h
sed -i 's/\(define[ \t]*__GLIBC_MINOR__\).*/\1 5/' "$old/usr/include/features.h"

mkdir "$work/project"
cat >"$work/project/CMakeLists.txt" <<'PROJECT'
cmake_minimum_required(VERSION 3.25)
project(probe CXX)
set(CMAKE_CXX_STANDARD 17)
add_library(probe SHARED probe.cpp)
target_link_options(probe PRIVATE -nostdlib)
PROJECT
cat >"$work/project/probe.cpp" <<'PROBE'
#include <pthread.h>
#include <stdlib.h>
#include <time.h>

#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <ctime>
#include <functional>
#include <memory>
#include <mutex>
#include <shared_mutex>
#include <string>
#include <thread>

static_assert(__GLIBC_MINOR__ == 5, "headers of another C library");
PROBE

# build [OPTION...]: in the folder above the old sysroot. No check of CMake's links: the linker takes a
# sysroot of links for none.
build() {
    rm -rf "$work/build"
    (
        cd "$work"
        "$cmake" -S project -B build -DCMAKE_TOOLCHAIN_FILE="$toolchain" \
            -DCMAKE_TRY_COMPILE_TARGET_TYPE=STATIC_LIBRARY "$@" &&
            "$cmake" --build build
    ) >"$work/log" 2>&1
}
unset MICRO800_SYSROOT
build -DMICRO800_SYSROOT='an old panel' || fail 'a relative MICRO800_SYSROOT as an option'
export MICRO800_SYSROOT='an old panel'
build || fail 'a relative MICRO800_SYSROOT in the environment'
export MICRO800_SYSROOT='no such panel'
! build || fail 'a sysroot that is not there was taken'
grep -q 'MICRO800_SYSROOT is no folder' "$work/log" || fail 'nothing says that the sysroot is not there'
