#include "app/mainwindowwrapper.h"
#include "app/sidebar.h"
#include "app/tabbar.h"
#include "app/titlebarbutton.h"
#include "widgets/msgbox.h"

#include <QApplication>
#include <QClipboard>
#include <QCloseEvent>
#include <QFile>
#include <QHBoxLayout>
#include <QLabel>
#include <QMenu>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace {

// What the main window gives the frame: a title strip with a caption and the
// three buttons above a body, and a close event it may refuse.
class Content : public QWidget {
public:
    Content() {
        strip = new QWidget(this);
        auto* row = new QHBoxLayout(strip);
        row->setContentsMargins(0, 0, 0, 0);
        title = new QLabel(QStringLiteral("Gridmere"), strip);
        row->addWidget(title, 1);
        for (auto kind : {TitleBarButton::Kind::Minimize, TitleBarButton::Kind::Maximize,
                          TitleBarButton::Kind::Close}) {
            auto* button = new TitleBarButton(kind, strip);
            button->setFixedSize(button->sizeHint());
            row->addWidget(button);
            buttons.append(button);
        }
        auto* column = new QVBoxLayout(this);
        column->setContentsMargins(0, 0, 0, 0);
        column->addWidget(strip);
        column->addWidget(new QWidget(this), 1);
    }
    TitleBarButton* button(TitleBarButton::Kind kind) const {
        for (TitleBarButton* b : buttons)
            if (b->kind() == kind) return b;
        return nullptr;
    }

    QWidget* strip;
    QLabel* title;
    QList<TitleBarButton*> buttons;
    bool refuse_close = false;

protected:
    void closeEvent(QCloseEvent* event) override { event->setAccepted(!refuse_close); }
};

struct Frame {
    Frame() : content(new Content), wrapper(content, content->strip, content->title) {
        QObject::connect(content->button(TitleBarButton::Kind::Close), &QPushButton::clicked,
                         &wrapper, &MainWindowWrapper::onCloseButtonClicked);
        QObject::connect(content->button(TitleBarButton::Kind::Maximize), &QPushButton::clicked,
                         &wrapper, &MainWindowWrapper::onMaximizeButtonClicked);
        wrapper.resize(600, 400);
        wrapper.show();
        QVERIFY(QTest::qWaitForWindowExposed(&wrapper));
    }
    Content* content;
    MainWindowWrapper wrapper;
};

QStringList childTexts(const QTreeWidgetItem* item) {
    QStringList texts;
    for (int i = 0; i < item->childCount(); ++i)
        texts.append(item->child(i)->text(0));
    return texts;
}

void writeFile(const QString& path) {
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("a,b\n");
}

// What a person's double click sends: press, release, double click, release.
void doubleClick(QWidget* widget, const QPoint& pos) {
    QTest::mouseClick(widget, Qt::LeftButton, {}, pos);
    QTest::mouseDClick(widget, Qt::LeftButton, {}, pos);
    QTest::mouseRelease(widget, Qt::LeftButton, {}, pos);
}

QMenu* openContextMenu(QWidget* widget, const QPoint& pos) {
    QContextMenuEvent event(QContextMenuEvent::Mouse, pos, widget->mapToGlobal(pos));
    QApplication::sendEvent(widget, &event);
    return qobject_cast<QMenu*>(QApplication::activePopupWidget());
}

QAction* findAction(const QMenu* menu, const QString& text) {
    for (QAction* action : menu->actions())
        if (action->text() == text) return action;
    return nullptr;
}

} // namespace

class TestShell : public QObject {
    Q_OBJECT
private slots:
    void cleanup();
    void titleBarButtonHover_data();
    void titleBarButtonHover();
    void hoverMovesAndClears();
    void closeAsksContent_data();
    void closeAsksContent();
    void captionMaximizesAndOpensMenu();
    void tabCloseRequests_data();
    void tabCloseRequests();
    void tabMenuFollowsPath_data();
    void tabMenuFollowsPath();
    void sideBarOpenFilesFollowTabs();
    void sideBarFolderRefreshes();
    void sideBarLargeFolder_data();
    void sideBarLargeFolder();
};

void TestShell::cleanup() {
    MsgBox::setAutoAnswer({});
    if (QWidget* popup = QApplication::activePopupWidget()) popup->close();
}

void TestShell::titleBarButtonHover_data() {
    QTest::addColumn<TitleBarButton::Kind>("kind");
    QTest::newRow("close") << TitleBarButton::Kind::Close;
    QTest::newRow("minimize") << TitleBarButton::Kind::Minimize;
    QTest::newRow("maximize") << TitleBarButton::Kind::Maximize;
}

void TestShell::titleBarButtonHover() {
    QFETCH(TitleBarButton::Kind, kind);
    TitleBarButton button(kind);
    const QColor hover(10, 200, 30);
    button.setColors(Qt::white, hover, Qt::black);
    button.resize(button.sizeHint());

    QEnterEvent enter(QPointF(5, 5), QPointF(5, 5), QPointF(5, 5));
    QApplication::sendEvent(&button, &enter);
    QVERIFY(button.hovered());
    QCOMPARE(button.grab().toImage().pixelColor(1, 1), hover);

    QEvent leave(QEvent::Leave);
    QApplication::sendEvent(&button, &leave);
    QVERIFY(!button.hovered());
    QVERIFY(button.grab().toImage().pixelColor(1, 1) != hover);
}

void TestShell::hoverMovesAndClears() {
    Frame frame;
    Content* content = frame.content;
    TitleBarButton* maximize = content->button(TitleBarButton::Kind::Maximize);
    TitleBarButton* close = content->button(TitleBarButton::Kind::Close);
    // Pointer moves as the platform reports them, with their enter and leave
    // events.
    QTest::mouseMove(maximize);
    QTRY_VERIFY(maximize->hovered());
    QVERIFY(!close->hovered());

    QTest::mouseMove(close);
    QTRY_VERIFY(close->hovered());
    QVERIFY(!maximize->hovered());

    // The pointer leaves the window from the close button.
    QTest::mouseMove(&frame.wrapper, QPoint(frame.wrapper.width() + 40, -40));
    QTRY_VERIFY(!close->hovered());
    for (TitleBarButton* button : content->buttons)
        QVERIFY(!button->hovered());
}

void TestShell::closeAsksContent_data() {
    QTest::addColumn<bool>("refuse");
    QTest::newRow("refused") << true;
    QTest::newRow("accepted") << false;
}

void TestShell::closeAsksContent() {
    QFETCH(bool, refuse);
    Frame frame;
    frame.content->refuse_close = refuse;
    QSignalSpy closed(&frame.wrapper, &MainWindowWrapper::mainWindowClosedSignal);

    QTest::mouseClick(frame.content->button(TitleBarButton::Kind::Close), Qt::LeftButton);
    QCOMPARE(frame.wrapper.isVisible(), refuse);
    QCOMPARE(closed.count(), refuse ? 0 : 1);
}

void TestShell::captionMaximizesAndOpensMenu() {
    Frame frame;
    MainWindowWrapper& wrapper = frame.wrapper;
    QLabel* title = frame.content->title;
    TitleBarButton* maximize = frame.content->button(TitleBarButton::Kind::Maximize);
    QCOMPARE(wrapper.windowTitle(), QString("Gridmere"));

    doubleClick(title, title->rect().center());
    QTRY_VERIFY(wrapper.isMaximized());
    QVERIFY(maximize->windowMaximized());

    QMenu* menu = openContextMenu(title, title->rect().center());
    QVERIFY(menu);
    QCOMPARE(menu, wrapper.systemMenu());
    auto enabled = [menu](const char* text) {
        QAction* action = findAction(menu, QString::fromLatin1(text));
        return action && action->isEnabled();
    };
    QVERIFY(enabled("&Restore"));
    QVERIFY(!enabled("&Move"));
    QVERIFY(!enabled("&Size"));
    QVERIFY(!enabled("Ma&ximize"));
    QVERIFY(enabled("Mi&nimize"));
    findAction(menu, "&Restore")->trigger();
    QTRY_VERIFY(!wrapper.isMaximized());
    QVERIFY(!maximize->windowMaximized());

    doubleClick(title, title->rect().center());
    QTRY_VERIFY(wrapper.isMaximized());
    doubleClick(title, title->rect().center());
    QTRY_VERIFY(!wrapper.isMaximized());
}

void TestShell::tabCloseRequests_data() {
    QTest::addColumn<int>("index");
    QTest::addColumn<bool>("middle_click");
    for (int i = 0; i < 3; ++i) {
        QTest::addRow("middle click %d", i) << i << true;
        QTest::addRow("close button %d", i) << i << false;
    }
}

void TestShell::tabCloseRequests() {
    QFETCH(int, index);
    QFETCH(bool, middle_click);
    TabBar bar;
    for (const char* name : {"a.csv", "b.csv", "untitled"})
        bar.addTab(QString::fromLatin1(name));
    bar.setTabModified(1, true);
    bar.resize(600, TabBar::kHeight);
    bar.show();
    QVERIFY(QTest::qWaitForWindowExposed(&bar));
    QSignalSpy close(&bar, &QTabBar::tabCloseRequested);

    if (middle_click)
        QTest::mouseClick(&bar, Qt::MiddleButton, {}, bar.tabRect(index).center());
    else
        QTest::mouseClick(bar.tabButton(index, QTabBar::RightSide), Qt::LeftButton);
    QCOMPARE(close.count(), 1);
    QCOMPARE(close.first().first().toInt(), index);
    QCOMPARE(bar.count(), 3); // the window decides, after its questions
}

void TestShell::tabMenuFollowsPath_data() {
    QTest::addColumn<int>("index");
    QTest::addColumn<QString>("path");
    QTest::newRow("first, saved") << 0 << "/data/first.csv";
    QTest::newRow("middle, untitled") << 1 << "";
    QTest::newRow("last, saved") << 2 << "/data/last.csv";
}

void TestShell::tabMenuFollowsPath() {
    QFETCH(int, index);
    QFETCH(QString, path);
    TabBar bar;
    for (int i = 0; i < 3; ++i)
        bar.addTab(QStringLiteral("tab"));
    bar.setTabFile(index, QStringLiteral("name"), path);
    bar.resize(600, TabBar::kHeight);
    bar.show();
    QVERIFY(QTest::qWaitForWindowExposed(&bar));

    QMenu* menu = openContextMenu(&bar, bar.tabRect(index).center());
    QVERIFY(menu);
    const bool has_path = !path.isEmpty();
    for (const char* text : {"Rename File", "Dup&licate File", "Move File", "&Delete File",
                             "Copy File Path to Clipboard", "Sho&w File in File System",
                             "Open &Terminal to File's Directory", "Open File in Text Editor"}) {
        QAction* action = findAction(menu, QString::fromLatin1(text));
        QVERIFY2(action, text);
        QVERIFY2(action->isEnabled() == has_path, text);
    }
    QCOMPARE(findAction(menu, "Close All Files to the Left")->isEnabled(), index > 0);
    QCOMPARE(findAction(menu, "Close All Files to the Right")->isEnabled(), index < 2);
    QVERIFY(findAction(menu, "&Close File")->isEnabled());
    QVERIFY(findAction(menu, "Hide Tab Bar")->isEnabled());

    // Commands go out with the tab they were opened on.
    QSignalSpy rename(&bar, &TabBar::renameFileSignal);
    if (has_path) {
        findAction(menu, "Copy File Path to Clipboard")->trigger();
        QCOMPARE(QGuiApplication::clipboard()->text(), path);
        findAction(menu, "Rename File")->trigger();
        QCOMPARE(rename.count(), 1);
        QCOMPARE(rename.first().first().toInt(), index);
    }
    menu->close();
}

void TestShell::sideBarOpenFilesFollowTabs() {
    TabBar bar;
    SideBar side_bar(&bar);
    for (const char* name : {"a.csv", "b.csv", "c.csv"})
        bar.addTab(QString::fromLatin1(name));
    bar.setTabFile(1, QStringLiteral("renamed.csv"), QStringLiteral("/data/renamed.csv"));
    side_bar.resize(250, 400);
    side_bar.show();
    QVERIFY(QTest::qWaitForWindowExposed(&side_bar));

    QTreeWidget* tree = side_bar.openFilesTree();
    QCOMPARE(childTexts(tree->invisibleRootItem()), QStringList({"a.csv", "renamed.csv", "c.csv"}));

    QTest::mouseClick(tree->viewport(), Qt::LeftButton, {},
                      tree->visualItemRect(tree->topLevelItem(2)).center());
    QCOMPARE(bar.currentIndex(), 2);

    bar.setCurrentIndex(1);
    QCOMPARE(tree->currentItem(), tree->topLevelItem(1));
    bar.removeTab(0);
    QCOMPARE(childTexts(tree->invisibleRootItem()), QStringList({"renamed.csv", "c.csv"}));
}

void TestShell::sideBarFolderRefreshes() {
    QTemporaryDir dir;
    QVERIFY(dir.isValid());
    writeFile(dir.filePath("b.csv"));
    QVERIFY(QDir(dir.path()).mkdir("sub"));

    SideBar side_bar(nullptr);
    side_bar.resize(250, 400);
    side_bar.show();
    QVERIFY(QTest::qWaitForWindowExposed(&side_bar));
    QVERIFY(side_bar.addFolder(dir.path()));
    QCOMPARE(side_bar.folderPaths(), QStringList(QDir(dir.path()).canonicalPath()));

    QTreeWidget* tree = side_bar.foldersTree();
    QTreeWidgetItem* root = tree->topLevelItem(0);
    QCOMPARE(childTexts(root), QStringList({"sub", "b.csv"}));

    // Changes on disk reach the tree through the watcher, for the pinned
    // folder and for an opened subfolder.
    root->child(0)->setExpanded(true);
    writeFile(dir.filePath("a.csv"));
    writeFile(dir.filePath("sub/inner.csv"));
    QTRY_COMPARE(childTexts(root), QStringList({"sub", "a.csv", "b.csv"}));
    QTRY_COMPARE(childTexts(root->child(0)), QStringList({"inner.csv"}));
    QVERIFY(root->child(0)->isExpanded());
    QVERIFY(QFile::remove(dir.filePath("b.csv")));
    QTRY_COMPARE(childTexts(root), QStringList({"sub", "a.csv"}));

    QSignalSpy open(&side_bar, &SideBar::openFileSignal);
    QTreeWidgetItem* file = root->child(1);
    tree->scrollToItem(file);
    doubleClick(tree->viewport(), tree->visualItemRect(file).center());
    QCOMPARE(open.count(), 1);
    QCOMPARE(open.first().first().toString(), QDir(dir.path()).canonicalPath() + "/a.csv");
}

void TestShell::sideBarLargeFolder_data() {
    QTest::addColumn<QString>("answer");
    QTest::addColumn<bool>("added");
    QTest::newRow("open") << "&Open" << true;
    QTest::newRow("don't open") << "Do&n't Open" << false;
}

void TestShell::sideBarLargeFolder() {
    QFETCH(QString, answer);
    QFETCH(bool, added);
    QTemporaryDir dir;
    for (const char* name : {"1.csv", "2.csv", "3.csv"})
        writeFile(dir.filePath(name));

    SideBar side_bar(nullptr);
    side_bar.setLargeFolderThreshold(2);
    QString prompt;
    MsgBox::setAutoAnswer([&](MsgBox& box) {
        prompt = box.text();
        box.clickButton(answer);
    });
    QCOMPARE(side_bar.addFolder(dir.path()), added);
    QVERIFY(prompt.contains("contains a lot of files and folders"));
    QVERIFY(prompt.contains(QDir::toNativeSeparators(QDir(dir.path()).canonicalPath())));
    QCOMPARE(side_bar.folderPaths().size(), added ? 1 : 0);

    // Below the threshold there is no question.
    side_bar.setLargeFolderThreshold(3);
    prompt.clear();
    side_bar.removeFolder(dir.path());
    QVERIFY(side_bar.addFolder(dir.path()));
    QVERIFY(prompt.isEmpty());
}

QTEST_MAIN(TestShell)
#include "tst_shell.moc"
