# The program's files are compiled one by one, since one of them changes at a time; the tests, which don't, all together.
cmake_language(DEFER CALL set_target_properties orrinet-core PROPERTIES UNITY_BUILD OFF)
