#pragma once

#include <QList>
#include <QStringList>

// How free text is matched to labels. A text is a label where it is the same, or, failing that, the same but for case
// and white space; where two labels differ in nothing else, only the same text is either. A text that names several is
// one label, a JSON array of them, or a list of them, one a line or separated by semicolons or commas (a label may hold
// the separator itself). What doesn't match is never guessed.

namespace study {

/// A text without regard to case and white space.
QString caselessText(const QString &text);

/// The place of the label that a text is, -1 where it is none.
int matchOne(const QString &text, const QStringList &labels);

struct Matches
{
    QList<int> labels;     ///< places, in the order of the text
    QStringList unmatched; ///< the pieces that are no label, or one that was there before
};

/// The labels that a text names.
Matches matchSeveral(const QString &text, const QStringList &labels);

/// The same for pieces that are known already.
Matches matchPieces(const QStringList &pieces, const QStringList &labels);

} // namespace study
