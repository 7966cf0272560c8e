#pragma once

#include "view/tablemodel.h"

#include <QByteArray>
#include <QFile>
#include <QString>
#include <QTemporaryDir>

// A test's files in one temporary folder: the tables it opens, and the bytes
// a table writes when saved.
class ScratchFiles {
public:
    bool isValid() const { return dir.isValid(); }
    QString path(const QString& name) const { return dir.filePath(name); }
    // A new file holding `bytes`.
    QString write(const QByteArray& bytes) {
        const QString p = next();
        QFile f(p);
        if (f.open(QIODevice::WriteOnly)) f.write(bytes);
        return p;
    }
    static QByteArray read(const QString& p) {
        QFile f(p);
        return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray("<unreadable>");
    }
    // What the model writes when saved to a new file.
    QByteArray saved(TableModel& model) {
        const QString p = next();
        return model.tableData().saveAs(p, false, false) ? read(p) : QByteArray("<failed>");
    }

private:
    QString next() { return dir.filePath(QStringLiteral("f%1.csv").arg(++count)); }

    QTemporaryDir dir;
    int count = 0;
};
