#pragma once

#include <QRegularExpression>

// For patterns held in statics: compiling at construction, inside the guarded
// static initialisation, means threads that use the pattern later only read it.
inline QRegularExpression compiledPattern(const QString& pattern,
                                          QRegularExpression::PatternOptions options = {}) {
    QRegularExpression re(pattern, options);
    re.optimize();
    return re;
}
