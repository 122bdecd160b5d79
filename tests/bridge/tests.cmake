orrinet_tests(bridge
    SOURCES bridgestage.cpp bridgestage.h way.cpp way.h
    CLASSES
        tst_bridge
        tst_bridgeaccess
        tst_bridgerun
        tst_bridgewindow
        tst_endpoint
        tst_options
        tst_pace
        tst_record
        tst_retry
        tst_rundisk
        tst_runfiles
        tst_runinterrupt
        tst_runjobs
        tst_runkey
        tst_runkills
        tst_runlimits
        tst_runoutput
        tst_runrecord
        tst_translation)
target_link_libraries(tests-bridge PRIVATE orrinet-bridge-parts orrinet-demo-parts)
add_dependencies(tests-bridge orrinet-bridge)
target_compile_definitions(tests-bridge PRIVATE ORRINET_BRIDGE="$<TARGET_FILE:orrinet-bridge>")
