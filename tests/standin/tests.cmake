orrinet_test(standin/tst_chatendpoint.cpp)
orrinet_test(standin/tst_reply.cpp)
orrinet_test(standin/tst_respondent.cpp)
