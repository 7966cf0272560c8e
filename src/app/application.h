#pragma once

#include <QApplication>
#include <QStringList>

#include <vector>

class MainWindow;
class MainWindowWrapper;

// The process: its windows, in order of creation, and the command lines that
// turn into open files and windows.
class Application : public QApplication {
    Q_OBJECT

public:
    Application(int& argc, char** argv);
    ~Application() override;

    // Handles a command line (index 0 is the program): files, folders and
    // the window geometry options "-w", "-h", "-x", "-y".
    void parseArguments(const QStringList& arguments);
    MainWindow* mainWindow() const { return main_window; }
    MainWindowWrapper* wrapper() const { return wrapper_; }
    const std::vector<MainWindow*>& mainWindows() const { return main_windows; }
    // The per-user folder, made on first use.
    static QString localFolder();

public slots:
    void openTerminalToFilesDirectory(QString path);
    void showFileInFileSystem(QString filepath);
    void createNewInstance(bool setup_default_geometry, QStringList filepath_list);
    void closeProgram();
    void onMainWindowClosed();

protected:
    bool event(QEvent* e) override;

private:
    void createMainWindow(bool setup_default_geometry);

    std::vector<MainWindow*> main_windows;
    std::vector<MainWindowWrapper*> wrappers;
    MainWindow* main_window = nullptr;
    MainWindowWrapper* wrapper_ = nullptr;
    QString working_directory;
};
