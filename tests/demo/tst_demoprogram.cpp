#include "tests/support/program.h"
#include "tests/support/sidedatabase.h"
#include "tests/support/testcase.h"

#include <QDir>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

/// A folder with the smallest examples, for the real program.
class DemoFolder
{
public:
    DemoFolder()
    {
        writeBytes(path(u"panel.json"_s), R"([{"name": "Pebble", "narrative": "You roll.", "tags": ["grey"]}])"_ba);
        writeBytes(path(u"questionnaire.json"_s), R"([{"prompt": "Why?", "type": "text"}])"_ba);
    }

    QString path(const QString &name) const { return folder.filePath(name); }

    /// Runs the demo with its files in a folder of this name.
    ProgramRun run(const QString &output, const QStringList &others = {}) const
    {
        const QStringList arguments{u"--examples"_s, folder.path(), u"--output"_s, path(output)};
        return {QStringLiteral(ORRINET_DEMO_PROGRAM), arguments + others};
    }

    /// What the demo itself complains of, as against the window in it, with the folder's path left out.
    QStringList complaints(const ProgramRun &run) const
    {
        QStringList lines = run.errors.filter(u"orrinet-demo: "_s);
        return lines.replaceInStrings(u"orrinet-demo: "_s, QString()).replaceInStrings(folder.path() + u'/', QString());
    }

private:
    QTemporaryDir folder;
};

} // namespace

class TestDemoProgram : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void demo_ends_well_with_its_files_written()
    {
        const DemoFolder folder;
        const ProgramRun run = folder.run(u"made/on the way"_s);
        QCOMPARE(run.errors, QStringList());
        QCOMPARE(run.status, 0);
        const QDir made(folder.path(u"made/on the way"_s));
        QCOMPARE(made.entryList(QDir::Files, QDir::Name),
                 (QStringList{u"conversation.txt"_s, u"demo.ormt"_s, u"log.png"_s, u"log.txt"_s, u"panel.ornk"_s,
                              u"results.png"_s}));
        QCOMPARE(SideDatabase(made.filePath(u"demo.ormt"_s)).count(u"responses"_s), 1);
    }

    void missing_argument_ends_it_with_its_usage_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addRow("none") << QStringList();
        QTest::addRow("no output") << QStringList{u"--examples"_s, u"/"_s};
        QTest::addRow("no examples") << QStringList{u"--output"_s, u"/"_s};
    }

    void missing_argument_ends_it_with_its_usage()
    {
        QFETCH(QStringList, arguments);
        const ProgramRun run(QStringLiteral(ORRINET_DEMO_PROGRAM), arguments);
        QCOMPARE(run.status, 1);
        QCOMPARE(run.errors, QStringList());
        for (const auto word : {"Usage: "_L1, "--examples <folder>"_L1, "--output <folder>"_L1})
            QVERIFY2(run.output.contains(word), qPrintable(run.output));
    }

    void unknown_argument_is_refused()
    {
        const DemoFolder folder;
        const ProgramRun run = folder.run(u"output"_s, {u"--unknown"_s});
        QCOMPARE(run.status, 1);
        QCOMPARE(run.errors, QStringList(u"Orrinet: Unknown option 'unknown'."_s));
        QVERIFY(!QFile::exists(folder.path(u"output"_s)));
    }

    void unfit_examples_end_it_before_anything_is_made_data()
    {
        QTest::addColumn<QStringList>("others");
        QTest::addRow("first look") << QStringList();
        QTest::addRow("second look") << QStringList(u"--second-look"_s);
    }

    void unfit_examples_end_it_before_anything_is_made()
    {
        QFETCH(QStringList, others);
        const DemoFolder folder;
        QVERIFY(QFile::remove(folder.path(u"panel.json"_s)));
        const ProgramRun run = folder.run(u"output"_s, others);
        QCOMPARE(run.status, 1);
        QCOMPARE(folder.complaints(run), QStringList(u"panel.json: No such file or directory"_s));
        QCOMPARE(run.errors.size(), 1);
        QCOMPARE(run.output, QString());
        QVERIFY(!QFile::exists(folder.path(u"output"_s)));
    }

    void folder_that_cannot_be_made_is_named()
    {
        const DemoFolder folder;
        const ProgramRun run = folder.run(u"panel.json/output"_s);
        QCOMPARE(run.status, 1);
        QCOMPARE(folder.complaints(run), (QStringList{u"panel.json/output/demo.ormt: the project cannot be opened"_s,
                                                      u"panel.json/output: the folder cannot be made"_s,
                                                      u"panel.json/output/demo.ormt: the project cannot be saved"_s,
                                                      u"panel.json/output/panel.ornk: the panel cannot be exported"_s,
                                                      u"the second process ended with status 1"_s}));
    }

    void file_that_cannot_be_written_is_named()
    {
        const DemoFolder folder;
        for (const auto name : {"results.png"_L1, "log.png"_L1, "log.txt"_L1})
            QVERIFY(QDir(folder.path(u"output"_s)).mkpath(name));
        // The system's own word for it, in the user's language.
        QFile written(folder.path(u"output/log.txt"_s));
        QVERIFY(!written.open(QIODevice::WriteOnly));
        const ProgramRun run = folder.run(u"output"_s);
        QCOMPARE(run.status, 1);
        QCOMPARE(folder.complaints(run), (QStringList{u"output/results.png: the picture cannot be written"_s,
                                                      u"output/log.png: the picture cannot be written"_s,
                                                      u"output/log.txt: "_s + written.errorString()}));
    }

    void second_look_at_nothing_is_refused()
    {
        const DemoFolder folder;
        const ProgramRun run = folder.run(u"output"_s, {u"--second-look"_s});
        QCOMPARE(run.status, 1);
        QCOMPARE(folder.complaints(run), QStringList(u"output/demo.ormt: the project cannot be opened"_s));
    }
};

ORRINET_TEST(TestDemoProgram)
#include "tst_demoprogram.moc"
