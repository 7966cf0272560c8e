#include "data/sortcanceledexception.h"
#include "edit/sortcompare.h"
#include "edit/sortnumber.h"
#include "edit/sortpermutation.h"

#include <QRandomGenerator>
#include <QTest>

#include <algorithm>
#include <numeric>
#include <random>

Q_DECLARE_METATYPE(std::vector<int>)

namespace {

const QStringList kWords{"alpha", "Beta", "gamma", "a", "A", "ab", "b", "Zed"};

// Keys like a data export's, with the cases the comparator singles out.
QString randomKey(QRandomGenerator& random) {
    const QString word = kWords[random.bounded(kWords.size())];
    switch (random.bounded(9)) {
    case 0:
        return QString();
    case 1:
        return QString::number(random.bounded(-50, 50));
    case 2:
        return QString::number(random.bounded(-1000, 1000) / 8.0);
    case 3:
        return "0" + QString::number(random.bounded(20));
    case 4:
        return word + QString::number(random.bounded(30));
    case 5:
        return QString(random.bounded(3), ' ') + word;
    case 6:
        return "a_" + QString::number(random.bounded(12));
    case 7:
        return QString::number(random.bounded(5)) + word;
    default:
        return word;
    }
}

// Kinds on which the comparator is a strict weak ordering: integers, words,
// words with a number.
QString consistentKey(QRandomGenerator& random, int kind) {
    const QString word = kWords[random.bounded(kWords.size())];
    if (kind == 0) return QString::number(random.bounded(-40, 40));
    return kind == 1 ? word : word + QString::number(random.bounded(1, 40));
}

bool isPermutation(std::vector<int> p, int n) {
    std::sort(p.begin(), p.end());
    std::vector<int> identity(static_cast<std::size_t>(n));
    std::iota(identity.begin(), identity.end(), 0);
    return p == identity;
}

} // namespace

class TestSort : public QObject {
    Q_OBJECT

private slots:
    void compare_data();
    void compare();
    void descendingMirrorsAscending();
    void shortcutsAgreeWithFullRules();
    void readNumber_data();
    void readNumber();
    void permutation_data();
    void permutation();
    void permutationIsValidAndStable();
    void keyStoreAndMappedKeys();
    void progressAndCancel();
    void cellGroup_data();
    void cellGroup();
};

void TestSort::compare_data() {
    QTest::addColumn<QString>("a");
    QTest::addColumn<QString>("b");
    QTest::addColumn<bool>("descending");
    QTest::addColumn<bool>("expected");
    const struct {
        const char* a;
        const char* b;
        bool descending;
        bool expected;
    } cases[] = {
        // clang-format off
        {"2", "10", false, true},       {"10", "2", false, false},
        {"a2", "a10", false, true},     {"1.5", "2", false, true},
        {"-10", "-5", false, true},     {"1e3", "999", false, false},
        {"1.0", "1", false, false},     {"1", "1.0", false, false},
        {"", "a", false, false},        {"a", "", false, true},
        {"", "a", true, true},          {"a", "", true, false},
        {"007", "7", false, true},      {"7", "007", false, false},
        {"0", "-1", false, false},      {"-1", "0", false, true},
        {"0.5", "0.25", false, false},  {"  07", "5", false, true},
        {"a01", "a1", false, false},    {"a1", "a01", false, false},
        {"a_1", "a_2", false, true},    {"a_9", "a_10", false, true},
        {"1_000", "2", false, true},    {" a", "b", false, false},
        {"b", " a", false, true},       {" 1", "2", false, false},
        {" a", "b", true, true},        {"  ", "  x", false, false},
        {"a", "ab", false, true},       {"x1", "x1y", false, true},
        {"x1", "x1y", true, false},     {"1a", "a1", false, true},
        {"B", "a", false, true},        {"10", "2", true, true},
        {"a99999999999999999999", "a100000000000000000000", false, true},
        // clang-format on
    };
    for (const auto& c : cases) {
        const QByteArray name =
            QByteArray("'") + c.a + "' '" + c.b + (c.descending ? "' desc" : "'");
        QTest::newRow(name.constData())
            << QString(c.a) << QString(c.b) << c.descending << c.expected;
    }
}

void TestSort::compare() {
    QFETCH(QString, a);
    QFETCH(QString, b);
    QFETCH(bool, descending);
    QFETCH(bool, expected);
    QCOMPARE(compareForSort(a, b, descending), expected);
}

void TestSort::descendingMirrorsAscending() {
    QRandomGenerator random(7);
    for (int i = 0; i < 20000; ++i) {
        const QString a = randomKey(random);
        const QString b = randomKey(random);
        QVERIFY2(compareForSort(a, b, true) == compareForSort(b, a, false),
                 qPrintable(a + " | " + b));
    }
}

// Most comparisons are decided from per-key traits; those shortcuts must give
// what the rules read in full give, on any pair of keys.
void TestSort::shortcutsAgreeWithFullRules() {
    const QString alphabet = QStringLiteral("0123456789  ._-eaAb\u00e9\u0416") + QChar(0);
    QRandomGenerator random(11);
    QStringList keys{"",
                     "ab",
                     QStringLiteral("ab") + QChar(0),
                     "2017-12-01",
                     "2019-05-01",
                     "123",
                     "1234567890123456",
                     "1234567890123457x"};
    for (int i = 0; i < 400; ++i) {
        QString key = randomKey(random);
        if (i % 2 == 1) {
            key.clear();
            for (int k = random.bounded(0, 11); k > 0; --k)
                key.append(alphabet[random.bounded(alphabet.size())]);
        }
        keys << key;
    }
    // Neighbours in sorted order share their heads: the same keys again
    // with a unit changed, cut or added somewhere.
    for (int i = 0; i < 300; ++i) {
        QString key = keys[random.bounded(keys.size())];
        const int at = random.bounded(static_cast<int>(key.size()) + 1);
        const QChar unit = alphabet[random.bounded(alphabet.size())];
        switch (random.bounded(3)) {
        case 0:
            key.insert(at, unit);
            break;
        case 1:
            key.truncate(at);
            break;
        default:
            if (at < key.size()) key[at] = unit;
        }
        keys << key;
    }
    auto isNarrow = [](QChar c) { return c.unicode() < 256; };
    std::vector<QByteArray> latin1;
    std::vector<SortKeyTraits> traits;
    for (const QString& key : keys) {
        traits.push_back(SortKeyTraits::of(key));
        latin1.push_back(key.toLatin1());
    }
    for (qsizetype i = 0; i < keys.size(); ++i) {
        for (qsizetype j = 0; j < keys.size(); ++j) {
            for (const bool descending : {false, true}) {
                const SortKeyTraits& ti = traits[static_cast<std::size_t>(i)];
                const SortKeyTraits& tj = traits[static_cast<std::size_t>(j)];
                const bool full = compareSortKeysInFull(keys[i], ti, keys[j], tj, descending);
                QVERIFY2(compareSortKeys(keys[i], ti, keys[j], tj, descending) == full,
                         qPrintable(keys[i] + " | " + keys[j]));
                // Read at the first difference: the same answer, or none.
                const int at = compareSortKeysAtDifference(keys[i], ti, keys[j], tj, descending);
                QVERIFY2(at == -1 || (at == 1) == full, qPrintable(keys[i] + " | " + keys[j]));
                const bool narrow = std::all_of(keys[i].begin(), keys[i].end(), isNarrow) &&
                                    std::all_of(keys[j].begin(), keys[j].end(), isNarrow);
                if (narrow)
                    QCOMPARE(compareSortKeysAtDifference(QLatin1String(latin1[i]), ti,
                                                         QLatin1String(latin1[j]), tj, descending),
                             at);
            }
        }
    }
}

void TestSort::readNumber_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("currency");
    QTest::addColumn<QString>("symbols"); // decimal point, then group separator
    QTest::addColumn<bool>("valid");
    QTest::addColumn<double>("value");
    const struct {
        const char* text;
        bool currency;
        const char* symbols;
        bool valid;
        double value;
    } cases[] = {
        // clang-format off
        {"-3.5", false, ".,", true, -3.5},    {"+2", false, ".,", true, 2},
        {"1,0,00", false, ".,", true, 1000},  {"1.000,5", false, ",.", true, 1000.5},
        {"25E-2", false, ".,", true, 0.25},   {"7e", false, ".,", true, 7},
        {"1e+3", false, ".,", false, 0},      {"0.1", false, ".,", true, 0.1},
        {"$5", true, ".,", true, 5},          {"$5", false, ".,", false, 0},
        {"-£5", true, ".,", true, -5},        {"5 €", true, ".,", true, 5},
        {"5  €", true, ".,", false, 0},       {"5€", false, ".,", false, 0},
        {"", false, ".,", false, 0},          {"-", false, ".,", false, 0},
        {"e", false, ".,", false, 0},         {"12abc", false, ".,", false, 0},
        {"1.2.3", false, ".,", false, 0},     {" 5", false, ".,", false, 0},
        {"12345678901234567890123", false, ".,", true, 12345678901234567890123.0},
        // clang-format on
    };
    for (const auto& c : cases) {
        QTest::newRow(c.text) << QString(c.text) << c.currency << QString(c.symbols) << c.valid
                              << c.value;
    }
}

void TestSort::readNumber() {
    QFETCH(QString, text);
    QFETCH(bool, currency);
    QFETCH(QString, symbols);
    QFETCH(bool, valid);
    QFETCH(double, value);
    const std::optional<double> read =
        ::readNumber(QStringView(text), currency, NumberSymbols{symbols[0], symbols[1]});
    QCOMPARE(read.has_value(), valid);
    if (valid) QCOMPARE(*read, value);
}

void TestSort::permutation_data() {
    QTest::addColumn<QStringList>("keys");
    QTest::addColumn<int>("headers");
    QTest::addColumn<bool>("descending");
    QTest::addColumn<bool>("caseSensitive");
    QTest::addColumn<std::vector<int>>("expected");
    QTest::newRow("natural") << QStringList{"10", "a10", "2", "a2", "", "1.5"} << 0 << false << true
                             << std::vector<int>{5, 2, 0, 3, 1, 4};
    QTest::newRow("two header rows") << QStringList{"h", "g", "3", "1", "2"} << 2 << false << true
                                     << std::vector<int>{0, 1, 3, 4, 2};
    QTest::newRow("descending") << QStringList{"1", "", "2", "1.0", ""} << 0 << true << true
                                << std::vector<int>{1, 4, 2, 0, 3};
    QTest::newRow("lower-cased") << QStringList{"b", "A", "a", "B"} << 0 << false << false
                                 << std::vector<int>{1, 2, 0, 3};
    QTest::newRow("code units") << QStringList{"b", "A", "a", "B"} << 0 << false << true
                                << std::vector<int>{1, 3, 2, 0};
    QTest::newRow("all headers") << QStringList{"b", "a"} << 5 << false << true
                                 << std::vector<int>{0, 1};
}

void TestSort::permutation() {
    QFETCH(QStringList, keys);
    QFETCH(int, headers);
    QFETCH(bool, descending);
    QFETCH(bool, caseSensitive);
    QFETCH(std::vector<int>, expected);
    QCOMPARE(sortPermutation(keys, {descending, caseSensitive, headers, {}}), expected);
}

// Any keys give a permutation with the headers in place. Where the comparator
// is a strict weak ordering there is one stable order: std::stable_sort's.
void TestSort::permutationIsValidAndStable() {
    QRandomGenerator random(42);
    for (int round = 0; round < 600; ++round) {
        const bool consistent = round % 2 == 0;
        QStringList keys;
        for (int i = random.bounded(0, 500); i > 0; --i)
            keys << (consistent ? consistentKey(random, round % 3) : randomKey(random));
        const bool descending = random.bounded(2) == 1;
        const int headers = consistent ? 0 : random.bounded(4);
        SortOptions options{descending, consistent || random.bounded(2) == 1, headers, {}};
        const std::vector<int> p = sortPermutation(keys, options);
        // The low-memory sort, in blocks small enough for every merge.
        options.low_memory = true;
        options.low_memory_block = random.bounded(2, 40);
        const std::vector<int> lean = sortPermutation(keys, options);
        for (const std::vector<int>* result : {&p, &lean}) {
            QVERIFY(isPermutation(*result, static_cast<int>(keys.size())));
            for (int i = 0; i < std::min<int>(headers, static_cast<int>(keys.size())); ++i)
                QCOMPARE((*result)[static_cast<std::size_t>(i)], i);
        }
        if (!consistent) continue;
        std::vector<int> reference(static_cast<std::size_t>(keys.size()));
        std::iota(reference.begin(), reference.end(), 0);
        std::stable_sort(reference.begin(), reference.end(), [&](int a, int b) {
            return compareForSort(keys[a], keys[b], descending);
        });
        QCOMPARE(p, reference);
        QCOMPARE(lean, reference);
    }
}

// The key store gives back every key, narrow, wide, long or larger than its
// blocks; a sort through it by an index map orders the positions by the
// keys they map to.
void TestSort::keyStoreAndMappedKeys() {
    QStringList texts{"",
                      "plain",
                      "Zürich",
                      QString::fromUtf8("東京 3"),
                      QString::fromUtf8("a😀b"),
                      QString(126, 'x'),
                      QString(127, 'y'),
                      QString(300, u'é')};
    texts << QString(5 << 20, 'n') << QString(3 << 20, QChar(0x4E00)) << "after the long ones";
    SortKeys store;
    for (const QString& t : texts)
        QVERIFY(store.append(t));
    QVERIFY(store.appendAscii("MiXeD 42", true));
    texts << "mixed 42";
    QCOMPARE(store.size(), int(texts.size()));
    SortKeys::Scratch scratch;
    for (int i = 0; i < store.size(); ++i)
        QVERIFY2(store.text(i, scratch) == texts[i], qPrintable(QString::number(i)));

    QRandomGenerator random(11);
    for (int round = 0; round < 40; ++round) {
        // Keys in one order, positions showing them in another.
        SortKeys keys;
        QStringList by_key;
        for (int i = random.bounded(0, 300); i > 0; --i) {
            by_key << consistentKey(random, round % 3);
            keys.append(by_key.back());
        }
        std::vector<int> key_of(static_cast<std::size_t>(by_key.size()));
        std::iota(key_of.begin(), key_of.end(), 0);
        std::shuffle(key_of.begin(), key_of.end(), std::mt19937(round));
        QStringList by_position;
        for (const int k : key_of)
            by_position << by_key[k];
        SortOptions options{round % 2 == 1, true, round % 4, {}};
        options.low_memory = round % 3 == 0;
        options.low_memory_block = 7;
        QCOMPARE(sortPermutation(keys, key_of, options), sortPermutation(by_position, options));
    }
}

void TestSort::progressAndCancel() {
    QStringList keys;
    QRandomGenerator random(5);
    for (int i = 0; i < 200000; ++i)
        keys << randomKey(random);
    std::vector<float> reports;
    SortOptions options;
    options.progress_interval = std::chrono::milliseconds(0);
    options.progress = [&](float value) { reports.push_back(value); };
    QVERIFY(isPermutation(sortPermutation(keys, options), static_cast<int>(keys.size())));
    QVERIFY(!reports.empty() && std::is_sorted(reports.begin(), reports.end()));
    QVERIFY(reports.front() >= 0.0f && reports.back() <= 1.0f);

    int calls = 0;
    options.progress = [&](float) {
        if (++calls == 3) throw SortCanceledException();
    };
    QVERIFY_THROWS_EXCEPTION(SortCanceledException, sortPermutation(keys, options));
    QCOMPARE(QString(SortCanceledException().what()), "Sort operation cancelled by user");
}

void TestSort::cellGroup_data() {
    QTest::addColumn<int>("group");
    QTest::addColumn<bool>("caseSensitive");
    QTest::addColumn<QStringList>("expected");
    // Sorting {"B", "a", "C"} ascending: only the cell at the group's number is lower-cased.
    QTest::newRow("case-sensitive") << 0 << true << QStringList{"B", "C", "a"};
    QTest::newRow("first group") << 0 << false << QStringList{"C", "a", "b"};
    QTest::newRow("third group") << 2 << false << QStringList{"B", "a", "c"};
    QTest::newRow("group past the cells") << 3 << false << QStringList{"B", "C", "a"};
}

void TestSort::cellGroup() {
    QFETCH(int, group);
    QFETCH(bool, caseSensitive);
    QFETCH(QStringList, expected);
    QCOMPARE(sortCellGroup({"B", "a", "C"}, group, false, caseSensitive), expected);
}

QTEST_APPLESS_MAIN(TestSort)
#include "tst_sort.moc"
