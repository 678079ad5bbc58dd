# Run by CPack on what is to be packed: Debian wants manual pages and changelogs compressed, without time stamps, and
# programs and libraries without symbols and compiler notes.
file(GLOB documents
    ${CPACK_TEMPORARY_DIRECTORY}/*/usr/share/man/man*/*.[1-8]
    ${CPACK_TEMPORARY_DIRECTORY}/*/usr/share/doc/*/changelog)
execute_process(COMMAND gzip -9n ${documents} COMMAND_ERROR_IS_FATAL ANY)

file(GLOB_RECURSE candidates LIST_DIRECTORIES false
    ${CPACK_TEMPORARY_DIRECTORY}/*/usr/bin/* ${CPACK_TEMPORARY_DIRECTORY}/*/usr/lib/*.so.*
    ${CPACK_TEMPORARY_DIRECTORY}/*/usr/lib/*/zelsensors-linux/*.so)
execute_process(
    COMMAND strip --strip-unneeded --remove-section=.comment --remove-section=.note ${candidates}
    COMMAND_ERROR_IS_FATAL ANY)
