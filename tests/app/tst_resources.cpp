#include "tests/support/sidedatabase.h"
#include "tests/support/testcase.h"

#include <QDirIterator>
#include <QResource>
#include <QTest>

using namespace Qt::StringLiterals;

static const auto schemaPath = u":/project/sql/schema.sql"_s;

/// The columns of a CREATE TABLE statement, each as its name and declaration with single blanks.
static QString declaredColumns(const QString &statement)
{
    const qsizetype begin = statement.indexOf(u'(') + 1;
    QString columns = statement.mid(begin, statement.lastIndexOf(u')') - begin);
    return columns.replace(u",\r\n"_s, u"; "_s).simplified();
}

class TestResources : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void tree_stands_before_main() { QVERIFY(resourcesStoodBeforeMain()); }

    void tree_holds_five_files_and_no_others()
    {
        QStringList found;
        QDirIterator walk(u":/"_s, QDir::Files | QDir::Hidden | QDir::System, QDirIterator::Subdirectories);
        while (walk.hasNext()) {
            const QString path = walk.next();
            if (!path.startsWith(":/qt-project.org/"_L1) && !path.startsWith(":/qpdf/"_L1))
                found.append(path);
        }
        found.sort();
        QCOMPARE(found, (QStringList{u":/VERSION.txt"_s, u":/icons/resources/icons/svg/ormt-icon.svg"_s,
                                     u":/icons/resources/icons/svg/ornk-icon.svg"_s,
                                     u":/icons/resources/icons/svg/orrinet.svg"_s, schemaPath}));
    }

    void file_is_its_source_byte_by_byte_in_every_language_data()
    {
        QTest::addColumn<QString>("source");
        QTest::addRow(":/VERSION.txt") << u"VERSION.txt"_s;
        QTest::addRow(":/project/sql/schema.sql") << u"sql/schema.sql"_s;
        QTest::addRow(":/icons/resources/icons/svg/orrinet.svg") << u"resources/icons/svg/orrinet.svg"_s;
        QTest::addRow(":/icons/resources/icons/svg/ornk-icon.svg") << u"resources/icons/svg/ornk-icon.svg"_s;
        QTest::addRow(":/icons/resources/icons/svg/ormt-icon.svg") << u"resources/icons/svg/ormt-icon.svg"_s;
    }

    void file_is_its_source_byte_by_byte_in_every_language()
    {
        QFETCH(QString, source);
        const QString path = QString::fromLatin1(QTest::currentDataTag());
        const QByteArray original = readBytes(QStringLiteral(ORRINET_SOURCE_FOLDER "/") + source);
        QVERIFY(!original.isEmpty());
        QCOMPARE(readBytes(path), original);
        for (const QLocale &locale : {QLocale(), QLocale::c(), QLocale(QLocale::German, QLocale::Austria)}) {
            const QResource resource(path, locale);
            QVERIFY(resource.isValid());
            QCOMPARE(resource.compressionAlgorithm(), QResource::NoCompression);
            QCOMPARE(QByteArray(reinterpret_cast<const char *>(resource.data()), resource.size()), original);
        }
    }

    void tree_has_format_version_3()
    {
        QByteArray generated;
        QDirIterator walk(QStringLiteral(ORRINET_AUTOGEN_FOLDER), {u"qrc_orrinet.cpp"_s}, QDir::Files,
                          QDirIterator::Subdirectories);
        while (walk.hasNext())
            generated += readBytes(walk.next());
        QVERIFY(!generated.isEmpty());
        QCOMPARE(generated.count("int version = 3;"), 2); // its registering and its unregistering
        QVERIFY(!generated.contains("int version = 2;"));
    }

    void version_is_eight_bytes_with_a_CR_LF() { QCOMPARE(readBytes(u":/VERSION.txt"_s), "0.1.71\r\n"_ba); }

    void schema_has_CR_LF_line_ends_alone()
    {
        QByteArray rest = readBytes(schemaPath);
        QCOMPARE_GT(rest.count("\r\n"), 60);
        rest.replace("\r\n", "");
        QVERIFY(!rest.contains('\r'));
        QVERIFY(!rest.contains('\n'));
    }

    void schema_is_eight_statements_each_ended_by_a_semicolon()
    {
        QStringList pieces = QString::fromUtf8(readBytes(schemaPath)).split(u';');
        QVERIFY(pieces.takeLast().trimmed().isEmpty());
        QStringList tables;
        for (const QString &piece : std::as_const(pieces)) {
            const QString statement = piece.trimmed();
            QVERIFY2(statement.startsWith("CREATE TABLE "_L1) && statement.endsWith(u')'), qPrintable(statement));
            tables.append(statement.section(u' ', 2, 2));
        }
        QCOMPARE(tables, (QStringList{u"metadata"_s, u"boilerplate"_s, u"personas"_s, u"questions"_s,
                                      u"question_attachments"_s, u"responses"_s, u"tags"_s, u"persona_tags"_s}));
    }

    void table_has_its_columns_data()
    {
        QTest::addColumn<QString>("columns");
        QTest::addRow("metadata") << u"key TEXT PRIMARY KEY; value TEXT"_s;
        QTest::addRow("boilerplate") << u"preamble TEXT; postamble TEXT"_s;
        QTest::addRow("personas") << u"uuid TEXT PRIMARY KEY; name TEXT; attributes TEXT; system_prompt TEXT; "
                                     "notes TEXT; created_at DATETIME; modified_at DATETIME"_s;
        QTest::addRow("questions")
            << u"question_id INTEGER PRIMARY KEY AUTOINCREMENT; order_num INTEGER; prompt TEXT; answer_type TEXT; "
               "labels TEXT; description TEXT; reasoning_required INTEGER DEFAULT 0; judge_question INTEGER DEFAULT 0; "
               "model TEXT; temperature REAL; search_enabled INTEGER DEFAULT 1; ask_when TEXT DEFAULT 'always'; "
               "depends_on_question_id INTEGER REFERENCES questions(question_id); depends_on_answer TEXT; "
               "serial INTEGER; created_at DATETIME; modified_at DATETIME"_s;
        QTest::addRow("question_attachments")
            << u"id INTEGER PRIMARY KEY AUTOINCREMENT; question_id INTEGER REFERENCES questions(question_id); "
               "filename TEXT"_s;
        QTest::addRow("responses")
            << u"id INTEGER PRIMARY KEY AUTOINCREMENT; persona_uuid TEXT REFERENCES personas(uuid); "
               "question_id INTEGER REFERENCES questions(question_id); text_answer TEXT; numeric_answer REAL; "
               "json_answer TEXT; question_serial INTEGER; model TEXT; temperature REAL; created_at DATETIME; "
               "token_usage INTEGER"_s;
        QTest::addRow("tags") << u"id INTEGER PRIMARY KEY; name TEXT UNIQUE"_s;
        QTest::addRow("persona_tags") << u"persona_uuid TEXT REFERENCES personas(uuid); "
                                         "tag_id INTEGER REFERENCES tags(id); PRIMARY KEY (persona_uuid, tag_id)"_s;
    }

    /// As SQLite understood the script, statement by statement.
    void table_has_its_columns()
    {
        QFETCH(const QString, columns);
        const QString table = QString::fromLatin1(QTest::currentDataTag());
        SideDatabase database(u":memory:"_s);
        QVERIFY(database.exec(schemaStatements()));
        const QVariant sql = database.value(u"SELECT sql FROM sqlite_master WHERE type='table' AND name=?"_s, {table});
        QCOMPARE(declaredColumns(sql.toString()), columns);

        QStringList namesAndTypes;
        for (const auto all = columns.split(u"; "_s); const QString &column : all) {
            if (!column.startsWith("PRIMARY KEY"_L1))
                namesAndTypes.append(column.section(u' ', 0, 1));
        }
        QCOMPARE(database.column(u"SELECT name || ' ' || type FROM pragma_table_info(?)"_s, {table}), namesAndTypes);
    }
};

ORRINET_TEST(TestResources)
#include "tst_resources.moc"
