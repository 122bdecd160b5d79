// The way of a reply from the body that the network brings to the columns of an answer.

#include "fuzz/bytes.h"
#include "fuzz/promises.h"
#include "fuzz/targets.h"
#include "fuzz/trail.h"
#include "questions/answertypes.h"
#include "survey/answers.h"
#include "survey/chatrequester.h"
#include "survey/surveyrunner.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QJsonParseError>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QPointer>

#include <algorithm>
#include <memory>

using namespace Qt::StringLiterals;

namespace {

// A requester keeps its reply to itself. An explicit instantiation may name what is private.
QNetworkReply *ChatRequester::*replyField();
template<QNetworkReply *ChatRequester::*field>
struct FieldOpener
{
    friend QNetworkReply *ChatRequester::*replyField() { return field; }
};
template struct FieldOpener<&ChatRequester::reply>;

/// What a requester made of a body.
struct Received
{
    QString raw;
    QString text;
    int texts = 0;
};

} // namespace

/// Lets a requester deal with a reply that has this body. No server is asked: the body stands in the address, which
/// Qt's network takes for a reply like any other.
static Received receive(QByteArrayView body)
{
    static QPointer<QNetworkAccessManager> manager;
    static QPointer<ChatRequester> requester;
    static Received received;
    if (!manager)
        manager = new QNetworkAccessManager;
    if (!requester) {
        requester = new ChatRequester;
        QObject::connect(requester, &ChatRequester::rawResponse, requester,
                         [](const QString &raw) { received.raw = raw; });
        QObject::connect(requester, &ChatRequester::responseReceived, requester, [](const QString &text) {
            received.text = text;
            ++received.texts;
        });
    }
    received = {};
    QUrl url;
    url.setScheme(u"data"_s);
    url.setPath(u";base64,"_s + QString::fromLatin1(body.toByteArray().toBase64()));
    const std::unique_ptr<QNetworkReply> reply(manager->get(QNetworkRequest(url)));
    requester->*replyField() = reply.get();
    QMetaObject::invokeMethod(requester, "finished", Qt::DirectConnection);
    return received;
}

/// The text of a completion, step by step.
static QString textOf(const QJsonDocument &completion)
{
    const QJsonArray choices = completion.object().value("choices"_L1).toArray();
    if (choices.isEmpty())
        return {};
    const QJsonObject message = choices.first().toObject().value("message"_L1).toObject();
    const QJsonArray calls = message.value("tool_calls"_L1).toArray();
    QString text;
    if (!calls.isEmpty())
        text = calls.first().toObject().value("function"_L1).toObject().value("arguments"_L1).toString();
    return text.isEmpty() ? message.value("content"_L1).toString() : text;
}

static bool isKnown(const QString &type)
{
    return type == "single_choice"_L1 || type == "multi_choice"_L1 || type == "likert"_L1 || type == "ranking"_L1;
}

static void checkNumber(const ParsedAnswer &parsed, const QString &text)
{
    bool isNumber = false;
    const double number = text.toDouble(&isNumber);
    if (!isNumber) {
        promise(parsed.textAnswer == text && !parsed.numericAnswer.isValid(), "what is no number stays a text", text);
        return;
    }
    const double taken = parsed.numericAnswer.toDouble();
    promise(parsed.textAnswer.isNull() && (taken == number || (qIsNaN(taken) && qIsNaN(number))),
            "a number is taken as one", text);
}

static void checkObject(const ParsedAnswer &parsed, const QString &text, const QJsonDocument &document,
                        const QString &type)
{
    const QString compact = QString::fromUtf8(document.toJson(QJsonDocument::Compact));
    const QJsonValue answer = document.object().value("answer"_L1);
    leaveTrail(Trail::Answer, size_t(answer.type()));
    promise(parsed.jsonAnswer == compact, "the whole object is kept", parsed.jsonAnswer);
    promise(reasoning(parsed) == document.object().value("reasoning"_L1).toString() || !survivesJson(text),
            "the reasoning is kept", parsed.jsonAnswer);
    if (type == "numeric"_L1 && answer.isString())
        checkNumber(parsed, answer.toString());
    else if (type == "numeric"_L1 && answer.isDouble())
        promise(parsed.numericAnswer.toDouble() == answer.toDouble() && parsed.textAnswer.isNull(), "a number is kept");
    else if (answer.isString())
        promise(parsed.textAnswer == answer.toString(), "a text is kept");
    else if (answer.isDouble())
        promise(parsed.textAnswer == QString::number(answer.toDouble()), "a number is kept as a text");
    else if (answer.isBool())
        promise(parsed.textAnswer == (answer.toBool() ? "true"_L1 : "false"_L1), "a yes or no is kept");
    else
        promise(parsed.textAnswer.isNull() && !parsed.numericAnswer.isValid(), "no other value has a column");
}

static void checkAnswer(const QString &text, const QString &type)
{
    const ParsedAnswer parsed = SurveyRunner::interpretAnswer(text, type);
    promise(!displayValue(parsed).isEmpty() || text.isEmpty(), "no reply is lost", text);
    if (type == "text"_L1) {
        promise(parsed.textAnswer == text && parsed.jsonAnswer.isNull(), "a text is kept as it is", text);
        return;
    }
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(text.toUtf8(), &error);
    leaveTrail(Trail::JsonError, (size_t(error.error) * 64) + size_t(std::min(error.offset, 63)));
    if (error.error == QJsonParseError::NoError && document.isObject())
        checkObject(parsed, text, document, type);
    else if (isKnown(type))
        promise(parsed.jsonAnswer == text && parsed.textAnswer.isNull(), "a choice is kept as it is", text);
    else if (type == "numeric"_L1)
        checkNumber(parsed, text);
    else
        promise(parsed.textAnswer == text && parsed.jsonAnswer.isNull(), "any other reply is kept as it is", text);
}

static QString typeOf(char letter)
{
    static const QByteArrayView letters("smtnlr");
    const qsizetype index = letters.indexOf(letter);
    return index < 0 ? u"Text"_s : storedAnswerTypes().at(index);
}

void fuzzReply(QByteArrayView input)
{
    Bytes bytes(input);
    const QString type = typeOf(bytes.letter("smtnlr?"));
    // Half of them are whole bodies; a reply's own text would else have to be JSON within JSON.
    if (bytes.letter("ba") == 'a') {
        checkAnswer(bytes.text(false), type);
        return;
    }
    const QByteArrayView body = bytes.rest();
    const Received received = receive(body);
    const QJsonDocument completion = QJsonDocument::fromJson(body.toByteArray());
    leaveTrail(Trail::JsonShape, size_t(completion["choices"_L1][0]["message"_L1].type()));
    promise(received.raw == QString::fromUtf8(body), "the log is given the whole reply", received.raw);
    promise(received.texts == 1, "each reply ends in one answer");
    promise(received.text == textOf(completion) || !survivesJson(received.raw),
            "the answer is that of the first choice", received.text);
    leaveTrail(Trail::Rows, std::min<size_t>(size_t(received.text.size()), 16));
    checkAnswer(received.text, type);
}
