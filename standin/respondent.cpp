#include "standin/respondent.h"

#include <QCryptographicHash>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QStringList>
#include <QtEndian>

#include <random>

using namespace Qt::StringLiterals;

namespace standin {

namespace {

/// Chance that depends on nothing but its two texts, on every machine and in every run.
class Dice
{
public:
    Dice(const QString &persona, const QString &question)
    {
        QCryptographicHash hash(QCryptographicHash::Sha256);
        hash.addData(persona.toUtf8());
        hash.addData(QByteArrayView("\0", 1));
        hash.addData(question.toUtf8());
        generator.seed(qFromLittleEndian<quint64>(hash.result().constData()));
    }

    qsizetype below(qsizetype count) { return qsizetype(generator() % quint64(count)); }

    template<typename List>
    auto from(const List &list)
    {
        return list.at(below(list.size()));
    }

private:
    std::mt19937_64 generator;
};

QStringList textsOf(const QJsonArray &messages, const QString &role)
{
    QStringList texts;
    for (const auto &message : messages) {
        if (message["role"_L1].toString() == role)
            texts << message["content"_L1].toString();
    }
    return texts;
}

QStringList choicesIn(const QString &question)
{
    const QString afterColon = question.sliced(question.lastIndexOf(u':') + 1);
    QStringList choices;
    const QStringList parts = afterColon.section(u'.', 0, 0).split(u';', Qt::SkipEmptyParts);
    for (const QString &part : parts)
        choices << part.trimmed();
    return choices.size() > 1 && question.contains(u':') ? choices : QStringList();
}

QStringList shuffled(QStringList choices, Dice &dice)
{
    for (qsizetype i = choices.size() - 1; i > 0; --i)
        choices.swapItemsAt(i, dice.below(i + 1));
    return choices;
}

QStringList someOf(const QStringList &choices, Dice &dice)
{
    const qsizetype sure = dice.below(choices.size());
    QStringList some;
    for (qsizetype i = 0; i < choices.size(); ++i) {
        if (i == sure || dice.below(2) == 0)
            some << choices.at(i);
    }
    return some;
}

QString answerTo(const QString &question, Dice &dice)
{
    const QStringList choices = choicesIn(question);
    if (choices.isEmpty())
        return QString::number(dice.below(10));
    if (question.startsWith("Rank"_L1))
        return shuffled(choices, dice).join(", "_L1);
    if (question.contains("On a scale"_L1))
        return dice.from(choices);
    return someOf(choices, dice).join(", "_L1);
}

QString sentence(Dice &dice)
{
    static const QStringList openings{
        u"Most days"_s, u"When I have the time"_s, u"As far as I can tell"_s, u"In an ordinary week"_s,
        u"At home"_s,   u"Since last year"_s};
    static const QStringList middles{u"habit decides for me"_s,        u"I look at the price first"_s,
                                     u"I go by what others tell me"_s, u"I try something new"_s,
                                     u"I keep to what I know"_s,       u"I make up my mind late"_s};
    static const QStringList closings{u"and that suits me well"_s,    u"though I would not insist"_s,
                                      u"and I seldom regret it"_s,    u"but it depends on the weather"_s,
                                      u"which surprises my family"_s, u"and I expect it to stay so"_s};
    const QString opening = dice.from(openings);
    const QString middle = dice.from(middles);
    return opening % u' ' % middle % u' ' % dice.from(closings) % u'.';
}

QString compact(const QJsonObject &object)
{
    return QString::fromUtf8(QJsonDocument(object).toJson(QJsonDocument::Compact));
}

QString reasoning(Dice &dice)
{
    return u"Made-up reasoning: "_s % sentence(dice);
}

/// Where no schema says which keys there are to be, the last system message does.
bool wantsReasoning(const QJsonValue &format, const QStringList &systemTexts)
{
    const QJsonValue named = format["json_schema"_L1];
    const QJsonValue schema = (named.isObject() ? named : format)["schema"_L1];
    if (schema.isObject())
        return schema["properties"_L1].toObject().contains("reasoning"_L1);
    return systemTexts.size() > 1 && systemTexts.constLast().contains("reasoning"_L1);
}

} // namespace

Reply respond(const Request &request)
{
    const QJsonObject body = request.json();
    const QJsonArray messages = body["messages"_L1].toArray();
    const QStringList questions = textsOf(messages, u"user"_s);
    const QString question = questions.isEmpty() ? QString() : questions.constLast();
    // A system message at the end asks for a form; the persona stands in the first one.
    const QStringList systemTexts = textsOf(messages, u"system"_s);
    Dice dice(systemTexts.value(0), question);

    const QJsonValue labels =
        body["tools"_L1][0]["function"_L1]["parameters"_L1]["properties"_L1]["answer"_L1]["enum"_L1];
    if (const QJsonArray options = labels.toArray(); !options.isEmpty()) {
        const QJsonValue answer = dice.from(options);
        return Reply::toolCall(compact({{u"answer"_s, answer}, {u"reasoning"_s, reasoning(dice)}}));
    }
    const QJsonValue format = body["response_format"_L1];
    if (format.isObject()) {
        QJsonObject reply{{u"answer"_s, answerTo(question, dice)}};
        if (wantsReasoning(format, systemTexts))
            reply.insert("reasoning"_L1, reasoning(dice));
        return Reply::content(compact(reply));
    }
    return Reply::content(u"Made-up answer: "_s % sentence(dice));
}

} // namespace standin
