#pragma once

// Helpers shared by the store, reader and writer tests: tables as lists of
// byte rows, file access, and ASCII text widened to UTF-16 or UTF-32.

#include "data/editabledatacontainer.h"

#include <QByteArray>
#include <QByteArrayList>
#include <QFile>
#include <QList>
#include <QString>
#include <QStringList>

namespace testutil {

// Rows of cells; a row may list fewer cells than the table has columns.
using Table = QList<QByteArrayList>;

// Every logical cell of the store, so that sizes and contents compare at once.
inline Table logicalCells(const AbstractDataContainer& c) {
    Table t;
    for (int r = 0; r < c.rowCount(); ++r) {
        QByteArrayList row;
        for (int col = 0; col < c.columnCount(); ++col)
            row.append(c.data(r, col));
        t.append(row);
    }
    return t;
}

// `expected` padded with empty cells to the given logical size.
inline Table padded(const Table& expected, int rows, int columns) {
    Table t;
    for (int r = 0; r < rows; ++r) {
        QByteArrayList row;
        for (int col = 0; col < columns; ++col)
            row.append(r < expected.size() && col < expected[r].size() ? expected[r][col]
                                                                       : QByteArray());
        t.append(row);
    }
    return t;
}

inline QList<int> storedCounts(const EditableDataContainer& c) {
    QList<int> counts;
    for (int r = 0; r < c.storedRowCount(); ++r)
        counts.append(c.storedCellCount(r));
    return counts;
}

// Stores the rows exactly as given, empty cells included.
inline void fill(EditableDataContainer& c, const Table& rows) {
    for (int r = 0; r < rows.size(); ++r) {
        CellList cells;
        for (const QByteArray& bytes : rows[r])
            cells.emplace_back(QByteArrayView(bytes));
        c.setRow(r, std::move(cells));
    }
}

inline QString show(QByteArrayView bytes) {
    QString s;
    for (char ch : bytes) {
        const uchar u = uchar(ch);
        if (u >= 0x20 && u < 0x7F && u != '\\')
            s.append(QLatin1Char(ch));
        else
            s.append(QStringLiteral("\\x%1").arg(u, 2, 16, QLatin1Char('0')));
    }
    return s;
}

inline QString show(const Table& t) {
    QStringList lines;
    for (const QByteArrayList& row : t) {
        QStringList cells;
        for (const QByteArray& cell : row)
            cells.append(QLatin1Char('[') + show(cell) + ']');
        lines.append(cells.join(QLatin1Char(' ')));
    }
    return lines.join(QStringLiteral(" / "));
}

inline bool writeFile(const QString& path, QByteArrayView bytes) {
    QFile f(path);
    return f.open(QIODevice::WriteOnly | QIODevice::Truncate) &&
           f.write(bytes.data(), bytes.size()) == bytes.size();
}

inline QByteArray readFile(const QString& path) {
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

// Each byte becomes one code unit of `width` bytes, the byte in its low
// position: ASCII (and Latin-1) text in UTF-16 or UTF-32.
inline QByteArray widen(QByteArrayView narrow, int width, bool big_endian) {
    QByteArray out(narrow.size() * width, '\0');
    for (qsizetype i = 0; i < narrow.size(); ++i)
        out[i * width + (big_endian ? width - 1 : 0)] = narrow[i];
    return out;
}

inline Table widen(const Table& t, int width, bool big_endian) {
    Table out;
    for (const QByteArrayList& row : t) {
        out.append(QByteArrayList());
        for (const QByteArray& cell : row)
            out.last().append(widen(cell, width, big_endian));
    }
    return out;
}

} // namespace testutil
