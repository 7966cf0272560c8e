#include "edit/addressparsers.h"
#include "edit/valueparsers.h"

#include <QDateTime>
#include <QTest>

#include <thread>
#include <vector>

using IntList = QList<int>;

class TestAddressParsers : public QObject {
    Q_OBJECT

private slots:
    // The static patterns and the date table are shared by analysis workers.
    // First in the run, so that the threads also race to build them.
    void parsersAgreeAcrossThreads() {
        QStringList inputs;
        for (int i = 0; i < 400; ++i)
            inputs << QStringLiteral("r%1, c%2").arg(i).arg(i % 7)
                   << QStringLiteral("%1/10/2020").arg(i) << QStringLiteral("1,%1.5").arg(i);
        const auto run = [&inputs] {
            QStringList out;
            for (const QString& text : inputs) {
                int row = -1, col = -1;
                parseCellAddress(row, col, text, false, true);
                out << QStringLiteral("%1 %2 %3 ").arg(row).arg(col).arg(classifyText(text)) +
                           deriveDateFormat(text) + stripLeadingZeros(text) +
                           normaliseNumberText(text, 2);
            }
            return out;
        };
        std::vector<QStringList> results(4);
        std::vector<std::thread> threads;
        for (auto& result : results)
            threads.emplace_back([&result, &run] { result = run(); });
        for (auto& thread : threads)
            thread.join();
        for (const auto& result : results)
            QCOMPARE(result, run());
    }

    // Every example of the "Go to Cell:" and filter guides, then the fallbacks.
    void addresses_data() {
        QTest::addColumn<QString>("mode");
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("want_row");
        QTest::addColumn<int>("want_col");
        const auto add = [](const char* mode, std::initializer_list<const char*> texts, int row,
                            int col) {
            for (const char* text : texts)
                QTest::newRow(qPrintable(QStringLiteral("%1 %2").arg(mode, text)))
                    << QString(mode) << QString(text) << row << col;
        };
        add("numbers", {"25", "r25", "row25"}, 25, -1);
        add("numbers", {"c8", "col8"}, -1, 8);
        add("numbers", {"25 8", "r25, c8", "c8 25", "r25 8"}, 25, 8);
        add("numbers", {"-3"}, -3, -1); // the caller clamps
        add("numbers", {"hello", "99999999999"}, -1, -1);
        add("filter", {"8", "c8", "col8"}, -1, 8);
        add("filter", {"r25", "row25"}, 25, -1);
        add("letters", {"25"}, 25, -1);
        add("letters", {"A8", "8a"}, 8, 1);
        add("letters", {"25 AB", "ab25", "ab, 25"}, 25, 28);
        add("letters", {"g", "G"}, -1, 7);
    }
    void addresses() {
        QFETCH(QString, mode);
        QFETCH(QString, text);
        int row = -1, col = -1;
        parseCellAddress(row, col, text, mode == u"letters", mode != u"filter");
        QTEST(row, "want_row");
        QTEST(col, "want_col");
    }

    void columnList_data() {
        QTest::addColumn<bool>("letters");
        QTest::addColumn<QString>("text");
        QTest::addColumn<IntList>("want_indexes");
        QTest::addColumn<QString>("want_label");
        const auto add = [](const char* name, bool letters, const char* text, IntList indexes,
                            const char* label) {
            QTest::newRow(name) << letters << QString(text) << indexes << QString(label);
        };
        add("mixed", false, "1, 3-5", {1, 3, 4, 5}, "Columns 1, 3-5");
        add("negative end", false, "1 - -2", {1, 0, -1, -2}, "Columns 1--2");
        add("words and empty parts", false, "cols 2,,4,", {2, 4}, "Columns 2, 4");
        add("bad part spoils all", false, "1, x", {}, "");
        add("beyond int", false, "1-99999999999", {}, "");
        add("too many", false, "1-2000000000", {}, "");
        add("A-C", true, "A-C", {1, 2, 3}, "Columns A-C");
        add("C-A", true, "c - a", {3, 2, 1}, "Columns C-A");
        add("letter words", true, "columns b, d", {2, 4}, "Columns B, D");
        add("COL is a name", true, "col", {2430}, "Column COL");
        add("digits", true, "1", {}, "");
    }
    void columnList() {
        QFETCH(bool, letters);
        QFETCH(QString, text);
        QList<int> indexes;
        QString label;
        parseColumnList(indexes, label, text, letters);
        QTEST(indexes, "want_indexes");
        QTEST(label, "want_label");
    }

    void valueRanges_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("want_doubles"); // "low:high;..."
        QTest::addColumn<QString>("want_integers");
        QTest::addColumn<QString>("want_label");
        const auto add = [](const char* text, const char* doubles, const char* integers,
                            const char* label) {
            QTest::newRow(text) << QString(text) << QString(doubles) << QString(integers)
                                << QString(label);
        };
        add("1.5-2", "1.5:2", "", "1.5 - 2");
        add("1-5, 7", "1:5;7:7", "1:5;7:7", "1 - 5, 7");
        add("-15.754 - -20.4", "-15.754:-20.4", "", "-15.754 - -20.4");
        add("abc", "", "", "");
    }
    void valueRanges() {
        QFETCH(QString, text);
        QList<QPair<double, double>> doubles;
        QList<QPair<qint64, qint64>> integers;
        QString label, integer_label;
        parseDoubleRanges(doubles, label, text);
        parseIntegerRanges(integers, integer_label, text);
        QStringList got_doubles, got_integers;
        for (const auto& [a, b] : doubles)
            got_doubles << QStringLiteral("%1:%2").arg(a).arg(b);
        for (const auto& [a, b] : integers)
            got_integers << QStringLiteral("%1:%2").arg(a).arg(b);
        QTEST(got_doubles.join(u';'), "want_doubles");
        QTEST(got_integers.join(u';'), "want_integers");
        QTEST(label, "want_label");
    }

    void columnLetters() {
        QCOMPARE(columnLettersToIndex(QStringLiteral("FXSHRXW")), 2147483647);
        for (const char* refused : {"FXSHRXX", "a", "A1", ""})
            QCOMPARE(columnLettersToIndex(QString::fromLatin1(refused)), -1);
        QCOMPARE(columnLettersToIndex(QStringLiteral("ZZZ")), 18278);
        for (int i = 1; i <= 18278; ++i)
            QCOMPARE(columnLettersToIndex(columnIndexToLetters(i)), i);
        QCOMPARE(columnIndexToLetters(27), QStringLiteral("AA"));
    }

    void classify_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("kind");
        QTest::newRow("empty") << "" << 4;
        QTest::newRow("exponent") << "-3.5e2" << 1;
        QTest::newRow("sept") << "Sept. 10, 2020" << 2;
        QTest::newRow("thurs") << "Thurs, Apr 10, 2020" << 2;
        QTest::newRow("ISO with Z") << "2020-04-04T05:03:09Z" << 2;
        QTest::newRow("ISO with blank") << "2020-04-04 05:03:09" << 2;
        QTest::newRow("ISO month 13") << "2020-13-01T05:03:09" << 4;
    }
    void classify() {
        QFETCH(QString, text);
        QTEST(classifyText(text), "kind");
    }

    void everyDateTableRowDerivesItself() {
        // 5 April: one-digit month and day, and a month whose short and long names differ.
        const QDateTime sample(QDate(2020, 4, 5), QTime(8, 57, 2, 500), Qt::UTC);
        const auto table = dateFormatTable();
        QCOMPARE(table.size(), 46);
        for (const auto& [format, mask] : table) {
            const QString text = sample.toString(format);
            QCOMPARE(deriveDateFormat(text), format);
            QVERIFY2(QDateTime::fromString(text, format).isValid(), qPrintable(format));
        }
    }

    void normaliseNumber_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("decimals");
        QTest::addColumn<QString>("locale");
        QTest::addColumn<QString>("expected");
        const auto add = [](const char* name, const char* text, int decimals, const char* expected,
                            const char* locale = "en_US") {
            QTest::newRow(name) << QString(text) << decimals << QString(locale)
                                << QString::fromUtf8(expected);
        };
        add("group kept", "1,234.5", 2, "1,234.50");
        add("dollar", "$5", 2, "$5.00");
        add("euro blank", "5 €", 2, "5.00 €");
        add("rounds", "1234.567", 2, "1234.57");
        add("zero decimals", "1,234,567.891", 0, "1,234,568");
        add("no point, none wanted", "5", 0, "5");
        add("exponent", "1.5e3", 2, "1.50e3");
        add("sign before groups", "-123,456.7", 0, "-123,457");
        add("comma decimal", "1.234,5", 2, "1.234,50", "de_DE");
        add("not a number", "12a", 2, "12a");
    }
    void normaliseNumber() {
        QFETCH(QString, text);
        QFETCH(int, decimals);
        QFETCH(QString, locale);
        QTEST(normaliseNumberText(text, decimals, QLocale(locale)), "expected");
    }

    void leadingZeros_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("expected");
        const std::pair<const char*, const char*> rows[] = {
            {"0", "0"},        {"000", "0"},      {"-007", "-7"}, {"ID0042", "ID42"},
            {"-00.5", "-0.5"}, {"100.5", "10.5"}, {"abc", "abc"}};
        for (const auto& [text, expected] : rows)
            QTest::newRow(text) << QString(text) << QString(expected);
    }
    void leadingZeros() {
        QFETCH(QString, text);
        QTEST(stripLeadingZeros(text), "expected");
    }
};

QTEST_APPLESS_MAIN(TestAddressParsers)
#include "tst_addressparsers.moc"