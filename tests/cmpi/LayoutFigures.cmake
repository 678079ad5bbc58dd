# Makes the C source that checks our declarations at one level of CMPI out of the rows of layout.tsv.
function(write_layout_figures level output)
    file(READ ${CMAKE_CURRENT_SOURCE_DIR}/layout.tsv table)
    # Each header of level 210 knows the number of that level, whatever it is compiled for.
    string(REPLACE "CMPIVersion210\t-\t-\t-\t210\t210" "CMPIVersion210\t-\t-\t-\t210\t100" table "${table}")

    set(up_to_100 100)
    set(up_to_200 100|200)
    set(up_to_210 100|200|210)
    set(held ${up_to_${level}})
    set(n "[0-9]+")
    set(word "[^\t\n]+")
    string(REGEX REPLACE "#${word}\nkind\t[^\n]+\n" "" table "${table}")
    string(REGEX REPLACE "const\t(${word})\t-\t-\t-\t(${n})\t(${held})\n" "CONST(\\1, \\2)\n" table "${table}")
    string(REGEX REPLACE "member\t(${word})\t(${word})\t(${n})\t(${n})\t-\t(${held})\n" "MEMBER(\\1, \\2, \\3, \\4)\n"
        table "${table}")
    string(REGEX REPLACE "sizeof\t(${word})\t${level}\t-\t(${n})\t(${n})\t-\n" "SIZEOF(\\1, \\2, \\3)\n"
        table "${table}")
    string(REGEX REPLACE "type\t(${word})\t-\t-\t(${n})\t([a-z]+)\t-\n" "SCALAR(\\1, \\2, \\3)\n" table "${table}")
    string(REGEX REPLACE "string\t(${word})\t-\t-\t-\t(${word})\t100\n" "STRING(\\1, \"\\2\")\n" table "${table}")

    string(REGEX MATCHALL "const\t${word}" newer "${table}")
    list(TRANSFORM newer REPLACE "const\t(.+)" "NEWER(\\1)")
    list(JOIN newer "\n" newer_rows)

    # Left are the rows of other levels.
    string(REGEX REPLACE "const\t[^\n]+\n" "" table "${table}")
    string(REGEX REPLACE "member\t[^\n]+\t(200|210)\n" "" table "${table}")
    string(REGEX REPLACE "sizeof\t${word}\t(100|200|210)\t[^\n]+\n" "" table "${table}")
    if(table MATCHES "([^\n]*\t[^\n]*)\n")
        message(FATAL_ERROR "layout.tsv: row not understood: ${CMAKE_MATCH_1}")
    endif()
    set(rows "${table}")
    configure_file(LayoutFigures.c.in ${output} @ONLY)
endfunction()
