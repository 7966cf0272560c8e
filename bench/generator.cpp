#include "generator.h"

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

namespace {

struct SplitMix64 {
    uint64_t state;
    uint64_t next() {
        uint64_t z = (state += 0x9E3779B97F4A7C15ull);
        z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
        z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
        return z ^ (z >> 31);
    }
    uint64_t below(uint64_t n) { return next() % n; }
};

const char* const kWords[] = {
    "alpha",   "harbour", "copper", "meadow", "signal",  "lantern", "quartz",  "willow",
    "ember",   "basalt",  "orchid", "falcon", "tundra",  "saffron", "granite", "pepper",
    "cobalt",  "juniper", "marble", "raven",  "thistle", "velvet",  "zephyr",  "anchor",
    "bramble", "cinder",  "delta",  "fjord",  "glacier", "hazel",   "indigo",  "kelp"};
const char* const kFirst[] = {"Ada",   "Björn", "Chidi",  "Dolores", "Emeka", "Fatima",
                              "Grace", "Hiro",  "Ingrid", "José",    "Kwame", "Lena",
                              "Mateo", "Nadia", "Omar",   "Priya",   "Quinn", "Rosa"};
const char* const kLast[] = {"Abbott", "Brennan", "Castillo", "Dubois", "Eriksen",  "Fischer",
                             "Gallo",  "Haddad",  "Ivanova",  "Jensen", "Kowalski", "Lindqvist",
                             "Moreau", "Novak",   "O'Neill",  "Petrov", "Rossi",    "Sato"};
const char* const kCategories[] = {"retail", "wholesale", "online", "partner", "internal"};

template <size_t N> const char* pick(SplitMix64& rng, const char* const (&list)[N]) {
    return list[rng.below(N)];
}

void appendInt(std::string& s, long long v) {
    s += std::to_string(v);
}

void appendDecimal(std::string& s, SplitMix64& rng, int max_int, bool negative_allowed) {
    if (negative_allowed && rng.below(5) == 0) s += '-';
    appendInt(s, (long long)rng.below(uint64_t(max_int)));
    s += '.';
    const int cents = int(rng.below(100));
    if (cents < 10) s += '0';
    appendInt(s, cents);
}

// One field of a row, and whether a writer that quotes non-numeric fields
// would leave it bare.
struct Field {
    std::string text;
    bool numeric = false;
};

void appendText(std::string& body, SplitMix64& rng) {
    const int kind = int(rng.below(10));
    if (kind == 0) return; // empty
    const int words = 2 + int(rng.below(7));
    for (int i = 0; i < words; ++i) {
        if (i) body += (rng.below(6) == 0) ? ", " : " ";
        body += pick(rng, kWords);
    }
    if (kind == 1) body += " \"quoted\" part";
    if (kind == 2) body += "\nsecond line";
}

// As Python's csv writer does it: minimal quoting only where the format needs
// it, or every field, or every field but the numbers. An empty number (a
// missing value) stays bare even then, while an empty text gets its quotes.
void appendField(std::string& s, const Field& f, CsvQuoting quoting) {
    const bool quote = quoting == CsvQuoting::All ||
                       (quoting == CsvQuoting::NonNumeric && !f.numeric) ||
                       f.text.find_first_of(",\"\r\n") != std::string::npos;
    if (!quote) {
        s += f.text;
        return;
    }
    s += '"';
    for (char c : f.text) {
        if (c == '"') s += '"';
        s += c;
    }
    s += '"';
}

void appendRow(std::string& s, const std::vector<Field>& row, CsvQuoting quoting, bool crlf) {
    for (size_t i = 0; i < row.size(); ++i) {
        if (i) s += ',';
        appendField(s, row[i], quoting);
    }
    s += crlf ? "\r\n" : "\n";
}

void mixedHeader(std::vector<Field>& row) {
    for (const char* name : {"id", "quantity", "price", "date", "word", "name", "description",
                             "category", "note", "amount"})
        row.push_back({name, false});
}

// The random draws are made in the same order as ever, so a seed gives the
// same minimally quoted file as before the other quotings existed.
void mixedRow(std::vector<Field>& row, SplitMix64& rng, long long id) {
    row.assign(10, Field());
    appendInt(row[0].text, id);
    row[0].numeric = true;
    if (rng.below(20)) appendInt(row[1].text, (long long)rng.below(200000) - 1000);
    row[1].numeric = true;
    appendDecimal(row[2].text, rng, 10000, false);
    row[2].numeric = true;
    char date[16];
    std::snprintf(date, sizeof date, "%04d-%02d-%02d", 1990 + int(rng.below(36)),
                  1 + int(rng.below(12)), 1 + int(rng.below(28)));
    row[3].text = date;
    row[4].text = pick(rng, kWords);
    row[5].text = pick(rng, kFirst);
    row[5].text += ' ';
    row[5].text += pick(rng, kLast);
    appendText(row[6].text, rng);
    row[7].text = pick(rng, kCategories);
    if (rng.below(8) == 0) row[8].text = pick(rng, kWords);
    appendDecimal(row[9].text, rng, 100000, true);
    row[9].numeric = true;
}

constexpr int kNumericColumns = 20;

void numericHeader(std::vector<Field>& row) {
    for (int c = 0; c < kNumericColumns; ++c) {
        Field f;
        f.text = 'c';
        appendInt(f.text, c + 1);
        row.push_back(f);
    }
}

// Even columns hold integers below 100, odd ones two-decimal numbers below
// 10 (readings, counts, scores); about one cell in eight is missing. Cells
// of two to four bytes are where a per-cell cost shows most.
void numericRow(std::vector<Field>& row, SplitMix64& rng) {
    row.assign(kNumericColumns, Field());
    for (int c = 0; c < kNumericColumns; ++c) {
        Field& f = row[size_t(c)];
        f.numeric = true;
        if (rng.below(8) == 0) continue;
        if (c % 2 == 0)
            appendInt(f.text, (long long)rng.below(100));
        else
            appendDecimal(f.text, rng, 10, false);
    }
}

} // namespace

bool generateCsv(std::FILE* out, qint64 bytes, quint64 seed, CsvShape shape, CsvQuoting quoting,
                 bool crlf) {
    SplitMix64 rng{seed};
    std::string buf;
    buf.reserve(1 << 20);
    std::vector<Field> row;
    if (shape == CsvShape::Numeric)
        numericHeader(row);
    else
        mixedHeader(row);
    appendRow(buf, row, quoting, crlf);
    qint64 written = 0;
    for (long long id = 1; written + qint64(buf.size()) < bytes; ++id) {
        if (shape == CsvShape::Numeric)
            numericRow(row, rng);
        else
            mixedRow(row, rng, id);
        appendRow(buf, row, quoting, crlf);
        if (buf.size() >= (1u << 20)) {
            if (std::fwrite(buf.data(), 1, buf.size(), out) != buf.size()) return false;
            written += qint64(buf.size());
            buf.clear();
        }
    }
    return std::fwrite(buf.data(), 1, buf.size(), out) == buf.size();
}

bool generateMixedCsv(std::FILE* out, qint64 bytes, quint64 seed) {
    return generateCsv(out, bytes, seed, CsvShape::Mixed, CsvQuoting::Minimal, false);
}
