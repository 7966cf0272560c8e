#include "view/theme.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>
#include <QStringDecoder>

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace {

constexpr std::array<const char*, Theme::RoleCount> kKeys = {
    "Background1Color",
    "Background2Color",
    "Background3Color",
    "Background4Color",
    "Background5Color",
    "HeaderColor",
    "TextColor",
    "StaticTextColor",
    "HighlightedCellTextColor",
    "SelectedTextColor",
    "InactiveTabTextColor",
    "DisabledTextColor",
    "CellColor",
    "CellShade1Color",
    "CellShade2Color",
    "MainCellColor",
    "SelectedCellColor",
    "HeaderCellColor",
    "HeaderCellShade1Color",
    "HeaderCellShade2Color",
    "HighlightedCellColor",
    "HighlightedCellShade1Color",
    "HighlightedCellShade2Color",
    "HighlightedLineColor",
    "CellBorderColor",
    "SelectedItemColor",
    "HoverItemColor",
    "HistogramBarColor",
    "FuzzySearchHighlightedTextColor",
    "ButtonTextColor",
    "HighlightedButtonColor",
    "InputColor",
    "InputBorderColor",
    "FocusBorderColor",
    "ButtonColor",
    "ButtonHoverColor",
    "ButtonPressedColor",
    "ScrollBarColor",
    "ScrollHandleColor",
    "ScrollHandleHoverColor",
    "ToolTipColor",
    "SeparatorColor",
    "MainCellTranslucentColor",
};
// A role added without a key would leave a null at the end.
static_assert(kKeys.back() != nullptr);

constexpr QLatin1String kAlphaKey("LauncherBackgroundAlpha");
constexpr int kTranslucentAlpha = 40;

struct BuiltIn {
    const char* name;
    const char* file;
    const char* icon_variant;
    float line_blend_factor;
};

// Dark comes first: it is the fallback and the base of every user theme.
constexpr std::array<BuiltIn, 5> kBuiltIns = {{
    {"Dark", ":/themes/colors/dark.csv", "Dark", 0.2f},
    {"Light", ":/themes/colors/light.csv", "Light", 0.15f},
    {"Dracula", ":/themes/colors/dracula.csv", "Dark", 0.15f},
    {"Solarized Dark", ":/themes/colors/solarized-dark.csv", "Dark", 0.15f},
    {"Solarized Light", ":/themes/colors/solarized-light.csv", "Light", 0.15f},
}};

constexpr float kUserLineBlendFactor = 0.15f;

QString normalName(const QString& name) {
    return name.trimmed().toLower();
}

// Key and value of each record of a comma-separated file; fields past the
// second are ignored and one-field records dropped. Quoted fields may hold
// commas, doubled quotes and line breaks.
QList<std::pair<QString, QString>> readKeyValueRows(const QByteArray& bytes) {
    // A file saved as UTF-16 or with a byte order mark is read by its mark.
    const auto encoding = QStringConverter::encodingForData(bytes).value_or(QStringConverter::Utf8);
    QStringDecoder decoder(encoding);
    const QString text = decoder(bytes);

    QList<std::pair<QString, QString>> rows;
    QStringList fields;
    QString field;
    bool quoted = false;
    auto endRecord = [&] {
        fields.append(std::exchange(field, {}));
        if (fields.size() >= 2) rows.append({fields[0], fields[1]});
        fields.clear();
    };
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar c = text[i];
        if (quoted) {
            if (c != u'"') {
                field += c;
            } else if (i + 1 < text.size() && text[i + 1] == u'"') {
                field += c;
                ++i;
            } else {
                quoted = false;
            }
        } else if (c == u'"') {
            quoted = true;
        } else if (c == u',') {
            fields.append(std::exchange(field, {}));
        } else if (c == u'\n' || c == u'\r') {
            if (c == u'\r' && i + 1 < text.size() && text[i + 1] == u'\n') ++i;
            endRecord();
        } else {
            field += c;
        }
    }
    if (!field.isEmpty() || !fields.isEmpty()) endRecord();
    return rows;
}

bool isSixHexDigits(const QString& value) {
    return value.size() == 6 && std::all_of(value.begin(), value.end(), [](QChar c) {
               return (c >= u'0' && c <= u'9') || (c >= u'a' && c <= u'f') ||
                      (c >= u'A' && c <= u'F');
           });
}

std::optional<int> alphaValue(const QString& value) {
    bool ok = false;
    const int alpha = value.toInt(&ok);
    if (!ok || alpha < 0 || alpha > 255) return std::nullopt;
    return alpha;
}

struct BuiltInColors {
    std::array<QColor, Theme::RoleCount> colors;
    int launcher_background_alpha = 0;
};

// A built-in file is part of the program: a gap or a bad row in it is a
// fault of the build, not something to paper over with Dark's values.
BuiltInColors readBuiltIn(const BuiltIn& built_in) {
    QFile file(QString::fromLatin1(built_in.file));
    if (!file.open(QIODevice::ReadOnly))
        throw std::runtime_error(std::string("Missing theme resource ") + built_in.file);
    BuiltInColors result;
    bool has_alpha = false;
    for (const auto& [key, value] : readKeyValueRows(file.readAll())) {
        if (key == QLatin1String("Key")) continue;
        if (key == kAlphaKey) {
            const auto alpha = alphaValue(value);
            if (!alpha) throw std::runtime_error(std::string("Bad alpha in ") + built_in.file);
            result.launcher_background_alpha = *alpha;
            has_alpha = true;
            continue;
        }
        const auto settable_end = kKeys.begin() + Theme::MainCellTranslucentColor;
        const auto found = std::find_if(kKeys.begin(), settable_end,
                                        [&](const char* k) { return key == QLatin1String(k); });
        const QColor color = QColor::fromString(value);
        if (found == settable_end || !color.isValid())
            throw std::runtime_error(std::string("Bad row in ") + built_in.file + ": " +
                                     key.toStdString());
        result.colors[found - kKeys.begin()] = color;
    }
    for (int role = 0; role < Theme::MainCellTranslucentColor; ++role) {
        if (!result.colors[role].isValid())
            throw std::runtime_error(std::string("No ") + kKeys[role] + " in " + built_in.file);
    }
    if (!has_alpha) throw std::runtime_error(std::string("No launcher alpha in ") + built_in.file);
    return result;
}

// Read once: a default-constructed Theme is Dark, and themes are made often.
const std::array<BuiltInColors, kBuiltIns.size()>& builtInColors() {
    static const auto table = [] {
        std::array<BuiltInColors, kBuiltIns.size()> result;
        for (size_t i = 0; i < kBuiltIns.size(); ++i)
            result[i] = readBuiltIn(kBuiltIns[i]);
        return result;
    }();
    return table;
}

} // namespace

Theme::Theme() {
    applyBuiltIn(0);
}

void Theme::setColor(Role role, const QColor& color) {
    if (role == MainCellTranslucentColor)
        throw std::runtime_error("MainCellTranslucentColor follows MainCellColor");
    colors_[role] = color;
    if (role == MainCellColor) {
        QColor translucent = color;
        translucent.setAlpha(kTranslucentAlpha);
        colors_[MainCellTranslucentColor] = translucent;
    }
}

QLatin1String Theme::key(Role role) {
    return QLatin1String(kKeys[role]);
}

std::optional<Theme::Role> Theme::userRole(QStringView key) {
    for (int role = 0; role < kUserRoleCount; ++role) {
        if (key == QLatin1String(kKeys[role])) return Role(role);
    }
    return std::nullopt;
}

void Theme::applyBuiltIn(int index) {
    const BuiltInColors& built_in = builtInColors()[index];
    for (int role = 0; role < MainCellTranslucentColor; ++role)
        setColor(Role(role), built_in.colors[role]);
    launcher_background_alpha = built_in.launcher_background_alpha;
    name = QString::fromLatin1(kBuiltIns[index].name);
    icon_variant_ = QString::fromLatin1(kBuiltIns[index].icon_variant);
    line_blend_factor = kBuiltIns[index].line_blend_factor;
}

void Theme::applyUserTheme(const UserTheme& theme) {
    applyBuiltIn(0);
    name = theme.name;
    line_blend_factor = kUserLineBlendFactor;
    for (int role = 0; role < kUserRoleCount; ++role) {
        const auto value = theme.values.constFind(QLatin1String(kKeys[role]));
        if (value != theme.values.cend() && isSixHexDigits(*value))
            setColor(Role(role), QColor(u'#' + *value));
    }
    const auto alpha = theme.values.constFind(kAlphaKey);
    if (alpha != theme.values.cend()) {
        if (const auto value = alphaValue(*alpha)) launcher_background_alpha = *value;
    }
}

void Theme::apply(const QString& theme_name) {
    const QString wanted = normalName(theme_name);
    for (size_t i = 0; i < kBuiltIns.size(); ++i) {
        if (wanted == normalName(QString::fromLatin1(kBuiltIns[i].name))) {
            applyBuiltIn(int(i));
            return;
        }
    }
    for (const UserTheme& user_theme : std::as_const(user_themes)) {
        if (wanted == normalName(user_theme.name)) {
            applyUserTheme(user_theme);
            return;
        }
    }
    applyBuiltIn(0);
}

QStringList Theme::names() const {
    QStringList result;
    for (const BuiltIn& built_in : kBuiltIns)
        result.append(QString::fromLatin1(built_in.name));
    for (const UserTheme& user_theme : user_themes)
        result.append(user_theme.name);
    return result;
}

QString Theme::userThemesFolder() {
    return QStandardPaths::writableLocation(QStandardPaths::AppDataLocation) +
           QLatin1String("/Themes");
}

QList<UserTheme> Theme::readUserThemes(const QString& folder) {
    QStringList files = QDir(folder).entryList({QStringLiteral("*.csv")}, QDir::Files);
    std::sort(files.begin(), files.end(), [](const QString& a, const QString& b) {
        const int folded = a.compare(b, Qt::CaseInsensitive);
        return folded != 0 ? folded < 0 : a < b;
    });
    QStringList taken;
    for (const BuiltIn& built_in : kBuiltIns)
        taken.append(normalName(QString::fromLatin1(built_in.name)));

    QList<UserTheme> result;
    for (const QString& file_name : std::as_const(files)) {
        UserTheme theme;
        theme.name = QFileInfo(file_name).completeBaseName();
        // A theme apply() could never reach would only mislead in a list of names.
        const QString normal = normalName(theme.name);
        if (normal.isEmpty() || taken.contains(normal)) continue;
        QFile file(folder + u'/' + file_name);
        if (!file.open(QIODevice::ReadOnly)) continue;
        for (const auto& [key, value] : readKeyValueRows(file.readAll()))
            theme.values.insert(key, value);
        taken.append(normal);
        result.append(std::move(theme));
    }
    return result;
}

void Theme::loadUserThemes(const QString& folder) {
    user_themes = readUserThemes(folder);
}

QString Theme::tableViewStyleSheet(int frozen_kind) const {
    QString sheet = QStringLiteral("QTableView {\n"
                                   "gridline-color: %1;\n"
                                   "border-style: none;\n")
                        .arg(colors_[Background3Color].name());
    const QString border = colors_[CellBorderColor].name();
    if (frozen_kind == 1) {
        sheet += QStringLiteral("border-left: 1px solid %1;\n"
                                "border-right: 1px solid %1;\n")
                     .arg(border);
    } else if (frozen_kind == 2) {
        sheet += QStringLiteral("border-top: 1px solid %1;\n"
                                "border-bottom: 1px solid %1;\n")
                     .arg(border);
    }
    return sheet + QStringLiteral("}\n");
}

QString Theme::styleSheet() const {
    auto c = [this](Role role) { return colors_[role].name(); };
    const QString check_box_image = QStringLiteral("url(\":/images/Check Box- %1%2\")");
    const QString combo_box_image =
        QStringLiteral("url(\":/images/ComboBox- %1.png\")").arg(icon_variant_);
    QString sheet;

    sheet += QStringLiteral("QWidget {\n"
                            "background-color: %1;\n"
                            "color: %2;\n"
                            "selection-background-color: %3;\n"
                            "selection-color: %4;\n"
                            "}\n"
                            "QWidget:disabled {\n"
                            "color: %5;\n"
                            "}\n")
                 .arg(c(Background1Color), c(TextColor), c(SelectedTextColor), c(TextColor),
                      c(DisabledTextColor));

    sheet += QStringLiteral("QCheckBox {\n"
                            "background-color: transparent;\n"
                            "spacing: 6px;\n"
                            "}\n"
                            "QCheckBox::indicator {\n"
                            "width: 15px;\n"
                            "height: 15px;\n"
                            "}\n"
                            "QCheckBox::indicator, QTreeView::indicator {\n"
                            "background-color: %1;\n"
                            "border: 1px solid %2;\n"
                            "border-radius: 3px;\n"
                            "}\n"
                            "QCheckBox::indicator:hover, QTreeView::indicator:hover {\n"
                            "border-color: %3;\n"
                            "}\n"
                            "QCheckBox::indicator:checked, QTreeView::indicator:checked {\n"
                            "background-color: %4;\n"
                            "border-color: %4;\n"
                            "image: %5;\n"
                            "}\n"
                            "QCheckBox::indicator:indeterminate, "
                            "QTreeView::indicator:indeterminate {\n"
                            "background-color: %4;\n"
                            "border-color: %4;\n"
                            "image: %6;\n"
                            "}\n"
                            "QCheckBox::indicator:disabled, QTreeView::indicator:disabled {\n"
                            "background-color: %7;\n"
                            "border-color: %7;\n"
                            "}\n")
                 .arg(c(InputColor), c(InputBorderColor), c(FocusBorderColor), c(SelectedItemColor),
                      check_box_image.arg(icon_variant_, QStringLiteral(" Checked.png")),
                      check_box_image.arg(icon_variant_, QStringLiteral(" Indeterminate.png")),
                      c(Background4Color));

    sheet += QStringLiteral("QComboBox {\n"
                            "background-color: %1;\n"
                            "border: 1px solid %2;\n"
                            "border-radius: 3px;\n"
                            "padding-left: 6px;\n"
                            "padding-top: 2px;\n"
                            "padding-bottom: 2px;\n"
                            "}\n"
                            "QComboBox:hover, QComboBox:focus {\n"
                            "border-color: %3;\n"
                            "}\n"
                            "QComboBox::drop-down {\n"
                            "border: none;\n"
                            "width: 20px;\n"
                            "}\n"
                            "QComboBox::down-arrow {\n"
                            "image: %4;\n"
                            "}\n"
                            "QComboBox QAbstractItemView {\n"
                            "background-color: %1;\n"
                            "border: 1px solid %2;\n"
                            "selection-background-color: %5;\n"
                            "outline: none;\n"
                            "}\n")
                 .arg(c(InputColor), c(InputBorderColor), c(FocusBorderColor), combo_box_image,
                      c(SelectedItemColor));

    sheet += QStringLiteral("QFrame {\n"
                            "border: none;\n"
                            "}\n"
                            "QFrame[frameShape=\"4\"], QFrame[frameShape=\"5\"] {\n"
                            "background-color: %1;\n"
                            "max-height: 1px;\n"
                            "max-width: 1px;\n"
                            "}\n"
                            "QFrame[frameShape=\"4\"] {\n"
                            "max-width: 16777215px;\n"
                            "}\n"
                            "QFrame[frameShape=\"5\"] {\n"
                            "max-height: 16777215px;\n"
                            "}\n")
                 .arg(c(SeparatorColor));

    sheet += QStringLiteral("QGroupBox {\n"
                            "font-size: 14px;\n"
                            "border: 1px solid %1;\n"
                            "padding: 0px 6px 5px 6px;\n"
                            "margin-top: 20px;\n"
                            "border-radius: 8px;\n"
                            "}\n"
                            "QGroupBox::title {\n"
                            "subcontrol-origin: content;\n"
                            "color: %2;\n"
                            "padding: -26px 6px 10px 6px;\n"
                            "}\n")
                 .arg(c(SeparatorColor), c(StaticTextColor));

    sheet += QStringLiteral("QHeaderView {\n"
                            "background-color: %1;\n"
                            "border: none;\n"
                            "}\n"
                            "QHeaderView::section {\n"
                            "background-color: %1;\n"
                            "color: %2;\n"
                            "border: none;\n"
                            "border-right: 1px solid %3;\n"
                            "border-bottom: 1px solid %3;\n"
                            "padding-top: 2px;\n"
                            "padding-bottom: 2px;\n"
                            "}\n"
                            "QHeaderView::section:vertical {\n"
                            "padding-left: 3px;\n"
                            "padding-right: 3px;\n"
                            "}\n"
                            "QHeaderView::section:hover {\n"
                            "background-color: %4;\n"
                            "}\n")
                 .arg(c(HeaderColor), c(StaticTextColor), c(SeparatorColor), c(Background3Color));

    sheet += QStringLiteral("QLabel {\n"
                            "background-color: transparent;\n"
                            "color: %1;\n"
                            "}\n"
                            "QLabel:disabled {\n"
                            "color: %2;\n"
                            "}\n")
                 .arg(c(StaticTextColor), c(DisabledTextColor));

    const QString input_rule = QStringLiteral("%1 {\n"
                                              "background-color: %2;\n"
                                              "border: 1px solid %3;\n"
                                              "border-radius: 3px;\n"
                                              "padding: 2px 4px;\n"
                                              "}\n"
                                              "%1:focus {\n"
                                              "border-color: %4;\n"
                                              "}\n");
    auto input = [&](const QString& selector) {
        return input_rule.arg(selector, c(InputColor), c(InputBorderColor), c(FocusBorderColor));
    };

    sheet += input(QStringLiteral("QLineEdit"));

    sheet += QStringLiteral("QMenu {\n"
                            "background-color: %1;\n"
                            "border: 1px solid %2;\n"
                            "padding: 4px 0px;\n"
                            "}\n"
                            "QMenu::item {\n"
                            "background-color: transparent;\n"
                            "padding: 4px 24px 4px 24px;\n"
                            "}\n"
                            "QMenu::item:selected {\n"
                            "background-color: %3;\n"
                            "}\n"
                            "QMenu::separator {\n"
                            "background-color: %2;\n"
                            "height: 1px;\n"
                            "margin: 4px 8px;\n"
                            "}\n")
                 .arg(c(Background2Color), c(SeparatorColor), c(SelectedItemColor));

    sheet += QStringLiteral("QMenuBar {\n"
                            "background-color: %1;\n"
                            "}\n"
                            "QMenuBar::item {\n"
                            "background-color: transparent;\n"
                            "padding: 4px 8px;\n"
                            "}\n"
                            "QMenuBar::item:selected {\n"
                            "background-color: %2;\n"
                            "}\n")
                 .arg(c(HeaderColor), c(HoverItemColor));

    sheet += input(QStringLiteral("QPlainTextEdit"));

    sheet += QStringLiteral("QProgressBar {\n"
                            "background-color: %1;\n"
                            "border: 1px solid %2;\n"
                            "border-radius: 3px;\n"
                            "text-align: center;\n"
                            "}\n"
                            "QProgressBar::chunk {\n"
                            "background-color: %3;\n"
                            "border-radius: 2px;\n"
                            "}\n")
                 .arg(c(InputColor), c(InputBorderColor), c(SelectedItemColor));

    sheet += QStringLiteral("QPushButton {\n"
                            "background-color: %1;\n"
                            "color: %2;\n"
                            "border: 1px solid %3;\n"
                            "border-radius: 3px;\n"
                            "padding: 4px 12px;\n"
                            "}\n"
                            "QPushButton:hover {\n"
                            "background-color: %4;\n"
                            "}\n"
                            "QPushButton:pressed, QPushButton:checked {\n"
                            "background-color: %5;\n"
                            "}\n"
                            "QPushButton:default, QPushButton:focus {\n"
                            "border-color: %6;\n"
                            "}\n"
                            "QPushButton:disabled {\n"
                            "color: %7;\n"
                            "}\n")
                 .arg(c(ButtonColor), c(ButtonTextColor), c(InputBorderColor), c(ButtonHoverColor),
                      c(ButtonPressedColor), c(FocusBorderColor), c(DisabledTextColor));

    sheet += QStringLiteral("QRadioButton {\n"
                            "background-color: transparent;\n"
                            "spacing: 6px;\n"
                            "}\n"
                            "QRadioButton::indicator {\n"
                            "width: 15px;\n"
                            "height: 15px;\n"
                            "border-radius: 7px;\n"
                            "background-color: %1;\n"
                            "border: 1px solid %2;\n"
                            "}\n"
                            "QRadioButton::indicator:hover {\n"
                            "border-color: %3;\n"
                            "}\n"
                            "QRadioButton::indicator:checked {\n"
                            "border-color: %3;\n"
                            "background-color: qradialgradient(cx: 0.5, cy: 0.5, radius: 0.5, "
                            "fx: 0.5, fy: 0.5, stop: 0 %3, stop: 0.45 %3, stop: 0.55 %1, "
                            "stop: 1 %1);\n"
                            "}\n"
                            "QRadioButton::indicator:disabled {\n"
                            "border-color: %4;\n"
                            "}\n")
                 .arg(c(InputColor), c(InputBorderColor), c(FocusBorderColor), c(Background4Color));

    sheet += QStringLiteral("QRubberBand {\n"
                            "background-color: %1;\n"
                            "border: 1px solid %2;\n"
                            "}\n")
                 .arg(QStringLiteral("rgba(%1, %2, %3, 60)")
                          .arg(colors_[SelectedItemColor].red())
                          .arg(colors_[SelectedItemColor].green())
                          .arg(colors_[SelectedItemColor].blue()),
                      c(SelectedItemColor));

    sheet += QStringLiteral("QScrollArea {\n"
                            "background-color: %1;\n"
                            "border: none;\n"
                            "}\n"
                            "QAbstractScrollArea::corner {\n"
                            "background-color: %2;\n"
                            "}\n")
                 .arg(c(Background1Color), c(ScrollBarColor));

    sheet += QStringLiteral("QScrollBar {\n"
                            "background-color: %1;\n"
                            "border: none;\n"
                            "margin: 0px;\n"
                            "}\n"
                            "QScrollBar:vertical {\n"
                            "width: 12px;\n"
                            "}\n"
                            "QScrollBar:horizontal {\n"
                            "height: 12px;\n"
                            "}\n"
                            "QScrollBar::handle {\n"
                            "background-color: %2;\n"
                            "border-radius: 4px;\n"
                            "margin: 2px;\n"
                            "}\n"
                            "QScrollBar::handle:hover, QScrollBar::handle:pressed {\n"
                            "background-color: %3;\n"
                            "}\n"
                            "QScrollBar::handle:vertical {\n"
                            "min-height: 25px;\n"
                            "}\n"
                            "QScrollBar::handle:horizontal {\n"
                            "min-width: 25px;\n"
                            "}\n"
                            "QScrollBar::add-line, QScrollBar::sub-line {\n"
                            "border: none;\n"
                            "background: none;\n"
                            "width: 0px;\n"
                            "height: 0px;\n"
                            "}\n"
                            "QScrollBar::add-page, QScrollBar::sub-page {\n"
                            "background: none;\n"
                            "}\n")
                 .arg(c(ScrollBarColor), c(ScrollHandleColor), c(ScrollHandleHoverColor));

    const QString spin_rule = QStringLiteral("%1::up-button, %1::down-button {\n"
                                             "background-color: %2;\n"
                                             "border: none;\n"
                                             "width: 16px;\n"
                                             "}\n"
                                             "%1::up-button:hover, %1::down-button:hover {\n"
                                             "background-color: %3;\n"
                                             "}\n"
                                             "%1::up-arrow {\n"
                                             "image: url(\":/images/SpinBox Up- %4.png\");\n"
                                             "}\n"
                                             "%1::down-arrow {\n"
                                             "image: url(\":/images/SpinBox Down- %4.png\");\n"
                                             "}\n");
    for (const QString& spin : {QStringLiteral("QSpinBox"), QStringLiteral("QDoubleSpinBox")}) {
        sheet += input(spin);
        sheet += spin_rule.arg(spin, c(ButtonColor), c(ButtonHoverColor), icon_variant_);
    }

    sheet += QStringLiteral("QTabBar {\n"
                            "background-color: %1;\n"
                            "}\n"
                            "QTabBar::tab {\n"
                            "background-color: %1;\n"
                            "color: %2;\n"
                            "border: none;\n"
                            "border-bottom: 2px solid %1;\n"
                            "padding: 6px 12px;\n"
                            "}\n"
                            "QTabBar::tab:selected {\n"
                            "background-color: %3;\n"
                            "color: %4;\n"
                            "border-bottom-color: %6;\n"
                            "}\n"
                            "QTabBar::tab:hover:!selected {\n"
                            "background-color: %5;\n"
                            "border-bottom-color: %5;\n"
                            "}\n")
                 .arg(c(HeaderColor), c(InactiveTabTextColor), c(Background1Color), c(TextColor),
                      c(Background3Color), c(FocusBorderColor));

    sheet += QStringLiteral("QTableView {\n"
                            "background-color: %1;\n"
                            "gridline-color: %2;\n"
                            "border-style: none;\n"
                            "}\n"
                            "QTableView QTableCornerButton::section {\n"
                            "background-color: %3;\n"
                            "border: none;\n"
                            "}\n")
                 .arg(c(CellColor), c(Background3Color), c(HeaderColor));

    sheet += input(QStringLiteral("QTextEdit"));

    sheet += QStringLiteral("QToolTip {\n"
                            "background-color: %1;\n"
                            "color: %2;\n"
                            "border: 1px solid %3;\n"
                            "padding: 2px;\n"
                            "}\n")
                 .arg(c(ToolTipColor), c(TextColor), c(SeparatorColor));

    sheet += QStringLiteral("QTreeView {\n"
                            "background-color: %1;\n"
                            "border: none;\n"
                            "outline: none;\n"
                            "}\n"
                            "QTreeView::item {\n"
                            "padding: 2px 0px;\n"
                            "}\n"
                            "QTreeView::item:hover {\n"
                            "background-color: %2;\n"
                            "}\n"
                            "QTreeView::item:selected {\n"
                            "background-color: %3;\n"
                            "color: %4;\n"
                            "}\n")
                 .arg(c(Background2Color), c(HoverItemColor), c(SelectedItemColor), c(TextColor));

    return sheet;
}
