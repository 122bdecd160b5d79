#include "tests/support/program.h"
#include "tests/support/testcase.h"

#include <QDir>
#include <QDirIterator>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

/// A component as it is installed below a folder of its own.
class Component
{
public:
    explicit Component(const QString &name)
        : run(QStringLiteral(ORRINET_CMAKE), {u"--install"_s, QStringLiteral(ORRINET_BUILD_FOLDER), u"--prefix"_s,
                                              folder.path(), u"--component"_s, name})
    {
    }

    int status() const { return run.status; }

    QStringList files(const QString &below = {}) const
    {
        const QDir top(folder.path());
        QStringList found;
        for (QDirIterator each(folder.filePath(below), QDir::Files, QDirIterator::Subdirectories); each.hasNext();)
            found << top.relativeFilePath(each.next());
        found.sort();
        return found;
    }

    QString text(const QString &name) const
    {
        QFile file(folder.filePath(name));
        return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
    }

private:
    QTemporaryDir folder;
    ProgramRun run;
};

QString version()
{
    QFile file(QStringLiteral(ORRINET_SOURCE_FOLDER "/VERSION.txt"));
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()).trimmed() : QString();
}

/// What stands behind "KEY=" in a desktop entry.
QString valueOf(const QString &entry, const QString &key)
{
    const QRegularExpression line(u"^%1=(.*)$"_s.arg(key), QRegularExpression::MultilineOption);
    return line.match(entry).captured(1);
}

QStringList toolFiles()
{
    QStringList files;
#ifdef ORRINET_BRIDGE
    files << u"bin/orrinet-bridge"_s << u"share/applications/orrinet-bridge.desktop"_s
          << u"share/bash-completion/completions/orrinet-bridge"_s
          << u"share/icons/hicolor/scalable/apps/orrinet-bridge.svg"_s << u"share/man/man1/orrinet-bridge.1"_s;
#endif
#ifdef ORRINET_STUDY
    files << u"bin/orrinet-study"_s << u"share/bash-completion/completions/orrinet-study"_s
          << u"share/man/man1/orrinet-study.1"_s;
#endif
    files.sort();
    return files;
}

} // namespace

class TestInstallation : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void component_has_its_files_and_no_others_data()
    {
        QTest::addColumn<QString>("component");
        QTest::addColumn<QStringList>("files");
        QTest::addRow("the program") << u"orrinet"_s
                                     << QStringList{u"bin/orrinet"_s,
                                                    u"share/applications/orrinet.desktop"_s,
                                                    u"share/icons/hicolor/scalable/apps/orrinet.svg"_s,
                                                    u"share/icons/hicolor/scalable/mimetypes/"
                                                    "application-x-orrinet-pack.svg"_s,
                                                    u"share/icons/hicolor/scalable/mimetypes/"
                                                    "application-x-orrinet-project.svg"_s,
                                                    u"share/man/man1/orrinet.1"_s,
                                                    u"share/metainfo/org.example.orrinet.metainfo.xml"_s,
                                                    u"share/mime/packages/orrinet.xml"_s};
        QTest::addRow("the tools") << u"orrinet-tools"_s << toolFiles();
    }

    void component_has_its_files_and_no_others()
    {
        QFETCH(QString, component);
        const Component installed(component);
        QCOMPARE(installed.status(), 0);
        QTEST(installed.files(), "files");
    }

    void desktop_entry_stands_on_its_component_alone_data()
    {
        QTest::addColumn<QString>("component");
        QTest::addColumn<QString>("name");
        QTest::addRow("the program") << u"orrinet"_s << u"orrinet"_s;
#ifdef ORRINET_BRIDGE
        QTest::addRow("the bridge") << u"orrinet-tools"_s << u"orrinet-bridge"_s;
#endif
    }

    void desktop_entry_stands_on_its_component_alone()
    {
        QFETCH(QString, component);
        QFETCH(QString, name);
        const Component installed(component);
        const QString entry = installed.text(u"share/applications/%1.desktop"_s.arg(name));
        // Nothing behind it: neither program takes a file.
        QVERIFY(installed.files().contains(u"bin/"_s + valueOf(entry, u"Exec"_s)));
        QVERIFY(
            installed.files().contains(u"share/icons/hicolor/scalable/apps/%1.svg"_s.arg(valueOf(entry, u"Icon"_s))));
        QVERIFY(!entry.contains("MimeType"_L1));
        // By this name a desktop knows which entry a window belongs to.
        QCOMPARE(valueOf(entry, u"Exec"_s), name);
    }

    void file_types_have_their_suffixes_and_icons()
    {
        const Component installed(u"orrinet"_s);
        static const QRegularExpression kind(uR"xml(<mime-type type="([^"]*)">.*?<glob pattern="([^"]*)"/>)xml"_s,
                                             QRegularExpression::DotMatchesEverythingOption);
        QStringList suffixes;
        for (const auto &match : kind.globalMatch(installed.text(u"share/mime/packages/orrinet.xml"_s))) {
            suffixes << match.captured(2);
            QVERIFY(installed.files().contains(
                u"share/icons/hicolor/scalable/mimetypes/%1.svg"_s.arg(match.captured(1).replace(u'/', u'-'))));
        }
        QCOMPARE(suffixes, (QStringList{u"*.ormt"_s, u"*.ornk"_s}));
    }

    void version_is_that_of_its_file()
    {
        QVERIFY(!version().isEmpty());
        const Component program(u"orrinet"_s);
        QVERIFY(program.text(u"share/metainfo/org.example.orrinet.metainfo.xml"_s)
                    .contains(u"<release version=\"%1\""_s.arg(version())));
        const Component tools(u"orrinet-tools"_s);
        QStringList pages{program.text(u"share/man/man1/orrinet.1"_s)};
        for (const QString &file : tools.files(u"share/man"_s))
            pages << tools.text(file);
        for (const QString &page : std::as_const(pages))
            QVERIFY2(page.section(u'\n', 0, 0).contains(u"\"Orrinet %1\""_s.arg(version())), qPrintable(page));
    }
};

ORRINET_TEST(TestInstallation)
#include "tst_installation.moc"
