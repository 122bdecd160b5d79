#pragma once

#include <QString>

// How values and foreign texts are put into words. Texts of a project may hold anything: what would not survive as
// XML, or would turn the text around it, becomes U+FFFD.

namespace study {

/// A foreign text without control characters (but line feeds and tabs), characters that set the direction of the text
/// around them, and halves of surrogate pairs.
QString clean(const QString &text);

/// The same for what is written out, where isolates may be those of quoted(): they end with their block at the latest.
QString fitForPage(const QString &text);

/// The text, or as much of its beginning as this many characters, and how long it is.
QString cut(const QString &text, qsizetype limit);

/// As much of its beginning on one line, where the whole stands elsewhere.
QString brief(const QString &text, qsizetype limit);

/// The text on one line, cut as cut() does.
QString line(const QString &text, qsizetype limit);

/// A foreign text within a sentence of ours: it can't change the direction of what follows.
QString quoted(const QString &text, qsizetype limit = 80);

/// "37.5 %", "0 %", "100 %"; never rounded to all or nothing.
QString percent(double share);

/// "37.5 %" of what there is; "-" of nothing.
QString percentOf(qsizetype part, qsizetype all);

/// Three decimals at most and no trailing zeros; four digits of a very large or small one; "-" for one that is not
/// finite.
QString shownNumber(double value);

/// "1 answer", "2 answers".
QString counted(qsizetype count, const QString &one, const QString &several);

} // namespace study
