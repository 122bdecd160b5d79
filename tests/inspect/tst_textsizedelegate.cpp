#include "inspect/textsizedelegate.h"
#include "tests/support/entries.h"
#include "tests/support/seed.h"
#include "tests/support/shown.h"
#include "tests/support/testcase.h"

#include <QApplication>
#include <QHeaderView>
#include <QProxyStyle>
#include <QRandomGenerator>
#include <QStyleFactory>
#include <QTabWidget>
#include <QTableWidget>
#include <QTest>

using namespace Qt::StringLiterals;

/// The delegate remembers what it measured; Qt's own, which measures each text anew, says what is right.
/// Notes the texts that the style is asked to measure.
class WatchingStyle : public QProxyStyle
{
public:
    QSize sizeFromContents(ContentsType type, const QStyleOption *option, const QSize &size,
                           const QWidget *widget) const override
    {
        if (type == CT_ItemViewItem)
            texts.append(qstyleoption_cast<const QStyleOptionViewItem *>(option)->text);
        return QProxyStyle::sizeFromContents(type, option, size, widget);
    }
    /// In alphabetical order, each as often as it was measured since the last call.
    QStringList taken()
    {
        texts.sort();
        return std::exchange(texts, {});
    }

private:
    mutable QStringList texts;
};

/// A table like the grid, in a page of its own of two.
class Tables
{
public:
    explicit Tables(bool inFront = true)
    {
        table.setParent(nullptr);
        tabs.addTab(new QWidget, u"other"_s);
        tabs.addTab(&table, u"table"_s);
        tabs.setCurrentIndex(inFront ? 1 : 0);
        table.setItemDelegate(new TextSizeDelegate(&table));
        tabs.show();
    }
    ~Tables() { table.setParent(nullptr); }
    Q_DISABLE_COPY_MOVE(Tables)

    /// As the grid is rebuilt.
    void fill(const QStringList &texts, int columns = 4)
    {
        table.horizontalHeader()->setSectionResizeMode(QHeaderView::Interactive);
        table.clear();
        table.setRowCount(0);
        table.setRowCount(int((texts.size() + columns - 1) / columns));
        table.setColumnCount(columns);
        for (int index = 0; index < texts.size(); ++index)
            table.setItem(index / columns, index % columns, new QTableWidgetItem(texts.at(index)));
        table.horizontalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);
    }

    QTabWidget tabs;
    QTableWidget table;
};

/// The widths that the table has come to, after all that was put off.
static QList<int> widths(QTableWidget &table)
{
    QCoreApplication::processEvents();
    QList<int> all;
    for (int column = 0; column < table.columnCount(); ++column)
        all.append(table.columnWidth(column));
    return all;
}

static QList<int> heights(QTableWidget &table)
{
    table.resizeRowsToContents();
    QList<int> all;
    for (int row = 0; row < table.rowCount(); ++row)
        all.append(table.rowHeight(row));
    return all;
}

/// What @p measure gives with Qt's own delegate.
template<typename Measure>
static auto withoutDelegate(QTableWidget &table, const Measure &measure)
{
    QAbstractItemDelegate *own = table.itemDelegate();
    QStyledItemDelegate plain;
    table.setItemDelegate(&plain);
    table.resizeColumnsToContents();
    auto measured = measure(table);
    table.setItemDelegate(own);
    table.resizeColumnsToContents();
    return measured;
}

/// Texts of all lengths, some of them equal, with whatever an answer may hold.
/// Has a margin around each text that no other style has.
class WideStyle : public QProxyStyle
{
public:
    int pixelMetric(PixelMetric metric, const QStyleOption *option, const QWidget *widget) const override
    {
        return QProxyStyle::pixelMetric(metric, option, widget) + (metric == PM_FocusFrameHMargin ? 20 : 0);
    }
};

using LooksChange = void (*)(Tables &);

/// Puts back what a change did to the application.
static auto restoring()
{
    return qScopeGuard([font = QApplication::font(), style = QApplication::style()->name()] {
        qApp->setStyleSheet({});
        QApplication::setFont(font);
        QApplication::setStyle(style);
    });
}

/// The texts that are measured for a filling.
static QStringList measured(Tables &tables, WatchingStyle &style, const QStringList &texts)
{
    style.taken();
    tables.fill(texts, 1);
    widths(tables.table);
    return style.taken();
}

class TestTextSizeDelegate : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { random.seed(testSeed()); }

    void columns_are_as_wide_as_without_it_data()
    {
        QTest::addColumn<bool>("inFront");
        QTest::newRow("in front") << true;
        QTest::newRow("behind") << false;
    }
    void columns_are_as_wide_as_without_it()
    {
        QFETCH(const bool, inFront);
        Tables tables(inFront);
        QStringList texts = randomTexts(240);
        for (int filling = 0; filling < 12; ++filling) {
            tables.fill(texts, 1 + int(random.bounded(6U)));
            const QList<int> own = widths(tables.table);
            QCOMPARE(own, withoutDelegate(tables.table, widths));
            // Some texts stay, some come, some move, as from one answer to the next.
            texts = texts.mid(random.bounded(texts.size() / 2)) + randomTexts(int(random.bounded(120U)));
        }
    }

    void columns_follow_a_change_of_looks_data()
    {
        QTest::addColumn<LooksChange>("change");
        QTest::newRow("font of the table")
            << LooksChange([](Tables &tables) { tables.table.setFont(QFont(tables.table.font().family(), 31)); });
        QTest::newRow("font of the window")
            << LooksChange([](Tables &tables) { tables.tabs.setFont(QFont(tables.tabs.font().family(), 31)); });
        QTest::newRow("font of the application")
            << LooksChange([](Tables &) { QApplication::setFont(QFont(QApplication::font().family(), 31)); });
        QTest::newRow("font of its class") << LooksChange(
            [](Tables &) { QApplication::setFont(QFont(QApplication::font().family(), 31), "QTableWidget"); });
        QTest::newRow("style sheet of the table") << LooksChange(
            [](Tables &tables) { tables.table.setStyleSheet(u"QTableWidget::item { padding: 17px; }"_s); });
        QTest::newRow("style sheet of the window")
            << LooksChange([](Tables &tables) { tables.tabs.setStyleSheet(u"QTableWidget { font-size: 31pt; }"_s); });
        QTest::newRow("style sheet of the application")
            << LooksChange([](Tables &) { qApp->setStyleSheet(u"QTableWidget { font-size: 31pt; }"_s); });
        QTest::newRow("style of the application")
            << LooksChange([](Tables &) { QApplication::setStyle(new WideStyle); });
        QTest::newRow("style of the table") << LooksChange([](Tables &tables) {
            auto *style = new WideStyle;
            style->setParent(&tables.table);
            tables.table.setStyle(style);
        });
    }
    void columns_follow_a_change_of_looks()
    {
        QFETCH(const LooksChange, change);
        const auto restore = restoring();
        Tables tables;
        const QStringList texts = randomTexts(60);
        tables.fill(texts);
        const QList<int> before = widths(tables.table);
        // Now some of the sizes are of the filling before.
        tables.fill(texts.first(30));
        widths(tables.table);

        change(tables);
        tables.fill(texts);
        const QList<int> after = widths(tables.table);
        QVERIFY(after != before);
        QCOMPARE(after, withoutDelegate(tables.table, widths));

        tables.fill(texts);
        QCOMPARE(widths(tables.table), after);
    }

    void the_grid_has_columns_as_wide_as_without_it_data() { columns_are_as_wide_as_without_it_data(); }
    void the_grid_has_columns_as_wide_as_without_it()
    {
        QFETCH(const bool, inFront);
        Stage stage;
        for (int index = 0; index < 5; ++index)
            QVERIFY(enter(stage, QuestionEntered{.id = index, .prompt = u"Question %1"_s.arg(index)}));
        for (int index = 0; index < 20; ++index)
            QVERIFY(enter(stage, PersonaEntered{.uuid = index, .name = u"Persona %1"_s.arg(index)}));
        stage.window()->show();
        if (inFront)
            stage.find<QTabWidget>({})->setCurrentWidget(stage.page(u"Results"_s));
        for (int round = 0; round < 8; ++round) {
            for (const auto listed = randomTexts(15); const QString &text : listed) {
                QVERIFY(enter(stage, AnswerEntered{.persona = random.bounded(20),
                                                   .question = random.bounded(5),
                                                   .text = text,
                                                   .createdAt = round}));
            }
            QTableWidget *table = refreshedGrid(stage);
            const QList<int> own = widths(*table);
            QCOMPARE(own, withoutDelegate(*table, widths));
        }
    }

    void rows_are_as_high_as_without_it()
    {
        Tables tables;
        tables.fill(randomTexts(80));
        widths(tables.table);
        QCOMPARE(heights(tables.table), withoutDelegate(tables.table, heights));
    }

    void a_given_width_is_measured_by_itself()
    {
        Tables tables;
        tables.fill({u"many words that do not fit in a narrow place"_s}, 1);
        const QStyledItemDelegate plain;
        const QModelIndex index = tables.table.model()->index(0, 0);
        const auto *own = qobject_cast<TextSizeDelegate *>(tables.table.itemDelegate());
        QStyleOptionViewItem option;
        option.initFrom(&tables.table);
        option.widget = &tables.table;
        option.features = QStyleOptionViewItem::WrapText;
        option.rect = QRect();
        const QSize free = plain.sizeHint(option, index);
        for (const int width : {0, 40, 0, 80, 40, 0}) {
            option.rect = QRect(0, 0, width, 20);
            const QSize right = plain.sizeHint(option, index);
            QCOMPARE(own->sizeHint(option, index), right);
            QCOMPARE(right == free, width == 0);
        }
    }

    void an_edited_text_widens_its_column()
    {
        Tables tables;
        tables.fill({u"short"_s, u"short"_s}, 1);
        const int before = widths(tables.table).constFirst();
        tables.table.item(1, 0)->setText(u"a good deal longer"_s);
        QCOMPARE_GT(widths(tables.table).constFirst(), before);
        QCOMPARE(widths(tables.table), withoutDelegate(tables.table, widths));
    }

    void a_text_is_measured_once()
    {
        WatchingStyle style;
        Tables tables;
        tables.table.setStyle(&style);
        QCOMPARE(measured(tables, style, {u"a"_s, u"b"_s, u"a"_s, u""_s, u"b"_s, u""_s}),
                 (QStringList{u""_s, u"a"_s, u"b"_s}));
        QCOMPARE(measured(tables, style, {u"b"_s, u"a"_s, u""_s}), QStringList());
        QCOMPARE(measured(tables, style, {u"a"_s, u""_s, u"b"_s}), QStringList());
    }

    void only_new_texts_are_measured_in_a_new_filling()
    {
        WatchingStyle style;
        Tables tables;
        tables.table.setStyle(&style);
        QCOMPARE(measured(tables, style, {u"a"_s, u"b"_s}), (QStringList{u"a"_s, u"b"_s}));
        QCOMPARE(measured(tables, style, {u"a"_s, u"b"_s, u"c"_s}), QStringList{u"c"_s});
        QCOMPARE(measured(tables, style, {u"d"_s, u"a"_s, u"b"_s, u"e"_s, u"c"_s}), (QStringList{u"d"_s, u"e"_s}));
    }

    void a_text_that_was_away_for_two_fillings_is_measured_again()
    {
        WatchingStyle style;
        Tables tables;
        tables.table.setStyle(&style);
        QCOMPARE(measured(tables, style, {u"a"_s, u"b"_s}), (QStringList{u"a"_s, u"b"_s}));
        QCOMPARE(measured(tables, style, {u"b"_s}), QStringList());
        QCOMPARE(measured(tables, style, {u"b"_s}), QStringList());
        QCOMPARE(measured(tables, style, {u"a"_s, u"b"_s}), QStringList{u"a"_s});
    }

    void fillings_that_were_never_laid_out_make_nothing_forgotten()
    {
        WatchingStyle style;
        Tables tables;
        tables.table.setStyle(&style);
        QCOMPARE(measured(tables, style, {u"a"_s, u"b"_s}), (QStringList{u"a"_s, u"b"_s}));
        tables.fill({u"c"_s}, 1);
        tables.fill({}, 1);
        tables.fill({u"d"_s}, 1);
        QCOMPARE(measured(tables, style, {u"a"_s, u"b"_s}), QStringList());
    }

private:
    QStringList randomTexts(int count)
    {
        static const QStringList pieces{u"word"_s,
                                        u" "_s,
                                        u"  "_s,
                                        u"\n"_s,
                                        u"\r\n"_s,
                                        u"\t"_s,
                                        u"\u2028"_s,
                                        u"שלום"_s,
                                        u"مرحبا"_s,
                                        u"😀"_s,
                                        u"👩‍👩‍👧"_s,
                                        u"e\u0301"_s,
                                        u"i"_s,
                                        u"WWW"_s,
                                        u"\u00a0"_s,
                                        u"中文"_s,
                                        u"&"_s,
                                        u"<b>"_s,
                                        u"\u200f"_s,
                                        u"f"_s,
                                        u"\u00ad"_s};
        QStringList texts;
        for (int index = 0; index < count; ++index) {
            QString text;
            const quint32 most = random.bounded(8U) == 0 ? 80U : 6U;
            for (quint32 piece = random.bounded(most); piece > 0; --piece)
                text += pieces.at(random.bounded(pieces.size()));
            texts.append(random.bounded(5U) == 0 && !texts.isEmpty() ? texts.at(random.bounded(texts.size())) : text);
        }
        return texts;
    }

    QRandomGenerator random;
};

ORRINET_TEST(TestTextSizeDelegate)
#include "tst_textsizedelegate.moc"
