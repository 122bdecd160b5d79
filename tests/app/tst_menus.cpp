#include "tests/support/stage.h"

#include <QAction>
#include <QMenu>
#include <QMenuBar>
#include <QTest>

using namespace Qt::StringLiterals;

class TestMenus : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void menus_stand_in_their_order()
    {
        Stage stage;
        QStringList titles;
        for (const auto all = stage.window()->menuBar()->actions(); const QAction *menu : all) {
            QVERIFY(menu->menu() != nullptr);
            titles.append(menu->text());
        }
        const QStringList expected = {u"&File"_s, u"&Settings"_s, u"&View"_s, u"&Survey"_s, u"&Help"_s};
        QCOMPARE(titles, expected);
    }

    void menu_has_its_entries_and_no_separators_data()
    {
        QTest::addColumn<QStringList>("entries");
        QTest::addRow("&File") << QStringList{u"New Project"_s, u"Open Project"_s, u"Save"_s, u"Save As"_s,
                                              u"Import Pack"_s, u"Export Pack"_s,  u"Quit"_s};
        QTest::addRow("&Settings") << QStringList{u"Preferences"_s};
        QTest::addRow("&View") << QStringList{u"Show Created"_s, u"Show Modified"_s};
        QTest::addRow("&Survey") << QStringList{u"Run"_s};
        QTest::addRow("&Help") << QStringList{u"About"_s};
    }

    void menu_has_its_entries_and_no_separators()
    {
        QFETCH(QStringList, entries);
        Stage stage;
        QStringList found;
        for (const auto all = stage.window()->menuBar()->actions(); const QAction *menu : all) {
            if (menu->text() != QString::fromLatin1(QTest::currentDataTag()))
                continue;
            for (const auto inMenu = menu->menu()->actions(); const QAction *entry : inMenu)
                found.append(entry->isSeparator() ? u"---"_s : entry->text());
        }
        QCOMPARE(found, entries);
    }

    void entry_is_a_bare_text_data()
    {
        QTest::addColumn<bool>("checkable");
        for (const char *text : {"New Project", "Open Project", "Save", "Save As", "Import Pack", "Export Pack", "Quit",
                                 "Preferences", "Run", "About"})
            QTest::addRow("%s", text) << false;
        QTest::addRow("Show Created") << true;
        QTest::addRow("Show Modified") << true;
    }

    void entry_is_a_bare_text()
    {
        QFETCH(bool, checkable);
        Stage stage;
        const QString text = QString::fromLatin1(QTest::currentDataTag());
        const QAction *entry = stage.action(text);
        QVERIFY(entry != nullptr);
        QVERIFY(entry->shortcuts().isEmpty());
        QVERIFY(entry->icon().isNull());
        // The toolkit shows the text itself where no tooltip was given.
        QCOMPARE(entry->toolTip(), text);
        QVERIFY(entry->statusTip().isEmpty());
        QVERIFY(entry->whatsThis().isEmpty());
        QVERIFY(entry->isEnabled());
        QVERIFY(entry->isVisible());
        QCOMPARE(entry->isCheckable(), checkable);
        QVERIFY(!entry->isChecked());
    }

    void toggle_shows_and_hides_its_own_column_data()
    {
        QTest::addColumn<int>("own");
        QTest::addColumn<int>("other");
        QTest::addRow("Show Created") << 4 << 5;
        QTest::addRow("Show Modified") << 5 << 4;
    }

    void toggle_shows_and_hides_its_own_column()
    {
        QFETCH(int, own);
        QFETCH(int, other);
        Stage stage;
        const auto *table = stage.find<QTableWidget>(u"personaTable"_s);
        QAction *entry = stage.action(QString::fromLatin1(QTest::currentDataTag()));

        entry->trigger();
        QVERIFY(!table->isColumnHidden(own));
        QVERIFY(table->isColumnHidden(other));
        entry->trigger();
        QVERIFY(table->isColumnHidden(own));
        QVERIFY(table->isColumnHidden(other));
        // The change of the check mark is what counts, whoever makes it.
        entry->setChecked(true);
        QVERIFY(!table->isColumnHidden(own));
    }

    void toggles_do_not_touch_each_other()
    {
        Stage stage;
        const auto *table = stage.find<QTableWidget>(u"personaTable"_s);
        stage.action(u"Show Created"_s)->trigger();
        stage.action(u"Show Modified"_s)->trigger();
        stage.action(u"Show Created"_s)->trigger();
        QVERIFY(table->isColumnHidden(4));
        QVERIFY(!table->isColumnHidden(5));
    }

    void toggle_is_not_remembered_by_the_next_window()
    {
        Stage stage;
        stage.action(u"Show Created"_s)->trigger();
        QVERIFY(!stage.find<QTableWidget>(u"personaTable"_s)->isColumnHidden(4));
        stage.closeWindow();
        QVERIFY(stage.find<QTableWidget>(u"personaTable"_s)->isColumnHidden(4));
        QVERIFY(!stage.action(u"Show Created"_s)->isChecked());
    }
};

QTEST_MAIN(TestMenus)
#include "tst_menus.moc"
