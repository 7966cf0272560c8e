#include "storedcells.h"

#include <algorithm>

StoredCells::StoredCells(int r0, int r1, int c0, int c1)
    : first_row(r0), last_row(r1), first_col(c0), last_col(c1) {}

void StoredCells::append(QByteArrayView bytes, bool quoted) {
    quint64 v = (quint64(bytes.size()) << 1) | (quoted ? 1 : 0);
    char head[10];
    int n = 0;
    do {
        head[n++] = char((v & 0x7f) | (v > 0x7f ? 0x80 : 0));
        v >>= 7;
    } while (v);
    packed.append(head, n);
    packed.append(bytes.data(), bytes.size());
}

namespace {

// A cell's head: its length shifted left by one, the quote mark below.
quint64 readHead(const char*& p, const char* end) {
    quint64 v = 0;
    int shift = 0;
    while (p < end) {
        const auto b = quint8(*p++);
        if (shift < 64) v |= quint64(b & 0x7f) << shift;
        if (!(b & 0x80)) break;
        shift += 7;
    }
    return v;
}

} // namespace

QByteArrayView StoredCells::Reader::next(bool* quoted) {
    const quint64 v = readHead(p, end);
    if (quoted) *quoted = v & 1;
    const qsizetype n = std::min<qsizetype>(qsizetype(v >> 1), end - p);
    const QByteArrayView cell(p, n);
    p += n;
    return cell;
}

void StoredCells::Reader::skip(qint64 n) {
    for (; n > 0 && p < end; --n) {
        const quint64 v = readHead(p, end);
        p += std::min<qsizetype>(qsizetype(v >> 1), end - p);
    }
}
