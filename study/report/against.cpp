#include "study/report/against.h"

#include "study/match.h"
#include "study/report/csv.h"
#include "study/report/wording.h"
#include "study/statistics/distribution.h"

#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <cmath>

using namespace Qt::StringLiterals;

namespace study {

namespace {

/// The question that is meant: by its wording, else by its number; -1 for none.
int meantQuestion(const Project &project, const QString &text)
{
    for (int place = 0; place < project.questions.size(); ++place) {
        if (caselessText(project.questions.at(place).entry.prompt) == caselessText(text))
            return place;
    }
    bool isNumber = false;
    const int number = text.trimmed().toInt(&isNumber);
    return isNumber && number >= 1 && number <= project.questions.size() ? number - 1 : -1;
}

/// The counterpart to a question, which is made where there is none yet.
Counterpart &counterpartOf(Against &against, const Question &question, int place)
{
    const auto at = std::find_if(against.counterparts.begin(), against.counterparts.end(),
                                 [place](const Counterpart &each) { return each.question == place; });
    if (at != against.counterparts.end())
        return *at;
    Counterpart counterpart;
    counterpart.question = place;
    counterpart.counts.fill(0, question.hasList() ? question.labels.size() : 0);
    against.counterparts << counterpart;
    return against.counterparts.last();
}

void takeWeight(Counterpart &counterpart, const Question &question, const QString &text, double weight)
{
    bool isNumber = false;
    const double number = question.kind == Kind::Numeric ? text.trimmed().toDouble(&isNumber) : 0;
    const int label = question.hasList() ? matchOne(text, question.labels) : -1;
    if (isNumber && std::isfinite(number))
        counterpart.numbers << Weighted{number, weight};
    else if (label >= 0)
        counterpart.counts[label] += weight;
    else
        counterpart.unmatched << std::pair(text, weight);
}

/// Where the columns stand.
struct Columns
{
    qsizetype question = -1;
    qsizetype answer = -1;
    qsizetype weight = -1;

    bool areThere() const { return question >= 0 && answer >= 0 && weight >= 0; }
    qsizetype last() const { return std::max({question, answer, weight}); }
};

Columns columnsOf(const QStringList &header)
{
    Columns columns;
    for (qsizetype place = 0; place < header.size(); ++place) {
        const QString name = caselessText(header.at(place));
        if (name == "question"_L1)
            columns.question = place;
        else if (name == "label"_L1 || name == "value"_L1)
            columns.answer = place;
        else if (name == "share"_L1 || name == "count"_L1)
            columns.weight = place;
    }
    return columns;
}

std::variant<Against, QString> readTable(const QString &path, const Survey &survey)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return u"%1 can't be read: %2"_s.arg(path, file.errorString());
    const QList<QStringList> rows = readCsv(QString::fromUtf8(file.readAll()));
    const Columns columns = columnsOf(rows.value(0));
    if (!columns.areThere())
        return u"%1 has no header with question, label or value, and share or count"_s.arg(path);
    Against against{.name = QFileInfo(path).fileName(), .isPeople = true, .counterparts = {}, .strangers = {}};
    for (qsizetype row = 1; row < rows.size(); ++row) {
        const QStringList &fields = rows.at(row);
        bool isNumber = false;
        const double weight = fields.value(columns.weight).trimmed().toDouble(&isNumber);
        if (fields.size() <= columns.last() || !isNumber || !std::isfinite(weight) || weight < 0)
            return u"%1 has no share or count in row %2"_s.arg(path, QString::number(row + 1));
        const int place = meantQuestion(survey.project, fields.at(columns.question));
        if (place < 0) {
            if (!against.strangers.contains(fields.at(columns.question)))
                against.strangers << fields.at(columns.question);
            continue;
        }
        const Question &question = survey.project.questions.at(place);
        takeWeight(counterpartOf(against, question, place), question, fields.at(columns.answer), weight);
    }
    return against;
}

/// By persona of this survey the other side's whole answer, null where either has none. A persona is the same by its
/// uuid.
std::optional<Agreement> agreementOf(const Survey &survey, const Answers &own, const Project &project,
                                     const Answers &other)
{
    QStringList texts;
    QStringList others;
    QHash<QString, QString> byUuid;
    for (qsizetype place = 0; place < other.personas.size(); ++place)
        byUuid.insert(project.personas.at(other.personas.at(place)).entry.uuid, caselessText(other.given.at(place)));
    for (qsizetype place = 0; place < own.personas.size(); ++place) {
        const auto found = byUuid.constFind(survey.project.personas.at(own.personas.at(place)).entry.uuid);
        if (found == byUuid.constEnd())
            continue;
        texts << caselessText(own.given.at(place));
        others << *found;
    }
    const CodedTexts coded = codesOf(texts + others);
    return agreement(coded.codes.first(texts.size()), coded.codes.sliced(texts.size()));
}

void takeAnswers(Counterpart &counterpart, const Question &question, const Answers &other)
{
    for (const double number : other.numbers)
        counterpart.numbers << Weighted{number, 1};
    if (question.kind == Kind::Numeric || question.kind == Kind::Text)
        return;
    const QList<double> counts = ownCounts(other);
    for (qsizetype kind = 0; kind < counts.size(); ++kind) {
        if (counts.at(kind) > 0)
            takeWeight(counterpart, question, other.kinds.at(kind), counts.at(kind));
    }
}

std::variant<Against, QString> readOther(const QString &path, const Survey &survey)
{
    const auto read = readProject(path);
    if (const QString *reason = std::get_if<QString>(&read))
        return *reason;
    const Survey other(std::get<Project>(read));
    Against against{.name = QFileInfo(path).fileName(), .isPeople = false, .counterparts = {}, .strangers = {}};
    for (const Answers &answers : other.answers) {
        int place = -1;
        for (int own = 0; own < survey.project.questions.size() && place < 0; ++own) {
            const Question &question = survey.project.questions.at(own);
            if (question.kind == answers.question->kind &&
                caselessText(question.entry.prompt) == caselessText(answers.question->entry.prompt))
                place = own;
        }
        if (place < 0) {
            against.strangers << answers.question->entry.prompt;
            continue;
        }
        const Question &question = survey.project.questions.at(place);
        Counterpart &counterpart = counterpartOf(against, question, place);
        takeAnswers(counterpart, question, answers);
        counterpart.agreement = agreementOf(survey, survey.answers.at(place), other.project, answers);
    }
    return against;
}

} // namespace

QList<double> ownCounts(const Answers &answers)
{
    if (answers.question->kind != Kind::Ranking || !answers.question->hasList())
        return answers.counts;
    QList<double> firsts(answers.kinds.size(), 0);
    for (const QList<int> &order : answers.lists) {
        if (!order.isEmpty())
            firsts[order.first()] += 1;
    }
    return firsts;
}

std::variant<Against, QString> readAgainst(const QString &path, const Survey &survey)
{
    const bool isTable = path.endsWith(".csv"_L1, Qt::CaseInsensitive);
    auto read = isTable ? readTable(path, survey) : readOther(path, survey);
    if (auto *against = std::get_if<Against>(&read))
        std::sort(against->counterparts.begin(), against->counterparts.end(),
                  [](const Counterpart &a, const Counterpart &b) { return a.question < b.question; });
    return read;
}

} // namespace study
