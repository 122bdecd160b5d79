#include "tests/support/shown.h"
#include "tests/support/testcase.h"

#include <QAction>
#include <QComboBox>
#include <QGroupBox>
#include <QHeaderView>
#include <QLabel>
#include <QLayout>
#include <QPlainTextEdit>
#include <QSqlTableModel>
#include <QTabWidget>
#include <QTableWidget>

using namespace Qt::StringLiterals;

namespace {

/// One text for a widget: its class, its object name and its caption, as far as it has them.
QString describedWidget(const QWidget *widget)
{
    QStringList parts{QString::fromLatin1(widget->metaObject()->className()), widget->objectName()};
    if (const auto *button = qobject_cast<const QPushButton *>(widget))
        parts.append(button->text());
    else if (const auto *label = qobject_cast<const QLabel *>(widget))
        parts.append(label->text());
    else if (const auto *group = qobject_cast<const QGroupBox *>(widget))
        parts.append(group->title());
    parts.removeAll(QString());
    return parts.join(u' ');
}

/// The class of a layout and, in brackets, its items in their order.
QString describedLayout(const QLayout *layout)
{
    QStringList all;
    for (int index = 0; index < layout->count(); ++index) {
        QLayoutItem *item = layout->itemAt(index);
        if (item->widget() != nullptr)
            all.append(describedWidget(item->widget()));
        else if (item->layout() != nullptr)
            all.append(describedLayout(item->layout()));
        else
            all.append(item->expandingDirections().testFlag(Qt::Horizontal) ? u"stretch"_s : u"space"_s);
    }
    return QString::fromLatin1(layout->metaObject()->className()) + u'(' + all.join(", "_L1) + u')';
}

} // namespace

class TestMainWindow : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void tabs_stand_in_their_order_with_the_first_in_front()
    {
        Stage stage;
        const auto *tabs = qobject_cast<QTabWidget *>(stage.window()->centralWidget());
        QVERIFY(tabs != nullptr);
        QStringList tabTitles;
        for (int index = 0; index < tabs->count(); ++index)
            tabTitles.append(tabs->tabText(index));
        const QStringList expected = {u"Digital Twins"_s, u"Boilerplate"_s, u"Questions"_s, u"Marketplace"_s,
                                      u"Results"_s};
        QCOMPARE(tabTitles, expected);
        QCOMPARE(tabs->currentIndex(), 0);
    }

    void page_is_laid_out_from_top_to_bottom_data()
    {
        QTest::addColumn<QString>("items");
        QTest::addRow("Digital Twins")
            << u"QVBoxLayout(QComboBox tagFilter, QTableWidget personaTable, "
               "QHBoxLayout(QPushButton New, QPushButton Copy, QPushButton Delete, stretch))"_s;
        QTest::addRow("Boilerplate") << u"QVBoxLayout(QLabel Preamble (before persona), QPlainTextEdit preambleEdit, "
                                        "QLabel Postamble (after persona, before question), "
                                        "QPlainTextEdit postambleEdit, QGroupBox Conversation)"_s;
        QTest::addRow("Questions") << u"QVBoxLayout(QTableView questionView, QHBoxLayout(QPushButton Add, "
                                      "QPushButton Delete, QPushButton Up, QPushButton Down, stretch))"_s;
        QTest::addRow("Results") << u"QVBoxLayout(QTableWidget resultsTable, QPushButton runSurveyButton Run Survey)"_s;
    }

    void page_is_laid_out_from_top_to_bottom()
    {
        Stage stage;
        const QWidget *page = stage.page(QString::fromLatin1(QTest::currentDataTag()));
        QVERIFY(page != nullptr);
        QCOMPARE(page->metaObject(), &QWidget::staticMetaObject);
        QVERIFY(page->layout() != nullptr);
        QTEST(describedLayout(page->layout()), "items");
    }

    void conversation_box_has_its_choosers_above_its_text()
    {
        Stage stage;
        const ConversationBox box(stage);
        QCOMPARE(describedLayout(box.group->layout()),
                 u"QVBoxLayout(QHBoxLayout(QComboBox, QComboBox, QPushButton Show), QPlainTextEdit)"_s);
    }

    void marketplace_is_a_centred_label_and_no_more()
    {
        Stage stage;
        const auto *label = qobject_cast<QLabel *>(stage.page(u"Marketplace"_s));
        QVERIFY(label != nullptr);
        QCOMPARE(label->text(), u"Marketplace coming soon"_s);
        QCOMPARE(label->alignment(), Qt::AlignCenter);
        QVERIFY(label->layout() == nullptr);
        QVERIFY(label->findChildren<QWidget *>().isEmpty());
    }

    void name_belongs_to_one_widget_alone()
    {
        Stage stage;
        for (const auto name : {"tagFilter"_L1, "personaTable"_L1, "preambleEdit"_L1, "postambleEdit"_L1,
                                "questionView"_L1, "resultsTable"_L1, "runSurveyButton"_L1})
            QVERIFY2(stage.window()->findChildren<QObject *>(name).size() == 1, name.data());
    }

    void window_has_no_other_buttons()
    {
        Stage stage;
        QStringList texts;
        for (const auto all = stage.window()->findChildren<QPushButton *>(); const QPushButton *button : all)
            texts.append(button->text());
        texts.sort();
        QCOMPARE(texts, (QStringList{u"Add"_s, u"Copy"_s, u"Delete"_s, u"Delete"_s, u"Down"_s, u"New"_s,
                                     u"Run Survey"_s, u"Show"_s, u"Up"_s}));
    }

    void title_and_size_are_left_to_the_toolkit_whatever_the_project()
    {
        Stage stage;
        QVERIFY(!stage.window()->testAttribute(Qt::WA_Resized));
        QCOMPARE(stage.window()->minimumSize(), QSize(0, 0));
        QVERIFY(stage.window()->windowTitle().isEmpty());
        stage.call("insertPersona", u"Number One"_s, u"Calm."_s);
        QVERIFY(stage.window()->windowTitle().isEmpty());
        QVERIFY(stage.result("saveProjectToFile", stage.path(u"saved.ormt"_s)));
        QVERIFY(stage.window()->windowTitle().isEmpty());
        QVERIFY(!stage.window()->isWindowModified());
        QVERIFY(stage.window()->windowFilePath().isEmpty());
    }

    void window_comes_up_with_an_empty_project_ready_for_a_run()
    {
        Stage stage;
        QVERIFY(stage.database().isOpen());
        QCOMPARE(personaTable(stage)->rowCount(), 0);
        QCOMPARE(items(tagFilter(stage)), QStringList(u"All"_s));
        QCOMPARE(tagFilter(stage)->currentText(), u"All"_s);
        QCOMPARE(preambleEdit(stage)->toPlainText(), u"Act as the following persona."_s);
        QCOMPARE(postambleEdit(stage)->toPlainText(), QString());
        QVERIFY(questionModel(stage) != nullptr);
        QCOMPARE(questionModel(stage)->tableName(), u"questions"_s);
        QCOMPARE(questionModel(stage)->rowCount(), 0);
        QVERIFY(ConversationBox(stage).group->isHidden());
        QVERIFY(stage.find<QPushButton>(u"runSurveyButton"_s)->isEnabled());
        QVERIFY(!stage.asksBeforeClosing());
    }

    void project_of_a_fresh_window_has_no_path()
    {
        Stage stage;
        Stage::setTestMode(true);
        stage.call("insertPersona", u"Number One"_s, u"Calm."_s);
        // With a path this would write a file, and nothing would be left to ask for.
        stage.call("saveProject");
        QVERIFY(stage.asksBeforeClosing());
    }

    void two_columns_of_the_persona_list_are_hidden()
    {
        Stage stage;
        const QTableWidget *table = personaTable(stage);
        const QStringList all = titles(table);
        QCOMPARE(all, (QStringList{u"Name"_s, u"UUID"_s, u"Tags"_s, u"Narrative"_s, u"Created"_s, u"Modified"_s}));
        QStringList shown;
        for (int column = 0; column < all.size(); ++column) {
            if (!table->isColumnHidden(column))
                shown.append(all.at(column));
        }
        QCOMPARE(shown, all.first(4));
    }

    void persona_list_keeps_the_toolkits_manners()
    {
        Stage stage;
        const QTableWidget *table = personaTable(stage);
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

    void texts_are_typed_in_two_edits_and_read_in_the_third()
    {
        Stage stage;
        for (const QPlainTextEdit *edit : {preambleEdit(stage), postambleEdit(stage)}) {
            QVERIFY(!edit->isReadOnly());
            QCOMPARE(edit->minimumHeight(), 80);
        }
        QVERIFY(ConversationBox(stage).view->isReadOnly());
    }

    void question_view_selects_one_row_and_lets_rows_be_dragged()
    {
        Stage stage;
        const QTableView *view = questionView(stage);
        QCOMPARE(view->selectionBehavior(), QAbstractItemView::SelectRows);
        QCOMPARE(view->selectionMode(), QAbstractItemView::SingleSelection);
        QCOMPARE(view->dragDropMode(), QAbstractItemView::InternalMove);
        QCOMPARE(view->editTriggers(), QTableView().editTriggers());
    }

    void results_grid_grows_with_its_contents()
    {
        Stage stage;
        QCOMPARE(resultsTable(stage)->sizeAdjustPolicy(), QAbstractScrollArea::AdjustToContents);
    }
};

ORRINET_TEST(TestMainWindow)
#include "tst_mainwindow.moc"
