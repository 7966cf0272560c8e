#pragma once

#include "view/context.h"
#include "view/range.h"

#include <QColor>
#include <QTableView>

#include <memory>
#include <vector>

class QKeyEvent;
class TableModel;

// A grid over a TableModel without Qt's selection machinery: keys, mouse,
// wheel and drags act on the model's own selection.
class AbstractTableView : public QTableView {
    Q_OBJECT
    Q_PROPERTY(QColor highlightedLineColor READ highlightedLineColor WRITE setHighlightedLineColor
                   NOTIFY highlightedLineColorChanged)
    Q_PROPERTY(QColor cellBorderColor READ cellBorderColor WRITE setCellBorderColor NOTIFY
                   cellBorderColorChanged)

public:
    explicit AbstractTableView(QWidget* parent = nullptr);
    ~AbstractTableView() override;

    void setModel(QAbstractItemModel* model) override;
    TableModel* tableModel() const { return table_model; }

    virtual void moveSelectionRelative(int vertical, int horizontal);
    virtual void moveMainCellAbsolute(int row, int col);
    virtual void setContext(int context);
    virtual void highlightRow(int row);
    virtual void highlightColumn(int col);
    virtual void setHighlightedRows(const std::vector<int>& rows);
    virtual void setHighlightedColumns(const std::vector<int>& cols);
    virtual void clearHighlightedRows();
    virtual void clearHighlightedColumns();
    virtual void setHighlightedRanges(const RangeVector& ranges);
    virtual void highlightRange(const Range& range);
    virtual void clearHighlightedRanges();
    virtual void setLetEditorPaneConsumeNavigationKeys(bool on);
    virtual void setUuidType(int type);
    // Repaints only the visible rectangle: one dataChanged over it.
    virtual void refreshView();

    QColor highlightedLineColor() const { return highlighted_line_color; }
    void setHighlightedLineColor(const QColor& color);
    QColor cellBorderColor() const { return cell_border_color; }
    void setGridColor(const QColor& color);
    void setCellBorderColor(const QColor& color);

    // The cell under a viewport point; points past an edge give the next
    // row or column beyond it, so a drag walks out one line per event.
    std::pair<int, int> cellAt(const QPoint& pos) const;

    int frozen_kind = 4;
    int tab_start_col = -1;
    bool model_busy = false;
    bool off_cell_editing = false;
    bool let_editor_pane_consume_navigation_keys = false;
    int uuid_type = 0;
    int context = 0;

signals:
    void addContextSignal(Context context);
    void removeContextSignal(Context context);
    void startEditingSignal(bool blank);
    void startEditingSignal(bool blank, QKeyEvent* ke);
    void dataChangedSignal(RangeVector middle_button_range);
    void moveCellContentsAbsoluteSignal(RangeVector drag_cells, Range drag_main_cell, int row,
                                        int col);
    void scrollSignal(Direction direction, bool full_screen);
    void scrollToMainCellSignal(bool only_if_outside_view, bool keep_cell_on_edge);
    void selectionExpandingSignal(AbstractTableView* table_view);
    void highlightedLineColorChanged();
    void cellBorderColorChanged();

public slots:
    void nextColumnWithColumnReset();
    void previousColumnWithColumnReset();
    void nextRowWithColumnReset();

protected:
    bool event(QEvent* e) override;
    void mousePressEvent(QMouseEvent* e) override;
    void mouseReleaseEvent(QMouseEvent* e) override;
    void mouseDoubleClickEvent(QMouseEvent* e) override;
    void mouseMoveEvent(QMouseEvent* e) override;
    void keyPressEvent(QKeyEvent* e) override;
    void keyReleaseEvent(QKeyEvent* e) override;
    void paintEvent(QPaintEvent* e) override;

    // The navigation keys of the command table's defaults, for a grid that
    // stands without the window's shortcuts. Returns true when handled.
    virtual bool handleNavigationKey(QKeyEvent* e);
    bool editorPaneTakesNavigation() const;

    TableModel* table_model = nullptr;
    std::unique_ptr<QMouseEvent> pressed_event;
    bool ctrl_selecting = false;
    bool mouse_selecting = false;
    std::vector<int> highlighted_rows;
    std::vector<int> highlighted_cols;
    RangeVector highlighted_ranges;
    QColor highlighted_line_color = Qt::red;
    QColor cell_border_color = Qt::red;
    QColor grid_color = Qt::gray;

private:
    // The middle-button fill: the start cell's text (or the next ones by a
    // step) drawn along a row or column while the button is held, written
    // live and made one undo step on release.
    void recomputeFill();
    void restoreFill();
    bool fillKey(QKeyEvent* e);
    bool filling = false;
    Range fill_start;
    Range fill_end;
    QString fill_value;
    int fill_direction = 3; // 0 down the column, 1 along the row, 3 not yet
    int fill_step = 0;
    QString fill_text; // a value typed over the fill
    QString held_keys;
    QChar last_fill_key;
    RangeVector fill_records;
};
