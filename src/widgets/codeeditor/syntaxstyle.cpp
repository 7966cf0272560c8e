#include "widgets/codeeditor/syntaxstyle.h"

#include <QColor>
#include <QFile>
#include <QXmlStreamReader>

#include <map>
#include <memory>

namespace {

const QString default_scheme = QStringLiteral(":/themes/default.xml");

QString readResource(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) return {};
    return QString::fromUtf8(file.readAll());
}

QTextCharFormat::UnderlineStyle underlineStyle(QStringView name) {
    static const std::pair<QStringView, QTextCharFormat::UnderlineStyle> styles[] = {
        {u"SingleUnderline", QTextCharFormat::SingleUnderline},
        {u"DashUnderline", QTextCharFormat::DashUnderline},
        {u"DotLine", QTextCharFormat::DotLine},
        {u"DashDotLine", QTextCharFormat::DashDotLine},
        {u"DashDotDotLine", QTextCharFormat::DashDotDotLine},
        {u"WaveUnderline", QTextCharFormat::WaveUnderline},
        {u"SpellCheckUnderline", QTextCharFormat::SpellCheckUnderline},
    };
    for (const auto& [style_name, style] : styles)
        if (style_name == name) return style;
    return QTextCharFormat::NoUnderline;
}

} // namespace

bool SyntaxStyle::load(const QString& xml) {
    if (parse(xml)) return true;
    parse(readResource(default_scheme));
    return false;
}

bool SyntaxStyle::parse(const QString& xml) {
    QXmlStreamReader reader(xml);
    if (!reader.readNextStartElement() || reader.name() != u"style-scheme") return false;

    QString name = reader.attributes().value(QLatin1String("name")).toString();
    QHash<QString, QTextCharFormat> read;
    while (reader.readNextStartElement()) {
        if (reader.name() != u"style") {
            reader.skipCurrentElement();
            continue;
        }
        const QXmlStreamAttributes attributes = reader.attributes();
        const QString role = attributes.value(QLatin1String("name")).toString();
        QTextCharFormat format;
        // A colour the scheme misspells is left unset rather than black.
        const QColor background = QColor::fromString(attributes.value(QLatin1String("background")));
        if (background.isValid()) format.setBackground(background);
        const QColor foreground = QColor::fromString(attributes.value(QLatin1String("foreground")));
        if (foreground.isValid()) format.setForeground(foreground);
        if (attributes.value(QLatin1String("bold")) == u"true") format.setFontWeight(QFont::Bold);
        if (attributes.value(QLatin1String("italic")) == u"true") format.setFontItalic(true);
        if (attributes.hasAttribute(QLatin1String("underlineStyle")))
            format.setUnderlineStyle(
                underlineStyle(attributes.value(QLatin1String("underlineStyle"))));
        if (!role.isEmpty()) read.insert(role, format);
        reader.skipCurrentElement();
    }
    // Anything after the root, or a truncated document, makes it unreadable
    // as a whole: half a scheme would paint text invisible on its background.
    while (!reader.atEnd())
        reader.readNext();
    if (reader.hasError()) return false;

    scheme_name = name;
    formats = std::move(read);
    return true;
}

QString SyntaxStyle::schemePath(const QString& theme) {
    static const std::pair<QString, QString> paths[] = {
        {QStringLiteral("Dark"), QStringLiteral(":/themes/dark.xml")},
        {QStringLiteral("Light"), QStringLiteral(":/themes/light.xml")},
        {QStringLiteral("Dracula"), QStringLiteral(":/themes/dracula.xml")},
        {QStringLiteral("Solarized Dark"), QStringLiteral(":/themes/solarized-dark.xml")},
        {QStringLiteral("Solarized Light"), QStringLiteral(":/themes/solarized-light.xml")},
    };
    for (const auto& [name, path] : paths)
        if (name == theme) return path;
    return default_scheme;
}

SyntaxStyle* SyntaxStyle::defaultStyle() {
    return forTheme(QString());
}

SyntaxStyle* SyntaxStyle::forTheme(const QString& theme) {
    static std::map<QString, std::unique_ptr<SyntaxStyle>> styles;
    const QString path = schemePath(theme);
    std::unique_ptr<SyntaxStyle>& style = styles[path];
    if (!style) {
        style = std::make_unique<SyntaxStyle>();
        style->load(readResource(path));
    }
    return style.get();
}
