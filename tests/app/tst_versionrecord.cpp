#include "tests/support/sidedatabase.h"
#include "tests/support/testcase.h"

#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>
#include <QXmlStreamReader>

using namespace Qt::StringLiterals;

/// Runs the resource compiler of the Windows build and gives what it prints. The test fails where it does not succeed.
static QByteArray printedByCompiler(const QStringList &arguments)
{
    QProcess compiler;
    compiler.setWorkingDirectory(QStringLiteral(ORRINET_SOURCE_FOLDER "/app/windows"));
    compiler.start(QStringLiteral(ORRINET_WINDRES), arguments);
    if (!compiler.waitForFinished(-1) || compiler.exitCode() != 0) {
        const QByteArray reason = compiler.readAllStandardError();
        QTest::qFail(reason.isEmpty() ? qPrintable(compiler.errorString()) : reason.constData(), __FILE__, __LINE__);
    }
    return compiler.readAllStandardOutput();
}

class TestVersionRecord : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    /// The record as the compiler understood it, written out again by it.
    void initTestCase()
    {
        const QTemporaryDir folder;
        const QString object = folder.filePath(u"orrinet.o"_s);
        printedByCompiler({u"--preprocessor"_s, QStringLiteral(ORRINET_COMPILER), u"--preprocessor-arg=-E"_s,
                           u"--preprocessor-arg=-xc"_s, u"--preprocessor-arg=-DRC_INVOKED"_s, u"-I"_s,
                           QStringLiteral(ORRINET_SOURCE_FOLDER "/tests/app/windows"), u"-O"_s, u"coff"_s,
                           u"orrinet.rc"_s, object});
        record = QString::fromUtf8(printedByCompiler({u"-J"_s, u"coff"_s, u"-O"_s, u"rc"_s, object}));
    }

    void record_has_its_fields()
    {
        static const QRegularExpression line(u"VALUE \"(\\w+)\", \"([^\"]*)\""_s);
        QStringList found;
        for (const QRegularExpressionMatch &match : line.globalMatch(record))
            found.append(match.captured(1) + u'=' + match.captured(2));
        found.sort();
        QCOMPARE(found, (QStringList{u"CompanyName="_s, u"FileDescription="_s, u"FileVersion=0.1.71.0"_s,
                                     u"InternalName="_s, u"LegalCopyright="_s, u"OriginalFilename=orrinet.exe"_s,
                                     u"ProductName=orrinet"_s, u"ProductVersion=0.1.71.0"_s}));
    }

    void record_holds_version_and_manifest_and_no_icon()
    {
        QVERIFY2(record.contains(QRegularExpression(u"FILEVERSION 0, 1, 71(, 0)?\\n"_s)), qPrintable(record));
        QVERIFY(record.contains(QRegularExpression(u"PRODUCTVERSION 0, 1, 71(, 0)?\\n"_s)));
        QVERIFY(record.contains(QRegularExpression(u"^1 (24|RT_MANIFEST)\\b"_s, QRegularExpression::MultilineOption)));
        QVERIFY(!record.contains("ICON"_L1));
    }

    void manifest_asks_for_the_callers_rights_and_the_common_controls()
    {
        QXmlStreamReader reader(readBytes(QStringLiteral(ORRINET_SOURCE_FOLDER "/app/windows/orrinet.exe.manifest")));
        QStringList asked;
        while (!reader.atEnd()) {
            if (reader.readNext() != QXmlStreamReader::StartElement)
                continue;
            const QXmlStreamAttributes values = reader.attributes();
            if (reader.name() == "requestedExecutionLevel"_L1)
                asked.append(values.value("level"_L1).toString());
            if (reader.name() == "assemblyIdentity"_L1)
                asked.append(values.value("name"_L1).toString() + u' ' + values.value("version"_L1).toString());
        }
        QCOMPARE(reader.errorString(), QString());
        QCOMPARE(asked, (QStringList{u"asInvoker"_s, u"Microsoft.Windows.Common-Controls 6.0.0.0"_s}));
    }

private:
    QString record;
};

ORRINET_TEST(TestVersionRecord)
#include "tst_versionrecord.moc"
