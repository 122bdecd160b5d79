#include "tests/support/program.h"
#include "tests/support/testcase.h"

#include <QFile>
#include <QRegularExpression>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

/// The page of a program as it is read: without what only the typesetter needs.
QString pageOf(const QString &name)
{
    QFile file(QStringLiteral(ORRINET_BUILD_FOLDER "/packaging/") + name + ".1"_L1);
    QString text = file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
    static const QRegularExpression fonts(uR"(\\f[BIR])"_s);
    text.remove(fonts);
    text.replace("\\-"_L1, "-"_L1).replace("\\e"_L1, "\\"_L1);
    return text;
}

/// The commands of a program, empty for itself.
struct Tool
{
    QString name;
    QString program;
    QStringList commands;
};

QList<Tool> tools()
{
    QList<Tool> all;
#ifdef ORRINET_BRIDGE
    all << Tool{u"orrinet-bridge"_s, QStringLiteral(ORRINET_BRIDGE), {QString()}};
#endif
#ifdef ORRINET_STUDY
    all << Tool{u"orrinet-study"_s, QStringLiteral(ORRINET_STUDY), {QString(), u"check"_s, u"export"_s, u"report"_s}};
#endif
    return all;
}

/// What a program says for "--help" of itself or of a command.
QString helpOf(const QString &program, const QString &command)
{
    return ProgramRun(program, command.isEmpty() ? QStringList{u"--help"_s} : QStringList{command, u"--help"_s}).output;
}

} // namespace

class TestManual : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void page_tells_all_that_the_help_tells_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("program");
        QTest::addColumn<QString>("command");
        for (const Tool &tool : tools()) {
            for (const QString &command : tool.commands)
                QTest::addRow("%s %s", qPrintable(tool.name), qPrintable(command))
                    << tool.name << tool.program << command;
        }
    }

    /// Word by word, but for the headings, and for what is put in other words behind a text.
    void page_tells_all_that_the_help_tells()
    {
        QFETCH(QString, name);
        QFETCH(QString, program);
        QFETCH(QString, command);
        QString help = helpOf(program, command);
        QVERIFY(help.contains("--help"_L1));
        static const QRegularExpression left(u"^Usage: |^(Options|Positionals|Subcommands):$|Exit status:|"
                                             "(Needs|Excludes): (--[a-z-]+ ?)+|\\.\\.\\.|REQUIRED"_s,
                                             QRegularExpression::MultilineOption);
        help.remove(left);
        const QString page = pageOf(name).replace(u", --"_s, u",--"_s);
        static const QRegularExpression blanks(u"\\s+"_s);
        const QStringList words = help.split(blanks, Qt::SkipEmptyParts);
        for (QString word : words) {
            if (word.startsWith(u'[') && word.endsWith(u']') && word != "[OPTIONS]"_L1)
                word = "By default "_L1 + word.sliced(1, word.size() - 2) + u'.';
            QVERIFY2(page.contains(word), qPrintable(word));
        }
    }

    /// A typesetter's request begins a line: a text that begins like one would be lost.
    void page_has_no_request_but_those_of_manual_pages()
    {
        static const QRegularExpression request(u"^[.']\\S*"_s, QRegularExpression::MultilineOption);
        static const QStringList known{u".TH"_s, u".SH"_s, u".SS"_s, u".TP"_s, u".PP"_s, u".RS"_s,
                                       u".RE"_s, u".EX"_s, u".EE"_s, u".B"_s,  u".I"_s,  u".BR"_s};
        for (const QString &name : {u"orrinet"_s, u"orrinet-bridge"_s, u"orrinet-study"_s}) {
            for (const auto &match : request.globalMatch(pageOf(name)))
                QVERIFY2(known.contains(match.captured()), qPrintable(match.captured()));
        }
    }
};

ORRINET_TEST(TestManual)
#include "tst_manual.moc"
