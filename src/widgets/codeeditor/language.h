#pragma once

#include <QList>
#include <QString>
#include <QStringList>

// Named lists of a language's words (keywords, builtins, ...), read from
//   <language name="Python">
//     <section name="Keywords"><name>if</name>...</section>
//   </language>
class Language {
public:
    // False, with nothing loaded, for a document that cannot be read.
    bool load(const QString& xml);
    // The same from a file or resource.
    bool loadFile(const QString& path);

    QString name() const { return language_name; }
    // Section names in document order.
    QStringList sections() const;
    QStringList names(const QString& section) const;
    // Every section's names, each once.
    QStringList allNames() const;

private:
    QString language_name;
    QList<std::pair<QString, QStringList>> section_names;
};
