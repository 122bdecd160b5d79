orrinet_tests(study
    CLASSES
        tst_cells
        tst_flawed
        tst_match
        tst_plots
        tst_report
        tst_reportagainst
        tst_reporthtml
        tst_reportpdf
        tst_reportphrases
        tst_reportrecorded
        tst_reportsameness
        tst_reportwording
        tst_statistics
        tst_statisticspanel
        tst_statisticsproof
        tst_studyproject
    SOURCES
        reportsample.cpp
        reportsample.h)
target_link_libraries(tests-study PRIVATE orrinet-study-parts)
add_dependencies(tests-study orrinet-study)
target_compile_definitions(tests-study PRIVATE ORRINET_STUDY="$<TARGET_FILE:orrinet-study>")
