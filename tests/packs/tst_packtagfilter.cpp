// The tag filter once a pack has been shown: it works on the pack from then on.

#include "tests/packs/importing.h"
#include "tests/packs/samplepacks.h"
#include "tests/support/messagelog.h"
#include "tests/support/testcase.h"

#include <QAction>
#include <QComboBox>
#include <QDir>
#include <QTableWidget>
#include <QTest>

using namespace Qt::StringLiterals;

using Attempt = std::function<void(Stage &)>;

class TestPackTagFilter : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void a_tag_shows_its_personas_and_itself_alone()
    {
        Stage stage;
        stage.call("loadPack", writeCoastalPack(stage.path(u"coast.ornk"_s)));
        const QStringList all = {u"Number Four: "_s, u"Number One: coastal,urban"_s, u"Number Three: urban"_s,
                                 u"Number Two: coastal"_s};
        QCOMPARE(shownTags(stage), all);
        tagFilter(stage)->setCurrentText(u"coastal"_s);
        QCOMPARE(shownTags(stage), QStringList({u"Number One: coastal"_s, u"Number Two: coastal"_s}));
        QCOMPARE(tagFilter(stage)->currentText(), u"coastal"_s);
        tagFilter(stage)->setCurrentText(u"remote"_s);
        QCOMPARE(personaTable(stage)->rowCount(), 0);
        QCOMPARE(tagFilter(stage)->currentText(), u"remote"_s);
        tagFilter(stage)->setCurrentText(u"All"_s);
        QCOMPARE(shownTags(stage), all);
        QVERIFY(!stage.asksBeforeClosing());
    }

    void a_tag_that_the_pack_lacks_still_filters_under_all()
    {
        Stage stage;
        QVERIFY(showProject(stage));
        tagFilter(stage)->setCurrentText(u"rural"_s);
        stage.call("loadPack", writeCoastalPack(stage.path(u"coast.ornk"_s)));
        QCOMPARE(tagFilter(stage)->currentText(), u"All"_s);
        QCOMPARE(personaTable(stage)->rowCount(), 0);
        // The next change puts it right.
        tagFilter(stage)->setCurrentText(u"urban"_s);
        QCOMPARE(shownPersonas(stage), QStringList({u"Number One"_s, u"Number Three"_s}));
        tagFilter(stage)->setCurrentText(u"All"_s);
        QCOMPARE(shownPersonas(stage), coastalNames());
    }

    void some_names_of_tags_stand_for_no_filter_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QStringList>("shown");
        const QStringList both = {u"One"_s, u"Two"_s};
        QTest::addRow("All") << u"All"_s << both;
        QTest::addRow("no text") << u""_s << both;
        QTest::addRow("all, in small letters") << u"all"_s << QStringList{u"One"_s};
        QTest::addRow("with a blank") << u"New York"_s << QStringList{u"One"_s};
        QTest::addRow("with quotes") << u"the 'old\" town"_s << QStringList{u"One"_s};
    }

    void some_names_of_tags_stand_for_no_filter()
    {
        QFETCH(QString, name);
        Stage stage;
        stage.call("loadPack", packOf(stage.path(u"two.ornk"_s), TagEntered{9, u"zonal"_s},
                                      PersonaEntered{.uuid = u"u1"_s, .name = u"One"_s, .tags = {name}},
                                      PersonaEntered{.uuid = u"u2"_s, .name = u"Two"_s}));
        QCOMPARE(items(tagFilter(stage)).count(name), name == "All"_L1 ? 2 : 1);
        tagFilter(stage)->setCurrentText(u"zonal"_s);
        QCOMPARE(personaTable(stage)->rowCount(), 0);
        // The entry of the tag is the last of its name.
        tagFilter(stage)->setCurrentIndex(static_cast<int>(items(tagFilter(stage)).lastIndexOf(name)));
        QTEST(shownPersonas(stage), "shown");
    }

    void the_pack_is_read_anew_at_every_change()
    {
        Stage stage;
        const QString path = writeCoastalPack(stage.path(u"coast.ornk"_s));
        stage.call("loadPack", path);
        {
            SideDatabase pack(path);
            QVERIFY(enter(pack, TagEntered{8, u"alpine"_s}, LinkEntered{u"22222222-bbbb"_s, 1}));
        }
        tagFilter(stage)->setCurrentText(u"urban"_s);
        QCOMPARE(items(tagFilter(stage)).at(1), u"alpine"_s);
        QCOMPARE(shownPersonas(stage), QStringList({u"Number One"_s, u"Number Three"_s, u"Number Two"_s}));
    }

    void nothing_leads_the_filter_back_to_the_project_data()
    {
        QTest::addColumn<Attempt>("attempt");
        QTest::addColumn<QStringList>("shown");
        const QStringList mine = {u"Mine"_s, u"Mine, too"_s};
        QTest::addRow("refresh") << Attempt([](Stage &stage) { stage.call("loadProject"); }) << mine;
        QTest::addRow("New Project") << Attempt([](Stage &stage) { stage.action(u"New Project"_s)->trigger(); })
                                     << QStringList{};
        QTest::addRow("opening a project")
            << Attempt([](Stage &stage) { QVERIFY(stage.result("openProjectFromFile", stage.path(u"saved.ormt"_s))); })
            << mine;
        QTest::addRow("importing a pack") << Attempt([](Stage &stage) {
            QVERIFY(importAppending(stage, packOf(stage.path(u"one.ornk"_s), PersonaEntered{u"u1"_s, u"One"_s})));
        }) << mine + QStringList{u"One"_s};
        QTest::addRow("new persona") << Attempt([](Stage &stage) {
            stage.call("insertPersona", u"Alpha"_s, u"New."_s);
        }) << QStringList{u"Alpha"_s} + mine;
    }

    void nothing_leads_the_filter_back_to_the_project()
    {
        QFETCH(const Attempt, attempt);
        Stage stage;
        QVERIFY(showProject(stage));
        QVERIFY(stage.result("saveProjectToFile", stage.path(u"saved.ormt"_s)));
        stage.call("loadPack", writeCoastalPack(stage.path(u"coast.ornk"_s)));
        attempt(stage);
        QTEST(shownPersonas(stage), "shown");

        // What is chosen is a tag of the project; the pack comes back with it, or with nothing.
        QVERIFY(stage.exec(u"INSERT OR IGNORE INTO tags VALUES (77, 'coastal')"_s));
        refreshQuietly(stage);
        tagFilter(stage)->setCurrentText(u"coastal"_s);
        QCOMPARE(shownPersonas(stage), QStringList({u"Number One"_s, u"Number Two"_s}));
        QCOMPARE(items(tagFilter(stage)), QStringList({u"All"_s, u"coastal"_s, u"remote"_s, u"urban"_s}));
    }

    void a_path_that_can_not_be_opened_is_tried_at_every_change()
    {
        Stage stage;
        QVERIFY(showProject(stage));
        const QString path = stage.path(u"later/twins.ornk"_s);
        const QString warning = u"failed to open pack "_s + openError(path);
        {
            const MessageLog log;
            stage.call("loadPack", path);
            QCOMPARE(log.warnings(), QStringList{warning});
            QCOMPARE(personaTable(stage)->rowCount(), 0);
            QCOMPARE(items(tagFilter(stage)), QStringList({u"All"_s, u"coastal"_s, u"rural"_s}));

            stage.call("loadProject");
            QCOMPARE(personaTable(stage)->rowCount(), 2);
            tagFilter(stage)->setCurrentText(u"rural"_s);
            QCOMPARE(log.warnings(), QStringList({warning, warning}));
            QCOMPARE(personaTable(stage)->rowCount(), 0);
            QCOMPARE(tagFilter(stage)->currentText(), u"rural"_s);
        }
        QCOMPARE(QSqlDatabase::connectionNames(), QStringList{u"project"_s});

        QVERIFY(QDir().mkpath(stage.path(u"later"_s)));
        writeCoastalPack(path);
        tagFilter(stage)->setCurrentText(u"coastal"_s);
        QCOMPARE(shownPersonas(stage), QStringList({u"Number One"_s, u"Number Two"_s}));
    }

    void no_path_is_the_path_of_no_pack()
    {
        Stage stage;
        QVERIFY(showProject(stage));
        stage.call("loadPack", writeCoastalPack(stage.path(u"coast.ornk"_s)));
        {
            const MessageLog log;
            stage.call("loadPack", QString());
            QCOMPARE(log.warnings(), QStringList{u"no such table: personas Unable to execute statement"_s});
        }
        QCOMPARE(personaTable(stage)->rowCount(), 0);
        QCOMPARE(items(tagFilter(stage)), QStringList{u"All"_s});
        stage.call("applyTagFilter");
        QCOMPARE(shownPersonas(stage), QStringList({u"Mine"_s, u"Mine, too"_s}));
    }

    void the_pack_is_shown_without_an_open_project()
    {
        Stage stage;
        QVERIFY(showProject(stage));
        stage.database().close();
        // Without a pack there is nothing to show.
        stage.call("applyTagFilter");
        QCOMPARE(personaTable(stage)->rowCount(), 2);

        stage.call("loadPack", writeCoastalPack(stage.path(u"coast.ornk"_s)));
        QCOMPARE(shownPersonas(stage), coastalNames());
        tagFilter(stage)->setCurrentText(u"urban"_s);
        QCOMPARE(shownPersonas(stage), QStringList({u"Number One"_s, u"Number Three"_s}));
        QVERIFY(!stage.asksBeforeClosing());
    }
};

ORRINET_TEST(TestPackTagFilter)
#include "tst_packtagfilter.moc"
