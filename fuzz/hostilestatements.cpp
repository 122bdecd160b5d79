#include "fuzz/hostilestatements.h"

#include "fuzz/bytes.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

struct Table
{
    char letter;
    QString name;
    QStringList columns;
};

} // namespace

static const QList<Table> &tables()
{
    static const QList<Table> all{
        {'m', u"metadata"_s, u"key value"_s.split(u' ')},
        {'b', u"boilerplate"_s, u"preamble postamble"_s.split(u' ')},
        {'p', u"personas"_s, u"uuid name attributes system_prompt notes created_at modified_at"_s.split(u' ')},
        {'q', u"questions"_s,
         u"question_id order_num prompt answer_type labels description reasoning_required judge_question model "
         "temperature search_enabled ask_when depends_on_question_id depends_on_answer serial created_at modified_at"_s
             .split(u' ')},
        {'a', u"question_attachments"_s, u"id question_id filename"_s.split(u' ')},
        {'r', u"responses"_s,
         u"id persona_uuid question_id text_answer numeric_answer json_answer question_serial model temperature "
         "created_at token_usage"_s.split(u' ')},
        {'t', u"tags"_s, u"id name"_s.split(u' ')},
        {'l', u"persona_tags"_s, u"persona_uuid tag_id"_s.split(u' ')},
        {'s', u"sqlite_sequence"_s, u"name seq"_s.split(u' ')}};
    return all;
}

const QStringList &hostileTables()
{
    static const QStringList names = [] {
        QStringList all;
        for (const Table &table : tables())
            all << table.name;
        return all;
    }();
    return names;
}

static const Table &nextTable(Bytes &bytes)
{
    const char letter = bytes.letter("mbpqartls");
    return *std::ranges::find(tables(), letter, &Table::letter);
}

static QString hexLiteral(QByteArrayView piece)
{
    return u"x'"_s + QString::fromLatin1(piece.toByteArray().toHex()) + u'\'';
}

/// A value as SQL has it.
static QString nextValue(Bytes &bytes)
{
    static const QHash<char, QString> known{{'n', u"NULL"_s},
                                            {'e', u"''"_s},
                                            {'0', u"0"_s},
                                            {'1', u"1"_s},
                                            {'2', u"2"_s},
                                            {'9', u"-1"_s},
                                            {'M', u"9223372036854775807"_s},
                                            {'m', u"-9223372036854775808"_s},
                                            {'F', u"4294967297"_s},
                                            {'f', u"1.5"_s},
                                            {'i', u"9e999"_s},
                                            {'h', u"1e-320"_s},
                                            {'d', u"'2001-02-03 04:05:06'"_s},
                                            {'u', u"'one'"_s},
                                            {'v', u"'two'"_s},
                                            {'U', u"CAST('one' AS BLOB)"_s},
                                            {'j', u"'{\"answer\":\"a\",\"reasoning\":\"r\"}'"_s},
                                            {'J', u"'{\"answer'"_s},
                                            {'l', u"'[\"a\",\"b\"]'"_s},
                                            {'s', u"'single_choice'"_s},
                                            {'c', u"'numeric'"_s},
                                            {'x', u"'''; DROP TABLE personas; --'"_s},
                                            {'z', u"char(97,0,98)"_s},
                                            {'w', u"char(55357,32,65279)"_s},
                                            {'B', u"zeroblob(20000)"_s},
                                            {'H', u"printf('%.*c',20000,'x')"_s},
                                            {'L', u"printf('%.*c',300,char(10))"_s}};
    const char letter = bytes.letter("ne0129MmFfihduvUjJlscxzwBHLtb");
    if (letter == 't')
        return u"CAST("_s + hexLiteral(bytes.piece()) + u" AS TEXT)"_s;
    return letter == 'b' ? hexLiteral(bytes.piece()) : known.value(letter);
}

static QString columnList(const Table &table)
{
    return table.columns.join(u',');
}

/// A statement for a table, from a pattern in which %1 is its name and %2 stands for more.
static QString filled(QString pattern, const Table &table, const QString &more = {})
{
    return pattern.replace("%1"_L1, table.name).replace("%2"_L1, more);
}

static QStringList dropping(const Table &table)
{
    return {u"DROP TABLE IF EXISTS "_s + table.name, u"DROP VIEW IF EXISTS "_s + table.name};
}

static QStringList replacing(const Table &table, const QString &made)
{
    return dropping(table) << made;
}

/// The columns of a table, each as the same expression.
static QString each(const Table &table, const QString &expression)
{
    return QStringList(table.columns.size(), expression).join(u',');
}

static QString withColumns(const Table &table, int count)
{
    QStringList names;
    for (int column = 0; column < count; ++column)
        names << table.columns.value(column, u"c%1"_s.arg(column));
    return u"CREATE TABLE %1 (%2)"_s.arg(table.name, names.isEmpty() ? u"x"_s : names.join(u','));
}

static QStringList view(const Table &table, char kind)
{
    const QString head = u"CREATE VIEW %1 (%2) AS "_s.arg(table.name, columnList(table));
    const QString counting = u"WITH RECURSIVE e(n) AS (SELECT 1 UNION ALL SELECT n+1 FROM e) "_s;
    switch (kind) {
    case 'e': // endless, and gives nothing
        return replacing(table, head + counting + u"SELECT "_s + each(table, u"n"_s) + u" FROM e WHERE n<0"_s);
    case 'r': // endless, and gives rows now and then
        return replacing(table, head + counting + u"SELECT "_s + each(table, u"n"_s) + u" FROM e WHERE n%400=0"_s);
    case 'f': // ends
        return replacing(table, head + counting + u"SELECT "_s + each(table, u"n"_s) + u" FROM e LIMIT 5"_s);
    case 'c': // itself
        return replacing(table, head + u"SELECT * FROM "_s + table.name);
    case 'C': // itself, by way of another
        return replacing(table, head + u"SELECT * FROM other"_s)
               << u"CREATE VIEW other AS SELECT * FROM "_s + table.name;
    case 'h': // large
        return replacing(table, head + u"SELECT "_s + each(table, u"printf('%.*c',50000,'x')"_s));
    case 'd': // deep
        return replacing(table, head + u"SELECT "_s + each(table, u"("_s.repeated(90) + u"1"_s + u")"_s.repeated(90)));
    case 'x': // what a statement must not do
        return replacing(table, head + u"SELECT "_s + each(table, u"load_extension('nothing')"_s));
    case 's': // of the schema
        return replacing(table, head + u"SELECT "_s + each(table, u"sql"_s) + u" FROM sqlite_master"_s);
    case 'p': // of a pragma
        return replacing(table,
                         head + u"SELECT "_s + each(table, u"name"_s) + u" FROM pragma_table_info('personas')"_s);
    case 'y': // other on each reading
        return replacing(table, head + u"SELECT "_s + each(table, u"hex(randomblob(4))"_s));
    default: // over the table itself, so that a change of it could go through a trigger
        return QStringList{u"ALTER TABLE %1 RENAME TO under_%1"_s.arg(table.name)}
               << u"CREATE VIEW %1 AS SELECT * FROM under_%1"_s.arg(table.name);
    }
}

static QStringList generated(const Table &table, char kind)
{
    static const QHash<char, QString> kinds{{'v', u"hex(x) VIRTUAL"_s},
                                            {'s', u"hex(x) STORED"_s},
                                            {'o', u"abs(x) VIRTUAL"_s},
                                            {'h', u"printf('%.*c',20000,x) VIRTUAL"_s},
                                            {'j', u"json_extract(x,'$') VIRTUAL"_s}};
    const QString expression = kinds.value(kind);
    const qsizetype space = expression.lastIndexOf(u' ');
    QStringList columns = table.columns;
    columns.removeLast();
    columns.prepend(u"x"_s);
    columns.removeDuplicates();
    return replacing(table, u"CREATE TABLE %1 (%2, g AS (%3) %4)"_s.arg(
                                table.name, columns.join(u','), expression.first(space), expression.sliced(space + 1)))
           << u"INSERT INTO %1 (x) VALUES (-9223372036854775808),('one')"_s.arg(table.name);
}

static QStringList renamed(const Table &table, char kind)
{
    static const QHash<char, QString> kinds{
        {'u', u"%1"_s}, {'s', u"%1 "_s}, {'q', u"%1\"\"'"_s}, {'n', u"\u00E9%1"_s}, {'e', u""_s}};
    const QString name = kind == 'u' ? table.name.toUpper() : filled(kinds.value(kind), table);
    return {u"ALTER TABLE %1 RENAME TO between"_s.arg(table.name), u"ALTER TABLE between RENAME TO \"%1\""_s.arg(name)};
}

static QStringList trigger(const Table &table, char kind)
{
    static const QHash<char, QString> kinds{
        {'i', u"AFTER INSERT ON %1 BEGIN DELETE FROM personas; END"_s},
        {'b', u"BEFORE INSERT ON %1 BEGIN SELECT RAISE(ABORT,'no'); END"_s},
        {'d', u"AFTER DELETE ON %1 BEGIN INSERT INTO tags (name) VALUES ('made'); END"_s},
        {'u', u"AFTER UPDATE ON %1 BEGIN UPDATE boilerplate SET preamble='made'; END"_s},
        {'v', u"INSTEAD OF INSERT ON %1 BEGIN DELETE FROM tags; END"_s},
        {'s', u"AFTER INSERT ON %1 BEGIN INSERT INTO %1 SELECT * FROM %1; END"_s}};
    return {u"CREATE TRIGGER %2_%1 "_s.arg(table.name, QChar::fromLatin1(kind)) + filled(kinds.value(kind), table)};
}

static QStringList row(const Table &table, Bytes &bytes)
{
    QStringList values;
    for (qsizetype column = 0; column < table.columns.size(); ++column)
        values << nextValue(bytes);
    return {u"INSERT INTO %1 VALUES (%2)"_s.arg(table.name, values.join(u','))};
}

static QStringList index(const Table &table, char kind)
{
    static const QHash<char, QString> kinds{{'u', u"CREATE UNIQUE INDEX i%1 ON %1 (%2)"_s},
                                            {'p', u"CREATE INDEX i%1 ON %1 (%2) WHERE %2 IS NULL"_s},
                                            {'e', u"CREATE INDEX i%1 ON %1 (hex(%2)||'x')"_s},
                                            {'d', u"CREATE INDEX i%1 ON %1 (%2 DESC)"_s}};
    return {filled(kinds.value(kind), table, table.columns.at(1))};
}

static QStringList virtualTable(const Table &table, char kind)
{
    static const QHash<char, QString> kinds{
        {'5', u"fts5(%2)"_s},   {'4', u"fts4(%2)"_s}, {'c', u"fts5(%2, content='boilerplate')"_s},
        {'r', u"rtree(%2)"_s},  {'d', u"dbstat"_s},   {'j', u"json_each"_s},
        {'n', u"nothing(%2)"_s}};
    return replacing(table, u"CREATE VIRTUAL TABLE %1 USING "_s.arg(table.name) +
                                filled(kinds.value(kind), table, columnList(table)));
}

static QStringList schemaChange(const Table &table, char kind)
{
    static const QHash<char, QString> kinds{{'t', u"type='table'"_s},
                                            {'v', u"type='view'"_s},
                                            {'s', u"sql='CREATE TABLE '||name||' (x'"_s},
                                            {'g', u"sql=hex(randomblob(20))"_s},
                                            {'n', u"sql=NULL"_s},
                                            {'r', u"rootpage=2"_s},
                                            {'R', u"rootpage=99999"_s},
                                            {'1', u"rootpage=1"_s},
                                            {'c', u"sql=replace(sql,' TEXT',' TEXT CHECK (1/0)')"_s},
                                            {'d', u"sql=replace(sql,' TEXT',' TEXT DEFAULT (random())')"_s},
                                            {'p', u"tbl_name='tags'"_s}};
    return {allowSchemaChanges, filled(u"UPDATE sqlite_master SET %2 WHERE name='%1'"_s, table, kinds.value(kind))};
}

static QString pragma(char kind)
{
    static const QHash<char, QString> kinds{{'u', u"user_version=-1"_s},           {'a', u"application_id=7"_s},
                                            {'s', u"schema_version=2147483647"_s}, {'v', u"auto_vacuum=1"_s},
                                            {'l', u"legacy_file_format=ON"_s},     {'c', u"default_cache_size=1"_s}};
    return u"PRAGMA "_s + kinds.value(kind);
}

QStringList nextStatements(Bytes &bytes)
{
    const char what = bytes.letter("TCVGWNXIDSQKMAR");
    if (what == 'R')
        return {pragma(bytes.letter("uasvlc"))};
    const Table &table = nextTable(bytes);
    switch (what) {
    case 'C':
        return replacing(table, withColumns(table, bytes.byte() % 24));
    case 'V':
        return view(table, bytes.letter("erfcChdxspyo"));
    case 'G':
        return generated(table, bytes.letter("vsohj"));
    case 'W':
        return replacing(table, u"CREATE TABLE %1 (%2, PRIMARY KEY (%3)) WITHOUT ROWID"_s.arg(
                                    table.name, columnList(table), table.columns.first()));
    case 'N':
        return renamed(table, bytes.letter("usqne"));
    case 'X':
        return trigger(table, bytes.letter("ibduvs"));
    case 'I':
        return row(table, bytes);
    case 'D':
        return dropping(table);
    case 'S':
        return {u"INSERT INTO sqlite_sequence VALUES ('%1',%2)"_s.arg(table.name, nextValue(bytes))};
    case 'Q':
        return index(table, bytes.letter("uped"));
    case 'K':
        return virtualTable(table, bytes.letter("54crdjn"));
    case 'M':
        return schemaChange(table, bytes.letter("tvsgnrR1cdp"));
    case 'A':
        return {u"ALTER TABLE %1 ADD COLUMN added DEFAULT 'more'"_s.arg(table.name)};
    default:
        return replacing(table, u"CREATE TABLE %1 (%2)"_s.arg(table.name, columnList(table)));
    }
}
