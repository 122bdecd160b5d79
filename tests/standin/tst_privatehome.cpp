#include "standin/privatehome.h"
#include "tests/support/sidedatabase.h"
#include "tests/support/testcase.h"

#include <QDir>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

class TestPrivateHome : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void the_key_of_the_display_stays_where_it_can_be_found_data()
    {
        QTest::addColumn<bool>("inHome");
        QTest::addColumn<QByteArray>("named");
        QTest::addColumn<QString>("found");
        QTest::newRow("in the home") << true << QByteArray() << u"home/.Xauthority"_s;
        QTest::newRow("named elsewhere") << true << "elsewhere"_ba << u"elsewhere"_s;
        QTest::newRow("nowhere") << false << QByteArray() << QString();
    }

    void the_key_of_the_display_stays_where_it_can_be_found()
    {
        QFETCH(const bool, inHome);
        QFETCH(const QByteArray, named);
        QFETCH(const QString, found);
        const QTemporaryDir folder;
        QVERIFY(QDir(folder.path()).mkdir(u"home"_s));
        if (inHome)
            writeBytes(folder.filePath(u"home/.Xauthority"_s), "key");
        qputenv("HOME", QFile::encodeName(folder.filePath(u"home"_s)));
        if (named.isNull())
            qunsetenv("XAUTHORITY");
        else
            qputenv("XAUTHORITY", QFile::encodeName(folder.filePath(QString::fromLatin1(named))));

        leaveUsersHome(folder.filePath(u"private"_s));
        QCOMPARE(qEnvironmentVariable("XAUTHORITY"), found.isNull() ? QString() : folder.filePath(found));
        QCOMPARE(QDir::homePath(), folder.filePath(u"private"_s));
        QVERIFY(QSettings(u"Some"_s, u"Program"_s).fileName().startsWith(folder.filePath(u"private/"_s)));
    }
};

ORRINET_TEST(TestPrivateHome)
#include "tst_privatehome.moc"
