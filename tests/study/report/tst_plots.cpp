// What the drawings of a report show, in words and in marks.

#include "study/report/canvas.h"
#include "study/report/plots/plots.h"
#include "study/report/svg.h"
#include "tests/support/testcase.h"

#include <QImage>
#include <QPainter>
#include <QTest>
#include <QXmlStreamReader>

using namespace Qt::StringLiterals;
using study::Bar;
using study::barsFigure;
using study::colour;
using study::dumbbellFigure;
using study::Figure;
using study::fitting;
using study::heatFigure;
using study::histogramFigure;
using study::Ink;
using study::mapFigure;
using study::Mark;
using study::scaleFigure;
using study::textSize;
using study::toSvg;
using study::widthOf;

static QImage imageOf(const Figure &figure)
{
    QImage image(figure.size.toSize(), QImage::Format_RGB32);
    image.fill(Qt::white);
    QPainter painter(&image);
    figure.paint(painter);
    return image;
}

/// How many points of an image have a colour.
static int pointsOf(const QImage &image, Ink ink)
{
    int points = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x)
            points += image.pixelColor(x, y) == colour(ink) ? 1 : 0;
    }
    return points;
}

static QStringList textsIn(const QString &svg)
{
    QStringList texts;
    QXmlStreamReader xml(svg);
    while (!xml.atEnd()) {
        if (xml.readNext() == QXmlStreamReader::StartElement && xml.name() == "text"_L1)
            texts << xml.readElementText(QXmlStreamReader::IncludeChildElements).trimmed();
    }
    return xml.hasError() ? QStringList{xml.errorString()} : texts;
}

static QList<Figure> oneOfEach()
{
    return {
        barsFigure(u"bars"_s, {{u"Tea"_s, 3}, {u"Milk"_s, 1}}, 4),
        scaleFigure(u"scale"_s, {{.name = u"all"_s, .counts = {1, 2, 3}}, {.name = u"none"_s, .counts = {0, 0, 0}}}),
        histogramFigure(u"histogram"_s, {{0, 1, 2}, {1, 2, 5}}),
        heatFigure(u"heat"_s, {u"1"_s, u"2"_s}, {{u"Tea"_s, {0.25, 0.75}}}),
        mapFigure({.title = u"map"_s,
                   .rowsName = u"personas"_s,
                   .columnsName = u"questions"_s,
                   .rows = 3,
                   .columns = 2,
                   .at = [](qsizetype row, qsizetype) { return row == 0 ? Mark::Open : Mark::Done; }}),
        dumbbellFigure(u"dumbbell"_s, u"here"_s, u"there"_s, {{u"Tea"_s, 0.25, 0.5}})};
}

class TestPlots : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void a_drawing_tells_its_values_in_words_data()
    {
        QTest::addColumn<int>("figure");
        QTest::addColumn<QString>("words");
        QTest::newRow("bars") << 0 << u"Bars of 4 answers: “Tea”: 3 (75 %); “Milk”: 1 (25 %)"_s;
        QTest::newRow("scale") << 1
                               << u"Shares of the places of the scale. “all” (n = 6): 1: 16.7 %, 2: 33.3 %, 3: 50 %; "
                                  "“none” (n = 0): 1: -, 2: -, 3: -"_s;
        QTest::newRow("histogram") << 2 << u"Counts by range. 0 to 1: 2; 1 to 2: 5"_s;
        QTest::newRow("heat") << 3 << u"Shares by column. “Tea” 1: 25 %, 2: 75 %"_s;
        QTest::newRow("map") << 4
                             << u"Map of 3 personas (rows) by 2 questions (columns). answered: 4, open: 2, out of "
                                "list: 0, not a number: 0, unreadable: 0."_s;
        QTest::newRow("dumbbell") << 5 << u"Shares in “here” and in “there”. “Tea”: 25 % and 50 %"_s;
    }
    void a_drawing_tells_its_values_in_words()
    {
        QFETCH(const int, figure);
        QString words = oneOfEach().at(figure).alternative;
        words.remove(QChar(0x2068)).remove(QChar(0x2069));
        QTEST(words, "words");
    }

    void a_drawing_writes_its_values_beside_its_marks_data()
    {
        QTest::addColumn<int>("figure");
        QTest::addColumn<QStringList>("texts");
        QTest::newRow("bars") << 0 << QStringList{u"Tea"_s, u"3 (75 %)"_s, u"Milk"_s, u"1 (25 %)"_s};
        QTest::newRow("scale") << 1 << QStringList{u"all (6)"_s, u"none (0)"_s, u"1"_s, u"2"_s, u"3"_s};
        QTest::newRow("histogram") << 2 << QStringList{u"2"_s, u"5"_s, u"0"_s, u"1"_s};
        QTest::newRow("heat") << 3 << QStringList{u"Tea"_s, u"25"_s, u"75"_s};
        QTest::newRow("map") << 4 << QStringList{u"answered (4)"_s, u"open (2)"_s, u"unreadable (0)"_s};
        QTest::newRow("dumbbell") << 5 << QStringList{u"here"_s, u"there"_s, u"Tea"_s, u"25 % / 50 %"_s};
    }
    void a_drawing_writes_its_values_beside_its_marks()
    {
        QFETCH(const int, figure);
        QFETCH(const QStringList, texts);
        const QStringList written = textsIn(toSvg(oneOfEach().at(figure), 1));
        for (const QString &text : texts)
            QVERIFY2(written.contains(text), qUtf8Printable(text + u" in "_s + written.join(u"; "_s)));
    }

    void a_bar_is_as_long_as_its_count()
    {
        const QImage one = imageOf(barsFigure({}, {{u"a"_s, 100}, {u"b"_s, 0}}, 100));
        const QImage three = imageOf(barsFigure({}, {{u"a"_s, 100}, {u"b"_s, 50}}, 100));
        const int whole = pointsOf(one, Ink::Bar);
        QVERIFY(whole > 1000);
        const double ratio = double(pointsOf(three, Ink::Bar)) / whole;
        QVERIFY2(ratio > 1.45 && ratio < 1.55, qPrintable(QString::number(ratio)));
    }

    void a_large_panel_is_binned()
    {
        const auto mapOf = [](qsizetype rows, qsizetype columns, int every) {
            return mapFigure(
                {.title = {},
                 .rowsName = u"personas"_s,
                 .columnsName = u"questions"_s,
                 .rows = rows,
                 .columns = columns,
                 .at = [every](qsizetype row, qsizetype) { return row % every == 0 ? Mark::Unreadable : Mark::Done; }});
        };
        const Figure large = mapOf(10'000, 200, 10);
        QVERIFY(large.alternative.endsWith(u"Each mark stands for up to 167 personas and 4 questions."_s));
        QVERIFY(large.size.height() < 950);
        QVERIFY(mapOf(200, 12, 10).alternative.endsWith(u"personas and 1 question."_s));
        // A tenth shows, less does not.
        QVERIFY(pointsOf(imageOf(large), Ink::Other) >
                100 * pointsOf(imageOf(mapOf(10'000, 200, 11)), Ink::Other) / 50);
    }

    void what_a_page_can_not_hold_is_told()
    {
        QList<Bar> bars;
        for (int number = 0; number < 256; ++number)
            bars << Bar{u"label %1"_s.arg(number), 1};
        const Figure figure = barsFigure({}, bars, 256);
        QVERIFY(figure.size.height() < 950);
        QVERIFY(figure.alternative.endsWith(u"; 226 not drawn"_s));
        QVERIFY(textsIn(toSvg(figure, 1)).contains(u"and 226 labels, in the table"_s));
    }

    void no_text_runs_out_of_its_place()
    {
        const QString fits = fitting(QString(10'000, u'W'), 100);
        QVERIFY(fits.size() < 20);
        QVERIFY(fits.endsWith(u'\u2026'));
        QVERIFY(widthOf(fits) <= 100 + textSize);
        QCOMPARE(fitting(u"Tea"_s, 100), u"Tea"_s);
    }

    void nothing_and_more_than_numbers_hold_can_be_drawn()
    {
        for (const Figure &figure :
             {barsFigure({}, {}, 0), scaleFigure({}, {}), histogramFigure({}, {}), heatFigure({}, {}, {}),
              histogramFigure({}, {{-1.7e308, 1.7e308, 1}}), histogramFigure({}, {{5, 5, 3}})})
            QVERIFY(textsIn(toSvg(figure, 1)).filter(u"error"_s).isEmpty());
    }

    void foreign_text_is_escaped()
    {
        const QString hostile = u"</text></svg><script>x</script>\u0001"_s;
        const QString svg = toSvg(barsFigure(hostile, {{hostile, 1}}, 1), 7);
        QVERIFY(!svg.contains(u"<script"_s));
        QCOMPARE(svg.count(u"</svg>"_s), 1);
        QVERIFY(textsIn(svg).first().startsWith(u"</text></svg>"_s));
    }
};

ORRINET_TEST(TestPlots)
#include "tst_plots.moc"
