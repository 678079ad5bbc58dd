#!/bin/sh
# Compiles each CMPI header alone and twice over, at every level, by both ways of naming it, with warnings as errors;
# and sees that an unknown level is refused. Arguments: the directory that holds cmpi/, then the compiler with its
# options.
set -eu
root=$1
shift

for header in cmpidt.h cmpift.h cmpimacs.h cmpios.h cmpipl.h; do
    for level in 100 200 210; do
        printf '#include <%s>\n#include <%s>\n#include <cmpi/%s>\nint only;\n' $header $header $header |
            "$@" -fsyntax-only -Werror -I"$root/cmpi" -I"$root" -DCMPI_VERSION=$level - || {
            echo "$header does not compile at level $level"
            exit 1
        }
    done
done

if refusal=$(printf '#include <cmpidt.h>\n' | "$@" -fsyntax-only -I"$root/cmpi" -DCMPI_VERSION=150 - 2>&1); then
    echo 'level 150 is accepted'
    exit 1
fi
case $refusal in
*'CMPI_VERSION must be 100, 200 or 210'*) ;;
*) echo "level 150 is refused with: $refusal" && exit 1 ;;
esac
