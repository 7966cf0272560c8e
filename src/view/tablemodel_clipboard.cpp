// The selection as mime data for the clipboard and drags, and mime data
// back into cells.

#include "edit/clipboardtext.h"
#include "tablemodel.h"

#include <QDataStream>
#include <QMap>
#include <QMimeData>

#include <algorithm>

namespace {

// Above this many cells no HTML is built: it is the slow part of a copy,
// and a table that big is no use pasted into a document.
constexpr qint64 kMaxHtmlCells = 10000;

const char* const kHtmlHead =
    "<!DOCTYPE html>\n<html>\n<style>\ntable {\nborder: 1px solid black;\n"
    "border-style: solid;\npadding: 0px;\nborder-collapse: collapse;\n}\n"
    "td {\nborder: 1px solid black;\nborder-style: solid;\npadding: 4px;\n"
    "}\n</style>\n<body>\n<table>\n<tr>";

} // namespace

QMimeData* TableModel::makeMimeData(bool with_header) const {
    auto* mime = new QMimeData;
    const int top = selectionMinRow(selection), left = selectionMinCol(selection);
    const int bottom = selectionMaxRow(selection, false), right = selectionMaxCol(selection, false);
    if (selection.empty() || top > bottom || left > right) {
        mime->setText(QString());
        return mime;
    }

    // Which columns and rows of the box hold a selected cell: a Cell or a
    // short member is looked up per cell, while whole lines (the big case)
    // answer by their kind alone.
    std::vector<int> cols;
    for (int c = left; c <= right; ++c)
        for (const Range& r : selection)
            if ((r.kind == Range::Cell || r.kind == Range::Column) ? r.col == c
                                                                   : r.col <= c && c <= r.col_end) {
                cols.push_back(c);
                break;
            }

    QString csv, plain, html;
    qint64 cells = 0;
    const bool header_line = with_header && num_header_rows >= 1 && top >= num_header_rows;
    auto addLine = [&](auto&& field_of, bool is_header) {
        QString csv_line, plain_line, html_line = QStringLiteral("<tr>\n");
        bool any = false;
        for (int c = left; c <= right; ++c) {
            if (c > left) {
                csv_line += u',';
                plain_line += u'\t';
            }
            bool selected = false;
            const QString text = field_of(c, &selected);
            any = any || selected;
            if (selected) {
                csv_line += quoteClipboardField(text);
                plain_line += text;
                html_line += QStringLiteral("<td>%1</td>\n").arg(text);
            } else {
                html_line += QStringLiteral("<td></td>");
            }
        }
        csv += csv_line + QStringLiteral("\r\n");
        plain += plain_line + QStringLiteral("\r\n");
        if (!is_header)
            html += any ? html_line + QStringLiteral("</tr>\n")
                        : QStringLiteral("<tr>\n%1\n</tr>\n")
                              .arg(QStringLiteral("<td></td>").repeated(right - left + 1));
    };
    QString header_html;
    if (header_line) {
        const int header_row = num_header_rows - 1;
        addLine(
            [&](int c, bool* selected) {
                *selected = std::binary_search(cols.begin(), cols.end(), c);
                return *selected ? table_data.data(header_row, c).toString() : QString();
            },
            true);
        for (int c = left; c <= right; ++c)
            header_html +=
                std::binary_search(cols.begin(), cols.end(), c)
                    ? QStringLiteral("<td>%1</td>\n").arg(table_data.data(header_row, c).toString())
                    : QStringLiteral("<td></td>");
    }
    for (int r = top; r <= bottom; ++r)
        addLine(
            [&](int c, bool* selected) {
                *selected = isCellSelected(r, c);
                if (!*selected) return QString();
                ++cells;
                return table_data.data(r, c).toString();
            },
            false);

    if (plain.endsWith(u'\n')) plain.chop(2);
    const bool is_multi = cells > 1;
    if (is_multi) mime->setData(QStringLiteral("text/csv"), csv.toUtf8());
    mime->setText(plain);
    if (is_multi && cells < kMaxHtmlCells) {
        QString page = QString::fromLatin1(kHtmlHead);
        page += header_html + QStringLiteral("</tr>\n") + html +
                QStringLiteral("</table>\n</body>\n</html>\n");
        mime->setHtml(page);
    }
    return mime;
}

void TableModel::readMimeData(const QMimeData* mime, RangeVector* out) {
    out->clear();
    if (!mime) return;
    if (mime->hasFormat(QStringLiteral("application/x-qabstractitemmodeldatalist"))) {
        QByteArray bytes = mime->data(QStringLiteral("application/x-qabstractitemmodeldatalist"));
        QDataStream stream(&bytes, QIODevice::ReadOnly);
        while (!stream.atEnd()) {
            int row = 0, col = 0;
            QMap<int, QVariant> roles;
            stream >> row >> col >> roles;
            if (stream.status() != QDataStream::Ok || row < 0 || col < 0) break;
            Range cell(row, col, Range::Raw);
            cell.value = roles.value(Qt::DisplayRole).toString();
            out->push_back(std::move(cell));
        }
    } else {
        QString text;
        QChar delimiter = u'\t';
        bool quoted = true;
        if (mime->hasFormat(QStringLiteral("text/csv"))) {
            text = QString::fromUtf8(mime->data(QStringLiteral("text/csv")));
            delimiter = u',';
        } else if (mime->hasFormat(QStringLiteral("Csv"))) {
            text = mime->text();
        } else if (mime->hasText()) {
            text = mime->text();
            quoted = false;
        } else {
            return;
        }
        const auto rows = parseClipboardText(text, delimiter, quoted);
        for (size_t r = 0; r < rows.size(); ++r)
            for (size_t c = 0; c < rows[r].size(); ++c) {
                Range cell(int(r), int(c), Range::Raw);
                cell.value = rows[r][c];
                out->push_back(std::move(cell));
            }
    }
    if (out->empty()) return;
    int min_row = INT_MAX, min_col = INT_MAX;
    for (const Range& r : *out) {
        min_row = std::min(min_row, r.row);
        min_col = std::min(min_col, r.col);
    }
    for (Range& r : *out) {
        r.row -= min_row;
        r.col -= min_col;
    }
}
