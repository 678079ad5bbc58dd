#!/bin/sh
# Which CMPI headers the project takes: those named, else those on the search path, else its own; and that a wrong name
# is refused. Arguments: the project's root, then cmake with the options of the generator.
set -eu
root=$1
shift
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

mkdir -p "$work/project" "$work/system/include/cmpi" "$work/named/cmpi" "$work/empty"
touch "$work/system/include/cmpi/cmpidt.h" "$work/named/cmpi/cmpidt.h"
cat >"$work/project/CMakeLists.txt" <<'END'
cmake_minimum_required(VERSION 3.25)
project(finding LANGUAGES NONE)
find_package(CMPI REQUIRED)
get_target_property(directories CMPI::CMPI INTERFACE_INCLUDE_DIRECTORIES)
if(NOT directories STREQUAL EXPECTED)
    message(FATAL_ERROR "takes ${directories}, not ${EXPECTED}")
endif()
END

# Nothing that the machine has may be found.
set -- "$@" -S "$work/project" -B "$work/build" -DCMAKE_MODULE_PATH="$root/cmake" \
    -DCMAKE_FIND_USE_CMAKE_SYSTEM_PATH=OFF -DCMAKE_FIND_USE_SYSTEM_ENVIRONMENT_PATH=OFF \
    -DCMAKE_FIND_USE_CMAKE_ENVIRONMENT_PATH=OFF

"$@" --fresh -DEXPECTED="$root/cmpi"
"$@" --fresh -DEXPECTED="$work/system/include/cmpi" -DCMAKE_PREFIX_PATH="$work/system"
"$@" --fresh -DEXPECTED="$work/named/cmpi" -DCMAKE_PREFIX_PATH="$work/system" -DCMPI_INCLUDE_DIR="$work/named"

if refusal=$("$@" --fresh -DEXPECTED=none -DCMPI_INCLUDE_DIR="$work/empty" 2>&1); then
    echo 'a directory without cmpi/cmpidt.h is accepted'
    exit 1
fi
case $refusal in
*'does not hold cmpi/cmpidt.h'*) ;;
*) echo "a directory without cmpi/cmpidt.h is refused with: $refusal" && exit 1 ;;
esac
