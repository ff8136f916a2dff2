# SPDX-License-Identifier: GPL-3.0-or-later
# cmake -P script: install, configure, build, run. Any failing step fails the test.
foreach(var BUILD_DIR SAMPLE_DIR WORK_DIR GENERATOR)
    if(NOT DEFINED ${var})
        message(FATAL_ERROR "RunSdkTest: ${var} is not set")
    endif()
endforeach()

function(run_step what)
    execute_process(COMMAND ${ARGN} RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE err)
    if(NOT rc EQUAL 0)
        message(FATAL_ERROR "RunSdkTest: ${what} failed (${rc})\n${out}\n${err}")
    endif()
    message(STATUS "RunSdkTest: ${what}: ok")
endfunction()

set(prefix ${WORK_DIR}/prefix)
set(build ${WORK_DIR}/build)
file(REMOVE_RECURSE ${WORK_DIR})

run_step("install the SDK component" ${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${prefix} --component HdeSdk)
foreach(file include/hpf/event/invoker.h include/htk/messagedialog.h include/hfmbase/urlroute.h)
    if(NOT EXISTS ${prefix}/${file})
        message(FATAL_ERROR "RunSdkTest: ${file} was not installed")
    endif()
endforeach()

run_step("configure the sample" ${CMAKE_COMMAND} -S ${SAMPLE_DIR} -B ${build} -G ${GENERATOR}
         -DCMAKE_PREFIX_PATH=${prefix} -DCMAKE_BUILD_TYPE=RelWithDebInfo)
run_step("build the sample" ${CMAKE_COMMAND} --build ${build})
run_step("load and start the sample" ${build}/sample-check ${build}/plugins)
