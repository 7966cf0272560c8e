#include "setdelimitercommand.h"

SetDelimiterCommand::SetDelimiterCommand(TableModel* m, QString value, QUndoCommand* parent)
    : TableUndoCommand(m, {}, false, parent), new_value(value), old_value(m->delimiterSave()),
      old_set(m->delimiterSet()) {}

void SetDelimiterCommand::redo() {
    model->setDelimiter(model->delimiterOpen(), new_value);
    model->setDelimiterSet(true);
    emit model->updateFindReplaceMatchesSignal();
}

void SetDelimiterCommand::undo() {
    model->setDelimiter(model->delimiterOpen(), old_value);
    model->setDelimiterSet(old_set);
    emit model->updateFindReplaceMatchesSignal();
}
