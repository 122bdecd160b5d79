// Nothing can be written: a folder in which the user may not write, and a disk that nobody can write to.

#include "tests/faults/ownmounts.h"
#include "tests/support/entries.h"
#include "tests/support/messagelog.h"
#include "tests/support/shown.h"
#include "tests/support/sidedatabase.h"
#include "tests/support/testcase.h"
#include "tests/support/unprivileged.h"

#include <QDir>
#include <QFile>

#include <optional>

using namespace Qt::StringLiterals;

namespace {

enum class Lock { Rights, Mount };

/// A folder with a project and a pack in it, where nothing can be changed any more.
class LockedFolder
{
public:
    LockedFolder(Stage &stage, Lock lock)
        : folder(stage.path(u"locked"_s))
    {
        if (lock == Lock::Rights)
            user.emplace(stage);
        QDir().mkpath(folder);
        if (lock == Lock::Mount)
            disk.emplace(folder, u"ballast"_s, QByteArray(SmallDisk::pageSize, 'x'), 64);
        files = fill(stage);
        if (disk)
            disk->makeReadOnly();
        else
            QFile::setPermissions(folder, QFile::ReadOwner | QFile::ExeOwner);
    }
    ~LockedFolder() { QFile::setPermissions(folder, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner); }
    Q_DISABLE_COPY_MOVE(LockedFolder)

    QString path(const QString &name) const { return folder + u'/' + name; }
    bool isAsItWas() const { return now() == files; }

private:
    QMap<QString, QByteArray> now() const
    {
        QMap<QString, QByteArray> all;
        for (const auto names = QDir(folder).entryList(QDir::Files | QDir::Hidden); const QString &name : names)
            all.insert(name, readBytes(path(name)));
        return all;
    }
    QMap<QString, QByteArray> fill(Stage &stage)
    {
        stage.result("saveProjectToFile", path(u"saved.ormt"_s));
        stage.result("exportPackToFile", path(u"panel.ornk"_s));
        return now();
    }

    QString folder;
    std::optional<Unprivileged> user;
    std::optional<SmallDisk> disk;
    QMap<QString, QByteArray> files;
};

} // namespace

class TestReadOnly : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void nothing_is_written_and_nothing_lost_data() { addLocks(); }
    void nothing_is_written_and_nothing_lost()
    {
        if (goesOnInChild())
            return;
        QFETCH(const Lock, lock);
        Stage stage;
        QVERIFY(enterBeekeeper(stage, u"one"_s, u"Number One"_s, {u"bees"_s}));
        const LockedFolder folder(stage, lock);
        QVERIFY(enterBeekeeper(stage, u"two"_s, u"Number Two"_s));
        stage.call("loadProject");
        const QStringList rows = everyRow(stage.database());
        const MessageLog log;

        const QString other = folder.path(u"other.ormt"_s);
        QVERIFY(!stage.result("saveProjectToFile", other));
        QVERIFY(!stage.result("saveProjectToFile", folder.path(u"saved.ormt"_s)));
        QCOMPARE(log.warnings(),
                 QStringList({u"vacuum into failed unable to open database: %1 Unable to fetch row"_s.arg(other),
                              u"vacuum into failed output file already exists Unable to fetch row"_s}));
        QVERIFY(!stage.result("exportPackToFile", folder.path(u"other.ornk"_s)));
        // A pack that is there can be opened, and that is all the result says.
        QVERIFY(stage.result("exportPackToFile", folder.path(u"panel.ornk"_s)));
        QVERIFY(folder.isAsItWas());
        QCOMPARE(everyRow(stage.database()), rows);
        QVERIFY(stage.asksBeforeClosing());

        QVERIFY(stage.result("saveProjectToFile", stage.path(u"elsewhere.ormt"_s)));
        QVERIFY(!stage.asksBeforeClosing());
        QCOMPARE(log.warnings().size(), 2);
    }

    void what_can_be_read_is_opened_and_imported_data() { addLocks(); }
    void what_can_be_read_is_opened_and_imported()
    {
        if (goesOnInChild())
            return;
        QFETCH(const Lock, lock);
        Stage stage;
        QVERIFY(enterBeekeeper(stage, u"one"_s, u"Number One"_s, {u"bees"_s}));
        const LockedFolder folder(stage, lock);
        const QStringList rows = everyRow(stage.database());
        stage.call("newProject");
        stage.call("importPack", folder.path(u"panel.ornk"_s));
        QCOMPARE(shownPersonas(stage), QStringList{u"Number One"_s});
        Stage::setTestMode(true);
        QVERIFY(stage.result("openProjectFromFile", folder.path(u"saved.ormt"_s)));
        QCOMPARE(everyRow(stage.database()), rows);
        stage.call("loadPack", folder.path(u"panel.ornk"_s));
        QCOMPARE(shownPersonas(stage), QStringList{u"Number One"_s});
        QVERIFY(folder.isAsItWas());
    }

    void a_file_that_may_not_be_read_leaves_the_project_alone()
    {
        Stage stage;
        QVERIFY(enterBeekeeper(stage, u"one"_s, u"Number One"_s, {u"bees"_s}));
        const Unprivileged user(stage);
        const QString secret = writeProject(stage.path(u"secret.ormt"_s));
        QVERIFY(QFile::setPermissions(secret, {}));
        const QStringList rows = everyRow(stage.database());
        const MessageLog log;
        QVERIFY(!stage.result("openProjectFromFile", secret));
        stage.call("loadPack", secret);
        Stage::setTestMode(true);
        stage.call("importPack", secret);
        const auto refused = "unable to open database file Error opening database"_L1;
        QCOMPARE(log.warnings(),
                 QStringList({"failed to open project "_L1 + refused, "failed to open pack "_L1 + refused,
                              "failed to open pack "_L1 + refused}));
        QCOMPARE(everyRow(stage.database()), rows);
    }

private:
    static void addLocks()
    {
        QTest::addColumn<Lock>("lock");
        QTest::newRow("no right to write") << Lock::Rights;
        if (inChild() || canMount())
            QTest::newRow("mounted to be read") << Lock::Mount;
        else
            qInfo("a test may not mount here: the rights of a folder stand in for a disk that can only be read");
    }
    /// True where the test needs a process that may mount, and has been played in one.
    static bool goesOnInChild(const std::source_location &where = std::source_location::current())
    {
        QFETCH(const Lock, lock);
        if (lock != Lock::Mount || inChild())
            return false;
        passesInChild({}, enterOwnMounts, where);
        return true;
    }
};

ORRINET_TEST(TestReadOnly)
#include "tst_readonly.moc"
