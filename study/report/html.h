#pragma once

#include <QByteArray>

namespace study {

struct Document;

/// The document as one HTML file that is well-formed XML too. It holds no script and asks the network for nothing,
/// and the browser is told to hold it to that. The same document gives the same bytes.
QByteArray toHtml(const Document &document);

} // namespace study
