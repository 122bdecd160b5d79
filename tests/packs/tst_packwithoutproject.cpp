// A pack shown by a window that has no project, since Qt found no SQLite driver when it was made. A class of its own,
// since a driver once loaded is never forgotten.

#include "tests/packs/samplepacks.h"
#include "tests/support/messagelog.h"
#include "tests/support/testcase.h"

#include <QComboBox>
#include <QTableWidget>
#include <QTest>

using namespace Qt::StringLiterals;

class TestPackWithoutProject : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void the_pack_is_all_that_is_read()
    {
        Stage stage;
        const QStringList libraries = QCoreApplication::libraryPaths();
        {
            const MessageLog log;
            QCoreApplication::setLibraryPaths({});
            stage.window();
            QCoreApplication::setLibraryPaths(libraries);
            QVERIFY(
                log.warnings().contains(u"failed to create in-memory project Driver not loaded Driver not loaded"_s));
        }
        QVERIFY(!stage.database().isOpen());
        QCOMPARE(tagFilter(stage)->count(), 0);

        stage.call("loadPack", writeCoastalPack(stage.path(u"coast.ornk"_s)));
        QCOMPARE(shownPersonas(stage), coastalNames());
        QCOMPARE(items(tagFilter(stage)), QStringList({u"All"_s, u"coastal"_s, u"remote"_s, u"urban"_s}));
        tagFilter(stage)->setCurrentText(u"urban"_s);
        QCOMPARE(shownPersonas(stage), QStringList({u"Number One"_s, u"Number Three"_s}));

        // The operations on the rows do nothing, and the refresh shows that there is no project.
        QVERIFY(makeCurrent(stage, u"11111111-aaaa"_s));
        stage.call("deletePersona");
        stage.call("copyPersona");
        QCOMPARE(personaTable(stage)->rowCount(), 2);
        stage.call("loadProject");
        QCOMPARE(personaTable(stage)->rowCount(), 0);
        tagFilter(stage)->setCurrentText(u"coastal"_s);
        QCOMPARE(shownPersonas(stage), QStringList({u"Number One"_s, u"Number Two"_s}));
        QVERIFY(!stage.asksBeforeClosing());
    }
};

ORRINET_TEST(TestPackWithoutProject)
#include "tst_packwithoutproject.moc"
