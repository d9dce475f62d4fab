# The Debian package: made, looked at, made again elsewhere, installed. Sourced by ./dev.

# make_package FOLDER: out of the sources in FOLDER, into its build/package.
make_package() (
    # What the compiler answers does not depend on the language it says it in.
    export CCACHE_SLOPPINESS=locale
    cd "$1" && rm -rf build/package &&
        build release valdorn demo_runner installed_resources &&
        { cpack --preset release >build/cpack.log || { cat build/cpack.log >&2; false; }; } &&
        rm -rf build/package/_CPack_Packages
)

# What was made, by its path. More than one, or none, would be something else than was asked for.
the_package() {
    local found=(build/package/*.deb)
    if [ ${#found[@]} -ne 1 ] || [ ! -f "${found[0]}" ]; then
        echo "There is to be one package in build/package: ${found[*]}" >&2
        return 1
    fi
    echo "${found[0]}"
}

# The same sources give the same package whenever it is made: it is as old as the last commit.
export_source_time() {
    SOURCE_DATE_EPOCH=$(git log -1 --format=%ct)
    export SOURCE_DATE_EPOCH
}

check_package_contents() {
    desktop-file-validate resources/desktop/*.desktop
    appstreamcli validate --pedantic --no-net resources/desktop/*.metainfo.xml
    mandoc -T lint -W style resources/man/valdorn.1
    lintian --allow-root --fail-on error,warning --display-info --pedantic build/package/*.deb
    run_package_tests version_test hardening_test
}

# run_package_tests TEST...
run_package_tests() (
    local package
    package=$(the_package) || exit
    export VALDORN_SOURCE=$PWD VALDORN_PACKAGE=$PWD/$package VALDORN_PROGRAM=/usr/bin/valdorn \
        VALDORN_DEMO_RUNNER=$PWD/build/release/bin/demo_runner
    export VALDORN_CLEAN_DEBIAN=$PWD/build/clean-debian VALDORN_DOWNLOADS=$PWD/build/downloads
    cd tests/package || exit
    PYTHONPATH=../e2e /usr/bin/python3 -B -m unittest "$@"
)

# Where the sources lie, who makes the package, in which language and when, is not to be seen in it.
check_package_again() {
    local elsewhere=build/elsewhere/"a longer path"/valdorn
    rm -rf build/elsewhere
    mkdir -p "$elsewhere"
    git ls-files -z --cached --others --exclude-standard | tar --null --files-from=- --create |
        tar --directory="$elsewhere" --extract
    (
        umask 077
        export CCACHE_BASEDIR=$PWD/$elsewhere TZ=Pacific/Chatham LC_ALL=C
        make_package "$elsewhere" >build/elsewhere/build.log ||
            { cat build/elsewhere/build.log >&2; false; }
    )
    cmp build/package/*.deb "$elsewhere"/build/package/*.deb
    # The compiler's cache may have spared it the second time: so nothing may name the place at all.
    if grep --binary-files=text --quiet "$PWD" build/release/bin/valdorn; then
        echo "build/release/bin/valdorn names the folder that it was built in" >&2
        false
    fi
    sha256sum build/package/*.deb
    rm -rf build/elsewhere
}

# Runs a command as root, with mounts of its own that go when it ends; without root's powers, as
# root of a user namespace.
as_root_with_own_mounts() {
    if [ "$(id -u)" -eq 0 ]; then
        unshare --mount "$@"
    else
        unshare --user --map-root-user --map-auto --mount "$@"
    fi
}

# Debian as this machine is told to get it.
debian_sources() {
    # shellcheck disable=SC2016  # they are apt's variables
    apt-get indextargets --format 'deb $(REPO_URI) $(RELEASE) $(COMPONENT)' \
        'Created-By: Packages' 'Origin: Debian'
}

# A minimal Debian in build/clean-debian.tar, made anew each week and when it is to come from
# elsewhere.
make_clean_debian() {
    local packed=build/clean-debian.tar sources
    sources=$(debian_sources)
    if [ -n "$(find "$packed" -mtime -7 2>/dev/null)" ] &&
        [ "$(cat build/clean-debian.sources)" = "$sources" ]; then
        return
    fi
    # What this machine has to be told about its sources, the new one has to be told as well.
    apt-config dump | grep -E '^Acquire::(Check-|[a-z]+::Proxy)' >build/clean-debian.options || true
    rm -f "$packed.new"
    mmdebstrap --quiet --variant=minbase --aptopt="$PWD/build/clean-debian.options" \
        --format=tar '' "$packed.new" - <<<"$sources"
    printf '%s\n' "$sources" >build/clean-debian.sources
    mv "$packed.new" "$packed"
}

# unpack_clean_debian FOLDER: devices come from this machine.
unpack_clean_debian() {
    as_root_with_own_mounts rm -rf --one-file-system "$1"
    mkdir -p "$1"
    as_root_with_own_mounts tar --directory="$1" --exclude='./dev/*' --extract <build/clean-debian.tar
}

check_installation() {
    if ! as_root_with_own_mounts true 2>/dev/null; then
        echo "*** Neither root nor user namespaces here: the package's installation is NOT TESTED. ***" >&2
        [ -z "${VALDORN_SKIP_NOTHING-}" ]
        return
    fi
    make_clean_debian
    unpack_clean_debian build/clean-debian
    mkdir -p build/downloads
    export -f run_package_tests the_package
    as_root_with_own_mounts bash -euo pipefail -c 'run_package_tests install_test'
    as_root_with_own_mounts rm -rf --one-file-system build/clean-debian
}
