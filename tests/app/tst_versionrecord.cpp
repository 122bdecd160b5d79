#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>
#include <QXmlStreamReader>

using namespace Qt::StringLiterals;

static QString contents(const QString &name)
{
    QFile file(QStringLiteral(ORRINET_SOURCE_FOLDER "/app/windows/") + name);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

static QHash<QString, QString> fields(const QString &record)
{
    static const QRegularExpression line(u"VALUE \"(\\w+)\", \"([^\"]*)\""_s);
    QHash<QString, QString> found;
    for (const QRegularExpressionMatch &match : line.globalMatch(record))
        found.insert(match.captured(1), match.captured(2));
    return found;
}

class TestVersionRecord : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void record_has_its_fields_data();
    void record_has_its_fields() { checkFields(contents(u"orrinet.rc"_s)); }
    void compiled_record_has_its_fields_data() { record_has_its_fields_data(); }
    void compiled_record_has_its_fields();
    void compiled_record_holds_version_and_manifest_and_no_icon();
    void manifest_asks_for_the_callers_rights_and_the_common_controls();

private:
    static void checkFields(const QString &record);
    static QString compiled();
};

void TestVersionRecord::record_has_its_fields_data()
{
    QTest::addColumn<QString>("value");
    QTest::addRow("FileVersion") << u"0.1.71.0"_s;
    QTest::addRow("ProductVersion") << u"0.1.71.0"_s;
    QTest::addRow("OriginalFilename") << u"orrinet.exe"_s;
    QTest::addRow("ProductName") << u"orrinet"_s;
    for (const char *blank : {"CompanyName", "FileDescription", "InternalName", "LegalCopyright"})
        QTest::addRow("%s", blank) << QString();
}

void TestVersionRecord::checkFields(const QString &record)
{
    QFETCH(QString, value);
    const auto found = fields(record);
    QCOMPARE(found.size(), 8);
    QCOMPARE(found.value(QString::fromLatin1(QTest::currentDataTag()), u"missing"_s), value);
}

/// The record as the resource compiler understood it, written out again by it; null where there is no such compiler.
QString TestVersionRecord::compiled()
{
    const QString compiler = QStringLiteral(ORRINET_WINDRES);
    if (compiler.isEmpty())
        return {};
    const QTemporaryDir folder;
    const QString object = folder.filePath(u"orrinet.o"_s);
    QProcess process;
    process.setWorkingDirectory(QStringLiteral(ORRINET_SOURCE_FOLDER "/app/windows"));
    process.start(compiler, {u"--preprocessor"_s, QStringLiteral(ORRINET_COMPILER), u"--preprocessor-arg=-E"_s,
                             u"--preprocessor-arg=-xc"_s, u"--preprocessor-arg=-DRC_INVOKED"_s, u"-I"_s,
                             QStringLiteral(ORRINET_SOURCE_FOLDER "/tests/app/windows"), u"-O"_s, u"coff"_s,
                             u"orrinet.rc"_s, object});
    if (!process.waitForFinished() || process.exitCode() != 0)
        qFatal("%s", process.readAllStandardError().constData());
    process.start(compiler, {u"-J"_s, u"coff"_s, u"-O"_s, u"rc"_s, object});
    if (!process.waitForFinished() || process.exitCode() != 0)
        qFatal("%s", process.readAllStandardError().constData());
    return QString::fromUtf8(process.readAllStandardOutput());
}

void TestVersionRecord::compiled_record_has_its_fields()
{
    const QString record = compiled();
    if (record.isNull())
        QSKIP("no x86_64-w64-mingw32-windres");
    checkFields(record);
}

void TestVersionRecord::compiled_record_holds_version_and_manifest_and_no_icon()
{
    const QString record = compiled();
    if (record.isNull())
        QSKIP("no x86_64-w64-mingw32-windres");
    QVERIFY2(record.contains(QRegularExpression(u"FILEVERSION 0, 1, 71(, 0)?\\n"_s)), qPrintable(record));
    QVERIFY(record.contains(QRegularExpression(u"PRODUCTVERSION 0, 1, 71(, 0)?\\n"_s)));
    QVERIFY(record.contains(QRegularExpression(u"^1 (24|RT_MANIFEST)\\b"_s, QRegularExpression::MultilineOption)));
    QVERIFY(!record.contains("ICON"_L1));
}

void TestVersionRecord::manifest_asks_for_the_callers_rights_and_the_common_controls()
{
    QXmlStreamReader reader(contents(u"orrinet.exe.manifest"_s));
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
    const QStringList expected = {u"asInvoker"_s, u"Microsoft.Windows.Common-Controls 6.0.0.0"_s};
    QCOMPARE(asked, expected);
}

QTEST_APPLESS_MAIN(TestVersionRecord)
#include "tst_versionrecord.moc"
