#include "widgets/inputdialog.h"
#include "widgets/lineedit.h"
#include "widgets/msgbox.h"
#include "widgets/progressdialog.h"
#include "widgets/searchedit.h"
#include "widgets/togglebutton.h"

#include <QPushButton>
#include <QSignalSpy>
#include <QTest>

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

QTEST_MAIN(TestWidgets)
#include "tst_widgets.moc"
