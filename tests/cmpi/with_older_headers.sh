#!/bin/sh
# Runs a compiler with CMPI headers of the generation before ours, made for the purpose. Arguments: the directory of our
# headers, then the compiler's command line.
set -eu
here=$(dirname "$0")
headers=$1
shift
made=$(mktemp -d)
trap 'rm -rf "$made"' EXIT

mkdir "$made/cmpi"
for header in "$headers"/*.h; do
    awk -f "$here/older_headers.awk" "$header" >"$made/cmpi/${header##*/}"
done
"$@" -isystem "$made/cmpi" -isystem "$made"
