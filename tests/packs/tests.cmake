orrinet_tests(packs
    SOURCES importing.h samplepacks.cpp samplepacks.h
    CLASSES
        tst_packbrowsing
        tst_packdialogs
        tst_packexport
        tst_packexportover
        tst_packimport
        tst_packimportfailures
        tst_packlocked
        tst_packoperations
        tst_packpaths
        tst_packreplace
        tst_packroundtrip
        tst_packtagfilter
        tst_packtagmerge
        tst_packwithoutproject)
