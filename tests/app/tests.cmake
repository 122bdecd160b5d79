orrinet_test(app/tst_metaobject.cpp)
orrinet_test(app/tst_about.cpp)
orrinet_test(app/tst_icons.cpp)
orrinet_test(app/tst_mainwindow.cpp)
orrinet_test(app/tst_menus.cpp)
orrinet_test(app/tst_pages.cpp)
orrinet_test(app/tst_wiring.cpp)
orrinet_test(app/tst_quit.cpp)

orrinet_test(app/tst_resources.cpp)
target_compile_definitions(tst_resources PRIVATE
    ORRINET_SOURCE_FOLDER="${PROJECT_SOURCE_DIR}"
    ORRINET_AUTOGEN_FOLDER="$<TARGET_PROPERTY:orrinet-core,BINARY_DIR>/orrinet-core_autogen")

# The real program, looked into through a plugin of Qt that the test names in the environment.
if(UNIX)
    add_library(orrinet-remote MODULE app/remote.cpp)
    set(remoteFolder ${CMAKE_CURRENT_BINARY_DIR}/plugins)
    set_target_properties(orrinet-remote PROPERTIES LIBRARY_OUTPUT_DIRECTORY ${remoteFolder}/generic)
    target_link_libraries(orrinet-remote PRIVATE orrinet-flags Qt6::Widgets Qt6::Sql)
    orrinet_test(app/tst_identity.cpp)
    target_compile_definitions(tst_identity PRIVATE
        ORRINET_PROGRAM="$<TARGET_FILE:orrinet>" ORRINET_REMOTE_FOLDER="${remoteFolder}")
    add_dependencies(tst_identity orrinet orrinet-remote)
endif()

# The resource script of the Windows build, where its compiler is at hand.
find_program(ORRINET_WINDRES x86_64-w64-mingw32-windres)
mark_as_advanced(ORRINET_WINDRES)
orrinet_test(app/tst_versionrecord.cpp)
target_compile_definitions(tst_versionrecord PRIVATE
    ORRINET_SOURCE_FOLDER="${PROJECT_SOURCE_DIR}" ORRINET_COMPILER="${CMAKE_CXX_COMPILER}"
    ORRINET_WINDRES="$<$<BOOL:${ORRINET_WINDRES}>:${ORRINET_WINDRES}>")
set_tests_properties(tst_versionrecord PROPERTIES LABELS windows)
