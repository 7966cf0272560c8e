#include "csvlinewriter.h"

CsvLineWriter::CsvLineWriter(char delimiter, ParsingStandard standard, bool trailing_delimiters,
                             int width, bool big_endian)
    : delimiter_(delimiter), quote_test_(standard == Rfc4180 ? '"' : delimiter),
      standard_(standard), delimited_(delimiter != 0),
      padding_(delimiter != 0 && trailing_delimiters), width_(width) {
    const char bytes[UnitCount] = {delimiter, '"', '\r', '\n', '\x1E'};
    for (int u = 0; u < UnitCount; ++u) {
        std::memset(units_[u], 0, sizeof units_[u]);
        units_[u][big_endian ? width - 1 : 0] = bytes[u];
    }
}
