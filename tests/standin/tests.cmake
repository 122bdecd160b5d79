orrinet_tests(standin
    CLASSES
        tst_chatendpoint
        tst_reply
        tst_respondent)
