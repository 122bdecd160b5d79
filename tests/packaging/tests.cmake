set(classes tst_installation)
if(ORRINET_BRIDGE OR ORRINET_STUDY)
    list(APPEND classes tst_completion tst_manual)
endif()
orrinet_tests(packaging CLASSES ${classes})
target_compile_definitions(tests-packaging PRIVATE
    ORRINET_CMAKE="${CMAKE_COMMAND}"
    ORRINET_BUILD_FOLDER="${PROJECT_BINARY_DIR}")
# What is installed has to be there.
add_dependencies(tests-packaging orrinet)
foreach(tool IN ITEMS bridge study)
    string(TOUPPER ${tool} upper)
    if(ORRINET_${upper})
        add_dependencies(tests-packaging orrinet-${tool}-manual)
        target_compile_definitions(tests-packaging PRIVATE ORRINET_${upper}="$<TARGET_FILE:orrinet-${tool}>")
    endif()
endforeach()
