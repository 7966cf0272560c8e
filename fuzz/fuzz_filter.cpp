// Filter strings come straight from the user and cell texts from any file:
// parse the first line as a filter and evaluate it against every later line.
#include "edit/filterdata.h"
#include "edit/filterterm.h"

#include <QString>
#include <QStringList>

#include <cstddef>
#include <cstdint>

namespace {

void check(bool condition) {
    if (!condition) __builtin_trap();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const QString input =
        QString::fromUtf8(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    QStringList lines = input.split(u'\n');
    const QString filter_text = lines.takeFirst();

    FilterData filter(FilterLine::forColumn(0), filter_text);
    filter.parse();
    // Parsing is a function of the text alone.
    FilterData again(FilterLine::forColumn(0), filter_text);
    again.parse();
    check(again.or_groups == filter.or_groups && again.use_regex == filter.use_regex);

    for (const QString& cell : lines) {
        cellMatchesFilter(filter, cell);
        FilterData case_sensitive = filter;
        case_sensitive.case_sensitive = true;
        cellMatchesFilter(case_sensitive, cell);

        // A cell's escaped contents select that cell.
        const QString trimmed = cell.trimmed();
        if (!trimmed.isEmpty()) {
            FilterData literal(FilterLine::forRow(0), escapeFilterString(trimmed));
            literal.parse();
            check(cellMatchesFilter(literal, trimmed));
        }

        const QString canonical = toCanonicalScientific(cell);
        if (!canonical.isNull()) {
            check(toCanonicalScientific(canonical) == canonical);
            check(compareBigNumbers(cell, canonical) == 0);
            const int forward = compareBigNumbers(filter_text, cell);
            const int backward = compareBigNumbers(cell, filter_text);
            check(forward == 0 ? backward == 0 : forward + backward == 3);
        }
    }
    return 0;
}
