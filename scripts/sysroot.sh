# Makes the folder with headers and libraries that a cross build takes. To be read after lib.sh.
# shellcheck shell=sh
# shellcheck disable=SC2034  # what others use

sysroot_packages='libc6-dev libstdc++-12-dev qtbase5-dev libqt5sql5-sqlite libgtest-dev libgmock-dev
    libncurses-dev'
panel_packages='qemu-user-static mmdebstrap'

# sysroot_sources: one-line sources of the Debian release that this machine runs, from the mirrors that
# its apt is configured with. Other archives that apt knows have nothing for ARM and are left out.
sysroot_sources() {
    # shellcheck disable=SC2016  # words of apt
    apt-get indextargets --format 'deb $(REPO_URI) $(RELEASE) $(COMPONENT)' \
        'Created-By: Packages' 'Origin: Debian' "Release: $1" | sort -u
}

# relative_links FOLDER: makes links relative that point from FOLDER to its own root. The linker would
# follow an absolute one out of the sysroot, find nothing, and take the static library beside it.
relative_links() {
    (
        cd "$1" || exit
        find usr/lib etc/alternatives -lname '/*' | while read -r link; do
            ln -sfnr ".$(readlink "$link")" "$link"
        done
    )
}

# make_sysroot ARCHITECTURE: prints the sysroot's folder, made on first use and kept for the next time. To be called
# in a shell of its own, $(make_sysroot ...).
make_sysroot() {
    # shellcheck source=/dev/null
    codename=$(. /etc/os-release && echo "$VERSION_CODENAME")
    folder=${XDG_CACHE_HOME:-$HOME/.cache}/micro800/sysroot-$codename-$1
    # shellcheck disable=SC2086  # one line of them
    list=$(echo $sysroot_packages | tr ' ' ',')
    if [ "$(cat "$folder/.packages" 2>/dev/null)" != "$list" ]; then
        sources=$(sysroot_sources "$codename")
        if [ -z "$sources" ]; then
            as_root apt-get -qq update
            sources=$(sysroot_sources "$codename")
        fi
        [ -n "$sources" ] || { echo "apt has no Debian mirror for $codename" >&2; return 1; }
        say "making a sysroot for $1 in $folder"
        mkdir -p "${folder%/*}"
        rm -rf "$folder" "$folder.new"
        # shellcheck disable=SC2317  # at_end calls it
        forget_half_made() { rm -rf "$folder.new"; }
        at_end forget_half_made
        # "extract" only unpacks: nothing of the other architecture is run.
        echo "$sources" | mmdebstrap --quiet --architectures="$1" --variant=extract --include="$list" \
            "$codename" "$folder.new" - >&2
        relative_links "$folder.new"
        echo "$list" >"$folder.new/.packages"
        mv "$folder.new" "$folder"
    fi
    echo "$folder"
}
