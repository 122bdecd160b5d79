#include "tests/support/modal.h"
#include "tests/support/shown.h"
#include "tests/support/testcase.h"

#include <QAction>
#include <QMenu>
#include <QMenuBar>
#include <QSignalSpy>
#include <QTableWidget>

using namespace Qt::StringLiterals;

/// The text of a menu entry, with all that it has beside the text.
static QString describedEntry(const QAction *entry)
{
    if (entry->isSeparator())
        return u"---"_s;
    QString text = entry->text();
    if (entry->isCheckable())
        text += u" [ ]"_s;
    if (entry->isChecked() || !entry->isEnabled() || !entry->isVisible() || !entry->icon().isNull() ||
        !entry->shortcuts().isEmpty() || !entry->statusTip().isEmpty() || !entry->whatsThis().isEmpty())
        text += u" and more"_s;
    // The toolkit shows the text itself where no tooltip was given.
    return entry->toolTip() == entry->text() ? text : text + u", "_s + entry->toolTip();
}

class TestMenus : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void menus_stand_in_their_order()
    {
        Stage stage;
        QStringList menuTitles;
        for (const auto all = stage.window()->menuBar()->actions(); const QAction *menu : all) {
            QVERIFY(menu->menu() != nullptr);
            menuTitles.append(menu->text());
        }
        QCOMPARE(menuTitles, (QStringList{u"&File"_s, u"&Settings"_s, u"&View"_s, u"&Survey"_s, u"&Help"_s}));
    }

    void menu_has_its_entries_and_they_are_bare_texts_data()
    {
        QTest::addColumn<QStringList>("entries");
        QTest::addRow("&File") << QStringList{u"New Project"_s, u"Open Project"_s, u"Save"_s, u"Save As"_s,
                                              u"Import Pack"_s, u"Export Pack"_s,  u"Quit"_s};
        QTest::addRow("&Settings") << QStringList{u"Preferences"_s};
        QTest::addRow("&View") << QStringList{u"Show Created [ ]"_s, u"Show Modified [ ]"_s};
        QTest::addRow("&Survey") << QStringList{u"Run"_s};
        QTest::addRow("&Help") << QStringList{u"About"_s};
    }

    void menu_has_its_entries_and_they_are_bare_texts()
    {
        Stage stage;
        QStringList found;
        for (const auto all = stage.window()->menuBar()->actions(); const QAction *menu : all) {
            if (menu->text() != QString::fromLatin1(QTest::currentDataTag()))
                continue;
            for (const auto entries = menu->menu()->actions(); const QAction *entry : entries)
                found.append(describedEntry(entry));
        }
        QTEST(found, "entries");
    }

    void entry_opens_its_window_data()
    {
        QTest::addColumn<QString>("title");
        QTest::addRow("Open Project") << u"Open Project"_s;
        QTest::addRow("Save") << u"Save Project"_s;
        QTest::addRow("Save As") << u"Save Project"_s;
        QTest::addRow("Import Pack") << u"Open Persona Pack"_s;
        QTest::addRow("Export Pack") << u"Export Persona Pack"_s;
        QTest::addRow("Preferences") << u"Preferences"_s;
    }

    void entry_opens_its_window()
    {
        Stage stage;
        QString title;
        const Modal modal([&title](QWidget *window) { title = window->windowTitle(); });
        stage.action(QString::fromLatin1(QTest::currentDataTag()))->trigger();
        QTEST(title, "title");
    }

    void new_project_drops_the_project()
    {
        Stage stage;
        stage.call("insertPersona", u"Number One"_s, u"Calm."_s);
        QCOMPARE(stage.count(u"personas"_s), 1);
        stage.action(u"New Project"_s)->trigger();
        QCOMPARE(stage.count(u"personas"_s), 0);
    }

    void import_in_test_mode_tells_outside_code_alone()
    {
        Stage stage;
        Stage::setTestMode(true);
        const QSignalSpy requested(stage.window(), &MainWindow::importRequested);
        QVERIFY(asksNothing([&stage] { stage.action(u"Import Pack"_s)->trigger(); }));
        const QList<QVariantList> once = {{QString()}};
        QCOMPARE(requested, once);
        QCOMPARE(stage.count(u"personas"_s), 0);
    }

    void toggle_shows_and_hides_its_own_column_data()
    {
        QTest::addColumn<int>("own");
        QTest::addColumn<int>("other");
        QTest::addColumn<QString>("otherToggle");
        QTest::addRow("Show Created") << 4 << 5 << u"Show Modified"_s;
        QTest::addRow("Show Modified") << 5 << 4 << u"Show Created"_s;
    }

    void toggle_shows_and_hides_its_own_column()
    {
        QFETCH(int, own);
        QFETCH(int, other);
        QFETCH(QString, otherToggle);
        Stage stage;
        const QTableWidget *table = personaTable(stage);
        QAction *entry = stage.action(QString::fromLatin1(QTest::currentDataTag()));

        entry->trigger();
        QVERIFY(!table->isColumnHidden(own));
        QVERIFY(table->isColumnHidden(other));
        stage.action(otherToggle)->trigger();
        entry->trigger();
        QVERIFY(table->isColumnHidden(own));
        QVERIFY(!table->isColumnHidden(other));
        // The change of the check mark is what counts, whoever makes it.
        entry->setChecked(true);
        QVERIFY(!table->isColumnHidden(own));
    }

    void toggle_is_not_remembered_by_the_next_window()
    {
        Stage stage;
        stage.action(u"Show Created"_s)->trigger();
        QVERIFY(!personaTable(stage)->isColumnHidden(4));
        stage.closeWindow();
        QVERIFY(personaTable(stage)->isColumnHidden(4));
        QVERIFY(!stage.action(u"Show Created"_s)->isChecked());
    }
};

ORRINET_TEST(TestMenus)
#include "tst_menus.moc"
