#pragma once

#include <QString>
#include <QVariant>

// One user preference: its value, its built-in value, and how text becomes
// the value and the value becomes text for display.
struct Setting {
    enum Scope : int { CommandScope = 0, GlobalScope = 1, TableScope = 2 };

    // Indexes of the data types, whose names the "Type" column of the
    // settings file shows.
    enum DataType : int {
        BooleanType = 0,
        DomainType = 1,
        DoubleType = 2,
        EncodingNameType = 3,
        FilePathType = 4,
        FloatType = 5,
        FontType = 6,
        NonNegativeIntegerType = 7,
        PositiveIntegerType = 8,
        IntegerType = 9,
        LineEndingNameType = 10,
        ParsingNameType = 11,
        RefreshType = 12,
        StringType = 13,
        ThemeType = 14,
        UuidVersionType = 15,
        DataTypeCount = 16,
    };

    int id = 0;
    QString name; // display name and key of the settings file
    QVariant value;
    QVariant default_value;
    int scope = GlobalScope;
    int data_type = StringType;
    bool in_user_file = false;
    // Parses text into `value`; what does not parse gives `default_value`,
    // by rules that differ between families of settings.
    void (*setter)(Setting& setting, const QString& text) = nullptr;
    // `value` as the user reads it.
    QString (*getter)(const Setting& setting) = nullptr;
    // What the getter shows for a true/false setting.
    const char* true_text = nullptr;
    const char* false_text = nullptr;

    void setFromText(const QString& text) { setter(*this, text); }
    QString displayText() const { return getter(*this); }
};
