#include "widgets/codeeditor/codeeditor.h"
#include "widgets/codeeditor/jsonhighlighter.h"
#include "widgets/codeeditor/pythoncompleter.h"
#include "widgets/codeeditor/pythonhighlighter.h"
#include "widgets/codeeditor/syntaxstyle.h"
#include "widgets/codeeditor/xmlhighlighter.h"

#include <QAbstractItemView>
#include <QTest>
#include <QTextBlock>

#include <functional>
#include <memory>

namespace {

const QStringList roles = {"Text",     "Keyword", "Number", "String",      "Comment",
                           "Function", "Type",    "Import", "Occurrences", "Parentheses"};

// Every role in its own colour, so that a colour on screen names its role.
QString distinctScheme() {
    QString xml = "<style-scheme name=\"Test\">\n";
    for (int i = 0; i < roles.size(); ++i)
        xml += QString("<style name=\"%1\" foreground=\"#0000%2\" background=\"#ff00%2\"/>\n")
                   .arg(roles[i])
                   .arg(i + 16, 2, 16);
    return xml + "<style name=\"CurrentLine\" background=\"#eeeeee\"/>\n</style-scheme>\n";
}

SyntaxStyle& testStyle() {
    static SyntaxStyle style;
    if (style.name().isEmpty()) style.load(distinctScheme());
    return style;
}

QString roleOf(const QColor& colour) {
    for (const QString& role : roles)
        if (testStyle().format(role).foreground().color() == colour) return role;
    return {};
}

// The block's coloured runs as "Role:text", in order.
QString coloured(const QTextBlock& block) {
    const QString text = block.text();
    QStringList by_character(text.size());
    for (const QTextLayout::FormatRange& range : block.layout()->formats())
        for (int i = range.start; i < range.start + range.length && i < text.size(); ++i)
            by_character[i] = roleOf(range.format.foreground().color());
    QStringList runs;
    for (int i = 0; i < text.size();) {
        int end = i + 1;
        while (end < text.size() && by_character[end] == by_character[i])
            ++end;
        if (!by_character[i].isEmpty()) runs << by_character[i] + ":" + text.mid(i, end - i);
        i = end;
    }
    return runs.join(' ');
}

using MakeHighlighter = std::function<StyleSyntaxHighlighter*()>;

} // namespace

class TestCodeEditor : public QObject {
    Q_OBJECT
private slots:
    void highlighting_data();
    void highlighting();
    void schemeLoading_data();
    void schemeLoading();
    void themeSchemes_data();
    void themeSchemes();
    void editingKeys_data();
    void editingKeys();
    void extraSelections_data();
    void extraSelections();
    void completion();
};

void TestCodeEditor::highlighting_data() {
    QTest::addColumn<MakeHighlighter>("make");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QStringList>("expected");

    const MakeHighlighter json = [] { return new JSONHighlighter; };
    const MakeHighlighter xml = [] { return new XMLHighlighter; };
    const MakeHighlighter python = [] { return new PythonHighlighter; };

    QTest::newRow("json object")
        << json << R"({"id": 42, "ok": true, "name": "Ann", "x": null})"
        << QStringList{R"(Keyword:"id" Number:42 Keyword:"ok" Keyword:true Keyword:"name" )"
                       R"(String:"Ann" Keyword:"x" Keyword:null)"};
    QTest::newRow("json key after a value")
        << json << R"([{"a": "x", "b": 1.5}])"
        << QStringList{R"(Keyword:"a" String:"x" Keyword:"b" Number:1.5)"};
    QTest::newRow("json escaped quote and colon")
        << json << R"({"q": "say \"hi\": now"})"
        << QStringList{R"(Keyword:"q" String:"say \"hi\": now")"};

    QTest::newRow("xml element") << xml << R"(<item id="7">text</item>)"
                                 << QStringList{R"(Keyword:item Text:id String:"7" Keyword:item)"};
    QTest::newRow("xml comment over lines")
        << xml << "<a> <!-- one\n<c x=\"1\"> two\n--> <b/>"
        << QStringList{"Keyword:a Comment:<!-- one", R"(Comment:<c x="1"> two)",
                       "Comment:--> Keyword:b"};

    QTest::newRow("python import") << python << "import os" << QStringList{"Import:import os"};
    QTest::newRow("python definition") << python << "def area(r):  # size"
                                       << QStringList{"Keyword:def Function:area Comment:# size"};
    QTest::newRow("python call through objects")
        << python << "total = os.path.join(3.5)" << QStringList{"Function:join Number:3.5"};
    QTest::newRow("python hash in string")
        << python << R"(x = "a # b"  # real)" << QStringList{R"(String:"a # b" Comment:# real)"};
    QTest::newRow("python comparison is no type")
        << python << "if count == 0:" << QStringList{"Keyword:if Number:0"};
    QTest::newRow("python triple quotes over lines")
        << python << "s = '''one\ntwo # not\nthree''' + 'x'\nif"
        << QStringList{"String:'''one", "String:two # not", "String:three''' String:'x'",
                       "Keyword:if"};
}

void TestCodeEditor::highlighting() {
    QFETCH(MakeHighlighter, make);
    QFETCH(QString, text);
    QFETCH(QStringList, expected);

    QTextDocument document(text);
    std::unique_ptr<StyleSyntaxHighlighter> highlighter(make());
    highlighter->setDocument(&document);
    // Highlights the whole document at once, line by line from the top.
    highlighter->setSyntaxStyle(&testStyle());

    QStringList seen;
    for (QTextBlock block = document.begin(); block.isValid(); block = block.next())
        seen << coloured(block);
    QCOMPARE(seen, expected);
}

void TestCodeEditor::schemeLoading_data() {
    QTest::addColumn<QString>("xml");
    QTest::addColumn<bool>("loads");

    QTest::newRow("well formed") << R"(<style-scheme name="Mine">
        <style name="Keyword" foreground="#112233" background="#445566" bold="true"
               italic="true" underlineStyle="WaveUnderline"/>
        <style name="Text" foreground="not a colour"/>
    </style-scheme>)" << true;
    QTest::newRow("truncated") << R"(<style-scheme name="Mine"><style name="Keyword")" << false;
    QTest::newRow("two roots") << "<style-scheme name=\"Mine\"/><style-scheme/>" << false;
    QTest::newRow("other root") << "<language name=\"Mine\"/>" << false;
    QTest::newRow("empty") << "" << false;
}

void TestCodeEditor::schemeLoading() {
    QFETCH(QString, xml);
    QFETCH(bool, loads);

    SyntaxStyle style;
    style.load(distinctScheme());
    QCOMPARE(style.load(xml), loads);
    if (!loads) {
        // Not what was there before, nor nothing: the default scheme.
        const SyntaxStyle* fallback = SyntaxStyle::defaultStyle();
        QCOMPARE(style.name(), fallback->name());
        QVERIFY(!style.name().isEmpty());
        QCOMPARE(style.format("Keyword"), fallback->format("Keyword"));
        return;
    }
    QCOMPARE(style.name(), QString("Mine"));
    const QTextCharFormat keyword = style.format("Keyword");
    QCOMPARE(keyword.foreground().color(), QColor("#112233"));
    QCOMPARE(keyword.background().color(), QColor("#445566"));
    QCOMPARE(keyword.fontWeight(), int(QFont::Bold));
    QVERIFY(keyword.fontItalic());
    QCOMPARE(keyword.underlineStyle(), QTextCharFormat::WaveUnderline);
    QVERIFY(style.hasFormat("Text"));
    QVERIFY(!style.format("Text").hasProperty(QTextFormat::ForegroundBrush));
    QVERIFY(!style.hasFormat("Comment"));
}

void TestCodeEditor::themeSchemes_data() {
    QTest::addColumn<QString>("theme");
    QTest::addColumn<bool>("dark");

    QTest::newRow("default") << "" << false;
    QTest::newRow("unknown") << "Sepia" << false;
    QTest::newRow("dark") << "Dark" << true;
    QTest::newRow("light") << "Light" << false;
    QTest::newRow("dracula") << "Dracula" << true;
    QTest::newRow("solarized dark") << "Solarized Dark" << true;
    QTest::newRow("solarized light") << "Solarized Light" << false;
}

void TestCodeEditor::themeSchemes() {
    QFETCH(QString, theme);
    QFETCH(bool, dark);

    QFile file(SyntaxStyle::schemePath(theme));
    QVERIFY(file.open(QIODevice::ReadOnly));
    SyntaxStyle style;
    QVERIFY(style.load(QString::fromUtf8(file.readAll())));
    for (const QString& role :
         roles + QStringList{"LineNumber", "CurrentLineNumber", "CurrentLine", "Selection"})
        QVERIFY2(style.hasFormat(role), qPrintable(role));

    const QTextCharFormat text = style.format("Text");
    QCOMPARE(text.background().color().lightness() < 128, dark);
    // Text and selected text must stay readable on their backgrounds.
    auto contrast = [](const QColor& a, const QColor& b) {
        return std::abs(a.lightness() - b.lightness());
    };
    QVERIFY(contrast(text.foreground().color(), text.background().color()) > 60);
    const QTextCharFormat selection = style.format("Selection");
    QVERIFY(contrast(selection.foreground().color(), selection.background().color()) > 60);
}

void TestCodeEditor::editingKeys_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("anchor");
    QTest::addColumn<int>("position");
    QTest::addColumn<bool>("helps");
    // Literal text, or <Return>, <Tab>, <Backtab>, <Backspace>.
    QTest::addColumn<QStringList>("keys");
    QTest::addColumn<QString>("expected");
    QTest::addColumn<int>("cursor");

    QTest::newRow("opener adds closer") << "" << 0 << 0 << true << QStringList{"("} << "()" << 1;
    QTest::newRow("without help") << "" << 0 << 0 << false << QStringList{"(["} << "([" << 2;
    QTest::newRow("closer steps over")
        << "" << 0 << 0 << true << QStringList{"{[a]}"} << "{[a]}" << 5;
    QTest::newRow("quotes pair") << "" << 0 << 0 << true << QStringList{"\"a\""} << "\"a\"" << 3;
    QTest::newRow("apostrophe in word")
        << "" << 0 << 0 << true << QStringList{"don't"} << "don't" << 5;
    QTest::newRow("selection in brackets")
        << "abc" << 0 << 3 << true << QStringList{"["} << "[abc]" << 4;
    QTest::newRow("backspace takes pair")
        << "x" << 1 << 1 << true << QStringList{"(", "<Backspace>"} << "x" << 1;
    QTest::newRow("return keeps indent")
        << "    if x:" << 9 << 9 << true << QStringList{"<Return>", "y"} << "    if x:\n    y"
        << 15;
    QTest::newRow("return in indent")
        << "    x" << 2 << 2 << true << QStringList{"<Return>"} << "  \n    x" << 5;
    QTest::newRow("return without help")
        << "    x" << 5 << 5 << false << QStringList{"<Return>"} << "    x\n"
        << 6;
    QTest::newRow("tab as spaces") << "x" << 0 << 0 << true << QStringList{"<Tab>"} << "    x" << 4;
    QTest::newRow("tab kept") << "x" << 0 << 0 << false << QStringList{"<Tab>"} << "\tx" << 1;
    QTest::newRow("tab indents lines")
        << "a\nb\nc" << 1 << 3 << true << QStringList{"<Tab>"} << "    a\n    b\nc" << 11;
    QTest::newRow("backtab unindents lines")
        << "    a\n\tb\n  c" << 0 << 11 << true << QStringList{"<Backtab>"} << "a\nb\nc" << 5;
    QTest::newRow("backtab on line")
        << "      a" << 7 << 7 << true << QStringList{"<Backtab>"} << "  a" << 3;
}

void TestCodeEditor::editingKeys() {
    QFETCH(QString, text);
    QFETCH(int, anchor);
    QFETCH(int, position);
    QFETCH(bool, helps);
    QFETCH(QStringList, keys);
    QFETCH(QString, expected);
    QFETCH(int, cursor);

    CodeEditor editor;
    editor.setAutoParentheses(helps);
    editor.setAutoIndentation(helps);
    editor.setTabReplace(helps);
    editor.setPlainText(text);
    QTextCursor start = editor.textCursor();
    start.setPosition(anchor);
    start.setPosition(position, QTextCursor::KeepAnchor);
    editor.setTextCursor(start);
    editor.show();

    static const QHash<QString, Qt::Key> named = {{"<Return>", Qt::Key_Return},
                                                  {"<Tab>", Qt::Key_Tab},
                                                  {"<Backtab>", Qt::Key_Backtab},
                                                  {"<Backspace>", Qt::Key_Backspace}};
    for (const QString& key : keys) {
        if (named.contains(key))
            QTest::keyClick(&editor, named[key],
                            key == "<Backtab>" ? Qt::ShiftModifier : Qt::NoModifier);
        else
            QTest::keyClicks(&editor, key);
    }
    QCOMPARE(editor.toPlainText(), expected);
    QCOMPARE(editor.textCursor().position(), cursor);
}

void TestCodeEditor::extraSelections_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("cursor");
    // Each marked span as "Role:start-end", besides the current line.
    QTest::addColumn<QStringList>("expected");

    QTest::newRow("other uses of the word")
        << "foo bar foo\nfoo.x food" << 1 << QStringList{"Occurrences:8-11", "Occurrences:12-15"};
    QTest::newRow("underscore splits words") << "a_b b" << 2 << QStringList{"Occurrences:4-5"};
    QTest::newRow("bracket after cursor")
        << "(a(b)c)" << 0 << QStringList{"Parentheses:0-1", "Parentheses:6-7"};
    QTest::newRow("bracket before cursor")
        << "{\n  [x]\n}" << 9 << QStringList{"Parentheses:8-9", "Parentheses:0-1"};
    QTest::newRow("unmatched bracket") << "(()" << 0 << QStringList{};
}

void TestCodeEditor::extraSelections() {
    QFETCH(QString, text);
    QFETCH(int, cursor);
    QFETCH(QStringList, expected);

    CodeEditor editor;
    editor.setSyntaxStyle(&testStyle());
    editor.setPlainText(text);
    editor.resize(400, 200);
    editor.show();
    QTextCursor at = editor.textCursor();
    at.setPosition(cursor);
    editor.setTextCursor(at);

    QStringList seen;
    bool current_line = false;
    for (const QTextEdit::ExtraSelection& selection : editor.extraSelections()) {
        if (selection.format.property(QTextFormat::FullWidthSelection).toBool()) {
            current_line = true;
            continue;
        }
        seen << QString("%1:%2-%3")
                    .arg(roleOf(selection.format.foreground().color()))
                    .arg(selection.cursor.selectionStart())
                    .arg(selection.cursor.selectionEnd());
    }
    QVERIFY(current_line);
    QCOMPARE(seen, expected);
}

void TestCodeEditor::completion() {
    CodeEditor editor;
    editor.setCompleter(new PythonCompleter);
    editor.show();
    QVERIFY(QTest::qWaitForWindowActive(&editor));

    QTest::keyClicks(&editor, "x = IsI");
    QAbstractItemView* popup = editor.completer()->popup();
    QTRY_VERIFY(popup->isVisible());
    QCOMPARE(editor.completer()->currentCompletion(), QString("isinstance"));
    QTest::keyClick(popup, Qt::Key_Return);
    QCOMPARE(editor.toPlainText(), QString("x = isinstance"));
    QVERIFY(!popup->isVisible());

    // A single letter offers nothing yet.
    QTest::keyClicks(&editor, " p");
    QVERIFY(!popup->isVisible());
}

QTEST_MAIN(TestCodeEditor)
#include "tst_codeeditor.moc"
