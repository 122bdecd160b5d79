// Tables as files of SPSS and Stata, read back.

#include "study/export/dta.h"
#include "study/export/sav.h"
#include "tests/study/export/statread.h"
#include "tests/support/testcase.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <limits>

using namespace Qt::StringLiterals;
using study::Column;
using study::Losses;
using study::Status;
using study::Table;
using study::Value;

namespace {

const QList<Status> reasons{Status::Open, Status::OutOfList, Status::Unreadable};

Column textColumn(const QString &name)
{
    return {.name = name, .label = {}};
}

Column numberColumn(const QString &name)
{
    return {.name = name, .label = {}, .type = Column::Type::Number, .reasons = reasons};
}

Column codeColumn(const QString &name, const QStringList &codes)
{
    return {.name = name, .label = {}, .type = Column::Type::Code, .codes = codes, .reasons = reasons};
}

Table table(const QList<Column> &columns, const QList<QList<Value>> &rows)
{
    return tableOf(u"wide"_s, columns, rows);
}

QStringList whats(const Losses &losses)
{
    QStringList all;
    for (const study::Loss &loss : losses.list())
        all << loss.column + u": "_s + loss.what;
    return all;
}

} // namespace

class TestStatFiles : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { folder = std::make_unique<QTemporaryDir>(); }

    void variables_have_wordings_and_labels_and_reasons_data() { formats(); }
    void variables_have_wordings_and_labels_and_reasons()
    {
        QFETCH(const QString, format);
        const bool isSav = format == "sav"_L1;
        Column code = codeColumn(u"q1"_s, {u"Tea"_s, u"Milk"_s});
        code.label = u"Which? 😀"_s;
        const StatFile file = written(
            table({code, numberColumn(u"q2"_s), textColumn(u"q3t"_s)}, {{1.0, -5.5, u"=1+1"_s},
                                                                        {Status::Open, Status::OutOfList, Status::Open},
                                                                        {Status::Unreadable, Value(), Value()},
                                                                        {2.0, 1e300, u"été 😀"_s}}));
        QCOMPARE(file.names, (QStringList{u"q1"_s, u"q2"_s, u"q3t"_s}));
        QCOMPARE(file.wordings, (QStringList{u"Which? 😀"_s, QString(), QString()}));
        const QStringList keys =
            isSav ? QStringList{u"-97"_s, u"-98"_s, u"-99"_s} : QStringList{u".a"_s, u".b"_s, u".c"_s};
        const QMap<QString, QString> gaps{
            {keys.at(0), u"open"_s}, {keys.at(1), u"out of list"_s}, {keys.at(2), u"unreadable"_s}};
        QMap<QString, QString> all = gaps;
        all.insert({{u"1"_s, u"Tea"_s}, {u"2"_s, u"Milk"_s}});
        QCOMPARE(file.valueLabels.value(u"q1"_s), all);
        QCOMPARE(file.valueLabels.value(u"q2"_s), gaps);
        const QString gap = isSav ? u" missing"_s : QString();
        QCOMPARE(file.rows, (QList<QStringList>{{u"1"_s, u"-5.5"_s, u"=1+1"_s},
                                                {keys.at(0) + gap, keys.at(1) + gap, QString()},
                                                {keys.at(2) + gap, u"."_s, QString()},
                                                {u"2"_s, u"1e+300"_s, u"été 😀"_s}}));
        QCOMPARE(file.time, u"2000-01-01 12:00"_s);
    }

    void a_missing_value_keeps_clear_of_the_answers()
    {
        const StatFile file = written(table({numberColumn(u"q1"_s)}, {{-99.0}, {Status::Open}, {-97.0}}), u"sav"_s);
        QCOMPARE(file.rows, (QList<QStringList>{{u"-99"_s}, {u"-997 missing"_s}, {u"-97"_s}}));
    }

    void a_text_of_any_length_comes_back_data()
    {
        QTest::addColumn<QString>("format");
        QTest::addColumn<int>("length");
        for (const int length : {1, 7, 8, 255, 256, 257, 755, 756, 757, 2045, 2046, 4033, 9073, 32759}) {
            for (const QString &format : {u"sav"_s, u"dta"_s})
                QTest::addRow("%s, %d", qPrintable(format), length) << format << length;
        }
        QTest::newRow("dta, 130000") << u"dta"_s << 130'000;
    }
    void a_text_of_any_length_comes_back()
    {
        QFETCH(const int, length);
        QString text;
        while (text.size() < length)
            text += QString::number(text.size()) + u' ';
        text.truncate(length);
        text.back() = u'x';
        // Variables whose names begin alike, as those of a question do.
        QList<Column> columns;
        for (const QString &name : {u"q1t"_s, u"q1r"_s, u"q11t"_s, u"q100t"_s, u"q100r"_s, u"q2t"_s})
            columns << textColumn(name);
        columns << numberColumn(u"q100_1"_s) << numberColumn(u"q11"_s);
        const StatFile file = written(table(columns, {{text, u"a"_s, text, text, text, Value(), 5.0, 6.0},
                                                      {Value(), text, u"b"_s, text, u"c"_s, Value(), 7.0, 8.0}}));
        QCOMPARE(file.failure, QString());
        QCOMPARE(file.names.size(), 8);
        QCOMPARE(file.rows, (QList<QStringList>{{text, u"a"_s, text, text, text, {}, u"5"_s, u"6"_s},
                                                {{}, text, u"b"_s, text, u"c"_s, {}, u"7"_s, u"8"_s}}));
    }

    void a_text_is_printed_as_wide_as_it_is()
    {
        const StatFile file = written(table({textColumn(u"q1t"_s), textColumn(u"q2t"_s), textColumn(u"q3t"_s)},
                                            {{u"four"_s, QString(100, u'x'), QString(300, u'x')}}),
                                      u"sav"_s);
        // The reader puts the pieces of a long one together.
        QCOMPARE(file.formats, (QStringList{u"A4"_s, u"A100"_s, u"A308"_s}));
    }

    void every_text_comes_back_data()
    {
        QTest::addColumn<QString>("format");
        QTest::addColumn<QString>("text");
        for (const QString &format : {u"sav"_s, u"dta"_s}) {
            QTest::addRow("%s, lines", qPrintable(format)) << format << u"a\r\n\"b\",\tc"_s;
            QTest::addRow("%s, markup", qPrintable(format)) << format << u"</strls></svg>"_s;
            QTest::addRow("%s, right to left", qPrintable(format)) << format << u"\u202E\u05D0\u05D1"_s;
            QTest::addRow("%s, pieces within characters", qPrintable(format)) << format << u"😀"_s.repeated(500) + u'é';
        }
    }
    void every_text_comes_back()
    {
        QFETCH(const QString, text);
        QCOMPARE(written(table({textColumn(u"q1t"_s)}, {{text}})).rows, (QList<QStringList>{{text}}));
    }

    void what_does_not_fit_is_cut_and_told_data() { formats(); }
    void what_does_not_fit_is_cut_and_told()
    {
        QFETCH(const QString, format);
        const bool isSav = format == "sav"_L1;
        Column code = codeColumn(u"q1"_s, {QString(40'000, u'é')});
        code.label = u"😀"_s.repeated(200);
        const QString text = u"é"_s.repeated(20'000) + QChar(u'\0');
        Losses losses;
        const StatFile file = written(table({code, textColumn(u"q2t"_s), numberColumn(u"q3"_s)},
                                            {{1.0, text, qInf()}, {1.0, Value(), u"many"_s}}),
                                      {}, &losses);
        const QString none = u"q2t: characters that are none replaced or left out"_s;
        const QString large = u"q3: numbers too large for the format left out"_s;
        const QString word = u"q3: texts in the place of a number left out"_s;
        if (isSav) {
            QCOMPARE(whats(losses),
                     (QStringList{none, u"q2t: cut at 32759 bytes"_s, large, word,
                                  u"q1: value labels cut at 120 bytes"_s, u"q1: wording cut at 255 bytes"_s}));
        } else {
            QCOMPARE(whats(losses), (QStringList{none, large, word, u"q1: value labels cut at 32000 bytes"_s,
                                                 u"q1: wording cut at 80 characters"_s}));
        }
        QCOMPARE(file.wordings.at(0), u"😀"_s.repeated(isSav ? 63 : 80));
        QCOMPARE(file.valueLabels.value(u"q1"_s).value(u"1"_s), QString(isSav ? 60 : 16'000, u'é'));
        QCOMPARE(file.rows.at(0), (QStringList{u"1"_s, QString(isSav ? 16'379 : 20'000, u'é'), u"."_s}));
        QCOMPARE(file.rows.at(1), (QStringList{u"1"_s, QString(), u"."_s}));
    }

    void the_greatest_numbers_are_told_from_gaps_data() { formats(); }
    void the_greatest_numbers_are_told_from_gaps()
    {
        QFETCH(const QString, format);
        const double greatest = std::numeric_limits<double>::max();
        Losses losses;
        const StatFile file =
            written(table({numberColumn(u"q1"_s)}, {{greatest}, {-greatest}, {8e307}, {-8e307}}), {}, &losses);
        QCOMPARE(file.rows, (QList<QStringList>{{u"."_s}, {u"."_s}, {u"8e+307"_s}, {u"-8e+307"_s}}));
        QCOMPARE(losses.list().at(0).count, 2);
    }

    void many_labels_and_variables_come_back_data() { formats(); }
    void many_labels_and_variables_come_back()
    {
        QStringList labels;
        for (int label = 1; label <= 256; ++label)
            labels << u"label %1"_s.arg(label);
        QList<Column> columns;
        QList<Value> row;
        for (int place = 1; place <= 300; ++place) {
            columns << codeColumn(u"tag_number_%1"_s.arg(place), labels);
            row << double(place % 256 + 1);
        }
        const StatFile file = written(table(columns, {row}));
        QCOMPARE(file.names.size(), 300);
        QCOMPARE(file.names.last(), u"tag_number_300"_s);
        QCOMPARE(file.valueLabels.value(u"tag_number_300"_s).size(), 259);
        QCOMPARE(file.valueLabels.value(u"tag_number_300"_s).value(u"256"_s), u"label 256"_s);
        QCOMPARE(file.rows.at(0).last(), u"45"_s);
    }

    void a_table_without_rows_is_a_file_data() { formats(); }
    void a_table_without_rows_is_a_file()
    {
        const StatFile file = written(table({textColumn(u"uuid"_s), codeColumn(u"q1"_s, {u"Tea"_s})}, {}));
        QCOMPARE(file.names, (QStringList{u"uuid"_s, u"q1"_s}));
        QVERIFY(file.rows.isEmpty());
    }

    void long_texts_that_spss_could_not_tell_apart_are_refused()
    {
        const QString text(300, u'x');
        QCOMPARE(failureOf(table({textColumn(u"q1000t"_s), textColumn(u"q1000r"_s)}, {{text, text}}), u"sav"_s),
                 u"the format can't tell the long texts of q1000r from another variable's"_s);
        QCOMPARE(failureOf(table({textColumn(u"text"_s), numberColumn(u"text1"_s)}, {{text, 1.0}}), u"sav"_s),
                 u"the format can't tell the long texts of text from another variable's"_s);
        QCOMPARE(failureOf(table({textColumn(u"q1000t"_s), textColumn(u"q1000r"_s)}, {{u"a"_s, text}}), u"sav"_s),
                 QString());
    }

    void the_same_table_makes_the_same_bytes_data() { formats(); }
    void the_same_table_makes_the_same_bytes()
    {
        QFETCH(const QString, format);
        const Table same = table({textColumn(u"q1t"_s), codeColumn(u"q2"_s, {u"Tea"_s})},
                                 {{QString(3000, u'a'), 1.0}, {u"b"_s, Status::Open}});
        const auto bytes = [&] {
            written(same);
            QFile file(path(format));
            return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
        };
        const QByteArray once = bytes();
        QVERIFY(!once.isEmpty());
        QCOMPARE(bytes(), once);
    }

private:
    static void formats()
    {
        QTest::addColumn<QString>("format");
        QTest::newRow("sav") << u"sav"_s;
        QTest::newRow("dta") << u"dta"_s;
    }

    QString path(const QString &format) const { return folder->filePath(u"wide."_s + format); }

    QString failureOf(const Table &of, const QString &format, Losses *losses = nullptr)
    {
        QFile out(path(format));
        if (!out.open(QIODevice::WriteOnly))
            return out.errorString();
        Losses ignored;
        Losses &counted = losses == nullptr ? ignored : *losses;
        return format == "sav"_L1 ? writeSav(out, of, summarise(of), counted)
                                  : writeDta(out, of, summarise(of), counted);
    }

    /// Writes a table in a format, that of the data row where none is given, and reads it back.
    StatFile written(const Table &of, QString format = {}, Losses *losses = nullptr)
    {
        if (format.isEmpty())
            format = *static_cast<QString *>(QTest::qData("format", qMetaTypeId<QString>()));
        const QString failure = failureOf(of, format, losses);
        if (!failure.isEmpty())
            QTest::qFail(qUtf8Printable(failure), __FILE__, __LINE__);
        return StatFile(path(format));
    }

    std::unique_ptr<QTemporaryDir> folder;
};

ORRINET_TEST(TestStatFiles)
#include "tst_statfiles.moc"
