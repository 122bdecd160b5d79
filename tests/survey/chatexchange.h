#pragma once

#include "survey/chatrequester.h"
#include "tests/support/patience.h"

#include <QPointer>
#include <QSignalSpy>
#include <QStringList>

/// One ChatRequester and the signals it gives, in order, each as "name: argument".
class ChatExchange
{
public:
    explicit ChatExchange(QObject *parent = nullptr)
        : requester(new ChatRequester(parent))
    {
        note(&ChatRequester::requestSent, QStringLiteral("requestSent: "));
        note(&ChatRequester::rawResponse, QStringLiteral("rawResponse: "));
        note(&ChatRequester::responseReceived, QStringLiteral("responseReceived: "));
        note(&ChatRequester::requestFailed, QStringLiteral("requestFailed: "));
    }
    ~ChatExchange() { delete requester; }
    Q_DISABLE_COPY_MOVE(ChatExchange)

    ChatRequester *object() const { return requester; }

    /// Sends a plain question; what it says is of no interest.
    void sendAnything()
    {
        const QJsonObject message{{QStringLiteral("role"), QStringLiteral("user")},
                                  {QStringLiteral("content"), QStringLiteral("Well?")}};
        requester->send({message}, QStringLiteral("any-model"), {}, {}, {}, -1.0);
    }

    /// Waits for the requester to delete itself.
    bool ended() const { return requester.isNull() || QSignalSpy(requester, &QObject::destroyed).wait(patience); }

    const QStringList &events() const { return noted; }
    /// The events after requestSent.
    QStringList outcome() const { return noted.mid(1); }

private:
    void note(void (ChatRequester::*signal)(const QString &), const QString &name)
    {
        QObject::connect(requester, signal, &context, [this, name](const QString &text) { noted << name + text; });
    }

    QPointer<ChatRequester> requester;
    QStringList noted;
    QObject context;
};
