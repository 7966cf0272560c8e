#include "app/preferenceswindow.h"

#include "app/fileextensionswidget.h"
#include "app/settingswidget.h"
#include "app/shortcutswidget.h"
#include "commands/commandtable.h"
#include "commands/preferencefiles.h"
#include "widgets/msgbox.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QPushButton>
#include <QTabWidget>
#include <QVBoxLayout>

PreferencesWindow::PreferencesWindow(const Settings& settings, CommandTable& commands,
                                     const std::vector<ExtensionData>& extensions,
                                     PreferenceFiles* files, QWidget* parent)
    : QWidget(parent, Qt::Window), commands(commands), files(files) {
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowTitle(QStringLiteral("Preferences - %2").arg(QStringLiteral("Gridmere")));
    resize(850, 600);

    // The form shows the file as it is now, which the window's table
    // follows anyway.
    std::vector<ExtensionData> extension_rows = extensions;
    if (files) files->readFileExtensions(extension_rows);

    tabs = new QTabWidget(this);
    settings_widget = new SettingsWidget(settings, tabs);
    shortcuts_widget = new ShortcutsWidget(commands, tabs);
    extensions_widget = new FileExtensionsWidget(extension_rows, tabs);
    tabs->addTab(settings_widget, QStringLiteral("Settings"));
    tabs->addTab(shortcuts_widget, QStringLiteral("Keyboard Shortcuts"));
    tabs->addTab(extensions_widget, QStringLiteral("File Extension Options"));

    cancel_button = new QPushButton(QStringLiteral("Cancel"), this);
    apply_button = new QPushButton(QStringLiteral("Apply"), this);
    ok_button = new QPushButton(QStringLiteral("OK"), this);
    apply_button->setEnabled(false);
    for (QPushButton* button : {cancel_button, apply_button, ok_button}) {
        button->setAutoDefault(false);
        button->setMinimumWidth(90);
    }
    auto* buttons = new QHBoxLayout;
    buttons->addStretch(1);
    buttons->addWidget(cancel_button);
    buttons->addWidget(apply_button);
    buttons->addWidget(ok_button);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(10, 10, 10, 10);
    layout->setSpacing(10);
    layout->addWidget(tabs, 1);
    layout->addLayout(buttons);

    connect(cancel_button, &QPushButton::clicked, this, &PreferencesWindow::onCancelClicked);
    connect(apply_button, &QPushButton::clicked, this, &PreferencesWindow::onApplyClicked);
    connect(ok_button, &QPushButton::clicked, this, &PreferencesWindow::onOkClicked);
    connect(settings_widget, &SettingsWidget::updateSignal, this,
            &PreferencesWindow::onSettingsUpdated);
    connect(shortcuts_widget, &ShortcutsWidget::updateSignal, this,
            &PreferencesWindow::onShortcutsUpdated);
    connect(extensions_widget, &FileExtensionsWidget::updateSignal, this,
            &PreferencesWindow::onPreferencesUpdated);
    connect(settings_widget, &SettingsWidget::openFileMetadataSignal, this,
            &PreferencesWindow::openFileMetadataSignal);

    if (files) {
        // Connected after the window's own handlers, so the table is read
        // again by the time these run.
        connect(files, &PreferenceFiles::shortcutsFileChangedSignal, this,
                &PreferencesWindow::refreshShortcuts);
        connect(files, &PreferenceFiles::fileExtensionsFileChangedSignal, this, [this] {
            std::vector<ExtensionData> rows;
            if (this->files->readFileExtensions(rows)) setFileExtensions(rows);
        });
    }
}

void PreferencesWindow::setCurrentTab(Tab tab) {
    tabs->setCurrentIndex(int(tab));
}

PreferencesWindow::Tab PreferencesWindow::currentTab() const {
    return Tab(tabs->currentIndex());
}

void PreferencesWindow::setSettings(const Settings& settings) {
    settings_widget->setSettings(settings);
}

void PreferencesWindow::refreshShortcuts() {
    shortcuts_widget->refresh();
}

void PreferencesWindow::setFileExtensions(const std::vector<ExtensionData>& extensions) {
    // Rebuilding the rows would throw away what the user is typing.
    if (!extensions_widget->isModified() && extensions != extensions_widget->extensions())
        extensions_widget->setExtensions(extensions);
}

QString PreferencesWindow::conflictMessage(bool closing) const {
    const QString blocks = shortcuts_widget->conflictBlocks();
    if (blocks.isEmpty()) return {};
    return blocks +
           QStringLiteral("If left unresolved, these shortcuts won't work on any of the "
                          "commands.") +
           (closing
                ? QStringLiteral("<br>Would you like to apply the changes and exit or stay and fix "
                                 "them?")
                : QStringLiteral("<br>Would you still like to apply changes or fix them first?"));
}

QStringList PreferencesWindow::conflictButtons(bool closing) {
    if (closing) return {QStringLiteral("&Stay and Fix"), QStringLiteral("&Apply and Exit")};
    return {QStringLiteral("&Fix"), QStringLiteral("&Apply")};
}

bool PreferencesWindow::apply(bool closing) {
    if (shortcuts_updated) {
        const QString message = conflictMessage(closing);
        if (!message.isEmpty()) {
            const QStringList buttons = conflictButtons(closing);
            MsgBox box(this, windowTitle(),
                       QStringLiteral("The following shortcuts appear on multiple commands."),
                       message, buttons);
            // Closing the box is no consent to apply.
            if (box.run() != buttons[1]) {
                tabs->setCurrentWidget(shortcuts_widget);
                return false;
            }
        }
    }

    bool saved = true;
    if (settings_updated) {
        const Settings edited = settings_widget->editedSettings();
        if (files) saved = files->writeSettingsFile(edited) && saved;
        settings_widget->resetTo(edited);
        settings_updated = false;
        emit settingsAppliedSignal(edited);
    }
    if (shortcuts_updated) {
        shortcuts_widget->apply();
        if (files) saved = files->writeShortcutsFile(commands) && saved;
        shortcuts_updated = false;
        emit shortcutsAppliedSignal();
    }
    if (extensions_updated) {
        const std::vector<ExtensionData> extensions = extensions_widget->extensions();
        if (files) saved = files->writeFileExtensionsFile(extensions) && saved;
        extensions_widget->setExtensions(extensions);
        extensions_updated = false;
        emit fileExtensionsAppliedSignal(extensions);
    }
    apply_button->setEnabled(false);
    // The values are in force either way; the user must know they won't
    // outlive this run.
    if (!saved)
        MsgBox::inform(this, QStringLiteral("Gridmere"), QStringLiteral("File failed to save."));
    return saved;
}

void PreferencesWindow::onCancelClicked() {
    close();
}

void PreferencesWindow::onApplyClicked() {
    apply(false);
}

void PreferencesWindow::onOkClicked() {
    if (apply(true)) close();
}

void PreferencesWindow::onSettingsUpdated() {
    settings_updated = true;
    apply_button->setEnabled(true);
}

void PreferencesWindow::onShortcutsUpdated() {
    shortcuts_updated = true;
    apply_button->setEnabled(true);
}

void PreferencesWindow::onPreferencesUpdated() {
    extensions_updated = true;
    apply_button->setEnabled(true);
}

void PreferencesWindow::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Escape && event->modifiers() == Qt::NoModifier) {
        onCancelClicked();
        return;
    }
    QWidget::keyPressEvent(event);
}
