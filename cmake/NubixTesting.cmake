# nubix_add_test(NAME name SOURCES a.cpp ... LIBS lib ... [LABELS l ...] [TIMEOUT s])
# One QtTest executable, registered with CTest under a headless platform and a
# throw-away HOME so that no test ever touches the real one.
function(nubix_add_test)
    cmake_parse_arguments(T "" "NAME;TIMEOUT" "SOURCES;LIBS;LABELS" ${ARGN})
    add_executable(${T_NAME} ${T_SOURCES})
    target_link_libraries(${T_NAME} PRIVATE Qt5::Test ${T_LIBS})
    add_test(NAME ${T_NAME} COMMAND ${CMAKE_SOURCE_DIR}/scripts/with-temp-home.sh $<TARGET_FILE:${T_NAME}>)
    if(NOT T_TIMEOUT)
        set(T_TIMEOUT 120)
    endif()
    set_tests_properties(${T_NAME} PROPERTIES
        TIMEOUT ${T_TIMEOUT}
        ENVIRONMENT "QT_QPA_PLATFORM=offscreen;HDE_PLUGIN_BUILD_DIR=${HDE_PLUGIN_BUILD_DIR}"
        LABELS "${T_LABELS}")
endfunction()
