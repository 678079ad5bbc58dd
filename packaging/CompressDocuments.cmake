# Run by CPack before it makes the packages: Debian wants manual pages and changelogs compressed, without time stamps.
file(GLOB documents
    ${CPACK_TEMPORARY_DIRECTORY}/*/usr/share/man/man*/*.[1-8]
    ${CPACK_TEMPORARY_DIRECTORY}/*/usr/share/doc/*/changelog.Debian)
if(NOT documents)
    message(FATAL_ERROR "no manual pages or changelogs under ${CPACK_TEMPORARY_DIRECTORY}")
endif()
execute_process(COMMAND gzip -9n ${documents} COMMAND_ERROR_IS_FATAL ANY)
