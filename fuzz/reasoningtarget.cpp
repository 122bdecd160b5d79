// The two texts by which the grid shows an answer, read from whatever its row holds.

#include "fuzz/bytes.h"
#include "fuzz/promises.h"
#include "fuzz/targets.h"
#include "fuzz/trail.h"
#include "survey/answers.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QJsonParseError>

#include <algorithm>
#include <bit>

using namespace Qt::StringLiterals;

static void checkReasoning(const ParsedAnswer &answer)
{
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(answer.jsonAnswer.toUtf8(), &error);
    leaveTrail(Trail::JsonError, (size_t(error.error) * 64) + size_t(std::min(error.offset, 63)));
    const bool isObject = error.error == QJsonParseError::NoError && document.isObject();
    const QJsonValue value = isObject ? document["reasoning"_L1] : QJsonValue();
    leaveTrail(Trail::JsonShape, size_t(value.type()));
    const QString found = reasoning(answer);
    promise(found == value.toString(), "the reasoning is that of the object", found);
    if (!isObject)
        return;
    const QString compact = QString::fromUtf8(document.toJson(QJsonDocument::Compact));
    if (survivesJson(answer.jsonAnswer))
        promise(reasoning({.textAnswer = {}, .numericAnswer = {}, .jsonAnswer = compact}) == found,
                "the reasoning survives the compact form", compact);
}

static void checkShown(const ParsedAnswer &answer)
{
    const QString shown = displayValue(answer);
    if (!answer.textAnswer.isEmpty())
        promise(shown == answer.textAnswer, "a text is shown as it is", shown);
    else if (!answer.numericAnswer.isNull())
        promise(shown == u"%1"_s.arg(answer.numericAnswer.toDouble(), 0, 'g', 6) && !shown.isEmpty(),
                "a number is shown with six digits", shown);
    else
        promise(shown == answer.jsonAnswer, "JSON is shown as it is", shown);
}

void fuzzReasoning(QByteArrayView input)
{
    Bytes bytes(input);
    const char kind = bytes.letter("jwtnb");
    ParsedAnswer answer;
    if (kind == 't')
        answer.textAnswer = QString::fromUtf8(bytes.piece());
    if (kind == 'n' || kind == 'b') {
        quint64 bits = 0;
        for (int count = 0; count < 8; ++count)
            bits = bits << 8 | bytes.byte();
        answer.numericAnswer = kind == 'n' ? QVariant(std::bit_cast<double>(bits)) : QVariant(qlonglong(bits));
    }
    answer.jsonAnswer = bytes.text(kind == 'w');
    checkReasoning(answer);
    checkShown(answer);
}
