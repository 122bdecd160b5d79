#include "tests/bridge/bridgestage.h"
#include "tests/support/testcase.h"

#include <QRegularExpression>
#include <QTest>

#ifdef Q_OS_UNIX
#include <fcntl.h>
#include <pty.h>
#include <unistd.h>
#endif

using namespace Qt::StringLiterals;
using standin::Reply;

namespace {

/// The second of three pairs fails, the third is answered at the second attempt.
void answerSome(BridgeStage &stage)
{
    const Reply answer = Reply::json(R"({"choices":[{"message":{"content":"ok"}}],)"
                                     R"("usage":{"prompt_tokens":11,"completion_tokens":3}})");
    stage.endpoint.queue(answer);
    stage.endpoint.queue(Reply::status(400));
    stage.endpoint.queue(Reply::status(500).with("Retry-After", "0"));
    stage.endpoint.queue(answer);
}

void verifyMatches(const QString &text, const QString &pattern)
{
    const QRegularExpression expression(u'^' + pattern + u'$');
    QVERIFY2(expression.match(text).hasMatch(), qPrintable(text));
}

#ifdef Q_OS_UNIX
/// What a program writes to a terminal that is its error output.
class Terminal
{
public:
    explicit Terminal(BridgeStage &stage)
    {
        QVERIFY(::openpty(&ours, &its, nullptr, nullptr, nullptr) == 0);
        stage.setChildModifier([end = its] { ::dup2(end, STDERR_FILENO); });
    }
    ~Terminal()
    {
        ::close(ours);
        ::close(its);
    }
    Q_DISABLE_COPY_MOVE(Terminal)

    /// All that is there by now.
    QString text() const
    {
        QByteArray bytes(4096, '\0');
        ::fcntl(ours, F_SETFL, O_NONBLOCK);
        const auto count = ::read(ours, bytes.data(), size_t(bytes.size()));
        return QString::fromUtf8(bytes.first(qMax<qsizetype>(count, 0)));
    }

private:
    int ours = -1;
    int its = -1;
};
#endif

} // namespace

/// What the program says on its error output.
class TestRunOutput : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void each_exchange_has_a_line_and_the_end_a_summary()
    {
        BridgeStage stage;
        answerSome(stage);
        const auto ended = stage.runProject(writeSurvey(stage.path(u"in.ormt"_s), 1, 3), u"out.ormt"_s);
        QCOMPARE(ended.status, 1);
        QCOMPARE(ended.output, QString());
        QCOMPARE(ended.errors.size(), 4);
        const QString start = u"\\d{4}-\\d\\d-\\d\\dT\\d\\d:\\d\\d:\\d\\d  \\d+\\.\\d s  "_s;
        verifyMatches(ended.errors.at(0), start + u"1 attempt  tokens 11 in, 3 out  200 OK"_s);
        verifyMatches(ended.errors.at(1), start + u"1 attempt  tokens 0 in, 0 out  400 Bad Request"_s);
        verifyMatches(ended.errors.at(2), start + u"2 attempts  tokens 11 in, 3 out  200 OK"_s);
        verifyMatches(ended.errors.at(3), u"orrinet-bridge: asked 3, failed 1, retried 1, tokens 22 in, 6 out, "
                                          "4 requests sent, in 0:\\d\\d:\\d\\d, 1 pairs open"_s);
    }

    void a_failure_below_http_is_told_in_its_line()
    {
        BridgeStage stage;
        stage.endpoint.queue(Reply::content(u"ok"_s));
        stage.endpoint.queue(Reply().ending(Reply::End::DroppedBeforeHead));
        const auto ended =
            stage.runProject(writeSurvey(stage.path(u"in.ormt"_s), 1, 2), u"out.ormt"_s, {u"--retries"_s, u"0"_s});
        QCOMPARE(ended.errors.size(), 3);
        QVERIFY2(ended.errors.at(1).endsWith(u"tokens 0 in, 0 out  Connection closed"_s),
                 qPrintable(ended.errors.at(1)));
    }

    void a_quiet_run_says_nothing()
    {
        BridgeStage stage;
        answerSome(stage);
        const auto ended = stage.runProject(writeSurvey(stage.path(u"in.ormt"_s), 1, 3), u"out.ormt"_s, {u"--quiet"_s});
        QCOMPARE(ended.status, 1);
        QCOMPARE(ended.errors, QStringList());
    }

    void a_quiet_run_names_what_makes_it_useless()
    {
        BridgeStage stage;
        const auto ended = stage.runProject(u"no.ormt"_s, u"out.ormt"_s, {u"--quiet"_s});
        QCOMPARE(ended.status, 3);
        QCOMPARE(ended.errors, QStringList{u"orrinet-bridge: no.ormt is not there"_s});
    }

#ifdef Q_OS_UNIX
    void a_terminal_gets_one_line_that_is_kept_up_to_date()
    {
        BridgeStage stage;
        const Terminal terminal(stage);
        answerSome(stage);
        const auto ended = stage.runProject(writeSurvey(stage.path(u"in.ormt"_s), 1, 3), u"out.ormt"_s);
        QCOMPARE(ended.status, 1);
        // Each one begins anew at the left of the line.
        const QStringList told = terminal.text().split(u"\r\033[K"_s);
        QCOMPARE(told.size(), 5);
        QCOMPARE(told.at(0), QString());
        const QString pace = u", \\d+\\.\\d/s, \\d:\\d\\d:\\d\\d left"_s;
        verifyMatches(told.at(1), u"asked 1, failed 0, retried 0, tokens 11 in, 3 out"_s + pace);
        verifyMatches(told.at(2), u"asked 2, failed 1, retried 0, tokens 11 in, 3 out"_s + pace);
        verifyMatches(told.at(3), u"asked 3, failed 1, retried 1, tokens 22 in, 6 out"_s + pace);
        verifyMatches(told.at(4), u"orrinet-bridge: asked 3, failed 1, .*, 1 pairs open\r\n"_s);
    }

    void a_terminal_keeps_the_reason_for_an_early_end()
    {
        BridgeStage stage;
        const Terminal terminal(stage);
        const auto ended =
            stage.runProject(writeSurvey(stage.path(u"in.ormt"_s), 1, 3), u"out.ormt"_s, {u"--max-requests"_s, u"1"_s});
        QCOMPARE(ended.status, 1);
        QVERIFY2(terminal.text().contains(
                     u"\r\033[Korrinet-bridge: the budget of 1 requests is used up; nothing more is asked\r\n"_s),
                 qPrintable(terminal.text()));
    }
#endif
};

ORRINET_TEST(TestRunOutput)
#include "tst_runoutput.moc"
