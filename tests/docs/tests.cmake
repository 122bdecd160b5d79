# The pages of docs/ against the programs that they are about.
orrinet_study_tests(docs
    SOURCES
        page.cpp
        page.h
    CLASSES
        tst_formats
        tst_snippets)
target_link_libraries(tests-docs PRIVATE orrinet-bridge-parts)
