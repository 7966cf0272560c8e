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
        QTest::newRow("case step and dash")
            << "helloWorld foo-bar"
            << "Hello World Foo-Bar|HelloWorldFooBar|helloWorldFooBar|HELLO_WORLD_FOO_BAR|"
               "hello_world_foo_bar|HWFB";
        QTest::newRow("stop words inside")
            << "the end of it"
            << "The End of It|TheEndofIt|theEndofIt|THE_END_OF_IT|the_end_of_it|TEOI";
        QTest::newRow("double blank") << "a  b"
                                      << "A  B|AB|aB|A__B|a__b|AB";
        QTest::newRow("Bank of America")
            << "Bank of America"
            << "Bank of America|BankofAmerica|bankofAmerica|BANK_OF_AMERICA|bank_of_america|BOA";
        QTest::newRow("separators restored") << "x/y,z_w"
                                             << "X/Y,Z W|XYZW|xYZW|X_Y_Z_W|x_y_z_w|XYZW";
        QTest::newRow("numbers and brackets")
            << "World War 2 (europe)"
            << "World War 2 (europe)|WorldWar2(europe)|worldWar2(europe)|WORLD_WAR_2_(EUROPE)|"
               "world_war_2_(europe)|WW2";
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
        const QString iso_in = QStringLiteral("2020-04-10T08:57:02Z");
        const auto row = [](const char* name, const QString& text, Kind from, Kind to,
                            const char* expected, const QString& from_format = {},
                            const QString& to_format = {}) {
            QTest::newRow(name) << text << from << from_format << to << to_format
                                << QString(expected);
        };
        // The option notes' examples.
        row("custom example", "Apr. 10, 2020 8:57 AM", Kind::Custom, Kind::Iso8601,
            "2020-04-10T08:57:00Z", "MMM. d, yyyy h:m ap");
        row("seconds example", "1586509063", Kind::UnixSeconds, Kind::Iso8601,
            "2020-04-10T08:57:43Z");
        row("milliseconds example", "1586509063578", Kind::UnixMilliseconds, Kind::Iso8601DateOnly,
            "2020-04-10");
        row("Excel example", "43931.3729166667", Kind::Excel, Kind::Iso8601,
            "2020-04-10T08:57:00Z");
        row("date only example", "2020-04-10", Kind::Iso8601DateOnly, Kind::UnixSeconds,
            "1586476800");
        row("ISO without T and Z", "2020-04-10 08:57:02", Kind::Iso8601, Kind::Iso8601,
            "2020-04-10T08:57:02Z");
        row("ISO milliseconds", "2020-04-10T08:57:02.123Z", Kind::Iso8601, Kind::UnixMilliseconds,
            "1586509022123");
        row("ISO offset", "2020-04-10T10:57:02+02:00", Kind::Iso8601, Kind::Iso8601,
            "2020-04-10T08:57:02Z");
        row("seconds truncated", "1586509063.9", Kind::UnixSeconds, Kind::Iso8601,
            "2020-04-10T08:57:43Z");
        row("to Excel", "2020-04-10T12:00:00Z", Kind::Iso8601, Kind::Excel, "43931.5");
        // The phantom 29 February 1900: 60 and 61 are both 1 March; below, one day more,
        // and printing adds one day more again.
        row("Excel 1", "1", Kind::Excel, Kind::Iso8601DateOnly, "1900-01-01");
        row("Excel 59", "59", Kind::Excel, Kind::Iso8601DateOnly, "1900-02-28");
        row("Excel 60", "60", Kind::Excel, Kind::Iso8601DateOnly, "1900-03-01");
        row("Excel 61", "61", Kind::Excel, Kind::Iso8601DateOnly, "1900-03-01");
        row("to Excel below 61", "1900-01-01", Kind::Iso8601DateOnly, Kind::Excel, "3");
        // Custom formats: "quoted" literals, escaped quotes, a missing year (2024 here).
        row("literal in", "2020year04", Kind::Custom, Kind::Iso8601DateOnly, "2020-04-01",
            "yyyy\"year\"MM");
        row("literal out", iso_in, Kind::Iso8601, Kind::Custom, "Day 10 of April", {},
            "\"Day \"d\" of \"MMMM");
        row("escaped quote", "\"2020\"", Kind::Custom, Kind::Custom, "2020 \"Jan\"", "\\\"yyyy\\\"",
            "yyyy \\\"MMM\\\"");
        row("missing year", "02/29", Kind::Custom, Kind::Iso8601DateOnly, "2024-02-29", "MM/dd");
        row("missing literal", "2020-04", Kind::Custom, Kind::Iso8601, "", "yyyy\"year\"MM");
        // Local time never takes part: this wall time doesn't exist in New York.
        row("daylight gap", "2021-03-14 02:30", Kind::Custom, Kind::Iso8601, "2021-03-14T02:30:00Z",
            "yyyy-MM-dd hh:mm");
        row("month 13", "2020-13-01", Kind::Iso8601DateOnly, Kind::Iso8601, "");
        row("huge seconds", "9223372036854775807", Kind::UnixSeconds, Kind::Iso8601, "");
    }
    void dateTime() {
        QFETCH(QString, text);
        QFETCH(Kind, from);
        QFETCH(QString, from_format);
        QFETCH(Kind, to);
        QFETCH(QString, to_format);
        QTEST(convertDateTime(text, from, to, from_format, to_format, 2024), "expected");
    }

    void excelDaysRoundTrip() {
        const auto there_and_back = [](const QString& excel) {
            const QString iso = convertDateTime(excel, Kind::Excel, Kind::Iso8601, {}, {});
            return convertDateTime(iso, Kind::Iso8601, Kind::Excel, {}, {});
        };
        for (int day = 61; day < 120000; day += 7)
            QCOMPARE(there_and_back(QString::number(day)), QString::number(day));
        for (const char* text : {"43931.5", "43931.25", "45000.75", "61.125"})
            QCOMPARE(there_and_back(text), QString(text));
    }

    void isoUnixRoundTrip() {
        QRandomGenerator64 generator(42);
        for (int i = 0; i < 2000; ++i) {
            const qint64 seconds = qint64(generator.bounded(quint64(253402300799))); // to 9999
            const QString iso =
                QDateTime::fromSecsSinceEpoch(seconds, Qt::UTC).toString(Qt::ISODate);
            const QString unix_text =
                convertDateTime(iso, Kind::Iso8601, Kind::UnixSeconds, {}, {});
            QCOMPARE(unix_text, QString::number(seconds));
            QCOMPARE(convertDateTime(unix_text, Kind::UnixSeconds, Kind::Iso8601, {}, {}), iso);
        }
    }

    void numberRewrites_data() {
        QTest::addColumn<QString>("rule");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("expected");
        QTest::newRow("dot example") << "to comma"
                                     << "42137.24"
                                     << "42137,24";
        QTest::newRow("dot grouped") << "to comma"
                                     << "42,137.24"
                                     << "42.137,24";
        QTest::newRow("dot whole grouped") << "to comma"
                                           << "42,137"
                                           << "42.137";
        QTest::newRow("whole, nothing to do") << "to comma"
                                              << "42137"
                                              << "";
        QTest::newRow("comma example") << "to dot"
                                       << "42137,24"
                                       << "42137.24";
        QTest::newRow("comma grouped") << "to dot"
                                       << "42.137,24"
                                       << "42,137.24";
        QTest::newRow("word") << "to dot"
                              << "abc"
                              << "";
        QTest::newRow("0012") << "fill 6"
                              << "0012"
                              << "000012";
        QTest::newRow("12a") << "fill 6"
                             << "12a"
                             << "12a";
        QTest::newRow("long enough") << "fill 4"
                                     << "123456"
                                     << "123456";
        QTest::newRow("all zeros") << "fill 4"
                                   << "00"
                                   << "0000";
    }
    void numberRewrites() {
        QFETCH(QString, rule);
        QFETCH(QString, text);
        const QString got = rule.startsWith(u"fill")
                                ? zeroFill(text, rule.mid(5).toInt())
                                : convertNumberFormat(text, rule == u"to comma");
        QTEST(got, "expected");
    }

    void randomChoices_data() {
        QTest::addColumn<bool>("decimals");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("ranges"); // "!" for a refused answer
        QTest::addColumn<QString>("values");
        // The guides' examples.
        QTest::newRow("enter") << false << ""
                               << "0:100"
                               << "";
        QTest::newRow("single number") << false << "5"
                                       << "0:5"
                                       << "";
        QTest::newRow("range") << false << "1-5"
                               << "1:5"
                               << "";
        QTest::newRow("commas") << false << "1,3,5"
                                << "1:1;3:3;5:5"
                                << "";
        QTest::newRow("blanks") << false << "1 3 5"
                                << "1:1;3:3;5:5"
                                << "";
        QTest::newRow("mixed") << false << "1-5,7,9,11"
                               << "1:5;7:7;9:9;11:11"
                               << "";
        QTest::newRow("two ranges") << false << "1-5, 15-20"
                                    << "1:5;15:20"
                                    << "";
        QTest::newRow("reversed") << false << "5 - 1"
                                  << "1:5"
                                  << "";
        QTest::newRow("word") << false << "x"
                              << "!"
                              << "";
        QTest::newRow("decimal enter") << true << ""
                                       << "0:10"
                                       << "";
        QTest::newRow("decimal single") << true << "2.5"
                                        << "0:2.5"
                                        << "";
        QTest::newRow("decimal range") << true << "1.2-5"
                                       << "1.2:5"
                                       << "";
        QTest::newRow("decimal values") << true << "1.2,3.6,5"
                                        << ""
                                        << "1.2;3.6;5";
        QTest::newRow("decimal blanks") << true << "1.2 3.6 5"
                                        << ""
                                        << "1.2;3.6;5";
        QTest::newRow("decimal ranges") << true << "1.2-5, -15.754 - -20.4"
                                        << "1.2:5;-20.4:-15.754"
                                        << "";
        QTest::newRow("values ignored") << true << "1-2, 7"
                                        << "1:2"
                                        << "";
    }
    void randomChoices() {
        QFETCH(bool, decimals);
        QFETCH(QString, text);
        RandomEngine engine(3);
        if (!decimals) {
            const auto choices = parseRandomIntegerChoices(text);
            QTEST(choices ? rangesText(choices->ranges) : QStringLiteral("!"), "ranges");
            return;
        }
        const auto choices = parseRandomDecimalChoices(text);
        QVERIFY(choices);
        QStringList values;
        for (double v : choices->values)
            values << QString::number(v);
        QTEST(rangesText(choices->ranges), "ranges");
        QTEST(values.join(u';'), "values");
        for (int i = 0; i < 200; ++i) {
            const double v = drawRandomDecimal(*choices, engine);
            const bool in_range =
                std::any_of(choices->ranges.begin(), choices->ranges.end(),
                            [v](auto r) { return v >= r.first && v <= r.second; });
            QVERIFY(in_range || std::count(choices->values.begin(), choices->values.end(), v));
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
        // v7: the time in the first 48 bits, version 7, variant binary 10.
        QRandomGenerator64 generator(11);
        for (int i = 0; i < 100; ++i) {
            const qint64 ms = qint64(generator.bounded(quint64(1) << 48));
            const QString hex = uuidText(createUuidV7(ms, generator), form)
                                    .remove(QRegularExpression(QStringLiteral("[-{}]")))
                                    .toLower();
            QCOMPARE(hex.left(12), QStringLiteral("%1").arg(ms, 12, 16, QLatin1Char('0')));
            QCOMPARE(hex.at(12), u'7');
            QVERIFY(QStringLiteral("89ab").contains(hex.at(16)));
        }
        const QString v4 = newUuidText(UuidVersion::V4, form, generator);
        QCOMPARE(QString(v4).remove(QRegularExpression(QStringLiteral("[-{}]"))).at(12), u'4');
    }

    void series_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("count");
        QTest::addColumn<QStringList>("expected");
        QTest::newRow("integers") << "1 2" << 5 << QStringList{"1", "3", "5", "7", "9"};
        QTest::newRow("falling") << "10 -3" << 3 << QStringList{"10", "7", "4"};
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

    void keepParts_data() {
        QTest::addColumn<QString>("part");
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("index");
        QTest::addColumn<int>("count");
        QTest::addColumn<QString>("expected");
        const QString lorem = QStringLiteral("Lorem Ipsum");
        QTest::newRow("left 4") << "left" << lorem << 4 << 0 << "Lore";
        QTest::newRow("left -4") << "left" << lorem << -4 << 0 << "Lorem I";
        QTest::newRow("left -100") << "left"
                                   << "abc" << -100 << 0 << "";
        QTest::newRow("right 4") << "right" << lorem << 4 << 0 << "psum";
        QTest::newRow("right -4") << "right" << lorem << -4 << 0 << "m Ipsum";
        QTest::newRow("right -100") << "right"
                                    << "abc" << -100 << 0 << "";
        QTest::newRow("middle 2 5") << "middle" << lorem << 2 << 5 << "rem I";
        QTest::newRow("middle -5 3") << "middle" << lorem << -5 << 3 << "Ips";
        QTest::newRow("middle 7 -4") << "middle" << lorem << 7 << -4 << "em I";
        QTest::newRow("middle clipped") << "middle" << lorem << 9 << 5 << "um";
        QTest::newRow("middle outside") << "middle" << lorem << 20 << 3 << "";
        QTest::newRow("middle int edges")
            << "middle" << lorem << 2147483647 << -2147483647 - 1 << lorem;
    }
    void keepParts() {
        QFETCH(QString, part);
        QFETCH(QString, text);
        QFETCH(int, index);
        QFETCH(int, count);
        QTEST(part == u"left"    ? keepLeft(text, index)
              : part == u"right" ? keepRight(text, index)
                                 : keepMiddle(text, index, count),
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

    void reshape_data() {
        QTest::addColumn<QString>("answer");
        QTest::addColumn<int>("values");
        QTest::addColumn<bool>("row_wise");
        QTest::addColumn<QString>("preview");
        QTest::newRow("25 -> 25 columns") << "25" << 100 << true << "25 Columns, 4 Rows";
        QTest::newRow("r8 -> 8 rows") << "r8" << 100 << true << "13 Columns, 8 Rows";
        QTest::newRow("8 rows -> 8 rows") << "8 rows" << 100 << true << "13 Columns, 8 Rows";
        QTest::newRow("25 -> 25 rows") << "25" << 100 << false << "25 Rows, 4 Columns";
        QTest::newRow("c8 -> 8 columns") << "c8" << 100 << false << "13 Rows, 8 Columns";
        QTest::newRow("8 cols -> 8 columns") << "8 cols" << 100 << false << "13 Rows, 8 Columns";
        QTest::newRow("singular") << "1" << 1 << true << "1 Column, 1 Row";
        QTest::newRow("zero") << "0" << 10 << true << "(No shape defined)";
        QTest::newRow("wider than values") << "200" << 10 << true << "(No shape defined)";
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
