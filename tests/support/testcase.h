#pragma once

#include <QObject>

#include <memory>

/// All test classes are part of one program. Each is registered under the name of its file and run by it, in a process
/// of its own: `orrinet-tests tst_name [QtTest's arguments]`.
using MakeTest = std::unique_ptr<QObject> (*)();

/// Always true, to be kept in a static.
bool registerTest(const char *file, MakeTest make);

/// Stands at the end of the file of a test class, in place of QTEST_MAIN.
#define ORRINET_TEST(Class)                                                                                            \
    [[maybe_unused]] static const bool registered##Class =                                                             \
        registerTest(__FILE__, [] { return std::unique_ptr<QObject>(std::make_unique<Class>()); });

/// True if the resource tree was there when main() began.
bool resourcesStoodBeforeMain();
