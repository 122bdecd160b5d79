#pragma once

#include "tests/support/patience.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QSignalSpy>
#include <QTest>

/// An ordinary client: it knows nothing of the endpoint.
class Client
{
public:
    QNetworkReply *post(const QByteArray &body = "{}")
    {
        QNetworkRequest request(QUrl(QStringLiteral("https://api.openai.com/v1/chat/completions")));
        request.setHeader(QNetworkRequest::ContentTypeHeader, QStringLiteral("application/json"));
        request.setRawHeader("Authorization", "Bearer none");
        return manager.post(request, body);
    }

    /// Waits for the end of the exchange; without one the test has failed.
    QNetworkReply *posted(const QByteArray &body = "{}")
    {
        QNetworkReply *reply = post(body);
        if (!QSignalSpy(reply, &QNetworkReply::finished).wait(patience))
            QTest::qFail("no answer came", __FILE__, __LINE__);
        return reply;
    }

private:
    QNetworkAccessManager manager;
};

inline QString contentOf(const QByteArray &body)
{
    return QJsonDocument::fromJson(body)[u"choices"][0][u"message"][u"content"].toString();
}
