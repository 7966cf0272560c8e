#include "settings.h"

#include "data/fileparameters.h"
#include "view/tablemodel.h"

#include <QCoreApplication>
#include <QStandardPaths>

#include <algorithm>
#include <climits>
#include <stdexcept>

namespace {

namespace S = SettingId;

// ---- Setters, by family ----

void booleanSetter(Setting& s, const QString& text) {
    const QString word = text.trimmed().toLower();
    if (word == u"true")
        s.value = true;
    else if (word == u"false")
        s.value = false;
    else
        s.value = s.default_value;
}

void plainTextSetter(Setting& s, const QString& text) {
    s.value = text.isEmpty() ? s.default_value : QVariant(text);
}

// An empty delimiter is a choice of its own (detect, or comma), not a
// missing value.
void asIsSetter(Setting& s, const QString& text) {
    s.value = text;
}

// Whatever the name parser makes of an unknown name is kept: the dialect's
// own "invalid" values are what the file parameter prompts check for.
void enumSetter(Setting& s, const QString& text) {
    s.value = Settings::valueFromText(s.data_type, text);
}

// Case matters here, unlike in the data type's parser.
void behaviourSetter(Setting& s, const QString& text) {
    if (text == u"refresh")
        s.value = QVariant::fromValue(RefreshOnChange);
    else if (text == u"ask")
        s.value = QVariant::fromValue(AskOnChange);
    else if (text == u"ignore")
        s.value = QVariant::fromValue(IgnoreChange);
    else
        s.value = s.default_value;
}

void atLeastZeroSetter(Setting& s, const QString& text) {
    bool ok = false;
    const int n = text.toInt(&ok);
    s.value = ok && n >= 0 ? QVariant(n) : s.default_value;
}

// Negative counts get through here and in nonZeroSetter; the consumers clamp
// them, and a user's file with one keeps working as it always has.
void anyIntegerSetter(Setting& s, const QString& text) {
    bool ok = false;
    const int n = text.toInt(&ok);
    s.value = ok ? QVariant(n) : s.default_value;
}

void nonZeroSetter(Setting& s, const QString& text) {
    const int n = text.toInt();
    s.value = n != 0 ? QVariant(n) : s.default_value;
}

// The file holds the font's full description, of which only the family
// counts; the size is a setting of its own.
void fontSetter(Setting& s, const QString& text) {
    const QString family = text.section(u',', 0, 0).trimmed();
    if (family.isEmpty())
        s.value = QVariant::fromValue(QFont(s.default_value.value<QFont>().family()));
    else
        s.value = QVariant::fromValue(QFont(family));
}

void themeSetter(Setting& s, const QString& text) {
    if (text.isEmpty()) {
        s.value = s.default_value;
        return;
    }
    Theme theme = s.default_value.value<Theme>(); // carries the user themes
    theme.apply(text);
    s.value = QVariant::fromValue(theme);
}

void uuidSetter(Setting& s, const QString& text) {
    const QVariant parsed = Settings::valueFromText(Setting::UuidVersionType, text);
    s.value = parsed.isValid() ? parsed : s.default_value;
}

// ---- Getters, by data type ----

QString booleanGetter(const Setting& s) {
    return QString::fromUtf8(s.value.toBool() ? s.true_text : s.false_text);
}

QString textGetter(const Setting& s) {
    return Settings::textFromValue(s.data_type, s.value);
}

QString refreshGetter(const Setting& s) {
    switch (s.value.value<RefreshBehavior>()) {
    case RefreshOnChange:
        return QStringLiteral("Refresh");
    case AskOnChange:
        return QStringLiteral("Ask");
    case IgnoreChange:
        return QStringLiteral("Ignore");
    default:
        return QStringLiteral("Invalid");
    }
}

QString fontGetter(const Setting& s) {
    return s.value.value<QFont>().toString().section(u',', 0, 0);
}

// The first graphical text editor on the system, else the desktop's opener.
QString defaultTextEditor() {
    static const QString editor = [] {
        for (const char* name : {"gnome-text-editor", "gedit", "kate", "kwrite", "mousepad",
                                 "pluma", "xed", "featherpad", "geany", "leafpad"}) {
            const QString path = QStandardPaths::findExecutable(QString::fromLatin1(name));
            if (!path.isEmpty()) return path;
        }
        const QString opener = QStandardPaths::findExecutable(QStringLiteral("xdg-open"));
        return opener.isEmpty() ? QStringLiteral("xdg-open") : opener;
    }();
    return editor;
}

const char* const kTypeNames[Setting::DataTypeCount] = {
    "true|false",         "domain",  "double",      "encoding",
    "filepath",           "float",   "font",        "integer >= 0",
    "integer >= 1",       "integer", "line ending", "parsing",
    "refresh|ignore|ask", "string",  "theme",       "v4|v7",
};

} // namespace

Settings::Settings() {
    using T = Setting;
    constexpr int G = Setting::GlobalScope;
    constexpr int Tb = Setting::TableScope;
    const QVariant no_text = QString();

    // The parameters of the next reload and of the next save come first, so
    // that their shared names resolve to the reload ones.
    add(S::DelimiterReload, "Delimiter", Tb, T::StringType, no_text, false);
    add(S::EncodingReload, "Encoding", Tb, T::EncodingNameType, QVariant::fromValue(Utf8), false);
    add(S::ParsingStandardReload, "Parsing Standard", Tb, T::ParsingNameType,
        QVariant::fromValue(Rfc4180), false);
    add(S::DelimiterSave, "Delimiter", Tb, T::StringType, no_text, false);
    add(S::LineEndingSave, "Line Ending", Tb, T::LineEndingNameType,
        QVariant::fromValue(platformLineEnding()), false);
    add(S::EncodingSave, "Encoding", Tb, T::EncodingNameType, QVariant::fromValue(Utf8), false);
    add(S::ParsingStandardSave, "Parsing Standard", Tb, T::ParsingNameType,
        QVariant::fromValue(Rfc4180), false);

    add(S::SaveTrailingDelimiters, "Save With Trailing Delimiters", G, T::BooleanType, true, true,
        "Enabled", "Disabled");
    add(S::ChangedExternally, "Behavior When File Is Changed Externally", G, T::RefreshType,
        QVariant::fromValue(RefreshOnChange), true);
    add(S::TextEditor, "Text Editor", G, T::FilePathType, defaultTextEditor(), true);
    add(S::SaveAfterEachEdit, "Save After Each Edit", G, T::BooleanType, false, true, "Enabled",
        "Disabled");
    add(S::RemoveExtraneousOnSave, "Remove Extraneous Rows/Columns on File Save", G, T::BooleanType,
        false, true, "True", "False");

    add(S::ReadOnly, "Read-Only", Tb, T::BooleanType, false, true, "Read-only", "Editable");
    add(S::MinFileSizeReadOnlyQueryMb, "Minimum File Size for Read-Only Mode Query (MB)", G,
        T::NonNegativeIntegerType, 100, true);
    add(S::RetainSortAndFilters, "Retain Sort and Filters Upon File Refresh", G, T::BooleanType,
        true, true, "Retained", "Not Retained");
    add(S::EditorPaneConsumesNavigation, "Let Editor Pane Consume Navigation Keystrokes", G,
        T::BooleanType, true, true, "Enabled", "Disabled");
    add(S::CaseSensitiveSorting, "Case Sensitive Sorting", G, T::BooleanType, true, true,
        "Case Sensitive", "Case Insensitive");

    add(S::ShowTabBar, "Show Tab Bar", G, T::BooleanType, true, true, "Shown", "Hidden");
    add(S::ShowSideBar, "Show Side Bar", G, T::BooleanType, true, false, "Shown", "Hidden");
    add(S::ShowFileMetadata, "Show File Metadata", G, T::BooleanType, false, false, "Shown",
        "Hidden");
    add(S::ShowSideBarOpenFiles, "Show Side Bar Open Files", G, T::BooleanType, true, false,
        "Shown", "Hidden");
    add(S::ShowSideBarFolders, "Show Side Bar Folders", G, T::BooleanType, true, false, "Shown",
        "Hidden");
    add(S::ShowRowLabels, "Show Row Labels", G, T::BooleanType, true, true, "Show", "Hide");
    add(S::ShowColumnLabels, "Show Column Labels", G, T::BooleanType, true, true, "Show", "Hide");
    add(S::ShowEditorPane, "Show Editor Pane", G, T::BooleanType, false, false, "Shown", "Hidden");
    add(S::FirstRowIndex, "First Row Index", Tb, T::IntegerType, 0, true);
    add(S::FirstColumnIndex, "First Column Index", Tb, T::IntegerType, 0, true);
    add(S::ColumnsAsLetters, "Represent Columns as Letters", G, T::BooleanType, false, true,
        "Letters", "Numbers");
    add(S::Font, "Font", G, T::FontType, QVariant::fromValue(QFont(QStringLiteral("Verdana"))),
        true);
    add(S::TextSize, "Text Size", G, T::PositiveIntegerType, 12, true);
    add(S::Theme, "Theme", G, T::ThemeType, QVariant::fromValue(Theme()), true);
    add(S::ShadeRows, "Shade Every Other Row", G, T::BooleanType, false, true, "Shaded",
        "Not Shaded");
    add(S::ShadeColumns, "Shade Every Other Column", G, T::BooleanType, false, true, "Shaded",
        "Not Shaded");
    add(S::HighlightMainRow, "Highlight Main Selected Cell's Row", G, T::BooleanType, false, true,
        "Highlighted", "Not Highlighted");
    add(S::HighlightMainColumn, "Highlight Main Selected Cell's Column", G, T::BooleanType, false,
        true, "Highlighted", "Not Highlighted");
    add(S::SnapToRow, "Snap to Row After Scrolling", G, T::BooleanType, true, true, "Snap",
        "Don't Snap");
    add(S::SnapToColumn, "Snap to Column After Scrolling", G, T::BooleanType, false, true, "Snap",
        "Don't Snap");

    add(S::MinTableRows, "Minimum Number of Table Rows", G, T::PositiveIntegerType, 50, true);
    add(S::MinTableColumns, "Minimum Number of Table Columns", G, T::PositiveIntegerType, 50, true);
    add(S::BufferRows, "Number of Buffer Rows", G, T::NonNegativeIntegerType, 2, true);
    add(S::BufferColumns, "Number of Buffer Columns", G, T::NonNegativeIntegerType, 2, true);

    add(S::DefaultRowHeight, "Default Row Height", G, T::PositiveIntegerType, 24, true);
    add(S::DefaultColumnWidth, "Default Column Width", G, T::PositiveIntegerType, 80, true);
    add(S::MaxRowHeightForAutoFit, "Maximum Row Height for Auto-Fit", Tb, T::PositiveIntegerType,
        240, true);
    add(S::MaxColumnWidthForAutoFit, "Maximum Column Width for Auto-Fit", Tb,
        T::PositiveIntegerType, 800, true);
    add(S::AutoFitRowHeight, "Auto-Fit Row Height", Tb, T::BooleanType, false, true, "Auto-Fit",
        "Not Auto-Fit");
    add(S::AutoFitColumnWidth, "Auto-Fit Column Width", Tb, T::BooleanType, true, true, "Auto-Fit",
        "Not Auto-Fit");

    add(S::HeaderRows, "Number of Header Rows", Tb, T::NonNegativeIntegerType, 1, true);
    add(S::HeaderColumns, "Number of Header Columns", Tb, T::NonNegativeIntegerType, 0, true);
    add(S::HighlightHeaderRows, "Highlight Header Rows", Tb, T::BooleanType, true, true,
        "Highlighted", "Not Highlighted");
    add(S::HighlightHeaderColumns, "Highlight Header Columns", Tb, T::BooleanType, true, true,
        "Highlighted", "Not Highlighted");
    add(S::FreezeHeaderRows, "Freeze Header Rows", Tb, T::BooleanType, true, true, "Frozen",
        "Not Frozen");
    add(S::FreezeHeaderColumns, "Freeze Header Columns", Tb, T::BooleanType, false, true, "Frozen",
        "Not Frozen");

    add(S::SearchEngine, "Search Engine", G, T::DomainType, QStringLiteral("duckduckgo.com"), true);
    add(S::OnlineMap, "Online Map", G, T::DomainType, QStringLiteral("www.openstreetmap.org"),
        true);
    add(S::EnableCheckForUpdates, "Enable Check for Updates", G, T::BooleanType, true, true,
        "Enabled", "Disabled");
    add(S::DetectImportedFileType, "Detect Imported File Type Upon Opening File", G, T::BooleanType,
        true, true, "Detect", "Don't Detect");
    add(S::UuidType, "UUID Type", G, T::UuidVersionType, QVariant::fromValue(UuidVersion::V4),
        true);

    std::stable_sort(sorted_ids.begin(), sorted_ids.end(),
                     [this](int a, int b) { return records[a].name < records[b].name; });
}

void Settings::add(int id, const char* name, int scope, int data_type,
                   const QVariant& default_value, bool in_user_file, const char* true_text,
                   const char* false_text) {
    Setting& s = records.at(size_t(id));
    s.id = id;
    s.name = QCoreApplication::translate("Settings", name);
    s.value = default_value;
    s.default_value = default_value;
    s.scope = scope;
    s.data_type = data_type;
    s.in_user_file = in_user_file;
    s.true_text = true_text;
    s.false_text = false_text;

    switch (data_type) {
    case Setting::BooleanType:
        s.setter = booleanSetter;
        break;
    case Setting::DomainType:
    case Setting::FilePathType:
        s.setter = plainTextSetter;
        break;
    case Setting::StringType:
        s.setter = asIsSetter;
        break;
    case Setting::EncodingNameType:
    case Setting::LineEndingNameType:
    case Setting::ParsingNameType:
        s.setter = enumSetter;
        break;
    case Setting::RefreshType:
        s.setter = behaviourSetter;
        break;
    case Setting::NonNegativeIntegerType:
        // Only the read-only threshold refuses a negative number; the counts
        // of the same type take any integer.
        s.setter = id == S::MinFileSizeReadOnlyQueryMb ? atLeastZeroSetter : anyIntegerSetter;
        break;
    case Setting::IntegerType:
        s.setter = anyIntegerSetter;
        break;
    case Setting::PositiveIntegerType:
        s.setter = nonZeroSetter;
        break;
    case Setting::FontType:
        s.setter = fontSetter;
        break;
    case Setting::ThemeType:
        s.setter = themeSetter;
        break;
    case Setting::UuidVersionType:
        s.setter = uuidSetter;
        break;
    default:
        throw std::runtime_error("Invalid type");
    }

    switch (data_type) {
    case Setting::BooleanType:
        s.getter = booleanGetter;
        break;
    case Setting::RefreshType:
        s.getter = refreshGetter;
        break;
    case Setting::FontType:
        s.getter = fontGetter;
        break;
    default:
        s.getter = textGetter;
    }

    if (!id_by_name.contains(s.name)) id_by_name.insert(s.name, id);
    sorted_ids.push_back(id);
}

const Setting* Settings::recordByName(const QString& name) const {
    const auto it = id_by_name.constFind(name);
    return it == id_by_name.cend() ? nullptr : &records[size_t(*it)];
}

Setting* Settings::recordByName(const QString& name) {
    const auto it = id_by_name.constFind(name);
    return it == id_by_name.cend() ? nullptr : &records[size_t(*it)];
}

const Setting& Settings::typed(int id, int data_type) const {
    const Setting& s = record(id);
    if (s.data_type != data_type) throw std::runtime_error("Invalid type");
    return s;
}

bool Settings::boolean(int id) const {
    return typed(id, Setting::BooleanType).value.toBool();
}

int Settings::integer(int id) const {
    const Setting& s = record(id);
    if (s.data_type != Setting::IntegerType && s.data_type != Setting::NonNegativeIntegerType &&
        s.data_type != Setting::PositiveIntegerType)
        throw std::runtime_error("Invalid type");
    return s.value.toInt();
}

QString Settings::string(int id) const {
    const Setting& s = record(id);
    if (s.data_type != Setting::StringType && s.data_type != Setting::DomainType &&
        s.data_type != Setting::FilePathType)
        throw std::runtime_error("Invalid type");
    return s.value.toString();
}

RefreshBehavior Settings::refreshBehavior(int id) const {
    return typed(id, Setting::RefreshType).value.value<RefreshBehavior>();
}

EncodingType Settings::encoding(int id) const {
    return typed(id, Setting::EncodingNameType).value.value<EncodingType>();
}

LineEndingType Settings::lineEnding(int id) const {
    return typed(id, Setting::LineEndingNameType).value.value<LineEndingType>();
}

ParsingStandard Settings::parsingStandard(int id) const {
    return typed(id, Setting::ParsingNameType).value.value<ParsingStandard>();
}

QFont Settings::font() const {
    QFont font;
    font.fromString(valueAsString(S::Font));
    return font;
}

Theme Settings::theme() const {
    return record(S::Theme).value.value<Theme>();
}

UuidVersion Settings::uuidType() const {
    return record(S::UuidType).value.value<UuidVersion>();
}

void Settings::toggle(int id) {
    Setting& s = record(id);
    if (s.data_type != Setting::BooleanType) throw std::runtime_error("Invalid type");
    s.value = !s.value.toBool();
}

QString Settings::defaultAsString(int id) const {
    const Setting& s = record(id);
    return textFromValue(s.data_type, s.default_value);
}

QString Settings::valueAsString(int id) const {
    const Setting& s = record(id);
    return textFromValue(s.data_type, s.value);
}

void Settings::setUserThemes(const QList<UserTheme>& user_themes) {
    Setting& s = record(S::Theme);
    Theme base = s.default_value.value<Theme>();
    base.user_themes = user_themes;
    base.apply(base.name);
    s.default_value = QVariant::fromValue(base);
    Theme current = s.value.value<Theme>();
    current.user_themes = user_themes;
    current.apply(current.name);
    s.value = QVariant::fromValue(current);
}

QVariant Settings::valueFromText(int data_type, const QString& text) {
    bool ok = false;
    switch (data_type) {
    case Setting::BooleanType:
        return text.toLower() == u"true";
    case Setting::DomainType:
    case Setting::FilePathType:
    case Setting::StringType:
        return text;
    case Setting::DoubleType: {
        const double d = text.toDouble(&ok);
        return ok ? QVariant(d) : QVariant();
    }
    case Setting::FloatType: {
        const float f = text.toFloat(&ok);
        return ok ? QVariant(f) : QVariant();
    }
    case Setting::EncodingNameType:
        return QVariant::fromValue(encodingFromText(text));
    case Setting::FontType: {
        QFont font;
        font.fromString(text);
        return QVariant::fromValue(font);
    }
    case Setting::NonNegativeIntegerType:
    case Setting::PositiveIntegerType:
    case Setting::IntegerType: {
        const int n = text.toInt(&ok);
        const int least = data_type == Setting::NonNegativeIntegerType ? 0
                          : data_type == Setting::PositiveIntegerType  ? 1
                                                                       : INT_MIN;
        return ok && n >= least ? QVariant(n) : QVariant();
    }
    case Setting::LineEndingNameType:
        return QVariant::fromValue(lineEndingFromText(text));
    case Setting::ParsingNameType:
        return QVariant::fromValue(parsingStandardFromText(text));
    case Setting::RefreshType: {
        const QString word = text.toLower();
        if (word == u"refresh") return QVariant::fromValue(RefreshOnChange);
        if (word == u"ask") return QVariant::fromValue(AskOnChange);
        if (word == u"ignore") return QVariant::fromValue(IgnoreChange);
        return QVariant::fromValue(InvalidRefresh);
    }
    case Setting::ThemeType: {
        Theme theme;
        theme.apply(text);
        return QVariant::fromValue(theme);
    }
    case Setting::UuidVersionType: {
        const QString word = text.trimmed().toLower();
        if (word.contains(u"v4")) return QVariant::fromValue(UuidVersion::V4);
        if (word.contains(u"v7")) return QVariant::fromValue(UuidVersion::V7);
        return {};
    }
    default:
        return {};
    }
}

QString Settings::textFromValue(int data_type, const QVariant& value) {
    switch (data_type) {
    case Setting::BooleanType:
        return value.toBool() ? QStringLiteral("true") : QStringLiteral("false");
    case Setting::DomainType:
    case Setting::FilePathType:
    case Setting::StringType:
        return value.toString();
    case Setting::DoubleType:
        return QString::number(value.toDouble(), 'g', 6);
    case Setting::FloatType:
        return QString::number(value.toFloat(), 'g', 6);
    case Setting::EncodingNameType:
        return encodingDisplayName(value.value<EncodingType>());
    case Setting::FontType:
        return value.value<QFont>().toString();
    case Setting::NonNegativeIntegerType:
    case Setting::PositiveIntegerType:
    case Setting::IntegerType:
        return QString::number(value.toInt());
    case Setting::LineEndingNameType:
        return lineEndingShortName(value.value<LineEndingType>());
    case Setting::ParsingNameType:
        return parsingStandardName(value.value<ParsingStandard>());
    case Setting::RefreshType:
        switch (value.value<RefreshBehavior>()) {
        case RefreshOnChange:
            return QStringLiteral("refresh");
        case AskOnChange:
            return QStringLiteral("ask");
        case IgnoreChange:
            return QStringLiteral("ignore");
        default:
            return QStringLiteral("invalid");
        }
    case Setting::ThemeType:
        return value.value<Theme>().name;
    case Setting::UuidVersionType:
        return value.value<UuidVersion>() == UuidVersion::V7 ? QStringLiteral("Time-ordered (v7)")
                                                             : QStringLiteral("Random (v4)");
    default:
        return {};
    }
}

QString Settings::typeName(int data_type) {
    if (data_type < 0 || data_type >= Setting::DataTypeCount) return QStringLiteral("Invalid");
    return QString::fromLatin1(kTypeNames[data_type]);
}

QString Settings::scopeName(int scope) {
    switch (scope) {
    case Setting::CommandScope:
        return QStringLiteral("Command");
    case Setting::GlobalScope:
        return QStringLiteral("Global");
    case Setting::TableScope:
        return QStringLiteral("Table");
    default:
        return QStringLiteral("Invalid");
    }
}

Settings Settings::tableSnapshot(const Settings& base, const TableModel& model) {
    Settings snapshot = base;
    auto set = [&](int id, const QVariant& value) { snapshot.record(id).value = value; };
    set(S::AutoFitColumnWidth, model.auto_fit_cols);
    set(S::AutoFitRowHeight, model.auto_fit_rows);
    set(S::DelimiterSave, model.delimiterSave());
    set(S::DelimiterReload, model.delimiterOpen());
    set(S::EncodingSave, QVariant::fromValue(model.encoding()));
    set(S::EncodingReload, QVariant::fromValue(model.encoding()));
    set(S::FirstColumnIndex, model.firstColIndex());
    set(S::FirstRowIndex, model.firstRowIndex());
    set(S::LineEndingSave, QVariant::fromValue(model.lineEnding()));
    set(S::MaxColumnWidthForAutoFit, model.max_col_width_for_auto_fit);
    set(S::MaxRowHeightForAutoFit, model.max_row_height_for_auto_fit);
    set(S::HeaderColumns, model.numHeaderCols());
    set(S::HeaderRows, model.numHeaderRows());
    set(S::ParsingStandardSave, QVariant::fromValue(model.parsingStandard()));
    set(S::ParsingStandardReload, QVariant::fromValue(model.parsingStandard()));
    set(S::ReadOnly, model.isReadOnly());
    return snapshot;
}

bool Settings::operator==(const Settings& other) const {
    for (size_t i = 0; i < records.size(); ++i)
        if (records[i].value != other.records[i].value) return false;
    return true;
}
