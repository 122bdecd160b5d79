#include <QCoreApplication>
#include <QDirIterator>
#include <QFile>
#include <QResource>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTest>

using namespace Qt::StringLiterals;

/// What main() found before it did anything.
static bool registeredBeforeMain = false;

static QByteArray contents(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

static QString sourcePath(const QString &name)
{
    return QStringLiteral(ORRINET_SOURCE_FOLDER "/") + name;
}

/// The columns of a CREATE TABLE statement, each as its name and declaration with single blanks.
static QStringList declarations(const QString &statement)
{
    const qsizetype begin = statement.indexOf(u'(') + 1;
    QStringList all;
    for (const auto lines = statement.mid(begin, statement.lastIndexOf(u')') - begin).split(u",\r\n"_s);
         const QString &line : lines)
        all.append(line.simplified());
    return all;
}

class TestResources : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void tree_stands_before_main() { QVERIFY(registeredBeforeMain); }

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
        const QStringList expected = {u":/VERSION.txt"_s, u":/icons/resources/icons/svg/ormt-icon.svg"_s,
                                      u":/icons/resources/icons/svg/ornk-icon.svg"_s,
                                      u":/icons/resources/icons/svg/orrinet.svg"_s, u":/project/sql/schema.sql"_s};
        QCOMPARE(found, expected);
    }

    void file_is_its_source_byte_by_byte_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<QString>("source");
        QTest::addRow("version") << u":/VERSION.txt"_s << u"VERSION.txt"_s;
        QTest::addRow("schema") << u":/project/sql/schema.sql"_s << u"sql/schema.sql"_s;
        for (const auto icon : {"orrinet.svg"_L1, "ornk-icon.svg"_L1, "ormt-icon.svg"_L1}) {
            QTest::newRow(icon.data()) << (":/icons/resources/icons/svg/"_L1 + icon).operator QString()
                                       << ("resources/icons/svg/"_L1 + icon).operator QString();
        }
    }

    void file_is_its_source_byte_by_byte()
    {
        QFETCH(QString, path);
        QFETCH(QString, source);
        const QByteArray original = contents(sourcePath(source));
        QVERIFY(!original.isEmpty());
        QCOMPARE(contents(path), original);

        const QResource resource(path);
        QCOMPARE(resource.compressionAlgorithm(), QResource::NoCompression);
        QCOMPARE(resource.size(), original.size());
        QCOMPARE(QByteArray(reinterpret_cast<const char *>(resource.data()), resource.size()), original);
    }

    void file_is_the_same_in_every_language_data() { file_is_its_source_byte_by_byte_data(); }
    void file_is_the_same_in_every_language()
    {
        QFETCH(QString, path);
        for (const QLocale &locale : {QLocale::c(), QLocale(QLocale::German, QLocale::Austria)}) {
            const QResource resource(path, locale);
            QVERIFY(resource.isValid());
            QCOMPARE(resource.data(), QResource(path).data());
        }
    }

    void tree_has_format_version_3()
    {
        QByteArray generated;
        QDirIterator walk(QStringLiteral(ORRINET_AUTOGEN_FOLDER), {u"qrc_orrinet.cpp"_s}, QDir::Files,
                          QDirIterator::Subdirectories);
        while (walk.hasNext())
            generated += contents(walk.next());
        QVERIFY(!generated.isEmpty());
        QCOMPARE(generated.count("int version = 3;"), 2); // its registering and its unregistering
        QVERIFY(!generated.contains("int version = 2;"));
    }

    void version_is_eight_bytes_with_a_CR_LF() { QCOMPARE(contents(u":/VERSION.txt"_s), "0.1.71\r\n"_ba); }

    void schema_has_CR_LF_line_ends_alone()
    {
        QByteArray rest = contents(u":/project/sql/schema.sql"_s);
        QCOMPARE_GT(rest.count("\r\n"), 60);
        rest.replace("\r\n", "");
        QVERIFY(!rest.contains('\r'));
        QVERIFY(!rest.contains('\n'));
    }

    void schema_is_eight_statements_each_ended_by_a_semicolon()
    {
        const QString script = QString::fromUtf8(contents(u":/project/sql/schema.sql"_s));
        QStringList pieces = script.split(u';');
        QVERIFY(pieces.takeLast().trimmed().isEmpty());
        QStringList tables;
        for (const QString &piece : std::as_const(pieces)) {
            const QString statement = piece.trimmed();
            QVERIFY2(statement.startsWith("CREATE TABLE "_L1) && statement.endsWith(u')'), qPrintable(statement));
            tables.append(statement.section(u' ', 2, 2));
        }
        const QStringList expected = {u"metadata"_s,  u"boilerplate"_s,          u"personas"_s,
                                      u"questions"_s, u"question_attachments"_s, u"responses"_s,
                                      u"tags"_s,      u"persona_tags"_s};
        QCOMPARE(tables, expected);
    }

    void table_has_its_columns_data();
    void table_has_its_columns();
};

void TestResources::table_has_its_columns_data()
{
    QTest::addColumn<QStringList>("columns");
    QTest::addRow("metadata") << QStringList{u"key TEXT PRIMARY KEY"_s, u"value TEXT"_s};
    QTest::addRow("boilerplate") << QStringList{u"preamble TEXT"_s, u"postamble TEXT"_s};
    QTest::addRow("personas") << QStringList{u"uuid TEXT PRIMARY KEY"_s, u"name TEXT"_s,  u"attributes TEXT"_s,
                                             u"system_prompt TEXT"_s,    u"notes TEXT"_s, u"created_at DATETIME"_s,
                                             u"modified_at DATETIME"_s};
    QTest::addRow("questions") << QStringList{u"question_id INTEGER PRIMARY KEY AUTOINCREMENT"_s,
                                              u"order_num INTEGER"_s,
                                              u"prompt TEXT"_s,
                                              u"answer_type TEXT"_s,
                                              u"labels TEXT"_s,
                                              u"description TEXT"_s,
                                              u"reasoning_required INTEGER DEFAULT 0"_s,
                                              u"judge_question INTEGER DEFAULT 0"_s,
                                              u"model TEXT"_s,
                                              u"temperature REAL"_s,
                                              u"search_enabled INTEGER DEFAULT 1"_s,
                                              u"ask_when TEXT DEFAULT 'always'"_s,
                                              u"depends_on_question_id INTEGER REFERENCES questions(question_id)"_s,
                                              u"depends_on_answer TEXT"_s,
                                              u"serial INTEGER"_s,
                                              u"created_at DATETIME"_s,
                                              u"modified_at DATETIME"_s};
    QTest::addRow("question_attachments")
        << QStringList{u"id INTEGER PRIMARY KEY AUTOINCREMENT"_s,
                       u"question_id INTEGER REFERENCES questions(question_id)"_s, u"filename TEXT"_s};
    QTest::addRow("responses") << QStringList{u"id INTEGER PRIMARY KEY AUTOINCREMENT"_s,
                                              u"persona_uuid TEXT REFERENCES personas(uuid)"_s,
                                              u"question_id INTEGER REFERENCES questions(question_id)"_s,
                                              u"text_answer TEXT"_s,
                                              u"numeric_answer REAL"_s,
                                              u"json_answer TEXT"_s,
                                              u"question_serial INTEGER"_s,
                                              u"model TEXT"_s,
                                              u"temperature REAL"_s,
                                              u"created_at DATETIME"_s,
                                              u"token_usage INTEGER"_s};
    QTest::addRow("tags") << QStringList{u"id INTEGER PRIMARY KEY"_s, u"name TEXT UNIQUE"_s};
    QTest::addRow("persona_tags") << QStringList{u"persona_uuid TEXT REFERENCES personas(uuid)"_s,
                                                 u"tag_id INTEGER REFERENCES tags(id)"_s,
                                                 u"PRIMARY KEY (persona_uuid, tag_id)"_s};
}

/// As SQLite understood the script, statement by statement.
void TestResources::table_has_its_columns()
{
    QFETCH(QStringList, columns);
    const QString table = QString::fromLatin1(QTest::currentDataTag());
    {
        QSqlDatabase database = QSqlDatabase::addDatabase(u"QSQLITE"_s, u"schema"_s);
        database.setDatabaseName(u":memory:"_s);
        QVERIFY(database.open());
        const QString script = QString::fromUtf8(contents(u":/project/sql/schema.sql"_s));
        for (const auto all = script.split(u';', Qt::SkipEmptyParts); const QString &statement : all) {
            if (!statement.trimmed().isEmpty())
                QVERIFY2(QSqlQuery(database).exec(statement), qPrintable(statement));
        }
        QSqlQuery query(database);
        query.prepare(u"SELECT sql FROM sqlite_master WHERE type = 'table' AND name = ?"_s);
        query.addBindValue(table);
        QVERIFY(query.exec() && query.next());
        QCOMPARE(declarations(query.value(0).toString()), columns);

        QStringList names;
        QVERIFY(query.exec("PRAGMA table_info("_L1 + table + u')'));
        while (query.next())
            names.append(query.value(u"name"_s).toString() + u' ' + query.value(u"type"_s).toString());
        for (qsizetype index = 0; index < names.size(); ++index)
            QVERIFY2(columns.at(index).startsWith(names.at(index)), qPrintable(names.at(index)));
    }
    QSqlDatabase::removeDatabase(u"schema"_s);
}

int main(int argc, char *argv[])
{
    registeredBeforeMain = QFile::exists(u":/VERSION.txt"_s) && QFile::exists(u":/project/sql/schema.sql"_s) &&
                           QFile::exists(u":/icons/resources/icons/svg/orrinet.svg"_s);
    QCoreApplication application(argc, argv);
    TestResources test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_resources.moc"
