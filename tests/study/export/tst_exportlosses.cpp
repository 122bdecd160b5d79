// What a format can't take, and what is told of it.

#include "study/export/losses.h"
#include "study/export/names.h"
#include "tests/support/testcase.h"

#include <QTest>

using namespace Qt::StringLiterals;
using study::Losses;

class TestExportLosses : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void nuls_and_halves_of_characters_are_no_text_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("clean");
        const QChar high(0xD83D);
        const QChar low(0xDE00);
        const QChar none(0xFFFD);
        QTest::newRow("plain") << u"a\n\u202Eb"_s << u"a\n\u202Eb"_s;
        QTest::newRow("whole") << (u"a"_s + high + low) << (u"a"_s + high + low);
        QTest::newRow("high alone") << (u"a"_s + high + u'b') << (u"a"_s + none + u'b');
        QTest::newRow("high last") << (u"a"_s + high) << (u"a"_s + none);
        QTest::newRow("low first") << (low + u"a"_s) << (none + u"a"_s);
        QTest::newRow("high twice") << (QString(high) + high + low) << (QString(none) + high + low);
        QTest::newRow("nul") << (u"a"_s + QChar(u'\0') + u'b') << u"ab"_s;
        QTest::newRow("nothing but nul") << QString(QChar(u'\0')) << QString();
    }
    void nuls_and_halves_of_characters_are_no_text()
    {
        QFETCH(const QString, text);
        QFETCH(const QString, clean);
        Losses losses;
        QCOMPARE(study::cleaned(text), clean);
        QCOMPARE(study::cleaned(text, u"q1t"_s, losses), clean);
        QCOMPARE(losses.list().size(), text == clean ? 0 : 1);
    }

    void a_cut_leaves_whole_characters_data()
    {
        QTest::addColumn<int>("bytes");
        QTest::addColumn<QByteArray>("cut");
        QTest::newRow("all") << 8 << "aé😀b"_ba;
        QTest::newRow("between") << 7 << "aé😀"_ba;
        QTest::newRow("within four") << 6 << "aé"_ba;
        QTest::newRow("at two") << 3 << "aé"_ba;
        QTest::newRow("within two") << 2 << "a"_ba;
        QTest::newRow("nothing") << 0 << ""_ba;
    }
    void a_cut_leaves_whole_characters()
    {
        QFETCH(const int, bytes);
        QFETCH(const QByteArray, cut);
        Losses losses;
        QCOMPARE(study::cutBytes("aé😀b"_ba, bytes), cut);
        QCOMPARE(study::fitted(u"aé😀b"_s, bytes, u"q1t"_s, losses), cut);
        QCOMPARE(losses.list().size(), bytes == 8 ? 0 : 1);
    }

    void what_is_lost_is_told_in_a_sentence_for_each_kind()
    {
        Losses losses;
        losses.add(u"q1t"_s, study::cutAt(32767, u"bytes"_s));
        losses.add(u"q2t"_s, study::cutAt(32767, u"bytes"_s));
        losses.add(u"q1t"_s, study::cutAt(32767, u"bytes"_s));
        losses.add(u"notes"_s, study::cutAt(80, u"characters"_s));
        for (int question = 1; question <= 7; ++question)
            losses.add(study::answerName(question), u"wording cut"_s);
        QCOMPARE(study::sentencesOf(u"wide.sav"_s, losses.list()),
                 (QStringList{u"wide.sav: cut at 32767 bytes: q1t (2), q2t (1)"_s,
                              u"wide.sav: cut at 80 characters: notes (1)"_s,
                              u"wide.sav: wording cut: q1 (1), q2 (1), q3 (1), q4 (1), q5 (1), and 2 more"_s}));
        QCOMPARE(study::sentencesOf(u"wide.sav"_s, {}), QStringList());
    }
};

ORRINET_TEST(TestExportLosses)
#include "tst_exportlosses.moc"
