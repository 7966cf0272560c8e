// The CSV readers on arbitrary bytes. The first three bytes choose the
// dialect: delimiter, quoting standard and encoding, chunk size; the rest is
// the file. Every input is loaded through the four entry points (with and
// without a delimiter, at its own width and at width 1), and each result must
// equal the unit-by-unit state machine run over the whole input in memory:
// for width 1 that checks the fast scanner, for every width it checks the
// chunk seams and the byte order mark. The cells' quote marks must agree too.
#include "data/csvstatemachine.h"
#include "data/editabledatacontainer.h"
#include "data/fileparameters.h"
#include "fuzzinput.h"

#include <QByteArrayView>
#include <QString>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <unistd.h>

namespace {

void check(bool condition, const char* what) {
    if (!condition) {
        std::fprintf(stderr, "fuzz_csv_reader: %s\n", what);
        std::abort();
    }
}

class StoreHost {
public:
    explicit StoreHost(EditableDataContainer& c) : c_(c) {}
    bool lineStart(qint64) { return true; }
    void setCell(qint64 row, qint64 column, const char* bytes, size_t size) {
        c_.setCell(int(row), int(column), QByteArrayView(bytes, qsizetype(size)));
    }
    void setQuotedCell(qint64 row, qint64 column, const char* bytes, size_t size) {
        c_.setCell(int(row), int(column), QByteArrayView(bytes, qsizetype(size)), true);
    }

private:
    EditableDataContainer& c_;
};

template <int W, bool BigEndian>
void reference(EditableDataContainer& out, QByteArrayView body, char delimiter, bool quotes) {
    StoreHost host(out);
    if (delimiter) {
        CsvStateMachine<W, BigEndian, true, StoreHost> m(host, delimiter, quotes);
        m.feed(body.data(), body.size() / W, 0);
        m.finish();
    } else {
        CsvStateMachine<W, BigEndian, false, StoreHost> m(host, 0, false);
        m.feed(body.data(), body.size() / W, 0);
        m.finish();
    }
}

void referenceLoad(EditableDataContainer& out, QByteArrayView file, EncodingType encoding,
                   char delimiter, bool quotes) {
    const QByteArrayView body = file.sliced(bomLengthAtStart(file, encoding));
    const int w = encodingWidth(encoding);
    const bool be = encodingIsBigEndian(encoding);
    if (w == 1)
        reference<1, false>(out, body, delimiter, quotes);
    else if (w == 2 && be)
        reference<2, true>(out, body, delimiter, quotes);
    else if (w == 2)
        reference<2, false>(out, body, delimiter, quotes);
    else if (be)
        reference<4, true>(out, body, delimiter, quotes);
    else
        reference<4, false>(out, body, delimiter, quotes);
}

void compare(const EditableDataContainer& got, const EditableDataContainer& want) {
    check(got.rowCount() == want.rowCount(), "row count differs from the state machine");
    check(got.columnCount() == want.columnCount(), "column count differs from the state machine");
    check(got.storedRowCount() == want.storedRowCount(), "stored rows differ");
    for (int r = 0; r < got.storedRowCount(); ++r) {
        check(got.storedCellCount(r) == want.storedCellCount(r), "stored cells differ");
        check(got.storedCellCount(r) <= got.columnCount(), "row longer than the column count");
        for (int c = 0; c < got.storedCellCount(r); ++c)
            check(got.cellView(r, c) == want.cellView(r, c), "cell differs from the state machine");
        for (int c = 0; c < got.columnCount(); ++c)
            check(got.isQuoted(r, c) == want.isQuoted(r, c), "quote mark differs");
    }
}

// One file per process, replaced (not truncated) for every input and removed
// at exit. A plain array, so that it outlives the exit handler.
char g_path[64];

const char* filePath() {
    if (!g_path[0]) {
        std::snprintf(g_path, sizeof g_path, "/tmp/fuzz_csv_reader.%ld.csv", long(getpid()));
        std::atexit([] { ::unlink(g_path); });
    }
    return g_path;
}

void loadAndCompare(QByteArrayView file, char delimiter, ParsingStandard standard,
                    EncodingType encoding, qint64 chunk) {
    EditableDataContainer c;
    c.setFilepath(QString::fromLocal8Bit(filePath()));
    c.setDelimiters(delimiter, delimiter);
    c.setParsingStandard(standard);
    c.setEncoding(encoding);
    if (chunk > 0) c.setChunkLimit(chunk);
    check(c.loadCSV(), "load of an existing file failed");
    check(c.fileSize() == file.size(), "file size");
    const qsizetype mark = bomLengthAtStart(file, encoding);
    check(c.hasBom() == (mark > 0), "byte order mark");

    EditableDataContainer want;
    referenceLoad(want, file, encoding, delimiter, standard != DelimiterOnly);
    compare(c, want);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    FuzzDialect d;
    if (!readFuzzDialect(data, size, d)) return 0;
    const auto [delimiter, standard, encoding, chunk] = d;
    const QByteArrayView file(reinterpret_cast<const char*>(data + 3), qsizetype(size - 3));
    if (!replaceFile(filePath(), data + 3, size - 3)) return 0;

    // loadCSV dispatches on width and delimiter: this covers the fast narrow
    // scanner (or the state machine for odd delimiters), the narrow reader
    // without delimiter and both wide readers.
    static constexpr EncodingType kWide[] = {Utf16LE, Utf16BE, Utf32LE, Utf32BE};
    const bool is_wide = encodingWidth(encoding) > 1;
    const EncodingType narrow = is_wide ? Utf8 : encoding;
    const EncodingType wide = is_wide ? encoding : kWide[data[0] % 4];
    for (EncodingType e : {narrow, wide}) {
        loadAndCompare(file, delimiter, standard, e, chunk);
        loadAndCompare(file, 0, standard, e, chunk);
    }
    return 0;
}
