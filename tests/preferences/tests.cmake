orrinet_test(preferences/tst_preferences.cpp)
if(CMAKE_SYSTEM_NAME STREQUAL "Linux")
    orrinet_test(preferences/tst_settingsfile.cpp)
endif()
