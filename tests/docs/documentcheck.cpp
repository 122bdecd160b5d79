#include "tests/docs/documentcheck.h"

#include "tests/support/program.h"
#include "tests/support/sidedatabase.h"

#include <QDirIterator>
#include <QImageReader>
#include <QRegularExpression>

#include <algorithm>
#include <iterator>

using namespace Qt::StringLiterals;

namespace {

const QString top = QStringLiteral(ORRINET_SOURCE_FOLDER "/");
const QStringList hiddenFolders{u".ci"_s, u".github"_s};

/// Where the programs are; those that are not built are missing.
const QMap<QString, QString> &programs()
{
    static const QMap<QString, QString> all{
#ifdef ORRINET_BRIDGE
        {u"orrinet-bridge"_s, QStringLiteral(ORRINET_BRIDGE)},
#endif
#ifdef ORRINET_STUDY
        {u"orrinet-study"_s, QStringLiteral(ORRINET_STUDY)},
#endif
    };
    return all;
}

QString treeText(const QString &file)
{
    return QFileInfo(top + file).isFile() ? QString::fromUtf8(readBytes(top + file)) : QString();
}

bool isPlaceholder(const QString &word)
{
    static const QRegularExpression capitals(u"^[A-Z]+$"_s);
    return word.isEmpty() || word.startsWith(u'<') || word.startsWith(u'[') || capitals.match(word).hasMatch();
}

QStringList wordsOf(const QString &code)
{
    return code.split(u' ', Qt::SkipEmptyParts);
}

/// An option without its value and without what stands around it, empty for another word.
QString optionIn(const QString &word)
{
    static const QRegularExpression option(u"^\\[?(--[a-z][a-z_-]*)"_s);
    return option.match(word).captured(1);
}

/// What documents tell of the options of others: of CMake's installation, of the library of the benchmarks.
bool isOfOthers(const QString &option)
{
    return option == "--component"_L1 || option.startsWith("--benchmark_"_L1);
}

/// Whether a text has an option as a whole word.
bool tells(const QString &text, const QString &option)
{
    return text.contains(QRegularExpression(u"(?<![\\w-])%1(?![\\w-])"_s.arg(QRegularExpression::escape(option))));
}

} // namespace

DocumentCheck::DocumentCheck()
{
    for (const auto roots = folders() + hiddenFolders; const QString &root : roots) {
        paths << root;
        QDirIterator walk(top + root, QDir::AllEntries | QDir::NoDotAndDotDot, QDirIterator::Subdirectories);
        while (walk.hasNext()) {
            const QFileInfo entry = walk.nextFileInfo();
            paths << entry.filePath().sliced(top.size());
            fileNames << entry.fileName();
        }
    }
    for (const auto files = QDir(top).entryList(QDir::Files | QDir::Hidden); const QString &file : files) {
        paths << file;
        fileNames << file;
    }
}

QStringList DocumentCheck::folders()
{
    QStringList all = QDir(top).entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    all.removeIf(
        [](const QString &name) { return name == "build"_L1 || QFile::exists(top + name + "/CMakeCache.txt"_L1); });
    return all;
}

QStringList DocumentCheck::documents()
{
    QStringList all{u"README.md"_s, u"CONTRIBUTING.md"_s, u"SECURITY.md"_s, u"CHANGELOG.md"_s};
    for (const QString &folder : {u"docs/"_s, u".github/"_s, u".github/ISSUE_TEMPLATE/"_s}) {
        for (const auto files = QDir(top + folder).entryList({u"*.md"_s}, QDir::Files); const QString &file : files)
            all << folder + file;
    }
    return all;
}

QStringList DocumentCheck::brokenLinks(const Markdown &document)
{
    static const QRegularExpression elsewhere(u"^[a-z]+:"_s);
    QStringList faults;
    for (const QString &target : document.targets) {
        if (elsewhere.match(target).hasMatch())
            continue;
        const QString file = target.section(u'#', 0, 0);
        const QString anchor = target.section(u'#', 1);
        const QString path = QFileInfo(document.path).path() + u'/' + file;
        if (!QFileInfo::exists(path))
            faults << u"%1 is not there"_s.arg(target);
        else if (!anchor.isEmpty() && !(file.isEmpty() ? document : Markdown::read(path)).anchors.contains(anchor))
            faults << u"%1 names no heading"_s.arg(target);
    }
    return faults;
}

QStringList DocumentCheck::unreadablePictures(const Markdown &document)
{
    QStringList faults;
    for (const QString &picture : document.pictures) {
        const QString path = QFileInfo(document.path).path() + u'/' + picture;
        const bool isDrawing = picture.endsWith(".svg"_L1);
        if (isDrawing ? !readBytes(path).contains("<svg") : !QImageReader(path).canRead())
            faults << u"%1 is no picture"_s.arg(picture);
    }
    return faults;
}

bool DocumentCheck::isInTree(const QString &path) const
{
    static const QRegularExpression anyName(u"<[^>]*>|(?<![^/])[A-Z]+(?![^/])"_s);
    QString pattern = path;
    pattern.replace(anyName, u"*"_s);
    if (!pattern.contains(u'*'))
        return paths.contains(path) || (!path.contains(u'/') && fileNames.contains(path));
    const QRegularExpression wanted(QRegularExpression::wildcardToRegularExpression(pattern));
    const QSet<QString> &candidates = path.contains(u'/') ? paths : fileNames;
    return std::ranges::any_of(candidates, [&wanted](const QString &each) { return wanted.match(each).hasMatch(); });
}

QStringList DocumentCheck::missingPaths(const Markdown &document) const
{
    static const QRegularExpression between(u"[\\s\"'`()\\[\\]{}=,;|]+|<br>|[.:](?=\\s|$)"_s);
    static const QRegularExpression source(u"^[\\w.*<>-]+\\.(cpp|h|py|sh|cmake|md|qrc|sql|rc|yml|yaml|supp|dict)$"_s);
    const QStringList own = folders() + hiddenFolders;
    const auto isPath = [&own](const QString &word) {
        return word.contains(u'/') && own.contains(word.section(u'/', 0, 0));
    };
    const QStringList inSpans = document.spans.join(u'\n').split(between, Qt::SkipEmptyParts);
    const QStringList inLines = document.lines.join(u'\n').split(between, Qt::SkipEmptyParts);
    QStringList named;
    for (const QString &word : inSpans) {
        if (isPath(word) || (source.match(word).hasMatch() && !inLines.contains(word)))
            named << word;
    }
    std::ranges::copy_if(inLines, std::back_inserter(named), isPath);
    QStringList faults;
    for (QString &word : named) {
        if (word.endsWith(u'/'))
            word.chop(1);
        if (!isInTree(word))
            faults << u"%1 is not in the tree"_s.arg(word);
    }
    return faults;
}

QStringList DocumentCheck::unknownCommands(const Markdown &document)
{
    static const QRegularExpression command(u"\\./dev +(\\S+)"_s);
    QStringList faults;
    for (const auto all = document.code(); const QString &code : all) {
        for (const QRegularExpressionMatch &match : command.globalMatch(code)) {
            const QString word = match.captured(1);
            const bool isOne = !word.contains(u'.') && QFile::exists(top + "tools/"_L1 + word);
            if (!isOne && !isPlaceholder(word) && word != "help"_L1)
                faults << u"./dev knows no %1"_s.arg(word);
        }
    }
    return faults;
}

QString DocumentCheck::helpOf(const QString &program, const QString &command)
{
    const QString call = program + u' ' + command;
    if (!helps.contains(call)) {
        const QStringList arguments = wordsOf(command) << u"--help"_s;
        helps.insert(call, ProgramRun(programs().value(program), arguments).output);
    }
    return helps.value(call);
}

/// Whether a program tells of an option where it is asked for its help. ./dev hands arguments on to programs that have
/// their options in their main().
bool DocumentCheck::hasOption(const QString &option, const QString &program, const QString &command)
{
    if (program == "./dev"_L1)
        return tells(treeText(u"dev"_s) + treeText("tools/"_L1 + command) + treeText(command + "/main.cpp"_L1),
                     option) ||
               (command == "bench"_L1 && isOfOthers(option));
    return !programs().contains(program) || tells(helpOf(program, command), option);
}

/// Without its program an option may be any one's, and behind a placeholder that of any command.
bool DocumentCheck::isKnown(const QString &option, const QString &program, const QString &command)
{
    if (program.isEmpty() && isOfOthers(option))
        return true;
    const bool anyCommand = program.isEmpty() || (!command.isEmpty() && isPlaceholder(command));
    const QStringList ofStudy{QString(), u"check"_s, u"export"_s, u"report"_s};
    const QMap<QString, QStringList> commands{
        {u"orrinet-bridge"_s, {QString()}},
        {u"orrinet-study"_s, anyCommand ? ofStudy : QStringList{command}},
        {u"./dev"_s, anyCommand ? QDir(top + "tools"_L1).entryList(QDir::Files) : QStringList{command}}};
    for (const auto names = commands.keys(); const QString &name : names) {
        if (!program.isEmpty() && program != name)
            continue;
        for (const auto own = commands.value(name); const QString &each : own) {
            if (hasOption(option, name, each))
                return true;
        }
    }
    return false;
}

QStringList DocumentCheck::unknownOptions(const Markdown &document)
{
    QStringList faults;
    for (const auto all = document.code(); const QString &code : all) {
        const QStringList words = wordsOf(code);
        // Of the programs of others nothing is known here.
        bool ours = !optionIn(words.value(0)).isEmpty();
        QString program;
        QString command;
        for (qsizetype place = 0; place < words.size(); ++place) {
            const QString &word = words.at(place);
            const QString name = word == "./dev"_L1 ? word : word.section(u'/', -1);
            if (name == "./dev"_L1 || name == "orrinet-bridge"_L1 || name == "orrinet-study"_L1) {
                ours = true;
                program = name;
                command = name == "orrinet-bridge"_L1 ? QString() : words.value(place + 1);
                if (!optionIn(command).isEmpty())
                    command.clear();
            } else if (const QString option = optionIn(word); !option.isEmpty()) {
                if (ours && !isKnown(option, program, command))
                    faults << (program.isEmpty()
                                   ? u"no program here has %1"_s.arg(option)
                                   : u"%1 has no %2"_s.arg(QString(program + u' ' + command).trimmed(), option));
            } else if (word == "|"_L1 || word == "&&"_L1 || (command == "shell"_L1 && word != command)) {
                ours = false;
            }
        }
    }
    return faults;
}
