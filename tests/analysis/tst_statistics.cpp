#include "analysis/statistics.h"

#include <QTest>

#include <cmath>
#include <limits>

Q_DECLARE_METATYPE(std::vector<double>)

class TestStatistics : public QObject {
    Q_OBJECT

private slots:
    void statistics_data();
    void statistics();
    void percentile_data();
    void percentile();
    void parseNumber_data();
    void parseNumber();
    void collectSkipsTextAndBlanks();
};

void TestStatistics::statistics_data() {
    QTest::addColumn<std::vector<double>>("values");
    // count, sum, mean, variance, sd, median, min, max, p20, p40, p60, p80
    QTest::addColumn<std::vector<double>>("expected");

    QTest::newRow("1 2 3 4") << std::vector<double>{1, 2, 3, 4}
                             << std::vector<double>{4, 10, 2.5, 1.25, 1.118034, 2.5,
                                                    1, 4,  1.6, 2.2,  2.8,      3.4};
    QTest::newRow("table order does not matter")
        << std::vector<double>{4, 1, 3, 2}
        << std::vector<double>{4, 10, 2.5, 1.25, 1.118034, 2.5, 1, 4, 1.6, 2.2, 2.8, 3.4};
    QTest::newRow("single value everywhere")
        << std::vector<double>{7} << std::vector<double>{1, 7, 7, 0, 0, 7, 7, 7, 7, 7, 7, 7};
    QTest::newRow("no values") << std::vector<double>{}
                               << std::vector<double>{0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0};
    QTest::newRow("past the unrolled block")
        << std::vector<double>{-2, 0, 2, 4, 6, 8, 10}
        << std::vector<double>{7, 28, 4, 16, 4, 4, -2, 10, 0.4, 2.8, 5.2, 7.6};
}

void TestStatistics::statistics() {
    QFETCH(std::vector<double>, values);
    QFETCH(std::vector<double>, expected);
    const auto rows = computeStatistics(values);
    QCOMPARE(rows.size(), expected.size());
    for (std::size_t k = 0; k < rows.size(); ++k) {
        QCOMPARE(static_cast<std::size_t>(rows[k].kind), k);
        QVERIFY2(std::abs(rows[k].value - expected[k]) < 1e-6,
                 qPrintable(QStringLiteral("%1: %2 instead of %3")
                                .arg(statisticLabel(rows[k].kind))
                                .arg(rows[k].value)
                                .arg(expected[k])));
    }
}

void TestStatistics::percentile_data() {
    QTest::addColumn<std::vector<double>>("sorted");
    QTest::addColumn<double>("p");
    QTest::addColumn<double>("expected");

    QTest::newRow("halfway") << std::vector<double>{1, 2} << 50.0 << 1.5;
    QTest::newRow("equal neighbours") << std::vector<double>{3, 3, 3, 8} << 40.0 << 3.0;
    QTest::newRow("fraction just below one")
        << std::vector<double>{0, 10} << 99.99999999999 << 10.0;
}

void TestStatistics::percentile() {
    QFETCH(std::vector<double>, sorted);
    QFETCH(double, p);
    QFETCH(double, expected);
    QCOMPARE(::percentile(sorted, p), expected);
}

void TestStatistics::parseNumber_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("currency");
    QTest::addColumn<QString>("symbols"); // decimal point, then group separator
    QTest::addColumn<double>("expected"); // NaN: not a number

    const double nan = std::numeric_limits<double>::quiet_NaN();
    const struct {
        const char* text;
        bool currency;
        const char* symbols;
        double expected;
    } cases[] = {
        // clang-format off
        {"-2.5", true, ".,", -2.5},       {"1,000", true, ".,", 1000},
        {"1,000", false, ".,", nan},      {"1.000,5", true, ",.", 1000.5},
        {"$5", true, ".,", 5},            {"-¥5", true, ".,", -5},
        {"5€", true, ".,", 5},            {"5 €", true, ".,", 5},
        {"$5", false, ".,", nan},         {"1.5e+3", true, ".,", 1500},
        {"+5", true, ".,", nan},          {"12abc", true, ".,", nan},
        {"", true, ".,", nan},            {"$", true, ".,", nan},
        // clang-format on
    };
    for (const auto& c : cases) {
        QTest::newRow(qPrintable(QString("%1 %2").arg(c.text).arg(c.currency)))
            << QString(c.text) << c.currency << QString(c.symbols) << c.expected;
    }
}

void TestStatistics::parseNumber() {
    QFETCH(QString, text);
    QFETCH(bool, currency);
    QFETCH(QString, symbols);
    QFETCH(double, expected);
    const NumberSymbols locale{symbols[0], symbols[1]};
    const double value = ::parseNumber(QStringView(text), currency, locale);
    if (std::isnan(expected))
        QVERIFY2(std::isnan(value), qPrintable(QString::number(value)));
    else
        QCOMPARE(value, expected);
}

void TestStatistics::collectSkipsTextAndBlanks() {
    const QStringList cells{"1", "abc", "", "2", "$3", " ", "4.5€"};
    QCOMPARE(collectNumbers(cells), (std::vector<double>{1, 2, 3, 4.5}));
}

QTEST_APPLESS_MAIN(TestStatistics)
#include "tst_statistics.moc"
