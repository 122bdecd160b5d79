orrinet_tests(inspect
    CLASSES
        tst_chatlogappend
        tst_chatlogwindow
        tst_conversation
        tst_gridpatch
        tst_gridrefresh
        tst_newestanswers
        tst_resultsgrid
        tst_showconversation
        tst_textsizedelegate)

# The random histories take longest of all tests.
set_tests_properties(tst_gridpatch PROPERTIES COST 60)
