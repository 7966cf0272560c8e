#pragma once

#include <QString>
#include <QStringList>

// Case conversions of the Data menu. All but upper and lower case work on
// title words: "helloWorld foo-bar" is "Hello", "World", "Foo", "Bar".

// Splits at lower-to-upper steps and at " ", "-", "," and "/", keeping empty
// words; capitalises each word except the stop words ("of", "the", ...) that
// are neither first nor last.
QStringList splitIntoTitleWords(const QString& text);

// "the end of it" -> "The End of It"; "-", "/" and "," of the text are kept.
QString toTitleCase(const QString& text);
QString toUpperCamelCase(const QString& text);
QString toLowerCamelCase(const QString& text);
QString toUpperSnakeCase(const QString& text);
QString toLowerSnakeCase(const QString& text);
// "Bank of America" -> "BOA"; numbers stay whole, "(...)" words are left out.
QString toAcronym(const QString& text);
