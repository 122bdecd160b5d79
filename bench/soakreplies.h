#pragma once

#include "standin/reply.h"

#include <QRandomGenerator>
#include <QVariant>

#include <map>
#include <optional>
#include <string>

struct SoakQuestion
{
    QString type; ///< as the table has it
    bool reasoning = false;
};

/// What the program must make of a reply that came whole. Made together with the reply, not by reading it.
struct SoakAnswer
{
    QByteArray body;      ///< of the reply
    QString text;         ///< what is taken for the answer of the model
    QString textAnswer;   ///< and what its row holds
    QVariant number = {}; ///< invalid for none
    QString json;
    QString reasoning; ///< as the grid shows it
};

/// A reply, and the answer that it is; nothing where it makes none.
struct SoakReply
{
    QString name; ///< for complaints
    standin::Reply reply;
    std::optional<SoakAnswer> answer;
};

/// Replies at random: of all the shapes that answers have, and one in so many failing in a way of its own.
class SoakReplies
{
public:
    SoakReplies(quint32 seed, int faultOneIn);

    /// The reply to one request. @p again where the last reply was to the same pair: some faults go on then.
    SoakReply next(const SoakQuestion &question, bool again);

    /// How often each fault came.
    const std::map<std::string, int> &faults() const { return counts; }

private:
    bool oneIn(int count) { return random.bounded(count) == 0; }
    QString words(int least, int most);
    QString replyText(const SoakQuestion &question, SoakAnswer &answer);
    QString objectText(const SoakQuestion &question, SoakAnswer &answer);
    QJsonValue value(bool numeric, SoakAnswer &answer);
    QString proseText(const SoakQuestion &question, SoakAnswer &answer);
    SoakReply whole(const SoakQuestion &question);
    SoakReply fault(const SoakQuestion &question);
    SoakReply unusable();
    standin::Reply redirection(bool elsewhere);
    QByteArray garbage();
    standin::Reply delivered(const standin::Reply &reply);

    QRandomGenerator random;
    int share;
    std::optional<SoakReply> lasting; ///< goes on until the pair is given up
    bool repeated = false;            ///< Qt has sent the POST again on its own
    std::map<std::string, int> counts;
};
