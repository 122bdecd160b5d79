orrinet_tests(study
    CLASSES
        tst_cells
        tst_check
        tst_checkfindings
        tst_checkrequests
        tst_checksizes
        tst_checktokens
        tst_checkwording
        tst_match
        tst_studyproject
        tst_studyrecord)
target_link_libraries(tests-study PRIVATE orrinet-study-parts)
add_dependencies(tests-study orrinet-study)
target_compile_definitions(tests-study PRIVATE ORRINET_STUDY="$<TARGET_FILE:orrinet-study>")
