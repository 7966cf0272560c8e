#include "shortcutconflicts.h"

#include "commands/contextrules.h"
#include "commands/shortcutnotation.h"

#include <QHash>

#include <algorithm>

namespace {

// The sequences of one text as the notation writes them, each once.
QStringList sequencesOf(const QString& text) {
    QStringList written;
    for (const QString& part : text.split(u'|')) {
        const QList<QKeySequence> parsed = parseShortcut(part);
        if (parsed.isEmpty()) continue; // blank, "(none)" or not a key
        // parseShortcut adds the Enter/Return twin; the part itself is first.
        const QString sequence = shortcutText({parsed.front()});
        if (!written.contains(sequence)) written.append(sequence);
    }
    return written;
}

// Enter and Return are one key to the user, and to the parser.
QString keyOf(QString sequence) {
    return sequence.replace(QStringLiteral("return"), QStringLiteral("enter"));
}

} // namespace

std::vector<ShortcutConflict> findShortcutConflicts(const std::vector<ShortcutAssignment>& rows) {
    struct Group {
        QString sequence;
        std::vector<int> rows;
    };
    std::vector<Group> groups;
    QHash<QString, size_t> group_by_key;
    for (int i = 0; i < int(rows.size()); ++i) {
        QStringList keys_of_row; // a row naming Enter and Return joins once
        for (const QString& sequence : sequencesOf(rows[size_t(i)].text)) {
            const QString key = keyOf(sequence);
            if (keys_of_row.contains(key)) continue;
            keys_of_row.append(key);
            const auto it = group_by_key.constFind(key);
            if (it == group_by_key.cend()) {
                group_by_key.insert(key, groups.size());
                groups.push_back({sequence, {i}});
            } else {
                groups[*it].rows.push_back(i);
            }
        }
    }

    std::vector<ShortcutConflict> conflicts;
    for (const Group& group : groups) {
        if (group.rows.size() < 2) continue;
        ShortcutConflict conflict{group.sequence, {}};
        for (int a : group.rows) {
            for (int b : group.rows) {
                if (a != b && contextsOverlap(rows[size_t(a)].required_contexts,
                                              rows[size_t(b)].required_contexts)) {
                    conflict.names.append(rows[size_t(a)].name);
                    break;
                }
            }
        }
        const bool built_in = std::all_of(group.rows.begin(), group.rows.end(), [&](int row) {
            const ShortcutAssignment& a = rows[size_t(row)];
            return !conflict.names.contains(a.name) ||
                   a.text.trimmed().compare(a.default_text, Qt::CaseInsensitive) == 0;
        });
        if (!conflict.names.isEmpty() && !built_in) conflicts.push_back(conflict);
    }
    return conflicts;
}

QString shortcutConflictBlocks(const std::vector<ShortcutConflict>& conflicts) {
    QString text;
    for (const ShortcutConflict& conflict : conflicts) {
        text += QStringLiteral("<b>%1</b>:").arg(conflict.sequence.toHtmlEscaped());
        for (const QString& name : conflict.names)
            text += QStringLiteral("<br>%1").arg(name.toHtmlEscaped());
        text += QStringLiteral("<br><br>");
    }
    return text;
}
