#include "application.h"

#include "app/mainwindow.h"
#include "app/mainwindowwrapper.h"
#include "app/sidebar.h"
#include "view/theme.h"

#include <QDesktopServices>
#include <QDir>
#include <QFileInfo>
#include <QFileOpenEvent>
#include <QProcess>
#include <QStandardPaths>
#include <QUrl>

#include <algorithm>

Application::Application(int& argc, char** argv) : QApplication(argc, argv) {
    setApplicationName(QStringLiteral("Gridmere"));
    setApplicationVersion(QStringLiteral("2.3"));
    working_directory = QDir::currentPath();
    localFolder();
    Theme theme;
    theme.loadUserThemes();
    theme.apply(QStringLiteral("Dark"));
    setStyleSheet(theme.styleSheet());
    createMainWindow(true);
}

Application::~Application() {
    for (MainWindowWrapper* w : wrappers)
        delete w;
}

QString Application::localFolder() {
    const QString folder = QStandardPaths::writableLocation(QStandardPaths::AppDataLocation);
    QDir().mkpath(folder);
    QDir().mkpath(QDir(folder).filePath(QStringLiteral("Themes")));
    return folder;
}

void Application::createMainWindow(bool setup_default_geometry) {
    auto* window = new MainWindow;
    window->usePreferenceFolder(localFolder());
    auto* frame = new MainWindowWrapper(window, window->titleBar(), window->titleLabel());
    connect(window, &MainWindow::minimizeButtonClickedSignal, frame,
            &MainWindowWrapper::onMinimizeButtonClicked);
    connect(window, &MainWindow::maximizeButtonClickedSignal, frame,
            &MainWindowWrapper::onMaximizeButtonClicked);
    connect(window, &MainWindow::closeButtonClickedSignal, frame,
            &MainWindowWrapper::onCloseButtonClicked);
    connect(window, &MainWindow::setWindowTitleSignal, frame, &MainWindowWrapper::onSetWindowTitle);
    connect(window, &MainWindow::createNewInstanceSignal, this, &Application::createNewInstance);
    connect(window, &MainWindow::openTerminalToFilesDirectorySignal, this,
            &Application::openTerminalToFilesDirectory);
    connect(window, &MainWindow::showFileInFileSystemSignal, this,
            &Application::showFileInFileSystem);
    connect(frame, &MainWindowWrapper::mainWindowClosedSignal, this,
            &Application::onMainWindowClosed);
    main_windows.push_back(window);
    wrappers.push_back(frame);
    main_window = window;
    wrapper_ = frame;
    if (setup_default_geometry) {
        frame->resize(1280, 800);
        frame->show();
    }
    frame->activateWindow();
}

void Application::parseArguments(const QStringList& arguments) {
    int width = -1, height = -1, x = -1, y = -1;
    QStringList files;
    for (int i = 1; i < arguments.size(); ++i) {
        const QString& a = arguments[i];
        if (a == "-w" || a == "-h" || a == "-x" || a == "-y") {
            // A value-taking option without its value ends the parsing.
            if (i + 1 >= arguments.size()) break;
            bool ok = false;
            const int v = arguments[++i].toInt(&ok);
            if (!ok) continue;
            (a == "-w" ? width : a == "-h" ? height : a == "-x" ? x : y) = v;
            continue;
        }
        const QFileInfo info(a);
        if (info.isDir()) {
            main_window->sideBar()->addFolder(info.absoluteFilePath());
        } else if (info.exists()) {
            files << info.absoluteFilePath();
        } else {
            const QFileInfo relative(QDir(working_directory).filePath(a));
            if (relative.exists() && !relative.isDir()) files << relative.absoluteFilePath();
        }
    }
    if (width > 0 || height > 0)
        wrapper_->resize(width > 0 ? width : wrapper_->width(),
                         height > 0 ? height : wrapper_->height());
    if (x >= 0 || y >= 0) wrapper_->move(x >= 0 ? x : wrapper_->x(), y >= 0 ? y : wrapper_->y());
    if (!files.isEmpty()) main_window->openFiles(files);
}

void Application::createNewInstance(bool setup_default_geometry, QStringList filepath_list) {
    const QSize size = wrapper_ ? wrapper_->size() : QSize(1280, 800);
    createMainWindow(setup_default_geometry);
    if (!setup_default_geometry) {
        wrapper_->resize(size);
        wrapper_->show();
    }
    main_window->openFiles(filepath_list);
}

void Application::onMainWindowClosed() {
    auto* frame = qobject_cast<MainWindowWrapper*>(sender());
    const auto it = std::find(wrappers.begin(), wrappers.end(), frame);
    if (it == wrappers.end()) return;
    const size_t index = size_t(it - wrappers.begin());
    const bool was_current = frame == wrapper_;
    wrappers.erase(it);
    main_windows.erase(main_windows.begin() + long(index));
    frame->deleteLater();
    if (was_current) {
        wrapper_ = wrappers.empty() ? nullptr : wrappers.front();
        main_window = main_windows.empty() ? nullptr : main_windows.front();
    }
}

void Application::closeProgram() {
    for (MainWindowWrapper* w : std::vector<MainWindowWrapper*>(wrappers))
        w->close();
}

void Application::openTerminalToFilesDirectory(QString path) {
    const QString folder = QFileInfo(path).isDir() ? path : QDir::homePath();
    // The desktop's own terminal first, then the common ones.
    for (const QString& terminal :
         {QStringLiteral("x-terminal-emulator"), QStringLiteral("gnome-terminal"),
          QStringLiteral("konsole"), QStringLiteral("xfce4-terminal"), QStringLiteral("xterm")}) {
        if (QStandardPaths::findExecutable(terminal).isEmpty()) continue;
        if (QProcess::startDetached(terminal, {}, folder)) return;
    }
}

void Application::showFileInFileSystem(QString filepath) {
    const QString folder = QFileInfo(filepath).absolutePath();
    if (QFileInfo(folder).isDir()) QDesktopServices::openUrl(QUrl::fromLocalFile(folder));
}

bool Application::event(QEvent* e) {
    if (e->type() == QEvent::FileOpen && main_window)
        main_window->openFile(static_cast<QFileOpenEvent*>(e)->file());
    return QApplication::event(e);
}
