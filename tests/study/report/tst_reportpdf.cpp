// A report as PDF: pages of text and lines, and the same bytes for the same report.

#include "study/report/pdf.h"
#include "study/report/report.h"
#include "study/report/textdocument.h"
#include "tests/study/report/reportsample.h"
#include "tests/support/program.h"
#include "tests/support/sidedatabase.h"
#include "tests/support/testcase.h"

#include <QAbstractTextDocumentLayout>
#include <QDate>
#include <QSet>
#include <QTemporaryDir>
#include <QTest>
#include <QTextBlock>

using namespace Qt::StringLiterals;
using study::Document;
using study::Figure;
using study::figureWidth;
using study::Heading;
using study::laidOut;
using study::Paragraph;
using study::TextTable;
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

/// A heading, and what has to stay with it, behind so many lines.
static Document headingAfter(int lines, bool afterTable)
{
    Document document;
    TextTable table{.caption = {}, .header = {u"Head"_s}, .rows = {}};
    for (int line = 0; line < lines; ++line) {
        if (afterTable)
            table.rows << TextTable::Row{{u"Line"_s}};
        else
            document.blocks << Paragraph{u"Line"_s};
    }
    if (afterTable)
        document.blocks << table;
    document.blocks << Heading{.level = 3, .text = u"Kept heading"_s, .anchor = {}}
                    << TextTable{.caption = u"Kept caption"_s, .header = {u"Kept head"_s}, .rows = {}};
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

    void what_belongs_together_is_on_one_page_data()
    {
        QTest::addColumn<bool>("afterTable");
        QTest::newRow("after a table") << true;
        QTest::newRow("after paragraphs") << false;
    }
    void what_belongs_together_is_on_one_page()
    {
        QFETCH(const bool, afterTable);
        for (int lines = 1; lines < 60; ++lines) {
            const auto laid = laidOut(headingAfter(lines, afterTable), {500, 600});
            const auto pageOf = [&laid](double y) { return int(y / 600); };
            QSet<int> pages;
            QSet<int> kept;
            for (QTextBlock block = laid->begin(); block.isValid(); block = block.next()) {
                const QRectF rect = laid->documentLayout()->blockBoundingRect(block);
                const int page = pageOf(rect.top());
                pages << page;
                if (!block.text().isEmpty())
                    QCOMPARE(pageOf(rect.bottom() - 1), page);
                if (block.text().startsWith(u"Kept"_s))
                    kept << page;
            }
            QCOMPARE(kept.size(), 1);
            // None of them is empty.
            QCOMPARE(pages.size(), laid->pageCount());
        }
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
