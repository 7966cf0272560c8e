#pragma once

#include "data/dialect.h"
#include "data/storedcells.h"

#include <QByteArrayView>
#include <QString>
#include <QStringList>
#include <QStringView>

#include <cstdint>
#include <functional>
#include <vector>

// The source side of a column lookup (TableModel::buildLookupMap): each key
// text of the source's key column with the texts of the value columns of the
// last row that holds it. Keys compare as exact, case-sensitive UTF-16 text,
// so "a" and "A" are two keys, and a source and a destination in different
// encodings still meet on their text.
//
// It behaves as an ordered map of key text to value texts would; it is
// kept as a hash table over one buffer of keys, and the values
// stay the source's stored bytes (captured once per value column), so that a
// million keys cost no string per key or per value. Nothing here points into
// the source table: the table may change (or be the destination) afterwards.
class LookupMap {
public:
    // False when the key column, a value column or the first row was out of
    // range: such a lookup writes nothing.
    bool isValid() const { return valid; }
    bool isEmpty() const { return entries.empty(); }
    // Distinct keys.
    qsizetype size() const { return qsizetype(entries.size()); }
    int valueCount() const { return int(value_cells.size()); }
    // The source's encoding, in which valueBytes are held.
    EncodingType encoding() const { return encoding_; }

    // The entry of `key`, or -1.
    int find(QStringView key) const;
    bool contains(QStringView key) const { return find(key) >= 0; }
    // Value `j` of an entry as the source stores it.
    QByteArrayView valueBytes(int entry, int j) const {
        return value_cells[size_t(j)][size_t(entries[size_t(entry)].row)];
    }
    // The value texts stored under `key`, in the order of the value
    // columns; empty when the key is absent.
    QStringList values(QStringView key) const;

private:
    friend class TableModel;

    // One key: short ones (ids, codes, names) sit in the entry itself, so
    // that a probe reads the bucket and the entry and nothing else.
    static constexpr int kInlineChars = 12;
    struct Entry {
        qint32 row;    // the row whose values the key takes (the last one)
        qint32 length; // in UTF-16 code units
        union {
            char16_t chars[kInlineChars];
            qsizetype start; // in the arena, for a longer key
        };
    };
    struct Bucket {
        quint32 tag = 0;   // the hash's upper half, to pass over most others unread
        qint32 entry = -1; // -1: empty
    };

    const char16_t* keyData(const Entry& e) const {
        return e.length <= kInlineChars
                   ? e.chars
                   : reinterpret_cast<const char16_t*>(arena.constData() + e.start);
    }
    bool sameKey(const Entry& e, QStringView key) const;
    static size_t hashOf(QStringView key);
    // Probes touch memory all over the table: a batch of keys asks for its
    // buckets, then for their entries, before any is compared.
    void prefetchBucket(size_t hash) const { __builtin_prefetch(&buckets[hash & mask]); }
    void prefetchEntry(size_t hash) const {
        const qint32 e = buckets[hash & mask].entry;
        if (e >= 0) __builtin_prefetch(&entries[size_t(e)]);
    }
    int find(QStringView key, size_t hash) const;
    // The first `count` cells of a captured key column, decoded and hashed,
    // to `take` (row from 0, key, hash) in row order; a batch at a time
    // asks for its buckets and entries before the first is taken.
    void eachKey(const StoredCells& keys, int count, EncodingType encoding,
                 const std::function<void(int, const QString&, size_t)>& take) const;
    // Prepares the buckets for up to `keys` keys.
    void reserve(int keys);
    // `key` is stored for source row `row` (counted from the first data
    // row); a key stored before takes the later row.
    void insert(QStringView key, size_t hash, int row);

    bool valid = false;
    EncodingType encoding_ = Utf8;
    QString arena; // the keys longer than kInlineChars, one after the other
    std::vector<Entry> entries;
    std::vector<Bucket> buckets; // open addressing, linear probing
    size_t mask = 0;
    std::vector<StoredCells> value_columns;               // the captures, owned
    std::vector<std::vector<QByteArrayView>> value_cells; // per column, per row, into them
};
