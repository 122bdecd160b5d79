# Linux has its own mind about what a file may be named.
if(LINUX)
    set(projectNames tst_projectnames)
endif()

orrinet_tests(project
    CLASSES
        tst_boilerplate
        tst_discardprompt
        tst_failedopen
        tst_foreignfiles
        tst_meanwhile
        tst_memorydatabase
        tst_nodriver
        tst_openedproject
        tst_projectcopy
        tst_projectdatabase
        tst_projectdialogs
        ${projectNames}
        tst_projectpaths
        tst_projectroundtrip
        tst_projecttagfilter
        tst_projectview
        tst_savedproject
        tst_unsaved
    SOURCES
        driverswap.h
        projectfile.cpp
        projectfile.h)

# A script that is partly wrong, to stand in for the real one.
qt_add_binary_resources(orrinet-faulty-script project/faulty/faulty.qrc
    DESTINATION ${CMAKE_CURRENT_BINARY_DIR}/faulty.rcc OPTIONS --no-compress)
target_compile_definitions(tests-project PRIVATE ORRINET_FAULTY_SCRIPT="${CMAKE_CURRENT_BINARY_DIR}/faulty.rcc")
add_dependencies(tests-project orrinet-faulty-script)
