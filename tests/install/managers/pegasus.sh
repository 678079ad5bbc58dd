#!/bin/sh
# Stands in for OpenPegasus's cimconfig, cimprovider, cimmof and cimcli, by the name that it is called with. As bad as
# the real ones: cimmof answers 0 for a class that it leaves as it was.
#
# The server is the directory var/ below its prefix: running (a file), providerDir, modules, namespaces/<name>/<class>,
# qualifiers/<name>. What it was called with goes to var/calls; var/fail-<tool> holds a status and a pattern of the
# arguments for which that is answered without doing anything.
set -eu
tool=${0##*/}
prefix=$(readlink -f "$0")
prefix=${prefix%/*/*}
var=$prefix/var

echo "$tool $*" >>"$var/calls"
if [ -f "$var/fail-$tool" ]; then
    read -r status pattern <"$var/fail-$tool"
    # shellcheck disable=SC2254 # a pattern
    case "$*" in $pattern) exit "$status" ;; esac
fi

need_server() {
    [ -f "$var/running" ] && return
    echo "$tool: cannot connect to the server" >&2
    exit 1
}

cimconfig() {
    [ "$1 $2" = "-g providerDir" ] || exit 64
    if [ "${3:-}" = -p ]; then word=Planned; else word=Current; need_server; fi
    read -r directories <"$var/providerDir"
    case "$directories" in *=*) printf '%s\n' "$directories" ;; *) printf '%s value: %s\n' "$word" "$directories" ;; esac
}

state_of() { awk -v name="$1" '$1 == name { print $2 }' "$var/modules"; }

# set_state MODULE [STATE]: without a state the module is gone.
set_state() {
    awk -v name="$1" '$1 != name' "$var/modules" >"$var/modules.new"
    [ -z "${2:-}" ] || echo "$1    $2" >>"$var/modules.new"
    mv "$var/modules.new" "$var/modules"
}

cimprovider() {
    need_server
    case "$1" in
        -l) cat "$var/modules" ;;
        -d) [ "$(state_of "$3")" = OK ] && set_state "$3" Stopped ;;
        -e) [ "$(state_of "$3")" = Stopped ] && set_state "$3" OK ;;
        -r) [ -n "$(state_of "$3")" ] && set_state "$3" ;;
        *) exit 64 ;;
    esac
}

version_in() { awk -F '"' '/Version/ { print $2; exit }' "$1"; }

# compile_class NAME FILE: answers 0 in every case.
compile_class() {
    old=$var/namespaces/$namespace/$1
    if [ ! -f "$old" ]; then
        mv "$2" "$old"
    elif [ "$(version_in "$old")" = "$(version_in "$2")" ]; then
        echo "Warning: the class $1 exists already, with the same version"
    elif [ "$allowed" = no ]; then
        echo "Warning: Version update not allowed: $1"
    else
        mv "$2" "$old"
    fi
}

register_module() {
    if [ -n "$(state_of zelsensorsModule)" ]; then
        echo "Error: instance already exists" >&2
        exit 4
    fi
    [ -f "$var/forgets-modules" ] || set_state zelsensorsModule OK
}

cimmof() {
    need_server
    allowed=no
    while [ $# -gt 1 ]; do
        case "$1" in
            -uc) ;;
            -aV) allowed=yes ;;
            -n) namespace=$2; shift ;;
            *) exit 64 ;;
        esac
        shift
    done
    if [ "$namespace" = root/PG_Interop ]; then
        register_module
        return
    fi
    mkdir -p "$var/namespaces/$namespace"
    awk -v directory="$var/qualifiers/" '$1 == "Qualifier" { printf "" >(directory $2) }' "$1"
    awk -v to="$var/compiled-" '/^\[Version/ { file = to (++count) } file { print >file }' "$1"
    for file in "$var"/compiled-*; do
        [ -f "$file" ] || continue
        [ -f "$var/qualifiers/Version" ] || { echo "Error: qualifier Version is not declared" >&2; exit 2; }
        compile_class "$(awk '$1 == "class" { print $2 }' "$file")" "$file"
    done
    rm -f "$var"/compiled-*
}

# Shows a class as the server has it: the same in another layout than the file's.
show_class() {
    awk '/^class/ { sub(/ *\{/, ""); print; print "{"; next }
        { gsub(/\(/, " ( \n"); gsub(/\)/, " ) "); gsub(/Read,/, "Read ( true ),"); sub(/^ +/, "\t"); print }' "$1"
}

cimcli() {
    need_server
    object=$var/namespaces/$4/$2
    case "$1" in
        gq) [ -f "$var/qualifiers/$2" ] && echo "Qualifier $2 : ..." ;;
        gc)
            [ -f "$object" ] || return 1
            if [ -f "$var/shows-xml" ]; then
                echo "<CLASS NAME=\"$2\">"
            elif [ -f "$var/shows-no-qualifiers" ]; then
                show_class "$object" | awk '!/^ *\[/'
            else
                show_class "$object"
            fi
            ;;
        ni)
            [ -f "$object" ] && [ "$(state_of zelsensorsModule)" = OK ] && [ ! -f "$var/answers-nothing" ] || return 1
            echo "$2.Name=\"one\""
            ;;
        dc) [ -f "$object" ] && rm "$object" ;;
        *) exit 64 ;;
    esac
}

"$tool" "$@"
