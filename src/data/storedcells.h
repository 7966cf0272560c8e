#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QMetaType>

// The cells of a raw block as the store held them: their bytes in the file's
// encoding and whether the file had them in quotes, in row-major order.
//
// This is what an undo step keeps of the cells it overwrote, so it is kept
// close to the bytes themselves: each cell is a length (a varint, one byte
// for cells under 64 bytes, with the quote mark in its low bit) followed by
// its bytes. A whole column of five million short cells costs its bytes plus
// one byte a cell, where a list of strings would cost dozens.
class StoredCells {
public:
    StoredCells() = default;
    StoredCells(int first_row, int last_row, int first_col, int last_col);

    int firstRow() const { return first_row; }
    int lastRow() const { return last_row; }
    int firstColumn() const { return first_col; }
    int lastColumn() const { return last_col; }
    bool isEmpty() const { return last_row < first_row || last_col < first_col; }
    qint64 cellCount() const {
        return isEmpty() ? 0 : qint64(last_row - first_row + 1) * (last_col - first_col + 1);
    }
    // Bytes held, what an undo step's memory is counted by.
    qsizetype byteSize() const { return packed.capacity() + qsizetype(sizeof *this); }

    void reserve(qsizetype bytes) { packed.reserve(bytes); }
    void append(QByteArrayView bytes, bool quoted);
    void squeeze() { packed.squeeze(); }
    // The same cells placed dr rows and dc columns away.
    StoredCells shifted(int dr, int dc) const {
        StoredCells out = *this;
        out.first_row += dr, out.last_row += dr;
        out.first_col += dc, out.last_col += dc;
        return out;
    }

    // Walks the cells in order.
    class Reader {
    public:
        explicit Reader(const StoredCells& cells)
            : p(cells.packed.constData()), end(p + cells.packed.size()) {}
        bool atEnd() const { return p >= end; }
        // The next cell; its view lives as long as the StoredCells.
        QByteArrayView next(bool* quoted);
        // Steps over n cells, reading only their lengths.
        void skip(qint64 n);

    private:
        const char* p;
        const char* end;
    };

private:
    int first_row = 0;
    int last_row = -1;
    int first_col = 0;
    int last_col = -1;
    QByteArray packed;
};

Q_DECLARE_METATYPE(StoredCells)
