// The settings can't be stored: no home, or none that can be written to.

#include "tests/faults/scarceroom.h"
#include "tests/preferences/preferencesbox.h"
#include "tests/support/messagelog.h"
#include "tests/support/sidedatabase.h"
#include "tests/support/testcase.h"
#include "tests/support/unprivileged.h"

#include <QAction>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSettings>

using namespace Qt::StringLiterals;

namespace {

/// Makes the home something that nothing can be stored in.
using Spoil = std::function<void(Stage &)>;

/// Leads the settings to where they are for this home, null for none.
void liveIn(const QString &home)
{
    if (home.isNull())
        qunsetenv("HOME");
    else
        qputenv("HOME", QFile::encodeName(home));
    qunsetenv("XDG_CONFIG_HOME");
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, QDir::homePath() + "/.config"_L1);
}

} // namespace

class TestNoSettings : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void without_a_home_the_program_works_and_has_no_key_data()
    {
        QTest::addColumn<Spoil>("spoil");
        QTest::newRow("no home") << Spoil([](Stage &) { liveIn(QString()); });
        QTest::newRow("a home that is not there") << Spoil([](Stage &) { liveIn(u"/nowhere/at all"_s); });
        QTest::newRow("a home that is a file")
            << Spoil([](Stage &stage) { liveIn(writeBytes(stage.path(u"home"_s), "no folder")); });
        QTest::newRow("a home that may not be written") << Spoil([](Stage &stage) {
            QDir().mkpath(stage.path(u"home"_s));
            QFile::setPermissions(stage.path(u"home"_s), QFile::ReadOwner | QFile::ExeOwner);
            liveIn(stage.path(u"home"_s));
        });
    }
    void without_a_home_the_program_works_and_has_no_key()
    {
        QFETCH(const Spoil, spoil);
        Stage stage;
        const Unprivileged user(stage);
        const MessageLog log;
        spoil(stage);
        QVERIFY(storePreferences(stage, {u"new key"_s, u"large"_s, u"small"_s}));
        QVERIFY(!QFile::exists(QSettings().fileName()));
        QCOMPARE(log.warnings(), QStringList());

        stage.call("insertPersona", u"P1"_s, u"P1"_s);
        stage.call("insertQuestion", u"Q1"_s, u"text"_s, false);
        QVERIFY(asksNothing([&stage] { stage.action(u"Run"_s)->trigger(); }));
        QCOMPARE(log.warnings(), QStringList{u"survey error: OPENAI_API_KEY not set"_s});
        QVERIFY(savesByDialog(stage));
        QCOMPARE(log.warnings().size(), 1);
    }

    void settings_that_cannot_be_stored_leave_the_former_ones_data()
    {
        QTest::addColumn<bool>("locked");
        QTest::newRow("a locked folder") << true;
        QTest::newRow("a full disk") << false;
    }
    void settings_that_cannot_be_stored_leave_the_former_ones()
    {
        QFETCH(const bool, locked);
        Stage stage;
        const Unprivileged user(stage);
        const MessageLog log;
        const QString path = earlierSettings(stage);
        const QByteArray before = readBytes(path);
        {
            std::unique_ptr<FileSizeLimit> fullDisk;
            if (locked)
                QFile::setPermissions(QFileInfo(path).path(), QFile::ReadOwner | QFile::ExeOwner);
            else
                fullDisk = std::make_unique<FileSizeLimit>(0);
            QVERIFY(storePreferences(stage, {u"new key"_s, u"large"_s, u"small"_s}));
        }
        QFile::setPermissions(QFileInfo(path).path(), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        QCOMPARE(readBytes(path), before);
        QCOMPARE(QDir(QFileInfo(path).path()).entryList(QDir::Files | QDir::Hidden), QStringList{u"Orrinet.conf"_s});
        QVERIFY(savesByDialog(stage));
        QCOMPARE(log.warnings(), QStringList());
    }

private:
    /// Stores a key where it can be stored, and gives the path of the file.
    static QString earlierSettings(Stage &stage)
    {
        const QString home = stage.path(u"home"_s);
        QDir().mkpath(home + "/.config/Orrinet"_L1);
        liveIn(home);
        Stage::setSetting(u"openai/api_key"_s, u"earlier key"_s);
        return QSettings().fileName();
    }
    static bool savesByDialog(Stage &stage)
    {
        const QString path = stage.path(u"saved.ormt"_s);
        const Modal dialog([&path](QWidget *window) { enterPath(window, path); });
        stage.action(u"Save As"_s)->trigger();
        return dialog.wasAnswered() && QFile::exists(path) && !stage.asksBeforeClosing();
    }
};

ORRINET_TEST(TestNoSettings)
#include "tst_nosettings.moc"
