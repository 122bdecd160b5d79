#include "tests/support/stage.h"

#include <QAction>
#include <QComboBox>
#include <QGroupBox>
#include <QHeaderView>
#include <QPlainTextEdit>
#include <QSqlTableModel>
#include <QTabWidget>
#include <QTableView>
#include <QTest>

using namespace Qt::StringLiterals;

class TestMainWindow : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void widget_is_found_by_the_name_of_its_field_data()
    {
        QTest::addColumn<QString>("className");
        QTest::addRow("tagFilter") << u"QComboBox"_s;
        QTest::addRow("personaTable") << u"QTableWidget"_s;
        QTest::addRow("preambleEdit") << u"QPlainTextEdit"_s;
        QTest::addRow("postambleEdit") << u"QPlainTextEdit"_s;
        QTest::addRow("questionView") << u"QTableView"_s;
        QTest::addRow("resultsTable") << u"QTableWidget"_s;
        QTest::addRow("runSurveyButton") << u"QPushButton"_s;
    }

    void widget_is_found_by_the_name_of_its_field()
    {
        QFETCH(QString, className);
        Stage stage;
        const auto found = stage.window()->findChildren<QWidget *>(QString::fromLatin1(QTest::currentDataTag()));
        QCOMPARE(found.size(), 1);
        QCOMPARE(QString::fromLatin1(found.first()->metaObject()->className()), className);
    }

    void tabs_stand_in_their_order()
    {
        Stage stage;
        auto *tabs = qobject_cast<QTabWidget *>(stage.window()->centralWidget());
        QVERIFY(tabs != nullptr);
        QCOMPARE(tabs->parent(), stage.window());
        QStringList titles;
        for (int index = 0; index < tabs->count(); ++index)
            titles.append(tabs->tabText(index));
        const QStringList expected = {u"Digital Twins"_s, u"Boilerplate"_s, u"Questions"_s, u"Marketplace"_s,
                                      u"Results"_s};
        QCOMPARE(titles, expected);
    }

    void first_tab_is_shown_first()
    {
        Stage stage;
        QCOMPARE(stage.window()->findChild<QTabWidget *>()->currentIndex(), 0);
    }

    void title_and_size_are_left_to_the_toolkit()
    {
        Stage stage;
        QVERIFY(stage.window()->windowTitle().isEmpty());
        QVERIFY(!stage.window()->testAttribute(Qt::WA_Resized));
        QCOMPARE(stage.window()->minimumSize(), QSize(0, 0));
    }

    void title_stays_unset_whatever_the_project()
    {
        Stage stage;
        stage.call("insertPersona", u"Number One"_s, u"Calm."_s);
        QVERIFY(stage.window()->windowTitle().isEmpty());
        QVERIFY(stage.result("saveProjectToFile", stage.path(u"saved.ormt"_s)));
        QVERIFY(stage.window()->windowTitle().isEmpty());
        QVERIFY(!stage.window()->isWindowModified());
        QVERIFY(stage.window()->windowFilePath().isEmpty());
    }

    void window_comes_up_with_an_empty_project()
    {
        Stage stage;
        QVERIFY(stage.project().isOpen());
        QCOMPARE(stage.find<QTableWidget>(u"personaTable"_s)->rowCount(), 0);
        QCOMPARE(stage.find<QComboBox>(u"tagFilter"_s)->currentText(), u"All"_s);
        QCOMPARE(stage.find<QComboBox>(u"tagFilter"_s)->count(), 1);
        QCOMPARE(stage.find<QPlainTextEdit>(u"preambleEdit"_s)->toPlainText(), u"Act as the following persona."_s);
        QCOMPARE(stage.find<QPlainTextEdit>(u"postambleEdit"_s)->toPlainText(), QString());

        const auto *model = qobject_cast<QSqlTableModel *>(stage.find<QTableView>(u"questionView"_s)->model());
        QVERIFY(model != nullptr);
        QCOMPARE(model->tableName(), u"questions"_s);
        QCOMPARE(model->rowCount(), 0);
        QVERIFY(stage.page(u"Boilerplate"_s)->findChild<QGroupBox *>()->isHidden());
        QVERIFY(!stage.asksBeforeClosing());
    }

    void window_comes_up_ready_for_a_run()
    {
        Stage stage;
        QVERIFY(stage.action(u"Run"_s)->isEnabled());
        QVERIFY(stage.find<QPushButton>(u"runSurveyButton"_s)->isEnabled());
    }

    void project_of_a_fresh_window_has_no_path()
    {
        Stage stage;
        Stage::setTestMode(true);
        // With a path this would write a file, and report one that it can't.
        QVERIFY(stage.call("saveProject"));
        stage.call("insertPersona", u"Number One"_s, u"Calm."_s);
        QVERIFY(stage.call("saveProject"));
        QVERIFY(stage.asksBeforeClosing());
    }

    void two_columns_of_the_persona_list_are_hidden()
    {
        Stage stage;
        const auto *table = stage.find<QTableWidget>(u"personaTable"_s);
        QStringList shown;
        QStringList all;
        for (int column = 0; column < table->columnCount(); ++column) {
            all.append(table->horizontalHeaderItem(column)->text());
            if (!table->isColumnHidden(column))
                shown.append(all.last());
        }
        const QStringList expected = {u"Name"_s, u"UUID"_s, u"Tags"_s, u"Narrative"_s, u"Created"_s, u"Modified"_s};
        QCOMPARE(all, expected);
        QCOMPARE(shown, expected.first(4));
    }

    void persona_list_keeps_the_toolkits_manners()
    {
        Stage stage;
        const auto *table = stage.find<QTableWidget>(u"personaTable"_s);
        const QTableWidget plain(0, 6);
        QCOMPARE(table->selectionBehavior(), plain.selectionBehavior());
        QCOMPARE(table->selectionMode(), plain.selectionMode());
        QCOMPARE(table->editTriggers(), plain.editTriggers());
        QCOMPARE(table->isSortingEnabled(), plain.isSortingEnabled());
        const QHeaderView *header = table->horizontalHeader();
        QCOMPARE(header->stretchLastSection(), plain.horizontalHeader()->stretchLastSection());
        for (int column = 0; column < 6; ++column) {
            QCOMPARE(header->sectionResizeMode(column), plain.horizontalHeader()->sectionResizeMode(column));
            if (!table->isColumnHidden(column))
                QCOMPARE(table->columnWidth(column), plain.columnWidth(column));
        }
    }

    void question_view_selects_one_row_and_lets_rows_be_dragged()
    {
        Stage stage;
        const auto *view = stage.find<QTableView>(u"questionView"_s);
        QCOMPARE(view->selectionBehavior(), QAbstractItemView::SelectRows);
        QCOMPARE(view->selectionMode(), QAbstractItemView::SingleSelection);
        QCOMPARE(view->dragDropMode(), QAbstractItemView::InternalMove);
        QCOMPARE(view->editTriggers(), QTableView().editTriggers());
    }

    void results_grid_grows_with_its_contents()
    {
        Stage stage;
        QCOMPARE(stage.find<QTableWidget>(u"resultsTable"_s)->sizeAdjustPolicy(),
                 QAbstractScrollArea::AdjustToContents);
    }
};

QTEST_MAIN(TestMainWindow)
#include "tst_mainwindow.moc"
