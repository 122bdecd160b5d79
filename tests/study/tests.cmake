orrinet_tests(study
    CLASSES
        tst_cells
        tst_csv
        tst_export
        tst_exportjson
        tst_exportlosses
        tst_exportnames
        tst_exporttables
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
        tst_statfiles
        tst_statistics
        tst_statisticspanel
        tst_statisticsproof
        tst_studyproject
        tst_workbook
    SOURCES
        reportsample.cpp
        reportsample.h
        statread.cpp
        statread.h
        tableshow.cpp
        tableshow.h)
target_link_libraries(tests-study PRIVATE orrinet-study-parts ${ORRINET_readstat_LIBRARY})
add_dependencies(tests-study orrinet-study)
target_compile_definitions(tests-study PRIVATE ORRINET_STUDY="$<TARGET_FILE:orrinet-study>")
