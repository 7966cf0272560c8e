#pragma once

#include <QColor>
#include <QLatin1String>
#include <QList>
#include <QMap>
#include <QMetaType>
#include <QString>
#include <QStringList>
#include <QStringView>

#include <array>
#include <optional>

// A theme from the user's "Themes" folder, kept as read: values are checked
// only when the theme is applied, so a bad row costs that role alone.
struct UserTheme {
    QString name;
    QMap<QString, QString> values; // key to value text; a later row for a key wins

    bool operator==(const UserTheme&) const = default;
};

// A named record of colours. It is copied freely (into every table model), so
// reading a colour is an array access and applying a theme is the only work.
class Theme {
public:
    enum Role : int {
        // The roles a user theme can set, in the order they are read.
        Background1Color,
        Background2Color,
        Background3Color,
        Background4Color,
        Background5Color,
        HeaderColor,
        TextColor,
        StaticTextColor,
        HighlightedCellTextColor,
        SelectedTextColor,
        InactiveTabTextColor,
        DisabledTextColor,
        CellColor,
        CellShade1Color,
        CellShade2Color,
        MainCellColor,
        SelectedCellColor,
        HeaderCellColor,
        HeaderCellShade1Color,
        HeaderCellShade2Color,
        HighlightedCellColor,
        HighlightedCellShade1Color,
        HighlightedCellShade2Color,
        HighlightedLineColor,
        CellBorderColor,
        SelectedItemColor,
        HoverItemColor,
        HistogramBarColor,
        FuzzySearchHighlightedTextColor,
        ButtonTextColor,
        HighlightedButtonColor,
        // Widget colours of the style sheet. Only the built-in themes set them,
        // so a user theme keeps Dark's and the Dark images stay legible on them.
        InputColor,
        InputBorderColor,
        FocusBorderColor,
        ButtonColor,
        ButtonHoverColor,
        ButtonPressedColor,
        ScrollBarColor,
        ScrollHandleColor,
        ScrollHandleHoverColor,
        ToolTipColor,
        SeparatorColor,
        // MainCellColor at alpha 40, kept in step by setColor.
        MainCellTranslucentColor,
        RoleCount
    };
    static constexpr int kUserRoleCount = HighlightedButtonColor + 1;

    // Dark, without user themes.
    Theme();

    QString name;
    int launcher_background_alpha = 0; // 0 to 255
    float line_blend_factor = 0;
    QList<UserTheme> user_themes; // in file order, each reachable by its name

    const QColor& color(Role role) const { return colors_[role]; }
    // MainCellTranslucentColor follows MainCellColor and cannot be set itself.
    void setColor(Role role, const QColor& color);
    // "Dark" or "Light": the set of images drawn for the theme's widget colours.
    const QString& iconVariant() const { return icon_variant_; }

    // The key of a role in theme files, e.g. "CellColor".
    static QLatin1String key(Role role);
    // Only the roles a user theme can set are found.
    static std::optional<Role> userRole(QStringView key);

    // Lower-cased and trimmed, the name picks a built-in, then a user theme;
    // anything else is Dark.
    void apply(const QString& name);
    QStringList names() const;

    // The application-wide style sheet.
    QString styleSheet() const;
    // The sheet of a table view; frozen_kind 1 is a strip of rows, 2 a strip
    // of columns, which get a border in CellBorderColor towards the grid.
    QString tableViewStyleSheet(int frozen_kind) const;

    static QString userThemesFolder();
    void loadUserThemes(const QString& folder = userThemesFolder());
    // The "<name>.csv" files of the folder, sorted by file name. Files that
    // cannot be read, and themes whose name a built-in or an earlier file
    // already takes, are left out.
    static QList<UserTheme> readUserThemes(const QString& folder);

    bool operator==(const Theme&) const = default;

private:
    void applyBuiltIn(int index);
    void applyUserTheme(const UserTheme& theme);

    std::array<QColor, RoleCount> colors_;
    QString icon_variant_;
};

Q_DECLARE_METATYPE(Theme)
