#include "widgets/codeeditor/pythoncompleter.h"

#include "widgets/codeeditor/language.h"

#include <QStringListModel>

PythonCompleter::PythonCompleter(QObject* parent) : QCompleter(parent) {
    Language language;
    language.loadFile(QStringLiteral(":/languages/python.xml"));
    QStringList words = language.allNames();
    words.sort(Qt::CaseInsensitive);
    setModel(new QStringListModel(words, this));
    setCaseSensitivity(Qt::CaseInsensitive);
    // Sorted the same way, so the completer may search by bisection.
    setModelSorting(QCompleter::CaseInsensitivelySortedModel);
    setCompletionMode(QCompleter::PopupCompletion);
    setWrapAround(false);
}
