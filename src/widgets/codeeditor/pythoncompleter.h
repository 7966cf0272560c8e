#pragma once

#include <QCompleter>

// Offers Python's keywords and builtins from ":/languages/python.xml" for the
// word being typed, whatever its case.
class PythonCompleter : public QCompleter {
    Q_OBJECT
public:
    explicit PythonCompleter(QObject* parent = nullptr);
};
