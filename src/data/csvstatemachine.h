#pragma once

#include <QByteArray>

#include <cstdint>
#include <cstring>

// The reading state machine, one code unit at a time, exactly as the format
// is defined: the field buffer runs one unit behind the current unit, and the
// state, the previous unit and the buffer carry over chunk seams untouched.
// It serves the wide encodings (where units are 2 or 4 bytes) and is the
// reference that the fast single-byte scanner is checked against.
//
// Host provides:
//   bool lineStart(qint64 unit_offset) -- false cancels
//   void setCell(qint64 row, qint64 column, const char* bytes, size_t size)
// and optionally the same as setQuotedCell, for fields unwrapped from quotes.
template <int W, bool BigEndian, bool Delimited, class Host> class CsvStateMachine {
public:
    CsvStateMachine(Host& host, char delimiter, bool quotes)
        : host_(host), delimiter_(uint8_t(delimiter)), quotes_(quotes && Delimited) {
        std::memset(prev_bytes_, '0', W);
        prev_ = unitCode(prev_bytes_);
    }

    // `p` holds `units` whole code units, the first at unit offset `base`.
    bool feed(const char* p, qint64 units, qint64 base) {
        for (qint64 i = 0; i < units; ++i) {
            const char* unit = p + i * W;
            const uint32_t cur = unitCode(unit);
            seen_ = true;
            bool consumed = false;
            while (!consumed) {
                switch (state_) {
                case LineStart:
                    ++row_;
                    column_ = -1;
                    if (!host_.lineStart(base + i)) return false;
                    state_ = FieldStart;
                    break;
                case FieldStart:
                    ++column_;
                    buffer_.resize(0);
                    quoted_ = false;
                    if (isDelimiter(cur) || isLineEnd(cur))
                        state_ = FieldEnd;
                    else if (quotes_ && cur == '"')
                        state_ = InQuotes;
                    else
                        state_ = InField;
                    consumed = true;
                    break;
                case InField:
                    append();
                    if (isDelimiter(cur) || isLineEnd(cur)) state_ = FieldEnd;
                    consumed = true;
                    break;
                case InQuotes:
                    append();
                    if (cur == '"') state_ = AfterQuote;
                    consumed = true;
                    break;
                case AfterQuote:
                    append();
                    if (isDelimiter(cur) || isLineEnd(cur))
                        state_ = QuotedFieldEnd;
                    else if (cur == '"')
                        state_ = InQuotes;
                    else
                        state_ = InField;
                    consumed = true;
                    break;
                case QuotedFieldEnd:
                    quoted_ = unwrap();
                    [[fallthrough]];
                case FieldEnd:
                    emitField();
                    if (isDelimiter(prev_)) {
                        state_ = FieldStart;
                    } else if (prev_ == '\r' && cur == '\n') {
                        state_ = LineStart;
                        consumed = true;
                    } else {
                        state_ = LineStart;
                    }
                    break;
                }
            }
            std::memcpy(prev_bytes_, unit, W);
            prev_ = cur;
        }
        return true;
    }

    void finish() {
        // Nothing was read: there is no row to write into.
        if (!seen_) return;
        if (!isDelimiter(prev_) && !isLineEnd(prev_)) append();
        if (state_ == AfterQuote || state_ == QuotedFieldEnd) quoted_ = unwrap();
        // After a final line end this writes the last field again, as it was.
        emitField();
    }

private:
    enum State { LineStart, FieldStart, InField, InQuotes, AfterQuote, QuotedFieldEnd, FieldEnd };

    static uint32_t unitCode(const char* u) {
        uint32_t code = 0;
        for (int k = 0; k < W; ++k) {
            const uint32_t b = uint8_t(u[BigEndian ? k : W - 1 - k]);
            code = (code << 8) | b;
        }
        return code;
    }
    bool isDelimiter(uint32_t code) const { return Delimited && code == delimiter_; }
    static bool isLineEnd(uint32_t code) {
        return code == '\r' || code == '\n' || (W == 1 && code == 0x1E);
    }
    void append() { buffer_.append(prev_bytes_, W); }
    // Strips the enclosing quote units and collapses each doubled quote unit.
    bool unwrap() {
        const qsizetype n = buffer_.size() / W;
        if (n < 2) return false;
        QByteArray inner;
        inner.reserve(buffer_.size());
        const char* b = buffer_.constData();
        for (qsizetype k = 1; k < n - 1; ++k) {
            inner.append(b + k * W, W);
            if (unitCode(b + k * W) == '"' && k + 1 < n - 1 && unitCode(b + (k + 1) * W) == '"')
                ++k;
        }
        buffer_ = inner;
        return true;
    }
    void emitField() {
        const char* p = buffer_.constData();
        const size_t n = size_t(buffer_.size());
        if constexpr (requires { host_.setQuotedCell(row_, column_, p, n); }) {
            if (quoted_) {
                host_.setQuotedCell(row_, column_, p, n);
                return;
            }
        }
        host_.setCell(row_, column_, p, n);
    }

    Host& host_;
    const uint32_t delimiter_;
    const bool quotes_;
    State state_ = LineStart;
    char prev_bytes_[W];
    uint32_t prev_;
    QByteArray buffer_;
    qint64 row_ = -1;
    qint64 column_ = -1;
    bool seen_ = false;
    bool quoted_ = false; // the field in the buffer was unwrapped from quotes
};
