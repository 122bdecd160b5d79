// A pack shown in the persona list: its rows, its tags, and all that stays as it is.

#include "tests/packs/damagedpack.h"
#include "tests/packs/packbrowser.h"
#include "tests/support/messagelog.h"

#include <QAbstractItemModel>
#include <QAction>
#include <QPlainTextEdit>
#include <QSignalSpy>
#include <QTabWidget>
#include <QTest>

using namespace Qt::StringLiterals;

class TestPackBrowsing : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void rows_are_laid_out_as_the_projects()
    {
        Stage stage;
        const QStringList statements = {
            u"INSERT INTO personas VALUES ('12345678-9abc', 'One', 'Likes\nthe sea.', 'hidden', 'hidden', "
            "'2001-02-03T04:05:06.789', 'in spring')"_s,
            tag(1, u"New York"_s), link(u"12345678-9abc"_s, 1)};
        QVERIFY(stage.call("loadPack", writePack(stage.path(u"one.ornk"_s), statements)));
        const auto *table = personaTable(stage);
        const QStringList expected = {
            u"One"_s, u"12345678"_s, u"New York"_s, QString(), u"2001-02-03T04:05:06.789"_s, u"in spring"_s};
        QCOMPARE(Stage::cells(table), QList<QStringList>{expected});
        QVERIFY(table->item(0, 3) == nullptr);
        QCOMPARE(table->item(0, 1)->data(Qt::UserRole), QVariant(u"12345678-9abc"_s));
        const auto *narrative = qobject_cast<QPlainTextEdit *>(table->cellWidget(0, 3));
        QVERIFY(narrative != nullptr);
        QCOMPARE(narrative->toPlainText(), u"Likes\nthe sea."_s);
        QVERIFY(narrative->isReadOnly());
        QCOMPARE(narrative->minimumHeight(), 60);
        QCOMPARE(narrative->maximumHeight(), 60);

        // The project's view of the same statements is no different.
        QVERIFY(enter(stage, statements));
        refreshQuietly(stage);
        QCOMPARE(Stage::cells(table), QList<QStringList>{expected});
        QCOMPARE(table->item(0, 1)->data(Qt::UserRole), QVariant(u"12345678-9abc"_s));
    }

    void what_a_persona_lacks_shows_as_nothing()
    {
        Stage stage;
        QVERIFY(stage.call("loadPack",
                           writePack(stage.path(u"bare.ornk"_s), {u"INSERT INTO personas (uuid) VALUES ('u1')"_s})));
        const QStringList expected = {u""_s, u"u1"_s, u""_s, QString(), u""_s, u""_s};
        QCOMPARE(Stage::cells(personaTable(stage)), QList<QStringList>{expected});
        for (const int column : {0, 2, 4, 5})
            QVERIFY(personaTable(stage)->item(0, column) != nullptr);
        QCOMPARE(qobject_cast<QPlainTextEdit *>(personaTable(stage)->cellWidget(0, 3))->toPlainText(), QString());
    }

    void the_pack_takes_the_place_of_what_was_shown()
    {
        Stage stage;
        QVERIFY(showProject(stage));
        QVERIFY(stage.call("loadPack", writeCoastalPack(stage.path(u"coast.ornk"_s))));
        QCOMPARE(shownNames(stage), coastalNames());
        QCOMPARE(entries(tagFilter(stage)), QStringList({u"All"_s, u"coastal"_s, u"remote"_s, u"urban"_s}));
        QVERIFY(stage.call("loadPack", writePack(stage.path(u"one.ornk"_s), {persona(u"u1"_s, u"One"_s)})));
        QCOMPARE(shownNames(stage), QStringList{u"One"_s});
        QCOMPARE(entries(tagFilter(stage)), QStringList{u"All"_s});
    }

    void all_else_stays_as_it_was_data()
    {
        QTest::addColumn<bool>("changed");
        QTest::addRow("unchanged project") << false;
        QTest::addRow("changed project") << true;
    }

    void all_else_stays_as_it_was()
    {
        QFETCH(bool, changed);
        Stage stage;
        QVERIFY(showProject(stage));
        QVERIFY(stage.exec(u"INSERT INTO questions (order_num, prompt, answer_type) VALUES (1, 'Why?', 'text')"_s));
        refreshQuietly(stage);
        stage.action(u"Show Created"_s)->setChecked(true);
        stage.window()->findChild<QTabWidget *>()->setCurrentIndex(2);
        if (changed)
            stage.window()->markDirty();
        const QStringList rows = everyRow(stage.project());
        const QString path = writeCoastalPack(stage.path(u"coast.ornk"_s));
        const QByteArray bytes = bytesOf(path);
        const auto grid = Stage::cells(stage.find<QTableWidget>(u"resultsTable"_s));
        QCOMPARE(grid.size(), 2);

        QVERIFY(stage.call("loadPack", path));
        QCOMPARE(everyRow(stage.project()), rows);
        QCOMPARE(bytesOf(path), bytes);
        QCOMPARE(Stage::cells(stage.find<QTableWidget>(u"resultsTable"_s)), grid);
        QCOMPARE(stage.window()->findChild<QTabWidget *>()->currentIndex(), 2);
        QVERIFY(stage.window()->windowTitle().isEmpty());
        QVERIFY(!personaTable(stage)->isColumnHidden(4));
        QVERIFY(personaTable(stage)->isColumnHidden(5));
        const auto choosers = stage.page(u"Boilerplate"_s)->findChildren<QComboBox *>();
        QCOMPARE(choosers.size(), 2);
        for (const QComboBox *chooser : choosers)
            QVERIFY(!entries(chooser).contains(u"Number One"_s));
        QCOMPARE(QSqlDatabase::connectionNames(), QStringList{u"project"_s});
        QCOMPARE(stage.asksBeforeClosing(), changed);
    }

    void test_mode_makes_no_difference()
    {
        Stage stage;
        Stage::setTestMode(true);
        QVERIFY(stage.call("loadPack", writeCoastalPack(stage.path(u"coast.ornk"_s))));
        QCOMPARE(shownNames(stage), coastalNames());
    }

    void the_chooser_is_silent_while_it_is_refilled()
    {
        Stage stage;
        QVERIFY(showProject(stage));
        tagFilter(stage)->setCurrentText(u"coastal"_s);
        const QSignalSpy texts(tagFilter(stage), &QComboBox::currentTextChanged);
        const QSignalSpy indexes(tagFilter(stage), &QComboBox::currentIndexChanged);
        QVERIFY(stage.call("loadPack", writeCoastalPack(stage.path(u"coast.ornk"_s))));
        QCOMPARE(texts.size(), 0);
        QCOMPARE(indexes.size(), 0);
        QVERIFY(!tagFilter(stage)->signalsBlocked());
        QCOMPARE(tagFilter(stage)->currentText(), u"coastal"_s);
        QCOMPARE(shownNames(stage), QStringList({u"Number One"_s, u"Number Two"_s}));
    }

    void the_pack_is_open_while_its_rows_are_read()
    {
        Stage stage;
        int open = 0;
        const QString path = writeCoastalPack(stage.path(u"coast.ornk"_s));
        const auto seen =
            connect(personaTable(stage)->model(), &QAbstractItemModel::rowsInserted, this, [&open, &path] {
                const QSqlDatabase pack = QSqlDatabase::database(u"pack"_s, false);
                open += pack.isOpen() && pack.driverName() == "QSQLITE"_L1 && pack.databaseName() == path ? 1 : 0;
            });
        QVERIFY(stage.call("loadPack", path));
        disconnect(seen);
        QCOMPARE(open, 4);
        QCOMPARE(QSqlDatabase::connectionNames(), QStringList{u"project"_s});
    }

    void a_file_without_a_packs_tables_shows_nothing_data()
    {
        QTest::addColumn<QStringList>("statements");
        QTest::addColumn<QStringList>("choices");
        QTest::addColumn<QString>("warning");
        const QString missing = u"no such table: %1 Unable to execute statement"_s;
        const QStringList all = {u"All"_s};
        QTest::addRow("none") << QStringList{u"CREATE TABLE other (a)"_s} << all << missing.arg(u"personas"_s);
        QTest::addRow("no tags") << packStatements() + QStringList{u"DROP TABLE tags"_s} << all
                                 << missing.arg(u"tags"_s);
        QTest::addRow("no personas") << packStatements() + QStringList{tag(1, u"rural"_s), u"DROP TABLE personas"_s}
                                     << QStringList{u"All"_s, u"rural"_s} << missing.arg(u"personas"_s);
        QTest::addRow("no links") << packStatements() + QStringList{tag(1, u"rural"_s), u"DROP TABLE persona_tags"_s}
                                  << QStringList{u"All"_s, u"rural"_s} << missing.arg(u"persona_tags"_s);
        QTest::addRow("no column") << packStatements() + QStringList{u"ALTER TABLE personas DROP COLUMN created_at"_s}
                                   << all << u"no such column: p.created_at Unable to execute statement"_s;
    }

    void a_file_without_a_packs_tables_shows_nothing()
    {
        QFETCH(QStringList, statements);
        QFETCH(QString, warning);
        Stage stage;
        QVERIFY(showProject(stage));
        const QString path = stage.path(u"part.ornk"_s);
        {
            FileDatabase part(path);
            QVERIFY(part.exec(QStringList{u"CREATE TABLE any (a)"_s} + statements));
        }
        {
            const MessageLog log;
            QVERIFY(stage.call("loadPack", path));
            QCOMPARE(log.warnings(), QStringList{warning});
        }
        QCOMPARE(personaTable(stage)->rowCount(), 0);
        QTEST(entries(tagFilter(stage)), "choices");
        QCOMPARE(QSqlDatabase::connectionNames(), QStringList{u"project"_s});
    }

    void tables_that_readers_do_without_may_be_missing()
    {
        Stage stage;
        const QString path = stage.path(u"lean.ornk"_s);
        {
            FileDatabase pack(path);
            QVERIFY(pack.exec(packStatements().mid(0, 3) + QStringList{persona(u"u1"_s, u"One"_s)}));
        }
        QVERIFY(stage.call("loadPack", path));
        QCOMPARE(shownNames(stage), QStringList{u"One"_s});
    }

    void a_pack_damaged_at_the_start_is_reported()
    {
        Stage stage;
        const QString path = writeDamagedPack(stage.path(u"damaged.ornk"_s), Damage::FirstPage);
        {
            const MessageLog log;
            QVERIFY(stage.call("loadPack", path));
            QCOMPARE(log.warnings(), QStringList{u"database disk image is malformed Unable to fetch row"_s});
        }
        QCOMPARE(personaTable(stage)->rowCount(), 0);
        QCOMPARE(entries(tagFilter(stage)), QStringList({u"All"_s, u"rural"_s}));
    }

    void a_pack_damaged_halfway_shows_what_can_be_read()
    {
        Stage stage;
        QVERIFY(stage.call("loadPack", writeDamagedPack(stage.path(u"damaged.ornk"_s), Damage::LastPage)));
        const auto cells = Stage::cells(personaTable(stage));
        QVERIFY(!cells.isEmpty() && cells.size() < damagedPackSize);
        for (int row = 0; row < cells.size(); ++row)
            QCOMPARE(cells.at(row).at(1), damagedPackUuids().at(row));
    }
};

QTEST_MAIN(TestPackBrowsing)
#include "tst_packbrowsing.moc"
