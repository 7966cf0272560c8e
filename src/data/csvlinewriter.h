#pragma once

#include "abstractdatacontainer.h"
#include "savebuffer.h"

#include <QByteArrayView>

#include <cstring>
#include <type_traits>
#if defined(__SSE2__)
#include <emmintrin.h>
#endif

// Writes lines of cells in a save dialect: which cells get quotes, how short
// lines are padded and how a line ends. Both containers write through it, so a
// table saved from the editable store and from the read-only file gives the
// same bytes. `Out` is QByteArray or std::string; the save writes rows
// straight into its output buffer.
class CsvLineWriter {
public:
    CsvLineWriter(char delimiter, ParsingStandard standard, bool trailing_delimiters, int width,
                  bool big_endian);

    // Appends cells 0..n-1 chosen by the selection mode, the padding up to
    // `logical` positions, and the line end. `cell(i)` gives cell i as a
    // QByteArrayView. The column writers pass UnixLineEnding: a transposed
    // save always ends its lines in LF. `Padded` promises that 16 bytes can
    // be read from the start of every cell shorter than 16 bytes (the inline
    // cells of the store), which lets single-byte cells be tested and copied
    // with one vector load.
    //
    // `marked(i)` says that position i had quotes in the file and gets them
    // again, whether or not the standard asks for them; a padded position so
    // marked is written as an empty pair of quotes.
    struct NoMarks {
        bool operator()(int) const { return false; }
    };
    template <bool Padded = false, class Out, class CellAt, class Marked = NoMarks>
    void appendLine(Out& out, int n, int logical, SelectionMode mode, const IndexList& list,
                    CellAt&& cell, LineEndingType ending, Marked&& marked = {}) const {
        const auto start = out.size();
        if (mode == Only) {
            for (int i : list)
                if (i >= 0 && i < n) appendCell<Padded>(out, cell(i), marked(i));
        } else {
            size_t k = 0;
            for (int i = 0; i < n; ++i) {
                if (mode == Except && listed(list, k, i)) continue;
                appendCell<Padded>(out, cell(i), marked(i));
            }
            if (padding_) {
                for (int i = n; i < logical; ++i) {
                    if (mode == Except && listed(list, k, i)) continue;
                    if (marked(i))
                        appendCell(out, QByteArrayView(), true);
                    else
                        appendPadding(out, mode == All);
                }
            }
        }
        if (delimited_ && out.size() > start) out.resize(out.size() - width_);
        if (ending == WindowsLineEnding) {
            appendUnit(out, CR);
            appendUnit(out, LF);
        } else {
            appendUnit(out, ending == RecordSeparatorLineEnding ? RS : LF);
        }
    }

    // The cell with its quoting, then the delimiter. `quoted` asks for quotes
    // whatever the standard says (not without a delimiter, where nothing is
    // quoted).
    template <bool Padded = false, class Out>
    void appendCell(Out& out, QByteArrayView cell, bool quoted = false) const {
#if defined(__SSE2__)
        if constexpr (Padded && std::is_same_v<Out, SaveBuffer>) {
            if (width_ == 1 && delimited_) {
                appendPaddedCell(out, cell.data(), size_t(cell.size()), quoted);
                return;
            }
        }
#endif
        if (width_ != 1) {
            appendCellWide(out, cell, quoted);
            return;
        }
        if (!delimited_) {
            out.append(cell.data(), cell.size());
            return;
        }
        if (quoted || needsQuotes(cell))
            appendQuoted(out, cell.data(), cell.data() + cell.size(), "\"", 1);
        else
            out.append(cell.data(), cell.size());
        out.push_back(delimiter_);
    }

private:
    enum Unit { Delimiter, Quote, CR, LF, RS, UnitCount };

#if defined(__SSE2__)
    // The bytes that call for quotes, as a bit per byte of p[0..16).
    unsigned specialMask16(const char* p) const {
        const __m128i x = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
        const __m128i m = _mm_or_si128(_mm_or_si128(_mm_cmpeq_epi8(x, _mm_set1_epi8(delimiter_)),
                                                    _mm_cmpeq_epi8(x, _mm_set1_epi8(quote_test_))),
                                       _mm_or_si128(_mm_cmpeq_epi8(x, _mm_set1_epi8('\r')),
                                                    _mm_cmpeq_epi8(x, _mm_set1_epi8('\n'))));
        return unsigned(_mm_movemask_epi8(m));
    }
    bool needsQuotesPadded(const char* p, size_t n) const {
        if (standard_ != Rfc4180 && standard_ != SparseQuotes) return standard_ == AllQuotes;
        if (n < 16) return (specialMask16(p) & ((1u << n) - 1)) != 0;
        unsigned hit = specialMask16(p + n - 16); // the tail, overlapping
        for (size_t i = 0; i + 16 <= n && !hit; i += 16)
            hit = specialMask16(p + i);
        return hit != 0;
    }
    void appendPaddedCell(SaveBuffer& out, const char* p, size_t n, bool quoted) const {
        if (Q_UNLIKELY(quoted || needsQuotesPadded(p, n))) {
            appendQuoted(out, p, p + n, "\"", 1);
            out.push_back(delimiter_);
            return;
        }
        char* o = out.room(n + 17);
        if (n < 16)
            _mm_storeu_si128(reinterpret_cast<__m128i*>(o),
                             _mm_loadu_si128(reinterpret_cast<const __m128i*>(p)));
        else
            std::memcpy(o, p, n);
        o[n] = delimiter_;
        out.advance(n + 1);
    }
#endif

    // Mode Except walks an ascending list alongside the positions.
    static bool listed(const IndexList& list, size_t& k, int i) {
        while (k < list.size() && list[k] < i)
            ++k;
        return k < list.size() && list[k] == i;
    }

    // Branch-free scans without early exit: cells are short, and the compiler
    // turns these loops into vector compares.
    bool needsQuotes(QByteArrayView cell) const {
        const char* p = cell.data();
        const qsizetype n = cell.size();
        const char d = delimiter_;
        unsigned hit = 0;
        switch (standard_) {
        case Rfc4180:
            for (qsizetype i = 0; i < n; ++i) {
                const char c = p[i];
                hit |= unsigned(c == d) | unsigned(c == '"') | unsigned(c == '\r') |
                       unsigned(c == '\n');
            }
            return hit != 0;
        case SparseQuotes:
            for (qsizetype i = 0; i < n; ++i) {
                const char c = p[i];
                hit |= unsigned(c == d) | unsigned(c == '\r') | unsigned(c == '\n');
            }
            return hit != 0;
        case AllQuotes:
            return true;
        default:
            return false;
        }
    }

    // Wide cells are searched at every byte offset, not only at unit
    // boundaries: a false match only adds harmless quoting.
    bool needsQuotesWide(QByteArrayView cell) const {
        switch (standard_) {
        case Rfc4180:
            return cell.contains(unit(Delimiter)) || cell.contains(unit(Quote)) ||
                   cell.contains(unit(CR)) || cell.contains(unit(LF));
        case SparseQuotes:
            return cell.contains(unit(Delimiter)) || cell.contains(unit(CR)) ||
                   cell.contains(unit(LF));
        case AllQuotes:
            return true;
        default:
            return false;
        }
    }

    template <class Out> void appendCellWide(Out& out, QByteArrayView cell, bool quoted) const {
        if (!delimited_) {
            out.append(cell.data(), cell.size());
            return;
        }
        if (quoted || needsQuotesWide(cell))
            appendQuoted(out, cell.data(), cell.data() + cell.size(), units_[Quote], width_);
        else
            out.append(cell.data(), cell.size());
        appendUnit(out, Delimiter);
    }

    // The quote pattern around the bytes, and doubled wherever a code unit of
    // the cell is a quote.
    template <class Out>
    static void appendQuoted(Out& out, const char* p, const char* end, const char* quote, int w) {
        out.append(quote, w);
        while (p < end) {
            const char* q;
            if (w == 1) {
                q = static_cast<const char*>(std::memchr(p, *quote, size_t(end - p)));
            } else {
                // Only a whole unit is a quote: doubling a match that straddles
                // two units would insert a unit into the text.
                const QByteArrayView rest(p, end - p), pattern(quote, w);
                qsizetype at = rest.indexOf(pattern);
                while (at >= 0 && at % w != 0)
                    at = rest.indexOf(pattern, at + 1);
                q = at < 0 ? nullptr : p + at;
            }
            if (!q) {
                out.append(p, end - p);
                break;
            }
            out.append(p, q - p + w);
            out.append(quote, w);
            p = q + w;
        }
        out.append(quote, w);
    }

    template <class Out> void appendPadding(Out& out, bool all) const {
        if (all && standard_ == AllQuotes) {
            appendUnit(out, Quote);
            appendUnit(out, Quote);
        }
        appendUnit(out, Delimiter);
    }

    template <class Out> void appendUnit(Out& out, Unit u) const {
        out.append(units_[u], width_);
    }
    QByteArrayView unit(Unit u) const {
        return QByteArrayView(units_[u], width_);
    }

    char delimiter_;
    char quote_test_; // the quote where it calls for quoting, else the delimiter again
    ParsingStandard standard_;
    bool delimited_;
    bool padding_;
    int width_;
    // Code units as byte patterns of the file's width and byte order.
    char units_[UnitCount][4];
};
