#pragma once

#include "edit/findreplacequery.h"
#include "view/theme.h"

#include <QWidget>

#include <array>

class QLabel;
class QLineEdit;
class QPushButton;
class QTableWidget;
class QToolButton;
class Settings;

// The bar under the table: what to find and what to put in its place, the
// seven switches of a query, and the buttons that act on it. Every edit
// sends the query, so highlights follow typing.
class FindReplaceWidget : public QWidget {
    Q_OBJECT

public:
    explicit FindReplaceWidget(QWidget* parent = nullptr);

    // Replace mode shows the second row.
    void setReplaceMode(bool on);
    // A switch that is on looks pressed in the theme's selection colour.
    void setTheme(const Theme& theme);
    bool isReplaceMode() const { return replace_mode; }
    FindReplaceQuery query() const;
    void setFindText(const QString& text);
    void focusFindField();
    QLineEdit* findField() const { return find_edit; }
    QLineEdit* replaceField() const { return replace_edit; }
    // In the order of the query's flags: case, word, cell, pattern,
    // selection, highlight, preview.
    QToolButton* toggle(int i) const { return toggles[size_t(i)]; }

signals:
    void findReplaceEditedSignal(FindReplaceQuery query);
    void findNextSignal();
    void findPrevSignal();
    void findAllSignal();
    void replaceNextSignal();
    void replacePrevSignal();
    void replaceAllSignal();
    void closeButtonClickedSignal();

protected:
    void keyPressEvent(QKeyEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void emitQuery();
    // Esc and the switches' keys; true when taken.
    bool handleKey(QKeyEvent* event);

    bool replace_mode = false;
    QLineEdit* find_edit = nullptr;
    QLineEdit* replace_edit = nullptr;
    QWidget* replace_row = nullptr;
    std::array<QToolButton*, 7> toggles{};
};

// The cells "Find All" found, one row each; clicking a row selects its cell.
class FindResultsWidget : public QWidget {
    Q_OBJECT

public:
    // More rows than this are counted but not listed.
    static constexpr int kMaxListed = 1000;

    explicit FindResultsWidget(QWidget* parent = nullptr);

    // `labels` are the cells' addresses as the user reads them, `texts`
    // their contents with the matches already marked.
    void setResults(int total, const QStringList& labels, const QStringList& texts);
    QString headingText() const;
    QTableWidget* table() const { return results; }

signals:
    void resultSelectedSignal(int index);
    void closeButtonClickedSignal();

private:
    QLabel* heading = nullptr;
    QTableWidget* results = nullptr;
};
