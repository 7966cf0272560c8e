#include "clipboardtext.h"

std::vector<std::vector<QString>> parseClipboardText(QStringView text, QChar delimiter,
                                                     bool quoted) {
    std::vector<std::vector<QString>> rows;
    std::vector<QString> row;
    QString field;
    bool in_quotes = false;
    bool field_started = false; // anything read since the last row end
    const qsizetype n = text.size();
    auto endField = [&] {
        row.push_back(std::move(field));
        field = QString();
    };
    auto endRow = [&] {
        endField();
        rows.push_back(std::move(row));
        row.clear();
        field_started = false;
    };
    for (qsizetype i = 0; i < n; ++i) {
        const QChar ch = text[i];
        if (in_quotes) {
            if (ch == u'"') {
                if (i + 1 < n && text[i + 1] == u'"') {
                    field += u'"';
                    ++i;
                } else {
                    in_quotes = false;
                }
            } else {
                field += ch;
            }
            continue;
        }
        field_started = true;
        if (quoted && ch == u'"' && field.isEmpty()) {
            in_quotes = true;
        } else if (ch == delimiter) {
            endField();
        } else if (ch == u'\r') {
            if (i + 1 < n && text[i + 1] == u'\n') ++i;
            endRow();
        } else if (ch == u'\n' || ch == QChar(30)) {
            endRow();
        } else {
            field += ch;
        }
    }
    if (field_started || in_quotes || !row.empty()) endRow();
    return rows;
}

QString quoteClipboardField(const QString& text) {
    bool needs = false;
    for (QChar ch : text)
        if (ch == u',' || ch == u'"' || ch == u'\r' || ch == u'\n') {
            needs = true;
            break;
        }
    if (!needs) return text;
    QString out;
    out.reserve(text.size() + 2);
    out += u'"';
    for (QChar ch : text) {
        if (ch == u'"') out += u'"';
        out += ch;
    }
    out += u'"';
    return out;
}
