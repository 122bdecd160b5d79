#include "inspect/textsizedelegate.h"
#include "tests/inspect/surveydata.h"

#include <QApplication>
#include <QHeaderView>
#include <QProxyStyle>
#include <QRandomGenerator>
#include <QStyleFactory>
#include <QTabWidget>
#include <QTest>

using namespace Qt::StringLiterals;

/// The delegate remembers what it measured; Qt's own, which measures each text anew, says what is right.
class TestTextSizeDelegate : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void columns_are_as_wide_as_without_it_data();
    void columns_are_as_wide_as_without_it();
    void columns_follow_a_change_of_looks_data();
    void columns_follow_a_change_of_looks();
    void the_grid_has_columns_as_wide_as_without_it_data();
    void the_grid_has_columns_as_wide_as_without_it();
    void rows_are_as_high_as_without_it();
    void a_given_width_is_measured_by_itself();
    void an_edited_text_widens_its_column();
    void a_text_is_measured_once();
    void only_new_texts_are_measured_in_a_new_filling();
    void a_text_that_was_away_for_two_fillings_is_measured_again();
    void fillings_that_were_never_laid_out_make_nothing_forgotten();
    void a_change_of_looks_makes_all_texts_measured_again_data();
    void a_change_of_looks_makes_all_texts_measured_again();

private:
    QStringList randomTexts(int count);

    QRandomGenerator random;
};

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

void TestTextSizeDelegate::initTestCase()
{
    const quint32 seed = qEnvironmentVariableIsSet("ORRINET_SEED") ? qEnvironmentVariable("ORRINET_SEED").toUInt()
                                                                   : QRandomGenerator::global()->generate();
    qInfo("ORRINET_SEED=%u", seed);
    random.seed(seed);
}

/// Texts of all lengths, some of them equal, with whatever an answer may hold.
QStringList TestTextSizeDelegate::randomTexts(int count)
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

void TestTextSizeDelegate::columns_are_as_wide_as_without_it_data()
{
    QTest::addColumn<bool>("inFront");
    QTest::newRow("in front") << true;
    QTest::newRow("behind") << false;
}

void TestTextSizeDelegate::columns_are_as_wide_as_without_it()
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

using Change = void (*)(Tables &);
Q_DECLARE_METATYPE(Change)

static void addChanges()
{
    QTest::addColumn<Change>("change");
    QTest::newRow("font of the table") << Change(
        [](Tables &tables) { tables.table.setFont(QFont(tables.table.font().family(), 31)); });
    QTest::newRow("font of the window") << Change(
        [](Tables &tables) { tables.tabs.setFont(QFont(tables.tabs.font().family(), 31)); });
    QTest::newRow("font of the application")
        << Change([](Tables &) { QApplication::setFont(QFont(QApplication::font().family(), 31)); });
    QTest::newRow("font of its class") << Change(
        [](Tables &) { QApplication::setFont(QFont(QApplication::font().family(), 31), "QTableWidget"); });
    QTest::newRow("style sheet of the table")
        << Change([](Tables &tables) { tables.table.setStyleSheet(u"QTableWidget::item { padding: 17px; }"_s); });
    QTest::newRow("style sheet of the window")
        << Change([](Tables &tables) { tables.tabs.setStyleSheet(u"QTableWidget { font-size: 31pt; }"_s); });
}

/// Puts back what a change did to the application.
static auto restoring()
{
    return qScopeGuard([font = QApplication::font(), style = QApplication::style()->name()] {
        qApp->setStyleSheet({});
        QApplication::setFont(font);
        QApplication::setStyle(style);
    });
}

/// Has a margin around each text that no other style has.
class WideStyle : public QProxyStyle
{
public:
    int pixelMetric(PixelMetric metric, const QStyleOption *option, const QWidget *widget) const override
    {
        return QProxyStyle::pixelMetric(metric, option, widget) + (metric == PM_FocusFrameHMargin ? 20 : 0);
    }
};

void TestTextSizeDelegate::columns_follow_a_change_of_looks_data()
{
    addChanges();
    QTest::newRow("style sheet of the application")
        << Change([](Tables &) { qApp->setStyleSheet(u"QTableWidget { font-size: 31pt; }"_s); });
    QTest::newRow("style of the application") << Change([](Tables &) { QApplication::setStyle(new WideStyle); });
    QTest::newRow("style of the table") << Change([](Tables &tables) {
        auto *style = new WideStyle;
        style->setParent(&tables.table);
        tables.table.setStyle(style);
    });
}

void TestTextSizeDelegate::columns_follow_a_change_of_looks()
{
    QFETCH(const Change, change);
    const auto restore = restoring();
    Tables tables;
    const QStringList texts = randomTexts(60);
    tables.fill(texts);
    const QList<int> before = widths(tables.table);

    change(tables);
    tables.fill(texts);
    const QList<int> after = widths(tables.table);
    QVERIFY(after != before);
    QCOMPARE(after, withoutDelegate(tables.table, widths));

    tables.fill(texts);
    QCOMPARE(widths(tables.table), after);
}

void TestTextSizeDelegate::the_grid_has_columns_as_wide_as_without_it_data()
{
    columns_are_as_wide_as_without_it_data();
}

void TestTextSizeDelegate::the_grid_has_columns_as_wide_as_without_it()
{
    QFETCH(const bool, inFront);
    Stage stage;
    for (int index = 0; index < 5; ++index)
        QVERIFY(addQuestion(stage, index, u"Question %1"_s.arg(index), index));
    for (int index = 0; index < 20; ++index)
        QVERIFY(addPersona(stage, QString::number(index), u"Persona %1"_s.arg(index)));
    stage.window()->show();
    if (inFront)
        stage.find<QTabWidget>({})->setCurrentWidget(stage.page(u"Results"_s));
    for (int round = 0; round < 8; ++round) {
        for (const auto listed = randomTexts(15); const QString &text : listed) {
            QVERIFY(addAnswer(stage, QString::number(random.bounded(20)), int(random.bounded(5U)),
                              {text, QVariant(), QVariant()}, QString::number(round)));
        }
        QTableWidget *table = refreshed(stage);
        const QList<int> own = widths(*table);
        QCOMPARE(own, withoutDelegate(*table, widths));
    }
}

void TestTextSizeDelegate::rows_are_as_high_as_without_it()
{
    Tables tables;
    tables.fill(randomTexts(80));
    widths(tables.table);
    QCOMPARE(heights(tables.table), withoutDelegate(tables.table, heights));
}

void TestTextSizeDelegate::a_given_width_is_measured_by_itself()
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

void TestTextSizeDelegate::an_edited_text_widens_its_column()
{
    Tables tables;
    tables.fill({u"short"_s, u"short"_s}, 1);
    const int before = widths(tables.table).constFirst();
    tables.table.item(1, 0)->setText(u"a good deal longer"_s);
    QCOMPARE_GT(widths(tables.table).constFirst(), before);
    QCOMPARE(widths(tables.table), withoutDelegate(tables.table, widths));
}

/// The texts that are measured for a filling.
static QStringList measured(Tables &tables, WatchingStyle &style, const QStringList &texts)
{
    style.taken();
    tables.fill(texts, 1);
    widths(tables.table);
    return style.taken();
}

void TestTextSizeDelegate::a_text_is_measured_once()
{
    WatchingStyle style;
    Tables tables;
    tables.table.setStyle(&style);
    QCOMPARE(measured(tables, style, {u"a"_s, u"b"_s, u"a"_s, u""_s, u"b"_s, u""_s}),
             (QStringList{u""_s, u"a"_s, u"b"_s}));
    QCOMPARE(measured(tables, style, {u"b"_s, u"a"_s, u""_s}), QStringList());
    QCOMPARE(measured(tables, style, {u"a"_s, u""_s, u"b"_s}), QStringList());
}

void TestTextSizeDelegate::only_new_texts_are_measured_in_a_new_filling()
{
    WatchingStyle style;
    Tables tables;
    tables.table.setStyle(&style);
    QCOMPARE(measured(tables, style, {u"a"_s, u"b"_s}), (QStringList{u"a"_s, u"b"_s}));
    QCOMPARE(measured(tables, style, {u"a"_s, u"b"_s, u"c"_s}), QStringList{u"c"_s});
    QCOMPARE(measured(tables, style, {u"d"_s, u"a"_s, u"b"_s, u"e"_s, u"c"_s}), (QStringList{u"d"_s, u"e"_s}));
}

void TestTextSizeDelegate::a_text_that_was_away_for_two_fillings_is_measured_again()
{
    WatchingStyle style;
    Tables tables;
    tables.table.setStyle(&style);
    QCOMPARE(measured(tables, style, {u"a"_s, u"b"_s}), (QStringList{u"a"_s, u"b"_s}));
    QCOMPARE(measured(tables, style, {u"b"_s}), QStringList());
    QCOMPARE(measured(tables, style, {u"b"_s}), QStringList());
    QCOMPARE(measured(tables, style, {u"a"_s, u"b"_s}), QStringList{u"a"_s});
}

void TestTextSizeDelegate::fillings_that_were_never_laid_out_make_nothing_forgotten()
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

void TestTextSizeDelegate::a_change_of_looks_makes_all_texts_measured_again_data()
{
    addChanges();
}

void TestTextSizeDelegate::a_change_of_looks_makes_all_texts_measured_again()
{
    QFETCH(const Change, change);
    const auto restore = restoring();
    WatchingStyle style;
    Tables tables;
    tables.table.setStyle(&style);
    QCOMPARE(measured(tables, style, {u"a"_s, u"b"_s}), (QStringList{u"a"_s, u"b"_s}));
    QCOMPARE(measured(tables, style, {u"b"_s}), QStringList());
    change(tables);
    QStringList again = style.taken();
    again += measured(tables, style, {u"a"_s, u"b"_s});
    QVERIFY(again.contains(u"a"_s));
    QVERIFY(again.contains(u"b"_s));
}

QTEST_MAIN(TestTextSizeDelegate)
#include "tst_textsizedelegate.moc"
