# The model editor's tests: a GoogleTest program of their own (it needs Qt, apps_tests does not),
# and the command line's picture and failure paths.
if(TARGET lattix_modeler_ui)
    lattix_add_tests(modeler_tests DIR modeler LIBS lattix_modeler_ui Qt6::Test)
    add_test(NAME modeler_screenshot_cli
        COMMAND $<TARGET_FILE:lattix-modeler> --screenshot
                ${CMAKE_BINARY_DIR}/test-home/screenshots/raster-expression.png
                ${PROJECT_SOURCE_DIR}/examples/raster-expression.gmdx)
    add_test(NAME modeler_screenshot_cli_bad_model
        COMMAND $<TARGET_FILE:lattix-modeler> --screenshot
                ${CMAKE_BINARY_DIR}/test-home/screenshots/missing.png
                ${PROJECT_SOURCE_DIR}/examples/no-such-model.gmdx)
    set_tests_properties(modeler_screenshot_cli modeler_screenshot_cli_bad_model
        PROPERTIES ENVIRONMENT "${LATTIX_TEST_ENV}" TIMEOUT 120)
    set_tests_properties(modeler_screenshot_cli_bad_model PROPERTIES WILL_FAIL TRUE)
endif()
