#pragma once

#include <QMetaObject>
#include <QStatusBar>
#include <QString>

#include <vector>

class QLabel;
class QTimer;
class TableModel;
class TableView;

// The window's foot line for the current table: selection, main cell length,
// sum and mean of the selection, table size, delimiters, filters and mode.
// It follows whichever view it is given and rebuilds itself from that view on
// each change, so the window only has to hand it the current tab.
class StatusBar : public QStatusBar {
    Q_OBJECT

public:
    explicit StatusBar(QWidget* parent = nullptr);

    // Null clears every item.
    void setTableView(TableView* view);
    TableView* tableView() const { return view; }

    // The texts of the items, as free of widgets as the status allows.
    static QString sizeText(int num_raw_rows, int num_raw_cols, int num_model_rows,
                            int num_model_cols);
    static QString selectionText(const TableModel& model);
    static QString filtersText(const TableModel& model);
    static QString delimiterText(const QString& delimiter_open, const QString& delimiter_save);

    QString modeItemText() const;
    QString sizeItemText() const;
    QString selectionItemText() const;
    QString cellLengthItemText() const;
    QString delimiterItemText() const;
    QString filtersItemText() const;
    QString statsItemText() const;

public slots:
    void refresh();
    void onSelectionChanged();
    void onStatsLabelUpdate(QString stats_str);

private:
    void refreshSelection();
    void refreshCellLength();
    QLabel* addItem(bool permanent);

    TableView* view = nullptr; // cleared when the view is destroyed
    std::vector<QMetaObject::Connection> connections;
    // Selections change in bursts while a mouse drags; the sum waits for the
    // burst to end, since it reads every selected cell.
    QTimer* stats_timer = nullptr;
    QLabel* selection_label = nullptr;
    QLabel* cell_length_label = nullptr;
    QLabel* stats_label = nullptr;
    QLabel* size_label = nullptr;
    QLabel* delimiter_label = nullptr;
    QLabel* filters_label = nullptr;
    QLabel* mode_label = nullptr;
};
