// A reply for which there is no memory, from an endpoint in another process.

#include "tests/faults/remoteendpoint.h"
#include "tests/support/messagelog.h"
#include "tests/support/sidedatabase.h"
#include "tests/support/stage.h"
#include "tests/support/testcase.h"

#include <QAction>
#include <QSignalSpy>

#include <sys/resource.h>
#include <unistd.h>

using namespace Qt::StringLiterals;
using standin::Reply;

namespace {

constexpr int million = 1'000'000;

/// Bytes of address space that this process has taken.
qint64 sizeOfProcess()
{
    const QByteArray pages = readBytes(u"/proc/self/statm"_s).split(' ').constFirst();
    return pages.toLongLong() * ::getpagesize();
}

/// While it lives, this process gets so much more memory and none beyond.
class MemoryShortage
{
public:
    explicit MemoryShortage(qint64 left)
    {
        ::getrlimit(RLIMIT_AS, &before);
        const rlimit limit{.rlim_cur = rlim_t(sizeOfProcess() + left), .rlim_max = before.rlim_max};
        if (::setrlimit(RLIMIT_AS, &limit) != 0)
            QTest::qFail("no limit was set", __FILE__, __LINE__);
    }
    ~MemoryShortage() { ::setrlimit(RLIMIT_AS, &before); }
    Q_DISABLE_COPY_MOVE(MemoryShortage)

private:
    rlimit before{};
};

} // namespace

class TestHugeReply : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void a_reply_that_memory_is_too_short_for_fails_by_its_pair_data()
    {
        QTest::addColumn<int>("length");
        QTest::addColumn<int>("room");
        QTest::addColumn<bool>("held");
        QTest::addRow("no room") << 20 * million << 60 * million << false;
        QTest::addRow("room for the bytes, not for what comes of them") << 200 * million << 1'500 * million << false;
        QTest::addRow("room for the text, not for its layout") << 20 * million << 340 * million << false;
        QTest::addRow("just room") << 2 * million << 300 * million << true;
    }
    void a_reply_that_memory_is_too_short_for_fails_by_its_pair()
    {
        QFETCH(const int, length);
        if (!inChild()) {
            standin::ChatEndpoint endpoint;
            endpoint.queue(Reply::content(u"stored"_s));
            endpoint.queue(Reply::content(u"so "_s.repeated(length / 3)).dripping(million, 0));
            passesInChild(leadingTo(endpoint));
            return;
        }
        QFETCH(const int, room);
        QFETCH(const bool, held);
        useRemoteEndpoint();
        Stage stage;
        Stage::setSetting(u"openai/api_key"_s, u"test-key"_s);
        stage.call("insertPersona", u"P1"_s, u"P1"_s);
        stage.call("insertQuestion", u"Q1"_s, u"text"_s, false);
        run(stage);
        stage.call("insertQuestion", u"Q2"_s, u"text"_s, false);
        const MessageLog log;
        {
            const MemoryShortage shortage(room);
            run(stage);
        }
        const QStringList failures = log.warnings();
        QCOMPARE(failures, held ? QStringList() : QStringList{u"survey error: Operation canceled (code 5)"_s});
        run(stage);
        QCOMPARE(stage.count(u"responses"_s), 2);
        QCOMPARE(stage.value(u"SELECT text_answer FROM responses ORDER BY id LIMIT 1"_s), u"stored"_s);
        QCOMPARE(stage.value(u"SELECT length(text_answer) FROM responses ORDER BY id DESC LIMIT 1"_s),
                 held ? length / 3 * 3 : 2);
    }

private:
    static void run(Stage &stage)
    {
        QAction *entry = stage.action(u"Run"_s);
        QSignalSpy changed(entry, &QAction::enabledChanged);
        entry->trigger();
        while (!entry->isEnabled())
            QVERIFY(changed.wait(20'000));
    }
};

ORRINET_TEST(TestHugeReply)
#include "tst_hugereply.moc"
