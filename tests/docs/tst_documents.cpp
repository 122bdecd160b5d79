// What the documents name is there: files, links, pictures, commands, options. And what they say of the tree as a
// whole.

#include "tests/docs/documentcheck.h"
#include "tests/support/sidedatabase.h"
#include "tests/support/testcase.h"

#include <QDir>
#include <QDirIterator>
#include <QRegularExpression>
#include <QTest>

using namespace Qt::StringLiterals;

static QString inTree(const QString &path)
{
    return QStringLiteral(ORRINET_SOURCE_FOLDER "/") + path;
}

static void addDocuments()
{
    QTest::addColumn<QString>("document");
    for (const auto all = DocumentCheck::documents(); const QString &document : all)
        QTest::addRow("%s", qUtf8Printable(document)) << document;
}

static void expectNone(QStringList faults)
{
    faults.removeDuplicates();
    QVERIFY2(faults.isEmpty(), qUtf8Printable(faults.join(u'\n')));
}

/// The words of all that is compiled, the tests left out, and of the commands of ./dev.
static QSet<QString> wordsOfSources()
{
    static const QRegularExpression between(u"\\W+"_s);
    QSet<QString> words;
    for (const auto folders = DocumentCheck::folders(); const QString &folder : folders) {
        if (folder == "tests"_L1)
            continue;
        const QStringList sources = folder == "tools"_L1 ? QStringList{u"*"_s} : QStringList{u"*.cpp"_s, u"*.h"_s};
        QDirIterator walk(inTree(folder), sources, QDir::Files, QDirIterator::Subdirectories);
        while (walk.hasNext()) {
            for (const auto all = QString::fromUtf8(readBytes(walk.next())).split(between); const QString &word : all)
                words << word;
        }
    }
    return words;
}

class TestDocuments : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void a_link_leads_to_a_file_or_heading_data() { addDocuments(); }
    void a_link_leads_to_a_file_or_heading()
    {
        QFETCH(const QString, document);
        expectNone(DocumentCheck::brokenLinks(Markdown::read(inTree(document))));
    }

    void a_picture_can_be_shown_data() { addDocuments(); }
    void a_picture_can_be_shown()
    {
        QFETCH(const QString, document);
        expectNone(DocumentCheck::unreadablePictures(Markdown::read(inTree(document))));
    }

    void a_path_is_one_of_the_tree_data() { addDocuments(); }
    void a_path_is_one_of_the_tree()
    {
        QFETCH(const QString, document);
        expectNone(check.missingPaths(Markdown::read(inTree(document))));
    }

    void a_command_of_dev_is_a_file_of_tools_data() { addDocuments(); }
    void a_command_of_dev_is_a_file_of_tools()
    {
        QFETCH(const QString, document);
        expectNone(DocumentCheck::unknownCommands(Markdown::read(inTree(document))));
    }

    void an_option_is_one_that_its_program_tells_of_data() { addDocuments(); }
    void an_option_is_one_that_its_program_tells_of()
    {
        QFETCH(const QString, document);
        expectNone(check.unknownOptions(Markdown::read(inTree(document))));
    }

    void the_architecture_names_what_the_sources_have()
    {
        static const QRegularExpression name(u"^\\w+(::\\w+)*(\\(\\))?$"_s);
        static const QRegularExpression inner(u"[a-z][A-Z]"_s);
        const QSet<QString> words = wordsOfSources();
        const Markdown document = Markdown::read(inTree(u"docs/architecture.md"_s));
        QStringList faults;
        for (const QString &code : document.spans) {
            if (!name.match(code).hasMatch() || !code.contains(inner))
                continue;
            for (const auto parts = code.split(QRegularExpression(u"\\W+"_s)); const QString &part : parts) {
                if (!part.isEmpty() && !words.contains(part))
                    faults << u"%1 stands in no source"_s.arg(code);
            }
        }
        expectNone(faults);
    }

    void a_fault_does_not_go_unnoticed_data();
    void a_fault_does_not_go_unnoticed();

    void the_readme_names_each_folder_and_no_other()
    {
        const QString readme = QString::fromUtf8(readBytes(inTree(u"README.md"_s)));
        const QString section = readme.section(u"\n## The tree\n"_s, 1).section(u"\n## "_s, 0, 0);
        static const QRegularExpression folder(u"`([^`]+)/`"_s);
        QStringList named;
        for (const auto lines = section.split(u'\n'); const QString &line : lines) {
            for (const QRegularExpressionMatch &match : folder.globalMatch(line.section(u'|', 1, 1)))
                named << match.captured(1);
        }
        named.sort();
        QCOMPARE(named, DocumentCheck::folders());
    }

    void the_version_is_the_same_wherever_it_stands()
    {
        const QString version = QString::fromUtf8(readBytes(inTree(u"VERSION.txt"_s)).trimmed());
        const QString changes = QString::fromUtf8(readBytes(inTree(u"CHANGELOG.md"_s)));
        static const QRegularExpression heading(u"\n## \\[?(\\d[\\d.]*)"_s);
        QCOMPARE(heading.match(changes).captured(1), version);

        const QString record = QString::fromUtf8(readBytes(inTree(u"app/windows/orrinet.rc"_s)));
        static const QRegularExpression field(u"VERSION\"?,? \"?(\\d[\\d., ]*)"_s,
                                              QRegularExpression::CaseInsensitiveOption);
        QStringList versions;
        for (const QRegularExpressionMatch &match : field.globalMatch(record))
            versions << match.captured(1).replace(", "_L1, "."_L1).trimmed();
        QCOMPARE(versions, QStringList(4, version + ".0"_L1));
    }

    void the_program_uses_nothing_that_stands_beside_it_data()
    {
        QTest::addColumn<QString>("folder");
        for (const auto name : {"app"_L1, "project"_L1, "personas"_L1, "packs"_L1, "questions"_L1, "survey"_L1,
                                "inspect"_L1, "preferences"_L1})
            QTest::addRow("%s", name.data()) << QString(name);
    }
    void the_program_uses_nothing_that_stands_beside_it()
    {
        static const QRegularExpression beside(u"#include \"(bridge|study|loopback|standin|demo|bench|fuzz|tests)/"_s);
        QFETCH(const QString, folder);
        int sources = 0;
        QDirIterator walk(inTree(folder), {u"*.cpp"_s, u"*.h"_s}, QDir::Files, QDirIterator::Subdirectories);
        for (; walk.hasNext(); ++sources) {
            const QString path = walk.next();
            QVERIFY2(!QString::fromUtf8(readBytes(path)).contains(beside), qUtf8Printable(path));
        }
        QVERIFY(sources > 0);
    }

private:
    DocumentCheck check;
};

void TestDocuments::a_fault_does_not_go_unnoticed_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QStringList>("faults");
    const auto row = [](const char *name, const QString &text, const QStringList &faults = {}) {
        QTest::addRow("%s", name) << text << faults;
    };
    row("links", u"# One heading\n[a](README.md), [b](#one-heading), [c](https://example.org/x)"_s);
    row("a link to no file", u"see [this](docs/none.md)"_s, {u"docs/none.md is not there"_s});
    row("a link to no heading", u"[this](#none)"_s, {u"#none names no heading"_s});
    row("a link to no heading of another", u"[this](README.md#none)"_s, {u"README.md#none names no heading"_s});
    row("a picture", u"![a grid](docs/pictures/results.png)"_s);
    row("no picture", u"![a grid](docs/none.png)"_s,
        {u"docs/none.png is not there"_s, u"docs/none.png is no picture"_s});
    row("another file for a picture", u"![a grid](README.md)"_s, {u"README.md is no picture"_s});

    row("paths", u"`app/`, `app/main.cpp`, `tests/<folder>/tst_<name>.cpp`, `fuzz/corpus/TARGET`, `tst_*.cpp`"_s);
    row("what is built", u"`build/none/at/all.txt`"_s);
    row("a path that is none", u"`app/none.cpp`, `tools/none`"_s,
        {u"app/none.cpp is not in the tree"_s, u"tools/none is not in the tree"_s});
    row("a file that is none", u"`none.cpp`"_s, {u"none.cpp is not in the tree"_s});
    row("a file that the reader makes", u"`none.cpp`\n```\ncat none.cpp\n```"_s);
    row("a path in a block", u"```\ncat app/none.cpp\n```"_s, {u"app/none.cpp is not in the tree"_s});
    row("names of a kind that is none", u"`app/none<x>.cpp`"_s, {u"app/none<x>.cpp is not in the tree"_s});
    row("a span of two lines", u"`cat\napp/none.cpp`"_s, {u"app/none.cpp is not in the tree"_s});

    row("commands", u"`./dev`, `./dev test NAME`, `./dev COMMAND`"_s);
    row("a command that is none", u"text\n\n    ./dev none\n"_s, {u"./dev knows no none"_s});
    row("what a command is made of", u"`./dev tree.sh`"_s, {u"./dev knows no tree.sh"_s});

    row("options", u"`./dev test --long`, `./dev bench --soak`, `--smoke`, `cmake --none`, `./dev shell x --none`"_s);
    row("options of others", u"`--component orrinet`, `./dev bench --benchmark_filter=grid`"_s);
    row("an option that ./dev hasn't", u"`./dev test --none`"_s, {u"./dev test has no --none"_s});
#ifdef ORRINET_BRIDGE
    row("options of the bridge", u"`orrinet-bridge --run in.ormt --in-place`, `--max-tokens`"_s);
    row("an option that the bridge hasn't", u"`./dev shell build/release/bridge/orrinet-bridge --in`"_s,
        {u"orrinet-bridge has no --in"_s});
    row("an option that another program has", u"`orrinet-bridge --context 9`"_s,
        {u"orrinet-bridge has no --context"_s});
#endif
#ifdef ORRINET_STUDY
    row("options of the study tool",
        u"`orrinet-study check --context 9`, `orrinet-study --version`, `orrinet-study COMMAND --out`"_s);
    row("an option of another subcommand", u"`orrinet-study report --context 9`"_s,
        {u"orrinet-study report has no --context"_s});
#endif
#if defined(ORRINET_BRIDGE) && defined(ORRINET_STUDY)
    row("an option that nobody has", u"`--none 3`"_s, {u"no program here has --none"_s});
#endif
}

void TestDocuments::a_fault_does_not_go_unnoticed()
{
    QFETCH(const QString, text);
    const Markdown document(inTree(u"imagined.md"_s), text);
    const QStringList found = DocumentCheck::brokenLinks(document) + DocumentCheck::unreadablePictures(document) +
                              check.missingPaths(document) + DocumentCheck::unknownCommands(document) +
                              check.unknownOptions(document);
    QTEST(found, "faults");
}

ORRINET_TEST(TestDocuments)
#include "tst_documents.moc"
