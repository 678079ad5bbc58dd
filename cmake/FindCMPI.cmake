# Finds the declarations of CMPI, the Common Manageability Programming Interface.
#
# A system's own headers are taken where they are found (cmpi/cmpidt.h on the usual include path, or under
# -DCMPI_INCLUDE_DIR=<directory that holds cmpi/>); otherwise the declarations that come with this project. Never both:
# the two must not meet on one include path.
#
# Makes the target CMPI::CMPI.
cmake_path(GET CMAKE_CURRENT_LIST_DIR PARENT_PATH CMPI_OWN_HEADERS)
find_path(CMPI_INCLUDE_DIR cmpi/cmpidt.h DOC "Directory that holds cmpi/cmpidt.h")
if(NOT CMPI_INCLUDE_DIR)
    set(CMPI_HEADERS ${CMPI_OWN_HEADERS})
elseif(EXISTS ${CMPI_INCLUDE_DIR}/cmpi/cmpidt.h)
    set(CMPI_HEADERS ${CMPI_INCLUDE_DIR})
else()
    set(CMPI_NOT_FOUND_MESSAGE "CMPI_INCLUDE_DIR, ${CMPI_INCLUDE_DIR}, does not hold cmpi/cmpidt.h")
endif()
include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(CMPI REQUIRED_VARS CMPI_HEADERS REASON_FAILURE_MESSAGE "${CMPI_NOT_FOUND_MESSAGE}")

if(CMPI_FOUND AND NOT TARGET CMPI::CMPI)
    add_library(CMPI::CMPI INTERFACE IMPORTED)
    # The directory itself, since the newer of the published headers include each other without its name. As system
    # headers, since a system's own are not ours to keep free of warnings.
    target_include_directories(CMPI::CMPI SYSTEM INTERFACE ${CMPI_HEADERS}/cmpi)
    target_compile_definitions(CMPI::CMPI INTERFACE CMPI_PLATFORM_LINUX_GENERIC_GNU)
endif()
