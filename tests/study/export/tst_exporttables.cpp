// What the long and the wide table and the codebook hold.

#include "study/export/codebook.h"
#include "study/export/longtable.h"
#include "study/export/widetable.h"
#include "tests/study/export/tableshow.h"
#include "tests/support/entries.h"
#include "tests/support/sidedatabase.h"
#include "tests/support/testcase.h"

#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;
using study::Cells;
using study::Column;
using study::Format;
using study::Project;
using study::Table;

namespace {

/// A project, what became of it, and its tables.
struct Tables
{
    explicit Tables(const Project &read)
        : project(read)
        , cells(project)
        , long_(longTable(project, cells))
        , wide(wideTable(project, cells))
    {
    }
    Q_DISABLE_COPY_MOVE(Tables)

    Project project;
    Cells cells;
    Table long_;
    Table wide;
};

QStringList labelled(const Column &column)
{
    QStringList reasons;
    for (const study::Status reason : column.reasons)
        reasons << study::shownName(reason);
    return column.codes + reasons;
}

} // namespace

class TestExportTables : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        folder = std::make_unique<QTemporaryDir>();
        file = std::make_unique<SideDatabase>(writeProject(path()));
    }

    void the_long_table_has_a_row_for_each_answer_and_each_open_pair()
    {
        enterDrinks();
        const Tables tables(read());
        const Table &table = tables.long_;
        const QStringList names = columnNames(table);
        QCOMPARE(names,
                 (QStringList{u"uuid"_s, u"name"_s, u"tags"_s, u"question_id"_s, u"question"_s, u"prompt"_s, u"type"_s,
                              u"status"_s, u"shown"_s, u"number"_s, u"label"_s, u"position"_s, u"reasoning"_s,
                              u"time"_s, u"text_answer"_s, u"numeric_answer"_s, u"json_answer"_s}));
        QStringList lines;
        for (const QStringList &row : rowsShown(table))
            lines << QStringList{row.at(0), row.at(4), row.at(7), row.at(8), row.at(9), row.at(11)}.join(u'|');
        QCOMPARE(lines, (QStringList{u"a|1|answered twice|Milk||2"_s, u"a|1|answered|tea||1"_s,
                                     u"a|2|answered|Milk, Tea||2; 1"_s, u"a|3|not a number|seven||"_s,
                                     u"a|4|answered|=1+1||"_s, u"a||orphan|late||"_s, u"b|1|out of list|Cola||"_s,
                                     u"b|2|unreadable|{}||"_s, u"b|3|answered|-5|-5|"_s, u"b|4|open|||"_s,
                                     u"gone|3|orphan|3|3|"_s}));
        QCOMPARE(rowsShown(table).at(1),
                 (QStringList{u"a"_s, u"Ann"_s, u"rural; urban"_s, u"1"_s, u"1"_s, u"Which?"_s, u"Option"_s,
                              u"answered"_s, u"tea"_s, QString(), u"Tea"_s, u"1"_s, u"why not"_s,
                              u"2001-02-03 04:05:07"_s, u"tea"_s, QString(), uR"({"reasoning":"why not"})"_s}));
    }

    void what_is_not_there_any_more_has_a_row_with_what_is_known()
    {
        enterDrinks();
        const Tables tables(read());
        const QList<QStringList> rows = rowsShown(tables.long_);
        QCOMPARE(rows.at(5).mid(0, 7), (QStringList{u"a"_s, u"Ann"_s, u"rural; urban"_s, u"99"_s, {}, {}, {}}));
        QCOMPARE(rows.last().mid(0, 7), (QStringList{u"gone"_s, {}, {}, u"3"_s, u"3"_s, u"How many?"_s, u"Numeric"_s}));
    }

    void the_stored_number_is_as_stored_data()
    {
        QTest::addColumn<QVariant>("stored");
        QTest::addColumn<QString>("shown");
        QTest::newRow("null") << QVariant() << QString();
        QTest::newRow("exact") << QVariant(0.1 + 0.2) << u"0.30000000000000004"_s;
        QTest::newRow("infinite") << QVariant(-qInf()) << u"-inf"_s;
        QTest::newRow("a text") << QVariant(u"=many"_s) << u"=many"_s;
    }
    void the_stored_number_is_as_stored()
    {
        QFETCH(const QVariant, stored);
        QVERIFY(enter(*file, PersonaEntered{.uuid = u"a"_s}, QuestionEntered{.type = u"numeric"_s},
                      AnswerEntered{.persona = u"a"_s, .question = 1, .number = stored}));
        const Tables tables(read());
        QTEST(columnShown(tables.long_, u"numeric_answer"_s).at(0), "shown");
    }

    void the_wide_table_has_what_each_type_wants()
    {
        enterDrinks();
        const Tables tables(read());
        QCOMPARE(columnNames(tables.wide),
                 (QStringList{u"uuid"_s, u"name"_s, u"attributes"_s, u"system_prompt"_s, u"notes"_s, u"tag_rural"_s,
                              u"tag_urban"_s, u"q1"_s, u"q1r"_s, u"q1s"_s, u"q2_1"_s, u"q2_2"_s, u"q2_3"_s, u"q2s"_s,
                              u"q3"_s, u"q3s"_s, u"q4t"_s, u"q4s"_s}));
        const QList<QStringList> rows = rowsShown(tables.wide);
        QCOMPARE(rows.at(0), (QStringList{u"a"_s, u"Ann"_s, u"likes tea"_s, u"I am Ann"_s, u"a note"_s, u"1"_s, u"1"_s,
                                          u"1"_s, u"why not"_s, u"answered"_s, u"1"_s, u"1"_s, u"0"_s, u"answered"_s,
                                          u"<not a number>"_s, u"not a number"_s, u"=1+1"_s, u"answered"_s}));
        QCOMPARE(rows.at(1), (QStringList{u"b"_s,
                                          u"Bob"_s,
                                          {},
                                          {},
                                          {},
                                          u"1"_s,
                                          u"0"_s,
                                          u"<out of list>"_s,
                                          {},
                                          u"out of list"_s,
                                          u"<unreadable>"_s,
                                          u"<unreadable>"_s,
                                          u"<unreadable>"_s,
                                          u"unreadable"_s,
                                          u"-5"_s,
                                          u"answered"_s,
                                          u"<open>"_s,
                                          u"open"_s}));
    }

    void a_variable_says_what_its_codes_and_gaps_mean()
    {
        enterDrinks();
        const Table wide = Tables(read()).wide;
        QCOMPARE(columnOf(wide, u"q1"_s).label, u"Which?"_s);
        QCOMPARE(labelled(columnOf(wide, u"q1"_s)),
                 (QStringList{u"Tea"_s, u"Milk"_s, u"open"_s, u"out of list"_s, u"unreadable"_s}));
        QCOMPARE(columnOf(wide, u"q1"_s).firstCode, 1);
        QCOMPARE(columnOf(wide, u"q2_3"_s).label, u"Cola %1: All?"_s);
        QCOMPARE(labelled(columnOf(wide, u"q2_3"_s)).mid(0, 2), (QStringList{u"not named"_s, u"named"_s}));
        QCOMPARE(columnOf(wide, u"q2_3"_s).firstCode, 0);
        QCOMPARE(labelled(columnOf(wide, u"q3"_s)), (QStringList{u"open"_s, u"not a number"_s, u"unreadable"_s}));
        QCOMPARE(columnOf(wide, u"q1r"_s).label, u"Reasoning: Which?"_s);
        QCOMPARE(columnOf(wide, u"tag_rural"_s).label, u"Tag: rural"_s);
    }

    void ranks_are_places_from_one_and_what_has_none_is_empty()
    {
        QVERIFY(enter(*file, PersonaEntered{.uuid = u"a"_s, .name = u"Ann"_s}, PersonaEntered{.uuid = u"b"_s},
                      QuestionEntered{.type = u"ranking"_s, .labels = uR"(["Tea","Milk","Beer"])"_s},
                      AnswerEntered{.persona = u"a"_s, .question = 1, .text = u"Beer, Tea"_s}));
        const Tables tables(read());
        QCOMPARE(columnShown(tables.wide, u"q1_1"_s), (QStringList{u"<open>"_s, u"2"_s}));
        QCOMPARE(columnShown(tables.wide, u"q1_2"_s), (QStringList{u"<open>"_s, QString()}));
        QCOMPARE(columnShown(tables.wide, u"q1_3"_s), (QStringList{u"<open>"_s, u"1"_s}));
    }

    void an_answer_that_is_partly_out_of_list_is_no_half_answer()
    {
        QVERIFY(enter(*file, PersonaEntered{.uuid = u"a"_s},
                      QuestionEntered{.type = u"multi_choice"_s, .labels = uR"(["Tea","Milk"])"_s},
                      AnswerEntered{.persona = u"a"_s, .question = 1, .text = u"Tea, Cola"_s}));
        const Tables tables(read());
        QCOMPARE(columnShown(tables.wide, u"q1_1"_s), QStringList{u"<out of list>"_s});
        QCOMPARE(columnShown(tables.long_, u"label"_s), QStringList{u"Tea"_s});
        QCOMPARE(columnShown(tables.long_, u"shown"_s), QStringList{u"Tea, Cola"_s});
    }

    void choices_without_a_list_are_texts()
    {
        QVERIFY(enter(*file, PersonaEntered{.uuid = u"a"_s},
                      QuestionEntered{.type = u"likert"_s, .labels = u"no list"_s},
                      AnswerEntered{.persona = u"a"_s, .question = 1, .text = u"Rather"_s}));
        QCOMPARE(columnShown(Tables(read()).wide, u"q1t"_s), QStringList{u"Rather"_s});
    }

    void likert_codes_have_an_order()
    {
        QVERIFY(enter(*file, QuestionEntered{.type = u"likert"_s, .labels = uR"(["no","yes"])"_s},
                      QuestionEntered{.type = u"single_choice"_s, .labels = uR"(["no","yes"])"_s}));
        const Table wide = Tables(read()).wide;
        QVERIFY(columnOf(wide, u"q1"_s).isOrdered);
        QVERIFY(!columnOf(wide, u"q2"_s).isOrdered);
    }

    void many_tags_and_labels_have_a_variable_each()
    {
        QVERIFY(enter(*file, PersonaEntered{.uuid = u"a"_s}));
        for (int tag = 0; tag < 300; ++tag)
            QVERIFY(enterTag(*file, u"a"_s, u"農%1"_s.arg(QString(tag, u'!'))));
        QStringList labels;
        for (int label = 0; label < 256; ++label)
            labels << u"\"%1\""_s.arg(label);
        const QString list = u'[' + labels.join(u',') + u']';
        QVERIFY(enter(*file, QuestionEntered{.type = u"multi_choice"_s, .labels = list}));
        const Table wide = Tables(read()).wide;
        QStringList names = columnNames(wide);
        QCOMPARE(names.size(), 5 + 300 + 256 + 1);
        QCOMPARE(names.removeDuplicates(), 0);
        QVERIFY(names.contains(u"tag_300"_s));
        QCOMPARE(columnOf(wide, u"q1_256"_s).label, u"255: "_s);
    }

    void an_empty_project_has_empty_tables()
    {
        const Tables tables(read());
        QCOMPARE(tables.long_.rows, 0);
        QCOMPARE(tables.wide.rows, 0);
        QCOMPARE(tables.wide.columns.size(), 5);
    }

    void the_codebook_counts_each_value()
    {
        enterDrinks();
        const Tables tables(read());
        const Table book = study::codebook(tables.project,
                                           {{.table = tables.wide,
                                             .summaries = study::summarise(tables.wide),
                                             .losses = {{.column = u"q4t"_s, .what = u"cut"_s, .count = 2}}}},
                                           Format::Dta);
        QStringList lines;
        for (const QStringList &row : rowsShown(book)) {
            if (row.at(1).startsWith(u'q') && !row.at(1).endsWith(u's') && !row.at(1).startsWith("q2"_L1))
                lines << row.join(u'|');
        }
        QCOMPARE(lines,
                 (QStringList{
                     u"wide|q1|Which?|1|Option|1|Tea|1|"_s, u"wide|q1|Which?|1|Option|2|Milk|0|"_s,
                     u"wide|q1|Which?|1|Option|.a|open|0|"_s, u"wide|q1|Which?|1|Option|.b|out of list|1|"_s,
                     u"wide|q1|Which?|1|Option|.c|unreadable|0|"_s, u"wide|q1r|Reasoning: Which?|1|Option|||1|"_s,
                     u"wide|q3|How many?|3|Numeric|from -5 to -5||1|"_s, u"wide|q3|How many?|3|Numeric|.a|open|0|"_s,
                     u"wide|q3|How many?|3|Numeric|.b|not a number|1|"_s,
                     u"wide|q3|How many?|3|Numeric|.c|unreadable|0|"_s, u"wide|q4t|Why?|4|Text|||1|cut (2)"_s,
                     u"wide|q4t|Why?|4|Text||open|1|cut (2)"_s, u"wide|q4t|Why?|4|Text||unreadable|0|cut (2)"_s}));
    }

    void a_code_for_what_is_missing_is_no_value()
    {
        QVERIFY(enter(*file, QuestionEntered{.type = u"numeric"_s}, QuestionEntered{.type = u"numeric"_s}));
        const QList<double> answers{-98, -999, 5};
        for (qsizetype place = 0; place < answers.size(); ++place) {
            const QString uuid = QString::number(place);
            QVERIFY(enter(*file, PersonaEntered{.uuid = uuid},
                          AnswerEntered{.persona = uuid, .question = 1, .number = answers.at(place)}));
        }
        const Tables tables(read());
        const QList<study::Summary> summaries = study::summarise(tables.wide);
        const study::Summary &taken = summaries.at(columnNames(tables.wide).indexOf(u"q1"_s));
        QCOMPARE(taken.missingCode(0), -9997);
        QCOMPARE(taken.missingCode(2), -9999);
        QCOMPARE(taken.least, -999);
        QCOMPARE(taken.greatest, 5);
        const study::Summary &untaken = summaries.at(columnNames(tables.wide).indexOf(u"q2"_s));
        QCOMPARE(untaken.missingCode(0), -97);
        QCOMPARE(untaken.missingCode(2), -99);
        const Column &column = columnOf(tables.wide, u"q1"_s);
        QVERIFY(missingMark(Format::Sav, column, taken, 1) == study::Value(-9998.0));
        QVERIFY(missingMark(Format::Dta, column, taken, 1) == study::Value(u".b"_s));
        QVERIFY(missingMark(Format::Csv, column, taken, 1) == study::Value());
    }

    void a_table_too_large_for_a_format_is_refused_data()
    {
        QTest::addColumn<Format>("format");
        QTest::addColumn<int>("columns");
        QTest::addColumn<qlonglong>("rows");
        QTest::addColumn<QString>("objection");
        const auto text = [](const QString &what) {
            return u"the wide table has %1; --to csv takes them all"_s.arg(what);
        };
        QTest::newRow("xlsx") << Format::Xlsx << 16384 << 1048575LL << QString();
        QTest::newRow("xlsx, rows") << Format::Xlsx << 1 << 1048576LL
                                    << text(u"1048576 rows and the format takes 1048575"_s);
        QTest::newRow("xlsx, columns") << Format::Xlsx << 16385 << 1LL
                                       << text(u"16385 columns and the format takes 16384"_s);
        QTest::newRow("dta") << Format::Dta << 32767 << 1LL << QString();
        QTest::newRow("dta, columns") << Format::Dta << 32768 << 1LL
                                      << text(u"32768 columns and the format takes 32767"_s);
        QTest::newRow("csv") << Format::Csv << 100000 << 10000000LL << QString();
    }
    void a_table_too_large_for_a_format_is_refused()
    {
        QFETCH(const Format, format);
        QFETCH(const int, columns);
        QFETCH(const qlonglong, rows);
        const Table table{.name = u"wide"_s, .columns = QList<Column>(columns), .rows = rows, .row = {}};
        QTEST(objectionToSize(format, table), "objection");
    }

private:
    QString path() const { return folder->filePath(u"drinks.ormt"_s); }

    /// Two personas and four questions, with an answer of each kind of standing and status.
    void enterDrinks()
    {
        QVERIFY(enter(
            *file, PersonaEntered{.uuid = u"b"_s, .name = u"Bob"_s, .tags = {u"rural"_s}},
            PersonaEntered{.uuid = u"a"_s,
                           .name = u"Ann"_s,
                           .attributes = u"likes tea"_s,
                           .systemPrompt = u"I am Ann"_s,
                           .notes = u"a note"_s,
                           .tags = {u"urban"_s, u"rural"_s}},
            QuestionEntered{.prompt = u"Which?"_s, .type = u"single_choice"_s, .labels = uR"(["Tea","Milk"])"_s},
            QuestionEntered{.prompt = u"All?"_s, .type = u"multi_choice"_s, .labels = uR"(["Tea","Milk","Cola %1"])"_s},
            QuestionEntered{.prompt = u"How many?"_s, .type = u"numeric"_s}, QuestionEntered{.prompt = u"Why?"_s}));
        const auto answer = [this](const QString &persona, int question, const QVariant &text,
                                   const QVariant &number = {}, const QVariant &json = {}, int second = 6) {
            return enter(*file, AnswerEntered{.persona = persona,
                                              .question = question,
                                              .text = text,
                                              .number = number,
                                              .json = json,
                                              .createdAt = u"2001-02-03 04:05:0%1"_s.arg(second)});
        };
        QVERIFY(answer(u"a"_s, 1, u"tea"_s, {}, uR"({"reasoning":"why not"})"_s, 7));
        QVERIFY(answer(u"a"_s, 1, u"Milk"_s));
        QVERIFY(answer(u"a"_s, 2, u"Milk, Tea"_s));
        QVERIFY(answer(u"a"_s, 3, u"seven"_s));
        QVERIFY(answer(u"a"_s, 4, u"=1+1"_s));
        QVERIFY(answer(u"b"_s, 1, u"Cola"_s));
        QVERIFY(answer(u"b"_s, 2, {}, {}, u"{}"_s));
        QVERIFY(answer(u"b"_s, 3, {}, -5));
        QVERIFY(answer(u"gone"_s, 3, {}, 3));
        QVERIFY(answer(u"a"_s, 99, u"late"_s));
    }

    Project read() const
    {
        const auto project = study::readProject(path());
        if (const QString *reason = std::get_if<QString>(&project))
            QTest::qFail(qUtf8Printable(*reason), __FILE__, __LINE__);
        return std::get<Project>(project);
    }

    std::unique_ptr<QTemporaryDir> folder;
    std::unique_ptr<SideDatabase> file;
};

ORRINET_TEST(TestExportTables)
#include "tst_exporttables.moc"
