# cmake -P script: install BUILD_DIR into WORK_DIR/prefix, configure and build the consumer project
# against it, run the consumer. Any failing step fails the test with its output.
function(run_step what)
    execute_process(COMMAND ${ARGN} RESULT_VARIABLE result OUTPUT_VARIABLE out ERROR_VARIABLE out)
    if(NOT result EQUAL 0)
        message(FATAL_ERROR "${what} failed (${result}):\n${out}")
    endif()
    message(STATUS "${what}: ok")
    set(step_output "${out}" PARENT_SCOPE)
endfunction()

set(prefix "${WORK_DIR}/prefix")
set(build "${WORK_DIR}/consumer-build")
file(REMOVE_RECURSE "${WORK_DIR}")

# The whole build must be up to date: installing needs every library and application built.
run_step("install (of a complete build)" ${CMAKE_COMMAND} --install "${BUILD_DIR}" --prefix "${prefix}")
run_step("configure consumer" ${CMAKE_COMMAND} -S "${CONSUMER_DIR}" -B "${build}" -G "${GENERATOR}"
    "-DCMAKE_PREFIX_PATH=${prefix}" "-DCMAKE_CXX_COMPILER=${CXX_COMPILER}"
    "-DCMAKE_BUILD_TYPE=${BUILD_TYPE}" "-DCMAKE_CXX_FLAGS=${CXX_FLAGS}"
    "-DCMAKE_EXE_LINKER_FLAGS=${CXX_FLAGS}")
run_step("build consumer" ${CMAKE_COMMAND} --build "${build}")
# The resource folder must be found from the installed library's own place, not from the
# environment.
run_step("run consumer" ${CMAKE_COMMAND} -E env --unset=TAMARIN_HOME --unset=LATTIX_RESOURCE_PATH
    "${build}/consumer" "${prefix}")
message(STATUS "${step_output}")
file(REMOVE_RECURSE "${WORK_DIR}")
