# The mode of the file that the settings lie in is the program's business where that file is Qt's own.
if(CMAKE_SYSTEM_NAME STREQUAL "Linux")
    set(onLinux tst_keyfile tst_settingsfile)
endif()

orrinet_tests(preferences
    CLASSES
        tst_preferences
        ${onLinux})
