#include "shortcutnotation.h"

#include <QStringList>

namespace {

// The part with Enter and Return swapped, or an empty text when it names
// neither.
QString enterReturnTwin(const QString& part) {
    if (part.contains(u"enter"))
        return QString(part).replace(QStringLiteral("enter"), QStringLiteral("return"));
    if (part.contains(u"return"))
        return QString(part).replace(QStringLiteral("return"), QStringLiteral("enter"));
    return {};
}

} // namespace

QList<QKeySequence> parseShortcut(const QString& text) {
    QStringList parts = text.split(u'|');
    for (QString& part : parts)
        part = part.trimmed().toLower();
    QList<QKeySequence> result;
    for (const QString& part : std::as_const(parts)) {
        const QKeySequence sequence(part, QKeySequence::PortableText);
        if (sequence.toString(QKeySequence::PortableText).isEmpty()) continue;
        result.append(sequence);
        const QString twin = enterReturnTwin(part);
        if (!twin.isEmpty() && !parts.contains(twin))
            result.append(QKeySequence(twin, QKeySequence::PortableText));
    }
    return result;
}

QString shortcutText(const QList<QKeySequence>& sequences) {
    QStringList parts;
    QStringList written; // every part so far, twins of earlier parts included
    for (const QKeySequence& sequence : sequences) {
        QString part = sequence.toString(QKeySequence::PortableText).toLower();
        part.replace(QStringLiteral(", "), QStringLiteral(","));
        // Qt calls Delete "Del" everywhere; the notation spells it out after
        // a modifier ("alt+delete") and keeps the key cap's "del" alone.
        part.replace(QStringLiteral("+del"), QStringLiteral("+delete"));
        if (part.isEmpty() || written.contains(part)) continue;
        written.append(part);
        written.append(enterReturnTwin(part));
        parts.append(part);
    }
    return parts.join(u'|');
}
