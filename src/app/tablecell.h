#pragma once

#include <QHBoxLayout>
#include <QTableWidget>

// Editors in the preferences' tables sit in a cell with a margin around
// them: a cell widget fills its cell edge to edge, and rows of touching
// frames read as one block.
inline QWidget* paddedCell(QWidget* content, QTableWidget* table) {
    auto* cell = new QWidget(table);
    auto* layout = new QHBoxLayout(cell);
    layout->setContentsMargins(2, 2, 2, 2);
    layout->addWidget(content);
    return cell;
}

// The editor that paddedCell put at (row, col); null for an empty cell.
template <typename T> T* cellContent(const QTableWidget* table, int row, int col) {
    const QWidget* cell = table->cellWidget(row, col);
    return cell ? cell->findChild<T*>(QString(), Qt::FindDirectChildrenOnly) : nullptr;
}
