#include "setlineendingcommand.h"

SetLineEndingCommand::SetLineEndingCommand(TableModel* m, LineEndingType value,
                                           QUndoCommand* parent)
    : TableUndoCommand(m, {}, false, parent), new_value(value), old_value(m->lineEnding()),
      old_set(m->lineEndingSet()) {}

void SetLineEndingCommand::redo() {
    model->setLineEnding(new_value);
    model->setLineEndingSet(true);
    emit model->updateFindReplaceMatchesSignal();
}

void SetLineEndingCommand::undo() {
    model->setLineEnding(old_value);
    model->setLineEndingSet(old_set);
    emit model->updateFindReplaceMatchesSignal();
}
