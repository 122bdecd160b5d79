#pragma once

#include <QJsonArray>
#include <QJsonObject>
#include <QObject>
#include <QSslError>
#include <QStringList>

class QNetworkReply;

/// One request to the OpenAI chat completions API, and the program's only way to the network. An instance is used for
/// one send() and deletes itself when its reply has been dealt with; destroying it earlier aborts the request.
///
/// The key of the API is read from the settings when the object is made.
class ChatRequester : public QObject
{
    Q_OBJECT

public:
    explicit ChatRequester(QObject *parent = nullptr);

    /// Posts the request; to be called once, after the signals are connected. Empty arguments leave their keys out of
    /// the body, as does a temperature below 0; an empty model stands for "gpt-4o-mini". Without a key requestFailed
    /// is emitted before this returns, and nothing is sent.
    void send(const QJsonArray &messages, const QString &model, const QJsonArray &tools, const QJsonObject &toolChoice,
              const QJsonObject &responseFormat, double temperature);

Q_SIGNALS:
    /// The answer: the arguments of the first tool call, else the message's content. Empty where the reply has neither,
    /// also for a reply that is no JSON.
    void responseReceived(const QString &text);
    /// The request failed in the network, in TLS or by its HTTP status; the body of such a reply is not read. Also
    /// emitted by send() where the system has no file descriptors left for a request, and for a reply that there is no
    /// memory for.
    void requestFailed(const QString &err);
    /// The body that is about to be sent.
    void requestSent(const QString &payload);
    /// The whole body of a reply that came without error, before it is parsed.
    void rawResponse(const QString &payload);

private Q_SLOTS:
    void finished();
    void handleSslErrors(const QList<QSslError> &errors);

private:
    void post(const QByteArray &body);
    void endLostRedirection();
    void giveUpWithoutRoom(qint64 received);
    QString failureText() const;

    QString apiKey;
    QNetworkReply *reply = nullptr;
    QStringList sslErrors;
};
