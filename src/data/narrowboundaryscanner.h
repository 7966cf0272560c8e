#pragma once

#include <QtGlobal>

#include <cstdint>
#include <cstring>
#if defined(__SSE2__)
#include <emmintrin.h>
#endif

// The single-byte form of CsvBoundaryMachine, for the read-only store's two
// passes over the whole file. It reports the same boundaries in the same
// order, but instead of stepping through every byte it classifies 64 bytes at
// a time into bit masks (delimiters and line ends; quotes) and walks from one
// set bit to the next, so the cost follows the number of fields rather than
// the number of bytes. Quote state is tracked by the walk, not by a prefix sum
// over the quotes: a quote only opens a field at its first byte, and text
// after a closing quote drops back to an unquoted field.
//
// The delimiter must be none of CR, LF, RS and the quote (supportsDelimiter);
// the caller takes the unit machine for those dialects. Host as for
// CsvBoundaryMachine.
template <bool Delimited, class Host> class NarrowBoundaryScanner {
public:
    NarrowBoundaryScanner(Host& host, char delimiter, bool quotes)
        : host_(host), delimiter_(Delimited ? delimiter : '\n'), quotes_(quotes && Delimited) {}

    static bool supportsDelimiter(char d) {
        return (!Delimited || d != 0) && d != '\r' && d != '\n' && d != 0x1E && d != '"';
    }

    // Written with labels rather than a loop over a state switch: an indirect
    // jump per field cost more than all the rest of the work. The state and
    // the column live in registers and are stored only when the chunk ends.
    bool feed(const char* p, qint64 n, qint64 base) {
        if (n <= 0) return true;
        last_ = p[n - 1];
        Cursor cur(p, n, delimiter_, quotes_);
        qint64 i = 0;
        qint64 column = column_;
        switch (state_) {
        case AfterCR:
            if (p[0] == '\n' && ++i == n) {
                state_ = LineStart;
                return true;
            }
            cur.seek(i);
            goto line_start;
        case LineStart:
            cur.seek(0);
            goto line_start;
        case FieldStart:
            cur.seek(0);
            goto field_start;
        case InField:
            cur.seek(0);
            goto in_field;
        case InQuotes:
            goto in_quotes;
        case AfterQuote:
            goto after_quote;
        }

    line_start:
        line_open_ = true;
        column = -1;
        if (!host_.lineStart(base + i)) return false;
    field_start: // the cursor holds the special bytes from i on
        if (!host_.fieldStart(base + i, ++column)) return false;
        if (quotes_ && p[i] == '"') {
            ++i;
            goto in_quotes;
        }
    in_field:
        i = cur.nextSpecial();
        if (i == n) {
            column_ = column;
            state_ = InField;
            return true;
        }
    terminator : // p[i] closes the field; the cursor holds the special bytes after i
    {
        const char c = p[i];
        if (!host_.fieldEnd(base + i)) return false;
        ++i;
        if (isDelimiter(c)) {
            if (i < n) goto field_start;
            column_ = column;
            state_ = FieldStart;
            return true;
        }
        line_open_ = false;
        if (!host_.lineEnd(base + i - 1, column + 1)) return false;
        if (c == '\r') {
            if (i == n) {
                state_ = AfterCR;
                return true;
            }
            if (p[i] == '\n') cur.seek(++i);
        }
        if (i < n) goto line_start;
        state_ = LineStart;
        return true;
    }
    in_quotes:
        i = cur.nextQuote(i);
        if (i == n) {
            column_ = column;
            state_ = InQuotes;
            return true;
        }
        ++i;
    after_quote:
        if (i == n) {
            column_ = column;
            state_ = AfterQuote;
            return true;
        }
        if (isDelimiter(p[i]) || isLineEnd(p[i])) {
            cur.seek(i + 1);
            goto terminator;
        }
        if (p[i++] == '"') goto in_quotes;
        cur.seek(i);
        goto in_field;
    }

    bool finish(qint64 end) {
        if (state_ == InField || state_ == InQuotes || state_ == AfterQuote) {
            const bool lost = state_ == InQuotes && (isDelimiter(last_) || isLineEnd(last_));
            state_ = FieldStart;
            if (!host_.fieldEnd(lost ? end - 1 : end)) return false;
        }
        if (!line_open_) return true;
        line_open_ = false;
        return host_.lineEnd(end, column_ + 1);
    }

private:
    enum State : uint8_t { LineStart, FieldStart, InField, InQuotes, AfterQuote, AfterCR };

    // Bit masks over 64-byte blocks of the chunk (bit k stands for byte
    // block + k), with the special bytes not yet passed. Stepping to the next
    // one clears the lowest bit: no dependency on where the field began.
    class Cursor {
    public:
        Cursor(const char* p, qint64 n, char delimiter, bool quotes)
            : p_(p), n_(n), delimiter_(delimiter), quotes_(quotes) {}

        // Pending special bytes become those at or after i.
        void seek(qint64 i) {
            if (i >= n_) {
                block_ = n_;
                pending_ = 0;
                return;
            }
            const qint64 b = i & ~qint64(63);
            if (b != block_) load(b);
            pending_ = special_ & (~uint64_t(0) << (i - b));
        }

        // The next delimiter or line end, or n.
        qint64 nextSpecial() {
            while (pending_ == 0) {
                if (block_ + 64 >= n_) return n_;
                load(block_ + 64);
                pending_ = special_;
            }
            const qint64 at = block_ + __builtin_ctzll(pending_);
            pending_ &= pending_ - 1;
            return at;
        }

        // The next quote at or after i, or n. The special bytes are sought
        // again afterwards.
        qint64 nextQuote(qint64 i) {
            if (i >= n_) return n_;
            qint64 b = i & ~qint64(63);
            if (b != block_) load(b);
            uint64_t m = quote_ & (~uint64_t(0) << (i - b));
            while (m == 0) {
                b += 64;
                if (b >= n_) return n_;
                load(b);
                m = quote_;
            }
            return b + __builtin_ctzll(m);
        }

    private:
        void load(qint64 b) {
            block_ = b;
            const char* src = p_ + b;
            const qint64 avail = n_ - b;
            alignas(16) char tail[64];
            if (avail < 64) {
                // The zero padding matches no special byte: the delimiter is
                // never 0 here (a missing one is replaced by LF).
                std::memset(tail, 0, sizeof tail);
                std::memcpy(tail, src, size_t(avail));
                src = tail;
            }
#if defined(__SSE2__)
            const __m128i vd = _mm_set1_epi8(delimiter_);
            const __m128i vcr = _mm_set1_epi8('\r');
            const __m128i vlf = _mm_set1_epi8('\n');
            const __m128i vrs = _mm_set1_epi8(0x1E);
            const __m128i vq = _mm_set1_epi8('"');
            uint64_t s = 0, q = 0;
            for (int k = 0; k < 4; ++k) {
                const __m128i x = _mm_loadu_si128(reinterpret_cast<const __m128i*>(src + 16 * k));
                const __m128i m =
                    _mm_or_si128(_mm_or_si128(_mm_cmpeq_epi8(x, vd), _mm_cmpeq_epi8(x, vcr)),
                                 _mm_or_si128(_mm_cmpeq_epi8(x, vlf), _mm_cmpeq_epi8(x, vrs)));
                s |= uint64_t(uint16_t(_mm_movemask_epi8(m))) << (16 * k);
                if (quotes_)
                    q |= uint64_t(uint16_t(_mm_movemask_epi8(_mm_cmpeq_epi8(x, vq)))) << (16 * k);
            }
#else
            uint64_t s = 0, q = 0;
            for (int k = 0; k < 64; ++k) {
                const char c = src[k];
                s |= uint64_t(c == delimiter_ || c == '\r' || c == '\n' || c == 0x1E) << k;
                q |= uint64_t(quotes_ && c == '"') << k;
            }
#endif
            if (avail < 64) {
                const uint64_t valid = (uint64_t(1) << avail) - 1;
                s &= valid;
                q &= valid;
            }
            special_ = s;
            quote_ = q;
        }

        const char* p_;
        qint64 n_;
        char delimiter_;
        bool quotes_;
        qint64 block_ = -1;
        uint64_t special_ = 0;
        uint64_t quote_ = 0;
        uint64_t pending_ = 0;
    };

    bool isDelimiter(char c) const {
        return Delimited && c == delimiter_;
    }
    static bool isLineEnd(char c) {
        return c == '\r' || c == '\n' || c == 0x1E;
    }

    Host& host_;
    const char delimiter_;
    const bool quotes_;
    State state_ = LineStart;
    bool line_open_ = false;
    char last_ = 0;
    qint64 column_ = -1;
};
