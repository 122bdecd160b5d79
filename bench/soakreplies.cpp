#include "bench/soakreplies.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

using namespace Qt::StringLiterals;
using standin::Reply;
using End = Reply::End;

namespace {

const QString single = u"single_choice"_s;
const QString numericType = u"numeric"_s;
const QString textType = u"text"_s;

QString compact(const QJsonObject &object)
{
    return QString::fromUtf8(QJsonDocument(object).toJson(QJsonDocument::Compact));
}

/// Bodies that came whole and hold no answer, each lacking something else.
const QByteArrayList &unusableBodies()
{
    static const QByteArrayList bodies{
        "",
        "null",
        "{}",
        "[]",
        "no JSON",
        "<html>\n<body>ok</body>\n</html>\n",
        R"({"error": {"message": "spoken"}})",
        R"({"choices": null})",
        R"({"choices": "spoken"})",
        R"({"choices": []})",
        R"({"choices": ["spoken"]})",
        R"({"choices": [{}]})",
        R"({"choices": [{}, {"message": {"content": "spoken"}}]})",
        R"({"choices": [{"message": null}]})",
        R"({"choices": [{"message": {}}]})",
        R"({"choices": [{"message": {"content": null}}]})",
        R"({"choices": [{"message": {"content": 7}}]})",
        R"({"choices": [{"message": {"content": ["spoken"]}}]})",
        R"({"choices": [{"message": {"content": ""}}]})",
        R"({"choices": [{"message": {"tool_calls": []}}]})",
        R"({"choices": [{"message": {"tool_calls": [{"function": {}}]}}]})",
        R"({"choices": [{"message": {"tool_calls": [{"function": {"arguments": ""}}]}}]})",
        R"({"choices": [{"message": {"content": "spoken"})",
        R"({"choices": [{"message": {"content": "spoken"}}]} more)",
        "{\"choices\": [{\"message\": {\"content\": \"\xff\"}}]}"};
    return bodies;
}

} // namespace

SoakReplies::SoakReplies(quint32 seed, int faultOneIn)
    : random(seed)
    , share(faultOneIn)
{
}

SoakReply SoakReplies::next(const SoakQuestion &question, bool again)
{
    if (!again) {
        lasting.reset();
        repeated = false;
    }
    SoakReply chosen;
    if (lasting) {
        chosen = *lasting;
    } else {
        chosen = oneIn(share) ? fault(question) : whole(question);
        chosen.reply = delivered(chosen.reply);
    }
    const int code = chosen.reply.code;
    repeated |= chosen.reply.end == End::DroppedBeforeHead || chosen.reply.end == End::Raw || code < 200 ||
                code == 307 || code == 308;
    return chosen;
}

QString SoakReplies::words(int least, int most)
{
    static const QStringList all{u"rather"_s,     u"the"_s,     u"garden"_s,    u"I"_s,      u"\"never\""_s,
                                 u"price,"_s,     u"because"_s, u"a"_s,         u"quiet"_s,  u"caf\u00e9"_s,
                                 u"walk"_s,       u"\u2713"_s,  u"{morning}"_s, u"seldom"_s, u"tea;"_s,
                                 u"\U0001F41D"_s, u"it's"_s,    u"\\prefer"_s};
    const int length = random.bounded(least, most + 1);
    QString text = all.at(random.bounded(all.size()));
    while (text.size() < length)
        text += (oneIn(12) ? u'\n' : u' ') + all.at(random.bounded(all.size()));
    return text;
}

/// What the model says, in the shapes that come: nothing is certain to be as it was asked for.
QString SoakReplies::replyText(const SoakQuestion &question, SoakAnswer &answer)
{
    answer.text = oneIn(6) ? proseText(question, answer) : objectText(question, answer);
    if (question.type == textType)
        answer = {.body = {}, .text = answer.text, .textAnswer = answer.text, .json = {}, .reasoning = {}};
    return answer.text;
}

QString SoakReplies::objectText(const SoakQuestion &question, SoakAnswer &answer)
{
    QJsonObject object;
    const QJsonValue said = value(question.type == numericType, answer);
    if (!said.isUndefined())
        object.insert("answer"_L1, said);
    if (question.reasoning ? !oneIn(10) : oneIn(10)) {
        answer.reasoning = words(80, 120);
        object.insert("reasoning"_L1, answer.reasoning);
    }
    answer.json = compact(object);
    return QString::fromUtf8(QJsonDocument(object).toJson(oneIn(4) ? QJsonDocument::Indented : QJsonDocument::Compact));
}

QJsonValue SoakReplies::value(bool numeric, SoakAnswer &answer)
{
    const int number = random.bounded(100'000);
    switch (random.bounded(numeric ? 8 : 14)) {
    case 0:
        return {};
    case 1:
        return QJsonValue::Undefined;
    case 2:
        return QJsonArray{words(5, 20), words(5, 20)};
    case 3:
        return QJsonObject{{u"first"_s, words(5, 20)}};
    case 4:
        answer.textAnswer = u"true"_s;
        return true;
    case 5:
    case 6:
        if (numeric)
            answer.number = double(number);
        else
            answer.textAnswer = QString::number(number);
        return number;
    case 7:
        if (numeric) {
            answer.number = number + 0.5;
            return QString(QString::number(number) + ".50"_L1);
        }
        break;
    default:
        break;
    }
    answer.textAnswer = words(5, 80);
    return answer.textAnswer;
}

QString SoakReplies::proseText(const SoakQuestion &question, SoakAnswer &answer)
{
    if (question.type == numericType && oneIn(2)) {
        const int number = random.bounded(1000);
        answer.number = double(number);
        return QString::number(number);
    }
    QString text = words(5, 200);
    (question.type == numericType || question.type == textType ? answer.textAnswer : answer.json) = text;
    return text;
}

SoakReply SoakReplies::whole(const SoakQuestion &question)
{
    SoakAnswer answer;
    const QString text = replyText(question, answer);
    // Either form is read, whichever was asked for.
    const bool called = (question.type == single) != oneIn(20);
    Reply reply = called ? Reply::toolCall(text) : Reply::content(text);
    // Whatever is neither an error nor leads elsewhere counts as a reply.
    static constexpr int codes[] = {201, 202, 203, 205, 206, 226, 299, 300, 306, 310, 399};
    if (oneIn(20))
        reply.code = codes[random.bounded(int(std::size(codes)))];
    answer.body = reply.body;
    return {.name = u"answered"_s, .reply = reply, .answer = answer};
}

SoakReply SoakReplies::unusable()
{
    SoakAnswer answer;
    // These have no body, whatever length they tell.
    if (oneIn(10))
        return {.name = u"no body"_s, .reply = Reply::status(oneIn(2) ? 204 : 304, "{}"), .answer = answer};
    answer.body = unusableBodies().at(random.bounded(unusableBodies().size()));
    return {.name = u"no answer"_s, .reply = Reply::json(answer.body), .answer = answer};
}

/// What fails would be an answer if it did not.
SoakReply SoakReplies::fault(const SoakQuestion &question)
{
    const Reply good = whole(question).reply;
    const auto failing = [this](const char *name, const Reply &reply) {
        ++counts[name];
        return SoakReply{.name = QString::fromLatin1(name), .reply = reply, .answer = {}};
    };
    const auto lastingly = [&](const char *name, const Reply &reply) {
        lasting = failing(name, reply);
        return *lasting;
    };
    // Behind a POST that Qt has sent again on its own, what makes it repeat or go elsewhere once more has no certain
    // end: it may follow a redirection and repeat the POST beside it, or give up and have sent the POST again all the
    // same, or take its body for read before it has sent it for the third time.
    const int kind = random.bounded(repeated ? 8 : 14);
    switch (kind) {
    case 0:
    case 1:
        return failing("status 4xx", Reply::status(random.bounded(400, 500), good.body));
    case 2:
        return failing("status 5xx or above", Reply::status(random.bounded(500, 1000), good.body));
    case 3:
        return failing("dropped after the head", good.ending(End::DroppedAfterHead));
    case 4:
        return failing("truncated", good.ending(End::Truncated));
    case 5:
        return failing("interim status and no other", Reply::status(oneIn(2) ? 100 : 103, good.body));
    case 6:
        return failing("redirected to nowhere", Reply::status(redirection(false).code, good.body));
    case 7:
        ++counts["whole, without an answer in it"];
        return unusable();
    case 8:
        return failing("redirected on the host", redirection(false));
    case 9:
        return failing("redirected elsewhere", redirection(true));
    case 10:
        return failing("dropped before the head", good.ending(End::DroppedBeforeHead));
    case 11:
        return failing("no HTTP", Reply::garbage(garbage()));
    case 12:
        return lastingly("no HTTP, every time", Reply::garbage(garbage()));
    default:
        break;
    }
    if (oneIn(4))
        return lastingly("redirected for ever", redirection(false));
    return lastingly("dropped before the head, every time", good.ending(End::DroppedBeforeHead));
}

/// The first three make a GET of the POST.
Reply SoakReplies::redirection(bool elsewhere)
{
    static constexpr int codes[] = {301, 302, 303, 307, 308};
    static const QByteArrayList strangers{
        "https://elsewhere.example/v1/chat/completions", "https://www.api.openai.com/v1/chat/completions",
        "https://api.openai.com:8443/v1/chat/completions", "http://api.openai.com/v1/chat/completions"};
    const QByteArray target = elsewhere ? strangers.at(random.bounded(strangers.size())) : "/v1/moved"_ba;
    const int code = codes[random.bounded(int(std::size(codes)))];
    return Reply::status(code, "{}").with("Location"_ba, target);
}

/// Of at least as many bytes as "HTTP/" has: fewer are not judged by Qt but kept, and may then stand before the reply
/// to the repeated POST.
QByteArray SoakReplies::garbage()
{
    switch (random.bounded(5)) {
    case 0:
        return "hello\r\n\r\n";
    case 1:
        return "HTTP/1.1 fine\r\n\r\n";
    case 2:
        return "<html><body>ok</body></html>";
    default:
        break;
    }
    QByteArray bytes;
    for (int count = random.bounded(5, oneIn(2) ? 12 : 300); count > 0; --count)
        bytes += char(random.bounded(256));
    return bytes;
}

/// In pieces, late, or with the connection left open.
Reply SoakReplies::delivered(const Reply &reply)
{
    if (oneIn(8))
        return reply.dripping(random.bounded(100, 600), 0);
    if (oneIn(16))
        return reply.delayed(random.bounded(1, 4));
    // An interim status that nothing follows would be waited behind for ever.
    const bool ends = reply.code >= 200;
    return ends && oneIn(8) ? reply.keptAlive() : reply;
}
