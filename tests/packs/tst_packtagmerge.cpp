// How the tags of a pack meet those of the project: ids are taken as they are, and nothing maps one to another.

#include "tests/packs/importing.h"
#include "tests/packs/samplepacks.h"
#include "tests/support/testcase.h"

#include <QComboBox>
#include <QTableWidget>
#include <QTest>

using namespace Qt::StringLiterals;

/// A pack of one persona with the tag "rural", which has the id 7.
static QString writeRural(const Stage &stage)
{
    return packOf(stage.path(u"twins.ornk"_s), PersonaEntered{u"u2"_s, u"Theirs"_s}, TagEntered{7, u"rural"_s},
                  LinkEntered{u"u2"_s, 7});
}

class TestPackTagMerge : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void a_tag_meets_those_of_the_project_data()
    {
        QTest::addColumn<QList<TagEntered>>("mine");
        QTest::addColumn<QStringList>("tags");
        QTest::addColumn<QString>("shown");
        using Tags = QList<TagEntered>;
        const TagEntered same = {7, u"rural"_s};
        const TagEntered sameId = {7, u"urban"_s};
        const TagEntered sameName = {3, u"rural"_s};
        QTest::addRow("neither the id nor the name is there") << Tags{} << QStringList{u"7 rural"_s} << u"rural"_s;
        QTest::addRow("the same id and name") << Tags{same} << QStringList{u"7 rural"_s} << u"rural"_s;
        QTest::addRow("the id has another name") << Tags{sameId} << QStringList{u"7 urban"_s} << u"urban"_s;
        QTest::addRow("the name has another id, and the id is free")
            << Tags{sameName} << QStringList{u"3 rural"_s} << QString();
        QTest::addRow("the name has another id, and the id another name")
            << Tags{sameName, sameId} << QStringList{u"3 rural"_s, u"7 urban"_s} << u"urban"_s;
        QTest::addRow("the name differs in case")
            << Tags{{3, u"Rural"_s}} << QStringList{u"3 Rural"_s, u"7 rural"_s} << u"rural"_s;
    }

    void a_tag_meets_those_of_the_project()
    {
        QFETCH(QList<TagEntered>, mine);
        QFETCH(QString, shown);
        Stage stage;
        QVERIFY(enter(stage, PersonaEntered{u"u1"_s, u"Mine"_s}));
        for (const TagEntered &tag : std::as_const(mine))
            QVERIFY(enter(stage, tag));
        QVERIFY(importAppending(stage, writeRural(stage)));

        QTEST(stage.column(u"SELECT id || ' ' || name FROM tags ORDER BY id"_s), "tags");
        QCOMPARE(stage.column(u"SELECT tag_id FROM persona_tags WHERE persona_uuid = 'u2'"_s), QStringList{u"7"_s});
        QVERIFY(makeCurrent(stage, u"u2"_s));
        const auto *table = personaTable(stage);
        QCOMPARE(table->item(table->currentRow(), 2)->text(), shown);

        if (items(tagFilter(stage)).contains(u"rural"_s)) {
            tagFilter(stage)->setCurrentText(u"rural"_s);
            QCOMPARE(shownPersonas(stage), shown == "rural"_L1 ? QStringList{u"Theirs"_s} : QStringList{});
        }
    }

    void a_link_that_is_there_is_dropped()
    {
        Stage stage;
        QVERIFY(enter(stage, PersonaEntered{u"u2"_s, u"Mine"_s}, TagEntered{7, u"urban"_s}, LinkEntered{u"u2"_s, 7}));
        QVERIFY(importAppending(stage, writeRural(stage)));
        QCOMPARE(stage.rows(u"SELECT persona_uuid, tag_id FROM persona_tags"_s), Rows({{u"u2"_s, 7}}));
        QCOMPARE(shownPersonas(stage), QStringList{u"Mine"_s});
    }

    void a_link_to_no_tag_gets_a_meaning_by_a_later_pack()
    {
        Stage stage;
        QVERIFY(enter(stage, PersonaEntered{u"u1"_s, u"Mine"_s}, TagEntered{3, u"rural"_s}));
        QVERIFY(importAppending(stage, writeRural(stage)));
        QCOMPARE(tagsOf(stage, u"u2"_s), QStringList());
        QVERIFY(importAppending(stage, packOf(stage.path(u"later.ornk"_s), TagEntered{7, u"coastal"_s})));
        QCOMPARE(tagsOf(stage, u"u2"_s), QStringList{u"coastal"_s});
    }
};

ORRINET_TEST(TestPackTagMerge)
#include "tst_packtagmerge.moc"
