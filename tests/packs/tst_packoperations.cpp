// The buttons of the persona list while it shows a pack: they work on the project, by the uuid of the row.

#include "tests/packs/packbrowser.h"
#include "tests/support/modal.h"

#include <QLineEdit>
#include <QPlainTextEdit>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

/// In the project and in the pack.
const auto shared = "11111111-aaaa"_L1;
/// Only in the pack.
const auto foreign = "22222222-bbbb"_L1;

} // namespace

/// Shows a project, then a pack, and makes the row of a persona of the pack the current one.
static bool showPack(Stage &stage, const QString &path, const QString &current)
{
    return showProject(stage) && stage.call("loadPack", writeCoastalPack(path)) && makeCurrent(stage, current);
}

static QStringList names(Stage &stage)
{
    QStringList all = column(stage, u"SELECT name FROM personas"_s);
    all.sort();
    return all;
}

class TestPackOperations : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void deleting_what_only_the_pack_has_deletes_nothing()
    {
        Stage stage;
        const QString path = stage.path(u"coast.ornk"_s);
        QVERIFY(showPack(stage, path, foreign));
        const QByteArray bytes = bytesOf(path);
        const QStringList rows = everyRow(stage.project());
        const QuietRefresh quiet(stage);
        stage.button(u"Delete"_s, u"Digital Twins"_s)->click();
        QCOMPARE(everyRow(stage.project()), rows);
        QCOMPARE(bytesOf(path), bytes);
        QCOMPARE(shownNames(stage), QStringList({u"Mine"_s, u"Mine, too"_s}));
        QCOMPARE(entries(tagFilter(stage)), QStringList({u"All"_s, u"coastal"_s, u"rural"_s}));
        QVERIFY(stage.asksBeforeClosing());
    }

    void deleting_what_both_have_deletes_the_projects()
    {
        Stage stage;
        const QString path = stage.path(u"coast.ornk"_s);
        QVERIFY(showPack(stage, path, shared));
        const QByteArray bytes = bytesOf(path);
        stage.button(u"Delete"_s, u"Digital Twins"_s)->click();
        QCOMPARE(names(stage), QStringList{u"Mine, too"_s});
        QCOMPARE(shownNames(stage), QStringList{u"Mine, too"_s});
        QCOMPARE(count(stage, u"persona_tags"_s), 1);
        QCOMPARE(bytesOf(path), bytes);
        QVERIFY(stage.call("applyTagFilter"));
        QCOMPARE(shownNames(stage), coastalNames());
    }

    void the_refresh_after_an_operation_keeps_the_packs_filter()
    {
        Stage stage;
        QVERIFY(showPack(stage, stage.path(u"coast.ornk"_s), foreign));
        tagFilter(stage)->setCurrentText(u"urban"_s);
        QVERIFY(makeCurrent(stage, u"33333333-cccc"_s));
        stage.button(u"Delete"_s, u"Digital Twins"_s)->click();
        QCOMPARE(personaTable(stage)->rowCount(), 0);
        QCOMPARE(tagFilter(stage)->currentText(), u"All"_s);
        QCOMPARE(names(stage), QStringList({u"Mine"_s, u"Mine, too"_s}));
    }

    void copying_what_only_the_pack_has_does_nothing()
    {
        Stage stage;
        const QString path = stage.path(u"coast.ornk"_s);
        QVERIFY(showPack(stage, path, foreign));
        const QStringList rows = everyRow(stage.project());
        stage.button(u"Copy"_s, u"Digital Twins"_s)->click();
        QCOMPARE(everyRow(stage.project()), rows);
        QCOMPARE(shownNames(stage), coastalNames());
        QVERIFY(!stage.asksBeforeClosing());
    }

    void copying_what_both_have_copies_the_projects()
    {
        Stage stage;
        const QString path = stage.path(u"coast.ornk"_s);
        QVERIFY(showPack(stage, path, shared));
        const QByteArray bytes = bytesOf(path);
        stage.button(u"Copy"_s, u"Digital Twins"_s)->click();
        QCOMPARE(shownNames(stage), QStringList({u"Mine"_s, u"Mine"_s, u"Mine, too"_s}));
        QCOMPARE(tagsOf(stage, newestUuid(stage)), QStringList{u"rural"_s});
        QCOMPARE(bytesOf(path), bytes);
        QVERIFY(stage.asksBeforeClosing());
    }

    void a_new_persona_belongs_to_the_project()
    {
        Stage stage;
        const QString path = stage.path(u"coast.ornk"_s);
        QVERIFY(showPack(stage, path, foreign));
        const QByteArray bytes = bytesOf(path);
        Stage::setTestMode(true);
        const Modal modal([](QWidget *dialog) {
            for (const auto listed = dialog->findChildren<QLineEdit *>(); const QLineEdit *edit : listed)
                QCOMPARE(edit->text(), QString());
            dialog->findChildren<QLineEdit *>().constFirst()->setText(u"Added"_s);
            QVERIFY(pressButton(dialog, u"OK"_s));
        });
        stage.button(u"New"_s, u"Digital Twins"_s)->click();
        QVERIFY(modal.wasAnswered());
        QCOMPARE(shownNames(stage), QStringList({u"Added"_s, u"Mine"_s, u"Mine, too"_s}));
        QCOMPARE(bytesOf(path), bytes);
    }

    void an_export_is_of_the_project()
    {
        Stage stage;
        QVERIFY(showPack(stage, stage.path(u"coast.ornk"_s), foreign));
        const QString path = stage.path(u"new.ornk"_s);
        QVERIFY(stage.result("exportPackToFile", path));
        FileDatabase pack(path);
        QCOMPARE(pack.column(u"SELECT name FROM personas ORDER BY name"_s), QStringList({u"Mine"_s, u"Mine, too"_s}));
        QCOMPARE(shownNames(stage), coastalNames());
    }

    void the_editor_shows_what_the_project_has_data()
    {
        QTest::addColumn<QString>("uuid");
        QTest::addColumn<QStringList>("texts");
        QTest::addRow("in both") << QString(shared) << QStringList{u"Mine"_s, u"Mine in full"_s, u"rural"_s};
        QTest::addRow("only in the pack") << QString(foreign) << QStringList{u""_s, u""_s, u""_s};
    }

    void the_editor_shows_what_the_project_has()
    {
        QFETCH(QString, uuid);
        Stage stage;
        const QString path = stage.path(u"coast.ornk"_s);
        QVERIFY(showPack(stage, path, uuid));
        const QStringList rows = everyRow(stage.project());
        Stage::setTestMode(true);
        QStringList found;
        const Modal modal([&found](QWidget *dialog) {
            found = texts(dialog);
            QVERIFY(dialog->testAttribute(Qt::WA_DontShowOnScreen));
            QVERIFY(pressButton(dialog, u"Cancel"_s));
        });
        doubleClick(stage);
        QVERIFY(modal.wasAnswered());
        QTEST(found, "texts");
        QCOMPARE(everyRow(stage.project()), rows);
        QCOMPARE(shownNames(stage), coastalNames());
        QVERIFY(!stage.asksBeforeClosing());
    }

    void editing_what_both_have_changes_the_projects()
    {
        Stage stage;
        const QString path = stage.path(u"coast.ornk"_s);
        QVERIFY(showPack(stage, path, shared));
        const QByteArray bytes = bytesOf(path);
        edit(stage, u"Edited"_s, u"alpine"_s);
        QCOMPARE(names(stage), QStringList({u"Edited"_s, u"Mine, too"_s}));
        QCOMPARE(tagsOf(stage, shared), QStringList{u"alpine"_s});
        QCOMPARE(shownNames(stage), QStringList({u"Edited"_s, u"Mine, too"_s}));
        QCOMPARE(bytesOf(path), bytes);
        QVERIFY(stage.asksBeforeClosing());
    }

    void editing_what_only_the_pack_has_leaves_links_and_no_persona()
    {
        Stage stage;
        const QString path = stage.path(u"coast.ornk"_s);
        QVERIFY(showPack(stage, path, foreign));
        const QByteArray bytes = bytesOf(path);
        edit(stage, u"Edited"_s, u"alpine"_s);
        QCOMPARE(names(stage), QStringList({u"Mine"_s, u"Mine, too"_s}));
        QCOMPARE(tagsOf(stage, foreign), QStringList{u"alpine"_s});
        QCOMPARE(shownNames(stage), QStringList({u"Mine"_s, u"Mine, too"_s}));
        QCOMPARE(bytesOf(path), bytes);
        QVERIFY(stage.asksBeforeClosing());
    }

private:
    static QStringList texts(const QWidget *dialog)
    {
        QStringList all;
        for (const auto listed = dialog->findChildren<QLineEdit *>(); const QLineEdit *edit : listed)
            all.append(edit->text());
        all.insert(1, dialog->findChild<QPlainTextEdit *>()->toPlainText());
        return all;
    }

    static void doubleClick(Stage &stage)
    {
        QTableWidget *table = personaTable(stage);
        Q_EMIT table->cellDoubleClicked(table->currentRow(), 0);
    }

    static void edit(Stage &stage, const QString &name, const QString &tags)
    {
        Stage::setTestMode(true);
        const Modal modal([&name, &tags](QWidget *dialog) {
            const auto edits = dialog->findChildren<QLineEdit *>();
            edits.constFirst()->setText(name);
            edits.constLast()->setText(tags);
            QVERIFY(pressButton(dialog, u"OK"_s));
        });
        doubleClick(stage);
        QVERIFY(modal.wasAnswered());
    }
};

QTEST_MAIN(TestPackOperations)
#include "tst_packoperations.moc"
