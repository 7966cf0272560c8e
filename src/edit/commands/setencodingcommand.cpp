#include "setencodingcommand.h"

#include <climits>

SetEncodingCommand::SetEncodingCommand(TableModel* m, EncodingType value, QUndoCommand* parent)
    : TableUndoCommand(m, {}, false, parent), new_value(value), old_value(m->encoding()),
      old_set(m->encodingSet()) {
    lossy = !m->tableData().encodingKeepsText(value);
}

void SetEncodingCommand::redo() {
    if (lossy) lost = model->tableData().captureRaw(0, INT_MAX, 0, INT_MAX);
    model->setEncoding(new_value, true);
    model->setEncodingSet(true);
    emit model->updateFindReplaceMatchesSignal();
}

void SetEncodingCommand::undo() {
    model->setEncoding(old_value, true);
    if (lossy) {
        model->tableData().restoreRaw(lost);
        lost = StoredCells();
    }
    model->setEncodingSet(old_set);
    emit model->updateFindReplaceMatchesSignal();
}
