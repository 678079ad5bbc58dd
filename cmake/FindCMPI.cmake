# Finds the declarations of CMPI, the Common Manageability Programming Interface.
#
# A system's own headers are taken where they are found (cmpi/cmpidt.h on the usual include path, or under
# -DCMPI_INCLUDE_DIR=<folder that holds cmpi/>); otherwise the declarations that come with this project. Never both: the
# two must not meet on one include path.
#
# Makes the target CMPI::CMPI.
find_path(CMPI_INCLUDE_DIR cmpi/cmpidt.h DOC "Folder that holds cmpi/cmpidt.h")
if(CMPI_INCLUDE_DIR)
    set(CMPI_HEADERS ${CMPI_INCLUDE_DIR})
else()
    set(CMPI_HEADERS ${PROJECT_SOURCE_DIR})
endif()
include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(CMPI REQUIRED_VARS CMPI_HEADERS)

if(NOT TARGET CMPI::CMPI)
    add_library(CMPI::CMPI INTERFACE IMPORTED)
    # Of the published headers, one generation includes its siblings with the folder's name and the other without it.
    # As system headers, since a system's own are not ours to keep free of warnings.
    target_include_directories(CMPI::CMPI SYSTEM INTERFACE ${CMPI_HEADERS}/cmpi)
    target_compile_definitions(CMPI::CMPI INTERFACE CMPI_PLATFORM_LINUX_GENERIC_GNU)
endif()
