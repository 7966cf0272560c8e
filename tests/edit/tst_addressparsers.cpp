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
    void parsersAgreeAcrossThreads() {
        // The static patterns and the date table are shared by analysis workers.
        // First in the run, so that the threads also race to build them.
        QStringList inputs;
        for (int i = 0; i < 400; ++i)
            inputs << QStringLiteral("r%1, c%2").arg(i).arg(i % 7)
                   << QStringLiteral("%1/10/2020").arg(i) << QStringLiteral("1,%1.5").arg(i);
        const auto run = [&inputs] {
            QStringList out;
            for (const QString& text : inputs) {
                int row = -1;
                int col = -1;
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

    void addresses_data() {
        QTest::addColumn<QString>("parser");
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("want_row");
        QTest::addColumn<int>("want_col");
        // "Go to Cell:" with numbers: every guide example, then fallbacks.
        for (const char* text : {"25", "r25", "row25"})
            QTest::newRow(text) << "numbers" << text << 25 << -1;
        for (const char* text : {"c8", "col8"})
            QTest::newRow(text) << "numbers" << text << -1 << 8;
        for (const char* text : {"25 8", "r25, c8", "c8 25", "25 c8", "r25 8", "row 25 column 8"})
            QTest::newRow(text) << "numbers" << text << 25 << 8;
        QTest::newRow("negative row passed on") << "numbers"
                                                << "-3" << -3 << -1;
        QTest::newRow("bare number as column") << "column prompt"
                                               << "7" << -1 << 7;
        QTest::newRow("no digits") << "numbers"
                                   << "hello" << -1 << -1;
        QTest::newRow("beyond int") << "numbers"
                                    << "99999999999" << -1 << -1;
        // "Go to Cell:" with letters.
        QTest::newRow("letters 25") << "letters"
                                    << "25" << 25 << -1;
        for (const char* text : {"A8", "8a"})
            QTest::newRow(text) << "letters" << text << 8 << 1;
        for (const char* text : {"25 AB", "ab25", "ab, 25"})
            QTest::newRow(text) << "letters" << text << 25 << 28;
        QTest::newRow("letters only") << "letters"
                                      << "zz" << -1 << 702;
        // Reshape prompts: row-wise defaults to columns, column-wise to rows.
        QTest::newRow("cols first 25") << "columns first"
                                       << "25" << -1 << 25;
        QTest::newRow("cols first r8") << "columns first"
                                       << "r8" << 8 << -1;
        QTest::newRow("cols first 8 rows") << "columns first"
                                           << "8 rows" << 8 << -1;
        QTest::newRow("cols first no sign") << "columns first"
                                            << "-8" << -1 << -1;
        QTest::newRow("rows first 25") << "rows first"
                                       << "25" << 25 << -1;
        QTest::newRow("rows first c8") << "rows first"
                                       << "c8" << -1 << 8;
        QTest::newRow("rows first 8 cols") << "rows first"
                                           << "8 cols" << -1 << 8;
        QTest::newRow("rows first R8") << "rows first"
                                       << " R8 " << 8 << -1;
    }
    void addresses() {
        QFETCH(QString, parser);
        QFETCH(QString, text);
        QFETCH(int, want_row);
        QFETCH(int, want_col);
        int row = -1;
        int col = -1;
        if (parser == u"rows first")
            parseRowFirst(row, col, text);
        else if (parser == u"columns first")
            parseColumnFirst(row, col, text);
        else
            parseCellAddress(row, col, text, parser == u"letters", parser != u"column prompt");
        QCOMPARE(row, want_row);
        QCOMPARE(col, want_col);
    }

    void columnList_data() {
        QTest::addColumn<bool>("letters");
        QTest::addColumn<QString>("text");
        QTest::addColumn<IntList>("want_indexes");
        QTest::addColumn<QString>("want_label");
        QTest::newRow("one") << false << "column 4" << IntList{4} << "Column 4";
        QTest::newRow("mixed") << false << "1, 3-5" << IntList{1, 3, 4, 5} << "Columns 1, 3-5";
        QTest::newRow("descending") << false << "5 - 3" << IntList{5, 4, 3} << "Columns 5-3";
        QTest::newRow("negative end")
            << false << "1 - -2" << IntList{1, 0, -1, -2} << "Columns 1--2";
        QTest::newRow("empty parts") << false << "cols 2,,4," << IntList{2, 4} << "Columns 2, 4";
        QTest::newRow("bad part spoils all") << false << "1, x" << IntList{} << "";
        QTest::newRow("beyond int") << false << "1-99999999999" << IntList{} << "";
        QTest::newRow("too many") << false << "1-2000000000" << IntList{} << "";
        QTest::newRow("A-C") << true << "A-C" << IntList{1, 2, 3} << "Columns A-C";
        QTest::newRow("C-A") << true << "c - a" << IntList{3, 2, 1} << "Columns C-A";
        QTest::newRow("words") << true << "columns b, d" << IntList{2, 4} << "Columns B, D";
        QTest::newRow("COL is a name") << true << "col" << IntList{2430} << "Column COL";
        QTest::newRow("digits") << true << "1" << IntList{} << "";
    }
    void columnList() {
        QFETCH(bool, letters);
        QFETCH(QString, text);
        QFETCH(IntList, want_indexes);
        QFETCH(QString, want_label);
        QList<int> indexes;
        QString label;
        parseColumnList(indexes, label, text, letters);
        QCOMPARE(indexes, want_indexes);
        QCOMPARE(label, want_label);
    }

    void valueRanges_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("want_doubles"); // "low:high;..."
        QTest::addColumn<QString>("want_integers");
        QTest::addColumn<QString>("want_label");
        QTest::newRow("decimal range") << "1.5-2"
                                       << "1.5:2"
                                       << ""
                                       << "1.5 - 2";
        QTest::newRow("mixed") << "1-5, 7"
                               << "1:5;7:7"
                               << "1:5;7:7"
                               << "1 - 5, 7";
        QTest::newRow("negatives") << "-15.754 - -20.4"
                                   << "-15.754:-20.4"
                                   << ""
                                   << "-15.754 - -20.4";
        QTest::newRow("words") << "abc"
                               << ""
                               << ""
                               << "";
    }
    void valueRanges() {
        QFETCH(QString, text);
        QList<QPair<double, double>> doubles;
        QList<QPair<qint64, qint64>> integers;
        QString label;
        QString integer_label;
        parseDoubleRanges(doubles, label, text);
        parseIntegerRanges(integers, integer_label, text);
        QStringList got_doubles;
        QStringList got_integers;
        for (const auto& [a, b] : doubles)
            got_doubles << QStringLiteral("%1:%2").arg(a).arg(b);
        for (const auto& [a, b] : integers)
            got_integers << QStringLiteral("%1:%2").arg(a).arg(b);
        QTEST(got_doubles.join(u';'), "want_doubles");
        QTEST(got_integers.join(u';'), "want_integers");
        QTEST(label, "want_label");
    }

    void columnLetters() {
        QCOMPARE(columnLettersToIndex(QStringLiteral("AA")), 27);
        QCOMPARE(columnLettersToIndex(QStringLiteral("FXSHRXW")), 2147483647);
        for (const char* refused : {"FXSHRXX", "a", "A1", ""})
            QCOMPARE(columnLettersToIndex(QString::fromLatin1(refused)), -1);
        const int zzz = columnLettersToIndex(QStringLiteral("ZZZ"));
        QCOMPARE(zzz, 18278);
        for (int i = 1; i <= zzz; ++i) {
            const QString letters = columnIndexToLetters(i);
            QCOMPARE(columnIndexToLetters(columnLettersToIndex(letters)), letters);
            QCOMPARE(columnLettersToIndex(letters), i);
        }
    }

    void classify_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("kind");
        QTest::newRow("empty") << "" << 4;
        QTest::newRow("exponent") << "-3.5e2" << 1;
        QTest::newRow("word") << "hello" << 4;
        QTest::newRow("US date") << "04/10/2020" << 2;
        QTest::newRow("sept") << "Sept. 10, 2020" << 2;
        QTest::newRow("thurs") << "Thurs, Apr 10, 2020" << 2;
        QTest::newRow("ISO with Z") << "2020-04-04T05:03:09Z" << 2;
        QTest::newRow("ISO month 13") << "2020-13-01T05:03:09" << 4;
        QTest::newRow("ISO with blank") << "2020-04-04 05:03:09" << 2;
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
        QTest::newRow("group kept") << "1,234.5" << 2 << "en_US"
                                    << "1,234.50";
        QTest::newRow("dollar") << "$5" << 2 << "en_US"
                                << "$5.00";
        QTest::newRow("euro blank") << "5 €" << 2 << "en_US"
                                    << "5.00 €";
        QTest::newRow("rounds") << "1234.567" << 2 << "en_US"
                                << "1234.57";
        QTest::newRow("zero decimals") << "1,234,567.891" << 0 << "en_US"
                                       << "1,234,568";
        QTest::newRow("no point, none wanted") << "5" << 0 << "en_US"
                                               << "5";
        QTest::newRow("exponent") << "1.5e3" << 2 << "en_US"
                                  << "1.50e3";
        QTest::newRow("sign before groups") << "-1234.7" << 0 << "en_US"
                                            << "-1235";
        QTest::newRow("comma decimal") << "1.234,5" << 2 << "de_DE"
                                       << "1.234,50";
        QTest::newRow("not a number") << "12a" << 2 << "en_US"
                                      << "12a";
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
        QTest::newRow("0") << "0"
                           << "0";
        QTest::newRow("000") << "000"
                             << "0";
        QTest::newRow("-007") << "-007"
                              << "-7";
        QTest::newRow("prefix kept") << "ID0042"
                                     << "ID42";
        QTest::newRow("-00.5") << "-00.5"
                               << "-0.5";
        QTest::newRow("unanchored decimal") << "100.5"
                                            << "10.5";
        QTest::newRow("none") << "abc"
                              << "abc";
    }
    void leadingZeros() {
        QFETCH(QString, text);
        QTEST(stripLeadingZeros(text), "expected");
    }
};

QTEST_APPLESS_MAIN(TestAddressParsers)
#include "tst_addressparsers.moc"
