# A program for each part of orrinet-study, as its folders are.
function(orrinet_study_tests folder)
    orrinet_tests(${folder} ${ARGN})
    string(REPLACE "/" "-" program tests-${folder})
    target_link_libraries(${program} PRIVATE orrinet-study-parts)
    add_dependencies(${program} orrinet-study)
    target_compile_definitions(${program} PRIVATE ORRINET_STUDY="$<TARGET_FILE:orrinet-study>")
endfunction()

orrinet_study_tests(study
    CLASSES
        tst_cells
        tst_match
        tst_studyproject
        tst_studyrecord)

orrinet_study_tests(study/check
    CLASSES
        tst_check
        tst_checkfindings
        tst_checkrequests
        tst_checksizes
        tst_checktokens
        tst_checkwording)

orrinet_study_tests(study/export
    SOURCES
        statread.cpp
        statread.h
        tableshow.cpp
        tableshow.h
    CLASSES
        tst_csv
        tst_export
        tst_exportjson
        tst_exportlosses
        tst_exportnames
        tst_exporttables
        tst_statfiles
        tst_workbook)
target_link_libraries(tests-study-export PRIVATE ${ORRINET_readstat_LIBRARY})

orrinet_study_tests(study/report
    SOURCES
        reportsample.cpp
        reportsample.h
    CLASSES
        tst_plots
        tst_report
        tst_reportagainst
        tst_reporthtml
        tst_reportpdf
        tst_reportphrases
        tst_reportrecorded
        tst_reportsameness
        tst_reportwording)

orrinet_study_tests(study/statistics
    CLASSES
        tst_flawed
        tst_statistics
        tst_statisticspanel
        tst_statisticsproof)
