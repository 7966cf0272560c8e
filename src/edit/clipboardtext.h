#pragma once

#include <QString>
#include <QStringView>

#include <vector>

// Text from the clipboard or a drop as rows of fields. Fields split at the
// delimiter; rows end at CR LF, CR, LF or the record separator (30). With
// `quoted`, a field that starts with a double quote runs to its closing
// quote, doubled quotes standing for one. A last row without an end is kept;
// a text that ends in a row end gives no empty row after it.
std::vector<std::vector<QString>> parseClipboardText(QStringView text, QChar delimiter,
                                                     bool quoted);

// A field as the clipboard's CSV text carries it: quoted when it holds a
// comma, a double quote, CR or LF, with inner quotes doubled.
QString quoteClipboardField(const QString& text);
