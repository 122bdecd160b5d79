# What is taken away here, and how a process is killed, is done by means of Linux.
if(CMAKE_SYSTEM_NAME STREQUAL "Linux")
    # The sanitizers take more address space than a limit to it can leave them, and descriptors to look at an object.
    if(NOT ORRINET_SANITIZE)
        set(shortOfAll tst_descriptors tst_hugereply)
    endif()
    orrinet_tests(faults
        SOURCES
            childrun.cpp
            childrun.h
            descriptorshortage.cpp
            descriptorshortage.h
            killeduser.cpp
            killeduser.h
            ownmounts.cpp
            ownmounts.h
            remoteendpoint.cpp
            remoteendpoint.h
            scarceroom.cpp
            scarceroom.h
            systemcalls.cpp
            systemcalls.h
        CLASSES
            ${shortOfAll}
            tst_fulldisk
            tst_killed
            tst_nosettings
            tst_readonly)
    # The libraries are to find the program's own forms of some system calls.
    set_target_properties(tests-faults PROPERTIES ENABLE_EXPORTS ON)
endif()
