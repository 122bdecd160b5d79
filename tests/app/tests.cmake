# The resource script of the Windows build is tested where its compiler is at hand; on Linux it has to be.
find_program(ORRINET_WINDRES x86_64-w64-mingw32-windres)
mark_as_advanced(ORRINET_WINDRES)

set(bound)
if(UNIX)
    # The real program, looked into through a plugin of Qt that the test names in the environment.
    list(APPEND bound tst_identity)
    add_library(orrinet-remote MODULE app/remote.cpp)
    set(remoteFolder ${CMAKE_CURRENT_BINARY_DIR}/plugins)
    set_target_properties(orrinet-remote PROPERTIES LIBRARY_OUTPUT_DIRECTORY ${remoteFolder}/generic UNITY_BUILD OFF)
    target_link_libraries(orrinet-remote PRIVATE orrinet-flags Qt6::Widgets Qt6::Sql)
endif()
if(NOT APPLE)
    # The Mac knows no mnemonics.
    list(APPEND bound tst_mnemonics)
endif()
if(ORRINET_WINDRES OR CMAKE_SYSTEM_NAME STREQUAL "Linux")
    list(APPEND bound tst_versionrecord)
endif()

orrinet_tests(app
    SOURCES dialoganswers.cpp dialoganswers.h eventchecks.cpp eventchecks.h eventdriver.cpp eventdriver.h eventfiles.cpp
        eventpacks.cpp eventpersonas.cpp eventquestions.cpp eventruns.cpp eventsteps.cpp eventsteps.h eventviews.cpp
        eventviews.h eventwindow.cpp runwatch.cpp runwatch.h
    CLASSES
        tst_about
        tst_events
        tst_icons
        tst_mainwindow
        tst_menus
        tst_metaobject
        tst_quit
        tst_resources
        tst_wiring
        ${bound})

if(UNIX)
    add_dependencies(tests-app orrinet orrinet-remote)
endif()
target_compile_definitions(tests-app PRIVATE
    ORRINET_AUTOGEN_FOLDER="$<TARGET_PROPERTY:orrinet-core,BINARY_DIR>/orrinet-core_autogen"
    ORRINET_PROGRAM="$<TARGET_FILE:orrinet>" ORRINET_REMOTE_FOLDER="${remoteFolder}"
    ORRINET_COMPILER="${CMAKE_CXX_COMPILER}" ORRINET_WINDRES="${ORRINET_WINDRES}")
