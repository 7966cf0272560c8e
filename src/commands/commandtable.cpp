#include "commandtable.h"

#include "commands/commandrows.h"
#include "commands/shortcutnotation.h"

#include <QAction>
#include <QCoreApplication>
#include <QMenu>
#include <QMenuBar>
#include <QMetaMethod>
#include <QSet>
#include <QWidget>

#include <algorithm>
#include <utility>

namespace {

// Rows whose slot does not follow from their name.
const QHash<QString, QByteArray>& slotExceptions() {
    static const QHash<QString, QByteArray> exceptions = {
        {QStringLiteral("Import from JSON or XML"), "commandImport"},
        {QStringLiteral("Export to JSON or XML"), "commandExport"},
        {QStringLiteral("Export to PDF"), "commandExportToPdf"},
        {QStringLiteral("Clear Cell Contents"), "commandClearCellContentsNavigate"},
        {QStringLiteral("Fill Selected Cells with UUID/GUID"),
         "commandFillSelectedCellsWithUuidGuid"},
        {QStringLiteral("Add or Update ID Column"), "commandAddOrUpdateIdColumn"},
        {QStringLiteral("Find"), "commandFindPrompt"},
        {QStringLiteral("Find Previous Match"), "commandFindPrevMatch"},
        {QStringLiteral("Replace"), "commandReplacePrompt"},
        {QStringLiteral("Set Minimum File Size for Read-Only Mode Query (MB)"),
         "commandSetMinFileSizeReadOnlyModeQueryMb"},
        {QStringLiteral("Set UUID Type"), "commandSetUuidType"},
    };
    return exceptions;
}

QString translated(const char* text) {
    return QCoreApplication::translate("CommandTable", text);
}

QString withoutMnemonic(QString label) {
    return label.remove(u'&');
}

} // namespace

CommandTable::CommandTable(QWidget* parent) : parent_(parent), had_parent(parent != nullptr) {
    const auto& runs = commandRuns();
    size_t count = 0;
    for (const CommandRun& run : runs)
        count += run.entries.size();
    // Records never move once made: menus and the name index point at them.
    records_.reserve(count);
    for (const CommandRun& run : runs) {
        for (const CommandEntry& entry : run.entries) {
            const QString label = QString::fromUtf8(entry.label);
            const QString name =
                entry.name ? QString::fromUtf8(entry.name) : withoutMnemonic(label);
            addRow(run.gate, label, name, QString::fromUtf8(entry.shortcut), entry.setting);
        }
    }
    for (CommandRecord& record : records_)
        record.defaultShortcut = record.shortcut;
    sorted_.reserve(records_.size());
    for (CommandRecord& record : records_)
        sorted_.push_back(&record);
    std::stable_sort(
        sorted_.begin(), sorted_.end(),
        [](const CommandRecord* a, const CommandRecord* b) { return a->name < b->name; });
    setContext(context_);
}

void CommandTable::addRow(const CommandGate& gate, const QString& label, const QString& name,
                          const QString& shortcut, int setting) {
    CommandRecord record;
    record.name = translated(name.toUtf8().constData());
    record.category = translated(gate.category);
    record.kind = gate.kind;
    record.inLauncher = gate.in_launcher;
    record.requiredContexts = gate.required;
    record.barredContexts = gate.barred;
    record.shortcut = shortcut;
    record.setting = setting;
    record.label = translated(label.toUtf8().constData());
    record.slot = slotName(name);
    record.action = new QAction(record.label, parent_);
    record.keys = parseShortcut(shortcut);
    record.action->setShortcuts(record.keys);

    if (parent_) {
        const QMetaObject* meta = parent_->metaObject();
        const int index = meta->indexOfSlot(
            QMetaObject::normalizedSignature(record.slot + QByteArrayLiteral("()")));
        if (index >= 0) {
            QObject::connect(record.action, QMetaMethod::fromSignal(&QAction::triggered), parent_,
                             meta->method(index));
            record.available = true;
        }
    }
    index_by_name.insert(record.name, int(records_.size()));
    records_.push_back(std::move(record));
}

CommandTable::~CommandTable() {
    release();
}

CommandTable::CommandTable(CommandTable&& other) noexcept
    : records_(std::exchange(other.records_, {})), sorted_(std::exchange(other.sorted_, {})),
      index_by_name(std::exchange(other.index_by_name, {})), parent_(other.parent_),
      had_parent(other.had_parent), recent_menu(std::move(other.recent_menu)),
      context_(other.context_) {}

CommandTable& CommandTable::operator=(CommandTable&& other) noexcept {
    if (this == &other) return *this;
    release();
    records_ = std::exchange(other.records_, {});
    sorted_ = std::exchange(other.sorted_, {});
    index_by_name = std::exchange(other.index_by_name, {});
    parent_ = other.parent_;
    had_parent = other.had_parent;
    recent_menu = std::move(other.recent_menu);
    context_ = other.context_;
    return *this;
}

void CommandTable::release() {
    // A parent that is gone took its children, our actions, with it.
    if (!had_parent || parent_) {
        for (CommandRecord& record : records_)
            delete record.action;
    }
    records_.clear();
    sorted_.clear();
    index_by_name.clear();
    recent_menu.reset();
}

CommandRecord* CommandTable::record(const QString& name) const {
    const auto it = index_by_name.constFind(name);
    if (it == index_by_name.cend()) return nullptr;
    return const_cast<CommandRecord*>(&records_[size_t(*it)]);
}

QByteArray CommandTable::slotName(const QString& name) {
    const auto& exceptions = slotExceptions();
    if (const auto it = exceptions.constFind(name); it != exceptions.cend()) return *it;
    QString words = name;
    words.replace(QStringLiteral("(s)"), QStringLiteral("s"));
    words.replace(QStringLiteral("'s"), QStringLiteral("s"));
    QString result = QStringLiteral("command");
    for (const QString& word : words.split(u' ', Qt::SkipEmptyParts)) {
        QString kept;
        for (QChar c : word)
            if (c.isLetterOrNumber()) kept.append(c);
        if (kept.isEmpty()) continue;
        kept[0] = kept[0].toUpper();
        result.append(kept);
    }
    return result.toLatin1();
}

void CommandTable::setContext(quint32 context) {
    context_ = context;
    for (CommandRecord* record : sorted_)
        record->action->setEnabled(record->available && isEnabled(*record, context));
    shareKeys();
}

void CommandTable::shareKeys() {
    // Two enabled rows on one key would leave Qt unable to choose, and the
    // key would do nothing. The row whose gate asks for more wins the key
    // while both are enabled ("Find All Matches" over "Insert Cells, Move
    // Rest of Row Right" while the find bar is open); equal gates stay as
    // they are.
    auto gateWidth = [](const CommandRecord& r) {
        return r.requiredContexts == kAnyContext ? 0 : qPopulationCount(r.requiredContexts);
    };
    QHash<QKeySequence, CommandRecord*> owner;
    QSet<QKeySequence> tied;
    for (CommandRecord& record : records_) {
        if (!record.action || !record.action->isEnabled()) continue;
        for (const QKeySequence& key : record.keys) {
            CommandRecord*& holder = owner[key];
            if (!holder || gateWidth(record) > gateWidth(*holder)) {
                holder = &record;
                tied.remove(key);
            } else if (gateWidth(record) == gateWidth(*holder)) {
                tied.insert(key);
            }
        }
    }
    for (CommandRecord& record : records_) {
        if (!record.action) continue;
        QList<QKeySequence> kept;
        for (const QKeySequence& key : record.keys) {
            const auto it = owner.constFind(key);
            if (!record.action->isEnabled() || it == owner.cend() || *it == &record ||
                tied.contains(key))
                kept.append(key);
        }
        if (kept != record.action->shortcuts()) record.action->setShortcuts(kept);
    }
}

std::vector<const CommandRecord*> CommandTable::launcherRecords() const {
    std::vector<const CommandRecord*> result;
    for (const CommandRecord* record : sorted_)
        if (record->inLauncher && record->available && isEnabled(*record, context_))
            result.push_back(record);
    return result;
}

int CommandTable::buildMenus(QMenuBar* bar) {
    // Menus of an earlier build let go of the rows at once, and go
    // themselves once control is back in the event loop, in case one of
    // them is what asked for the rebuild.
    for (QAction* action : bar->actions()) {
        if (QMenu* menu = action->menu()) {
            releaseMenu(menu);
            menu->deleteLater();
        }
    }
    bar->clear();
    const QFont font(QStringLiteral("Lucida Sans Unicode"), 9);
    bar->setFont(font);
    for (const MenuLayout& layout : menuLayout()) {
        QMenu* menu = bar->addMenu(translated(layout.title));
        menu->setFont(font);
        fillMenu(menu, QString::fromUtf8(layout.entries));
    }
    if (parent_) {
        for (const char* name : offMenuCommands())
            if (CommandRecord* row = record(translated(name))) parent_->addAction(row->action);
    }
    return bar->sizeHint().width() + 10;
}

void CommandTable::releaseMenu(QMenu* menu) {
    for (QAction* action : menu->actions())
        if (QMenu* sub = action->menu(); sub && sub != recent_menu.get()) releaseMenu(sub);
    menu->clear();
}

void CommandTable::fillMenu(QMenu* menu, QStringView entries) {
    auto addEntry = [&](QStringView text) {
        const QString name = text.trimmed().toString();
        if (name.isEmpty()) return;
        if (CommandRecord* row = record(translated(name.toUtf8().constData())))
            menu->addAction(row->action);
        else
            qWarning("CommandTable: no row for menu entry %s", qPrintable(name));
    };
    qsizetype start = 0;
    for (qsizetype i = 0; i < entries.size(); ++i) {
        const QChar c = entries[i];
        if (c == u';') {
            addEntry(entries.mid(start, i - start));
            start = i + 1;
        } else if (c == u'—') {
            addEntry(entries.mid(start, i - start));
            menu->addSeparator();
            start = i + 1;
        } else if (c == u'[') {
            const qsizetype colon = entries.indexOf(u':', i);
            const qsizetype close = entries.indexOf(u']', colon);
            const QString title =
                translated(entries.mid(i + 1, colon - i - 1).trimmed().toUtf8().constData());
            const QStringView inner = entries.mid(colon + 1, close - colon - 1);
            // A submenu that is a row of its own ("Open Recent File") carries
            // the row's action, so that the row's gate covers it.
            if (CommandRecord* row = record(withoutMnemonic(title))) {
                if (!recent_menu) recent_menu = std::make_unique<QMenu>(title);
                row->action->setMenu(recent_menu.get());
                menu->addAction(row->action);
            } else {
                QMenu* submenu = menu->addMenu(title);
                fillMenu(submenu, inner);
            }
            i = close;
            start = i + 1;
        }
    }
    addEntry(entries.mid(start));
}

void CommandTable::setShortcut(CommandRecord& record, const QString& text) {
    record.shortcut = text;
    record.keys = parseShortcut(text);
    record.action->setShortcuts(record.keys);
    shareKeys();
}

void CommandTable::applyUserShortcuts(const QHash<QString, QString>& user_texts) {
    for (CommandRecord* record : sorted_) {
        const auto it = user_texts.constFind(record->name);
        const QString text = it == user_texts.cend() ? QString() : it->trimmed();
        if (text.compare(u"(none)", Qt::CaseInsensitive) == 0) {
            record->shortcut.clear();
            record->keys.clear();
            record->action->setShortcuts({});
            continue;
        }
        const QList<QKeySequence> user = parseShortcut(text);
        if (!user.isEmpty()) {
            record->shortcut = text;
            record->keys = user;
            record->action->setShortcuts(user);
        } else {
            setShortcut(*record, record->defaultShortcut);
        }
    }
}

void CommandTable::setCheckForUpdatesEnabled(bool on) {
    if (CommandRecord* row = record(translated("Check for Updates"))) {
        row->inLauncher = on ? 1 : 0;
        row->action->setVisible(on);
    }
}
