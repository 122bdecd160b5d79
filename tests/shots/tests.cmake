orrinet_tests(shots
    SOURCES likeness.cpp likeness.h
    CLASSES tst_shots)
add_dependencies(tests-shots orrinet-shots)
target_compile_definitions(tests-shots PRIVATE ORRINET_SHOTS_PROGRAM="$<TARGET_FILE:orrinet-shots>")
if(ORRINET_STUDY)
    add_dependencies(tests-shots orrinet-study)
    target_compile_definitions(tests-shots PRIVATE ORRINET_STUDY="$<TARGET_FILE:orrinet-study>")
endif()
