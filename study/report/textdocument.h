#pragma once

#include <QTextDocument>

#include <memory>

namespace study {

struct Document;

/// The document as Qt lays it out, on pages of this size in 96ths of an inch.
std::unique_ptr<QTextDocument> laidOut(const Document &document, QSizeF page);

} // namespace study
