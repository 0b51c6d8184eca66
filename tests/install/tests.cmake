# Installs this build into a scratch prefix and builds a small host application against it with
# find_package(modelgui), then runs it: the installed package must be complete on its own.
set(_consumer_flags "")
if(LATTIX_SANITIZE)
    set(_consumer_flags "-fsanitize=address,undefined -fno-omit-frame-pointer")
endif()
add_test(NAME install.consumer
    COMMAND ${CMAKE_COMMAND}
        -DBUILD_DIR=${PROJECT_BINARY_DIR}
        -DWORK_DIR=${PROJECT_BINARY_DIR}/install-test
        -DCONSUMER_DIR=${CMAKE_CURRENT_LIST_DIR}/consumer
        -DGENERATOR=${CMAKE_GENERATOR}
        -DCXX_COMPILER=${CMAKE_CXX_COMPILER}
        -DCXX_FLAGS=${_consumer_flags}
        -DBUILD_TYPE=${CMAKE_BUILD_TYPE}
        -P ${CMAKE_CURRENT_LIST_DIR}/run_consumer.cmake)
set_tests_properties(install.consumer PROPERTIES TIMEOUT 600 ENVIRONMENT "${LATTIX_TEST_ENV}")
