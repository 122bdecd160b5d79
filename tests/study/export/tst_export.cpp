// The program's export: which files it writes, and what it says.

#include "tests/study/export/statread.h"
#include "tests/support/entries.h"
#include "tests/support/program.h"
#include "tests/support/sidedatabase.h"
#include "tests/support/testcase.h"

#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

QStringList filesIn(const QString &folder)
{
    return QDir(folder).entryList(QDir::Files | QDir::Dirs | QDir::Hidden | QDir::NoDotAndDotDot, QDir::Name);
}

} // namespace

class TestExport : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        folder = std::make_unique<QTemporaryDir>();
        project = folder->filePath(u"drinks.ormt"_s);
        SideDatabase file(writeProject(project));
        QVERIFY(enter(file, PersonaEntered{.uuid = u"a"_s, .name = u"Ann"_s, .tags = {u"rural"_s}},
                      QuestionEntered{.prompt = u"Which?"_s, .type = u"single_choice"_s, .labels = uR"(["Tea"])"_s},
                      QuestionEntered{.prompt = u"Why?"_s},
                      AnswerEntered{.persona = u"a"_s, .question = 1, .text = u"tea"_s}));
    }

    void each_format_has_its_files_data() { formats(); }
    void each_format_has_its_files()
    {
        QFETCH(const QString, to);
        const ProgramRun run = exported({u"--to"_s, to, u"--out"_s, out()});
        QCOMPARE(run.status, 0);
        QCOMPARE(run.output, QString());
        QCOMPARE(run.errors, QStringList());
        QTEST(filesIn(out()), "files");
    }

    void what_is_written_is_what_was_asked()
    {
        QCOMPARE(exported({u"--to"_s, u"csv"_s, u"--out"_s, out()}).status, 0);
        QCOMPARE(readBytes(out() + "/wide.csv"_L1),
                 "uuid,name,attributes,system_prompt,notes,tag_rural,q1,q1s,q2t,q2s\r\n"
                 "a,Ann,,,,1,1,answered,,open\r\n"_ba);
        QCOMPARE(readBytes(out() + "/long.csv"_L1),
                 "uuid,name,tags,question_id,question,prompt,type,status,shown,number,label,position,reasoning,time,"
                 "text_answer,numeric_answer,json_answer\r\n"
                 "a,Ann,rural,1,1,Which?,Option,answered,tea,,Tea,1,,2001-02-03 04:05:06,tea,,\r\n"
                 "a,Ann,rural,2,2,Why?,Text,open,,,,,,,,,\r\n"_ba);
        const QByteArray book = readBytes(out() + "/codebook.csv"_L1);
        QVERIFY2(book.startsWith("table,variable,wording,question,type,value,label,count,note\r\nlong,uuid,"),
                 book.constData());
        QVERIFY2(book.contains("\r\nwide,q1,Which?,1,Option,1,Tea,1,\r\n"), book.constData());
    }

    void spss_and_stata_read_what_is_written_data()
    {
        QTest::addColumn<QString>("to");
        QTest::addColumn<QString>("open");
        QTest::newRow("sav") << u"sav"_s << u"-97"_s;
        QTest::newRow("dta") << u"dta"_s << u".a"_s;
    }
    void spss_and_stata_read_what_is_written()
    {
        QFETCH(const QString, to);
        QFETCH(const QString, open);
        QCOMPARE(exported({u"--to"_s, to, u"--out"_s, out()}).status, 0);
        const StatFile wide(out() + "/wide."_L1 + to);
        QCOMPARE(wide.failure, QString());
        QCOMPARE(wide.valueLabels.value(u"q1"_s).value(u"1"_s), u"Tea"_s);
        QCOMPARE(wide.rows,
                 (QList<QStringList>{{u"a"_s, u"Ann"_s, {}, {}, {}, u"1"_s, u"1"_s, u"answered"_s, {}, u"open"_s}}));
        QCOMPARE(StatFile(out() + "/long."_L1 + to).rows.size(), 2);
        const QByteArray gap = "wide,q1,Which?,1,Option," + open.toUtf8() + ",open,0";
        QVERIFY(readBytes(out() + "/codebook.csv"_L1).contains(gap));
    }

    void a_document_holds_everything()
    {
        const QString path = out() + "/deep/drinks.json"_L1;
        QCOMPARE(exported({u"--to"_s, u"json"_s, u"--out"_s, path}).status, 0);
        const QJsonDocument read = QJsonDocument::fromJson(readBytes(path));
        QCOMPARE(read["project"_L1].toString(), u"drinks.ormt"_s);
        QCOMPARE(read["long"_L1][1]["status"_L1].toString(), u"open"_s);
        QCOMPARE(read["wide"_L1][0]["q1"_L1].toInt(), 1);
        QVERIFY(read["codebook"_L1].toArray().size() > 20);
    }

    void a_file_that_is_there_is_not_overwritten_data() { formats(); }
    void a_file_that_is_there_is_not_overwritten()
    {
        QFETCH(const QString, to);
        QFETCH(const QStringList, files);
        QVERIFY(QDir().mkpath(out()));
        const QString there = out() + u'/' + files.last();
        writeBytes(there, "mine");
        const QStringList arguments{u"--to"_s, to, u"--out"_s, out()};
        const ProgramRun refused = exported(arguments);
        QCOMPARE(refused.status, 3);
        QCOMPARE(refused.errors,
                 QStringList{u"orrinet-study: %1 is there already; --force overwrites it"_s.arg(there)});
        QCOMPARE(filesIn(out()), QStringList{files.last()});
        QCOMPARE(readBytes(there), "mine"_ba);

        QCOMPARE(exported(arguments + QStringList{u"--force"_s}).status, 0);
        QCOMPARE(filesIn(out()), files);
        QVERIFY(readBytes(there) != "mine"_ba);
    }

    void the_same_project_makes_the_same_bytes_in_any_time_zone_data()
    {
        QTest::addColumn<QString>("to");
        for (const QString &to : {u"xlsx"_s, u"sav"_s, u"dta"_s})
            QTest::newRow(qPrintable(to)) << to;
    }
    void the_same_project_makes_the_same_bytes_in_any_time_zone()
    {
        QFETCH(const QString, to);
        const QByteArray zone = qgetenv("TZ");
        qputenv("TZ", "Pacific/Auckland");
        QCOMPARE(exported({u"--to"_s, to, u"--out"_s, out()}).status, 0);
        qputenv("TZ", "America/Los_Angeles");
        QCOMPARE(exported({u"--to"_s, to, u"--out"_s, out() + u'2'}).status, 0);
        qputenv("TZ", zone);
        QVERIFY(!filesIn(out()).isEmpty());
        for (const QString &file : filesIn(out()))
            QCOMPARE(readBytes(out() + "2/"_L1 + file), readBytes(out() + u'/' + file));
    }

    void what_was_cut_is_told_and_noted()
    {
        SideDatabase file(project);
        QVERIFY(enter(file, AnswerEntered{.persona = u"a"_s, .question = 2, .text = QString(130'000, u'x')}));
        const ProgramRun run = exported({u"--to"_s, u"sav"_s, u"--out"_s, out(), u"--json"_s});
        QCOMPARE(run.status, 0);
        QCOMPARE(run.errors, (QStringList{u"orrinet-study: long.sav: cut at 32759 bytes: shown (1), text_answer (1)"_s,
                                          u"orrinet-study: wide.sav: cut at 32759 bytes: q2t (1)"_s}));
        QVERIFY(readBytes(out() + "/codebook.csv"_L1).contains("wide,q2t,Why?,2,Text,,,1,cut at 32759 bytes (1)\r\n"));
        const QJsonDocument told = QJsonDocument::fromJson(run.output.toUtf8());
        const QJsonValue wide = told["written"_L1][1];
        QCOMPARE(wide["path"_L1].toString(), out() + "/wide.sav"_L1);
        QCOMPARE(wide["rows"_L1].toInt(), 1);
        QCOMPARE(wide["columns"_L1].toInt(), 10);
        QCOMPARE(wide["losses"_L1][0]["variable"_L1].toString(), u"q2t"_s);
        QCOMPARE(wide["losses"_L1][0]["count"_L1].toInt(), 1);
        QCOMPARE(told["written"_L1].toArray().size(), 3);
    }

    void a_byte_order_mark_begins_each_csv_file()
    {
        QCOMPARE(exported({u"--to"_s, u"csv"_s, u"--out"_s, out(), u"--bom"_s}).status, 0);
        for (const QString &file : filesIn(out()))
            QVERIFY(readBytes(out() + u'/' + file).startsWith("\xEF\xBB\xBF"));
    }

    void what_cannot_be_read_or_written_is_told_data()
    {
        QTest::addColumn<QString>("read");
        QTest::addColumn<QString>("to");
        QTest::addColumn<QString>("path");
        QTest::addColumn<QString>("message");
        QTest::newRow("no project") << u"none.ormt"_s << u"csv"_s << u"out"_s << u"none.ormt is not there"_s;
        QTest::newRow("a file for a folder")
            << u"drinks.ormt"_s << u"csv"_s << u"drinks.ormt"_s << u"drinks.ormt can't be made"_s;
        QTest::newRow("a folder for a file")
            << u"drinks.ormt"_s << u"xlsx"_s << u"folder.xlsx"_s << u"folder.xlsx is a folder"_s;
    }
    void what_cannot_be_read_or_written_is_told()
    {
        QFETCH(const QString, read);
        QFETCH(const QString, to);
        QFETCH(const QString, path);
        QFETCH(const QString, message);
        QVERIFY(QDir(folder->path()).mkdir(u"folder.xlsx"_s));
        const ProgramRun run(QStringLiteral(ORRINET_STUDY),
                             {u"export"_s, folder->filePath(read), u"--to"_s, to, u"--out"_s, folder->filePath(path)});
        QCOMPARE(run.status, 3);
        QCOMPARE(run.errors, QStringList{"orrinet-study: "_L1 + folder->filePath(message)});
    }

    void the_project_is_not_overwritten_even_by_force()
    {
        const QString path = folder->filePath(u"project.json"_s);
        QVERIFY(QFile::copy(project, path));
        const QByteArray before = readBytes(path);
        const ProgramRun run(QStringLiteral(ORRINET_STUDY), {u"export"_s, path, u"--to"_s, u"json"_s, u"--out"_s,
                                                             folder->filePath(u"./project.json"_s), u"--force"_s});
        QCOMPARE(run.status, 3);
        QCOMPARE(readBytes(path), before);
    }

    void what_is_no_command_line_is_refused_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::newRow("no format") << QStringList{u"--out"_s, u"out"_s};
        QTest::newRow("no place") << QStringList{u"--to"_s, u"csv"_s};
        QTest::newRow("unknown format") << QStringList{u"--to"_s, u"ods"_s, u"--out"_s, u"out"_s};
    }
    void what_is_no_command_line_is_refused()
    {
        QFETCH(const QStringList, arguments);
        QCOMPARE(exported(arguments).status, 2);
    }

private:
    static void formats()
    {
        QTest::addColumn<QString>("to");
        QTest::addColumn<QStringList>("files");
        const QString codebook = u"codebook.csv"_s;
        QTest::newRow("csv") << u"csv"_s << QStringList{codebook, u"long.csv"_s, u"wide.csv"_s};
        QTest::newRow("xlsx") << u"xlsx"_s << QStringList{u"export.xlsx"_s};
        QTest::newRow("sav") << u"sav"_s << QStringList{codebook, u"long.sav"_s, u"wide.sav"_s};
        QTest::newRow("dta") << u"dta"_s << QStringList{codebook, u"long.dta"_s, u"wide.dta"_s};
        QTest::newRow("json") << u"json"_s << QStringList{u"export.json"_s};
    }

    QString out() const { return folder->filePath(u"out"_s); }

    ProgramRun exported(const QStringList &arguments) const
    {
        return ProgramRun(QStringLiteral(ORRINET_STUDY), QStringList{u"export"_s, project} + arguments);
    }

    std::unique_ptr<QTemporaryDir> folder;
    QString project;
};

ORRINET_TEST(TestExport)
#include "tst_export.moc"
