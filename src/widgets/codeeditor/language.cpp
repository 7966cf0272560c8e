#include "widgets/codeeditor/language.h"

#include <QFile>
#include <QSet>
#include <QXmlStreamReader>

bool Language::load(const QString& xml) {
    language_name.clear();
    section_names.clear();

    QXmlStreamReader reader(xml);
    if (!reader.readNextStartElement() || reader.name() != u"language") return false;
    QString name = reader.attributes().value(QLatin1String("name")).toString();
    QList<std::pair<QString, QStringList>> read;
    while (reader.readNextStartElement()) {
        if (reader.name() != u"section") {
            reader.skipCurrentElement();
            continue;
        }
        std::pair<QString, QStringList> section;
        section.first = reader.attributes().value(QLatin1String("name")).toString();
        while (reader.readNextStartElement()) {
            if (reader.name() == u"name") {
                const QString word = reader.readElementText().trimmed();
                if (!word.isEmpty()) section.second.append(word);
            } else {
                reader.skipCurrentElement();
            }
        }
        read.append(std::move(section));
    }
    while (!reader.atEnd())
        reader.readNext();
    if (reader.hasError()) return false;

    language_name = name;
    section_names = std::move(read);
    return true;
}

bool Language::loadFile(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        load(QString());
        return false;
    }
    return load(QString::fromUtf8(file.readAll()));
}

QStringList Language::sections() const {
    QStringList names;
    for (const auto& section : section_names)
        names.append(section.first);
    return names;
}

QStringList Language::names(const QString& section) const {
    for (const auto& [name, words] : section_names)
        if (name == section) return words;
    return {};
}

QStringList Language::allNames() const {
    QStringList all;
    QSet<QString> seen;
    for (const auto& section : section_names)
        for (const QString& word : section.second)
            if (!seen.contains(word)) {
                seen.insert(word);
                all.append(word);
            }
    return all;
}
