#include "generator.h"

#include <cstdint>
#include <cstring>
#include <string>

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

void appendText(std::string& s, SplitMix64& rng) {
    const int kind = int(rng.below(10));
    if (kind == 0) return; // empty
    std::string body;
    const int words = 2 + int(rng.below(7));
    for (int i = 0; i < words; ++i) {
        if (i) body += (rng.below(6) == 0) ? ", " : " ";
        body += pick(rng, kWords);
    }
    if (kind == 1) body += " \"quoted\" part";
    if (kind == 2) body += "\nsecond line";
    // Quoted only where the format needs it, as a minimal writer does, so
    // that the file saves back to the same bytes.
    if (body.find_first_of(",\"\n") == std::string::npos) {
        s += body;
        return;
    }
    s += '"';
    for (char c : body) {
        if (c == '"') s += '"';
        s += c;
    }
    s += '"';
}

} // namespace

bool generateMixedCsv(std::FILE* out, qint64 bytes, quint64 seed) {
    SplitMix64 rng{seed};
    std::string buf;
    buf.reserve(1 << 20);
    buf += "id,quantity,price,date,word,name,description,category,note,amount\n";
    qint64 written = 0;
    for (long long id = 1; written + qint64(buf.size()) < bytes; ++id) {
        appendInt(buf, id);
        buf += ',';
        if (rng.below(20)) appendInt(buf, (long long)rng.below(200000) - 1000);
        buf += ',';
        appendDecimal(buf, rng, 10000, false);
        buf += ',';
        char date[16];
        std::snprintf(date, sizeof date, "%04d-%02d-%02d", 1990 + int(rng.below(36)),
                      1 + int(rng.below(12)), 1 + int(rng.below(28)));
        buf += date;
        buf += ',';
        buf += pick(rng, kWords);
        buf += ',';
        buf += pick(rng, kFirst);
        buf += ' ';
        buf += pick(rng, kLast);
        buf += ',';
        appendText(buf, rng);
        buf += ',';
        buf += pick(rng, kCategories);
        buf += ',';
        if (rng.below(8) == 0) buf += pick(rng, kWords);
        buf += ',';
        appendDecimal(buf, rng, 100000, true);
        buf += '\n';
        if (buf.size() >= (1u << 20)) {
            if (std::fwrite(buf.data(), 1, buf.size(), out) != buf.size()) return false;
            written += qint64(buf.size());
            buf.clear();
        }
    }
    return std::fwrite(buf.data(), 1, buf.size(), out) == buf.size();
}
