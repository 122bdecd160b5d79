#pragma once

#include <QByteArray>

namespace study {

struct Document;

/// The document as PDF on A4, with the texts as text and the drawings as lines. The same document gives the same bytes
/// on the same system: the file bears no time of its making, and no identity but the one that all reports have. Needs a
/// QGuiApplication. The order of fonts in the file follows that of hash tables, which this fixes for the whole process.
QByteArray toPdf(const Document &document);

} // namespace study
