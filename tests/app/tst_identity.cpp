#include "tests/support/patience.h"
#include "tests/support/testcase.h"

#include <QDir>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

/// The real program in a process and a home of its own, seen and closed through the plugin "remote".
class Program
{
public:
    explicit Program(const QStringList &arguments = {}, const QProcessEnvironment &extra = {})
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(u"HOME"_s, home.path());
        environment.insert(u"XDG_CONFIG_HOME"_s, home.filePath(u".config"_s));
        environment.insert(u"XDG_RUNTIME_DIR"_s, home.path());
        environment.insert(u"QT_QPA_PLATFORM"_s, u"offscreen"_s);
        environment.insert(u"QT_PLUGIN_PATH"_s, QStringLiteral(ORRINET_REMOTE_FOLDER));
        environment.insert(u"QT_QPA_GENERIC_PLUGINS"_s, u"remote"_s);
        environment.remove(u"ORRINET_TEST_MODE"_s);
        environment.insert(extra);
        process.setProcessEnvironment(environment);
        process.setWorkingDirectory(home.path());
        process.start(QStringLiteral(ORRINET_PROGRAM), arguments);
    }

    /// The next line of what the plugin reports, empty where the process ends without one.
    QJsonObject nextReport()
    {
        QSignalSpy output(&process, &QProcess::readyReadStandardOutput);
        while (!process.canReadLine() && process.state() != QProcess::NotRunning) {
            if (!output.wait(patience))
                break;
        }
        return QJsonDocument::fromJson(process.readLine()).object();
    }

    void order(const QByteArray &line) { process.write(line + '\n'); }

    /// The exit code, or -1 for a process that did not end by itself.
    int exitCode()
    {
        QSignalSpy end(&process, &QProcess::finished);
        if (process.state() != QProcess::NotRunning && !end.wait(patience))
            return -1;
        return process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    }

    bool isRunning() const { return process.state() == QProcess::Running; }

    /// What the program wrote to its error output, without the words of the platform plugin.
    QString complaints()
    {
        QStringList lines = QString::fromLocal8Bit(process.readAllStandardError()).split(u'\n', Qt::SkipEmptyParts);
        lines.removeIf([](const QString &line) { return line.startsWith("This plugin does not support"_L1); });
        return lines.join(u'\n');
    }

    QDir folder() const { return {home.path()}; }

private:
    QTemporaryDir home;
    QProcess process;
};

/// What every start of the program reports.
QJsonObject usualStart()
{
    return {{u"resourcesThere"_s, true},      {u"organization"_s, u"Orrinet"_s},
            {u"application"_s, u"Orrinet"_s}, {u"version"_s, QString()},
            {u"iconIsNull"_s, true},          {u"iconPathExists"_s, false},
            {u"iconFileExists"_s, true},      {u"topLevelWindows"_s, 1},
            {u"windowIsVisible"_s, true},     {u"windowHasParent"_s, false},
            {u"windowTitle"_s, QString()},    {u"windowClass"_s, u"MainWindow"_s},
            {u"projectIsOpen"_s, true},       {u"personaRows"_s, 0}};
}

} // namespace

class TestIdentity : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void program_starts_with_its_identity_and_an_open_project_and_saves_nothing()
    {
        Program program;
        QCOMPARE(program.nextReport(), usualStart());
        program.order("close");
        QCOMPARE(program.exitCode(), 0);
        QVERIFY(!program.folder().exists(u".config/Orrinet"_s));
        QVERIFY(!program.folder().exists(u".config/Orrinet.conf"_s));
        QCOMPARE(program.folder().entryList(QDir::Files | QDir::Hidden), QStringList());
    }

    void program_ends_with_its_window_data()
    {
        QTest::addColumn<QByteArray>("order");
        QTest::addColumn<int>("code");
        QTest::addRow("window closed") << "close"_ba << 0;
        QTest::addRow("Quit chosen") << "quit"_ba << 0;
        QTest::addRow("event loop left with a code") << "7"_ba << 7;
    }

    void program_ends_with_its_window()
    {
        QFETCH(QByteArray, order);
        Program program;
        QVERIFY(program.nextReport().value(u"windowIsVisible"_s).toBool());
        program.order(order);
        const QJsonObject end = {{u"destroyed"_s, u"window"_s}, {u"applicationStands"_s, true}};
        QCOMPARE(program.nextReport(), end);
        QTEST(program.exitCode(), "code");
        QCOMPARE(program.complaints(), QString());
    }

    void arguments_change_nothing_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addRow("words that other programs know") << QStringList{u"--help"_s, u"--version"_s, u"-h"_s};
        QTest::addRow("a file that is missing") << QStringList{u"missing.ormt"_s};
        QTest::addRow("a file that is there") << QStringList{QStringLiteral(ORRINET_PROGRAM)};
        QTest::addRow("an empty one") << QStringList{QString()};
    }

    void arguments_change_nothing()
    {
        QFETCH(QStringList, arguments);
        Program program(arguments);
        QCOMPARE(program.nextReport(), usualStart());
        program.order("close");
        QCOMPARE(program.exitCode(), 0);
        QCOMPARE(program.complaints(), QString());
        QVERIFY(!program.folder().exists(u"missing.ormt"_s));
    }

    void a_second_one_runs_beside_the_first()
    {
        Program first;
        QVERIFY(!first.nextReport().isEmpty());
        Program second;
        QVERIFY(!second.nextReport().isEmpty());
        QVERIFY(first.isRunning());
        second.order("close");
        QCOMPARE(second.exitCode(), 0);
        QVERIFY(first.isRunning());
        first.order("close");
        QCOMPARE(first.exitCode(), 0);
    }

    void test_mode_shows_the_window_as_well()
    {
        QProcessEnvironment testMode;
        testMode.insert(u"ORRINET_TEST_MODE"_s, QString());
        Program program({}, testMode);
        QCOMPARE(program.nextReport(), usualStart());
        program.order("quit");
        QVERIFY(!program.nextReport().isEmpty());
        QCOMPARE(program.exitCode(), 0);
    }
};

ORRINET_TEST(TestIdentity)
#include "tst_identity.moc"
