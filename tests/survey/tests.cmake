orrinet_tests(survey
    SOURCES chatexchange.h recursiverun.cpp recursiverun.h runtrace.cpp runtrace.h
    CLASSES
        tst_answerrows
        tst_answers
        tst_chatfailures
        tst_chatreplies
        tst_chatrequester
        tst_keytravels
        tst_longruns
        tst_midrun
        tst_quitinrun
        tst_randomruns
        tst_requestassembly
        tst_run
        tst_runfailures
        tst_runhistory
        tst_runlog
        tst_skipcheck)

set_tests_properties(tst_longruns tst_skipcheck PROPERTIES COST 10)
