// What the sections of a report say of small projects.

#include "study/report/report.h"
#include "tests/study/report/reportsample.h"
#include "tests/support/entries.h"
#include "tests/support/sidedatabase.h"
#include "tests/support/testcase.h"

#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;
using study::Block;
using study::Blocks;
using study::completenessSection;
using study::Document;
using study::Entries;
using study::Flag;
using study::glanceSection;
using study::Heading;
using study::madeSection;
using study::makeReport;
using study::panelSection;
using study::Paragraph;
using study::questionsSection;
using study::Section;
using study::Tone;

class TestReport : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(folder.isValid());
        drinks = std::make_unique<ReadSurvey>(writeDrinks(folder.filePath(u"drinks.ormt"_s)));
        QVERIFY(drinks->survey);
    }

    void the_first_page_says_that_nobody_was_asked()
    {
        const Blocks blocks = glanceSection(*drinks->survey, {});
        const auto *notice = std::get_if<Paragraph>(&blocks.at(1));
        QVERIFY(notice != nullptr);
        QCOMPARE(notice->tone, Tone::Notice);
        QVERIFY(notice->text.contains(u"no evidence of what people think"_s));
        const QStringList said = saidBy(blocks);
        QVERIFY(said.contains(u"TextTable: Personas | 12"_s));
        QVERIFY(said.contains(u"TextTable: Questions | 6"_s));
        QVERIFY(said.contains(u"TextTable: Pairs with a usable answer | 70 of 72 (97.2 %)"_s));
        QVERIFY(
            said.contains(u"Paragraph: SHA-256 of the project file: "_s + QString::fromLatin1(drinks->project.sha256)));
    }

    void the_first_page_has_seven_flags_at_most()
    {
        QList<Flag> flags;
        for (int number = 1; number <= 9; ++number)
            flags << Flag{u"flag %1"_s.arg(number), u"anchor"_s};
        const QStringList entries = saidBy(glanceSection(*drinks->survey, flags)).filter(u"Entry: "_s);
        QCOMPARE(entries.size(), 7);
        QCOMPARE(entries.last(), u"Entry: flag 7 -> anchor"_s);
    }

    void each_flag_leads_to_a_heading_that_is_there()
    {
        const Document document = makeReport(*drinks->survey).document;
        QStringList anchors;
        QStringList wanted;
        for (const Block &block : document.blocks) {
            if (const auto *heading = std::get_if<Heading>(&block))
                anchors << heading->anchor;
            if (const auto *entries = std::get_if<Entries>(&block)) {
                for (const Entries::Entry &entry : entries->entries)
                    wanted << entry.anchor;
            }
        }
        QVERIFY(wanted.size() > 2);
        for (const QString &anchor : std::as_const(wanted))
            QVERIFY2(anchors.contains(anchor), qUtf8Printable(anchor));
        anchors.removeAll(QString());
        QCOMPARE(anchors.removeDuplicates(), 0);
    }

    void the_boilerplate_and_one_conversation_stand_word_for_word()
    {
        const QStringList said = saidBy(madeSection(*drinks->survey, {}).blocks);
        QVERIFY(said.contains(u"Verbatim: You are a person."_s));
        QVERIFY(said.contains(u"Verbatim: Stay in character."_s));
        QVERIFY(said.contains(u"Verbatim: You are a person.\nDrinks number 0 in a house of its own kind\n"
                              "Stay in character."_s));
        QVERIFY(said.contains(u"Quotation: Which drink? / Question 1"_s));
        QVERIFY(said.contains(u"Quotation: Milk\nTea\nCoffee / Member 00"_s));
    }

    void settings_are_those_of_the_record_or_not_recorded()
    {
        QCOMPARE(saidBy(madeSection(*drinks->survey, {}).blocks).filter(u"Not recorded"_s).size(), 1);
        const QStringList said = saidBy(madeSection(*drinks->survey, {u"Model: kettle-1."_s}).blocks);
        QVERIFY(said.contains(u"Paragraph: Model: kettle-1."_s));
        QVERIFY(said.filter(u"Not recorded"_s).isEmpty());
    }

    void tags_are_counted_and_so_is_their_overlap()
    {
        const QStringList said = saidBy(panelSection(*drinks->survey).blocks);
        QVERIFY(said.contains(u"Faint: rural | 6 | 50 %"_s));
        QVERIFY(said.contains(u"Faint: young | 3 | 25 %"_s));
        QVERIFY(said.contains(u"TextTable: rural | 6 | 3"_s));
        QVERIFY(said.contains(u"TextTable: young | 3 | 3"_s));
    }

    void personas_of_nearly_the_same_text_are_told()
    {
        const QString text = u"Sells tea at the corner of a long street in a town by the sea and likes it"_s;
        const QString path = folder.filePath(u"alike.ormt"_s);
        SideDatabase file(writeProject(path));
        QVERIFY(enter(file, PersonaEntered{.uuid = u"a"_s, .name = u"A"_s, .attributes = text},
                      PersonaEntered{.uuid = u"b"_s, .name = u"B"_s, .attributes = text},
                      PersonaEntered{.uuid = u"c"_s, .name = u"C"_s, .attributes = u"Keeps bees, drinks mead"_s}));
        const ReadSurvey read(path);
        const Section section = panelSection(*read.survey);
        QVERIFY(saidBy(section.blocks).contains(u"TextTable: A, B | 2 | the same text"_s));
        QCOMPARE(section.flags.size(), 1);
        QCOMPARE(section.flags.first().text, u"2 of 3 personas are nearly the same text as another one"_s);
    }

    void completeness_is_told_by_question_and_as_a_map()
    {
        const Section section = completenessSection(*drinks->survey);
        const QStringList said = saidBy(section.blocks);
        QVERIFY(said.contains(u"TextTable: 5. How often? | Likert Scale | 11 | 0 | 1 | 91.7 %"_s));
        QVERIFY(said.contains(u"TextTable: 6. Order them. | Rank Choices | 11 | 1 | 0 | 91.7 %"_s));
        QCOMPARE(said.filter(u"Figure: What became of each pair"_s).size(), 1);
        QVERIFY(said.filter(u"Figure: "_s)
                    .first()
                    .contains(u"answered: 70, open: 1, out of list: 1, not a number: 0, unreadable: 0"_s));
        QCOMPARE(section.flags.size(), 2);
    }

    void a_question_has_its_wording_its_counts_and_its_spread()
    {
        const QStringList said = saidBy(pageOf(1));
        QVERIFY(said.contains(u"Verbatim: Which drink?"_s));
        QVERIFY(said.contains(
            u"Paragraph: Option. The model was given the labels as the only answers that it could choose from."_s));
        QVERIFY(said.contains(u"Paragraph: n = 12 of 12 personas; 0 open, 0 not usable."_s));
        QVERIFY(said.contains(u"TextTable: Tea | 1 | 9 | 75 %"_s));
        QVERIFY(said.contains(u"TextTable: Milk | 3 | 0 | 0 %"_s));
        QVERIFY(said.contains(u"TextTable: Share of the most frequent answer, \u201cTea\u201d | 75 %"_s));
        // - (3/4 log2 3/4 + 1/4 log2 1/4) / log2 3
        QVERIFY(said.contains(u"TextTable: Entropy over its maximum | 0.512"_s));
        QVERIFY(said.contains(u"TextTable: Mean position of the chosen label, of 3 | 1.25"_s));
        QVERIFY(said.contains(u"Faint: rural | \u201cTea\u201d | 6 | 83.3 % | 0.41"_s));
    }

    void what_was_told_of_the_labels_is_said()
    {
        QVERIFY(saidBy(pageOf(2)).contains(u"Paragraph: Multiple Choice. Of the labels the model was told nothing but "
                                           "what prompt and boilerplate say. They name each of them, or the ends of "
                                           "the scale."_s));
        QVERIFY(saidBy(pageOf(6)).contains(u"Paragraph: Rank Choices. Of the labels the model was told nothing but "
                                           u"what prompt and boilerplate say. They "
                                           "don't name \u201cTea\u201d, \u201cCoffee\u201d, \u201cMilk\u201d."_s));
        QCOMPARE(questionsSection(*drinks->survey).flags.first().text,
                 u"The model was not told all labels of 2 questions: number 5, 6"_s);
    }

    void each_type_has_its_own_drawing_data()
    {
        QTest::addColumn<int>("number");
        QTest::addColumn<QString>("begin");
        QTest::newRow("option") << 1 << u"How often each label was chosen / Bars of 12 answers"_s;
        QTest::newRow("several") << 2 << u"How often each label was chosen / Bars of 12 answers"_s;
        QTest::newRow("text") << 3 << u"Lengths of the answers in characters / Counts by range"_s;
        QTest::newRow("number") << 4 << u"How often each range of numbers was given / Counts by range"_s;
        QTest::newRow("likert") << 5 << u"Answers on the scale"_s;
        QTest::newRow("ranks") << 6 << u"How often each label came in which rank"_s;
    }
    void each_type_has_its_own_drawing()
    {
        QFETCH(const int, number);
        QFETCH(const QString, begin);
        const QStringList figures = saidBy(pageOf(number)).filter(u"Figure: "_s);
        QCOMPARE(figures.size(), 1);
        QVERIFY2(figures.first().startsWith(u"Figure: "_s + begin), qUtf8Printable(figures.first()));
    }

    void several_labels_count_each_and_spread_as_combinations()
    {
        const QStringList said = saidBy(pageOf(2));
        QVERIFY(said.contains(u"TextTable: Tea | 1 | 6 | 50 %"_s));
        QVERIFY(said.contains(u"TextTable: Milk | 3 | 12 | 100 %"_s));
        QVERIFY(said.contains(u"TextTable: Share of the most frequent answer, \u201cTea, Milk\u201d | 50 %"_s));
    }

    void quotations_are_chosen_by_their_rule()
    {
        // Reasoning has the same length for numbers of a digit, and is longest with two.
        const QStringList chosen = saidBy(pageOf(1)).filter(u"Quotation: "_s);
        QCOMPARE(chosen,
                 (QStringList{u"Quotation: Because of number 0. / Member 00, for the answer \u201cTea\u201d"_s,
                              u"Quotation: Because of number 10. / Member 10, for the answer \u201cCoffee\u201d"_s}));
        const QStringList texts = saidBy(pageOf(3)).filter(u"Quotation: "_s);
        QCOMPARE(texts.first(), u"Quotation: I like the warmth.!!!!! / Member 05"_s);
        QCOMPARE(texts.last(), u"Quotation: I like the warmth.!!!!!!!!!!! / Member 11"_s);
        QVERIFY(saidBy(pageOf(4)).filter(u"Quotation: "_s).isEmpty());
    }

    void an_empty_project_has_a_report()
    {
        const ReadSurvey read(writeProject(folder.filePath(u"empty.ormt"_s)));
        const QStringList said = saidBy(makeReport(*read.survey).document.blocks);
        QVERIFY(said.contains(u"TextTable: Pairs with a usable answer | 0 of 0 (-)"_s));
        QVERIFY(said.contains(u"Paragraph: There is no usable answer yet."_s));
    }

private:
    /// The blocks of a question.
    Blocks pageOf(int number)
    {
        const Blocks all = questionsSection(*drinks->survey).blocks;
        Blocks page;
        bool isPage = false;
        for (const Block &block : all) {
            if (const auto *heading = std::get_if<Heading>(&block); heading != nullptr && heading->level == 2)
                isPage = heading->anchor == u"question-%1"_s.arg(number);
            if (isPage)
                page << block;
        }
        return page;
    }

    QTemporaryDir folder;
    std::unique_ptr<ReadSurvey> drinks;
};

ORRINET_TEST(TestReport)
#include "tst_report.moc"
