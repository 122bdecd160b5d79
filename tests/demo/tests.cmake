orrinet_tests(demo
    CLASSES
        tst_answercheck
        tst_demoprogram
        tst_examples
        tst_secondlook)
target_link_libraries(tests-demo PRIVATE orrinet-demo-parts)
add_dependencies(tests-demo orrinet-demo)
target_compile_definitions(tests-demo PRIVATE ORRINET_DEMO_PROGRAM="$<TARGET_FILE:orrinet-demo>")
