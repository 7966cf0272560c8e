#include "commands/matching/fuzzymatch.h"

#include <QTest>

Q_DECLARE_METATYPE(std::vector<int>)

namespace {

// Some command names, in the table's order.
const QStringList kNames{
    "Insert Column(s) After", "Insert Row(s) After",  "Insert Row(s) Before",
    "Remove Row(s)",          "Set First Row Index",  "Filter Selected Row",
    "Go to Bottom",           "Hide Selected Row(s)", "Switch to Tab on the Right"};

} // namespace

class TestFuzzyMatch : public QObject {
    Q_OBJECT

private slots:
    void match_data();
    void match();
    void ranking_data();
    void ranking();
    void label_data();
    void label();
};

void TestFuzzyMatch::match_data() {
    QTest::addColumn<QString>("query");
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("score");
    QTest::addColumn<std::vector<int>>("highlights");
    QTest::newRow("ir") << "ir"
                        << "Insert Row(s) Before" << 88 << std::vector<int>{0, 4};
    QTest::newRow("any case") << "IR"
                              << "insert row" << 88 << std::vector<int>{0, 4};
    QTest::newRow("blank in query") << "i r"
                                    << "Insert Row(s) Before" << 88 << std::vector<int>{0, 4};
    QTest::newRow("highlights skip blanks")
        << " row b"
        << "Insert Row(s) Before" << 208 << std::vector<int>{7, 8, 9, 14};
    QTest::newRow("tightest path wins") << "ab"
                                        << "axbab" << 120 << std::vector<int>{3, 4};
    QTest::newRow("later start can't finish") << "aa"
                                              << "abab" << 94 << std::vector<int>{0, 2};
    QTest::newRow("long gap is no match")
        << "ab"
        << "a" + QString(40, 'x') + "b" << -1 << std::vector<int>{};
    QTest::newRow("order matters") << "ri"
                                   << "Insert" << -1 << std::vector<int>{};
    QTest::newRow("blank query") << "  "
                                 << "Insert" << -1 << std::vector<int>{};
}

void TestFuzzyMatch::match() {
    QFETCH(QString, query);
    QFETCH(QString, name);
    QFETCH(int, score);
    QFETCH(std::vector<int>, highlights);
    const FuzzyMatch result = fuzzyMatch(query, name);
    QCOMPARE(result.score, score);
    QCOMPARE(result.highlights, highlights);
}

void TestFuzzyMatch::ranking_data() {
    QTest::addColumn<QString>("query");
    QTest::addColumn<std::vector<int>>("order");
    QTest::addColumn<int>("visible");
    // "Set First Row Index" has "ir" side by side; the 88s keep the table's order.
    QTest::newRow("ir") << "ir" << std::vector<int>{4, 0, 1, 2, 5, 7, 8, 3, 6} << 7;
    QTest::newRow("empty") << "" << std::vector<int>{0, 1, 2, 3, 4, 5, 6, 7, 8} << 9;
    QTest::newRow("no match") << "qq" << std::vector<int>{0, 1, 2, 3, 4, 5, 6, 7, 8} << 0;
}

void TestFuzzyMatch::ranking() {
    QFETCH(QString, query);
    QFETCH(std::vector<int>, order);
    QFETCH(int, visible);
    const FuzzyRanking ranking = rankOptions(query, kNames);
    QCOMPARE(ranking.order, order);
    QCOMPARE(ranking.visible, visible);
}

void TestFuzzyMatch::label_data() {
    QTest::addColumn<QString>("name");
    QTest::addColumn<std::vector<int>>("highlights");
    QTest::addColumn<QString>("expected");
    QTest::newRow("runs") << "Insert Row(s) Before" << std::vector<int>{7, 8, 9, 14}
                          << "<b>Insert <h>Row</h>(s) <h>B</h>efore</b>";
    QTest::newRow("single") << "Insert" << std::vector<int>{0, 4} << "<b><h>I</h>nse<h>r</h>t</b>";
    QTest::newRow("last character") << "abc" << std::vector<int>{2} << "<b>ab<h>c</h></b>";
    QTest::newRow("none") << "abc" << std::vector<int>{} << "<b>abc</b>";
}

void TestFuzzyMatch::label() {
    QFETCH(QString, name);
    QFETCH(std::vector<int>, highlights);
    QFETCH(QString, expected);
    QCOMPARE(renderOptionLabel(name, highlights, {"<h>", "</h>", "<b>", "</b>"}), expected);
    const LabelMarkup themed = LabelMarkup::fromColors(QColor(255, 0, 0), QColor(0, 0, 255));
    QCOMPARE(themed.highlight_open, QStringLiteral("<span style=\"color:#ff0000;\">"));
    QCOMPARE(themed.bold_open, QStringLiteral("<b style=\"color:#0000ff;\">"));
}

QTEST_APPLESS_MAIN(TestFuzzyMatch)
#include "tst_fuzzymatch.moc"
