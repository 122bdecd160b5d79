// A report as HTML: well-formed, the same for the same project, and harmless whatever the project holds.

#include "study/report/html.h"
#include "study/report/report.h"
#include "tests/study/report/reportsample.h"
#include "tests/support/entries.h"
#include "tests/support/program.h"
#include "tests/support/sidedatabase.h"
#include "tests/support/testcase.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QSet>
#include <QTemporaryDir>
#include <QTest>
#include <QXmlStreamReader>

using namespace Qt::StringLiterals;
using study::makeReport;
using study::toHtml;

namespace {

/// A page as a reader of XML finds it.
struct ReadPage
{
    explicit ReadPage(const QByteArray &bytes)
    {
        QXmlStreamReader xml(bytes);
        while (!xml.atEnd()) {
            const auto token = xml.readNext();
            if (token == QXmlStreamReader::StartElement)
                take(xml);
            else if (token == QXmlStreamReader::Characters)
                text += xml.text();
        }
        if (xml.hasError())
            flaw = u"%1 in line %2"_s.arg(xml.errorString()).arg(xml.lineNumber());
    }

    void take(const QXmlStreamReader &xml)
    {
        elements << xml.name().toString();
        for (const auto attributes = xml.attributes(); const QXmlStreamAttribute &attribute : attributes) {
            names << attribute.name().toString();
            if (attribute.name() == "id"_L1)
                ids << attribute.value().toString();
            if (attribute.name() == "href"_L1)
                links << attribute.value().toString();
        }
    }

    QString flaw;
    QString text;
    QStringList elements;
    QStringList names;
    QStringList ids;
    QStringList links;
};

} // namespace

static QByteArray htmlOf(const QString &path)
{
    const ReadSurvey read(path);
    return toHtml(makeReport(*read.survey).document);
}

class TestReportHtml : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { writeDrinks(drinks); }

    void a_page_is_well_formed_and_its_links_lead_somewhere()
    {
        const ReadPage page(htmlOf(drinks));
        QCOMPARE(page.flaw, QString());
        QVERIFY(page.text.contains(u"Which drink?"_s));
        QVERIFY(page.elements.count(u"svg"_s) >= 7);
        QCOMPARE(page.elements.count(u"desc"_s), page.elements.count(u"svg"_s));
        QVERIFY(!page.links.isEmpty());
        for (const QString &link : page.links)
            QVERIFY2(page.ids.contains(link.sliced(1)), qUtf8Printable(link));
        QStringList ids = page.ids;
        QCOMPARE(ids.removeDuplicates(), 0);
    }

    void a_page_runs_nothing_and_asks_for_nothing()
    {
        const QByteArray html = htmlOf(drinks);
        const ReadPage page(html);
        for (const QString &element : {u"script"_s, u"link"_s, u"img"_s, u"iframe"_s, u"object"_s, u"image"_s})
            QVERIFY2(!page.elements.contains(element), qUtf8Printable(element));
        QVERIFY(html.contains("content=\"default-src 'none'; style-src 'unsafe-inline'; img-src data:\""));
        for (const QString &name : page.names)
            QVERIFY2(!name.startsWith(u"on"_s) && name != "src"_L1, qUtf8Printable(name));
        QVERIFY(!html.contains("url("));
        QVERIFY(!html.contains("@import"));
    }

    void the_same_project_gives_the_same_bytes()
    {
        const QByteArray html = htmlOf(drinks);
        QCOMPARE(htmlOf(drinks), html);
        // Nor does where the file lies make a difference.
        const QString other = folder.filePath(u"other.ormt"_s);
        QVERIFY(QFile::copy(drinks, other));
        QCOMPARE(htmlOf(other), html);
    }

    void a_drawing_turns_dark_in_every_colour_that_it_has()
    {
        const QString html = QString::fromUtf8(htmlOf(drinks));
        static const QRegularExpression used(u"(?:fill|stroke)=\"(#[0-9a-f]{6})\""_s);
        const QString rules = html.section(u"</style>"_s, 0, 0);
        QSet<QString> colours;
        for (auto match = used.globalMatch(html.section(u"</style>"_s, 1)); match.hasNext();)
            colours << match.next().captured(1);
        colours.remove(u"#000000"_s);
        QVERIFY(colours.size() > 5);
        for (const QString &colour : std::as_const(colours))
            QVERIFY2(rules.contains(u"[fill=\"%1\"]"_s.arg(colour)), qUtf8Printable(colour));
    }

    void a_hostile_project_gives_a_whole_harmless_report()
    {
        const QString path = writeHostile();
        const ReadSurvey read(path);
        const QByteArray html = toHtml(makeReport(*read.survey).document);
        const ReadPage page(html);
        QCOMPARE(page.flaw, QString());
        QVERIFY(!page.elements.contains(u"script"_s));
        QVERIFY(!page.elements.contains(u"b"_s));
        QVERIFY(!page.names.contains(u"onload"_s));
        QVERIFY(!html.contains("<script"));
        QVERIFY(html.contains("&lt;script&gt;"));
        QVERIFY(!html.contains("\u202e"));
        QVERIFY(page.text.contains(u"\U0001F375"_s));
        QVERIFY(page.text.contains(u"(10000 characters)"_s));
        QVERIFY(page.text.contains(u"(130000 characters)"_s));
        QVERIFY2(html.size() < 1'500'000, qPrintable(QString::number(html.size())));
    }

    void the_program_writes_the_file_and_never_over_one_that_is_there()
    {
        const QString out = folder.filePath(u"drinks.html"_s);
        ProgramRun first(QStringLiteral(ORRINET_STUDY), {u"report"_s, drinks, u"--out"_s, out});
        QCOMPARE(first.errors, QStringList());
        QCOMPARE(first.status, 0);
        QCOMPARE(first.output, QString());
        QCOMPARE(ReadPage(readBytes(out)).flaw, QString());
        QCOMPARE(readBytes(out), htmlOf(drinks));

        writeBytes(out, "mine");
        ProgramRun again(QStringLiteral(ORRINET_STUDY), {u"report"_s, drinks, u"--out"_s, out});
        QCOMPARE(again.status, 3);
        QCOMPARE(again.errors.size(), 1);
        QCOMPARE(readBytes(out), "mine");
        ProgramRun forced(QStringLiteral(ORRINET_STUDY), {u"report"_s, drinks, u"--out"_s, out, u"--force"_s});
        QCOMPARE(forced.status, 0);
        QVERIFY(readBytes(out).size() > 1000);
    }

    void machines_are_told_what_was_written_and_what_was_flagged()
    {
        const QString out = folder.filePath(u"told.html"_s);
        const ProgramRun run(QStringLiteral(ORRINET_STUDY), {u"report"_s, drinks, u"--out"_s, out, u"--json"_s});
        QCOMPARE(run.status, 0);
        const QJsonDocument told = QJsonDocument::fromJson(run.output.toUtf8());
        const ReadSurvey read(drinks);
        QCOMPARE(told["path"_L1].toString(), out);
        QCOMPARE(told["bytes"_L1].toInteger(), readBytes(out).size());
        QCOMPARE(told["project"_L1]["file"_L1].toString(), drinks);
        QCOMPARE(told["project"_L1]["sha256"_L1].toString(), QString::fromLatin1(read.project.sha256));
        QCOMPARE(told["personas"_L1].toInt(), 12);
        QCOMPARE(told["questions"_L1].toInt(), 6);
        QCOMPARE(told["answers"_L1].toInteger(), read.project.answers.size());
        const QList<study::Flag> flags = makeReport(*read.survey).flags;
        QCOMPARE(told["flags"_L1].toArray().size(), flags.size());
        QVERIFY(!flags.isEmpty());
        for (qsizetype place = 0; place < flags.size(); ++place) {
            QCOMPARE(told["flags"_L1][place]["text"_L1].toString(), flags.at(place).text);
            QCOMPARE(told["flags"_L1][place]["anchor"_L1].toString(), flags.at(place).anchor);
        }
    }

    void the_program_refuses_what_it_can_not_do_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<int>("status");
        QTest::newRow("no file to write") << QStringList{drinks} << 2;
        QTest::newRow("no project") << QStringList{u"--out"_s, u"x.html"_s} << 2;
        QTest::newRow("another form") << QStringList{drinks, u"--out"_s, u"x.docx"_s} << 2;
        QTest::newRow("a project that is not there")
            << QStringList{folder.filePath(u"gone.ormt"_s), u"--out"_s, folder.filePath(u"x.html"_s)} << 3;
        QTest::newRow("a folder that is not there")
            << QStringList{drinks, u"--out"_s, folder.filePath(u"gone/x.html"_s)} << 3;
    }
    void the_program_refuses_what_it_can_not_do()
    {
        QFETCH(const QStringList, arguments);
        const ProgramRun run(QStringLiteral(ORRINET_STUDY), QStringList{u"report"_s} + arguments);
        QTEST(run.status, "status");
        QVERIFY(!run.errors.isEmpty());
        QVERIFY(!QFile::exists(folder.filePath(u"x.html"_s)));
    }

private:
    QString writeHostile()
    {
        const QString path = folder.filePath(u"hostile.ormt"_s);
        SideDatabase file(writeProject(path));
        const QString closing =
            u"</p></text></svg></style></title><script>alert(1)</script><b onload=\"x\" '&amp;]]>"_s;
        const QString strange = u"\u05d0\u202e\U0001F375\u0001\u0000%1%2%99"_s;
        QStringList labels{closing, strange, QString(10'000, u'L')};
        while (labels.size() < 256)
            labels << u"label %1"_s.arg(labels.size());
        const QString encoded =
            QString::fromUtf8(QJsonDocument(QJsonArray::fromStringList(labels)).toJson(QJsonDocument::Compact));
        setBoilerplate(file, closing, strange);
        enter(file,
              PersonaEntered{
                  .uuid = u"a"_s, .name = closing, .attributes = QString(closing + strange), .tags = {closing}},
              PersonaEntered{.uuid = u"b"_s, .name = strange, .attributes = QString(130'000, u'n'), .tags = {strange}});
        int question = 0;
        for (const char *type : {"single_choice", "multi_choice", "text", "numeric", "likert", "ranking", "essay"}) {
            enter(file, QuestionEntered{.prompt = QString(closing + strange),
                                        .type = QLatin1StringView(type),
                                        .labels = encoded,
                                        .reasoning = 1});
            ++question;
            const QString reasons =
                QString::fromUtf8(QJsonDocument(QJsonObject{{u"reasoning"_s, closing}}).toJson(QJsonDocument::Compact));
            enter(file, AnswerEntered{.persona = u"a"_s, .question = question, .text = closing, .json = reasons},
                  AnswerEntered{.persona = u"b"_s, .question = question, .text = QString(130'000, u'w')});
        }
        enter(file, QuestionEntered{.prompt = u"numbers"_s, .type = u"numeric"_s});
        enter(file, AnswerEntered{.persona = u"a"_s, .question = question + 1, .number = qInf()},
              AnswerEntered{.persona = u"b"_s, .question = question + 1, .number = 1.7e308});
        return path;
    }

    QTemporaryDir folder;
    const QString drinks = folder.filePath(u"drinks.ormt"_s);
};

ORRINET_TEST(TestReportHtml)
#include "tst_reporthtml.moc"
