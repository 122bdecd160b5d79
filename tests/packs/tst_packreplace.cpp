// An import into a project that has personas: the question, and what "Replace" gives up.

#include "tests/packs/importing.h"
#include "tests/packs/samplepacks.h"
#include "tests/support/messagelog.h"
#include "tests/support/testcase.h"

#include <QComboBox>
#include <QMessageBox>
#include <QTableWidget>
#include <QTest>

using namespace Qt::StringLiterals;

using BoxAnswer = std::function<void(QWidget *)>;

/// A project with something in every table.
static bool fillProject(Stage &stage)
{
    return enterBeekeeper(stage, u"u1"_s, u"Mine"_s, {u"urban"_s}) && enterBeekeeper(stage, u"u2"_s, u"Other"_s) &&
           enter(stage, QuestionEntered{.prompt = u"What from?"_s}) && setBoilerplate(stage, u"Be"_s, u"now"_s) &&
           stage.exec({u"INSERT INTO question_attachments (question_id, filename) VALUES (1, 'map.png')"_s,
                       u"INSERT INTO metadata VALUES ('key', 'value')"_s}) &&
           stage.call("loadProject") && stage.result("saveProjectToFile", stage.path(u"project.ormt"_s));
}

/// A pack of a persona that the project has, and one that it has not.
static QString writeTwins(const Stage &stage)
{
    return packOf(stage.path(u"twins.ornk"_s),
                  PersonaEntered{.uuid = u"u1"_s, .name = u"Theirs"_s, .tags = {u"rural"_s}},
                  PersonaEntered{.uuid = u"u3"_s, .name = u"Third"_s});
}

/// The five tables that no import touches.
static QStringList untouched(Stage &stage)
{
    QStringList rows;
    for (const QString &table :
         {u"questions"_s, u"question_attachments"_s, u"boilerplate"_s, u"metadata"_s, u"sqlite_sequence"_s})
        rows.append(literals(stage.database(), u"SELECT * FROM "_s + table));
    return rows;
}

static QString textsAndRoles(const QMessageBox *box)
{
    QStringList texts;
    const auto buttons = box->buttons();
    for (QAbstractButton *button : buttons)
        texts.append(u"%1 %2"_s.arg(button->text().remove(u'&')).arg(box->buttonRole(button)));
    texts.sort();
    return texts.join(u", ");
}

class TestPackReplace : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void the_box_asks_what_becomes_of_the_personas()
    {
        Stage stage;
        QVERIFY(fillProject(stage));
        const Modal modal([&stage](QWidget *window) {
            auto *box = qobject_cast<QMessageBox *>(window);
            QVERIFY(box != nullptr);
            QCOMPARE(box->parent(), stage.window());
            QCOMPARE(box->icon(), QMessageBox::Question);
            QCOMPARE(box->windowTitle(), u"Import Persona Pack"_s);
            QCOMPARE(box->text(), u"Personas already exist in this project. Replace them or append?"_s);
            QCOMPARE(box->informativeText(), QString());
            QCOMPARE(textsAndRoles(box), u"Append 0, Cancel 1, Replace 0"_s);
            QCOMPARE(box->standardButtons(), QMessageBox::Cancel);
            QCOMPARE(box->defaultButton(), nullptr);
            QCOMPARE(box->checkBox(), nullptr);
            // Nothing has happened yet.
            QCOMPARE(stage.count(u"personas"_s), 2);
            QVERIFY(!QSqlDatabase::contains(u"packfile"_s));
        });
        stage.call("importPack", writeTwins(stage));
        QVERIFY(modal.wasAnswered());
    }

    void every_answer_has_its_effect_data()
    {
        QTest::addColumn<BoxAnswer>("answer");
        QTest::addColumn<QStringList>("names");
        const auto press = [](const QString &text) {
            return BoxAnswer([text](QWidget *box) { QVERIFY(pressButton(box, text)); });
        };
        const auto type = [](Qt::Key key) { return BoxAnswer([key](QWidget *box) { QTest::keyClick(box, key); }); };
        const QStringList replaced = {u"Theirs"_s, u"Third"_s};
        const QStringList appended = {u"Mine"_s, u"Other"_s, u"Third"_s};
        const QStringList kept = {u"Mine"_s, u"Other"_s};
        QTest::addRow("Replace") << press(u"Replace"_s) << replaced;
        QTest::addRow("Append") << press(u"Append"_s) << appended;
        QTest::addRow("Cancel") << press(u"Cancel"_s) << kept;
        QTest::addRow("Return key") << type(Qt::Key_Return) << replaced;
        QTest::addRow("Escape key") << type(Qt::Key_Escape) << kept;
        QTest::addRow("box closed") << BoxAnswer([](QWidget *box) { box->close(); }) << kept;
    }

    void every_answer_has_its_effect()
    {
        QFETCH(const BoxAnswer, answer);
        QFETCH(QStringList, names);
        Stage stage;
        QVERIFY(fillProject(stage));
        const QStringList before = everyRow(stage.database());
        const QStringList others = untouched(stage);
        QCOMPARE(others.size(), 7);
        const QuietRefresh quiet(stage);
        const Modal modal([&answer](QWidget *box) {
            answer(box);
            QVERIFY(!box->isVisible());
        });
        stage.call("importPack", writeTwins(stage));
        QVERIFY(modal.wasAnswered());
        QCOMPARE(shownPersonas(stage), names);
        const bool imported = names.contains(u"Third"_s);
        QCOMPARE(everyRow(stage.database()) == before, !imported);
        QCOMPARE(stage.asksBeforeClosing(), imported);
        QCOMPARE(untouched(stage), others);
    }

    void cancelling_does_not_touch_the_views_or_the_pack()
    {
        Stage stage;
        QVERIFY(fillProject(stage));
        QVERIFY(makeCurrent(stage, u"u2"_s));
        QVERIFY(stage.exec(u"UPDATE personas SET name = 'Unseen'"_s));
        // Opening this one would be reported.
        QVERIFY(importAnswered(stage, stage.path(u"missing/twins.ornk"_s), u"Cancel"_s));
        QCOMPARE(shownPersonas(stage), QStringList({u"Mine"_s, u"Other"_s}));
        QCOMPARE(personaTable(stage)->currentRow(), 1);
        QVERIFY(!stage.asksBeforeClosing());
    }

    void replacing_removes_every_answer_and_keeps_the_questions()
    {
        Stage stage;
        QVERIFY(fillProject(stage));
        QVERIFY(enter(stage, AnswerEntered{.persona = u"gone"_s, .question = 1}));
        const int columns = resultsTable(stage)->columnCount();
        QVERIFY(columnTexts(resultsTable(stage), 1).contains(u"honey"_s));
        QVERIFY(importReplacing(stage, writeTwins(stage)));
        QCOMPARE(stage.count(u"responses"_s), 0);
        QCOMPARE(resultsTable(stage)->rowCount(), 2);
        QCOMPARE(resultsTable(stage)->columnCount(), columns);
        QVERIFY(!columnTexts(resultsTable(stage), 1).contains(u"honey"_s));
        // The numbering of answers goes on where it was.
        QVERIFY(enter(stage, AnswerEntered{.persona = u"u1"_s, .question = 1}));
        QCOMPARE(stage.value(u"SELECT id FROM responses"_s).toInt(), 4);
    }

    void replacing_takes_the_packs_tags_as_they_are()
    {
        Stage stage;
        QVERIFY(fillProject(stage));
        QVERIFY(enter(stage, TagEntered{5, u"rural"_s}, LinkEntered{u"orphan"_s, 5}));
        QVERIFY(importReplacing(stage, writeTwins(stage)));
        QCOMPARE(stage.rows(u"SELECT id, name FROM tags"_s), Rows({{1, u"rural"_s}}));
        QCOMPARE(stage.rows(u"SELECT persona_uuid, tag_id FROM persona_tags"_s), Rows({{u"u1"_s, 1}}));
        QCOMPARE(items(tagFilter(stage)), QStringList({u"All"_s, u"rural"_s}));
    }

    void tables_are_emptied_in_their_order()
    {
        Stage stage;
        QVERIFY(enterBeekeeper(stage, u"u1"_s, u"Mine"_s, {u"urban"_s}));
        QVERIFY(stage.exec(u"CREATE TABLE noted (what TEXT)"_s));
        for (const QString &table : {u"personas"_s, u"tags"_s, u"persona_tags"_s, u"responses"_s}) {
            QVERIFY(stage.exec(
                u"CREATE TRIGGER note_%1 AFTER DELETE ON %1 BEGIN INSERT INTO noted VALUES ('%1'); END"_s.arg(table)));
        }
        QVERIFY(importReplacing(stage, writeTwins(stage)));
        QCOMPARE(stage.column(u"SELECT what FROM noted ORDER BY rowid"_s),
                 QStringList({u"responses"_s, u"persona_tags"_s, u"tags"_s, u"personas"_s}));
    }

    // The project was emptied for the pack, so no row of the pack is looked for in it.
    void rows_that_could_not_be_removed_clash_with_the_packs()
    {
        Stage stage;
        QVERIFY(fillProject(stage));
        for (const QString &table : {u"personas"_s, u"responses"_s}) {
            QVERIFY(stage.exec(u"CREATE TRIGGER keep_%1 BEFORE DELETE ON %1 "
                               "BEGIN SELECT RAISE(ABORT, 'kept'); END"_s.arg(table)));
        }
        {
            const MessageLog log;
            QVERIFY(importReplacing(stage, writeTwins(stage)));
            QCOMPARE(log.warnings(), QStringList{u"UNIQUE constraint failed: personas.uuid Unable to fetch row"_s});
        }
        QCOMPARE(shownPersonas(stage), QStringList({u"Mine"_s, u"Other"_s, u"Third"_s}));
        QCOMPARE(stage.count(u"responses"_s), 2);
        QCOMPARE(knownTags(stage), QStringList{u"rural"_s});
    }

    void a_pack_that_can_not_be_opened_costs_the_personas_all_the_same()
    {
        Stage stage;
        QVERIFY(fillProject(stage));
        const QStringList others = untouched(stage);
        const QString path = stage.path(u"missing/twins.ornk"_s);
        {
            const MessageLog log;
            QVERIFY(importReplacing(stage, path));
            QCOMPARE(log.warnings(), QStringList{u"failed to open pack "_s + openError(path)});
        }
        for (const QString &table : {u"responses"_s, u"persona_tags"_s, u"tags"_s, u"personas"_s})
            QCOMPARE(stage.count(table), 0);
        QCOMPARE(untouched(stage), others);
        QCOMPARE(shownPersonas(stage), QStringList({u"Mine"_s, u"Other"_s}));
        QCOMPARE(items(tagFilter(stage)), QStringList({u"All"_s, u"urban"_s}));
        QCOMPARE(resultsTable(stage)->rowCount(), 2);
        QVERIFY(!stage.asksBeforeClosing());
        QCOMPARE(QSqlDatabase::connectionNames(), QStringList{u"project"_s});

        stage.call("loadProject");
        QCOMPARE(personaTable(stage)->rowCount(), 0);
    }

    void a_file_that_is_no_pack_costs_the_personas_too()
    {
        Stage stage;
        QVERIFY(fillProject(stage));
        const QuietRefresh quiet(stage);
        QVERIFY(importReplacing(stage, writeBytes(stage.path(u"letter.txt"_s), QByteArray(4000, 'x'))));
        QCOMPARE(stage.count(u"personas"_s), 0);
        QCOMPARE(personaTable(stage)->rowCount(), 0);
        QCOMPARE(items(tagFilter(stage)), QStringList{u"All"_s});
        QVERIFY(stage.asksBeforeClosing());
    }

    void personas_that_can_not_be_counted_are_not_asked_about()
    {
        Stage stage;
        QVERIFY(fillProject(stage));
        QVERIFY(stage.exec(u"ALTER TABLE personas RENAME TO others"_s));
        const QuietRefresh quiet(stage);
        const MessageLog log;
        QVERIFY(importUnasked(stage, writeTwins(stage)));
        QCOMPARE(stage.count(u"others"_s), 2);
        QCOMPARE(stage.count(u"responses"_s), 2);
        const QString refused = u"Parameter count mismatch"_s;
        QCOMPARE(log.warnings(),
                 QStringList({refused, refused, u"no such table: personas Unable to execute statement"_s}));
        QVERIFY(stage.asksBeforeClosing());
    }
};

ORRINET_TEST(TestPackReplace)
#include "tst_packreplace.moc"
