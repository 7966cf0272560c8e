// Clipboard and drop text through the row and field splitter. The first
// byte picks the delimiter and the quoting; the rest is UTF-8 text. A field
// written back with the clipboard's quoting must parse to itself.

#include "edit/clipboardtext.h"

#include <QString>

#include <cstdint>
#include <cstdlib>

namespace {

void check(bool condition) {
    if (!condition) std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 1) return 0;
    const uint8_t mode = data[0];
    const QString text =
        QString::fromUtf8(reinterpret_cast<const char*>(data + 1), qsizetype(size - 1));
    const bool quoted = mode & 1;
    const QChar delimiter = (mode & 2) ? u',' : u'\t';
    const auto rows = parseClipboardText(text, delimiter, quoted);
    // Nothing is invented: the fields hold no more characters than the text.
    qsizetype chars = 0;
    for (const auto& row : rows) {
        check(!row.empty());
        for (const QString& field : row)
            chars += field.size();
    }
    check(chars <= text.size());
    // One field quoted for the clipboard's CSV comes back whole.
    const auto back =
        parseClipboardText(quoteClipboardField(text) + QStringLiteral("\r\n"), u',', true);
    if (!text.contains(u'\r') && !text.contains(u'\n') && !text.contains(QChar(30)))
        check(back.size() == 1 && back[0].size() == 1 && back[0][0] == text);
    return 0;
}
