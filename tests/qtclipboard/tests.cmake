# The desktop clipboard between two processes: the Qt backend's test program writes under a
# private X server (xvfb-run) and starts a second copy of itself that reads.
if(TARGET zml_qt_tests)
    find_program(XVFB_RUN xvfb-run)
    if(XVFB_RUN)
        set(qt_clipboard_env ${LATTIX_TEST_ENV})
        list(FILTER qt_clipboard_env EXCLUDE REGEX "^QT_QPA_PLATFORM=")
        list(APPEND qt_clipboard_env "QT_QPA_PLATFORM=xcb" "LATTIX_CLIPBOARD_BETWEEN_PROCESSES=1")
        add_test(NAME qt_clipboard_between_processes
            COMMAND ${XVFB_RUN} -a $<TARGET_FILE:zml_qt_tests>
                    --gtest_filter=DesktopClipboardBetweenProcesses.*)
        set_tests_properties(qt_clipboard_between_processes PROPERTIES
            ENVIRONMENT "${qt_clipboard_env}" TIMEOUT 120)
    else()
        message(STATUS "xvfb-run not found: the clipboard test between processes is not run")
    endif()
endif()
