#pragma once

#include "commands/settings.h"
#include "view/context.h"
#include "view/range.h"

#include <QList>
#include <QMetaObject>
#include <QString>
#include <QVariant>
#include <QWidget>

#include <map>
#include <vector>

class AbstractTableView;
class Launcher;
class PrevOptionWidget;
class EditorPane;
class QKeyEvent;
class QLabel;
class QVariantAnimation;
class QSplitter;
class QStackedLayout;
class QVBoxLayout;
class TableView;

// The central widget of a window: the stack of its tabs, one TableView per
// open file, and the load progress of each tab that is still loading. It is
// the one place where the current view's signals reach the window: it listens
// to the current view only and passes on what it hears, so the window never
// rewires anything when the tab changes.
class PaneView : public QWidget {
    Q_OBJECT

public:
    explicit PaneView(QWidget* parent = nullptr);
    ~PaneView() override;

    // The view joins the stack (as a child of its area) without
    // becoming current, unless it is the first.
    void addTableView(TableView* view);
    // Takes the view out of the stack; the caller deletes it. When it was
    // current, no view is current until setCurrentTableView.
    void removeTableView(TableView* view);
    // False for a null view or one that is not in the stack.
    bool setCurrentTableView(TableView* view);
    TableView* currentTableView() const { return current_view; }
    // In stack order, which is the order of adding.
    QList<TableView*> tableViews() const;
    int count() const;
    // Canonical paths are compared; views without a path never match.
    TableView* tableViewForFile(const QString& filepath) const;
    bool isLoading(TableView* view) const { return progress_labels.count(view) > 0; }

    // The table bits of the window's context, stored in the current view.
    void setContext(int context);

    // The editor pane under the grid, which edits the main cell the way a
    // formula bar does.
    void showEditorPane(bool show, bool animate);
    bool isEditorPaneShown() const;
    EditorPane* editorPane() const { return editor_pane; }
    void setLetEditorPaneConsumeNavigationKeys(bool on);

    // Font size of the progress label: large and independent of the scale.
    static qreal progressPointSize();

    // ---- Launcher ----
    // Replaces any installed launcher. The strip of answered steps stays: a
    // chain's next question is installed over it.
    void setLauncher(Launcher* new_launcher);
    Launcher* currentLauncher() const { return launcher; }
    // Appends an answered step to the strip. Whoever asked the step connects
    // the widget's expandThisSignal to what asks it again.
    PrevOptionWidget* addPrevOption(const QString& prompt, const QString& answer);
    const std::vector<PrevOptionWidget*>& prevOptions() const { return prev_options; }
    // Closes the strip and the launcher, and gives the table its focus back.
    void closeLauncher();
    void setSettings(const Settings& new_settings);
    const Settings& currentSettings() const { return settings; }
    // Width and place of the launcher over a pane of `pane_width`.
    static int launcherWidth(int pane_width);

signals:
    void addContextSignal(Context context);
    void removeContextSignal(Context context);
    void currentTableViewChangedSignal(TableView* table_view);
    void tableSizeChangedSignal(int num_raw_rows, int num_raw_cols, int num_model_rows,
                                int num_model_cols);
    void selectionSizeChangedSignal(RangeSize selection_size);
    void selectionChangedSignal(TableView* table_view);
    void selectionExpandingSignal(AbstractTableView* table_view);
    void mainCellChangedSignal(Range main_cell);
    void mainCellLengthChangedSignal(int cell_length);
    void updateStatusBarSignal();
    // The three below come from every view, not only the current one: Save
    // All saves tabs in the background, and their marks and the window's list
    // of its own saves must follow.
    void undoStackCleanChangedSignal(TableView* table_view, bool is_saved);
    void saveStartedSignal(QString filepath);
    void saveFinishedSignal(QString filepath);
    void loadFinishedSignal(TableView* table_view);
    void launcherDestroyedSignal();
    // The Cancel button of a loading tab: the window closes the tab, and
    // deleting the view stops its loader.
    void cancelLoadSignal(TableView* table_view);

public slots:
    // Progress of a threaded load. Each takes the view it is about; the pane
    // connects every view it holds to them.
    void onStartProgressUpdate(TableView* view);
    void onLoadProgressUpdate(TableView* view, int curr_num_reports, int num_total_reports,
                              int filesize_mb);
    void onLoadFinished(TableView* view);
    void onMainCellChanged(Range main_cell);
    void onStartOffCellEdit(bool blank, bool move_cursor_to_end);
    void onStartOffCellEdit(bool blank, QKeyEvent* ke);
    void onEditorPaneTextChanged();
    void onEditingFinished();
    void onNextRowWithColumnReset();
    void onNextColumnWithColumnReset();
    void onPreviousColumnWithColumnReset();
    void onEditorPaneFocusIn();
    void setEditorPaneHeightSlot(QVariant height_var);
    void onLauncherDestroyed(QObject* object);
    void clearPrevOptionList();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private slots:
    void onPrevOptionGoHere();

private:
    void placeLauncher();
    void connectCurrent();
    void disconnectCurrent();
    void placeProgressLabels();
    void dropProgressLabel(TableView* view);
    // The stacked layout shows whichever view it makes current; a view whose
    // load is running must stay hidden.
    void keepLoadingViewsHidden();
    static void wakeLoader(TableView* view);

    QVBoxLayout* outer_layout = nullptr;
    // First child: the table area; second: the editor pane.
    QSplitter* splitter = nullptr;
    EditorPane* editor_pane = nullptr;
    int editor_pane_height = 80;
    QVariantAnimation* height_animation = nullptr;
    QWidget* table_area = nullptr;
    QStackedLayout* stacked_layout = nullptr;
    TableView* current_view = nullptr;
    std::vector<QMetaObject::Connection> current_connections;
    std::map<TableView*, QLabel*> progress_labels;
    QLabel* current_progress_label = nullptr;
    int context = 0;
    Launcher* launcher = nullptr;
    std::vector<PrevOptionWidget*> prev_options; // oldest first
    Settings settings;
};
