// The inputs that the fuzzers begin with, and others made of them, through the same targets.

#include "fuzz/filestage.h"
#include "fuzz/promises.h"
#include "fuzz/targets.h"
#include "tests/support/seed.h"
#include "tests/support/testcase.h"

#include <QDir>
#include <QFile>
#include <QRandomGenerator>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

struct Input
{
    QString name;
    QByteArray bytes;
};

QList<Input> corpusOf(const QString &target)
{
    const QDir folder(QStringLiteral(ORRINET_SOURCE_FOLDER "/fuzz/corpus/") + target);
    QList<Input> inputs;
    for (const auto names = folder.entryList(QDir::Files, QDir::Name); const QString &name : names) {
        QFile file(folder.filePath(name));
        if (file.open(QIODevice::ReadOnly))
            inputs.append({.name = name, .bytes = file.readAll()});
    }
    return inputs;
}

/// A few changes: bytes put in, taken out, replaced, and the end of another input in place of its own.
QByteArray changed(QByteArray input, const QList<Input> &others, QRandomGenerator &random)
{
    for (int change = random.bounded(1, 5); change > 0; --change) {
        const qsizetype place = random.bounded(input.size() + 1);
        const char byte = static_cast<char>(random.bounded(256));
        switch (random.bounded(4)) {
        case 0:
            input.insert(place, byte);
            break;
        case 1:
            input.remove(place, random.bounded(1, 5));
            break;
        case 2:
            input.replace(place, 1, QByteArray(1, byte));
            break;
        default:
            const QByteArray &other = others.at(random.bounded(others.size())).bytes;
            input = input.first(place) + other.sliced(random.bounded(other.size() + 1));
        }
    }
    return input;
}

void addTargets()
{
    QTest::addColumn<QString>("target");
    for (const FuzzTarget &target : fuzzTargets())
        QTest::newRow(target.name.data()) << target.name.toString();
}

QString brokenBy(const QString &target, QByteArrayView input)
{
    fuzzTarget(QLatin1StringView(target.toLatin1())).run(input);
    const QStringList broken = takeBrokenPromises();
    return broken.isEmpty() ? QString()
                            : broken.join(u'\n') + u"\nby "_s + QString::fromLatin1(input.toByteArray().toHex());
}

} // namespace

class TestFuzzCorpora : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup() { FileStage::close(); }

    void every_input_of_a_corpus_keeps_the_promises_data() { addTargets(); }
    void every_input_of_a_corpus_keeps_the_promises()
    {
        QFETCH(const QString, target);
        const QList<Input> corpus = corpusOf(target);
        QVERIFY(!corpus.isEmpty());
        for (const Input &input : corpus) {
            const QString broken = brokenBy(target, input.bytes);
            QVERIFY2(broken.isEmpty(), qUtf8Printable(input.name + ": "_L1 + broken));
        }
    }

    void changed_inputs_keep_the_promises_data() { addTargets(); }
    void changed_inputs_keep_the_promises()
    {
        QFETCH(const QString, target);
        QRandomGenerator random(testSeed());
        const QList<Input> corpus = corpusOf(target);
        const bool isOfFiles = target == "project"_L1 || target == "import"_L1 || target == "browse"_L1;
        const int usual = isOfFiles ? 60 : 400;
        const int turns = qEnvironmentVariableIsSet("ORRINET_LONG") ? 100 * usual : usual;
        for (int turn = 0; turn < turns; ++turn) {
            const QByteArray input = changed(corpus.at(random.bounded(corpus.size())).bytes, corpus, random);
            const QString broken = brokenBy(target, input);
            QVERIFY2(broken.isEmpty(), qUtf8Printable(broken));
        }
    }
};

ORRINET_TEST(TestFuzzCorpora)
#include "tst_fuzzcorpora.moc"
