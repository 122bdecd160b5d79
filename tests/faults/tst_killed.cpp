// The program killed at any moment: what was saved before is there afterwards, and the next start works.

#include "tests/faults/killeduser.h"
#include "tests/support/entries.h"
#include "tests/support/messagelog.h"
#include "tests/support/seed.h"
#include "tests/support/sidedatabase.h"
#include "tests/support/stage.h"
#include "tests/support/testcase.h"

#include <QDir>
#include <QProcess>
#include <QRandomGenerator>
#include <QRegularExpression>
#include <QSettings>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>

using namespace Qt::StringLiterals;
using Operation = KilledUser::Operation;

namespace {

constexpr int personas = 24;
constexpr int answeredPersonas = 20;
constexpr int questions = 3;
constexpr int openPairs = (personas - answeredPersonas) * questions;

struct Played
{
    QStringList lines;
    bool wasKilled = false;
};

/// Lets the user play in a process of their own, and kills it at a line where it waits for that.
Played play(const KilledUser &user, qsizetype killAtLine)
{
    QProcess process;
    process.setProcessEnvironment([&user] {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(u"TMPDIR"_s, user.folder + "/temporary"_L1);
        const QStringList own = user.environment();
        for (const QString &variable : own)
            environment.insert(variable.section(u'=', 0, 0), variable.section(u'=', 1));
        return environment;
    }());
    process.setStandardErrorFile(QProcess::nullDevice());
    process.start(KilledUser::program(), {u"killeduser"_s});
    QByteArray output;
    while (process.waitForReadyRead(-1)) {
        output += process.readAllStandardOutput();
        if (user.waits && (output.count('\n') >= killAtLine || output.contains("ends")))
            process.kill();
    }
    process.waitForFinished(-1);
    output += process.readAllStandardOutput();
    return {.lines = QString::fromUtf8(output).split(u'\n', Qt::SkipEmptyParts),
            .wasKilled = process.exitStatus() == QProcess::CrashExit && process.exitCode() == SIGKILL};
}

QString uuidOf(int persona)
{
    return u"persona-%1"_s.arg(persona, 3, 10, QChar(u'0'));
}

void enterPanel(Sql &database, int from, int to)
{
    for (int index = from; index < to; ++index)
        enter(database, PersonaEntered{.uuid = uuidOf(index),
                                       .name = u"Persona %1"_s.arg(index, 3, 10, QChar(u'0')),
                                       .attributes = u"keeps bees "_s.repeated(100),
                                       .tags = {u"bees"_s, u"tag%1"_s.arg(index % 5)}});
}

} // namespace

class TestKilled : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(QDir(folder.path()).mkpath(u"home/.config/Orrinet"_s) && QDir(folder.path()).mkdir(u"temporary"_s));
        {
            QSettings settings(settingsPath(), QSettings::IniFormat);
            settings.setValue(u"openai/api_key"_s, earlierKey);
        }
        writeFiles();
        projectBytes = readBytes(path(u"earlier.ormt"_s));
        packBytes = readBytes(path(u"coast.ornk"_s));
        stage = std::make_unique<Stage>();
        QVERIFY(stage->result("openProjectFromFile", path(u"earlier.ormt"_s)));
        project = everyRow(stage->database());
        QCOMPARE(project, everyRow(SideDatabase(path(u"earlier.ormt"_s)).database()));
        opened = digest(*stage);
        exported = rowsAfterExport(stage->path(u"whole.ornk"_s));
        QVERIFY(QFile::copy(path(u"coast.ornk"_s), stage->path(u"both.ornk"_s)));
        exportedOver = rowsAfterExport(stage->path(u"both.ornk"_s));
    }

    void what_was_saved_survives_and_the_next_start_works()
    {
        const int rounds = qEnvironmentVariableIsSet("ORRINET_LONG") ? 40 : 2;
        QRandomGenerator random(testSeed());
        for (int round = 0; round < rounds; ++round) {
            for (int index = 0; index < KilledUser::operations; ++index) {
                // Early in the first round and late in the last.
                killOnce({.operation = Operation(index),
                          .folder = folder.path(),
                          .target = u"target"_s,
                          .moment = (round + random.generateDouble()) / rounds,
                          .hundredths = int(random.bounded(101)),
                          .waits = random.bounded(6) == 0},
                         random);
                if (QTest::currentTestFailed())
                    QFAIL(qPrintable(u"round %1, operation %2"_s.arg(round).arg(index)));
            }
        }
        // The start after the last kill.
        killOnce({.operation = Operation::Open, .folder = folder.path(), .target = u"target"_s, .waits = true}, random);
        for (auto state = left.cbegin(); state != left.cend(); ++state)
            qInfo("%d x %s", state.value(), qPrintable(state.key()));
    }

private:
    QString path(const QString &name) const { return folder.filePath(name); }
    QString settingsPath() const { return path(u"home/.config/Orrinet/Orrinet.conf"_s); }
    void note(const QString &state) { ++left[state]; }

    void writeFiles()
    {
        SideDatabase file(writeProject(path(u"earlier.ormt"_s)));
        file.exec(u"BEGIN"_s);
        enterPanel(file, 0, personas);
        enterQuestions(file, questions);
        setBoilerplate(file, u"Speak as this person."_s, u"Be brief."_s);
        for (int pair = 0; pair < answeredPersonas * questions; ++pair)
            enter(file, AnswerEntered{.persona = uuidOf(pair / questions),
                                      .question = (pair % questions) + 1,
                                      .text = u"Answer %1 "_s.arg(pair).repeated(20)});
        file.exec(u"COMMIT"_s);
        SideDatabase pack(writePack(path(u"coast.ornk"_s)));
        pack.exec(u"BEGIN"_s);
        enterPanel(pack, personas - 4, personas + 8);
        pack.exec(u"COMMIT"_s);
    }

    /// Lets a user play, kills them, and looks at what is there.
    void killOnce(const KilledUser &user, QRandomGenerator &random)
    {
        if (user.operation == Operation::ExportOver)
            QVERIFY(QFile::copy(path(u"coast.ornk"_s), path(user.target)));
        const QString key = storedKey();
        const bool runs = user.operation == Operation::Run || user.operation == Operation::RunAndSave;
        const Played played = play(user, random.bounded(2, runs ? 2 + openPairs : 4));
        QVERIFY(played.wasKilled);
        // What this start has found is what the kill before it left.
        QCOMPARE(played.lines.value(0), u"opened %1 %2"_s.arg(opened, key));
        QVERIFY2(played.lines.value(1) == "begins"_L1, qPrintable(played.lines.join(u'\n')));
        note(u"%1 %2"_s.arg(nameOf(user.operation),
                            played.lines.constLast().startsWith("ends"_L1) ? u"over"_s : u"under way"_s));
        checkEarlierFiles();
        checkFolders(user);
        checkSettings(key);
        checkTarget(user, played.lines);
        QFile::remove(path(user.target));
        QFile::remove(path(user.target + "-journal"_L1));
    }

    static QString nameOf(Operation operation)
    {
        static const QStringList names{
            u"save"_s, u"save over the file"_s, u"export"_s,     u"export over a pack"_s, u"import"_s, u"open"_s,
            u"run"_s,  u"run with a save"_s,    u"preferences"_s};
        return names.at(int(operation));
    }

    QString storedKey() const
    {
        return QSettings(settingsPath(), QSettings::IniFormat).value(u"openai/api_key"_s).toString();
    }

    /// Not a byte of them has changed.
    void checkEarlierFiles()
    {
        QCOMPARE(readBytes(path(u"earlier.ormt"_s)), projectBytes);
        QCOMPARE(readBytes(path(u"coast.ornk"_s)), packBytes);
        SideDatabase file(path(u"earlier.ormt"_s));
        QCOMPARE(file.column(u"PRAGMA integrity_check"_s), QStringList(u"ok"_s));
        QCOMPARE(everyRow(file.database()), project);
    }

    /// Nothing is left but what is named here.
    void checkFolders(const KilledUser &user)
    {
        static constexpr auto all = QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot;
        QStringList names = QDir(folder.path()).entryList(all);
        for (const QString &known : {u"coast.ornk"_s, u"earlier.ormt"_s, u"home"_s, u"temporary"_s, user.target,
                                     QString(user.target + u"-journal"_s)})
            names.removeAll(known);
        QCOMPARE(names, QStringList());

        QStringList settings = QDir(QFileInfo(settingsPath()).path()).entryList(all);
        QCOMPARE(settings.removeAll(u"Orrinet.conf"_s), 1);
        for (const QString &name : std::as_const(settings)) {
            // The file's next form, under a name at random until it takes the place of the former one; the next start
            // that stores settings takes a lock for void whose process is gone.
            static const QRegularExpression known(u"^Orrinet\\.conf\\.(lock|[A-Za-z]{6})$"_s);
            const auto match = known.match(name);
            QVERIFY2(match.hasMatch(), qPrintable(name));
            note(match.captured(1) == "lock"_L1 ? u"preferences: a lock file is left"_s
                                                : u"preferences: the next settings are left under another name"_s);
            if (match.captured(1) != "lock"_L1)
                QVERIFY(QFile::remove(QFileInfo(settingsPath()).dir().filePath(name)));
        }

        // The tests' own folders, which the program knows nothing of.
        QDir temporary(path(u"temporary"_s));
        const QStringList own = temporary.entryList(all);
        for (const QString &name : own) {
            QVERIFY2(name.startsWith(QFileInfo(KilledUser::program()).fileName()) || name.startsWith("qt_temp-"_L1),
                     qPrintable(name));
            QVERIFY(QDir(temporary.filePath(name)).removeRecursively());
        }
    }

    void checkSettings(const QString &before)
    {
        QVERIFY2(QStringList({before, otherKey(before)}).contains(storedKey()), qPrintable(storedKey()));
    }

    void checkTarget(const KilledUser &user, const QStringList &lines)
    {
        const QString kind = nameOf(user.operation) + ": "_L1;
        if (!QFile::exists(path(user.target))) {
            QVERIFY(!QFile::exists(path(user.target + "-journal"_L1)));
            QVERIFY(lines.filter(QRegularExpression(u"^saved "_s)).isEmpty());
            return;
        }
        const bool hasJournal = QFile::exists(path(user.target + "-journal"_L1));
        const QString how = hasJournal ? u"a journal is left"_s : u"no journal is left"_s;
        if (user.operation == Operation::Export)
            checkPack(kind + how, exported);
        else if (user.operation == Operation::ExportOver)
            checkPack(kind + how, exportedOver);
        else
            checkSave(kind + how, lines.filter(QRegularExpression(u"^saved "_s)).value(0));
    }

    /// All of the project or nothing at all. What the user was told to be saved is all there.
    void checkSave(const QString &kind, const QString &saved)
    {
        checkNextSave();
        checkWithoutJournal();
        const bool isEmpty = QFileInfo(path(u"target"_s)).size() == 0;
        SideDatabase file(path(u"target"_s));
        QCOMPARE(file.column(u"PRAGMA integrity_check"_s), QStringList(u"ok"_s));
        const QStringList rows = everyRow(file.database());
        note(kind + (rows.isEmpty() ? u", it opens empty"_s : u", it opens whole"_s) +
             (isEmpty ? u" (of no length)"_s : u""_s));
        if (!saved.isEmpty())
            QCOMPARE(QString(u"saved "_s + QString::number(file.count(u"responses"_s))), saved);
        if (!rows.isEmpty()) {
            file.exec(u"DELETE FROM responses WHERE id > ?"_s, {answeredPersonas * questions});
            file.exec(u"UPDATE sqlite_sequence SET seq = ? WHERE name = 'responses'"_s, {answeredPersonas * questions});
            QCOMPARE(everyRow(file.database()), project);
        }
    }

    /// A save to the same name goes through where nothing is there. Where a part is there, SQLite's versions differ in
    /// whether it is refused once and clears that away, or goes through at once. It is refused where all is there.
    void checkNextSave()
    {
        const bool isEmpty = QFileInfo(path(u"target"_s)).size() == 0;
        const bool isPart = !isEmpty && QFile::exists(path(u"target-journal"_s));
        const QString again = copyOfTarget();
        const MessageLog messages;
        const bool first = stage->result("saveProjectToFile", again);
        const bool second = stage->result("saveProjectToFile", again);
        QVERIFY(first || !isEmpty);
        QCOMPARE(first != second, isEmpty || isPart);
        QVERIFY(!(first && second));
        for (const QString &warning : messages.warnings())
            QVERIFY2(warning.startsWith("vacuum into failed "_L1), qPrintable(warning));
        QCOMPARE(messages.warnings().size(), first || second ? 1 : 2);
        SideDatabase file(again);
        if (isEmpty || isPart)
            QCOMPARE(everyRow(file.database()), project);
        QVERIFY(!file.rows(u"SELECT * FROM responses"_s).isEmpty());
    }

    /// What a part that was moved away from its journal is taken for: nothing is promised of that but that it is either
    /// told from a sound file or whole.
    void checkWithoutJournal()
    {
        const QString alone = stage->path(u"alone"_s);
        QFile::remove(alone);
        QVERIFY(QFile::copy(path(u"target"_s), alone));
        SideDatabase file(alone);
        QSqlQuery query(file.database());
        const bool isSound = query.exec(u"PRAGMA integrity_check"_s) && query.next() && query.value(0) == u"ok"_s;
        query.finish();
        if (!isSound) {
            const bool reads = query.exec(u"SELECT * FROM responses"_s);
            note(reads ? u"without its journal: damaged, and can be read in part"_s
                       : u"without its journal: damaged, and can't be read"_s);
        } else if (!file.database().tables().isEmpty()) {
            QVERIFY(file.count(u"responses"_s) >= answeredPersonas * questions);
            QCOMPARE(file.count(u"personas"_s), personas);
            note(u"without its journal: whole"_s);
        } else {
            note(u"without its journal: empty"_s);
        }
    }

    /// So many rows of each table as had come by then; a second export to the same file brings the others.
    void checkPack(const QString &kind, const QList<QStringList> &whole)
    {
        const QString again = copyOfTarget();
        QCOMPARE(rowsAfterExport(again), whole);
        SideDatabase pack(path(u"target"_s));
        QCOMPARE(pack.column(u"PRAGMA integrity_check"_s), QStringList(u"ok"_s));
        const QList<QStringList> rows = packRows(pack);
        for (qsizetype table = 0; table < rows.size(); ++table)
            QCOMPARE(rows.at(table), whole.at(table).first(rows.at(table).size()));
        note(kind + (rows == whole ? u", it is whole"_s : u", it holds a part"_s));
    }

    /// With its journal, to try something on.
    QString copyOfTarget()
    {
        static int copies = 0;
        const QString copy = stage->path(u"copy%1"_s.arg(++copies));
        QFile::copy(path(u"target"_s), copy);
        QFile::copy(path(u"target-journal"_s), copy + "-journal"_L1);
        return copy;
    }

    QList<QStringList> rowsAfterExport(const QString &pack)
    {
        stage->result("exportPackToFile", pack);
        SideDatabase file(pack);
        return packRows(file);
    }

    /// Of the tables that an export fills, in the order in which it does.
    static QList<QStringList> packRows(SideDatabase &pack)
    {
        QList<QStringList> rows;
        for (const QString &table : {u"personas"_s, u"tags"_s, u"persona_tags"_s}) {
            const bool isThere = pack.database().tables().contains(table);
            rows << (isThere ? literals(pack.database(), u"SELECT * FROM %1 ORDER BY rowid"_s.arg(table))
                             : QStringList());
        }
        return rows;
    }

    QTemporaryDir folder;
    std::unique_ptr<Stage> stage; ///< with the earlier project opened
    QByteArray projectBytes;
    QByteArray packBytes;
    QStringList project;
    QString opened;
    QList<QStringList> exported;
    QList<QStringList> exportedOver;
    QMap<QString, int> left; ///< how often what was met
};

ORRINET_TEST(TestKilled)
#include "tst_killed.moc"
