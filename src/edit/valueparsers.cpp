#include "edit/valueparsers.h"

#include "edit/compiledpattern.h"

#include <QHash>
#include <QRegularExpression>

#include <algorithm>

namespace {

// Date shapes. In a mask every digit is "?", a month or day name is the
// format token that reads it, and any other letters are lower-cased so that
// they can never pass for a token. Earlier rows win where masks coincide,
// which is why month-first forms come before anything else.
struct DateMaskTable {
    QList<QPair<QString, QString>> rows_in_order;
    QHash<QString, QString> format_by_mask;
    QHash<QString, QString> token_by_name;
    qsizetype longest_mask = 0;

    DateMaskTable() {
        // Digits are written "#" here, turned into the mask's "?" below: "??"
        // followed by a punctuation mark is a trigraph to the compiler.
        static const char* const rows[][2] = {
            // times
            {"hh:mm:ss.zzz", "##:##:##.###"},
            {"hh:mm:ss.z", "##:##:##.#"},
            {"hh:mm:ss", "##:##:##"},
            {"hh:mm", "##:##"},
            {"h:mm:ss.zzz", "#:##:##.###"},
            {"h:mm:ss.z", "#:##:##.#"},
            {"h:mm:ss", "#:##:##"},
            {"h:mm", "#:##"},
            {"hh:mm:ss AP", "##:##:## AP"},
            {"hh:mm AP", "##:## AP"},
            {"h:mm:ss AP", "#:##:## AP"},
            {"h:mm AP", "#:## AP"},
            // numeric dates, month first
            {"MM dd yyyy", "## ## ####"},
            {"MM/dd/yyyy", "##/##/####"},
            {"MM-dd-yyyy", "##-##-####"},
            {"M/dd/yyyy", "#/##/####"},
            {"M-dd-yyyy", "#-##-####"},
            {"MM dd yy", "## ## ##"},
            {"MM/dd/yy", "##/##/##"},
            {"MM-dd-yy", "##-##-##"},
            {"M/dd/yy", "#/##/##"},
            {"M-dd-yy", "#-##-##"},
            {"MM/d/yyyy", "##/#/####"},
            {"M/d/yyyy", "#/#/####"},
            {"MM-d-yyyy", "##-#-####"},
            {"M-d-yyyy", "#-#-####"},
            {"M/d/yy", "#/#/##"},
            // numeric dates, day first with dots, and year first
            {"dd.MM.yyyy", "##.##.####"},
            {"d.M.yyyy", "#.#.####"},
            {"yyyy-MM-dd", "####-##-##"},
            {"yyyy/MM/dd", "####/##/##"},
            // month names
            {"MMM dd, yyyy", "MMM ##, ####"},
            {"MMM. dd, yyyy", "MMM. ##, ####"},
            {"MMMM dd, yyyy", "MMMM ##, ####"},
            {"MMM d, yyyy", "MMM #, ####"},
            {"MMM. d, yyyy", "MMM. #, ####"},
            {"MMMM d, yyyy", "MMMM #, ####"},
            {"dd MMM yyyy", "## MMM ####"},
            {"d MMM yyyy", "# MMM ####"},
            {"dd MMMM yyyy", "## MMMM ####"},
            {"d MMMM yyyy", "# MMMM ####"},
            {"dd-MMM-yyyy", "##-MMM-####"},
            {"dd-MMM-yy", "##-MMM-##"},
            // day names
            {"ddd, MMM dd, yyyy", "ddd, MMM ##, ####"},
            {"dddd, MMMM dd, yyyy", "dddd, MMMM ##, ####"},
            {"ddd, dd MMM yyyy", "ddd, ## MMM ####"},
        };
        static_assert(std::size(rows) == 46);
        for (const auto& row : rows) {
            const QString mask = QString::fromLatin1(row[1]).replace(u'#', u'?');
            rows_in_order.append({QString::fromLatin1(row[0]), mask});
            if (!format_by_mask.contains(mask))
                format_by_mask.insert(mask, QString::fromLatin1(row[0]));
            longest_mask = std::max(longest_mask, mask.size());
        }

        const auto add = [this](std::initializer_list<const char*> names, const char* token) {
            for (const char* name : names)
                token_by_name.insert(QString::fromLatin1(name), QString::fromLatin1(token));
        };
        add({"january", "february", "march", "april", "may", "june", "july", "august", "september",
             "october", "november", "december"},
            "MMMM");
        add({"jan", "feb", "mar", "apr", "jun", "jul", "aug", "sep", "sept", "oct", "nov", "dec"},
            "MMM");
        add({"monday", "tuesday", "wednesday", "thursday", "friday", "saturday", "sunday"}, "dddd");
        add({"mon", "tue", "tues", "wed", "thu", "thur", "thurs", "fri", "sat", "sun"}, "ddd");
        add({"am", "pm"}, "AP");
    }
};

const DateMaskTable& dateMaskTable() {
    static const DateMaskTable table;
    return table;
}

bool isAsciiDigit(QChar c) {
    return c >= u'0' && c <= u'9';
}

// The number shape depends on the locale's separators, so it can't be one
// static; each thread keeps the last one it built, which is the only one in
// practice.
const QRegularExpression& numberShape(const QString& group, const QString& point) {
    struct Cache {
        QString group;
        QString point;
        QRegularExpression re;
        bool built = false;
    };
    thread_local Cache cache;
    if (!cache.built || cache.group != group || cache.point != point) {
        cache.group = group;
        cache.point = point;
        cache.re = compiledPattern(
            QStringLiteral(
                "[+-]?[\\$£¥€]?(\\d*|(\\d{1,3}(%1\\d{3})+))%2?\\d([eE][+-]?\\d+)?(\\s?€)?")
                .arg(QRegularExpression::escape(group), QRegularExpression::escape(point)));
        cache.built = true;
    }
    return cache.re;
}

} // namespace

int classifyText(const QString& text) {
    if (text.isEmpty()) return TextClass::Text;
    bool ok = false;
    text.toDouble(&ok);
    if (ok) return TextClass::Number;
    if (!deriveDateFormat(text).isEmpty()) return TextClass::DateTime;
    static const QRegularExpression iso_date_time = compiledPattern(
        QStringLiteral(
            "\\d{4}-(1[0-2]|0\\d)-([0-2]\\d|3[0-1])(T|\\s)([0-1]\\d|2[0-3]):[0-5]\\d:[0-5]"
            "\\dZ?"),
        QRegularExpression::CaseInsensitiveOption);
    return iso_date_time.match(text).hasMatch() ? TextClass::DateTime : TextClass::Text;
}

QString deriveDateFormat(const QString& text) {
    const DateMaskTable& table = dateMaskTable();
    QString mask;
    mask.reserve(text.size());
    for (qsizetype i = 0; i < text.size();) {
        const QChar c = text.at(i);
        if (isAsciiDigit(c)) {
            mask.append(u'?');
            ++i;
        } else if (c.isLetter()) {
            qsizetype end = i + 1;
            while (end < text.size() && text.at(end).isLetter())
                ++end;
            const QString word = text.mid(i, end - i).toLower();
            mask.append(table.token_by_name.value(word, word));
            i = end;
        } else {
            mask.append(c);
            ++i;
        }
        // The mask only grows: once longer than every row, nothing can match.
        if (mask.size() > table.longest_mask) return {};
    }
    return table.format_by_mask.value(mask);
}

QList<QPair<QString, QString>> dateFormatTable() {
    return dateMaskTable().rows_in_order;
}

QString normaliseNumberText(const QString& text, int decimals) {
    return normaliseNumberText(text, decimals, QLocale());
}

QString normaliseNumberText(const QString& text, int decimals, const QLocale& locale) {
    if (text.isEmpty() || decimals < 0) return text;
    const QString group = locale.groupSeparator();
    const QString point = locale.decimalPoint();
    if (point.isEmpty() || !numberShape(group, point).match(text).hasMatch()) return text;

    QString body = text;
    QString prefix;
    QString suffix;
    static const QString currencies = QStringLiteral("$£¥€");
    if (currencies.contains(body.front())) {
        prefix = body.left(1);
        body.remove(0, 1);
    } else if (body.endsWith(QStringLiteral(" €"))) {
        suffix = QStringLiteral(" €");
        body.chop(2);
    } else if (body.endsWith(u'€')) {
        suffix = QStringLiteral("€");
        body.chop(1);
    }

    QString exponent;
    const auto e =
        std::find_if(body.cbegin(), body.cend(), [](QChar c) { return c == u'e' || c == u'E'; });
    if (e != body.cend()) {
        const qsizetype at = e - body.cbegin();
        exponent = body.mid(at);
        body.truncate(at);
    }

    const bool had_group = !group.isEmpty() && body.contains(group);
    if (had_group) body.remove(group);
    if (!body.contains(point)) body.append(point);

    // Work in the C form; the locale's point goes back in at the end.
    QString digits = body;
    digits.replace(point, QStringLiteral("."));
    // toDouble forgives blanks around a number; the rewrite below would not.
    if (digits.isEmpty() || digits.front().isSpace() || digits.back().isSpace()) return text;
    bool ok = false;
    const double value = digits.toDouble(&ok);
    if (!ok) return text;

    const qsizetype dot = digits.indexOf(u'.');
    const qsizetype have = dot < 0 ? 0 : digits.size() - dot - 1;
    if (have < decimals)
        digits.append(QString(decimals - have, u'0'));
    else if (have > decimals)
        digits = QString::number(value, 'f', decimals);
    if (decimals == 0 && digits.endsWith(u'.')) digits.chop(1);

    qsizetype int_end = digits.indexOf(u'.');
    if (int_end >= 0)
        digits.replace(int_end, 1, point);
    else
        int_end = digits.size();
    if (had_group) {
        const qsizetype int_start = (digits.startsWith(u'-') || digits.startsWith(u'+')) ? 1 : 0;
        for (qsizetype at = int_end - 3; at > int_start; at -= 3)
            digits.insert(at, group);
    }
    return prefix + digits + exponent + suffix;
}

QString stripLeadingZeros(const QString& text) {
    const QString replacement = QStringLiteral("\\1\\2");
    if (leadingZeroPattern().match(text).hasMatch())
        return QString(text).replace(leadingZeroPattern(), replacement);
    if (leadingZeroDecimalPattern().match(text).hasMatch())
        return QString(text).replace(leadingZeroDecimalPattern(), replacement);
    return text;
}

const QRegularExpression& leadingZeroPattern() {
    static const QRegularExpression re = compiledPattern(QStringLiteral("^(\\D*)0+(\\d+.*)$"));
    return re;
}

const QRegularExpression& leadingZeroDecimalPattern() {
    static const QRegularExpression re = compiledPattern(QStringLiteral("(-?)0+(\\d\\.\\d+)"));
    return re;
}

const QRegularExpression& uuidPattern() {
    static const QRegularExpression re = compiledPattern(QStringLiteral(
        "\\{?[0-9A-Fa-f]{8}-[0-9A-Fa-f]{4}-[0-9A-Fa-f]{4}-[0-9A-Fa-f]{4}-[0-9A-Fa-f]{"
        "12}\\}?"));
    return re;
}
