#pragma once

#include <QtGlobal>

#include <concepts>
#include <cstdint>
#include <cstring>
#include <string>
#if defined(__SSE2__)
#include <emmintrin.h>
#endif

// The single-byte reader. It produces exactly the cells of the unit-by-unit
// state machine (CsvStateMachine<1, ...>), but instead of stepping through
// every byte it jumps from one special byte to the next and hands each field
// to the host straight out of the chunk. Only a field cut by a chunk seam is
// copied into the spill buffer first, and only a quoted field holding doubled
// quotes is rewritten.
//
// A field that was unwrapped from quotes goes to the host's setQuotedCell,
// when it has one, so that a save can quote it again.
//
// It assumes the delimiter is none of CR, LF, RS or the quote; the caller uses
// the state machine for those odd dialects. Without `Delimited` each line is
// one cell and quotes mean nothing.
template <bool Delimited, class Host> class NarrowCsvScanner {
public:
    NarrowCsvScanner(Host& host, char delimiter, bool quotes)
        : host_(&host), delimiter_(delimiter), quotes_(quotes && Delimited) {}

    static bool supportsDelimiter(char d) {
        return d != 0 && d != '\r' && d != '\n' && d != 0x1E && d != '"';
    }

    // For a split read: a second scanner reads the second half of a chunk from
    // a guessed line start while this one reads the first half. The guess
    // holds when this scanner ends its half exactly at a line start; the
    // second scanner then carries on for both, its rows shifted behind ours.
    bool atLineStart() const { return state_ == LineStart; }
    qint64 linesSeen() const { return row_ + 1; }
    void continueAfter(qint64 lines_before, Host& host) {
        row_ += lines_before;
        host_ = &host;
    }

    bool feed(const char* p, qint64 n, qint64 base) {
        block_ = -64; // the block cache holds positions of the previous chunk
        qint64 i = 0;
        qint64 begin = 0; // start of the current field in this chunk
        while (i < n) {
            switch (state_) {
            case AfterCR:
                if (p[i] == '\n') ++i;
                state_ = LineStart;
                break;
            case LineStart:
                ++row_;
                column_ = -1;
                if (!host_->lineStart(base + i)) return false;
                [[fallthrough]];
            case FieldStart: {
                ++column_;
                spill_.clear();
                if constexpr (kTakesLines) {
                    if (column_ == 0) {
                        const Taken taken = wholeLine(p, i, n);
                        if (taken == LineTaken) break;
                        if (taken == SeamAfterDelimiter) {
                            state_ = FieldStart;
                            break;
                        }
                    }
                }
                // The unquoted fields of a line in one tight loop: the field
                // runs to the next special byte, which may be its first.
                for (;;) {
                    begin = i;
                    if (p[i] == '"' && quotes_) {
                        ++i;
                        doubled_ = false;
                        state_ = InQuotes;
                        break;
                    }
                    const qint64 j = findSpecial(p, i, n);
                    if (j == n) {
                        i = n;
                        state_ = InField;
                        break;
                    }
                    cellInChunk(p, begin, j, n);
                    const char c = p[j];
                    i = j + 1;
                    if (!isDelimiter(c)) {
                        lineEnd(c, p, i, n);
                        break;
                    }
                    if (i == n) {
                        state_ = FieldStart;
                        break;
                    }
                    ++column_;
                }
                break;
            }
            case InField: {
                const qint64 j = findSpecial(p, i, n);
                if (j == n) {
                    i = n;
                    break;
                }
                emitField(p + begin, j - begin);
                const char c = p[j];
                i = j + 1;
                if (isDelimiter(c))
                    state_ = FieldStart;
                else
                    lineEnd(c, p, i, n);
                break;
            }
            case InQuotes: {
                const void* q = std::memchr(p + i, '"', size_t(n - i));
                if (!q) {
                    i = n;
                    break;
                }
                i = static_cast<const char*>(q) - p + 1;
                state_ = AfterQuote;
                break;
            }
            case AfterQuote: {
                const char c = p[i];
                if (isDelimiter(c) || isLineEnd(c)) {
                    emitQuoted(p + begin, i - begin);
                    ++i;
                    if (isDelimiter(c))
                        state_ = FieldStart;
                    else
                        lineEnd(c, p, i, n);
                } else if (c == '"') {
                    doubled_ = true;
                    ++i;
                    state_ = InQuotes;
                } else {
                    ++i;
                    state_ = InField; // text after the closing quote: kept literally
                }
                break;
            }
            }
        }
        // A field still open at the seam continues in the next chunk.
        if (state_ == InField || state_ == InQuotes || state_ == AfterQuote)
            spill_.append(p + begin, size_t(n - begin));
        return true;
    }

    void finish() {
        switch (state_) {
        case InField:
            host_->setCell(row_, column_, spill_.data(), spill_.size());
            break;
        case InQuotes: {
            // Unterminated: kept with its opening quote; a final delimiter or
            // line end is lost.
            size_t n = spill_.size();
            if (n > 0) {
                const char last = spill_[n - 1];
                if (isDelimiter(last) || isLineEnd(last)) --n;
            }
            host_->setCell(row_, column_, spill_.data(), n);
            break;
        }
        case AfterQuote:
            emitQuoted(nullptr, 0);
            break;
        default:
            break; // the last field was written when its terminator was seen
        }
    }

private:
    enum State { LineStart, FieldStart, InField, InQuotes, AfterQuote, AfterCR };
    enum Taken { LineTaken, SeamAfterDelimiter, FieldByField };

    // A host that can store a line in one piece is given whole lines. On
    // narrow rows the per-field hand-over cost more than finding the fields:
    // each one went through the host's row state in memory. The whole-line
    // path only notes where fields end, in a small array, and the host makes
    // the row's block straight from the chunk.
    static constexpr bool kTakesLines = requires(Host & h, const uint32_t* s) {
        { h.setLine(qint64(0), "", s, 0, uint64_t(0), qint64(0)) } -> std::same_as<bool>;
    };
    static constexpr int kLineFields = 256;

    // From the start of a line at i: its fields up to its end, when that is
    // in this chunk, the line has not too many fields, and each quoted field
    // is among the first 64 and simply wrapped in quotes. Otherwise the fields found so far go over
    // one by one, as the field loop would have sent them, and the caller goes on from the first
    // field not sent (column_ and i say which).
    Taken wholeLine(const char* p, qint64& i, qint64 n) {
        const qint64 start = i;
        int fields = 0;
        uint64_t quoted = 0;
        for (;;) {
            qint64 j;
            if (p[i] == '"' && quotes_) {
                // Its end is the next quote, which must close it: a doubled
                // quote or text after the closing one goes field by field.
                const void* q =
                    fields < 64 ? std::memchr(p + i + 1, '"', size_t(n - i - 1)) : nullptr;
                if (!q) break;
                j = static_cast<const char*>(q) - p + 1;
                if (j == n || !(isDelimiter(p[j]) || isLineEnd(p[j]))) break;
                quoted |= uint64_t(1) << fields;
            } else {
                j = findSpecial(p, i, n);
                if (j == n || fields == kLineFields) break;
            }
            stops_[fields++] = uint32_t(j - start);
            const char c = p[j];
            i = j + 1;
            if (!isDelimiter(c)) {
                if (!host_->setLine(row_, p + start, stops_, fields, quoted, n - start))
                    replayFields(p, start, fields, quoted, n);
                column_ = fields - 1;
                lineEnd(c, p, i, n);
                return LineTaken;
            }
            if (i == n) {
                replayFields(p, start, fields, quoted, n);
                column_ = fields - 1;
                return SeamAfterDelimiter;
            }
        }
        replayFields(p, start, fields, quoted, n);
        column_ = fields;
        return FieldByField;
    }
    void replayFields(const char* p, qint64 start, int fields, uint64_t quoted, qint64 n) {
        for (int k = 0; k < fields; ++k) {
            column_ = k;
            const qint64 begin = k ? start + stops_[k - 1] + 1 : start;
            const qint64 end = start + stops_[k];
            if (k < 64 && (quoted >> k) & 1)
                quotedCell(p + begin + 1, size_t(end - begin - 2));
            else
                cellInChunk(p, begin, end, n);
        }
    }

    bool isDelimiter(char c) const { return Delimited && c == delimiter_; }
    static bool isLineEnd(char c) {
        const unsigned u = uint8_t(c);
        return u < 32 && ((1u << u) & ((1u << '\r') | (1u << '\n') | (1u << 0x1E)));
    }
    void lineEnd(char c, const char* p, qint64& i, qint64 n) {
        if (c != '\r') {
            state_ = LineStart;
        } else if (i < n) {
            if (p[i] == '\n') ++i;
            state_ = LineStart;
        } else {
            state_ = AfterCR;
        }
    }
    // The next delimiter or line end at or after i. Each 64-byte block is
    // classified once into a bit mask and the fields inside it are found by
    // bit scans, so short fields don't pay for a vector search each.
    qint64 findSpecial(const char* p, qint64 i, qint64 n) {
#if defined(__SSE2__)
        for (;;) {
            qint64 off = i - block_;
            // A scan may come back to a position before the cached block
            // (a whole-line attempt that gave up): classify afresh there.
            if (off < 0 || off >= 64) {
                if (i + 64 > n) break;
                block_ = i;
                block_mask_ = specialMask(p + i);
                off = 0;
            }
            const uint64_t m = block_mask_ >> off;
            if (m) return i + __builtin_ctzll(m);
            i = block_ + 64;
        }
#endif
        for (; i < n; ++i) {
            const char c = p[i];
            if (isDelimiter(c) || isLineEnd(c)) return i;
        }
        return n;
    }
#if defined(__SSE2__)
    uint64_t specialMask(const char* q) const {
        const __m128i vd = _mm_set1_epi8(Delimited ? delimiter_ : '\n');
        const __m128i vcr = _mm_set1_epi8('\r');
        const __m128i vlf = _mm_set1_epi8('\n');
        const __m128i vrs = _mm_set1_epi8(0x1E);
        uint64_t mask = 0;
        for (int k = 0; k < 4; ++k) {
            const __m128i x = _mm_loadu_si128(reinterpret_cast<const __m128i*>(q + 16 * k));
            const __m128i m =
                _mm_or_si128(_mm_or_si128(_mm_cmpeq_epi8(x, vd), _mm_cmpeq_epi8(x, vcr)),
                             _mm_or_si128(_mm_cmpeq_epi8(x, vlf), _mm_cmpeq_epi8(x, vrs)));
            mask |= uint64_t(unsigned(_mm_movemask_epi8(m))) << (16 * k);
        }
        return mask;
    }
#endif
    // The field's bytes: the spilled head, if a seam cut it, then [p, p+len).
    void emitField(const char* p, qint64 len) {
        if (spill_.empty()) {
            host_->setCell(row_, column_, p, size_t(len));
        } else {
            spill_.append(p, size_t(len));
            host_->setCell(row_, column_, spill_.data(), spill_.size());
        }
    }
    // `raw` runs from the opening quote to the closing quote inclusive.
    void emitQuoted(const char* p, qint64 len) {
        const char* raw = p;
        size_t n = size_t(len);
        if (!spill_.empty()) {
            if (n) spill_.append(p, n);
            raw = spill_.data();
            n = spill_.size();
        }
        if (n < 2) { // cannot happen for a closed quote; stay safe
            host_->setCell(row_, column_, raw, n);
            return;
        }
        if (!doubled_) {
            quotedCell(raw + 1, n - 2);
            return;
        }
        collapsed_.clear();
        for (size_t k = 1; k + 1 < n; ++k) {
            collapsed_.push_back(raw[k]);
            if (raw[k] == '"' && k + 2 < n && raw[k + 1] == '"') ++k;
        }
        quotedCell(collapsed_.data(), collapsed_.size());
    }
    // A field straight out of the chunk. A host that can use it is told when
    // 16 bytes may be read from the field's start, which is nearly always.
    Q_ALWAYS_INLINE void cellInChunk(const char* p, qint64 begin, qint64 end, qint64 n) {
        if constexpr (requires { host_->setCellPadded(row_, column_, p, size_t(0)); }) {
            if (Q_LIKELY(begin + 16 <= n)) {
                host_->setCellPadded(row_, column_, p + begin, size_t(end - begin));
                return;
            }
        }
        host_->setCell(row_, column_, p + begin, size_t(end - begin));
    }
    // A host that keeps the file's quoting learns which fields had quotes.
    void quotedCell(const char* p, size_t n) {
        if constexpr (requires { host_->setQuotedCell(row_, column_, p, n); })
            host_->setQuotedCell(row_, column_, p, n);
        else
            host_->setCell(row_, column_, p, n);
    }

    Host* host_;
    char delimiter_;
    bool quotes_;
    State state_ = LineStart;
    qint64 row_ = -1;
    qint64 column_ = -1;
    bool doubled_ = false;
    std::string spill_;
    std::string collapsed_;
    qint64 block_ = -64;
    uint64_t block_mask_ = 0;
    // Where the fields of the line being gathered end, from its start.
    uint32_t stops_[kTakesLines ? kLineFields : 1];
};
