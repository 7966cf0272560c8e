#include "widgets/editorpane.h"
#include "widgets/inputdialog.h"
#include "widgets/lineedit.h"
#include "widgets/msgbox.h"
#include "widgets/progressdialog.h"
#include "widgets/quickedit.h"
#include "widgets/searchedit.h"
#include "widgets/togglebutton.h"

#include <QPushButton>
#include <QSignalSpy>
#include <QTest>

#include <bit>
#include <functional>

class TestWidgets : public QObject {
    Q_OBJECT
private slots:
    void cleanup();
    void msgBoxAnswer_data();
    void msgBoxAnswer();
    void inputDialogAnswer_data();
    void inputDialogAnswer();
    void progressDialogCancel();
    void toggleButtonClick();
    void searchEditEscape();
    void quickEditKeys_data();
    void quickEditKeys();
    void quickEditFocusIn_data();
    void quickEditFocusIn();
    void quickEditStaysOpenWhileKeyHeld();
    void editorPaneKeys_data();
    void editorPaneKeys();
    void editorPaneFocus_data();
    void editorPaneFocus();
};

void TestWidgets::cleanup() {
    MsgBox::setAutoAnswer({});
    InputDialog::setAutoAnswer({});
    ProgressDialog::setAutoCancel({});
}

using BoxAction = std::function<void(MsgBox&)>;

void TestWidgets::msgBoxAnswer_data() {
    QTest::addColumn<QStringList>("buttons");
    QTest::addColumn<int>("default_button");
    QTest::addColumn<BoxAction>("action");
    QTest::addColumn<QString>("expected");

    const QStringList save = {"&Save", "Do&n't Save", "&Cancel"};
    const QStringList reload = {"&Reload", "Do&n't Reload"};
    auto click = [](QString text) { return BoxAction([text](MsgBox& b) { b.clickButton(text); }); };
    auto key = [](Qt::Key k) { return BoxAction([k](MsgBox& b) { QTest::keyClick(&b, k); }); };

    QTest::newRow("middle button") << save << 0 << click("Do&n't Save") << "Do&n't Save";
    QTest::newRow("enter takes the first") << save << 0 << key(Qt::Key_Return) << "&Save";
    QTest::newRow("enter takes the default") << save << 1 << key(Qt::Key_Return) << "Do&n't Save";
    QTest::newRow("escape is cancel") << save << 0 << key(Qt::Key_Escape) << "&Cancel";
    QTest::newRow("escape without cancel") << reload << 0 << key(Qt::Key_Escape) << "";
    QTest::newRow("escape on one button") << QStringList{"OK"} << 0 << key(Qt::Key_Escape) << "OK";
}

void TestWidgets::msgBoxAnswer() {
    QFETCH(QStringList, buttons);
    QFETCH(int, default_button);
    QFETCH(BoxAction, action);
    QFETCH(QString, expected);

    QStringList seen;
    MsgBox::setAutoAnswer([&](MsgBox& box) {
        seen = box.buttonTexts();
        QVERIFY(box.isVisible());
        action(box);
    });
    QCOMPARE(MsgBox::ask(nullptr, "Title", "Do you want to save changes to a.csv?", {}, buttons,
                         default_button),
             expected);
    QCOMPARE(seen, buttons);
}

using DialogAction = std::function<void(InputDialog&)>;

void TestWidgets::inputDialogAnswer_data() {
    QTest::addColumn<DialogAction>("action");
    QTest::addColumn<std::optional<QString>>("expected");

    QTest::newRow("typed and entered") << DialogAction([](InputDialog& d) {
        d.lineEdit()->clear();
        QTest::keyClicks(d.lineEdit(), "b.csv");
        QTest::keyClick(d.lineEdit(), Qt::Key_Return);
    }) << std::optional<QString>("b.csv");
    QTest::newRow("escape") << DialogAction([](InputDialog& d) {
        QTest::keyClicks(d.lineEdit(), "x");
        QTest::keyClick(d.lineEdit(), Qt::Key_Escape);
    }) << std::optional<QString>();
    QTest::newRow("start text kept")
        << DialogAction([](InputDialog& d) { QTest::keyClick(d.lineEdit(), Qt::Key_Return); })
        << std::optional<QString>("a.csv");
}

void TestWidgets::inputDialogAnswer() {
    QFETCH(DialogAction, action);
    QFETCH(std::optional<QString>, expected);
    InputDialog::setAutoAnswer(action);
    QCOMPARE(InputDialog::getText(nullptr, "Rename File", "New name:", "a.csv"), expected);
}

void TestWidgets::progressDialogCancel() {
    ProgressDialog dialog(nullptr, "Sorting", "Sorting...");
    QSignalSpy canceled(&dialog, &ProgressDialog::canceledSignal);
    dialog.show();

    // The hook stands in for a user who presses Cancel once half is done.
    ProgressDialog::setAutoCancel([](const ProgressDialog& d) { return d.value() >= 50; });
    dialog.onProgress(0.4f);
    QVERIFY(!dialog.wasCanceled());
    dialog.onProgress(0.5f);
    QVERIFY(dialog.wasCanceled());
    QCOMPARE(canceled.count(), 1);

    // Pressing again, or Escape, does not cancel twice.
    QTest::mouseClick(dialog.cancelButton(), Qt::LeftButton);
    QTest::keyClick(&dialog, Qt::Key_Escape);
    QCOMPARE(canceled.count(), 1);
    QVERIFY(dialog.isVisible());

    ProgressDialog by_hand(nullptr, "Loading", "Loading...");
    QSignalSpy by_hand_canceled(&by_hand, &ProgressDialog::canceledSignal);
    by_hand.show();
    QTest::mouseClick(by_hand.cancelButton(), Qt::LeftButton);
    QCOMPARE(by_hand_canceled.count(), 1);
}

void TestWidgets::toggleButtonClick() {
    ToggleButton toggle;
    toggle.resize(toggle.sizeHint());
    toggle.show();
    QVERIFY(QTest::qWaitForWindowExposed(&toggle));
    QSignalSpy toggled(&toggle, &ToggleButton::toggled);

    QTest::mouseClick(&toggle, Qt::LeftButton);
    QVERIFY(toggle.isChecked());
    // The knob slides over to the on side: its pixel turns from track to knob.
    const QPoint knob_on(toggle.width() - toggle.height() / 2, toggle.height() / 2);
    QTRY_COMPARE(toggle.grab().toImage().pixelColor(knob_on), QColor(Qt::white));

    QTest::mouseClick(&toggle, Qt::LeftButton);
    QVERIFY(!toggle.isChecked());
    QCOMPARE(toggled.count(), 2);
    QTRY_VERIFY(toggle.grab().toImage().pixelColor(knob_on) != QColor(Qt::white));
}

void TestWidgets::searchEditEscape() {
    QWidget parent;
    SearchEdit edit(&parent);
    parent.show();
    edit.setFocus();
    QTest::keyClicks(&edit, "term");
    QCOMPARE(edit.text(), QString("term"));
    QTest::keyClick(&edit, Qt::Key_Escape);
    QCOMPARE(edit.text(), QString());
}

namespace {
// Stands for the view behind an in-cell editor: it records the keys that the
// editor leaves to it.
class KeyRecorder : public QWidget {
public:
    QList<int> keys;

protected:
    void keyPressEvent(QKeyEvent* event) override { keys.append(event->key()); }
};
} // namespace

void TestWidgets::quickEditKeys_data() {
    QTest::addColumn<int>("key");
    QTest::addColumn<Qt::KeyboardModifiers>("modifiers");
    QTest::addColumn<bool>("reaches_view");
    QTest::addColumn<bool>("line_edit_finishes");

    QTest::newRow("return") << int(Qt::Key_Return) << Qt::KeyboardModifiers() << true << false;
    QTest::newRow("enter") << int(Qt::Key_Enter) << Qt::KeyboardModifiers() << true << false;
    QTest::newRow("keypad enter") << int(Qt::Key_Enter) << Qt::KeyboardModifiers(Qt::KeypadModifier)
                                  << true << false;
    QTest::newRow("up") << int(Qt::Key_Up) << Qt::KeyboardModifiers() << true << false;
    QTest::newRow("ctrl up") << int(Qt::Key_Up) << Qt::KeyboardModifiers(Qt::ControlModifier)
                             << true << false;
    QTest::newRow("shift down") << int(Qt::Key_Down) << Qt::KeyboardModifiers(Qt::ShiftModifier)
                                << true << false;
    // Return with a modifier is the line edit's: it finishes and leaves the
    // key to the view only afterwards.
    QTest::newRow("shift return") << int(Qt::Key_Return) << Qt::KeyboardModifiers(Qt::ShiftModifier)
                                  << true << true;
    QTest::newRow("left") << int(Qt::Key_Left) << Qt::KeyboardModifiers() << false << false;
    QTest::newRow("letter") << int(Qt::Key_X) << Qt::KeyboardModifiers() << false << false;
}

void TestWidgets::quickEditKeys() {
    QFETCH(int, key);
    QFETCH(Qt::KeyboardModifiers, modifiers);
    QFETCH(bool, reaches_view);
    QFETCH(bool, line_edit_finishes);

    KeyRecorder view;
    QuickEdit edit(&view);
    edit.setText("ab");
    view.show();
    QSignalSpy typing(&edit, &QuickEdit::unicodeTypingSignal);
    QSignalSpy finished(&edit, &QLineEdit::editingFinished);

    QTest::keyClick(&edit, Qt::Key(key), modifiers);
    QCOMPARE(view.keys.contains(key), reaches_view);
    QCOMPARE(finished.count(), line_edit_finishes ? 1 : 0);
    // Keys left to the view never count as typing; the others, and the
    // modifier keys that QTest presses around them, are typing while down.
    int typed = 0;
    for (const QList<QVariant>& emission : typing)
        typed += emission.first().toBool();
    const int modifier_keys =
        std::popcount(uint(modifiers & (Qt::ShiftModifier | Qt::ControlModifier)));
    const bool leaves_before_base = reaches_view && !line_edit_finishes;
    QCOMPARE(typed, modifier_keys + (leaves_before_base ? 0 : 1));
    QCOMPARE(typing.last().first().toBool(), false);
    QVERIFY(!edit.key_held);
}

void TestWidgets::quickEditFocusIn_data() {
    QTest::addColumn<bool>("start_select_all");
    QTest::addColumn<bool>("right_click");
    QTest::addColumn<int>("reason");
    QTest::addColumn<QString>("selected");

    // The view selects all before the editor gets the focus; Tab makes the
    // line edit select all again inside its own focus handling.
    QTest::newRow("append after view") << false << false << int(Qt::OtherFocusReason) << "";
    QTest::newRow("append after tab") << false << false << int(Qt::TabFocusReason) << "";
    QTest::newRow("replace") << true << false << int(Qt::OtherFocusReason) << "hello";
    QTest::newRow("right click") << false << true << int(Qt::OtherFocusReason) << "hello";
}

void TestWidgets::quickEditFocusIn() {
    QFETCH(bool, start_select_all);
    QFETCH(bool, right_click);
    QFETCH(int, reason);
    QFETCH(QString, selected);

    QuickEdit edit;
    edit.setText("hello");
    edit.show();
    // The window's own first focus-in must be over before the one under test.
    QVERIFY(QTest::qWaitForWindowActive(&edit));
    if (right_click) QTest::mouseClick(&edit, Qt::RightButton);
    QCOMPARE(edit.opened_by_right_click, right_click);
    edit.selectAll();
    edit.start_select_all = start_select_all;
    QFocusEvent focus_in(QEvent::FocusIn, Qt::FocusReason(reason));
    QCoreApplication::sendEvent(&edit, &focus_in);
    QCoreApplication::processEvents();
    QCOMPARE(edit.selectedText(), selected);
    if (selected.isEmpty()) QCOMPARE(edit.cursorPosition(), 5);
    QCOMPARE(edit.text(), QString("hello"));
}

void TestWidgets::quickEditStaysOpenWhileKeyHeld() {
    QuickEdit edit;
    edit.show();
    QTest::keyPress(&edit, Qt::Key_Alt, Qt::AltModifier);
    QVERIFY(edit.key_held);
    QVERIFY(!edit.close());
    QVERIFY(edit.isVisible());
    QTest::keyRelease(&edit, Qt::Key_Alt);
    QVERIFY(edit.close());
    QVERIFY(!edit.isVisible());
}

void TestWidgets::editorPaneKeys_data() {
    QTest::addColumn<int>("key");
    QTest::addColumn<Qt::KeyboardModifiers>("modifiers");
    QTest::addColumn<bool>("consume");
    QTest::addColumn<QString>("text");
    // Counts of editingFinished, nextRow, nextColumn, previousColumn.
    QTest::addColumn<QList<int>>("counts");

    const Qt::KeyboardModifiers none;
    const QList<int> quiet = {0, 0, 0, 0};
    QTest::newRow("return commits")
        << int(Qt::Key_Return) << none << false << "ab" << QList{1, 1, 0, 0};
    QTest::newRow("keypad enter commits")
        << int(Qt::Key_Enter) << Qt::KeyboardModifiers(Qt::KeypadModifier) << false << "ab"
        << QList{1, 1, 0, 0};
    QTest::newRow("return in text box") << int(Qt::Key_Return) << none << true << "ab\n" << quiet;
    QTest::newRow("ctrl return breaks line")
        << int(Qt::Key_Return) << Qt::KeyboardModifiers(Qt::ControlModifier) << false << "ab\n"
        << quiet;
    QTest::newRow("tab commits") << int(Qt::Key_Tab) << none << false << "ab" << QList{1, 0, 1, 0};
    QTest::newRow("tab in text box") << int(Qt::Key_Tab) << none << true << "ab\t" << quiet;
    QTest::newRow("backtab commits")
        << int(Qt::Key_Backtab) << Qt::KeyboardModifiers(Qt::ShiftModifier) << false << "ab"
        << QList{1, 0, 0, 1};
    QTest::newRow("ctrl tab writes tab")
        << int(Qt::Key_Tab) << Qt::KeyboardModifiers(Qt::ControlModifier) << false << "ab\t"
        << quiet;
    QTest::newRow("escape commits")
        << int(Qt::Key_Escape) << none << false << "ab" << QList{1, 0, 0, 0};
    QTest::newRow("escape commits in text box")
        << int(Qt::Key_Escape) << none << true << "ab" << QList{1, 0, 0, 0};
}

void TestWidgets::editorPaneKeys() {
    QFETCH(int, key);
    QFETCH(Qt::KeyboardModifiers, modifiers);
    QFETCH(bool, consume);
    QFETCH(QString, text);
    QFETCH(QList<int>, counts);

    EditorPane pane;
    pane.consume_navigation_keys = consume;
    pane.setPlainText("ab");
    pane.moveCursor(QTextCursor::End);
    pane.show();
    QSignalSpy finished(&pane, &EditorPane::editingFinishedSignal);
    QSignalSpy next_row(&pane, &EditorPane::nextRowWithColumnResetSignal);
    QSignalSpy next_column(&pane, &EditorPane::nextColumnWithColumnResetSignal);
    QSignalSpy previous_column(&pane, &EditorPane::previousColumnWithColumnResetSignal);

    QTest::keyClick(&pane, Qt::Key(key), modifiers);
    QCOMPARE(pane.toPlainText(), text);
    QCOMPARE((QList<int>{int(finished.count()), int(next_row.count()), int(next_column.count()),
                         int(previous_column.count())}),
             counts);
}

void TestWidgets::editorPaneFocus_data() {
    QTest::addColumn<bool>("focus_in");
    QTest::addColumn<int>("reason");
    // Counts of editingFinished, focus in, focus out.
    QTest::addColumn<QList<int>>("counts");

    QTest::newRow("in by backtab ends the edit")
        << true << int(Qt::BacktabFocusReason) << QList{1, 0, 0};
    QTest::newRow("in by mouse") << true << int(Qt::MouseFocusReason) << QList{0, 1, 0};
    QTest::newRow("in by tab") << true << int(Qt::TabFocusReason) << QList{0, 0, 0};
    QTest::newRow("out by mouse commits") << false << int(Qt::MouseFocusReason) << QList{1, 0, 1};
    QTest::newRow("out to a window") << false << int(Qt::ActiveWindowFocusReason) << QList{0, 0, 0};
}

void TestWidgets::editorPaneFocus() {
    QFETCH(bool, focus_in);
    QFETCH(int, reason);
    QFETCH(QList<int>, counts);

    EditorPane pane;
    QCOMPARE(pane.focusPolicy(), Qt::WheelFocus);
    pane.show();
    QSignalSpy finished(&pane, &EditorPane::editingFinishedSignal);
    QSignalSpy in(&pane, &EditorPane::EditorPaneFocusInSignal);
    QSignalSpy out(&pane, &EditorPane::EditorPaneFocusOutSignal);
    QFocusEvent event(focus_in ? QEvent::FocusIn : QEvent::FocusOut, Qt::FocusReason(reason));
    QCoreApplication::sendEvent(&pane, &event);
    QCOMPARE((QList<int>{int(finished.count()), int(in.count()), int(out.count())}), counts);
}

QTEST_MAIN(TestWidgets)
#include "tst_widgets.moc"
