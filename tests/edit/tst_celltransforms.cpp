#include "edit/casetransforms.h"
#include "edit/celltransforms.h"
#include "edit/datetimeconversion.h"
#include "edit/numbertransforms.h"
#include "edit/uuidtext.h"

#include <QRandomGenerator64>
#include <QRegularExpression>
#include <QTest>

#include <ctime>
#include <map>

using Kind = DateTimeFormatKind;
Q_DECLARE_METATYPE(DateTimeFormatKind)
Q_DECLARE_METATYPE(UuidForm)

namespace {
template <typename T> QString rangesText(const std::vector<std::pair<T, T>>& ranges) {
    QStringList out;
    for (const auto& [low, high] : ranges)
        out << QStringLiteral("%1:%2").arg(low).arg(high);
    return out.join(u';');
}
} // namespace

class TestCellTransforms : public QObject {
    Q_OBJECT

private slots:
    void caseFamily_data() {
        QTest::addColumn<QString>("text");
        // Title, Upper Camel, Lower Camel, Upper Snake, Lower Snake, Acronym
        QTest::addColumn<QString>("expected");
        const auto add = [](const char* text, const char* expected) {
            QTest::newRow(text) << QString(text) << QString(expected);
        };
        add("helloWorld foo-bar", "Hello World Foo-Bar|HelloWorldFooBar|helloWorldFooBar|"
                                  "HELLO_WORLD_FOO_BAR|hello_world_foo_bar|HWFB");
        add("the end of it",
            "The End of It|TheEndofIt|theEndofIt|THE_END_OF_IT|the_end_of_it|TEOI");
        add("Bank of America", "Bank of America|BankofAmerica|bankofAmerica|BANK_OF_AMERICA|"
                               "bank_of_america|BOA");
        add("a  b", "A  B|AB|aB|A__B|a__b|AB");
        add("x/y,z_w", "X/Y,Z W|XYZW|xYZW|X_Y_Z_W|x_y_z_w|XYZW");
        add("World War 2 (europe)", "World War 2 (europe)|WorldWar2(europe)|worldWar2(europe)|"
                                    "WORLD_WAR_2_(EUROPE)|world_war_2_(europe)|WW2");
    }
    void caseFamily() {
        QFETCH(QString, text);
        QTEST((QStringList{toTitleCase(text), toUpperCamelCase(text), toLowerCamelCase(text),
                           toUpperSnakeCase(text), toLowerSnakeCase(text), toAcronym(text)})
                  .join(u'|'),
              "expected");
    }

    void dateTime_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<Kind>("from");
        QTest::addColumn<QString>("from_format");
        QTest::addColumn<Kind>("to");
        QTest::addColumn<QString>("to_format");
        QTest::addColumn<QString>("expected");
        const auto add = [](const char* name, const char* text, Kind from, Kind to,
                            const char* expected, const char* from_format = "",
                            const char* to_format = "") {
            QTest::newRow(name) << QString(text) << from << QString(from_format) << to
                                << QString(to_format) << QString(expected);
        };
        const Kind custom = Kind::Custom, iso = Kind::Iso8601, day = Kind::Iso8601DateOnly,
                   secs = Kind::UnixSeconds, ms = Kind::UnixMilliseconds, excel = Kind::Excel;
        // The option notes' examples.
        add("custom", "Apr. 10, 2020 8:57 AM", custom, iso, "2020-04-10T08:57:00Z",
            "MMM. d, yyyy h:m ap");
        add("ISO without T and Z", "2020-04-10 08:57:02", iso, iso, "2020-04-10T08:57:02Z");
        add("ISO milliseconds", "2020-04-10T08:57:02.123Z", iso, ms, "1586509022123");
        add("date only", "2020-04-10", day, secs, "1586476800");
        add("seconds", "1586509063", secs, iso, "2020-04-10T08:57:43Z");
        add("milliseconds", "1586509063578", ms, day, "2020-04-10");
        add("Excel", "43931.3729166667", excel, iso, "2020-04-10T08:57:00Z");
        add("ISO offset", "2020-04-10T10:57:02+02:00", iso, iso, "2020-04-10T08:57:02Z");
        add("seconds truncated", "1586509063.9", secs, iso, "2020-04-10T08:57:43Z");
        // The phantom 29 February 1900: 60 and 61 are both 1 March; below, one
        // day more, and printing adds one day more again.
        add("Excel 60", "60", excel, day, "1900-03-01");
        add("Excel 61", "61", excel, day, "1900-03-01");
        add("to Excel below 61", "1900-01-01", day, excel, "3");
        // "Quoted" literals, escaped quotes, a missing year (2024 here).
        add("literal in", "2020year04", custom, day, "2020-04-01", "yyyy\"year\"MM");
        add("literal out", "2020-04-10T08:57:02Z", iso, custom, "Day 10 of April", "",
            "\"Day \"d\" of \"MMMM");
        add("escaped quote", "\"2020\"", custom, custom, "2020 \"Jan\"", "\\\"yyyy\\\"",
            "yyyy \\\"MMM\\\"");
        add("missing year", "02/29", custom, day, "2024-02-29", "MM/dd");
        add("missing literal", "2020-04", custom, iso, "", "yyyy\"year\"MM");
        // Local time never takes part: this wall time doesn't exist in New York.
        add("daylight gap", "2021-03-14 02:30", custom, iso, "2021-03-14T02:30:00Z",
            "yyyy-MM-dd hh:mm");
        add("month 13", "2020-13-01", day, iso, "");
        add("huge seconds", "9223372036854775807", secs, iso, "");
    }
    void dateTime() {
        QFETCH(QString, text);
        QFETCH(Kind, from);
        QFETCH(QString, from_format);
        QFETCH(Kind, to);
        QFETCH(QString, to_format);
        QTEST(convertDateTime(text, from, to, from_format, to_format, 2024), "expected");
    }

    // Spreadsheet days from 61 on (where the phantom day lies behind), and
    // ISO 8601 against Unix seconds up to the year 9999, there and back.
    void roundTrips() {
        const auto there_and_back = [](const QString& excel) {
            return convertDateTime(convertDateTime(excel, Kind::Excel, Kind::Iso8601, {}, {}),
                                   Kind::Iso8601, Kind::Excel, {}, {});
        };
        for (int day = 61; day < 120000; day += 7)
            QCOMPARE(there_and_back(QString::number(day)), QString::number(day));
        for (const char* text : {"43931.5", "43931.25", "45000.75", "61.125"})
            QCOMPARE(there_and_back(text), QString(text));
        QRandomGenerator64 generator(42);
        for (int i = 0; i < 2000; ++i) {
            const qint64 seconds = qint64(generator.bounded(quint64(253402300799)));
            const QString iso =
                QDateTime::fromSecsSinceEpoch(seconds, Qt::UTC).toString(Qt::ISODate);
            QCOMPARE(convertDateTime(iso, Kind::Iso8601, Kind::UnixSeconds, {}, {}),
                     QString::number(seconds));
            QCOMPARE(
                convertDateTime(QString::number(seconds), Kind::UnixSeconds, Kind::Iso8601, {}, {}),
                iso);
        }
    }

    // An empty result means "nothing to do": the cell stays.
    void numberRewrites_data() {
        QTest::addColumn<QString>("rule");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("expected");
        const auto add = [](const char* rule, const char* text, const char* expected) {
            QTest::newRow(qPrintable(QStringLiteral("%1 %2").arg(rule, text)))
                << QString(rule) << QString(text) << QString(expected);
        };
        add("to comma", "42137.24", "42137,24");
        add("to comma", "42,137.24", "42.137,24");
        add("to comma", "42,137", "42.137");
        add("to comma", "42137", "");
        add("to dot", "42137,24", "42137.24");
        add("to dot", "42.137,24", "42,137.24");
        add("to dot", "abc", "");
        add("fill 6", "0012", "000012");
        add("fill 6", "12a", "12a");
        add("fill 4", "123456", "123456");
        add("fill 4", "00", "0000");
    }
    void numberRewrites() {
        QFETCH(QString, rule);
        QFETCH(QString, text);
        QTEST(rule.startsWith(u"fill") ? zeroFill(text, rule.mid(5).toInt())
                                       : convertNumberFormat(text, rule == u"to comma"),
              "expected");
    }

    // The guides' examples. Integers: "low:high;...", "!" for a refused
    // answer; decimals: the ranges, then "|" and the values.
    void randomChoices_data() {
        QTest::addColumn<bool>("decimals");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("expected");
        const auto add = [](bool decimals, const char* text, const char* expected) {
            QTest::newRow(qPrintable(QStringLiteral("%1 '%2'").arg(decimals ? "d" : "i", text)))
                << decimals << QString(text) << QString(expected);
        };
        add(false, "", "0:100");
        add(false, "5", "0:5");
        add(false, "1-5", "1:5");
        add(false, "1,3,5", "1:1;3:3;5:5");
        add(false, "1 3 5", "1:1;3:3;5:5");
        add(false, "1-5,7,9,11", "1:5;7:7;9:9;11:11");
        add(false, "1-5, 15-20", "1:5;15:20");
        add(false, "5 - 1", "1:5");
        add(false, "x", "!");
        add(true, "", "0:10|");
        add(true, "2.5", "0:2.5|");
        add(true, "1.2-5", "1.2:5|");
        add(true, "1.2,3.6,5", "|1.2;3.6;5");
        add(true, "1.2 3.6 5", "|1.2;3.6;5");
        add(true, "1.2-5, -15.754 - -20.4", "1.2:5;-20.4:-15.754|");
        add(true, "1-2, 7", "1:2|"); // values beside ranges are ignored
    }
    void randomChoices() {
        QFETCH(bool, decimals);
        QFETCH(QString, text);
        if (!decimals) {
            const auto choices = parseRandomIntegerChoices(text);
            QTEST(choices ? rangesText(choices->ranges) : QStringLiteral("!"), "expected");
            return;
        }
        const auto choices = parseRandomDecimalChoices(text);
        QVERIFY(choices);
        QStringList values;
        for (double v : choices->values)
            values << QString::number(v);
        QTEST(rangesText(choices->ranges) + u'|' + values.join(u';'), "expected");
        RandomEngine engine(3);
        for (int i = 0; i < 200; ++i) {
            const double v = drawRandomDecimal(*choices, engine);
            QVERIFY(std::any_of(choices->ranges.begin(), choices->ranges.end(),
                                [v](auto r) { return v >= r.first && v <= r.second; }) ||
                    std::count(choices->values.begin(), choices->values.end(), v));
            QCOMPARE(randomDecimalText(v).toDouble(), v);
        }
    }

    void randomIntegersAreUniformOverTheUnion() {
        const auto choices = parseRandomIntegerChoices(QStringLiteral("1-5,7,9,11"));
        QVERIFY(choices);
        RandomEngine engine(7);
        std::map<qint64, int> counts;
        for (int i = 0; i < 16000; ++i)
            ++counts[drawRandomInteger(*choices, engine)];
        QStringList seen;
        for (const auto& [value, count] : counts) {
            seen << QString::number(value);
            QVERIFY2(count > 1600 && count < 2400, qPrintable(QString::number(count)));
        }
        QCOMPARE(seen.join(u' '), QStringLiteral("1 2 3 4 5 7 9 11"));
    }

    void uuidForms_data() {
        QTest::addColumn<UuidForm>("form");
        QTest::addColumn<QString>("example");
        QTest::newRow("Standard") << UuidForm::Standard << "b1b5cb6b-346b-49f4-9843-f5116e039e5a";
        QTest::newRow("Standard (Upper case)")
            << UuidForm::StandardUpper << "B1B5CB6B-346B-49F4-9843-F5116E039E5A";
        QTest::newRow("Braced") << UuidForm::Braced << "{b1b5cb6b-346b-49f4-9843-f5116e039e5a}";
        QTest::newRow("Braced (Upper case)")
            << UuidForm::BracedUpper << "{B1B5CB6B-346B-49F4-9843-F5116E039E5A}";
    }
    void uuidForms() {
        QFETCH(UuidForm, form);
        QFETCH(QString, example);
        QCOMPARE(uuidText(QUuid(example), form), example);
        const auto hex = [](QString text) {
            return text.remove(QRegularExpression(QStringLiteral("[-{}]"))).toLower();
        };
        // v7: the time in the first 48 bits, version 7, variant binary 10.
        QRandomGenerator64 generator(11);
        for (int i = 0; i < 100; ++i) {
            const qint64 ms = qint64(generator.bounded(quint64(1) << 48));
            const QString digits = hex(uuidText(createUuidV7(ms, generator), form));
            QCOMPARE(digits.left(12), QStringLiteral("%1").arg(ms, 12, 16, QLatin1Char('0')));
            QCOMPARE(digits.at(12), u'7');
            QVERIFY(QStringLiteral("89ab").contains(digits.at(16)));
        }
        QCOMPARE(hex(newUuidText(UuidVersion::V4, form, generator)).at(12), u'4');
    }

    void series_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("count");
        QTest::addColumn<QStringList>("expected");
        QTest::newRow("integers") << "1 2" << 5 << QStringList{"1", "3", "5", "7", "9"};
        QTest::newRow("decimals") << "0.5 0.25" << 4 << QStringList{"0.5", "0.75", "1", "1.25"};
        QTest::newRow("words repeat") << "a b c" << 5 << QStringList{"a", "b", "c", "a", "b"};
        QTest::newRow("quoted blank")
            << "\"New York\" Rome" << 3 << QStringList{"New York", "Rome", "New York"};
        QTest::newRow("escaped quote") << "say \\\"hi\\\"" << 2 << QStringList{"say", "\"hi\""};
        QTest::newRow("quoted empty") << "\"\" x" << 3 << QStringList{"", "x", ""};
        QTest::newRow("three numbers are words") << "1 2 3" << 4 << QStringList{"1", "2", "3", "1"};
        QTest::newRow("empty field") << "" << 2 << QStringList{"", ""};
        QTest::newRow("overflow goes decimal")
            << "9223372036854775807 1" << 2 << QStringList{"9.22337e+18", "9.22337e+18"};
    }
    void series() {
        QFETCH(QString, text);
        QFETCH(int, count);
        QTEST(parseSeries(text, count), "expected");
    }

    // The guides' examples on "Lorem Ipsum", then the clipping.
    void keepParts_data() {
        QTest::addColumn<QString>("part");
        QTest::addColumn<int>("index");
        QTest::addColumn<int>("count");
        QTest::addColumn<QString>("expected");
        const auto add = [](const char* part, int index, int count, const char* expected) {
            QTest::newRow(qPrintable(QStringLiteral("%1 %2 %3").arg(part).arg(index).arg(count)))
                << QString(part) << index << count << QString(expected);
        };
        add("left", 4, 0, "Lore");
        add("left", -4, 0, "Lorem I");
        add("left", -100, 0, "");
        add("right", 4, 0, "psum");
        add("right", -4, 0, "m Ipsum");
        add("right", -100, 0, "");
        add("middle", 2, 5, "rem I");
        add("middle", -5, 3, "Ips");
        add("middle", 7, -4, "em I");
        add("middle", 9, 5, "um");
        add("middle", 20, 3, "");
        add("middle", 2147483647, -2147483647 - 1, "Lorem Ipsum");
    }
    void keepParts() {
        QFETCH(QString, part);
        QFETCH(int, index);
        QFETCH(int, count);
        const QString lorem = QStringLiteral("Lorem Ipsum");
        QTEST(part == u"left"    ? keepLeft(lorem, index)
              : part == u"right" ? keepRight(lorem, index)
                                 : keepMiddle(lorem, index, count),
              "expected");
    }

    void splitJoinAndAnswers() {
        QCOMPARE(parseSingleIndex(QStringLiteral(" -4 ")), std::optional<int>(-4));
        QCOMPARE(parseSingleIndex(QStringLiteral("4 5")), std::nullopt);
        QCOMPARE(parseIndexAndCount(QStringLiteral("7 -4")),
                 (std::optional<std::pair<int, int>>({7, -4})));
        QCOMPARE(parseIndexAndCount(QStringLiteral("7")), std::nullopt);
        QCOMPARE(parseSplitIndexes(QStringLiteral("2 x")), std::nullopt);
        const auto indexes = parseSplitIndexes(QStringLiteral("2 4 -3"));
        QVERIFY(indexes);
        QCOMPARE(splitByIndexes(QStringLiteral("Lorem Ipsum"), *indexes),
                 (QStringList{"Lo", "re", "m Ip", "sum"}));
        // Out-of-order and out-of-range cuts still give indexes + 1 parts.
        QCOMPARE(splitByIndexes(QStringLiteral("abc"), {5, 1}), (QStringList{"a", "bc", ""}));
        QCOMPARE(splitByDelimiter(QStringLiteral("a,b,,c"), QStringLiteral(",")),
                 (QStringList{"a", "b", "", "c"}));
        QCOMPARE(splitByDelimiter(QString::fromUtf8("\xF0\x9F\x98\x80x"), QString()),
                 (QStringList{QString::fromUtf8("\xF0\x9F\x98\x80"), "x"}));
        QCOMPARE(decodeSeparator(QStringLiteral("\\t|\\n")), QStringLiteral("\t|\n"));
        QCOMPARE(joinCells({"a", "", "b"}, QStringLiteral("-")), (QStringList{"a--b", "", ""}));
    }

    // The prompts' examples: row-wise a plain number counts columns,
    // column-wise rows; signs are not read.
    void reshape_data() {
        QTest::addColumn<QString>("answer");
        QTest::addColumn<int>("values");
        QTest::addColumn<bool>("row_wise");
        QTest::addColumn<QString>("preview");
        const auto add = [](const char* answer, int values, bool row_wise, const char* preview) {
            QTest::newRow(
                qPrintable(QStringLiteral("%1 %2").arg(row_wise ? "rows" : "columns", answer)))
                << QString(answer) << values << row_wise << QString(preview);
        };
        add("25", 100, true, "25 Columns, 4 Rows");
        add("r8", 100, true, "13 Columns, 8 Rows");
        add("8 rows", 100, true, "13 Columns, 8 Rows");
        add("25", 100, false, "25 Rows, 4 Columns");
        add("c8", 100, false, "13 Rows, 8 Columns");
        add("8 cols", 100, false, "13 Rows, 8 Columns");
        add(" R8 ", 100, false, "8 Rows, 13 Columns");
        add("1", 1, true, "1 Column, 1 Row");
        add("0", 10, true, "(No shape defined)");
        add("-8", 10, true, "(No shape defined)");
        add("200", 10, true, "(No shape defined)");
    }
    void reshape() {
        QFETCH(QString, answer);
        QFETCH(int, values);
        QFETCH(bool, row_wise);
        QTEST(reshapePreview(reshapeShape(answer, values, row_wise), row_wise), "preview");
    }

    void reshapeLayout() {
        const QStringList values{"1", "2", "3", "4", "5"};
        QCOMPARE(reshapeValues(values, {2, 3}, true),
                 (QList<QStringList>{{"1", "2", "3"}, {"4", "5", ""}}));
        QCOMPARE(reshapeValues(values, {2, 3}, false),
                 (QList<QStringList>{{"1", "3", "5"}, {"2", "4", ""}}));
    }

    void idColumn() {
        QCOMPARE(findIdColumn({"Name", "iD", "id"}), 1);
        QCOMPARE(findIdColumn({"Identity"}), -1);
        QCOMPARE(fillIdColumn({"3", "", "x", "", "10", ""}),
                 (QStringList{"3", "11", "x", "12", "10", "13"}));
        QCOMPARE(fillIdColumn({"", "-5", ""}), (QStringList{"0", "-5", "1"}));
        QCOMPARE(idSequence(5, 3), (QStringList{"5", "6", "7"}));
    }
};

int main(int argc, char** argv) {
    // Conversions are UTC throughout; run in a zone with daylight saving so that
    // any local time leaking in shows.
    qputenv("TZ", "America/New_York");
    tzset();
    TestCellTransforms test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_celltransforms.moc"