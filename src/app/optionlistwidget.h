#pragma once

#include "commands/matching/fuzzymatch.h"
#include "commands/settings.h"

#include <QLabel>
#include <QScrollArea>
#include <QString>
#include <QTimer>
#include <QWidget>

#include <vector>

class ListWidget;

// The launcher's fixed interface font at a point size.
QFont launcherFont(qreal point_size);
class QVBoxLayout;

// One choice a launcher offers. `response` is what choosing it answers; when
// empty, `name` is.
struct OptionData {
    QString name;
    QString pill1;    // a command's setting value
    QString pill2;    // a command's shortcut
    QString sub_text; // a note on a second line
    QString response;

    const QString& answer() const { return response.isEmpty() ? name : response; }
};

// A small rounded tag at the right of a row.
class PillLabel : public QLabel {
    Q_OBJECT
public:
    explicit PillLabel(const QString& text, qreal point_size, QWidget* parent = nullptr);
};

// One row of the list. Its child labels are built on demand, so a list of
// hundreds of rows appears before most of them exist.
class OptionWidget : public QWidget {
    Q_OBJECT

public:
    OptionWidget(int index, const OptionData& data, QWidget* parent = nullptr);

    const int index; // in the given list
    int score = -1;
    std::vector<int> highlights;

    const OptionData& data() const { return data_; }
    bool isBuilt() const { return built; }
    void build(const LabelMarkup& markup);
    // The label as it reads once the list renders it.
    const QString& labelText() const { return label_text; }
    // The rendered label, as shown.
    QString shownLabel() const;
    void setHighlights(std::vector<int> positions, const LabelMarkup& markup);
    bool isSelected() const { return selected; }
    void setSelected(bool on, const QString& selected_style);

signals:
    void clickedSignal(QString response);
    void selectedSignal(QString response);

public slots:
    void updateOptionLabel();

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    void render(const LabelMarkup& markup);

    OptionData data_;
    QString label_text;
    QLabel* name_label = nullptr;
    bool built = false;
    bool label_dirty = false;
    bool selected = false;
};

// The list under a launcher's editor: every option, filtered and ordered by
// the fuzzy match of the typed text. Filtering only moves and hides rows.
class OptionListWidget : public QScrollArea {
    Q_OBJECT

public:
    // How many rows are built before the list is first shown.
    static constexpr int kEagerRows = 20;

    OptionListWidget(const std::vector<OptionData>& options, const Settings& settings,
                     int row_height = 0, QWidget* parent = nullptr);
    ~OptionListWidget() override;

    int count() const { return int(rows.size()); }
    int visibleCount() const { return visible_count; }
    // -1 when nothing matches.
    int selectedIndex() const { return selected_index; }
    OptionWidget* selectedOption() const { return selected_option; }
    // The visible rows, in their shown order.
    std::vector<OptionWidget*> visibleOptions() const;
    bool isFullyBuilt() const { return fully_built; }
    int rowHeight() const { return row_height_; }
    // Moves the selection to the `index`th visible row; out of range or the
    // same row does nothing.
    void select(int index);
    void moveSelection(int by);
    // Content height, at most 300.
    QSize sizeHint() const override;
    void stopBuilding() { closing = true; }

signals:
    void itemClicked(QString response);
    void selectionChangedSignal(QString response);
    void scrolledSignal();

public slots:
    void updateOptionList(const QString& prompt_string);
    void fillListWidgets();
    void updateExposedLabels();

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    void relayout();
    void place(OptionWidget* row, int position);
    // Joins the row to the list and builds its labels.
    void buildRow(OptionWidget* row);

    ListWidget* content = nullptr;
    std::vector<OptionWidget*> rows;
    std::vector<int> order; // shown order of rows; the first visible_count are shown
    QStringList names;
    int visible_count = 0;
    int selected_index = -1;
    int row_height_ = 30;
    bool fully_built = false;
    bool closing = false;
    OptionWidget* selected_option = nullptr;
    LabelMarkup markup;
    QString selected_style;
    QTimer label_timer;
};
