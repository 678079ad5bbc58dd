# shellcheck shell=sh
# What ./run, ./check and the tools share; they source it after "set -eu" and a change to the project's directory.

# For ccache: a source is the same in whatever directory under build/ it is compiled.
export CCACHE_DIR="${CCACHE_DIR:-$PWD/build/ccache}" CCACHE_BASEDIR="$PWD" CCACHE_NOHASHDIR=true

say() { printf '==> %s\n' "$*"; }

fail() {
    printf '%s: %s\n' "${0##*/}" "$*" >&2
    exit 1
}

# packages_of SECTION: the packages that packages.txt lists there.
packages_of() {
    awk -v wanted="# == $1" '/^# ==/ { inside = ($0 == wanted); next } inside && NF && !/^#/ { print $1 }' packages.txt
}

missing_of() {
    packages_of "$1" | while read -r package; do
        state=$(dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null || true)
        [ "$state" = installed ] || printf '%s ' "$package"
    done
}

# install_packages SECTION: installs the missing packages; needs root only if there are any.
install_packages() {
    command -v dpkg-query >/dev/null || fail "no dpkg-query here; this is made for Debian 12 and 13"
    missing=$(missing_of "$1")
    if [ -z "$missing" ]; then
        say "Packages for '$1': all installed"
        return
    fi
    [ "$(id -u)" = 0 ] || fail "these Debian packages are missing, and installing them needs root: $missing"
    say "Packages for '$1': installing $missing"
    export DEBIAN_FRONTEND=noninteractive
    apt-get -qq update || fail "apt-get update failed; see above"
    # shellcheck disable=SC2086 # a list of names
    apt-get -qq install -y --no-install-recommends $missing >/dev/null || fail "apt-get could not install: $missing"
}

# first_known A|B: the first of these packages that the release has; the last where it has none.
first_known() {
    for each in $(printf '%s' "$1" | tr '|' ' '); do
        ! apt-cache show "$each" >/dev/null 2>&1 || break
    done
    printf '%s\n' "$each"
}

# unpack_packages SECTION: has their files under build/programs and installs nothing. For packages of services, which
# would run from then on.
unpack_packages() {
    command -v apt-get >/dev/null || fail "no apt-get here; this is made for Debian 12 and 13"
    for entry in $(packages_of "$1"); do
        [ ! -e "build/programs/$entry.unpacked" ] || continue
        mkdir -p build/programs
        [ "$(id -u)" != 0 ] || apt-get -qq update || fail "apt-get update failed; see above"
        package=$(first_known "$entry")
        say "Packages for '$1': unpacking $package under build/programs"
        (cd build/programs && rm -f "$package"_*.deb && apt-get -qq download "$package" 2>"$package.log") ||
            fail "apt-get could not download $package: $(cat "build/programs/$package.log")"
        dpkg -x build/programs/"$package"_*.deb build/programs || fail "$package could not be unpacked; see above"
        touch "build/programs/$entry.unpacked"
    done
}

# configure PRESET: only the first time, afterwards Ninja does it where a CMake file has changed.
configure() {
    [ ! -f "build/$1/build.ninja" ] || return 0
    mkdir -p build
    # These three compile the same sources alike: with ccache each of them once.
    launcher=
    case $1 in release | package | bench) launcher=$(command -v ccache || true) ;; esac
    CMAKE_C_COMPILER_LAUNCHER=${CMAKE_C_COMPILER_LAUNCHER:-$launcher} \
        CMAKE_CXX_COMPILER_LAUNCHER=${CMAKE_CXX_COMPILER_LAUNCHER:-$launcher} \
        cmake --preset "$1" >"build/configure-$1.log" 2>&1 || {
        cat "build/configure-$1.log" >&2
        fail "configuring preset '$1' failed; see above"
    }
}

# build PRESET
build() {
    say "Building, preset '$1' (build/$1)"
    configure "$1"
    # On a terminal Ninja overwrites one line; elsewhere it would write one for each step.
    quiet=--quiet
    [ ! -t 1 ] || quiet=
    # shellcheck disable=SC2086 # an option or nothing
    cmake --build --preset "$1" -- $quiet || fail "building preset '$1' failed; see above"
}

# run_tests PRESET [ctest's options]: runs them and says how many passed, failed and were skipped.
run_tests() {
    preset=$1
    shift
    say "Testing, preset '$preset'"
    results=build/$preset/test-results.log
    status=0
    ctest --preset "$preset" -j "$(nproc)" "$@" >"$results" 2>&1 || status=$?
    awk -f tools/sum-up-tests.awk "$results"
    [ "$status" = 0 ] || fail "tests of preset '$preset' failed; the whole output is in $results"
    # Here every test can run, so one that was skipped has not been run.
    if [ -n "${CI:-}" ] && grep -q '\*\*\*Skipped' "$results"; then
        fail "tests of preset '$preset' were skipped; in CI none may be"
    fi
}
