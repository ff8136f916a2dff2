# SPDX-License-Identifier: GPL-3.0-or-later
# nubix_add_translations(<target> TS <.ts files> SCAN <source folders>
#                        OUTPUT_DIR <dir> INSTALL_DIR <dir>)
# Compiles the .ts files with lrelease at build time into OUTPUT_DIR (same
# base names, .qm) and installs them to INSTALL_DIR. `<target>-lupdate`
# refreshes the .ts files in the source tree from the texts in SCAN; line
# numbers are left out so that a refresh only shows changed texts.
include_guard(GLOBAL)

function(nubix_add_translations target)
    cmake_parse_arguments(PARSE_ARGV 1 T "" "OUTPUT_DIR;INSTALL_DIR" "TS;SCAN")
    set(qms)
    set(tsFiles)
    foreach(ts IN LISTS T_TS)
        get_filename_component(abs ${ts} ABSOLUTE)
        get_filename_component(base ${ts} NAME_WE)
        set(qm ${T_OUTPUT_DIR}/${base}.qm)
        add_custom_command(OUTPUT ${qm}
            COMMAND ${CMAKE_COMMAND} -E make_directory ${T_OUTPUT_DIR}
            COMMAND Qt5::lrelease -silent ${abs} -qm ${qm}
            DEPENDS ${abs}
            COMMENT "Compiling ${base}.qm"
            VERBATIM)
        list(APPEND qms ${qm})
        list(APPEND tsFiles ${abs})
    endforeach()
    add_custom_target(${target} ALL DEPENDS ${qms})
    set_target_properties(${target} PROPERTIES NUBIX_TS_FILES "${tsFiles}" NUBIX_TS_SCAN "${T_SCAN}")
    install(FILES ${qms} DESTINATION ${T_INSTALL_DIR})

    add_custom_target(${target}-lupdate
        COMMAND Qt5::lupdate -silent -locations none -no-obsolete ${T_SCAN} -ts ${tsFiles}
        WORKING_DIRECTORY ${CMAKE_CURRENT_SOURCE_DIR}
        COMMENT "Refreshing ${target} .ts files"
        VERBATIM)
endfunction()
