orrinet_tests(fuzz
    CLASSES
        tst_fuzzcorpora
        tst_hostilefiles)
target_link_libraries(tests-fuzz PRIVATE orrinet-fuzztargets)
