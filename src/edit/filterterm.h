#pragma once

#include <QString>

#include <cstdint>

// One wildcard piece of a parsed filter: either a literal text or a numeric
// comparison against one or two bounds.
struct FilterTerm {
    enum Comparison : uint32_t {
        Text = 0,
        LessThan = 1,
        LessOrEqual = 2,
        GreaterThan = 3,
        GreaterOrEqual = 4,
        Between = 5,
    };

    uint32_t comparison = Text;
    // Text: the literal, unescaped and trimmed. Comparisons: the first bound as written.
    QString text1;
    // Between: the second bound as written.
    QString text2;
    // Carried by every piece of an AND entry that began with "!".
    bool negated = false;

    bool operator==(const FilterTerm&) const = default;
};

// Number texts up to this length are compared as doubles; longer ones could
// hold more digits than a double keeps and take the exact decimal path.
inline constexpr qsizetype kMaxDoubleNumberLength = 16;

// Whether `cell_text`, read as a number, satisfies the comparison of `term`.
// A cell that does not read as a number fails every comparison.
bool compareNumberToTerm(const QString& cell_text, const FilterTerm& term);

// Rewrites a decimal number as "<sign><digit>.<digits>E<sign><exponent>"
// ("+5.0E+0", "-1.25E-3", zero as "+0.0E+0"), keeping every digit written.
// Returns a null string for a text that is not a plain decimal number.
QString toCanonicalScientific(QStringView number);

// Exact order of two numbers in canonical scientific form (other decimal
// texts are brought to it first): 0 equal, 1 when a is less, 2 when a is
// greater. Texts that are not numbers compare as equal.
int compareBigNumbers(const QString& a, const QString& b);
