#!/bin/sh
# layers-test.sh HOST: each file of the host's directories includes its own directory and those below it, and names the
# directory.
set -eu
cd "$1"

# A directory, and the directories that it may include from.
arrows='text
broker
mof    broker text
source broker text chiplinux
health source broker text
format health source broker text chipsim
verify format source mof broker text
cli    verify format health source mof broker text chipsim'

sources=$(find . -name '*.h' -o -name '*.cpp' | sort)
# shellcheck disable=SC2086 # one word a file
printf '%s\n' "$arrows" | awk '
    FILENAME == "-" {
        for (i = 1; i <= NF; ++i) allowed[$1, $i]
        next
    }
    /^#include "/ {
        split(FILENAME, place, "/")
        split($2, included, /["\/]/)
        ++includes
        if ((place[2], included[2]) in allowed) next
        print FILENAME ":" FNR ": " place[2] " may not include " $2
        failed = 1
    }
    END {
        if (includes == 0) print "no includes in " ENVIRON["PWD"]
        exit failed || includes == 0
    }' - $sources
