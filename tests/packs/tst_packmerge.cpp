// How the tags of a pack meet those of the project: ids are taken as they are, and nothing maps one to another.

#include "tests/packs/importbox.h"
#include "tests/packs/packfile.h"

#include <QTest>

using namespace Qt::StringLiterals;

class TestPackMerge : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void a_tag_meets_those_of_the_project_data()
    {
        QTest::addColumn<QStringList>("mine");
        QTest::addColumn<QStringList>("tags");
        QTest::addColumn<QString>("shown");
        QTest::addRow("neither the id nor the name is there")
            << QStringList{} << QStringList{u"7 rural"_s} << u"rural"_s;
        QTest::addRow("the same id and name")
            << QStringList{tag(7, u"rural"_s)} << QStringList{u"7 rural"_s} << u"rural"_s;
        QTest::addRow("the id has another name")
            << QStringList{tag(7, u"urban"_s)} << QStringList{u"7 urban"_s} << u"urban"_s;
        QTest::addRow("the name has another id, and the id is free")
            << QStringList{tag(3, u"rural"_s)} << QStringList{u"3 rural"_s} << QString();
        QTest::addRow("the name has another id, and the id another name")
            << QStringList{tag(3, u"rural"_s), tag(7, u"urban"_s)} << QStringList{u"3 rural"_s, u"7 urban"_s}
            << u"urban"_s;
        QTest::addRow("the name differs in case")
            << QStringList{tag(3, u"Rural"_s)} << QStringList{u"3 Rural"_s, u"7 rural"_s} << u"rural"_s;
    }

    void a_tag_meets_those_of_the_project()
    {
        QFETCH(QStringList, mine);
        QFETCH(QString, shown);
        Stage stage;
        QVERIFY(enter(stage, QStringList{persona(u"u1"_s, u"Mine"_s)} + mine));
        QVERIFY(importAppending(stage, pack(stage)));

        QTEST(column(stage, u"SELECT id || ' ' || name FROM tags ORDER BY id"_s), "tags");
        QCOMPARE(column(stage, u"SELECT tag_id FROM persona_tags WHERE persona_uuid = 'u2'"_s), QStringList{u"7"_s});
        QVERIFY(makeCurrent(stage, u"u2"_s));
        const auto *table = personaTable(stage);
        QCOMPARE(table->item(table->currentRow(), 2)->text(), shown);

        if (entries(tagFilter(stage)).contains(u"rural"_s)) {
            tagFilter(stage)->setCurrentText(u"rural"_s);
            QCOMPARE(shownNames(stage), shown == "rural"_L1 ? QStringList{u"Theirs"_s} : QStringList{});
        }
    }

    void the_same_tags_after_replacing_are_the_packs_data() { a_tag_meets_those_of_the_project_data(); }

    void the_same_tags_after_replacing_are_the_packs()
    {
        QFETCH(QStringList, mine);
        Stage stage;
        QVERIFY(enter(stage, QStringList{persona(u"u1"_s, u"Mine"_s), link(u"u1"_s, 7)} + mine));
        QVERIFY(importReplacing(stage, pack(stage)));
        QCOMPARE(column(stage, u"SELECT id || ' ' || name FROM tags"_s), QStringList{u"7 rural"_s});
        QCOMPARE(column(stage, u"SELECT persona_uuid || ' ' || tag_id FROM persona_tags"_s), QStringList{u"u2 7"_s});
    }

    void a_link_that_is_there_is_dropped()
    {
        Stage stage;
        QVERIFY(enter(stage, {persona(u"u2"_s, u"Mine"_s), tag(7, u"urban"_s), link(u"u2"_s, 7)}));
        QVERIFY(importAppending(stage, pack(stage)));
        QCOMPARE(column(stage, u"SELECT persona_uuid || ' ' || tag_id FROM persona_tags"_s), QStringList{u"u2 7"_s});
        QCOMPARE(shownNames(stage), QStringList{u"Mine"_s});
    }

    void a_link_to_no_tag_gets_a_meaning_by_a_later_pack()
    {
        Stage stage;
        QVERIFY(enter(stage, {persona(u"u1"_s, u"Mine"_s), tag(3, u"rural"_s)}));
        QVERIFY(importAppending(stage, pack(stage)));
        QVERIFY(importAppending(stage, writePack(stage.path(u"later.ornk"_s), {tag(7, u"coastal"_s)})));
        QCOMPARE(tagsOf(stage, u"u2"_s), QStringList{u"coastal"_s});
    }

private:
    /// A persona with the tag "rural", which has the id 7.
    static QString pack(const Stage &stage)
    {
        return writePack(stage.path(u"twins.ornk"_s),
                         {persona(u"u2"_s, u"Theirs"_s), tag(7, u"rural"_s), link(u"u2"_s, 7)});
    }
};

QTEST_MAIN(TestPackMerge)
#include "tst_packmerge.moc"
