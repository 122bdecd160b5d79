# The script for people, which needs nothing built.
add_test(NAME tst_dev COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/dev/tst_dev)
set_tests_properties(tst_dev PROPERTIES TIMEOUT 300 ENVIRONMENT
    "ORRINET_REGISTERED_TESTS=${CMAKE_CURRENT_BINARY_DIR}/CTestTestfile.cmake")
