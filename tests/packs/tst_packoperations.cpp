// The buttons and the editor of the persona list while it shows a pack: they work on the project, by the uuid of the
// row.

#include "tests/packs/samplepacks.h"
#include "tests/personas/personaform.h"
#include "tests/support/testcase.h"

#include <QComboBox>
#include <QTableWidget>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

/// In the project and in the pack.
constexpr auto sharedPersona = "11111111-aaaa"_L1;
/// Only in the pack.
constexpr auto foreignPersona = "22222222-bbbb"_L1;

QStringList projectNames()
{
    return {u"Mine"_s, u"Mine, too"_s};
}

/// A window that shows a project and then a pack, of which the row of a persona is made the current one.
class PackStage : public Stage
{
public:
    explicit PackStage(const QString &current)
    {
        const bool shown =
            showProject(*this) && call("loadPack", writeCoastalPack(pack)) && makeCurrent(*this, current);
        if (!shown)
            QTest::qFail("the pack is not shown", __FILE__, __LINE__);
        packBefore = readBytes(pack);
        projectBefore = everyRow(database());
    }

    bool projectIsUnchanged() { return everyRow(database()) == projectBefore; }
    bool packIsUnchanged() const { return readBytes(pack) == packBefore; }
    QStringList names() { return column(u"SELECT name FROM personas ORDER BY name"_s); }
    void press(const QString &text) { button(text, u"Digital Twins"_s)->click(); }
    /// Double-clicks the current row and works in the dialog that comes.
    bool editCurrent(const PersonaWork &work)
    {
        const Modal modal(inPersonaForm(work));
        QTableWidget *table = personaTable(*this);
        doubleClick(table, table->model()->index(table->currentRow(), 0));
        return modal.wasAnswered();
    }

private:
    const QString pack = path(u"coast.ornk"_s);
    QByteArray packBefore;
    QStringList projectBefore;
};

} // namespace

class TestPackOperations : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void deleting_what_only_the_pack_has_deletes_nothing()
    {
        PackStage stage(foreignPersona);
        const QuietRefresh quiet(stage);
        stage.press(u"Delete"_s);
        QVERIFY(stage.projectIsUnchanged());
        QVERIFY(stage.packIsUnchanged());
        QCOMPARE(shownPersonas(stage), projectNames());
        QCOMPARE(items(tagFilter(stage)), QStringList({u"All"_s, u"coastal"_s, u"rural"_s}));
        QVERIFY(stage.asksBeforeClosing());
    }

    void deleting_what_both_have_deletes_the_projects()
    {
        PackStage stage(sharedPersona);
        stage.press(u"Delete"_s);
        QCOMPARE(stage.names(), QStringList{u"Mine, too"_s});
        QCOMPARE(shownPersonas(stage), QStringList{u"Mine, too"_s});
        QCOMPARE(stage.count(u"persona_tags"_s), 1);
        QVERIFY(stage.packIsUnchanged());
        stage.call("applyTagFilter");
        QCOMPARE(shownPersonas(stage), coastalNames());
    }

    void the_refresh_after_an_operation_keeps_the_packs_filter()
    {
        PackStage stage(foreignPersona);
        tagFilter(stage)->setCurrentText(u"urban"_s);
        QVERIFY(makeCurrent(stage, u"33333333-cccc"_s));
        stage.press(u"Delete"_s);
        QCOMPARE(personaTable(stage)->rowCount(), 0);
        QCOMPARE(tagFilter(stage)->currentText(), u"All"_s);
        QCOMPARE(stage.names(), projectNames());
    }

    void copying_what_only_the_pack_has_does_nothing()
    {
        PackStage stage(foreignPersona);
        stage.press(u"Copy"_s);
        QVERIFY(stage.projectIsUnchanged());
        QCOMPARE(shownPersonas(stage), coastalNames());
        QVERIFY(!stage.asksBeforeClosing());
    }

    void copying_what_both_have_copies_the_projects()
    {
        PackStage stage(sharedPersona);
        const QuietRefresh quiet(stage);
        stage.press(u"Copy"_s);
        QCOMPARE(shownPersonas(stage), QStringList({u"Mine"_s, u"Mine"_s, u"Mine, too"_s}));
        QCOMPARE(tagsOf(stage, newestUuid(stage)), QStringList{u"rural"_s});
        QVERIFY(stage.packIsUnchanged());
        QVERIFY(stage.asksBeforeClosing());
    }

    void a_new_persona_belongs_to_the_project()
    {
        PackStage stage(foreignPersona);
        const Modal modal(inPersonaForm([](const PersonaForm &form) {
            QCOMPARE(form.texts(), QStringList({u""_s, u""_s, u""_s}));
            typeInto(form.name, u"Added"_s);
            form.accept();
        }));
        stage.press(u"New"_s);
        QVERIFY(modal.wasAnswered());
        QCOMPARE(shownPersonas(stage), QStringList{u"Added"_s} + projectNames());
        QVERIFY(stage.packIsUnchanged());
    }

    void an_export_is_of_the_project()
    {
        PackStage stage(foreignPersona);
        const QString path = stage.path(u"new.ornk"_s);
        QVERIFY(stage.result("exportPackToFile", path));
        QCOMPARE(namesIn(path), projectNames());
        QCOMPARE(shownPersonas(stage), coastalNames());
    }

    void the_editor_shows_what_the_project_has_data()
    {
        QTest::addColumn<QString>("uuid");
        QTest::addColumn<QStringList>("texts");
        QTest::addRow("in both") << QString(sharedPersona) << QStringList{u"Mine"_s, u"Mine in full"_s, u"rural"_s};
        QTest::addRow("only in the pack") << QString(foreignPersona) << QStringList{u""_s, u""_s, u""_s};
    }

    void the_editor_shows_what_the_project_has()
    {
        QFETCH(QString, uuid);
        PackStage stage(uuid);
        QStringList found;
        QVERIFY(stage.editCurrent([&found](const PersonaForm &form) {
            found = form.texts();
            QVERIFY(pressButton(form.dialog, u"Cancel"_s));
        }));
        QTEST(found, "texts");
        QVERIFY(stage.projectIsUnchanged());
        QCOMPARE(shownPersonas(stage), coastalNames());
        QVERIFY(!stage.asksBeforeClosing());
    }

    void what_the_editor_stores_goes_to_the_project_data()
    {
        QTest::addColumn<QString>("uuid");
        QTest::addColumn<QStringList>("names");
        QTest::addRow("in both") << QString(sharedPersona) << QStringList{u"Edited"_s, u"Mine, too"_s};
        // It has no row to change there, but its tags are linked.
        QTest::addRow("only in the pack") << QString(foreignPersona) << projectNames();
    }

    void what_the_editor_stores_goes_to_the_project()
    {
        QFETCH(QString, uuid);
        QFETCH(QStringList, names);
        PackStage stage(uuid);
        const QuietRefresh quiet(stage);
        QVERIFY(stage.editCurrent([](const PersonaForm &form) {
            form.type(u"Edited"_s, u"Anew."_s, u"alpine"_s);
            form.accept();
        }));
        QCOMPARE(stage.names(), names);
        QCOMPARE(shownPersonas(stage), names);
        QCOMPARE(tagsOf(stage, uuid), QStringList{u"alpine"_s});
        QVERIFY(stage.packIsUnchanged());
        QVERIFY(stage.asksBeforeClosing());
    }
};

ORRINET_TEST(TestPackOperations)
#include "tst_packoperations.moc"
