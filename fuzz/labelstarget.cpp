// The labels of a question as the column holds them: JSON that somebody may have edited by hand.

#include "fuzz/bytes.h"
#include "fuzz/promises.h"
#include "fuzz/targets.h"
#include "fuzz/trail.h"
#include "questions/answertypes.h"
#include "questions/labels.h"
#include "survey/requestassembly.h"
#include "survey/surveyentries.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QJsonParseError>

#include <algorithm>

using namespace Qt::StringLiterals;

/// What the JSON reader gives back as it was: no half of a surrogate pair, and no byte order mark in front.
static bool isPlain(const QString &label)
{
    return label.isValidUtf16() && !label.startsWith(QChar::ByteOrderMark);
}

static void checkEncoding(const QStringList &labels)
{
    const QString encoded = encodeLabels(labels);
    const QStringList decoded = decodeLabels(encoded);
    promise(decoded.size() == labels.size(), "no label is lost", encoded);
    promise(decoded == labels || !std::ranges::all_of(labels, isPlain), "labels are read back as they were", encoded);
    promise(!encoded.contains(u'\n') && encoded.startsWith(u'[') && encoded.endsWith(u']'), "labels are one line",
            encoded);
    const QString again = encodeLabels(decoded);
    promise(again == encoded || !std::ranges::all_of(labels, isPlain), "labels that are written again stay", again);
}

static void checkDecoding(const QString &text)
{
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(text.toUtf8(), &error);
    leaveTrail(Trail::JsonError, (size_t(error.error) * 64) + size_t(std::min(error.offset, 63)));
    const QJsonArray array = labelArray(text);
    const QStringList labels = decodeLabels(text);
    promise(array == document.array(), "labels are the elements of the array");
    promise(document.isArray() || labels.isEmpty(), "what is no array has no labels");
    promise(labels.size() == array.size(), "each element is a label");
    for (qsizetype index = 0; index < std::min(labels.size(), array.size()); ++index) {
        leaveTrail(Trail::JsonShape, size_t(array.at(index).type()));
        promise(labels.at(index) == array.at(index).toString(), "a label is its element's text");
    }
}

static void checkRequest(const QString &text)
{
    const AnswerFormat format =
        answerFormat({.prompt = {}, .answerType = AnswerType::singleChoice.toString(), .labels = text});
    const QJsonArray array = labelArray(text);
    promise(format.tools.isEmpty() == array.isEmpty(), "a choice is forced where there are labels");
    const QJsonValue offered =
        QJsonDocument(format.tools)[0]["function"_L1]["parameters"_L1]["properties"_L1]["answer"_L1]["enum"_L1];
    promise(offered.toArray() == array, "the model is offered the labels");
}

void fuzzLabels(QByteArrayView input)
{
    Bytes bytes(input);
    const char kind = bytes.letter("twlq");
    const QString text = bytes.text(kind == 'w' || kind == 'q');
    if (kind == 'l' || kind == 'q') {
        checkEncoding(text.split(u'|'));
    } else {
        checkDecoding(text);
        checkRequest(text);
        checkEncoding(decodeLabels(text));
    }
}
