// Prompt answers and cell texts through the address, list, range and value
// parsers and the date-time conversion. The first byte picks modes; the rest
// is UTF-8 text. For the date conversion a first line, when there is one, is
// the custom format and the rest the cell.

#include "edit/addressparsers.h"
#include "edit/casetransforms.h"
#include "edit/celltransforms.h"
#include "edit/datetimeconversion.h"
#include "edit/numbertransforms.h"
#include "edit/valueparsers.h"

#include <cstdint>
#include <cstdlib>

namespace {

void check(bool condition) {
    if (!condition) std::abort();
}

void fuzzAddresses(const QString& text, uint8_t mode) {
    int row = -1;
    int col = -1;
    parseCellAddress(row, col, text, mode & 1, mode & 2);
    row = col = -1;
    parseLetterAddress(row, col, text);
    check(col == -1 || col > 0);
    row = col = -1;
    parseRowFirst(row, col, text);
    check(row >= -1 && col >= -1);
    row = col = -1;
    parseColumnFirst(row, col, text);
    check(row >= -1 && col >= -1);

    QList<int> indexes;
    QString label;
    parseColumnList(indexes, label, text, mode & 4);
    check(indexes.size() <= kMaxListedIndexes);
    check(indexes.isEmpty() == label.isEmpty());

    QList<QPair<double, double>> doubles;
    QList<QPair<qint64, qint64>> integers;
    QString double_label;
    QString integer_label;
    parseDoubleRanges(doubles, double_label, text);
    parseIntegerRanges(integers, integer_label, text);
    check(doubles.isEmpty() == double_label.isEmpty());
    check(integers.isEmpty() == integer_label.isEmpty());

    const int index = columnLettersToIndex(text);
    check(index == -1 || (index > 0 && columnIndexToLetters(index) == text));
}

void fuzzDates(const QString& text, uint8_t mode) {
    const qsizetype cut = text.indexOf(u'\n');
    const QString format = cut >= 0 ? text.left(cut) : QStringLiteral("yyyy-MM-dd h:mm:ss.zzz AP");
    const QString cell = cut >= 0 ? text.mid(cut + 1) : text;
    const auto from = DateTimeFormatKind(mode % kDateTimeFormatKindCount);
    const auto to =
        DateTimeFormatKind((mode / kDateTimeFormatKindCount) % kDateTimeFormatKindCount);
    const QString converted = convertDateTime(cell, from, to, format, format, 2024);

    // Seconds and ISO texts within the ISO years must come back unchanged.
    if (from == DateTimeFormatKind::UnixSeconds && to == DateTimeFormatKind::Iso8601 &&
        !converted.isEmpty()) {
        const QString seconds = convertDateTime(converted, to, from, {}, {});
        check(convertDateTime(seconds, from, to, {}, {}) == converted);
    }

    classifyText(cell);
    deriveDateFormat(cell);
}

void fuzzValues(const QString& text, uint8_t mode) {
    normaliseNumberText(text, mode % 4, QLocale::c());
    normaliseNumberText(text, mode % 3, QLocale(QLocale::German));
    stripLeadingZeros(text);
    convertNumberFormat(text, mode & 1);
    zeroFill(text, mode % 10);
    toTitleCase(text);
    toAcronym(text);
    check(parseSeries(text, 5).size() == 5);

    RandomEngine engine(mode);
    if (const auto choices = parseRandomIntegerChoices(text)) {
        const qint64 value = drawRandomInteger(*choices, engine);
        bool inside = false;
        for (const auto& [low, high] : choices->ranges)
            inside = inside || (value >= low && value <= high);
        check(inside);
    }
    if (const auto choices = parseRandomDecimalChoices(text)) drawRandomDecimal(*choices, engine);

    const ReshapeShape shape = reshapeShape(text, 1000, mode & 1);
    check(!shape.isValid() || qint64(shape.rows) * shape.cols < 2000);
    if (const auto indexes = parseSplitIndexes(text))
        check(splitByIndexes(text, *indexes).size() == indexes->size() + 1);
    if (const auto pair = parseIndexAndCount(text)) keepMiddle(text, pair->first, pair->second);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0) return 0;
    const uint8_t mode = data[0];
    const QString text =
        QString::fromUtf8(reinterpret_cast<const char*>(data + 1), qsizetype(size - 1));
    fuzzAddresses(text, mode);
    fuzzDates(text, mode);
    fuzzValues(text, mode);
    return 0;
}
