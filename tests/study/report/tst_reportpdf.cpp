// A report as PDF: pages of text and lines, and the same bytes for the same report.

#include "study/report/pdf.h"
#include "study/report/report.h"
#include "tests/study/report/reportsample.h"
#include "tests/support/program.h"
#include "tests/support/sidedatabase.h"
#include "tests/support/testcase.h"

#include <QDate>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;
using study::Document;
using study::Figure;
using study::figureWidth;
using study::Heading;
using study::Paragraph;
using study::toPdf;

/// A page's entry in the file; the tree of pages has another one.
static qsizetype pagesOf(const QByteArray &pdf)
{
    return pdf.count("/Type /Page\n");
}

static Document documentOf(int sections)
{
    Document document{.title = u"Of nothing"_s, .blocks = {}};
    for (int section = 0; section < sections; ++section) {
        document.blocks << Heading{.level = 2, .text = u"Section"_s, .anchor = {}, .startsPage = section > 0}
                        << Paragraph{u"Text"_s};
    }
    return document;
}

class TestReportPdf : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void a_section_that_starts_a_page_does()
    {
        QCOMPARE(pagesOf(toPdf(documentOf(1))), 1);
        QCOMPARE(pagesOf(toPdf(documentOf(3))), 3);
    }

    void a_long_text_goes_on_on_the_next_page()
    {
        Document document = documentOf(1);
        for (int line = 0; line < 100; ++line)
            document.blocks << Paragraph{u"Line"_s};
        QVERIFY(pagesOf(toPdf(document)) >= 2);
    }

    void a_figure_is_drawn_once_at_its_size()
    {
        int drawn = 0;
        QRectF place;
        Document document = documentOf(1);
        document.blocks << Figure{
            .title = u"A figure"_s, .alternative = {}, .size = {figureWidth, 100}, .paint = [&](QPainter &painter) {
                ++drawn;
                place = painter.combinedTransform().mapRect(QRectF(0, 0, figureWidth, 100));
            }};
        toPdf(document);
        QCOMPARE(drawn, 1);
        QCOMPARE(place.width() / place.height(), 6.4);
    }

    void the_program_gives_the_same_bytes_and_no_time()
    {
        const QString project = writeDrinks(folder.filePath(u"drinks.ormt"_s));
        const QString one = folder.filePath(u"one.pdf"_s);
        const QString other = folder.filePath(u"other.pdf"_s);
        for (const QString &out : {one, other}) {
            const ProgramRun run(QStringLiteral(ORRINET_STUDY), {u"report"_s, project, u"--out"_s, out});
            QCOMPARE(run.errors, QStringList());
            QCOMPARE(run.status, 0);
        }
        const QByteArray pdf = readBytes(one);
        QVERIFY(pdf.startsWith("%PDF-"));
        QVERIFY(pagesOf(pdf) >= 12);
        QVERIFY(pdf.contains("/CreationDate (D:20000101000000"));
        // Two runs may fall into one second: no year of the clock may be there at all.
        const QByteArray year = QByteArray::number(QDate::currentDate().year());
        QVERIFY(!pdf.contains(QByteArray("(D:" + year)));
        QVERIFY(!pdf.contains(QByteArray('"' + year + '-')));
        QVERIFY(readBytes(other) == pdf);
    }

private:
    QTemporaryDir folder;
};

ORRINET_TEST(TestReportPdf)
#include "tst_reportpdf.moc"
