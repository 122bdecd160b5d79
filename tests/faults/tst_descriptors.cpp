// No file can be opened any more: the system gives the process no further descriptor.

#include "tests/faults/descriptorshortage.h"
#include "tests/faults/remoteendpoint.h"
#include "tests/support/entries.h"
#include "tests/support/messagelog.h"
#include "tests/support/shown.h"
#include "tests/support/sidedatabase.h"
#include "tests/support/testcase.h"

#include <QAction>
#include <QFile>
#include <QFileInfo>
#include <QSignalSpy>

using namespace Qt::StringLiterals;

namespace {

/// More than anything here takes.
constexpr int plenty = 24;

/// Runs the survey to its end.
bool ranToTheEnd(Stage &stage)
{
    QAction *entry = stage.action(u"Run"_s);
    QSignalSpy changed(entry, &QAction::enabledChanged);
    entry->trigger();
    while (!entry->isEnabled()) {
        if (!changed.wait(20'000))
            return false;
    }
    return true;
}

} // namespace

class TestDescriptors : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void a_save_or_an_export_without_descriptors_leaves_all_as_it_was()
    {
        if (!inChild()) {
            passesInChild();
            return;
        }
        Stage stage;
        QVERIFY(enterBeekeeper(stage, u"one"_s, u"Number One"_s, {u"bees"_s}));
        stage.call("loadProject");
        const QStringList rows = everyRow(stage.database());
        const QString earlier = stage.path(u"earlier.ormt"_s);
        QVERIFY(stage.result("saveProjectToFile", earlier));
        const QByteArray before = readBytes(earlier);
        stage.call("loadProject");
        bool saved = false;
        for (int left = 0; !saved; ++left) {
            const QString path = stage.path(u"saved%1.ormt"_s.arg(left));
            const QString pack = stage.path(u"panel%1.ornk"_s.arg(left));
            const MessageLog log;
            bool exported = false;
            {
                const DescriptorShortage shortage(left);
                saved = stage.result("saveProjectToFile", path);
                exported = stage.result("exportPackToFile", pack);
            }
            QCOMPARE(everyRow(stage.database()), rows);
            QCOMPARE(readBytes(earlier), before);
            QCOMPARE(stage.asksBeforeClosing(), !saved);
            QCOMPARE(log.warnings().size(), saved ? 0 : 1);
            QVERIFY(saved || log.warnings().constFirst().startsWith("vacuum into failed unable to open database"_L1));
            // A pack that can be made and not be written is none the less made, and empty.
            QCOMPARE(exported, left > 0);
            QCOMPARE(QFile::exists(pack), left > 0);
            QVERIFY(QFileInfo(path).size() == 0 || saved);
            QVERIFY(left < plenty);
        }
    }

    void an_import_without_descriptors_adds_nothing()
    {
        if (!inChild()) {
            passesInChild();
            return;
        }
        Stage stage;
        QVERIFY(enterBeekeeper(stage, u"one"_s, u"Number One"_s, {u"bees"_s}));
        const QString pack = writePack(stage.path(u"pack.ornk"_s),
                                       {u"INSERT INTO personas (uuid, name) VALUES ('two', 'Number Two')"_s});
        Stage::setTestMode(true);
        const QStringList rows = everyRow(stage.database());
        const MessageLog log;
        {
            const DescriptorShortage shortage(0);
            stage.call("importPack", pack);
            stage.call("loadPack", pack);
        }
        const QString refused = u"failed to open pack unable to open database file Error opening database"_s;
        QCOMPARE(log.warnings(), QStringList({refused, refused}));
        QCOMPARE(everyRow(stage.database()), rows);
        stage.call("importPack", pack);
        QCOMPARE(stage.count(u"personas"_s), 2);
    }

    void a_project_is_opened_with_two_descriptors_and_kept_without_any()
    {
        if (!inChild()) {
            passesInChild();
            return;
        }
        Stage stage;
        QVERIFY(enterBeekeeper(stage, u"one"_s, u"Number One"_s, {u"bees"_s}));
        const QStringList rows = everyRow(stage.database());
        const QString file = stage.path(u"saved.ormt"_s);
        QVERIFY(stage.result("saveProjectToFile", file));
        const QByteArray before = readBytes(file);
        const auto opens = [&stage, &file](int left) {
            const DescriptorShortage shortage(left);
            return stage.result("openProjectFromFile", file);
        };
        const MessageLog log;
        QVERIFY(!opens(0));
        QCOMPARE(log.warnings(), QStringList{u"failed to open project unable to open database file "
                                             "Error opening database"_s});
        QCOMPARE(everyRow(stage.database()), rows);
        // The file can be opened once and not twice: the former project is given up by then, the file is not touched.
        QVERIFY(!opens(1));
        QCOMPARE(log.warnings().size(), 2);
        QCOMPARE(readBytes(file), before);
        QVERIFY(opens(2));
        QCOMPARE(everyRow(stage.database()), rows);
        QCOMPARE(log.warnings().size(), 2);
    }

    void a_run_without_descriptors_fails_pair_by_pair_data()
    {
        QTest::addColumn<int>("left");
        for (const int left : {0, 2, 4, 8, 15, 16, plenty})
            QTest::addRow("%d left", left) << left;
    }
    void a_run_without_descriptors_fails_pair_by_pair()
    {
        if (!inChild()) {
            const standin::ChatEndpoint endpoint;
            passesInChild(leadingTo(endpoint));
            // Each pair is answered once, in the one run or in the other.
            QCOMPARE(endpoint.requests().size(), 3);
            return;
        }
        useRemoteEndpoint();
        QFETCH(const int, left);
        Stage stage;
        Stage::setSetting(u"openai/api_key"_s, u"test-key"_s);
        stage.call("insertPersona", u"P1"_s, u"P1"_s);
        for (const auto prompt : {"Q1"_L1, "Q2"_L1, "Q3"_L1})
            stage.call("insertQuestion", QString(prompt), u"text"_s, false);
        const MessageLog log;
        {
            const DescriptorShortage shortage(left);
            QVERIFY(ranToTheEnd(stage));
        }
        const bool enough = left == plenty;
        QCOMPARE(stage.count(u"responses"_s), enough ? 3 : 3 - int(log.warnings().size()));
        QVERIFY(left > 15 || stage.count(u"responses"_s) == 0);
        for (const QString &warning : log.warnings())
            QCOMPARE(warning, u"survey error: Too many open files (code 99)"_s);
        QVERIFY(ranToTheEnd(stage));
        QCOMPARE(stage.count(u"responses"_s), 3);
    }
};

ORRINET_TEST(TestDescriptors)
#include "tst_descriptors.moc"
