#pragma once

#include <QHash>
#include <QString>
#include <QTextCharFormat>

// A colour scheme for source text: a text format for each role ("Text",
// "Keyword", "String", "LineNumber", "Selection", ...), read from a
// <style-scheme> document.
class SyntaxStyle {
public:
    // Replaces the scheme with the one in `xml`. A document that cannot be
    // read leaves the built-in default scheme in place and returns false.
    bool load(const QString& xml);

    QString name() const { return scheme_name; }
    bool hasFormat(const QString& role) const { return formats.contains(role); }
    // An empty format for a role the scheme does not name.
    QTextCharFormat format(const QString& role) const { return formats.value(role); }

    // The resource path of the scheme for a theme name; the default one for
    // a name it does not know.
    static QString schemePath(const QString& theme);
    // Shared styles that live as long as the program, loaded on first use.
    static SyntaxStyle* defaultStyle();
    static SyntaxStyle* forTheme(const QString& theme);

private:
    bool parse(const QString& xml);

    QString scheme_name;
    QHash<QString, QTextCharFormat> formats;
};
