// The key in places that somebody else has prepared: wherever it comes to lie, nobody but its owner may read it.

#include "tests/preferences/preferencesbox.h"
#include "tests/support/sidedatabase.h"
#include "tests/support/testcase.h"
#include "tests/support/unprivileged.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSettings>
#include <QTest>

#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

const QByteArray formerText = "[other]\nentry=kept\n";

/// The rights and the kind of a file as the system tells them; 0 where there is none.
mode_t rights(const QString &path)
{
    struct stat status = {};
    return ::stat(QFile::encodeName(path).constData(), &status) == 0 ? status.st_mode & 07777 : 0;
}

void setRights(const QString &path, mode_t mode)
{
    if (::chmod(QFile::encodeName(path).constData(), mode) != 0)
        QTest::qFail(qPrintable(path), __FILE__, __LINE__);
}

/// All files below a folder that hold a text, links left out.
QStringList filesWith(const QString &folder, const QByteArray &text)
{
    QStringList found;
    for (const auto entries = QDir(folder).entryInfoList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
         const QFileInfo &entry : entries) {
        if (entry.isSymLink())
            continue;
        if (entry.isDir())
            found << filesWith(entry.filePath(), text);
        else if (readBytes(entry.filePath()).contains(text))
            found << entry.filePath();
    }
    return found;
}

bool storeKey(Stage &stage, const QString &key)
{
    return storePreferences(stage, {key, u"large"_s, u"small"_s});
}

} // namespace

class TestKeyFile : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { umaskBefore = ::umask(0); }
    void cleanup() { ::umask(umaskBefore); }

    void file_is_its_owners_alone_from_the_first_start_to_the_erasing_data()
    {
        QTest::addColumn<mode_t>("mask");
        for (const mode_t mask : {mode_t(0), mode_t(022), mode_t(077)})
            QTest::addRow("umask %03o", mask) << mask;
    }
    void file_is_its_owners_alone_from_the_first_start_to_the_erasing()
    {
        QFETCH(const mode_t, mask);
        ::umask(mask);
        Stage stage;
        const QString path = stage.path(u".config/Orrinet/Orrinet.conf"_s);
        stage.window();
        QVERIFY(!QFile::exists(path));
        for (const auto &key : {u"first key"_s, u"second key"_s, QString()}) {
            QVERIFY(storeKey(stage, key));
            QCOMPARE(rights(path), mode_t(0600));
            QCOMPARE(QSettings().value(u"openai/api_key"_s), key);
        }
        // An erased key is nowhere any more.
        QCOMPARE(filesWith(stage.path(QString()), "second key"), QStringList());
    }

    void a_link_leads_the_key_to_a_file_of_its_owner_alone_data()
    {
        QTest::addColumn<mode_t>("mode");
        QTest::newRow("to a file for its owner") << mode_t(0600);
        QTest::newRow("to a file for all to read") << mode_t(0644);
        QTest::newRow("to a file for all to write") << mode_t(0666);
        QTest::newRow("to no file") << mode_t(0);
    }
    void a_link_leads_the_key_to_a_file_of_its_owner_alone()
    {
        QFETCH(const mode_t, mode);
        Stage stage;
        const QString path = linkedSettings(stage, u"elsewhere.conf"_s);
        const QString target = stage.path(u"elsewhere.conf"_s);
        if (mode != 0)
            setRights(writeBytes(target, formerText), mode);
        for (const auto &key : {u"first key"_s, u"second key"_s}) {
            QVERIFY(storeKey(stage, key));
            QCOMPARE(rights(target), mode_t(0600));
            QCOMPARE(filesWith(stage.path(QString()), key.toUtf8()), QStringList{target});
        }
        QVERIFY(QFileInfo(path).isSymLink());
        QCOMPARE(QSettings().contains(u"other/entry"_s), mode != 0);
    }

    void a_link_to_a_missing_folder_leaves_no_key()
    {
        Stage stage;
        linkedSettings(stage, u"missing/elsewhere.conf"_s);
        QVERIFY(storeKey(stage, u"some key"_s));
        QCOMPARE(filesWith(stage.path(QString()), "some key"), QStringList());
        QVERIFY(!QFile::exists(stage.path(u"missing"_s)));
    }

    void a_folder_for_all_holds_a_file_for_one()
    {
        Stage stage;
        const QString folder = settingsFolder(stage);
        setRights(folder, 0777);
        QVERIFY(storeKey(stage, u"some key"_s));
        QCOMPARE(rights(folder + "/Orrinet.conf"_L1), mode_t(0600));
        QCOMPARE(filesWith(stage.path(QString()), "some key"), QStringList{folder + "/Orrinet.conf"_L1});
    }

    void a_file_of_another_user_is_replaced_data()
    {
        QTest::addColumn<mode_t>("mode");
        QTest::addColumn<mode_t>("folderMode");
        QTest::addColumn<bool>("linked");
        QTest::newRow("for all to read") << mode_t(0644) << mode_t(0755) << false;
        QTest::newRow("for all to write") << mode_t(0666) << mode_t(0755) << false;
        QTest::newRow("in a folder for all") << mode_t(0666) << mode_t(0777) << false;
        QTest::newRow("behind a link") << mode_t(0666) << mode_t(0777) << true;
    }
    void a_file_of_another_user_is_replaced()
    {
        if (!canGiveFiles())
            return;
        QFETCH(const mode_t, mode);
        QFETCH(const mode_t, folderMode);
        QFETCH(const bool, linked);
        Stage stage;
        const QString target = stage.path(u"elsewhere.conf"_s);
        const QString path = linked ? linkedSettings(stage, u"elsewhere.conf"_s) : settingsPath(stage);
        setRights(writeBytes(linked ? target : path, formerText), mode);
        giveFolderToUser(path, folderMode);
        const Unprivileged user(stage);
        for (const auto &key : {u"first key"_s, u"second key"_s}) {
            QVERIFY(storeKey(stage, key));
            QCOMPARE(rights(path), mode_t(0600));
            QCOMPARE(QFileInfo(path).ownerId(), ::geteuid());
            QCOMPARE(filesWith(stage.path(QString()), key.toUtf8()), QStringList{path});
        }
        QCOMPARE(QSettings().value(u"other/entry"_s), u"kept"_s);
        QVERIFY(!linked || readBytes(target) == formerText);
    }

    void a_file_that_cannot_be_replaced_gets_no_key_data()
    {
        QTest::addColumn<mode_t>("folderMode");
        QTest::newRow("a folder of another user") << mode_t(0755);
        QTest::newRow("a folder for all where each keeps his own") << mode_t(01777);
    }
    void a_file_that_cannot_be_replaced_gets_no_key()
    {
        if (!canGiveFiles())
            return;
        QFETCH(const mode_t, folderMode);
        Stage stage;
        const QString path = settingsPath(stage);
        setRights(writeBytes(path, formerText), 0666);
        setRights(QFileInfo(path).path(), folderMode);
        const Unprivileged user(stage);
        QVERIFY(storeKey(stage, u"some key"_s));
        QCOMPARE(filesWith(stage.path(QString()), "some key"), QStringList());
        QCOMPARE(readBytes(path), formerText);
    }

private:
    /// Only root can make what another user leaves behind.
    static bool canGiveFiles()
    {
        const bool root = ::geteuid() == 0;
        if (!root)
            qInfo("files of another user's can't be made here: nothing is tried");
        return root;
    }
    static QString settingsFolder(Stage &stage)
    {
        const QString folder = stage.path(u".config/Orrinet"_s);
        QDir().mkpath(folder);
        setRights(stage.path(u".config"_s), 0755);
        setRights(folder, 0755);
        return folder;
    }
    static QString settingsPath(Stage &stage) { return settingsFolder(stage) + "/Orrinet.conf"_L1; }
    /// A settings file that is a link to one of the private folder.
    static QString linkedSettings(Stage &stage, const QString &target)
    {
        const QString path = settingsPath(stage);
        if (!QFile::link(stage.path(target), path))
            QTest::qFail("no link was made", __FILE__, __LINE__);
        return path;
    }
    static void giveFolderToUser(const QString &file, mode_t mode)
    {
        const QString folder = QFileInfo(file).path();
        Unprivileged::give(folder);
        setRights(folder, mode);
    }

    mode_t umaskBefore = 0;
};

ORRINET_TEST(TestKeyFile)
#include "tst_keyfile.moc"
