# SPDX-License-Identifier: GPL-3.0-or-later
# hde_sdk_library(<name> HEADERS <headers below include/> SOURCES <sources> LIBS <public libraries>)
# One shared library of the SDK as Hde::<name>, built with <NAME>_LIBRARY
# defined; the library, its headers (in their folders below include/) and its
# export are installed in the HdeSdk component.
include_guard(GLOBAL)

function(hde_sdk_library name)
    cmake_parse_arguments(PARSE_ARGV 1 SDK "" "" "HEADERS;SOURCES;LIBS")
    add_library(${name} SHARED ${SDK_HEADERS} ${SDK_SOURCES})
    add_library(Hde::${name} ALIAS ${name})
    string(TOUPPER ${name} upper)
    target_compile_definitions(${name} PRIVATE ${upper}_LIBRARY)
    target_include_directories(${name} PUBLIC
        $<BUILD_INTERFACE:${CMAKE_CURRENT_SOURCE_DIR}/include>
        $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>
    )
    target_link_libraries(${name} PUBLIC ${SDK_LIBS})
    # A sanitized SDK needs the sanitizer runtime first in every program that
    # uses it, including plug-ins built out of tree against the installed SDK.
    if(NUBIX_ASAN)
        target_link_options(${name} INTERFACE -fsanitize=address,undefined)
    endif()
    set_target_properties(${name} PROPERTIES
        VERSION ${PROJECT_VERSION}
        SOVERSION ${PROJECT_VERSION_MAJOR}
        EXPORT_NAME ${name}
    )
    install(TARGETS ${name} EXPORT HdeSdkTargets
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT HdeSdk
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT HdeSdk
        RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT HdeSdk
        INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
    )
    foreach(header IN LISTS SDK_HEADERS)
        get_filename_component(dir ${header} DIRECTORY)
        string(REGEX REPLACE "^include/?" "" dir "${dir}")
        install(FILES ${header} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/${dir} COMPONENT HdeSdk)
    endforeach()
endfunction()
