# Helpers shared by every library, test and benchmark target.
#
# A library is every .cpp below its folder (sub-folders included, except those named in EXCLUDE),
# with public headers in <folder>/include. Globbing keeps the per-folder CMake files stable while
# classes are added; CONFIGURE_DEPENDS re-runs the glob on every build.

set(LATTIX_EXPORTED_TARGETS "" CACHE INTERNAL "")

function(lattix_add_library name)
    cmake_parse_arguments(ARG "" "" "EXCLUDE;PUBLIC_DEPS;PRIVATE_DEPS" ${ARGN})
    file(GLOB_RECURSE sources CONFIGURE_DEPENDS "${CMAKE_CURRENT_SOURCE_DIR}/*.cpp")
    foreach(ex IN LISTS ARG_EXCLUDE)
        list(FILTER sources EXCLUDE REGEX "^${CMAKE_CURRENT_SOURCE_DIR}/${ex}/")
    endforeach()
    if(NOT sources)
        message(STATUS "${name}: no sources yet, target not created")
        return()
    endif()
    add_library(${name} ${sources})
    add_library(modelgui::${name} ALIAS ${name})
    target_include_directories(${name}
        PUBLIC $<BUILD_INTERFACE:${CMAKE_CURRENT_SOURCE_DIR}/include>
               $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>
        PRIVATE ${CMAKE_CURRENT_SOURCE_DIR})
    target_link_libraries(${name} PUBLIC ${ARG_PUBLIC_DEPS} PRIVATE ${ARG_PRIVATE_DEPS})
    set_target_properties(${name} PROPERTIES VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR})
    target_compile_definitions(${name} PRIVATE LATTIX_SOURCE_DIR="${PROJECT_SOURCE_DIR}")
    install(TARGETS ${name} EXPORT modelguiTargets
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
        RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
    if(EXISTS "${CMAKE_CURRENT_SOURCE_DIR}/include")
        install(DIRECTORY "${CMAKE_CURRENT_SOURCE_DIR}/include/" DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
    endif()
    set(LATTIX_EXPORTED_TARGETS ${LATTIX_EXPORTED_TARGETS} ${name} CACHE INTERNAL "")
endfunction()

# Keeps only the targets of LIBS that exist (a layer without sources yet has none).
function(lattix_existing_targets out)
    set(result "")
    foreach(lib IN LISTS ARGN)
        if(TARGET ${lib})
            list(APPEND result ${lib})
        endif()
    endforeach()
    set(${out} ${result} PARENT_SCOPE)
endfunction()

# The environment every test runs in: private XDG folders inside the build tree so that tests never
# touch the user's own state, configuration or clipboard, resources from the source tree, and no
# display.
set(LATTIX_TEST_ENV
    "XDG_STATE_HOME=${CMAKE_BINARY_DIR}/test-home/state"
    "XDG_CONFIG_HOME=${CMAKE_BINARY_DIR}/test-home/config"
    "XDG_DATA_HOME=${CMAKE_BINARY_DIR}/test-home/data"
    "XDG_RUNTIME_DIR=${CMAKE_BINARY_DIR}/test-home/runtime"
    "TAMARIN_HOME=${PROJECT_SOURCE_DIR}/resources"
    "LATTIX_RESOURCE_PATH=${PROJECT_SOURCE_DIR}/resources"
    "LATTIX_SOURCE_DIR=${PROJECT_SOURCE_DIR}"
    "QT_QPA_PLATFORM=offscreen")

string(JOIN "|" LATTIX_TEST_ENV_JOINED ${LATTIX_TEST_ENV})

# One GoogleTest executable per library: every .cpp below tests/<DIR> (minus EXCLUDE folders).
function(lattix_add_tests name)
    cmake_parse_arguments(ARG "" "DIR" "EXCLUDE;LIBS" ${ARGN})
    set(dir "${CMAKE_CURRENT_SOURCE_DIR}/${ARG_DIR}")
    file(GLOB_RECURSE sources CONFIGURE_DEPENDS "${dir}/*.cpp")
    foreach(ex IN LISTS ARG_EXCLUDE)
        list(FILTER sources EXCLUDE REGEX "^${dir}/${ex}/")
    endforeach()
    lattix_existing_targets(libs ${ARG_LIBS})
    if(NOT sources OR NOT libs)
        return()
    endif()
    add_executable(${name} ${sources} ${PROJECT_SOURCE_DIR}/tests/support/test_main.cpp)
    target_link_libraries(${name} PRIVATE ${libs} GTest::gtest GTest::gmock Threads::Threads)
    target_include_directories(${name} PRIVATE ${CMAKE_CURRENT_SOURCE_DIR}/support)
    target_compile_definitions(${name} PRIVATE
        LATTIX_SOURCE_DIR="${PROJECT_SOURCE_DIR}"
        LATTIX_BINARY_DIR="${PROJECT_BINARY_DIR}"
        LATTIX_TEST_BINARY="$<TARGET_FILE:${name}>"
        LATTIX_TEST_ENVIRONMENT="${LATTIX_TEST_ENV_JOINED}")
    # The environment reaches the tests through the program's own main (support/test_main.cpp):
    # gtest_discover_tests cannot pass a list-valued ENVIRONMENT property through to ctest.
    gtest_discover_tests(${name}
        DISCOVERY_MODE PRE_TEST
        DISCOVERY_TIMEOUT 60
        PROPERTIES TIMEOUT 300)
endfunction()

function(lattix_install_package)
    include(CMakePackageConfigHelpers)
    set(cmakedir ${CMAKE_INSTALL_LIBDIR}/cmake/modelgui)
    # The package config finds Qt only when the Qt backend is part of the package.
    if(TARGET zml_qt)
        set(LATTIX_EXPORTS_QT ON)
    else()
        set(LATTIX_EXPORTS_QT OFF)
    endif()
    install(EXPORT modelguiTargets NAMESPACE modelgui:: DESTINATION ${cmakedir})
    configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/modelguiConfig.cmake.in
        ${PROJECT_BINARY_DIR}/modelguiConfig.cmake INSTALL_DESTINATION ${cmakedir})
    write_basic_package_version_file(${PROJECT_BINARY_DIR}/modelguiConfigVersion.cmake
        COMPATIBILITY SameMajorVersion)
    install(FILES ${PROJECT_BINARY_DIR}/modelguiConfig.cmake ${PROJECT_BINARY_DIR}/modelguiConfigVersion.cmake
        DESTINATION ${cmakedir})
endfunction()
