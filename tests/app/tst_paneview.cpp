#include "app/filemetadatawidget.h"
#include "app/paneview.h"
#include "app/statusbar.h"
#include "view/headerview.h"
#include "view/tablemodel.h"
#include "view/tableview.h"
#include "widgets/editorpane.h"
#include "widgets/togglebutton.h"

#include <QApplication>
#include <QComboBox>
#include <QFile>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QUndoStack>

// The pane, the metadata panel and the status bar, driven with real files,
// clicks and keys.
class TestPaneView : public QObject {
    Q_OBJECT

    QTemporaryDir dir;

    QString writeGrid(const QString& name, int rows, int cols) {
        const QString path = dir.filePath(name);
        QFile f(path);
        if (!f.open(QIODevice::WriteOnly)) return {};
        for (int r = 0; r < rows; ++r) {
            QByteArray line;
            for (int c = 0; c < cols; ++c)
                line += (c ? "," : "") + QByteArray::number(r * 10 + c);
            f.write(line + '\n');
        }
        return path;
    }
    // A pane of 800 x 500 shown on screen, holding views of the given files.
    std::unique_ptr<PaneView> makePane(const QStringList& paths, QList<TableView*>& views) {
        auto pane = std::make_unique<PaneView>();
        for (const QString& path : paths) {
            auto* view = new TableView;
            view->model()->load(path, false);
            pane->addTableView(view);
            views << view;
        }
        pane->resize(800, 500);
        pane->show();
        if (!QTest::qWaitForWindowExposed(pane.get())) return nullptr;
        return pane;
    }
    static QLabel* progressLabel(const PaneView& pane) {
        return pane.findChild<QLabel*>(QStringLiteral("loadProgressLabel"));
    }
    static QPoint centre(TableView& v, int row, int col) {
        return v.visualRect(v.model()->index(row, col)).center();
    }
    // QTest::keyClicks takes ASCII only.
    static void typeText(QWidget* widget, const QString& text) {
        for (QChar ch : text) {
            QKeyEvent press(QEvent::KeyPress, 0, Qt::NoModifier, QString(ch));
            QKeyEvent release(QEvent::KeyRelease, 0, Qt::NoModifier, QString(ch));
            QApplication::sendEvent(widget, &press);
            QApplication::sendEvent(widget, &release);
        }
    }
    static QList<Context> contexts(const QSignalSpy& spy) {
        QList<Context> out;
        for (const QList<QVariant>& args : spy)
            out << args.at(0).value<Context>();
        return out;
    }

private slots:
    // The pane edits the main cell away from the grid: a key typed on the
    // grid goes to the pane, nothing is written live, and the end of the
    // edit writes every selected cell in one undo step.
    void editorPaneEditsTheSelection() {
        QList<TableView*> views;
        auto pane = makePane({writeGrid(QStringLiteral("pane.csv"), 3, 3)}, views);
        QVERIFY(pane);
        TableView& view = *views.front();
        TableModel& m = *view.model();
        pane->showEditorPane(true, false);
        // Without a window the pane's bits reach the view by hand.
        pane->setContext(TableOpen | TableFocus | EditorPaneShown);
        m.setMainAndSelection(Range(1, 1, Range::Model),
                              {Range(1, 1, Range::Model), Range(2, 2, Range::Model)});
        QCOMPARE(pane->editorPane()->toPlainText(), QStringLiteral("11"));
        view.setFocus();
        QTest::keyClick(&view, 'z');
        QTest::keyClick(pane->editorPane(), 'w');
        QCOMPARE(pane->editorPane()->toPlainText(), QStringLiteral("zw"));
        QCOMPARE(m.data(m.index(2, 2)).toString(), QStringLiteral("22")); // not live
        QTest::keyClick(pane->editorPane(), Qt::Key_Escape);
        QCOMPARE(m.data(m.index(1, 1)).toString(), QStringLiteral("zw"));
        QCOMPARE(m.data(m.index(2, 2)).toString(), QStringLiteral("zw"));
        QCOMPARE(view.undoStack()->count(), 1);
        // With the navigation keys its own, Enter is a line break in the cell.
        pane->setLetEditorPaneConsumeNavigationKeys(true);
        m.selectSingleCell(Range(0, 0, Range::Model));
        QCOMPARE(pane->editorPane()->toPlainText(), QStringLiteral("0"));
        view.setFocus();
        QTest::keyClick(&view, 'a');
        QTest::keyClick(pane->editorPane(), Qt::Key_Return);
        QTest::keyClick(pane->editorPane(), 'b');
        QTest::keyClick(pane->editorPane(), Qt::Key_Escape);
        QCOMPARE(m.data(m.index(0, 0)).toString(), QStringLiteral("a\nb"));
    }

    void initTestCase() {
        QVERIFY(dir.isValid());
        QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));
        qRegisterMetaType<Context>();
        qRegisterMetaType<TableView*>();
        registerRangeMetaTypes();
    }

    void threadedLoadShowsRisingProgress() {
        // About 60 MB: several progress reports of 8 MiB each.
        const QString path = dir.filePath(QStringLiteral("big.csv"));
        {
            QFile f(path);
            QVERIFY(f.open(QIODevice::WriteOnly));
            QByteArray block;
            for (int r = 0; r < 20000; ++r)
                block += QByteArray::number(r) + ",alpha beta,12.5,\"quoted, text\",2024-01-02\n";
            while (f.size() < 60 * 1024 * 1024)
                f.write(block);
        }
        QList<TableView*> views;
        auto pane = makePane({}, views);
        QVERIFY(pane);
        auto* view = new TableView;
        pane->addTableView(view);
        QVERIFY(pane->currentTableView() == view);

        bool shown_at_start = false;
        bool view_hidden = false;
        QList<int> percents;
        // Connected after the pane, so these see what the pane made of each report.
        connect(view, &TableView::startProgressUpdateSignal, this, [&] {
            const QLabel* label = progressLabel(*pane);
            shown_at_start = label && label->isVisible() && label->text() == QStringLiteral("0%");
            view_hidden = !view->isVisible() && !view->updatesEnabled();
        });
        connect(view, &TableView::loadProgressUpdateSignal, this, [&] {
            if (const QLabel* label = progressLabel(*pane))
                percents << label->text().chopped(1).toInt();
        });
        QSignalSpy finished(pane.get(), &PaneView::loadFinishedSignal);
        QSignalSpy removed(pane.get(), &PaneView::removeContextSignal);

        view->model()->load(path, true);
        QVERIFY(finished.wait(20000));
        QVERIFY(shown_at_start);
        QVERIFY(view_hidden);
        QVERIFY(contexts(removed).contains(TableOpen));
        QVERIFY2(percents.size() >= 3, qPrintable(QString::number(percents.size())));
        QVERIFY(std::is_sorted(percents.begin(), percents.end()));
        QVERIFY(percents.last() > percents.first());
        QCOMPARE(finished.at(0).at(0).value<TableView*>(), view);
        QVERIFY(!progressLabel(*pane) || !progressLabel(*pane)->isVisible());
        QVERIFY(view->isVisible());
        QVERIFY(view->updatesEnabled());
        QVERIFY(view->model()->tableData().numRawRows() > 1000000);
    }

    void loadingTabInTheBackground() {
        QList<TableView*> views;
        auto pane = makePane({writeGrid("a.csv", 4, 3), writeGrid("b.csv", 4, 3)}, views);
        QVERIFY(pane);
        TableView* back = views[1];
        QSignalSpy added(pane.get(), &PaneView::addContextSignal);
        QSignalSpy removed(pane.get(), &PaneView::removeContextSignal);
        QSignalSpy cancel(pane.get(), &PaneView::cancelLoadSignal);

        // A load that starts and moves on behind the current tab touches
        // neither the screen nor the window's context.
        pane->onStartProgressUpdate(back);
        pane->onLoadProgressUpdate(back, 3, 8, 60);
        QLabel* label = progressLabel(*pane);
        QVERIFY(label);
        QVERIFY(!label->isVisible());
        QCOMPARE(label->text(), QStringLiteral("37%"));
        QVERIFY(removed.isEmpty());

        // Brought to the front it shows its label, not its grid, and takes no commands.
        QVERIFY(pane->setCurrentTableView(back));
        QVERIFY(label->isVisible());
        QVERIFY(!back->isVisible());
        QCOMPARE(contexts(removed), QList<Context>{TableOpen});
        QCOMPARE(label->geometry(), pane->rect());

        auto* button = label->findChild<QPushButton*>();
        QVERIFY(button && button->isVisible());
        QTest::mouseClick(button, Qt::LeftButton);
        QCOMPARE(cancel.size(), 1);
        QCOMPARE(cancel.at(0).at(0).value<TableView*>(), back);

        // Back to the first tab: that one takes commands; the label hides.
        added.clear();
        QVERIFY(pane->setCurrentTableView(views[0]));
        QVERIFY(!label->isVisible());
        QVERIFY(views[0]->isVisible());
        QVERIFY(contexts(added).contains(TableOpen));

        // Its load ends while it is behind: the current contexts stay as they are.
        added.clear();
        pane->onLoadFinished(back);
        QVERIFY(added.isEmpty());
        QVERIFY(!back->isVisible());
        QVERIFY(pane->setCurrentTableView(back));
        QVERIFY(back->isVisible());
        QTRY_VERIFY(!progressLabel(*pane));
    }

    void relayFollowsTheCurrentTab_data() {
        QTest::addColumn<int>("current");
        QTest::addColumn<int>("selected_in");
        QTest::addColumn<bool>("relayed");
        QTest::newRow("current tab") << 1 << 1 << true;
        QTest::newRow("tab left behind") << 1 << 0 << false;
        QTest::newRow("back to the first") << 0 << 0 << true;
    }
    void relayFollowsTheCurrentTab() {
        QFETCH(int, current);
        QFETCH(int, selected_in);
        QFETCH(bool, relayed);
        QList<TableView*> views;
        auto pane = makePane({writeGrid("a.csv", 6, 4), writeGrid("b.csv", 6, 4)}, views);
        QVERIFY(pane);
        QVERIFY(pane->setCurrentTableView(views[1]));
        QVERIFY(pane->setCurrentTableView(views[current]));
        QSignalSpy selection(pane.get(), &PaneView::selectionChangedSignal);
        QSignalSpy main_cell(pane.get(), &PaneView::mainCellChangedSignal);

        TableView* target = views[selected_in];
        if (target->isVisible())
            QTest::mouseClick(target->viewport(), Qt::LeftButton, {}, centre(*target, 3, 2));
        else // a hidden tab cannot be clicked; its selection still moves
            target->model()->selectSingleCell(Range(3, 2, Range::Model));

        QCOMPARE(!selection.isEmpty(), relayed);
        QCOMPARE(!main_cell.isEmpty(), relayed);
        if (relayed) QCOMPARE(selection.at(0).at(0).value<TableView*>(), target);
    }

    void statusBarFollowsTheSelection() {
        QList<TableView*> views;
        auto pane = makePane({writeGrid("s.csv", 6, 4)}, views);
        QVERIFY(pane);
        TableView& view = *views[0];
        StatusBar bar;
        bar.setTableView(&view);
        QCOMPARE(bar.sizeItemText(), QStringLiteral("6 rows x 4 columns"));
        QCOMPARE(bar.delimiterItemText(), QStringLiteral("Delimiter: ,"));
        QCOMPARE(bar.modeItemText(), QStringLiteral("Editable"));

        QWidget* vp = view.viewport();
        QTest::mouseClick(vp, Qt::LeftButton, {}, centre(view, 2, 1));
        QCOMPARE(bar.selectionItemText(), QStringLiteral("Selected: 1 cell"));
        QCOMPARE(bar.cellLengthItemText(), QStringLiteral("Cell Length: 2"));
        QTest::mouseClick(vp, Qt::LeftButton, Qt::ShiftModifier, centre(view, 4, 3));
        QCOMPARE(bar.selectionItemText(), QStringLiteral("Selected: 3 x 3"));
        // Cells 21..23, 31..33, 41..43.
        QTRY_COMPARE(bar.statsItemText(), QStringLiteral("Sum: 288      Mean: 32"));
        QTest::mouseClick(vp, Qt::LeftButton, Qt::ControlModifier, centre(view, 0, 0));
        QCOMPARE(bar.selectionItemText(), QStringLiteral("Selected: 10 cells"));

        HeaderView* labels = view.horizontalLabels();
        const auto at = [&](int col) {
            return QPoint(labels->sectionViewportPosition(col) + 5, labels->height() / 2);
        };
        QTest::mouseClick(labels->viewport(), Qt::LeftButton, {}, at(1));
        QCOMPARE(bar.selectionItemText(), QStringLiteral("Selected: 1 column"));
        QTest::mouseClick(labels->viewport(), Qt::LeftButton, Qt::ControlModifier, at(3));
        QCOMPARE(bar.selectionItemText(), QStringLiteral("Selected: 2 columns"));

        QCOMPARE(StatusBar::sizeText(1200, 1, 1100, 1),
                 QStringLiteral("1,100 rows x 1 column (1,200 rows x 1 column)"));
        QCOMPARE(StatusBar::delimiterText(QStringLiteral("\t"), QStringLiteral(",")),
                 QStringLiteral("Delimiters (Load, Save): tab, ,"));
        QCOMPARE(bar.filtersItemText(), QStringLiteral("Filters: none"));
    }

    void metadataSaveCombos_data() {
        QTest::addColumn<QString>("combo");
        QTest::addColumn<QString>("typed"); // keys typed, or "down" for one step down
        QTest::addColumn<QString>("delimiter_save");
        QTest::addColumn<int>("line_ending");
        QTest::addColumn<int>("standard");
        QTest::addColumn<bool>("error");
        QTest::newRow("typed semicolon") << "delimiter"
                                         << ";"
                                         << ";" << 1 << 0 << false;
        QTest::newRow("typed tab word") << "delimiter"
                                        << "tab"
                                        << "\t" << 1 << 0 << false;
        QTest::newRow("typed backslash t") << "delimiter"
                                           << "\\t"
                                           << "\t" << 1 << 0 << false;
        QTest::newRow("three letters") << "delimiter"
                                       << "abc"
                                       << "," << 1 << 0 << true;
        QTest::newRow("beyond ascii") << "delimiter"
                                      << "é"
                                      << "," << 1 << 0 << true;
        QTest::newRow("line ending") << "line ending"
                                     << "down"
                                     << "," << 4 << 0 << false;
        QTest::newRow("standard") << "standard"
                                  << "down"
                                  << "," << 1 << 4 << false;
    }
    void metadataSaveCombos() {
        QFETCH(QString, combo);
        QFETCH(QString, typed);
        QFETCH(QString, delimiter_save);
        QFETCH(int, line_ending);
        QFETCH(int, standard);
        QFETCH(bool, error);
        QList<TableView*> views;
        auto pane = makePane({writeGrid("m.csv", 3, 3)}, views);
        QVERIFY(pane);
        TableModel& model = *views[0]->model();
        // One step down: "Mac/Linux (LF)" to "Record Separator", "RFC 4180"
        // to "ASCII Separated Values".
        model.setLineEnding(UnixLineEnding);
        FileMetadataWidget panel;
        panel.setTableView(views[0]);
        panel.resize(280, 700);
        panel.show();
        QVERIFY(QTest::qWaitForWindowExposed(&panel));
        QSignalSpy reload(&panel, &FileMetadataWidget::reloadFileWithParametersSignal);

        QComboBox* box = combo == QStringLiteral("delimiter") ? panel.delimiterSaveCombo()
                         : combo == QStringLiteral("line ending")
                             ? panel.lineEndingSaveCombo()
                             : panel.parsingStandardSaveCombo();
        box->setFocus();
        if (typed == QStringLiteral("down")) {
            QTest::keyClick(box, Qt::Key_Down);
        } else {
            box->lineEdit()->selectAll();
            typeText(box->lineEdit(), typed);
            QTest::keyClick(box->lineEdit(), Qt::Key_Return);
        }
        QCOMPARE(model.delimiterSave(), delimiter_save);
        QCOMPARE(model.delimiterOpen(), QStringLiteral(","));
        QCOMPARE(int(model.lineEnding()), line_ending);
        QCOMPARE(int(model.parsingStandard()), standard);
        bool error_shown = false;
        for (const QLabel* l : panel.findChildren<QLabel*>())
            if (l->text() == QStringLiteral("The delimiter is limited to one ASCII character."))
                error_shown = l->isVisible();
        QCOMPARE(error_shown, error);
        // Saving parameters never reload the file.
        QVERIFY(reload.isEmpty());
    }

    void metadataLoadComboAsksForReload() {
        QList<TableView*> views;
        auto pane = makePane({writeGrid("l.csv", 3, 3)}, views);
        QVERIFY(pane);
        FileMetadataWidget panel;
        panel.setTableView(views[0]);
        panel.show();
        QVERIFY(QTest::qWaitForWindowExposed(&panel));
        QSignalSpy reload(&panel, &FileMetadataWidget::reloadFileWithParametersSignal);
        QComboBox* box = panel.delimiterCombo();
        box->setFocus();
        box->lineEdit()->selectAll();
        QTest::keyClicks(box->lineEdit(), QStringLiteral("|"));
        QTest::keyClick(box->lineEdit(), Qt::Key_Return);
        QCOMPARE(reload.size(), 1);
        QCOMPARE(reload.at(0).at(0).toString(), QStringLiteral("|"));
        // Nobody reloaded: the combo goes back to what the model was read with.
        QCOMPARE(views[0]->model()->delimiterOpen(), QStringLiteral(","));
        QCOMPARE(box->currentText(), QStringLiteral("comma (,)"));
    }

    void fileSizeText_data() {
        QTest::addColumn<qint64>("bytes");
        QTest::addColumn<QString>("text");
        QTest::newRow("bytes") << qint64(1023) << "1,023 bytes";
        QTest::newRow("one KB") << qint64(1024) << "1 KB (1,024 bytes)";
        QTest::newRow("half") << qint64(1536) << "1.5 KB (1,536 bytes)";
        QTest::newRow("MB") << qint64(5 * 1048576) << "5 MB (5,242,880 bytes)";
        QTest::newRow("TB") << (qint64(1) << 41) << "2 TB (2,199,023,255,552 bytes)";
    }
    void fileSizeText() {
        QFETCH(qint64, bytes);
        QFETCH(QString, text);
        QCOMPARE(FileMetadataWidget::fileSizeText(bytes), text);
    }
};

QTEST_MAIN(TestPaneView)
#include "tst_paneview.moc"
