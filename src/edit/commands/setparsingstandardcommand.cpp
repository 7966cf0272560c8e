#include "setparsingstandardcommand.h"

SetParsingStandardCommand::SetParsingStandardCommand(TableModel* m, ParsingStandard value,
                                                     QUndoCommand* parent)
    : TableUndoCommand(m, {}, false, parent), new_value(value), old_value(m->parsingStandard()),
      old_set(m->parsingStandardSet()) {}

void SetParsingStandardCommand::redo() {
    model->setParsingStandard(new_value);
    model->setParsingStandardSet(true);
    emit model->updateFindReplaceMatchesSignal();
}

void SetParsingStandardCommand::undo() {
    model->setParsingStandard(old_value);
    model->setParsingStandardSet(old_set);
    emit model->updateFindReplaceMatchesSignal();
}
