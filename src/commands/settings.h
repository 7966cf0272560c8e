#pragma once

#include "commands/refreshbehavior.h"
#include "commands/setting.h"
#include "commands/settingid.h"
#include "data/dialect.h"
#include "edit/uuidtext.h"
#include "view/theme.h"

#include <QFont>
#include <QHash>
#include <QList>

#include <array>
#include <vector>

class TableModel;

// The 58 user preferences. One object is the window's authority for Global
// values; copies go by value to whoever needs a snapshot, and each table
// makes its own with its Table scope values.
//
// Records hold no pointers to each other or to their owner, so a copy is a
// plain copy and its setters write to the copy alone.
class Settings {
public:
    Settings();

    // Unknown identifiers throw std::out_of_range: asking for one is a fault
    // in the program, not in the user's file.
    const Setting& record(int id) const { return records.at(size_t(id)); }
    Setting& record(int id) { return records.at(size_t(id)); }
    // Null when the name is unknown. Names shared by the save and reload
    // parameters resolve to the first registered of each pair.
    const Setting* recordByName(const QString& name) const;
    Setting* recordByName(const QString& name);
    // Identifiers ordered by name, in code-unit order.
    const std::vector<int>& sortedIds() const { return sorted_ids; }

    // Typed reads throw std::runtime_error("Invalid type") when the setting
    // is of another data type.
    bool boolean(int id) const;
    int integer(int id) const;    // the three integer types
    QString string(int id) const; // text, domain and file path
    RefreshBehavior refreshBehavior(int id) const;
    EncodingType encoding(int id) const;
    LineEndingType lineEnding(int id) const;
    ParsingStandard parsingStandard(int id) const;
    QFont font() const;
    Theme theme() const;
    UuidVersion uuidType() const;

    // Negates a true/false setting; throws "Invalid type" for any other.
    void toggle(int id);
    // Through the setting's own setter, falling back to its default.
    void setFromText(int id, const QString& text) { record(id).setFromText(text); }

    // Through the value-to-text conversion of the data type: the texts of
    // the settings file.
    QString defaultAsString(int id) const;
    QString valueAsString(int id) const;

    // User themes the "Theme" setting can name. Set them before the settings
    // file is read, or a user theme's name falls back to the default.
    void setUserThemes(const QList<UserTheme>& user_themes);

    // The data type conversions. A text that does not convert gives a null
    // variant, except where the type has a value of its own for that.
    static QVariant valueFromText(int data_type, const QString& text);
    static QString textFromValue(int data_type, const QVariant& value);
    static QString typeName(int data_type);
    static QString scopeName(int scope);

    // The settings as one table sees them: `base` (the window's), with the
    // Table scope values that the table's model holds.
    static Settings tableSnapshot(const Settings& base, const TableModel& model);

    bool operator==(const Settings& other) const;

private:
    void add(int id, const char* name, int scope, int data_type, const QVariant& default_value,
             bool in_user_file, const char* true_text = nullptr, const char* false_text = nullptr);
    const Setting& typed(int id, int data_type) const;

    std::array<Setting, SettingId::Count> records;
    std::vector<int> sorted_ids;
    QHash<QString, int> id_by_name;
};
