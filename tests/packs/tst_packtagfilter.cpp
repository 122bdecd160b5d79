// The tag filter once a pack has been shown: it works on the pack from then on.

#include "tests/packs/importbox.h"
#include "tests/packs/packbrowser.h"
#include "tests/support/messagelog.h"

#include <QAction>
#include <QDir>
#include <QTest>

using namespace Qt::StringLiterals;

class TestPackTagFilter : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void all_shows_personas_without_tags_too()
    {
        Stage stage;
        QVERIFY(stage.call("loadPack", writeCoastalPack(stage.path(u"coast.ornk"_s))));
        QCOMPARE(shownTags(stage), QStringList({u"Number Four: "_s, u"Number One: coastal,urban"_s,
                                                u"Number Three: urban"_s, u"Number Two: coastal"_s}));
    }

    void a_tag_shows_its_personas_and_itself_alone()
    {
        Stage stage;
        QVERIFY(stage.call("loadPack", writeCoastalPack(stage.path(u"coast.ornk"_s))));
        tagFilter(stage)->setCurrentText(u"coastal"_s);
        QCOMPARE(shownTags(stage), QStringList({u"Number One: coastal"_s, u"Number Two: coastal"_s}));
        QCOMPARE(tagFilter(stage)->currentText(), u"coastal"_s);
        tagFilter(stage)->setCurrentText(u"remote"_s);
        QCOMPARE(personaTable(stage)->rowCount(), 0);
        QCOMPARE(tagFilter(stage)->currentText(), u"remote"_s);
        tagFilter(stage)->setCurrentText(u"All"_s);
        QCOMPARE(shownNames(stage), coastalNames());
        QVERIFY(!stage.asksBeforeClosing());
    }

    void the_filter_of_the_project_holds_for_the_pack()
    {
        Stage stage;
        QVERIFY(showProject(stage));
        tagFilter(stage)->setCurrentText(u"coastal"_s);
        QVERIFY(stage.call("loadPack", writeCoastalPack(stage.path(u"coast.ornk"_s))));
        QCOMPARE(tagFilter(stage)->currentText(), u"coastal"_s);
        QCOMPARE(shownTags(stage), QStringList({u"Number One: coastal"_s, u"Number Two: coastal"_s}));
    }

    void a_tag_that_the_pack_lacks_still_filters_under_all()
    {
        Stage stage;
        QVERIFY(showProject(stage));
        tagFilter(stage)->setCurrentText(u"rural"_s);
        QVERIFY(stage.call("loadPack", writeCoastalPack(stage.path(u"coast.ornk"_s))));
        QCOMPARE(tagFilter(stage)->currentText(), u"All"_s);
        QCOMPARE(personaTable(stage)->rowCount(), 0);
        // The next change puts it right.
        tagFilter(stage)->setCurrentText(u"urban"_s);
        QCOMPARE(shownNames(stage), QStringList({u"Number One"_s, u"Number Three"_s}));
        tagFilter(stage)->setCurrentText(u"All"_s);
        QCOMPARE(shownNames(stage), coastalNames());
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
        const QString path =
            writePack(stage.path(u"two.ornk"_s),
                      {persona(u"u1"_s, u"One"_s), persona(u"u2"_s, u"Two"_s), tag(9, u"zonal"_s), link(u"u1"_s, 7)});
        {
            FileDatabase pack(path);
            QVERIFY(pack.exec(u"INSERT INTO tags VALUES (7, ?)"_s, {name}));
        }
        QVERIFY(stage.call("loadPack", path));
        QCOMPARE(entries(tagFilter(stage)).count(name), name == "All"_L1 ? 2 : 1);
        tagFilter(stage)->setCurrentText(u"zonal"_s);
        QCOMPARE(personaTable(stage)->rowCount(), 0);
        // The entry of the tag is the last of its name.
        tagFilter(stage)->setCurrentIndex(static_cast<int>(entries(tagFilter(stage)).lastIndexOf(name)));
        QTEST(shownNames(stage), "shown");
    }

    void the_pack_is_read_anew_at_every_change()
    {
        Stage stage;
        const QString path = writeCoastalPack(stage.path(u"coast.ornk"_s));
        QVERIFY(stage.call("loadPack", path));
        {
            FileDatabase pack(path);
            QVERIFY(pack.exec({tag(8, u"alpine"_s), link(u"22222222-bbbb"_s, 1)}));
        }
        tagFilter(stage)->setCurrentText(u"urban"_s);
        QCOMPARE(entries(tagFilter(stage)).at(1), u"alpine"_s);
        QCOMPARE(shownNames(stage), QStringList({u"Number One"_s, u"Number Three"_s, u"Number Two"_s}));
    }

    void nothing_leads_the_filter_back_to_the_project_data()
    {
        QTest::addColumn<std::function<void(Stage &)>>("attempt");
        QTest::addColumn<QStringList>("shown");
        const QStringList mine = {u"Mine"_s, u"Mine, too"_s};
        QTest::addRow("refresh") << std::function([](Stage &stage) { stage.call("loadProject"); }) << mine;
        QTest::addRow("New Project") << std::function([](Stage &stage) { stage.action(u"New Project"_s)->trigger(); })
                                     << QStringList{};
        QTest::addRow("opening a project") << std::function([](Stage &stage) {
            QVERIFY(stage.result("openProjectFromFile", stage.path(u"saved.ormt"_s)));
        }) << mine;
        QTest::addRow("importing a pack")
            << std::function([](Stage &stage) { QVERIFY(importAppending(stage, stage.path(u"one.ornk"_s))); })
            << QStringList{u"Mine"_s, u"Mine, too"_s, u"One"_s};
        QTest::addRow("new persona") << std::function([](Stage &stage) {
            stage.call("insertPersona", u"Alpha"_s, u"New."_s);
        }) << QStringList{u"Alpha"_s, u"Mine"_s, u"Mine, too"_s};
    }

    void nothing_leads_the_filter_back_to_the_project()
    {
        QFETCH(const std::function<void(Stage &)>, attempt);
        Stage stage;
        QVERIFY(showProject(stage));
        QVERIFY(stage.result("saveProjectToFile", stage.path(u"saved.ormt"_s)));
        writePack(stage.path(u"one.ornk"_s), {persona(u"u1"_s, u"One"_s), tag(1, u"urban"_s)});
        QVERIFY(stage.call("loadPack", writeCoastalPack(stage.path(u"coast.ornk"_s))));
        attempt(stage);
        QTEST(shownNames(stage), "shown");

        // What is chosen is a tag of the project; the pack comes back with it, or with nothing.
        stage.exec(u"INSERT OR IGNORE INTO tags VALUES (77, 'coastal')"_s);
        refreshQuietly(stage);
        tagFilter(stage)->setCurrentText(u"coastal"_s);
        QCOMPARE(shownNames(stage), QStringList({u"Number One"_s, u"Number Two"_s}));
        QCOMPARE(entries(tagFilter(stage)), QStringList({u"All"_s, u"coastal"_s, u"remote"_s, u"urban"_s}));
    }

    void a_path_that_can_not_be_opened_is_tried_at_every_change()
    {
        Stage stage;
        QVERIFY(showProject(stage));
        const QString path = stage.path(u"later/twins.ornk"_s);
        const QString warning = u"failed to open pack "_s + openError(path);
        {
            const MessageLog log;
            QVERIFY(stage.call("loadPack", path));
            QCOMPARE(log.warnings(), QStringList{warning});
            QCOMPARE(personaTable(stage)->rowCount(), 0);
            QCOMPARE(entries(tagFilter(stage)), QStringList({u"All"_s, u"coastal"_s, u"rural"_s}));

            QVERIFY(stage.call("loadProject"));
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
        QCOMPARE(shownNames(stage), QStringList({u"Number One"_s, u"Number Two"_s}));
    }

    void no_path_is_the_path_of_no_pack()
    {
        Stage stage;
        QVERIFY(showProject(stage));
        QVERIFY(stage.call("loadPack", writeCoastalPack(stage.path(u"coast.ornk"_s))));
        {
            const MessageLog log;
            QVERIFY(stage.call("loadPack", QString()));
            QCOMPARE(log.warnings(), QStringList{u"no such table: personas Unable to execute statement"_s});
        }
        QCOMPARE(personaTable(stage)->rowCount(), 0);
        QCOMPARE(entries(tagFilter(stage)), QStringList{u"All"_s});
        QVERIFY(stage.call("applyTagFilter"));
        QCOMPARE(shownNames(stage), QStringList({u"Mine"_s, u"Mine, too"_s}));
    }

    void the_pack_is_shown_without_an_open_project()
    {
        Stage stage;
        QVERIFY(showProject(stage));
        stage.project().close();
        // Without a pack there is nothing to show.
        QVERIFY(stage.call("applyTagFilter"));
        QCOMPARE(personaTable(stage)->rowCount(), 2);

        QVERIFY(stage.call("loadPack", writeCoastalPack(stage.path(u"coast.ornk"_s))));
        QCOMPARE(shownNames(stage), coastalNames());
        tagFilter(stage)->setCurrentText(u"urban"_s);
        QCOMPARE(shownNames(stage), QStringList({u"Number One"_s, u"Number Three"_s}));
        QVERIFY(!stage.asksBeforeClosing());
    }
};

QTEST_MAIN(TestPackTagFilter)
#include "tst_packtagfilter.moc"
