#include "survey/chatrequester.h"

#include "preferences/settings.h"
#include "survey/shortage.h"

#include <QJsonDocument>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QUrl>

#include <algorithm>

using namespace Qt::StringLiterals;

ChatRequester::ChatRequester(QObject *parent)
    : QObject(parent)
    , apiKey(Settings::apiKey())
{
}

void ChatRequester::send(const QJsonArray &messages, const QString &model, const QJsonArray &tools,
                         const QJsonObject &toolChoice, const QJsonObject &responseFormat, double temperature)
{
    if (apiKey.isEmpty()) {
        Q_EMIT requestFailed(u"OPENAI_API_KEY not set"_s);
        return;
    }

    QJsonObject body{{u"model"_s, model.isEmpty() ? u"gpt-4o-mini"_s : model}, {u"messages"_s, messages}};
    if (!tools.isEmpty())
        body.insert("tools"_L1, tools);
    if (!toolChoice.isEmpty())
        body.insert("tool_choice"_L1, toolChoice);
    if (!responseFormat.isEmpty())
        body.insert("response_format"_L1, responseFormat);
    if (temperature >= 0.0)
        body.insert("temperature"_L1, temperature);

    const QByteArray bytes = QJsonDocument(body).toJson(QJsonDocument::Indented);
    Q_EMIT requestSent(QString::fromUtf8(bytes));
    post(bytes);
}

void ChatRequester::post(const QByteArray &body)
{
    if (const QString text = descriptorShortage(); !text.isNull()) {
        Q_EMIT requestFailed(text + u" (code %1)"_s.arg(int(QNetworkReply::UnknownNetworkError)));
        return;
    }
    QNetworkRequest request(QUrl(u"https://api.openai.com/v1/chat/completions"_s));
    request.setHeader(QNetworkRequest::ContentTypeHeader, u"application/json"_s);
    request.setRawHeader("Authorization", "Bearer " + apiKey.toUtf8());
    // A redirection would otherwise carry the key and the persona to whatever host it names.
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::SameOriginRedirectPolicy);

    // A manager of its own, so that no connection outlives the request.
    auto *manager = new QNetworkAccessManager(this);
    sslErrors.clear();
    reply = manager->post(request, body);
    connect(reply, &QNetworkReply::finished, this, &ChatRequester::finished);
    connect(reply, &QNetworkReply::sslErrors, this, &ChatRequester::handleSslErrors);
    connect(reply, &QNetworkReply::redirected, this, &ChatRequester::endLostRedirection);
    connect(reply, &QNetworkReply::metaDataChanged, this, [this] { giveUpWithoutRoom(0); });
    connect(reply, &QNetworkReply::downloadProgress, this, &ChatRequester::giveUpWithoutRoom);
}

/// Where one redirection has made a GET of the POST and the next is to keep the method, Qt neither goes on nor ends: it
/// looks for a body to send again.
void ChatRequester::endLostRedirection()
{
    const int status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    const bool keepsMethod = status == 307 || status == 308;
    if (keepsMethod && reply->operation() == QNetworkAccessManager::GetOperation)
        reply->abort();
}

/// A reply that can't be held fails by its pair, like any other that does not come to its end.
void ChatRequester::giveUpWithoutRoom(qint64 received)
{
    if (reply == nullptr || reply->isFinished())
        return;
    const qint64 announced = reply->header(QNetworkRequest::ContentLengthHeader).toLongLong();
    if (!hasRoomForReply(std::max(received, announced)))
        reply->abort();
}

/// The text of the first choice of a chat completion. Whatever is missing or of another type reads as empty.
static QString answerText(const QByteArray &completion)
{
    const QJsonObject message = QJsonDocument::fromJson(completion)["choices"_L1][0]["message"_L1].toObject();
    const QJsonArray toolCalls = message["tool_calls"_L1].toArray();
    const QString arguments = toolCalls[0]["function"_L1]["arguments"_L1].toString();
    return arguments.isEmpty() ? message["content"_L1].toString() : arguments;
}

QString ChatRequester::failureText() const
{
    QString text = reply->errorString() + u" (code %1)"_s.arg(static_cast<int>(reply->error()));
    if (!sslErrors.isEmpty())
        text += u" - SSL errors: %1"_s.arg(sslErrors.join(", "_L1));
    return text;
}

void ChatRequester::finished()
{
    if (reply->error() != QNetworkReply::NoError) {
        Q_EMIT requestFailed(failureText());
    } else {
        const QByteArray body = reply->readAll();
        Q_EMIT rawResponse(QString::fromUtf8(body));
        Q_EMIT responseReceived(answerText(body));
    }
    reply->deleteLater();
    reply = nullptr;
    deleteLater();
}

void ChatRequester::handleSslErrors(const QList<QSslError> &errors)
{
    sslErrors.clear();
    for (const QSslError &error : errors)
        sslErrors.append(error.errorString());
}
