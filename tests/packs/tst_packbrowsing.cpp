// A pack shown in the persona list: its rows, its tags, and all that stays as it is.

#include "tests/packs/samplepacks.h"
#include "tests/support/messagelog.h"
#include "tests/support/testcase.h"

#include <QAbstractItemModel>
#include <QAction>
#include <QComboBox>
#include <QPlainTextEdit>
#include <QSignalSpy>
#include <QTabWidget>
#include <QTableWidget>
#include <QTest>

using namespace Qt::StringLiterals;

class TestPackBrowsing : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void rows_are_laid_out_as_the_projects()
    {
        Stage stage;
        const PersonaEntered one = {.uuid = u"12345678-9abc"_s,
                                    .name = u"One"_s,
                                    .attributes = u"Likes\nthe sea."_s,
                                    .systemPrompt = u"hidden"_s,
                                    .notes = u"hidden"_s,
                                    .tags = {u"New York"_s},
                                    .modifiedAt = u"in spring"_s};
        stage.call("loadPack", packOf(stage.path(u"one.ornk"_s), one));
        const auto *table = personaTable(stage);
        const QList<QStringList> expected = {
            {u"One"_s, u"12345678"_s, u"New York"_s, QString(), u"2001-02-03T04:05:06.789"_s, u"in spring"_s}};
        QCOMPARE(cells(table), expected);
        QVERIFY(table->item(0, 3) == nullptr);
        QCOMPARE(table->item(0, 1)->data(Qt::UserRole), QVariant(u"12345678-9abc"_s));
        const auto *narrative = qobject_cast<QPlainTextEdit *>(table->cellWidget(0, 3));
        QVERIFY(narrative != nullptr);
        QCOMPARE(narrative->toPlainText(), u"Likes\nthe sea."_s);
        QVERIFY(narrative->isReadOnly());
        QCOMPARE(narrative->minimumHeight(), 60);
        QCOMPARE(narrative->maximumHeight(), 60);

        // The project's view of the same persona is no different.
        QVERIFY(enter(stage, one));
        refreshQuietly(stage);
        QCOMPARE(cells(table), expected);
        QCOMPARE(table->item(0, 1)->data(Qt::UserRole), QVariant(u"12345678-9abc"_s));
    }

    void what_a_persona_lacks_shows_as_nothing()
    {
        Stage stage;
        stage.call("loadPack", packOf(stage.path(u"bare.ornk"_s),
                                      PersonaEntered{.uuid = u"u1"_s, .createdAt = {}, .modifiedAt = {}}));
        const QStringList expected = {u""_s, u"u1"_s, u""_s, QString(), u""_s, u""_s};
        QCOMPARE(cells(personaTable(stage)), QList<QStringList>{expected});
        for (const int column : {0, 2, 4, 5})
            QVERIFY(personaTable(stage)->item(0, column) != nullptr);
        QCOMPARE(qobject_cast<QPlainTextEdit *>(personaTable(stage)->cellWidget(0, 3))->toPlainText(), QString());
    }

    void the_pack_takes_the_place_of_what_was_shown()
    {
        Stage stage;
        QVERIFY(showProject(stage));
        stage.call("loadPack", writeCoastalPack(stage.path(u"coast.ornk"_s)));
        QCOMPARE(shownPersonas(stage), coastalNames());
        QCOMPARE(items(tagFilter(stage)), QStringList({u"All"_s, u"coastal"_s, u"remote"_s, u"urban"_s}));
        stage.call("loadPack", packOf(stage.path(u"one.ornk"_s), PersonaEntered{u"u1"_s, u"One"_s}));
        QCOMPARE(shownPersonas(stage), QStringList{u"One"_s});
        QCOMPARE(items(tagFilter(stage)), QStringList{u"All"_s});
    }

    void all_else_stays_as_it_was()
    {
        Stage stage;
        QVERIFY(enter(stage, QuestionEntered{.prompt = u"Why?"_s}));
        QVERIFY(showProject(stage));
        stage.action(u"Show Created"_s)->setChecked(true);
        auto *tabs = stage.window()->findChild<QTabWidget *>();
        tabs->setCurrentIndex(2);
        const QStringList rows = everyRow(stage.database());
        const QString path = writeCoastalPack(stage.path(u"coast.ornk"_s));
        const QByteArray bytes = readBytes(path);
        const auto grid = cells(resultsTable(stage));
        QCOMPARE(grid.size(), 2);
        const ConversationBox conversation(stage);
        const QStringList offered = items(conversation.persona);
        QVERIFY(!offered.isEmpty());

        stage.call("loadPack", path);
        QCOMPARE(shownPersonas(stage), coastalNames());
        QCOMPARE(everyRow(stage.database()), rows);
        QCOMPARE(readBytes(path), bytes);
        QCOMPARE(cells(resultsTable(stage)), grid);
        QCOMPARE(tabs->currentIndex(), 2);
        QVERIFY(stage.window()->windowTitle().isEmpty());
        QVERIFY(!personaTable(stage)->isColumnHidden(4));
        QVERIFY(personaTable(stage)->isColumnHidden(5));
        QCOMPARE(items(conversation.persona), offered);
        QCOMPARE(QSqlDatabase::connectionNames(), QStringList{u"project"_s});
        QVERIFY(!stage.asksBeforeClosing());
        stage.window()->markDirty();
        stage.call("loadPack", path);
        QVERIFY(stage.asksBeforeClosing());
    }

    void the_chooser_keeps_its_tag_and_is_silent_while_it_is_refilled()
    {
        Stage stage;
        QVERIFY(showProject(stage));
        tagFilter(stage)->setCurrentText(u"coastal"_s);
        const QSignalSpy texts(tagFilter(stage), &QComboBox::currentTextChanged);
        const QSignalSpy indexes(tagFilter(stage), &QComboBox::currentIndexChanged);
        stage.call("loadPack", writeCoastalPack(stage.path(u"coast.ornk"_s)));
        QCOMPARE(texts.size(), 0);
        QCOMPARE(indexes.size(), 0);
        QVERIFY(!tagFilter(stage)->signalsBlocked());
        QCOMPARE(tagFilter(stage)->currentText(), u"coastal"_s);
        QCOMPARE(shownTags(stage), QStringList({u"Number One: coastal"_s, u"Number Two: coastal"_s}));
    }

    void the_pack_is_open_while_its_rows_are_read()
    {
        Stage stage;
        int open = 0;
        const QString path = writeCoastalPack(stage.path(u"coast.ornk"_s));
        const QObject context;
        connect(personaTable(stage)->model(), &QAbstractItemModel::rowsInserted, &context, [&open, &path] {
            const QSqlDatabase pack = QSqlDatabase::database(u"pack"_s, false);
            open += pack.isOpen() && pack.driverName() == "QSQLITE"_L1 && pack.databaseName() == path ? 1 : 0;
        });
        stage.call("loadPack", path);
        // All rows come at once.
        QCOMPARE(open, 1);
        QCOMPARE(QSqlDatabase::connectionNames(), QStringList{u"project"_s});
    }

    void a_file_without_a_packs_tables_shows_nothing_data()
    {
        QTest::addColumn<QStringList>("statements");
        QTest::addColumn<QStringList>("choices");
        QTest::addColumn<QString>("warning");
        const QString missing = u"no such table: %1 Unable to execute statement"_s;
        const QStringList none = {u"All"_s};
        const QStringList one = {u"All"_s, u"rural"_s};
        QTest::addRow("none") << QStringList{u"DROP TABLE personas"_s, u"DROP TABLE tags"_s} << none
                              << missing.arg(u"personas"_s);
        QTest::addRow("no tags") << QStringList{u"DROP TABLE tags"_s} << none << missing.arg(u"tags"_s);
        QTest::addRow("no personas") << QStringList{u"DROP TABLE personas"_s} << one << missing.arg(u"personas"_s);
        QTest::addRow("no links") << QStringList{u"DROP TABLE persona_tags"_s} << one << missing.arg(u"persona_tags"_s);
        QTest::addRow("no column") << QStringList{u"ALTER TABLE personas DROP COLUMN created_at"_s} << one
                                   << u"no such column: p.created_at Unable to execute statement"_s;
    }

    void a_file_without_a_packs_tables_shows_nothing()
    {
        QFETCH(QStringList, statements);
        QFETCH(QString, warning);
        Stage stage;
        QVERIFY(showProject(stage));
        const QString path = packOf(stage.path(u"part.ornk"_s), TagEntered{1, u"rural"_s});
        SideDatabase(path).exec(statements);
        {
            const MessageLog log;
            stage.call("loadPack", path);
            QCOMPARE(log.warnings(), QStringList{warning});
        }
        QCOMPARE(personaTable(stage)->rowCount(), 0);
        QTEST(items(tagFilter(stage)), "choices");
        QCOMPARE(QSqlDatabase::connectionNames(), QStringList{u"project"_s});
    }

    void a_pack_damaged_at_the_start_is_reported()
    {
        Stage stage;
        const QString path = writeDamagedPack(stage.path(u"damaged.ornk"_s), Damage::FirstPage);
        {
            const MessageLog log;
            stage.call("loadPack", path);
            QCOMPARE(log.warnings(), QStringList{u"database disk image is malformed Unable to fetch row"_s});
        }
        QCOMPARE(personaTable(stage)->rowCount(), 0);
        QCOMPARE(items(tagFilter(stage)), QStringList({u"All"_s, u"rural"_s}));
    }

    void a_pack_damaged_halfway_shows_what_can_be_read()
    {
        Stage stage;
        stage.call("loadPack", writeDamagedPack(stage.path(u"damaged.ornk"_s), Damage::LastPage));
        const QStringList shown = columnTexts(personaTable(stage), 1);
        const QStringList all = damagedPackUuids();
        QVERIFY(!shown.isEmpty() && shown.size() < all.size());
        QCOMPARE(shown, all.first(shown.size()));
    }
};

ORRINET_TEST(TestPackBrowsing)
#include "tst_packbrowsing.moc"
