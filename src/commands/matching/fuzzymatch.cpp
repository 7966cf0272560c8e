#include "commands/matching/fuzzymatch.h"

#include <algorithm>

namespace {

constexpr int kScorePerCharacter = 60;
constexpr int kGapPenalty = 20;
constexpr int kGapPenaltyPerStep = 3;

bool isBlank(QChar c) {
    return c == u' ';
}

QString withoutBlanks(QStringView text) {
    QString out;
    out.reserve(text.size());
    for (const QChar c : text) {
        if (!isBlank(c)) out.append(c);
    }
    return out;
}

bool sameLetter(QChar a, QChar b) {
    return a == b || a.toCaseFolded() == b.toCaseFolded();
}

int scorePath(const std::vector<int>& path) {
    int score = static_cast<int>(path.size()) * kScorePerCharacter;
    for (std::size_t k = 1; k < path.size(); ++k) {
        const int gap = path[k] - path[k - 1];
        if (gap > 1) score -= kGapPenalty + kGapPenaltyPerStep * gap;
    }
    return score;
}

} // namespace

FuzzyMatch fuzzyMatch(QStringView query, QStringView name) {
    FuzzyMatch result;
    std::vector<int> blanks;
    for (qsizetype i = 0; i < name.size(); ++i) {
        if (isBlank(name[i])) blanks.push_back(static_cast<int>(i));
    }
    const QString q = withoutBlanks(query);
    const QString c = withoutBlanks(name);
    if (q.isEmpty()) return result;

    // Candidate positions of each query character, each list starting one
    // past the first position of the previous character.
    std::vector<std::vector<int>> positions(static_cast<std::size_t>(q.size()));
    int start = 0;
    for (qsizetype k = 0; k < q.size(); ++k) {
        std::vector<int>& list = positions[static_cast<std::size_t>(k)];
        for (qsizetype p = start; p < c.size(); ++p) {
            if (sameLetter(q[k], c[p])) list.push_back(static_cast<int>(p));
        }
        if (list.empty()) return result;
        start = list.front() + 1;
    }

    // One greedy path from each start; once a start cannot be completed, no
    // later start can be either.
    int best_score = 0;
    std::vector<int> best_path;
    std::vector<int> path;
    for (const int first : positions.front()) {
        path.assign(1, first);
        bool complete = true;
        for (std::size_t k = 1; k < positions.size(); ++k) {
            const std::vector<int>& list = positions[k];
            const auto next = std::upper_bound(list.begin(), list.end(), path.back());
            if (next == list.end()) {
                complete = false;
                break;
            }
            path.push_back(*next);
        }
        if (!complete) break;
        const int score = scorePath(path);
        if (best_path.empty() || score > best_score) {
            best_score = score;
            best_path = path;
        }
    }
    if (best_path.empty() || best_score < 0) return result;

    for (const int blank : blanks) {
        for (int& p : best_path) {
            if (p >= blank) ++p;
        }
    }
    result.score = best_score;
    result.highlights = std::move(best_path);
    return result;
}

FuzzyRanking rankOptions(QStringView query, const QStringList& names) {
    FuzzyRanking ranking;
    const int n = static_cast<int>(names.size());
    ranking.matches.resize(static_cast<std::size_t>(n));
    ranking.order.reserve(static_cast<std::size_t>(n));
    if (query.isEmpty()) {
        for (int i = 0; i < n; ++i)
            ranking.order.push_back(i);
        ranking.visible = n;
        return ranking;
    }
    std::vector<int> hidden;
    for (int i = 0; i < n; ++i) {
        ranking.matches[static_cast<std::size_t>(i)] = fuzzyMatch(query, names[i]);
        if (ranking.matches[static_cast<std::size_t>(i)].matches())
            ranking.order.push_back(i);
        else
            hidden.push_back(i);
    }
    std::stable_sort(ranking.order.begin(), ranking.order.end(), [&](int a, int b) {
        return ranking.matches[static_cast<std::size_t>(a)].score >
               ranking.matches[static_cast<std::size_t>(b)].score;
    });
    ranking.visible = static_cast<int>(ranking.order.size());
    ranking.order.insert(ranking.order.end(), hidden.begin(), hidden.end());
    return ranking;
}

LabelMarkup LabelMarkup::fromColors(const QColor& highlight, const QColor& text) {
    LabelMarkup markup;
    markup.highlight_open = QStringLiteral("<span style=\"color:%1;\">").arg(highlight.name());
    markup.highlight_close = QStringLiteral("</span>");
    markup.bold_open = QStringLiteral("<b style=\"color:%1;\">").arg(text.name());
    markup.bold_close = QStringLiteral("</b>");
    return markup;
}

QString renderOptionLabel(const QString& name, const std::vector<int>& highlights,
                          const LabelMarkup& markup) {
    QString label = name;
    // From the back, so that inserting never moves a position still to come.
    for (std::size_t k = highlights.size(); k-- > 0;) {
        const int position = highlights[k];
        if (position < 0 || position >= name.size()) continue;
        const bool ends_run = k + 1 == highlights.size() || highlights[k + 1] != position + 1;
        const bool starts_run = k == 0 || highlights[k - 1] != position - 1;
        if (ends_run) label.insert(position + 1, markup.highlight_close);
        if (starts_run) label.insert(position, markup.highlight_open);
    }
    return markup.bold_open + label + markup.bold_close;
}
