#include "edit/filterdata.h"
#include "edit/filterterm.h"

#include <QRandomGenerator>
#include <QTest>

namespace {

FilterData parsed(const QString& text) {
    FilterData filter(FilterLine::forColumn(0), text);
    filter.parse();
    return filter;
}

struct MatchCase {
    const char* filter;
    const char* cell;
    bool expected;
};

// clang-format off
const MatchCase kMatchCases[] = {
    // The examples of the help text.
    {"abc*", "abcdef", true},
    {"*abc*&*def*|*ghi", "def123abc", true}, {"*abc*&*def*|*ghi", "ghi", true},
    {"*abc*&*def*|*ghi", "abc", false},      {"*abc*&*def*|*ghi", "def", false},
    {"!*abc*", "def", true},   {"!*abc*", "abcdef", false},
    {"<50", "30", true},       {"<50", "70", false},
    {"<=50", "50", true},      {"<=50", "30", true},      {"<=50", "70", false},
    {"50+", "50", true},       {"50+", "70", true},       {"50+", "30", false},
    {"0-10", "0", true},       {"0-10", "4.2", true},     {"0-10", "10", true},
    {"0-10", "12", false},     {"0-10", "abc", false},
    // Each comparison template, and the bounds in either order.
    {"10-0", "0", true},       {"10-0", "4.2", true},     {"10-0", "10", true},
    {"10-0", "12", false},     {"-5-", "-5", true},       {"-5-", "-7", true},
    {"-5-", "-4", false},      {"50-", "30", true},       {"50-", "70", false},
    {" < 5 ", "5", false},     {"5>", "4", true},         {"5>=", "5", true},
    {">5", "5", false},        {"5<", "6", true},         {">=5", "5", true},
    {"5<=", "4", false},       {"-5--3", "-4", true},     {">=1e3", " 1000.0 ", true},
    {"<12345678901234567890", "12345678901234567889", true},
    {"<12345678901234567890", "12345678901234567890", false},
    // Text pieces: whole-cell, any case, first occurrence, no backtracking.
    {"abc", "ABC", true},      {"abc", "abcd", false},    {"abc*", "xabc", false},
    {"*abc", "xxabc", true},   {"*abc", "abcabc", false}, {"*ab", "abab", false},
    {"*", "x", true},          {"", "", true},            {"", "x", false},
    {"50", "50.0", false},     {"<5", "abc", false},      {"!<5", "abc", true},
    {"a&!b*", "a", true},      {"*a*&!b*", "ba", false},  {"*a*&!b*", "ab", true},
    {"a|b&c", "a", true},      {"a|b&c", "b", false},     {"a|b*&*c", "bxc", true},
    {"<5*abc", "3abc", true},  {"<5*abc", "7abc", false}, {"<5*abc", "x3abc", false},
    {"id*>10", "id42", true},  {"id*>10", "id7", false},
    // Escapes.
    {R"(\#abc)", "#abc", true},      {"abc#", "abc#", true},
    {R"(a\*b)", "a*b", true},        {R"(a\*b)", "axxb", false},
    {R"(a\|b)", "a|b", true},        {R"(a\|b)", "a", false},
    {R"(a\&b)", "a&b", true},        {R"(\<5)", "<5", true},
    {R"(\<5)", "3", false},          {R"(5\+)", "5+", true},
    {R"(0\-10)", "0-10", true},      {R"(0\-10)", "5", false},
    {R"(\!a)", "!a", true},          {R"(!\!a)", "!b", true},
    {R"(a\\b)", R"(a\b)", true},     {R"(a\\*b)", R"(a\xb)", true},
    {"a/b//c", "a/b//c", true},       {R"(a\b)", R"(a\b)", true},
    {R"(a\/b)", R"(a\/b)", true},     {R"(\vb/vb)", R"(\vb/vb)", true},
    {R"(abc\)", R"(abc\)", true},     {R"(abc\)", "abc", false},
    // Regular expressions.
    {"#", "anything", true},   {"#", "", true},           {"#b", "abc", true},
    {"#^a.c$", "ABC", false},  {"#a|b*", "b", true},      {"#(", "(", false},
};
// clang-format on

} // namespace

class TestFilter : public QObject {
    Q_OBJECT

private slots:
    void matches_data();
    void matches();
    void caseSensitiveFlag();
    void numberComparison_data();
    void numberComparison();
    void canonicalScientific_data();
    void canonicalScientific();
    void bigNumbers_data();
    void bigNumbers();
    void escapedTextMatchesOnlyItself();
    void equalityIgnoresDerivedState();
};

void TestFilter::matches_data() {
    QTest::addColumn<QString>("filter");
    QTest::addColumn<QString>("cell");
    QTest::addColumn<bool>("expected");
    for (const MatchCase& c : kMatchCases) {
        const QByteArray name = QByteArray(c.filter) + " ~ " + c.cell;
        QTest::newRow(name.constData()) << QString(c.filter) << QString(c.cell) << c.expected;
    }
}

void TestFilter::matches() {
    QFETCH(QString, filter);
    QFETCH(QString, cell);
    QFETCH(bool, expected);
    QCOMPARE(cellMatchesFilter(parsed(filter), cell), expected);
}

void TestFilter::caseSensitiveFlag() {
    FilterData filter = parsed(QStringLiteral("abc*"));
    filter.case_sensitive = true;
    QVERIFY(!cellMatchesFilter(filter, QStringLiteral("ABCD")));
    QVERIFY(cellMatchesFilter(filter, QStringLiteral("abcD")));
}

void TestFilter::numberComparison_data() {
    QTest::addColumn<QString>("cell");
    QTest::addColumn<uint>("comparison");
    QTest::addColumn<QString>("bound1");
    QTest::addColumn<QString>("bound2");
    QTest::addColumn<bool>("expected");
    const struct {
        const char* cell;
        uint comparison;
        const char* bound1;
        const char* bound2;
        bool expected;
    } cases[] = {
        // clang-format off
        {"5", FilterTerm::GreaterOrEqual, "5.0", "", true},
        {"", FilterTerm::LessOrEqual, "5", "", false},
        {"nan", FilterTerm::LessOrEqual, "5", "", false},
        {"5", FilterTerm::Text, "5", "", false},
        {"5", FilterTerm::LessThan, "1e999", "", true},
        {"12345678901234567891", FilterTerm::GreaterThan, "12345678901234567890", "", true},
        {"-12345678901234567891", FilterTerm::LessThan, "-12345678901234567890", "", true},
        {"-12345678901234567889", FilterTerm::LessThan, "-12345678901234567890", "", false},
        {"-12345678901234567891", FilterTerm::LessThan, "1", "", true},
        {"0.123456789012345678", FilterTerm::GreaterThan, "0.123456789012345677", "", true},
        {"1234567890123456789.5", FilterTerm::LessThan, "1e19", "", true},
        {"0.00000000000000001", FilterTerm::GreaterThan, "0", "", true},
        {"0.000000000000000000", FilterTerm::GreaterThan, "0", "", false},
        {"12345678901234567895", FilterTerm::Between, "12345678901234567899", "12345678901234567890", true},
        {"12345678901234567900", FilterTerm::Between, "12345678901234567890", "12345678901234567899", false},
        // clang-format on
    };
    for (const auto& c : cases) {
        QTest::newRow(
            qPrintable(QStringLiteral("%1 %2 %3").arg(c.cell).arg(c.comparison).arg(c.bound1)))
            << QString(c.cell) << c.comparison << QString(c.bound1) << QString(c.bound2)
            << c.expected;
    }
}

void TestFilter::numberComparison() {
    QFETCH(QString, cell);
    QFETCH(uint, comparison);
    QFETCH(QString, bound1);
    QFETCH(QString, bound2);
    QFETCH(bool, expected);
    QCOMPARE(compareNumberToTerm(cell, FilterTerm{comparison, bound1, bound2, false}), expected);
}

void TestFilter::canonicalScientific_data() {
    QTest::addColumn<QString>("number");
    QTest::addColumn<QString>("expected");
    QTest::newRow("long integer") << "12345678901234567890"
                                  << "+1.234567890123456789E+19";
    QTest::newRow("zeros around") << "0012.500"
                                  << "+1.25E+1";
    QTest::newRow("small fraction") << "-0.000123"
                                    << "-1.23E-4";
    QTest::newRow("written exponent") << "12.5e-3"
                                      << "+1.25E-2";
    QTest::newRow("one digit") << "5"
                               << "+5.0E+0";
    QTest::newRow("zero") << "-0.000"
                          << "+0.0E+0";
    QTest::newRow("canonical stays") << "+5.0E+0"
                                     << "+5.0E+0";
    QTest::newRow("not normalised") << "+0.5E+1"
                                    << "+5.0E+0";
    QTest::newRow("exponent clamped") << "-10e99999999999999999999"
                                      << "-1.0E+4503599627370496";
    QTest::newRow("clamped stays") << "-1.0E+4503599627370496"
                                   << "-1.0E+4503599627370496";
    QTest::newRow("trailing text") << "12a" << QString();
    QTest::newRow("infinity") << "inf" << QString();
}

void TestFilter::canonicalScientific() {
    QFETCH(QString, number);
    QFETCH(QString, expected);
    QCOMPARE(toCanonicalScientific(number), expected);
}

void TestFilter::bigNumbers_data() {
    QTest::addColumn<QString>("a");
    QTest::addColumn<QString>("b");
    QTest::addColumn<int>("expected");
    QTest::newRow("signs") << "+1.0E+0"
                           << "-9.0E+9" << 2;
    QTest::newRow("exponent") << "+9.0E+1"
                              << "+1.0E+2" << 1;
    QTest::newRow("exponent, negative") << "-9.0E+1"
                                        << "-1.0E+2" << 2;
    QTest::newRow("padded fraction") << "+1.5E+3"
                                     << "+1.50001E+3" << 1;
    QTest::newRow("padded equal") << "+1.5E+3"
                                  << "+1.50E+3" << 0;
    QTest::newRow("zero below positive") << "+0.0E+0"
                                         << "+1.0E-30" << 1;
}

void TestFilter::bigNumbers() {
    QFETCH(QString, a);
    QFETCH(QString, b);
    QFETCH(int, expected);
    QCOMPARE(compareBigNumbers(a, b), expected);
    QCOMPARE(compareBigNumbers(b, a), expected == 0 ? 0 : 3 - expected);
}

// Cell contents turned into a filter must select exactly those contents,
// whatever characters of the language they hold.
void TestFilter::escapedTextMatchesOnlyItself() {
    QCOMPARE(escapeFilterString(R"(\|&*><+-!#/)"), QString(R"(\\\|\&\*\>\<\+\-\!\#/)"));
    const QString alphabet = QStringLiteral("ab5.\\|&*<>+-!#/ e");
    QRandomGenerator random(20240611);
    for (int round = 0; round < 3000; ++round) {
        QString text;
        for (int i = random.bounded(1, 12); i > 0; --i)
            text.append(alphabet[random.bounded(alphabet.size())]);
        text = text.trimmed();
        const FilterData filter = parsed(escapeFilterString(text));
        QVERIFY2(cellMatchesFilter(filter, text), qPrintable(text));
        QVERIFY2(!cellMatchesFilter(filter, text + 'x'), qPrintable(text));
        QVERIFY2(!cellMatchesFilter(filter, 'x' + text), qPrintable(text));
    }
}

void TestFilter::equalityIgnoresDerivedState() {
    FilterData a = parsed(QStringLiteral("a|b"));
    FilterData b(FilterLine::forColumn(0), QStringLiteral("a|b"));
    b.exceptions = {3, 4};
    QVERIFY(a == b);
    b.case_sensitive = true;
    QVERIFY(!(a == b));
    a.range = FilterLine::forRow(0);
    QVERIFY(!(a == parsed(QStringLiteral("a|b"))));
}

QTEST_APPLESS_MAIN(TestFilter)
#include "tst_filter.moc"
