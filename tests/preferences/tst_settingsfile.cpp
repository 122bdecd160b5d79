// The file that the key lies in: nobody but its owner may read it, at no moment.

#include "tests/preferences/preferencesbox.h"
#include "tests/support/sidedatabase.h"
#include "tests/support/testcase.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSettings>
#include <QTest>

#include <sys/inotify.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

constexpr auto ownerOnly = QFile::ReadOwner | QFile::WriteOwner;

/// The permissions of a file as far as they are stored with it.
QFile::Permissions mode(const QString &path)
{
    constexpr auto user = QFile::ReadUser | QFile::WriteUser | QFile::ExeUser;
    return QFile::permissions(path) & ~QFile::Permissions(user);
}

/// Writes down what the system does to the files of a folder, lock files left out.
class Watch
{
public:
    explicit Watch(const QString &folder)
        : descriptor(inotify_init1(IN_NONBLOCK))
    {
        inotify_add_watch(descriptor, QFile::encodeName(folder).constData(),
                          IN_CREATE | IN_ATTRIB | IN_MODIFY | IN_MOVED_TO);
    }
    ~Watch() { ::close(descriptor); }
    Q_DISABLE_COPY_MOVE(Watch)

    /// Each event so far, as one of "create", "mode", "write", "rename".
    QStringList events() const
    {
        QStringList all;
        alignas(inotify_event) char buffer[16384];
        const auto length = ::read(descriptor, buffer, sizeof buffer);
        for (qsizetype offset = 0; offset < length;) {
            const auto *event = reinterpret_cast<const inotify_event *>(buffer + offset);
            offset += qsizetype(sizeof(inotify_event)) + event->len;
            if (!QString::fromLocal8Bit(event->name).endsWith(".lock"_L1))
                all.append(kind(event->mask));
        }
        return all;
    }

private:
    static QString kind(uint32_t mask)
    {
        if ((mask & IN_CREATE) != 0)
            return u"create"_s;
        if ((mask & IN_ATTRIB) != 0)
            return u"mode"_s;
        return (mask & IN_MODIFY) != 0 ? u"write"_s : u"rename"_s;
    }

    int descriptor;
};

bool writeSettings(const QString &path, const QByteArray &text, QFile::Permissions permissions)
{
    return QDir().mkpath(QFileInfo(path).path()) && QFile::setPermissions(writeBytes(path, text), permissions) &&
           mode(path) == permissions;
}

} // namespace

class TestSettingsFile : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { umaskBefore = ::umask(022); }
    void cleanup() { ::umask(umaskBefore); }

    void file_is_its_owners_alone_data()
    {
        QTest::addColumn<QFile::Permissions>("before");
        const QFile::Permissions all = ownerOnly | QFile::ReadGroup | QFile::ReadOther;
        QTest::addRow("no file") << QFile::Permissions();
        QTest::addRow("a file for all to read") << all;
        QTest::addRow("a file for all to write") << (all | QFile::WriteGroup | QFile::WriteOther);
        QTest::addRow("a file for its owner") << QFile::Permissions(ownerOnly);
    }

    void file_is_its_owners_alone()
    {
        QFETCH(QFile::Permissions, before);
        Stage stage;
        const QString path = stage.path(u".config/Orrinet/Orrinet.conf"_s);
        if (before)
            QVERIFY(writeSettings(path, "[models]\npersona=large\n\n[other]\nentry=kept\n", before));
        for (const auto key : {"first key"_L1, "second key"_L1}) {
            QVERIFY(storePreferences(stage, {key, u"large"_s, u"small"_s}));
            QCOMPARE(mode(path), ownerOnly);
            QVERIFY(readBytes(path).contains(key.data()));
        }
        QCOMPARE(QSettings().contains(u"other/entry"_s), bool(before));
    }

    void mode_is_set_before_anything_is_written_data()
    {
        QTest::addColumn<bool>("fileBefore");
        QTest::addRow("no file") << false;
        QTest::addRow("a file for all to read") << true;
    }

    void mode_is_set_before_anything_is_written()
    {
        QFETCH(bool, fileBefore);
        Stage stage;
        const QString folder = stage.path(u".config/Orrinet"_s);
        const QString path = folder + "/Orrinet.conf"_L1;
        QVERIFY(QDir().mkpath(folder));
        if (fileBefore)
            QVERIFY(writeSettings(path, "[models]\n", ownerOnly | QFile::ReadGroup | QFile::ReadOther));
        stage.window();
        const Watch watch(folder);
        QVERIFY(storePreferences(stage, {u"key"_s, u"large"_s, u"small"_s}));

        // No mode changes once there is text in any file, so what the file has at the end it had at its beginning.
        const QStringList events = watch.events();
        const qsizetype written = events.indexOf(u"write"_s);
        QVERIFY2(written >= 0, qPrintable(events.join(u' ')));
        QVERIFY2(events.contains(u"rename"_s), qPrintable(events.join(u' ')));
        QVERIFY2(events.lastIndexOf(u"mode"_s) < written, qPrintable(events.join(u' ')));
        QCOMPARE(mode(path), ownerOnly);
    }

private:
    mode_t umaskBefore = 0;
};

ORRINET_TEST(TestSettingsFile)
#include "tst_settingsfile.moc"
