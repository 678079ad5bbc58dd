#!/bin/sh
# Stands in for sfcb's sfcbstage, sfcbunstage and sfcbrepos, by the name that it is called with. As bad as the real
# ones: sfcbrepos moves the repository away before it fails, and takes what anybody has staged; sfcbunstage stops at a
# file that is not staged.
#
# Its directories are below its prefix: share/sfcb/CIM, var/lib/sfcb/stage (or SFCB_STAGE), var/lib/sfcb/registration.
# What it was called with goes to var/calls; var/fail-<tool> holds a status to answer without doing anything.
set -eu
tool=${0##*/}
prefix=$(readlink -f "$0")
prefix=${prefix%/*/*}
stage=${SFCB_STAGE:-$prefix/var/lib/sfcb/stage}
registration=$prefix/var/lib/sfcb/registration
schema=$prefix/share/sfcb/CIM

echo "$tool $*" >>"$prefix/var/calls"
if [ -f "$prefix/var/fail-$tool" ]; then
    read -r status <"$prefix/var/fail-$tool"
    exit "$status"
fi

options() {
    namespace=root/cimv2
    register=
    while getopts n:r:f option; do
        case "$option" in
            n) namespace=$OPTARG ;;
            r) register=$OPTARG ;;
            f) ;;
            *) exit 64 ;;
        esac
    done
}

# compiles FILE...: whether the qualifiers are declared, once, before the first class.
compiles() {
    cat "$@" | awk '
        { sub(/^[ \t]*\/\/.*/, "") }
        $1 == "Qualifier" && ($2 in declared) { print "qualifier " $2 " is declared twice"; bad = 1 }
        $1 == "Qualifier" { declared[$2] = 1 }
        /\[.*Version/ && !("Version" in declared) { print "qualifier Version is not declared"; bad = 1 }
        $1 == "garbage" { print "syntax error"; bad = 1 }
        END { exit bad }' >&2
}

build() {
    rm -rf "$registration/repository.previous"
    [ ! -d "$registration/repository" ] || mv "$registration/repository" "$registration/repository.previous"
    [ -f "$schema/CIM_Schema.mof" ] || { echo "there is no CIM_Schema.mof" >&2; exit 1; }
    set -- "$schema/CIM_Schema.mof"
    [ ! -f "$schema/qualifiers.mof" ] || set -- "$schema/qualifiers.mof" "$@"
    for file in "$stage"/mofs/root/cimv2/*.mof; do
        [ ! -f "$file" ] || set -- "$@" "$file"
    done
    compiles "$@" || exit 1
    mkdir "$registration/repository"
    for file; do echo "${file##*/}"; done >"$registration/repository/built"
    cat "$stage"/regs/*.reg >"$registration/providerRegister" 2>/dev/null || true
}

options "$@"
shift $((OPTIND - 1))
case "$tool" in
    sfcbstage)
        mkdir -p "$stage/mofs/$namespace"
        cp "$@" "$stage/mofs/$namespace/"
        cp "$register" "$stage/regs/"
        ;;
    sfcbunstage)
        [ -z "$register" ] || rm "$stage/regs/$register"
        for file; do rm "$stage/mofs/$namespace/$file"; done
        ;;
    sfcbrepos) build ;;
esac
