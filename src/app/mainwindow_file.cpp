// The file flows of the main window: open, save, close, reload, the disk
// watcher, rename, move, duplicate, delete and the recent files.

#include "mainwindow.h"

#include "app/paneview.h"
#include "app/sidebar.h"
#include "app/tabbar.h"
#include "data/dialectdetection.h"
#include "data/fileparameters.h"
#include "view/tablemodel.h"
#include "view/tableview.h"
#include "widgets/msgbox.h"

#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QScrollBar>
#include <QTimer>
#include <QUndoStack>

namespace {

QString extensionOf(const QString& filepath) {
    const QString suffix = QFileInfo(filepath).suffix().toLower();
    return suffix.isEmpty() ? QStringLiteral("(none)") : suffix;
}

bool isAutoDelimiter(const QString& text) {
    return text.isEmpty() || text.compare(QStringLiteral("(auto)"), Qt::CaseInsensitive) == 0;
}

constexpr int kMaxRecentFiles = 50;

} // namespace

// ---- Open ----

bool MainWindow::openFiles(const QStringList& filepath_list, const ExtensionData* params) {
    TableView* first = nullptr;
    for (const QString& path : filepath_list) {
        if (TableView* open = viewForPath(path)) {
            if (!first) first = open;
            continue;
        }
        const QFileInfo info(path);
        if (info.isDir()) {
            side_bar->addFolder(info.absoluteFilePath());
            continue;
        }
        if (!info.isFile()) {
            // A pipe, a device or a vanished file: nothing to read as a table.
            MsgBox::inform(this, QStringLiteral("Gridmere"),
                           QStringLiteral("This file could not be opened:\n%1").arg(path));
            continue;
        }
        bool read_only = default_read_only;
        {
            // A file that cannot be opened for appending is write-protected
            // and opens read-only without a question.
            QFile probe(path);
            if (info.isFile() && !probe.open(QIODevice::Append)) read_only = true;
        }
        const qint64 size_mb = info.size() / 1048576;
        if (!read_only && info.isFile() && size_mb >= read_only_query_mb) {
            MsgBox box(this, QStringLiteral("Gridmere"),
                       QStringLiteral("This file is large (%1 MB).\n"
                                      "Would you like to open it in read-only mode?")
                           .arg(QLocale().toString(size_mb)),
                       QString(),
                       {QStringLiteral("Open as &Read-Only"), QStringLiteral("Open in &Edit Mode"),
                        QStringLiteral("&Cancel")});
            box.setButtonWidth(QStringLiteral("Open as &Read-Only"), 130);
            box.setButtonWidth(QStringLiteral("Open in &Edit Mode"), 130);
            const QString answer = box.run();
            if (answer == QStringLiteral("&Cancel") || answer.isEmpty()) continue;
            read_only = answer == QStringLiteral("Open as &Read-Only");
        }
        TableView* view = addTableForFile(path, read_only, params);
        if (!view) continue;
        addRecent(info.absoluteFilePath());
        if (!first) first = view;
    }
    if (!first) return false;
    setCurrentView(first);
    // Opening a file replaces the start-up table when it was left untouched.
    if (table_views.size() > 1) {
        TableView* start = table_views.front();
        if (start != first && start->model()->tableData().filepath().isEmpty() &&
            start->model()->tableData().numRawRows() == 0 && start->undoStack()->count() == 0)
            removeView(start);
    }
    return true;
}

void MainWindow::settleDialect(TableView* view, const QString& filepath,
                               const ExtensionData* params) {
    ExtensionData row;
    if (params) {
        row = *params;
    } else {
        row.extension = extensionOf(filepath);
        // An extension the preferences don't list is detected.
        for (const ExtensionData& listed : extension_data_list) {
            if (listed.extension == row.extension) {
                row = listed;
                break;
            }
        }
    }
    QString open = row.delimiter_open;
    if (isAutoDelimiter(open))
        open = detectDelimiter(filepath);
    else
        delimiterFromUserText(open, open);
    if (!delimiterTextIsValid(open) && open.size() != 1) open = QStringLiteral(",");
    QString save = row.delimiter_save;
    if (isAutoDelimiter(save))
        save = open;
    else
        delimiterFromUserText(save, save);
    if (!delimiterTextIsValid(save) && save.size() != 1) save = open;

    EncodingType encoding = detectByteOrder(row.encoding, filepath);
    if (params && encoding == Utf16) encoding = Utf16LE;
    if (params && encoding == Utf32) encoding = Utf32LE;

    // A row that leaves the line ending to the platform keeps the file's own:
    // a file made elsewhere comes back with the line ends it came with.
    LineEndingType ending = row.line_ending;
    if (row.line_ending_from_platform) {
        ending = platformLineEnding();
        if (row.parsing_standard != AsciiSeparatedValues)
            if (const auto found = detectLineEnding(filepath, encoding)) ending = *found;
    }
    TableModel* m = view->model();
    m->setExtension(row.extension);
    m->setDelimiter(open, save);
    m->setLineEnding(ending);
    m->setEncoding(encoding);
    m->setParsingStandard(row.parsing_standard);
}

void MainWindow::loadView(TableView* view, const QString& filepath) {
    const bool asynchronous = QFileInfo(filepath).size() > asynchronous_threshold;
    if (asynchronous) {
        // Nothing may read the store while the loader fills it.
        view->setUpdatesEnabled(false);
        view->hide();
    }
    view->model()->load(filepath, asynchronous);
}

TableView* MainWindow::addTableForFile(const QString& filepath, bool read_only,
                                       const ExtensionData* params) {
    const QFileInfo info(filepath);
    auto* view = new TableView(read_only, pane_view);
    connectView(view);
    settleDialect(view, filepath, params);
    table_views.push_back(view);
    pane_view->addTableView(view);
    const int index = tab_bar->addTab(info.fileName());
    tab_bar->setTabFile(index, info.fileName(), info.absoluteFilePath());
    loadView(view, info.absoluteFilePath());
    if (!view->model()->tableData().isLoading() &&
        !view->model()->tableData().errorString().isEmpty()) {
        MsgBox::inform(this, QStringLiteral("Gridmere"),
                       QStringLiteral("This file could not be opened:\n%1")
                           .arg(view->model()->tableData().errorString()));
        removeView(view);
        return nullptr;
    }
    file_watcher.addPath(info.absoluteFilePath());
    default_open_folderpath = info.absolutePath();
    return view;
}

void MainWindow::commandOpenFile() {
    const QStringList paths = QFileDialog::getOpenFileNames(
        this, QStringLiteral("Select one or more files to open."), default_open_folderpath,
        QStringLiteral("CSV File (*.csv);;TSV File (*.tsv);;Table Files (*.csv *.tsv *.txt *.tab "
                       "*.psv *.asv);;All Files (*.*)"));
    if (!paths.isEmpty()) openFiles(paths);
}

void MainWindow::openRecentFile(const QString& filepath) {
    if (!QFileInfo(filepath).exists()) {
        MsgBox::inform(this, QStringLiteral("Gridmere"),
                       QStringLiteral("This file no longer exists:\n%1").arg(filepath));
        removeRecent(filepath);
        return;
    }
    openFile(filepath);
}

void MainWindow::addRecent(const QString& filepath) {
    recent_filepath_list.removeAll(filepath);
    recent_filepath_list.prepend(filepath);
    while (recent_filepath_list.size() > kMaxRecentFiles)
        recent_filepath_list.removeLast();
}

void MainWindow::removeRecent(const QString& filepath) {
    recent_filepath_list.removeAll(filepath);
}

// ---- Save ----

bool MainWindow::saveTable(TableView* view) {
    if (!view) return false;
    const QString path = view->model()->tableData().filepath();
    if (path.isEmpty()) {
        const QString target = chooseSavePath(view, QStringLiteral("Save File"));
        return !target.isEmpty() && saveTableAs(view, target, false);
    }
    const bool keep_backup = !filepath_saved_list.contains(path);
    if (!view->model()->tableData().save(keep_backup, false)) {
        MsgBox::inform(this, QStringLiteral("Gridmere"), QStringLiteral("File failed to save."));
        return false;
    }
    view->undoStack()->setClean();
    updateTab(view);
    view->refreshView();
    return true;
}

QString MainWindow::chooseSavePath(TableView* view, const QString& title) {
    const QString current = view->model()->tableData().filepath();
    const QString start = current.isEmpty() ? default_open_folderpath : current;
    if (choose_path) return choose_path(title, start);
    return QFileDialog::getSaveFileName(
        this, title, start,
        QStringLiteral("%1 File (*.%1);;All Files (*.*)").arg(view->model()->extension()));
}

bool MainWindow::saveTableAs(TableView* view, const QString& filepath, bool visible_only) {
    if (!view || filepath.isEmpty()) return false;
    const QFileInfo target(filepath);
    const QString absolute = target.absoluteFilePath();
    TableModel* m = view->model();
    const QString old_path = m->tableData().filepath();
    // Another tab on the target goes first, by the usual close flow.
    if (TableView* other = viewForPath(absolute); other && other != view)
        if (!closeFile(other)) return false;
    const QString extension = extensionOf(absolute);
    if (extension != m->extension() && !visible_only) {
        // A new extension brings its own dialect for saving; the load
        // delimiter stays, standing in for detection.
        ExtensionData row;
        QString save = row.delimiter_save;
        if (isAutoDelimiter(save)) save = delimiterForExtension(extension);
        m->setExtension(extension);
        m->setDelimiter(m->delimiterOpen(), save);
    }
    const bool keep_backup = !filepath_saved_list.contains(absolute);
    if (!m->tableData().saveAs(absolute, keep_backup, visible_only)) {
        // The container keeps the new path; the tab stays on its old one.
        if (!visible_only) m->tableData().dataContainer()->setFilepath(old_path);
        MsgBox::inform(this, QStringLiteral("Gridmere"), QStringLiteral("File failed to save."));
        return false;
    }
    if (visible_only) {
        m->tableData().dataContainer()->setFilepath(old_path);
        const qint64 size_mb = QFileInfo(absolute).size() / 1048576;
        if (size_mb >= read_only_query_mb) {
            const QString answer =
                ask(QStringLiteral("The new file is large (%1 MB).\n"
                                   "How would you like to open it?")
                        .arg(QLocale().toString(size_mb)),
                    {QStringLiteral("&Read-Only\nMode"), QStringLiteral("&Edit Mode"),
                     QStringLiteral("Do&n't Open")});
            if (answer == QStringLiteral("Do&n't Open") || answer.isEmpty()) return true;
            if (TableView* v = addTableForFile(absolute, answer == "&Read-Only\nMode", nullptr))
                setCurrentView(v);
        } else if (TableView* v = addTableForFile(absolute, false, nullptr)) {
            setCurrentView(v);
        }
        addRecent(absolute);
        return true;
    }
    if (!old_path.isEmpty()) file_watcher.removePath(old_path);
    file_watcher.addPath(absolute);
    m->file().setFileName(absolute);
    addRecent(absolute);
    view->undoStack()->setClean();
    updateTab(view);
    if (view == currentView()) addContext(FileOnDisk);
    return true;
}

void MainWindow::saveAll() {
    for (TableView* v : std::vector<TableView*>(table_views))
        if (!v->undoStack()->isClean()) saveTable(v);
}

void MainWindow::onSaveStarted(const QString& filepath) {
    filepath_saved_list << QFileInfo(filepath).absoluteFilePath();
}

void MainWindow::onSaveFinished(const QString& filepath) {
    // A watcher event within a second of our own save is taken for it.
    filepath_saved_list << QFileInfo(filepath).absoluteFilePath();
    QTimer::singleShot(1000, this, &MainWindow::resetFilepathSavedList);
}

void MainWindow::resetFilepathSavedList() {
    filepath_saved_list.clear();
}

// ---- Close ----

bool MainWindow::closeFile(TableView* view) {
    if (indexOf(view) < 0) return true;
    TableModel* m = view->model();
    const bool untouched_new =
        m->tableData().filepath().isEmpty() && view->undoStack()->count() == 0;
    if (!view->undoStack()->isClean() && !untouched_new) {
        setCurrentView(view);
        const QString name = m->tableData().filepath().isEmpty()
                                 ? QStringLiteral("untitled")
                                 : QFileInfo(m->tableData().filepath()).fileName();
        const QString answer = ask(
            QStringLiteral("Do you want to save changes to %1?").arg(name),
            {QStringLiteral("&Save"), QStringLiteral("Do&n't Save"), QStringLiteral("&Cancel")});
        if (answer == QStringLiteral("&Cancel") || answer.isEmpty()) return false;
        if (answer == QStringLiteral("&Save") && !saveTable(view)) return false;
    }
    removeView(view);
    if (table_views.empty() && !closing) newUntitledTable();
    return true;
}

bool MainWindow::closeFiles(const std::vector<TableView*>& list) {
    for (TableView* v : list)
        if (!closeFile(v)) return false;
    return true;
}

bool MainWindow::closeAll() {
    // The current tab goes last, so that prompts walk the others first.
    std::vector<TableView*> order;
    TableView* current = currentView();
    for (TableView* v : table_views)
        if (v != current) order.push_back(v);
    if (current) order.push_back(current);
    return closeFiles(order);
}

// ---- Reload ----

void MainWindow::reloadFile(TableView* view) {
    if (!view) return;
    const QString path = view->model()->tableData().filepath();
    if (path.isEmpty()) return;
    TableModel* m = view->model();
    std::vector<FilterData> filters;
    SortRecord row_sort, col_sort;
    if (retain_sort_and_filters) {
        filters = m->filterList();
        row_sort = m->rowSort();
        col_sort = m->colSort();
    }
    // A table shown transposed comes back as the file has it: what sorted
    // or filtered its rows now lies across its columns.
    if (m->tableData().isTransposed()) {
        for (FilterData& f : filters)
            f.range = f.range.transposed();
        std::swap(row_sort, col_sort);
        for (SortRecord* r : {&row_sort, &col_sort})
            if (r->kind == 0 || r->kind == 1) r->kind = 1 - r->kind;
    }
    // The lines the user kept in view by editing are other lines now.
    for (FilterData& f : filters)
        f.exceptions.clear();
    const int vertical = view->verticalScrollBar()->value();
    const int horizontal = view->horizontalScrollBar()->value();
    view->undoStack()->clear();
    loadView(view, path);
    auto restore = [view, filters, row_sort, col_sort, vertical, horizontal] {
        // The filters go on after the sort, which would re-apply them.
        if (!view->restoreSort(col_sort)) view->restoreSort(row_sort);
        if (!filters.empty()) view->model()->applyFilters(filters);
        view->verticalScrollBar()->setValue(vertical);
        view->horizontalScrollBar()->setValue(horizontal);
    };
    // Once, after this load; a load that fails takes the view, and this
    // with it.
    if (m->tableData().isLoading())
        connect(view, &TableView::loadFinishedSignal, view, restore, Qt::SingleShotConnection);
    else
        restore();
}

bool MainWindow::saveBeforeReload(TableView* view) {
    const QString name = QFileInfo(view->model()->tableData().filepath()).fileName();
    const QString answer =
        ask(QStringLiteral("Do you want to save changes to %1?\nIf not, changes will be lost.")
                .arg(name),
            {QStringLiteral("&Save"), QStringLiteral("Do&n't Save"), QStringLiteral("&Cancel")});
    if (answer == QStringLiteral("&Cancel") || answer.isEmpty()) return false;
    return answer != QStringLiteral("&Save") || saveTable(view);
}

bool MainWindow::setReadOnly(TableView* view, bool read_only) {
    if (!view || view->model()->isReadOnly() == read_only) return false;
    const QString path = view->model()->tableData().filepath();
    if (path.isEmpty()) return false;
    if (!view->undoStack()->isClean() && !saveBeforeReload(view)) return false;
    view->model()->setReadOnly(read_only);
    view->undoStack()->clear();
    loadView(view, path);
    return true;
}

bool MainWindow::reloadWithParameters(TableView* view, const QString& delimiter,
                                      EncodingType encoding, ParsingStandard standard) {
    if (!view) return false;
    TableModel* m = view->model();
    if (delimiter == m->delimiterOpen() && encoding == m->encoding() &&
        standard == m->parsingStandard())
        return false;
    const QString path = m->tableData().filepath();
    if (!m->isReadOnly() && !view->undoStack()->isClean() && !saveBeforeReload(view)) return false;
    m->setDelimiter(delimiter, m->delimiterSave());
    m->setEncoding(encoding);
    m->setParsingStandard(standard);
    view->undoStack()->clear();
    if (!path.isEmpty()) loadView(view, path);
    return true;
}

void MainWindow::onFileChanged(const QString& filepath) {
    const QString absolute = QFileInfo(filepath).absoluteFilePath();
    if (filepath_saved_list.contains(absolute)) {
        // A save that replaced the file by rename drops it from the watcher.
        if (QFileInfo::exists(absolute) && !file_watcher.files().contains(absolute))
            file_watcher.addPath(absolute);
        return;
    }
    if (refresh_behavior == IgnoreChange) return;
    TableView* view = viewForPath(absolute);
    if (!view) return;
    // Reloading on its own would throw unsaved edits away: then the user
    // is asked whatever the setting says.
    const bool unsaved = !view->model()->isReadOnly() && !view->undoStack()->isClean();
    if ((refresh_behavior == AskOnChange || unsaved) &&
        ask(QStringLiteral("This file has been changed externally.\n"
                           "Would you like to reload it?"),
            {QStringLiteral("&Reload"), QStringLiteral("Do&n't Reload")}) != "&Reload")
        return;
    // The question may have been open while the tab was closed.
    view = viewForPath(absolute);
    if (!view) return;
    if (!QFileInfo::exists(absolute)) {
        closeFile(view);
        return;
    }
    if (!file_watcher.files().contains(absolute)) file_watcher.addPath(absolute);
    reloadFile(view);
}

// ---- Rename, move, duplicate, delete ----

bool MainWindow::renameFile(const QString& filepath_old, const QString& filepath_new) {
    TableView* view = viewForPath(filepath_old);
    const QString from = QFileInfo(filepath_old).absoluteFilePath();
    const QString to = QFileInfo(filepath_new).absoluteFilePath();
    if (from == to || !QFile::rename(from, to)) return false;
    file_watcher.removePath(from);
    removeRecent(from);
    if (view) {
        view->model()->tableData().dataContainer()->setFilepath(to);
        view->model()->file().setFileName(to);
        file_watcher.addPath(to);
        updateTab(view);
    }
    addRecent(to);
    return true;
}

bool MainWindow::mayOverwrite(const QString& target) {
    if (!QFileInfo::exists(target)) return true;
    const QString answer =
        ask(QStringLiteral("A file already exists there. Do you want to overwrite it?"),
            {QStringLiteral("&Overwrite"), QStringLiteral("Do&n't Overwrite"),
             QStringLiteral("&Cancel")});
    if (answer != QStringLiteral("&Overwrite")) return false;
    // The tab of the file about to be replaced goes without a question.
    if (TableView* open = viewForPath(target)) removeView(open);
    return true;
}

bool MainWindow::moveFileTo(const QString& src_filepath, const QString& folder) {
    const QFileInfo src(src_filepath);
    if (!src.exists()) {
        MsgBox::inform(this, QStringLiteral("Gridmere"),
                       QStringLiteral("The file doesn't exist. Save it first."));
        return false;
    }
    const QString target = QDir(folder).absoluteFilePath(src.fileName());
    if (target == src.absoluteFilePath()) return false;
    if (!mayOverwrite(target) || (QFileInfo::exists(target) && !QFile::remove(target)))
        return false;
    return renameFile(src.absoluteFilePath(), target);
}

bool MainWindow::duplicateFileTo(TableView* view, const QString& filepath) {
    if (!view || filepath.isEmpty()) return false;
    const QString target = QFileInfo(filepath).absoluteFilePath();
    if (!mayOverwrite(target)) return false;
    TableData& data = view->model()->tableData();
    const QString own = data.filepath();
    const bool ok = data.saveAs(target, true, false);
    data.dataContainer()->setFilepath(own); // the tab stays on its own file
    if (!ok) {
        MsgBox::inform(this, QStringLiteral("Gridmere"), QStringLiteral("File failed to save."));
        return false;
    }
    return openFile(target);
}

bool MainWindow::deleteFile(TableView* view) {
    if (!view) return false;
    const QString path = view->model()->tableData().filepath();
    if (path.isEmpty()) return false;
    if (ask(QStringLiteral("Are you sure you want to delete file %1?")
                .arg(QFileInfo(path).fileName()),
            {QStringLiteral("&Delete"), QStringLiteral("Do&n't Delete")}) != "&Delete")
        return false;
    removeView(view);
    if (table_views.empty() && !closing) newUntitledTable();
    if (!QFile::remove(path)) return false;
    removeRecent(path);
    return true;
}

// ---- Commands ----

void MainWindow::commandNewFile() {
    newUntitledTable();
}

void MainWindow::commandNewWindow() {
    emit createNewInstanceSignal(true, {});
}

void MainWindow::commandSaveFile() {
    saveTable(currentView());
}

void MainWindow::commandSaveFileAs() {
    TableView* v = currentView();
    if (!v) return;
    const QString path = chooseSavePath(v, QStringLiteral("Save File"));
    if (!path.isEmpty()) saveTableAs(v, path, false);
}

void MainWindow::commandSaveVisibleDataAs() {
    TableView* v = currentView();
    if (!v) return;
    const QString path = chooseSavePath(v, QStringLiteral("Save File"));
    if (!path.isEmpty()) saveTableAs(v, path, true);
}

void MainWindow::commandSaveAllFiles() {
    saveAll();
}

void MainWindow::commandCloseFile() {
    closeFile(currentView());
}

void MainWindow::commandCloseAllFiles() {
    closeAll();
}

void MainWindow::commandReloadFile() {
    TableView* v = currentView();
    if (!v) return;
    if (!v->model()->isReadOnly() && !v->undoStack()->isClean() && !saveBeforeReload(v)) return;
    reloadFile(v);
}

void MainWindow::commandMoveFile() {
    TableView* v = currentView();
    if (!v) return;
    const QString path = v->model()->tableData().filepath();
    if (path.isEmpty() || !QFileInfo::exists(path)) {
        MsgBox::inform(this, QStringLiteral("Gridmere"),
                       QStringLiteral("The file doesn't exist. Save it first."));
        return;
    }
    const QString folder =
        choose_path ? choose_path(QStringLiteral("Select Folder"), QFileInfo(path).absolutePath())
                    : QFileDialog::getExistingDirectory(this, QStringLiteral("Select Folder"),
                                                        QFileInfo(path).absolutePath());
    if (!folder.isEmpty()) moveFileTo(path, folder);
}

void MainWindow::commandDuplicateFile() {
    TableView* v = currentView();
    if (!v) return;
    const QString path = chooseSavePath(v, QStringLiteral("Duplicate File"));
    if (!path.isEmpty()) duplicateFileTo(v, path);
}

void MainWindow::commandRenameFile() {
    TableView* v = currentView();
    if (!v || v->model()->tableData().filepath().isEmpty()) return;
    const QString old_path = v->model()->tableData().filepath();
    const QString path = chooseSavePath(v, QStringLiteral("Rename File"));
    if (!path.isEmpty()) renameFile(old_path, path);
}

void MainWindow::commandDeleteFile() {
    deleteFile(currentView());
}

void MainWindow::commandShowFileInFileSystem() {
    if (TableView* v = currentView())
        emit showFileInFileSystemSignal(v->model()->tableData().filepath());
}

void MainWindow::commandOpenTerminalToFilesDirectory() {
    if (TableView* v = currentView())
        emit openTerminalToFilesDirectorySignal(
            QFileInfo(v->model()->tableData().filepath()).absolutePath());
}
