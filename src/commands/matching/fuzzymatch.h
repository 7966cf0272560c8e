#pragma once

#include <QColor>
#include <QString>
#include <QStringList>
#include <QStringView>

#include <vector>

// The launcher's fuzzy search of one query against one option name.
struct FuzzyMatch {
    // -1 when the name does not match.
    int score = -1;
    // Matched positions in the name, ascending, blanks counted.
    std::vector<int> highlights;

    bool matches() const { return score >= 0; }
};

// Every query character must occur in order in the name, case-insensitively;
// blanks in either are ignored. Of the first-occurrence paths, the tightest
// scores best: 60 per character, less 20 + 3 * gap for each gap wider than one.
FuzzyMatch fuzzyMatch(QStringView query, QStringView name);

// Order of the options for a query: matching options by score, best first,
// ties in the given order, then the rest in the given order. An empty query
// keeps the given order and matches everything.
struct FuzzyRanking {
    std::vector<int> order;
    std::vector<FuzzyMatch> matches; // by given index
    int visible = 0;                 // the first `visible` of `order` are shown
};
FuzzyRanking rankOptions(QStringView query, const QStringList& names);

// The rich-text pieces that a label is built from.
struct LabelMarkup {
    QString highlight_open;
    QString highlight_close;
    QString bold_open;
    QString bold_close;

    // "<span style=\"color:#rrggbb;\">" around highlights, "<b style=...>"
    // around the whole label.
    static LabelMarkup fromColors(const QColor& highlight, const QColor& text);
};

// The name with each run of consecutive highlights wrapped in the highlight
// span, and the whole in the bold pair. The name is used as given, so a name
// already written as rich text keeps its entities.
QString renderOptionLabel(const QString& name, const std::vector<int>& highlights,
                          const LabelMarkup& markup);
