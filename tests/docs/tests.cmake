orrinet_tests(docs
    SOURCES documentcheck.cpp documentcheck.h markdown.cpp markdown.h
    CLASSES
        tst_documents)
# What the documents say of a program is held against its own help, where it is built.
foreach(name IN ITEMS bridge study)
    if(TARGET orrinet-${name})
        string(TOUPPER ${name} variable)
        add_dependencies(tests-docs orrinet-${name})
        target_compile_definitions(tests-docs PRIVATE ORRINET_${variable}="$<TARGET_FILE:orrinet-${name}>")
    endif()
endforeach()
