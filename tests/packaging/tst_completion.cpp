#include "tests/support/program.h"
#include "tests/support/testcase.h"

#include <QTest>

using namespace Qt::StringLiterals;

namespace {

/// What bash offers for the last word of a command, as it would on a terminal.
QStringList offered(const QString &name, const QString &program, const QStringList &words)
{
    const QString script = u"source '%1/packaging/completion/%2'; function=$1; shift; COMP_WORDS=(\"$@\"); "
                           "COMP_CWORD=$(($# - 1)); compopt() { :; }; "
                           "$function \"$1\" \"${COMP_WORDS[COMP_CWORD]}\" \"${COMP_WORDS[COMP_CWORD - 1]}\"; "
                           "printf '%s\\n' \"${COMPREPLY[@]}\""_s.arg(QStringLiteral(ORRINET_SOURCE_FOLDER), name);
    const QString function = u'_' + QString(name).replace(u'-', u'_');
    const ProgramRun run(u"bash"_s, QStringList{u"-c"_s, script, u"bash"_s, function, program} + words);
    return run.output.split(u'\n', Qt::SkipEmptyParts);
}

} // namespace

class TestCompletion : public QObject
{
    Q_OBJECT

private Q_SLOTS:
#ifdef ORRINET_BRIDGE
    void bridge_is_completed_data()
    {
        QTest::addColumn<QStringList>("words");
        QTest::addColumn<QStringList>("wanted");
        QTest::addRow("options") << QStringList{u"--re"_s} << QStringList{u"--retries"_s, u"--record"_s, u"--replay"_s};
        QTest::addRow("behind others") << QStringList{u"--quiet"_s, u"--jo"_s} << QStringList{u"--jobs"_s};
        QTest::addRow("formats") << QStringList{u"--format"_s, u"json"_s}
                                 << QStringList{u"json_schema"_s, u"json_object"_s};
        QTest::addRow("files") << QStringList{u"--run"_s, QStringLiteral(ORRINET_SOURCE_FOLDER "/VERS")}
                               << QStringList{QStringLiteral(ORRINET_SOURCE_FOLDER "/VERSION.txt")};
        QTest::addRow("numbers") << QStringList{u"--jobs"_s, QString()} << QStringList{};
    }

    void bridge_is_completed()
    {
        QFETCH(QStringList, words);
        QTEST(offered(u"orrinet-bridge"_s, QStringLiteral(ORRINET_BRIDGE), words), "wanted");
    }
#endif

#ifdef ORRINET_STUDY
    void study_is_completed_data()
    {
        QTest::addColumn<QStringList>("words");
        QTest::addColumn<QStringList>("wanted");
        QTest::addRow("commands") << QStringList{u"re"_s} << QStringList{u"report"_s};
        QTest::addRow("own options") << QStringList{u"--v"_s} << QStringList{u"--version"_s};
        QTest::addRow("a command's options") << QStringList{u"export"_s, u"--fo"_s} << QStringList{u"--force"_s};
        QTest::addRow("no other command's") << QStringList{u"export"_s, u"--price"_s} << QStringList{};
        QTest::addRow("formats") << QStringList{u"export"_s, u"--to"_s, u"d"_s} << QStringList{u"dta"_s};
        QTest::addRow("files") << QStringList{u"check"_s, QStringLiteral(ORRINET_SOURCE_FOLDER "/VERS")}
                               << QStringList{QStringLiteral(ORRINET_SOURCE_FOLDER "/VERSION.txt")};
    }

    void study_is_completed()
    {
        QFETCH(QStringList, words);
        QTEST(offered(u"orrinet-study"_s, QStringLiteral(ORRINET_STUDY), words), "wanted");
    }
#endif
};

ORRINET_TEST(TestCompletion)
#include "tst_completion.moc"
