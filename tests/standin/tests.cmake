orrinet_tests(standin
    CLASSES
        tst_chatendpoint
        tst_privatehome
        tst_reply
        tst_respondent
        tst_strictness)
