orrinet_tests(loopback
    CLASSES
        tst_gate
        tst_requestparser)
