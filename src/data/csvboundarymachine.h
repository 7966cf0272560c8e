#pragma once

#include <QtGlobal>

#include <cstdint>

// Where lines and fields begin and end, by the reading state machine one code
// unit at a time, without copying a byte: the read-only store's scanner for
// wide files and odd delimiters, and the walk that finds a cell behind an
// index entry. Offsets are absolute, in code units. Its boundaries are those
// of CsvStateMachine: a line exists once a unit of it exists, a field once its
// first unit does, CR LF is one line end, and at the end of the data an
// unterminated quoted field loses a final delimiter or line end.
//
// Host provides, each returning false to stop the walk at once:
//   bool lineStart(qint64 unit)                   -- first unit of a line
//   bool fieldStart(qint64 unit, qint64 column)   -- first unit of a field (its
//                                                    terminator when empty)
//   bool fieldEnd(qint64 unit)                    -- one past the field's last unit
//   bool lineEnd(qint64 unit, qint64 fields)      -- the line's terminator, or the
//                                                    end of the data
template <int W, bool BigEndian, bool Delimited, class Host> class CsvBoundaryMachine {
public:
    CsvBoundaryMachine(Host& host, char delimiter, bool quotes)
        : host_(host), delimiter_(uint8_t(delimiter)), quotes_(quotes && Delimited) {}

    // Places the machine on the first unit of field `column` inside a line,
    // where every index entry points (a line end, for a column the line
    // lacks).
    void startInsideLine(qint64 column) {
        state_ = FieldStart;
        line_open_ = true;
        column_ = column - 1;
    }

    // `p` holds `units` whole code units, the first at unit offset `base`.
    bool feed(const char* p, qint64 units, qint64 base) {
        for (qint64 i = 0; i < units; ++i) {
            const uint32_t cur = unitCode(p + i * W);
            const qint64 at = base + i;
            last_ = cur;
            switch (state_) {
            case AfterCR:
                state_ = LineStart;
                if (cur == '\n') break;
                [[fallthrough]];
            case LineStart:
                line_open_ = true;
                column_ = -1;
                if (!host_.lineStart(at)) return false;
                [[fallthrough]];
            case FieldStart:
                if (!host_.fieldStart(at, ++column_)) return false;
                if (isDelimiter(cur) || isLineEnd(cur)) {
                    if (!terminate(cur, at)) return false;
                } else if (quotes_ && cur == '"') {
                    state_ = InQuotes;
                } else {
                    state_ = InField;
                }
                break;
            case InField:
                if ((isDelimiter(cur) || isLineEnd(cur)) && !terminate(cur, at)) return false;
                break;
            case InQuotes:
                if (cur == '"') state_ = AfterQuote;
                break;
            case AfterQuote:
                if (isDelimiter(cur) || isLineEnd(cur)) {
                    if (!terminate(cur, at)) return false;
                } else {
                    state_ = cur == '"' ? InQuotes : InField;
                }
                break;
            }
        }
        return true;
    }

    // The data ends at unit offset `end`: closes an open field and line.
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

    static bool isLineEnd(uint32_t code) {
        return code == '\r' || code == '\n' || (W == 1 && code == 0x1E);
    }
    static uint32_t unitCode(const char* u) {
        uint32_t code = 0;
        for (int k = 0; k < W; ++k)
            code = (code << 8) | uint8_t(u[BigEndian ? k : W - 1 - k]);
        return code;
    }

private:
    enum State : uint8_t { LineStart, FieldStart, InField, InQuotes, AfterQuote, AfterCR };

    bool isDelimiter(uint32_t code) const { return Delimited && code == delimiter_; }
    bool terminate(uint32_t cur, qint64 at) {
        if (!host_.fieldEnd(at)) return false;
        if (isDelimiter(cur)) {
            state_ = FieldStart;
            return true;
        }
        state_ = cur == '\r' ? AfterCR : LineStart;
        line_open_ = false;
        return host_.lineEnd(at, column_ + 1);
    }

    Host& host_;
    const uint32_t delimiter_;
    const bool quotes_;
    State state_ = LineStart;
    bool line_open_ = false;
    uint32_t last_ = 0;
    qint64 column_ = -1;
};
