#include "fuzz/filestage.h"

#include "fuzz/bytes.h"
#include "fuzz/hostilestatements.h"
#include "fuzz/promises.h"
#include "fuzz/sqlitewatch.h"
#include "fuzz/trail.h"

#include <QComboBox>
#include <QCoreApplication>
#include <QDir>
#include <QEvent>
#include <QFile>
#include <QSignalBlocker>
#include <QSqlError>
#include <QSqlQuery>
#include <QSqlRecord>

#include <bit>
#include <memory>

using namespace Qt::StringLiterals;

static constexpr qint64 stepsAllowed = 60'000;

// Of the earlier project, what an import can add to.
static constexpr auto insertPersonas =
    "INSERT INTO personas VALUES ('one','Number One','likes tea','I am one','n','2001-02-03','2001-02-03'),"
    "('two','Number Two','likes milk',NULL,NULL,'2001-02-03','2001-02-03')"_L1;
static constexpr auto insertTags = "INSERT INTO tags VALUES (1,'urban'),(2,'rural')"_L1;
static constexpr auto insertLinks = "INSERT INTO persona_tags VALUES ('one',1),('two',2)"_L1;

static std::unique_ptr<FileStage> &stage()
{
    static std::unique_ptr<FileStage> only;
    return only;
}

FileStage &FileStage::get()
{
    if (!stage()) {
        // Questions would wait for an answer.
        qputenv("ORRINET_TEST_MODE", "1");
        SqliteWatch::allow(stepsAllowed);
        stage().reset(new FileStage);
    }
    return *stage();
}

void FileStage::close()
{
    stage().reset();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QSqlDatabase::removeDatabase(u"project"_s);
    qunsetenv("ORRINET_TEST_MODE");
}

FileStage::FileStage()
    : window(nullptr)
{
    earlierSchema = schema();
    fillEarlierProject();
}

static QByteArray bytesOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void FileStage::fillEarlierProject()
{
    for (const auto statement :
         {insertPersonas, insertTags, insertLinks, "INSERT INTO metadata VALUES ('a','b')"_L1,
          "INSERT INTO questions (order_num,prompt,answer_type,labels) VALUES (1,'Tea?','single_choice','[\"a\"]')"_L1,
          "INSERT INTO question_attachments (question_id,filename) VALUES (1,'tea.txt')"_L1,
          "INSERT INTO responses (persona_uuid,question_id,text_answer,numeric_answer,json_answer,created_at) VALUES "
          "('one',1,'a',NULL,'{\"answer\":\"a\",\"reasoning\":\"r\"}','2001-02-03 04:05:06')"_L1})
        QSqlQuery(project()).exec(statement);
    bool saved = false;
    QMetaObject::invokeMethod(&window, "saveProjectToFile", Qt::DirectConnection, qReturnArg(saved), earlierPath());
    earlierBytes = bytesOf(earlierPath());
    earlierContents = contents();
    checkEarlierProject();
    if (const QStringList broken = takeBrokenPromises(); !saved || !broken.isEmpty())
        qFatal("the stage is not set: %s", qUtf8Printable(broken.join(u'\n')));
}

// --- hostile files -------------------------------------------------------------------------------------------

const HostileFile &FileStage::write(FileKind kind, QByteArrayView input)
{
    Bytes bytes(input);
    hostile = writeHostileFile(hostilePath(), workshop.path(), kind, bytes);
    clearTagFilter();
    return hostile;
}

/// A filter of the project before it would still be at work.
void FileStage::clearTagFilter()
{
    auto *filter = window.findChild<QComboBox *>(u"tagFilter"_s);
    const QSignalBlocker blocker(filter);
    filter->clear();
}

/// What the program says goes the way of the trail: it is much, and nothing in it is wrong.
static void hear(QtMsgType /*type*/, const QMessageLogContext & /*context*/, const QString &message)
{
    leaveTrail(Trail::Warning, qHash(message.left(60)));
}

template<typename Call>
void FileStage::watched(const Call &call)
{
    const QtMessageHandler before = qInstallMessageHandler(hear);
    SqliteWatch::allow(stepsAllowed);
    SqliteWatch::begin(project());
    call();
    // As the event loop would have it: layouts, and what is due for deletion and may hold queries.
    QCoreApplication::sendPostedEvents();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    const QStringList offences = SqliteWatch::end();
    bounded = SqliteWatch::ranOut();
    qInstallMessageHandler(before);
    leaveTrail(Trail::Bound, static_cast<size_t>(std::bit_width(static_cast<quint64>(SqliteWatch::stepsTaken()))));
    SqliteWatch::allow(stepsAllowed);
    promise(offences.isEmpty(), "what a file holds runs nothing and changes nothing", offences.join(u'\n'));
}

void FileStage::callWithHostile(const char *slot)
{
    watched([this, slot] { QMetaObject::invokeMethod(&window, slot, Qt::DirectConnection, hostilePath()); });
}

bool FileStage::openHostile()
{
    bool opened = false;
    watched([this, &opened] {
        QMetaObject::invokeMethod(&window, "openProjectFromFile", Qt::DirectConnection, qReturnArg(opened),
                                  hostilePath());
    });
    return opened;
}

void FileStage::newProject()
{
    watched([this] { QMetaObject::invokeMethod(&window, "newProject", Qt::DirectConnection); });
}

void FileStage::chooseTag(int index)
{
    auto *filter = window.findChild<QComboBox *>(u"tagFilter"_s);
    watched([filter, index] { filter->setCurrentIndex(index % filter->count()); });
}

// --- what the project holds ----------------------------------------------------------------------------------

QVariant FileStage::value(const QString &statement) const
{
    QSqlQuery query(project());
    return query.exec(statement) && query.next() ? query.value(0) : QVariant();
}

static QString literal(const QVariant &value)
{
    const bool isBlob = value.typeId() == QMetaType::QByteArray;
    return value.isNull() ? u"NULL"_s
                          : QString::fromLatin1(value.typeName()) + u' ' +
                                (isBlob ? QString::fromLatin1(value.toByteArray().toHex()) : value.toString());
}

bool FileStage::isSound() const
{
    return value(u"PRAGMA integrity_check(1)"_s).toString() == "ok"_L1;
}

Contents FileStage::contents() const
{
    Contents all;
    for (const QString &table : hostileTables()) {
        QSqlQuery query(project());
        query.setForwardOnly(true);
        query.exec(u"SELECT * FROM "_s + table);
        QStringList &rows = all[table];
        const int columns = query.record().count();
        while (query.next()) {
            QStringList texts;
            for (int column = 0; column < columns; ++column)
                texts << literal(query.value(column));
            rows << texts.join(u'|');
        }
    }
    return all;
}

QString FileStage::schema() const
{
    return value(u"SELECT group_concat(type||name||tbl_name||rootpage||sql) FROM sqlite_master"_s).toString();
}

// --- what has to hold ----------------------------------------------------------------------------------------

void FileStage::checkLeftovers()
{
    promise(QSqlDatabase::connectionNames() == QStringList{u"project"_s}, "no connection is left");
    const QString databases = value(u"SELECT group_concat(name) FROM pragma_database_list"_s).toString();
    promise(databases == "main"_L1 || databases == "main,temp"_L1, "no file stays attached", databases);
    promise(schema() == earlierSchema, "the project keeps its tables", schema());
    promise(value(u"SELECT COUNT(*) FROM sqlite_temp_master"_s).toInt() == 0, "nothing is made beside them");
    QSqlQuery query(project());
    query.exec(u"VACUUM INTO NULL"_s);
    promise(query.lastError().databaseText() == "non-text filename"_L1, "no statement is left open",
            query.lastError().text());
    checkFolder();
}

void FileStage::checkFolder()
{
    const QStringList names = QDir(folder.path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
    for (const QString &name : names)
        promise(name == "earlier"_L1 || name.startsWith("hostile"_L1), "no file is made", name);
    promise(bytesOf(earlierPath()) == earlierBytes, "no other file is changed");
    // What a log holds is put into its file by whoever opens it last.
    // (Its read version says whether there is one.)
    const bool isLogged = hostile.content.size() > 19 && hostile.content.at(19) == '\2';
    promise(isLogged || bytesOf(hostilePath()) == hostile.content, "the file is not changed");
}

void FileStage::checkEarlierProject()
{
    clearTagFilter();
    bool opened = false;
    watched([this, &opened] {
        QMetaObject::invokeMethod(&window, "openProjectFromFile", Qt::DirectConnection, qReturnArg(opened),
                                  earlierPath());
    });
    promise(opened && contents() == earlierContents, "an earlier project opens as it was");
}

void FileStage::checkEarlierProjectNowAndThen(QByteArrayView input)
{
    if (qHash(input) % 8 == 0)
        checkEarlierProject();
}

void FileStage::restoreEarlierPersonas()
{
    for (const auto statement : {"DELETE FROM personas"_L1, "DELETE FROM tags"_L1, "DELETE FROM persona_tags"_L1,
                                 insertPersonas, insertTags, insertLinks})
        QSqlQuery(project()).exec(statement);
}
