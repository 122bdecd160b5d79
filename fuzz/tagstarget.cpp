// The text of a persona's tags, cut into names.

#include "fuzz/bytes.h"
#include "fuzz/promises.h"
#include "fuzz/targets.h"
#include "fuzz/trail.h"
#include "personas/tagtext.h"

static bool separates(QChar character)
{
    return character == u',' || character == u' ' || (character >= u'\t' && character <= u'\r');
}

/// The same cut, made character by character.
static QStringList cutByHand(const QString &text)
{
    QStringList names;
    QString name;
    for (const QChar character : text) {
        if (!separates(character)) {
            name += character;
        } else if (!name.isEmpty()) {
            names.append(name);
            name.clear();
        }
    }
    if (!name.isEmpty())
        names.append(name);
    return names;
}

void fuzzTags(QByteArrayView input)
{
    Bytes bytes(input);
    const QString text = bytes.text(bytes.letter("tw") == 'w');
    const QStringList names = splitTags(text);
    leaveTrail(Trail::Rows, static_cast<size_t>(names.size()));
    // A lone half of a surrogate pair is no text, and the expression matches nothing in it.
    if (text.isValidUtf16()) {
        promise(names == cutByHand(text), "tags are cut at commas and white space", text);
        // The expression is slow: now and then is often enough.
        if (qHash(input) % 4 == 0)
            promise(splitTags(joinTags(names)) == names, "tags survive the joining and cutting", text);
    }
    for (const QString &name : names)
        promise(!name.isEmpty(), "no tag is empty", text);
}
