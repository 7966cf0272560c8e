#include "app/paneview.h"

#include "app/launcher.h"

#include "view/tablemodel.h"
#include "view/tableview.h"
#include "widgets/editorpane.h"

#include <QApplication>
#include <QEvent>
#include <QFileInfo>
#include <QGuiApplication>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QMutexLocker>
#include <QPushButton>
#include <QScreen>
#include <QSplitter>
#include <QStackedLayout>
#include <QVBoxLayout>
#include <QVariantAnimation>

namespace {

const char* const kFontFamily = "Lucida Sans Unicode";

QString canonicalPath(const QString& path) {
    return path.isEmpty() ? QString() : QFileInfo(path).canonicalFilePath();
}

} // namespace

PaneView::PaneView(QWidget* parent) : QWidget(parent) {
    outer_layout = new QVBoxLayout(this);
    outer_layout->setSpacing(0);
    outer_layout->setContentsMargins(0, 0, 0, 0);

    splitter = new QSplitter(Qt::Vertical, this);
    splitter->setHandleWidth(5);
    table_area = new QWidget(splitter);
    stacked_layout = new QStackedLayout(table_area);
    stacked_layout->setContentsMargins(0, 0, 0, 0);
    splitter->addWidget(table_area);
    splitter->setCollapsible(0, false);
    editor_pane = new EditorPane(splitter);
    editor_pane->setObjectName(QStringLiteral("editorPane"));
    splitter->addWidget(editor_pane);
    editor_pane->hide();
    splitter->setSizes({1, 0});
    outer_layout->addWidget(splitter);
    height_animation = new QVariantAnimation(this);
    height_animation->setDuration(125);
    connect(height_animation, &QVariantAnimation::valueChanged, this,
            &PaneView::setEditorPaneHeightSlot);
    connect(editor_pane, &QPlainTextEdit::textChanged, this, &PaneView::onEditorPaneTextChanged);
    connect(editor_pane, &EditorPane::editingFinishedSignal, this, &PaneView::onEditingFinished);
    connect(editor_pane, &EditorPane::nextRowWithColumnResetSignal, this,
            &PaneView::onNextRowWithColumnReset);
    connect(editor_pane, &EditorPane::nextColumnWithColumnResetSignal, this,
            &PaneView::onNextColumnWithColumnReset);
    connect(editor_pane, &EditorPane::previousColumnWithColumnResetSignal, this,
            &PaneView::onPreviousColumnWithColumnReset);
    connect(editor_pane, &EditorPane::EditorPaneFocusInSignal, this,
            &PaneView::onEditorPaneFocusIn);

    // The labels cover the splitter, so they follow its geometry; other
    // children (the launcher's strip, later) may share the pane with it.
    splitter->installEventFilter(this);
}

PaneView::~PaneView() {
    // The views die with table_area after this body; their destroyed()
    // handlers must not reach a half-destroyed pane.
    for (TableView* view : tableViews())
        disconnect(view, nullptr, this, nullptr);
    // Launchers (the one installed and answered ones not yet deleted) and
    // the strip go with the pane too.
    for (Launcher* l : findChildren<Launcher*>(Qt::FindDirectChildrenOnly))
        disconnect(l, nullptr, this, nullptr);
    for (PrevOptionWidget* strip : findChildren<PrevOptionWidget*>(Qt::FindDirectChildrenOnly))
        disconnect(strip, nullptr, this, nullptr);
}

void PaneView::addTableView(TableView* view) {
    if (!view || stacked_layout->indexOf(view) >= 0) return;
    stacked_layout->addWidget(view);
    keepLoadingViewsHidden();

    connect(view, &TableView::startProgressUpdateSignal, this,
            [this, view] { onStartProgressUpdate(view); });
    connect(
        view, &TableView::loadProgressUpdateSignal, this,
        [this, view](int curr, int total, int mb) { onLoadProgressUpdate(view, curr, total, mb); });
    connect(view, &TableView::loadFinishedSignal, this, [this, view] { onLoadFinished(view); });
    connect(view, &TableView::undoStackCleanChangedSignal, this,
            [this, view](bool is_saved) { emit undoStackCleanChangedSignal(view, is_saved); });
    connect(view, &TableView::saveStartedSignal, this, &PaneView::saveStartedSignal);
    connect(view, &TableView::saveFinishedSignal, this, &PaneView::saveFinishedSignal);
    // A view deleted without removeTableView must not leave a dangling
    // current pointer or a label behind. Only the address is used here.
    connect(view, &QObject::destroyed, this, [this, view] {
        if (view == current_view) {
            current_connections.clear();
            current_view = nullptr;
        }
        dropProgressLabel(view);
    });

    if (!current_view && count() == 1) setCurrentTableView(view);
}

void PaneView::removeTableView(TableView* view) {
    if (!view || stacked_layout->indexOf(view) < 0) return;
    if (view == current_view) {
        disconnectCurrent();
        current_view = nullptr;
    }
    disconnect(view, nullptr, this, nullptr);
    dropProgressLabel(view);
    stacked_layout->removeWidget(view);
    view->hide();
    keepLoadingViewsHidden();
}

bool PaneView::setCurrentTableView(TableView* view) {
    if (!view || stacked_layout->indexOf(view) < 0) return false;
    if (view == current_view) return true;

    disconnectCurrent();
    current_view = view;
    stacked_layout->setCurrentWidget(view);
    keepLoadingViewsHidden();

    if (current_progress_label) current_progress_label->hide();
    const auto it = progress_labels.find(view);
    if (it != progress_labels.end()) {
        current_progress_label = it->second;
        current_progress_label->show();
        current_progress_label->raise();
        // A loading view takes no commands.
        emit removeContextSignal(TableOpen);
    } else {
        current_progress_label = nullptr;
        emit addContextSignal(TableOpen);
        emit addContextSignal(TableFocus);
    }
    // Commands that act on the file itself (reload, rename...) follow
    // whether this tab has one.
    if (view->model()->file().fileName().isEmpty())
        emit removeContextSignal(FileOnDisk);
    else
        emit addContextSignal(FileOnDisk);

    view->setContext(context);
    connectCurrent();
    onMainCellChanged(view->model()->mainCell());
    emit currentTableViewChangedSignal(view);
    return true;
}

QList<TableView*> PaneView::tableViews() const {
    QList<TableView*> views;
    for (int i = 0; i < stacked_layout->count(); ++i)
        if (auto* view = qobject_cast<TableView*>(stacked_layout->widget(i))) views.append(view);
    return views;
}

int PaneView::count() const {
    return stacked_layout->count();
}

TableView* PaneView::tableViewForFile(const QString& filepath) const {
    const QString wanted = canonicalPath(filepath);
    if (wanted.isEmpty()) return nullptr;
    for (TableView* view : tableViews())
        if (canonicalPath(view->model()->file().fileName()) == wanted) return view;
    return nullptr;
}

void PaneView::setContext(int new_context) {
    context = new_context;
    if (current_view) current_view->setContext(context);
}

qreal PaneView::progressPointSize() {
    const QScreen* screen = QGuiApplication::primaryScreen();
    const qreal scale = screen ? screen->logicalDotsPerInch() / 96.0 : 1.0;
    return 75.0 / (scale > 0 ? scale : 1.0);
}

// ---- Relay of the current view ----

void PaneView::connectCurrent() {
    TableView* v = current_view;
    current_connections = {
        connect(v, &TableView::selectionChangedSignal, this, &PaneView::selectionChangedSignal),
        connect(v, &TableView::mainCellChangedSignal, this, &PaneView::onMainCellChanged),
        connect(v, &TableView::mainCellLengthChangedSignal, this,
                &PaneView::mainCellLengthChangedSignal),
        connect(v, qOverload<bool, bool>(&TableView::startOffCellEditSignal), this,
                qOverload<bool, bool>(&PaneView::onStartOffCellEdit)),
        connect(v, qOverload<bool, QKeyEvent*>(&TableView::startOffCellEditSignal), this,
                qOverload<bool, QKeyEvent*>(&PaneView::onStartOffCellEdit), Qt::DirectConnection),
        connect(v, &TableView::tableSizeChangedSignal, this, &PaneView::tableSizeChangedSignal),
        connect(v, &TableView::selectionSizeChangedSignal, this,
                &PaneView::selectionSizeChangedSignal),
        connect(v, &TableView::updateStatusBarSignal, this, &PaneView::updateStatusBarSignal),
        connect(v, &TableView::addContextSignal, this, &PaneView::addContextSignal),
        connect(v, &TableView::removeContextSignal, this, &PaneView::removeContextSignal),
        connect(v, &TableView::selectionExpandingSignal, this, &PaneView::selectionExpandingSignal),
    };
}

void PaneView::disconnectCurrent() {
    for (const QMetaObject::Connection& c : current_connections)
        disconnect(c);
    current_connections.clear();
}

// ---- Load progress ----

void PaneView::onStartProgressUpdate(TableView* view) {
    if (!view || stacked_layout->indexOf(view) < 0) return;
    // Nothing may read the store while the loader fills it.
    view->setUpdatesEnabled(false);
    view->hide();

    QLabel*& label = progress_labels[view];
    if (!label) {
        label = new QLabel(this);
        label->setObjectName(QStringLiteral("loadProgressLabel"));
        label->setAlignment(Qt::AlignCenter);
        QFont font(QString::fromLatin1(kFontFamily));
        font.setPointSizeF(progressPointSize());
        label->setFont(font);

        auto* cancel = new QPushButton(QStringLiteral("Cancel"), label);
        cancel->setObjectName(QStringLiteral("cancelLoadButton"));
        cancel->setFont(QFont(QString::fromLatin1(kFontFamily)));
        cancel->setCursor(Qt::PointingHandCursor);
        connect(cancel, &QPushButton::clicked, this, [this, view, cancel] {
            cancel->setEnabled(false);
            emit cancelLoadSignal(view);
        });
        // The button hangs below the centred figure: the spacing is the
        // figure's height plus a gap and the button's own height, so that
        // the two stretches centre the figure rather than the button.
        auto* layout = new QVBoxLayout(label);
        layout->addStretch(1);
        layout->addSpacing(label->fontMetrics().height() + 24 + cancel->sizeHint().height());
        layout->addWidget(cancel, 0, Qt::AlignHCenter);
        layout->addStretch(1);
        label->hide();
    }
    label->setText(QStringLiteral("0%"));
    placeProgressLabels();

    if (view == current_view) {
        if (current_progress_label && current_progress_label != label)
            current_progress_label->hide();
        current_progress_label = label;
        label->show();
        label->raise();
        emit removeContextSignal(TableOpen);
    }
    wakeLoader(view);
}

void PaneView::onLoadProgressUpdate(TableView* view, int curr_num_reports, int num_total_reports,
                                    int filesize_mb) {
    Q_UNUSED(filesize_mb);
    const auto it = progress_labels.find(view);
    if (it != progress_labels.end() && num_total_reports > 0)
        it->second->setText(QStringLiteral("%1%").arg(curr_num_reports * 100 / num_total_reports));
    if (view) wakeLoader(view);
}

void PaneView::onLoadFinished(TableView* view) {
    if (!view) return;
    dropProgressLabel(view);
    view->setUpdatesEnabled(true);
    if (view == current_view) {
        view->show();
        emit addContextSignal(TableOpen);
        emit addContextSignal(TableFocus);
        if (!view->model()->file().fileName().isEmpty()) emit addContextSignal(FileOnDisk);
    }
    emit loadFinishedSignal(view);
}

void PaneView::dropProgressLabel(TableView* view) {
    const auto it = progress_labels.find(view);
    if (it == progress_labels.end()) return;
    QLabel* label = it->second;
    progress_labels.erase(it);
    if (label == current_progress_label) current_progress_label = nullptr;
    label->hide();
    label->deleteLater();
}

void PaneView::keepLoadingViewsHidden() {
    for (const auto& [view, label] : progress_labels)
        if (view->isVisibleTo(this)) view->hide();
}

void PaneView::placeProgressLabels() {
    for (const auto& [view, label] : progress_labels)
        label->setGeometry(splitter->geometry());
}

void PaneView::wakeLoader(TableView* view) {
    TableModel* model = view->model();
    if (!model || !model->loadMutex() || !model->loadWaitCondition()) return;
    QMutexLocker locker(model->loadMutex());
    model->loadWaitCondition()->wakeAll();
}

bool PaneView::eventFilter(QObject* watched, QEvent* event) {
    if (watched == splitter && (event->type() == QEvent::Resize || event->type() == QEvent::Move))
        placeProgressLabels();
    return QWidget::eventFilter(watched, event);
}

// ---- Editor pane ----

bool PaneView::isEditorPaneShown() const {
    return splitter->sizes().value(1) > 0 || editor_pane->isVisible();
}

void PaneView::showEditorPane(bool show, bool animate) {
    const int h = splitter->sizes().value(1);
    int target = 0;
    if (h == 0) {
        if (show) {
            editor_pane->show();
            target = editor_pane_height;
            emit addContextSignal(EditorPaneShown);
        } else {
            editor_pane->hide();
        }
    } else {
        editor_pane_height = h;
        if (show) return;
    }
    if (!show) {
        if (current_view && (current_view->context & CellEditing)) current_view->stopEditing(true);
        emit removeContextSignal(EditorPaneShown);
        if (current_view) current_view->setFocus();
    }
    if (!animate) {
        setEditorPaneHeightSlot(target);
        if (!show) editor_pane->hide();
        return;
    }
    height_animation->stop();
    height_animation->setStartValue(h);
    height_animation->setEndValue(target);
    if (!show)
        connect(height_animation, &QVariantAnimation::finished, editor_pane, &QWidget::hide,
                Qt::SingleShotConnection);
    height_animation->start();
}

void PaneView::setEditorPaneHeightSlot(QVariant height_var) {
    const int v = height_var.toInt();
    splitter->setSizes({std::max(splitter->height() - splitter->handleWidth() - v, 1), v});
}

void PaneView::setLetEditorPaneConsumeNavigationKeys(bool on) {
    editor_pane->consume_navigation_keys = on;
}

void PaneView::onMainCellChanged(Range main_cell) {
    if (current_view && !(current_view->context & CellEditing)) {
        const QSignalBlocker block(editor_pane);
        const TableModel* m = current_view->model();
        editor_pane->setPlainText(main_cell.row >= 0
                                      ? m->data(m->index(main_cell.row, main_cell.col)).toString()
                                      : QString());
        editor_pane->setReadOnly(m->isReadOnly());
        editor_pane->read_only_mode = m->isReadOnly();
    }
    emit mainCellChangedSignal(main_cell);
}

void PaneView::onStartOffCellEdit(bool blank, bool move_cursor_to_end) {
    const QSignalBlocker block(editor_pane);
    editor_pane->setFocus(Qt::OtherFocusReason);
    if (blank) editor_pane->clear();
    if (move_cursor_to_end) editor_pane->moveCursor(QTextCursor::End);
}

void PaneView::onStartOffCellEdit(bool blank, QKeyEvent* ke) {
    {
        const QSignalBlocker block(editor_pane);
        editor_pane->setFocus(Qt::OtherFocusReason);
        if (blank) editor_pane->clear();
        if (ke) {
            QKeyEvent copy(ke->type(), ke->key(), ke->modifiers(), ke->text());
            QApplication::sendEvent(editor_pane, &copy);
        }
    }
}

void PaneView::onEditorPaneTextChanged() {
    if (!current_view || current_view->model()->isReadOnly()) return;
    // Typing in the pane before an edit began starts one there.
    if (!(current_view->context & CellEditing)) current_view->startEditing(false, true);
    if (current_view->context & CellEditing)
        current_view->onCellTextEdited(editor_pane->toPlainText());
}

void PaneView::onEditingFinished() {
    if (current_view && (current_view->context & CellEditing)) {
        current_view->stopEditing(true);
        current_view->setFocus(Qt::OtherFocusReason);
    }
}

void PaneView::onNextRowWithColumnReset() {
    if (current_view) current_view->nextRowWithColumnReset();
}

void PaneView::onNextColumnWithColumnReset() {
    if (current_view) current_view->nextColumnWithColumnReset();
}

void PaneView::onPreviousColumnWithColumnReset() {
    if (current_view) current_view->previousColumnWithColumnReset();
}

void PaneView::onEditorPaneFocusIn() {
    if (current_view && !current_view->model()->isReadOnly() &&
        !(current_view->context & CellEditing))
        current_view->startEditing(false, true);
}

// ---- Launcher ----

int PaneView::launcherWidth(int pane_width) {
    return std::min(std::max(int(pane_width * 0.8), 400), 750);
}

void PaneView::placeLauncher() {
    if (!launcher) return;
    const int w = launcherWidth(width());
    const int x = (width() - w) / 2;
    int y = splitter->y();
    if (current_view && current_view->horizontalHeader()->isVisible())
        y += current_view->horizontalHeader()->height();
    for (PrevOptionWidget* strip : prev_options) {
        strip->setGeometry(x, y, w, strip->height());
        strip->raise();
        strip->show();
        y += strip->height() + 10;
    }
    if (launcher->width() != w) {
        launcher->resize(w, launcher->height());
        launcher->resizeWithExtra();
    }
    launcher->setGeometry(x, y, w, launcher->height());
    launcher->raise();
    launcher->show();
}

void PaneView::setLauncher(Launcher* new_launcher) {
    if (launcher && launcher != new_launcher) {
        Launcher* old = launcher;
        launcher = nullptr;
        disconnect(old, nullptr, this, nullptr);
        old->close();
    }
    launcher = new_launcher;
    if (!launcher) return;
    emit addContextSignal(LauncherOpen);
    launcher->setParent(this);
    connect(launcher, &QObject::destroyed, this, &PaneView::onLauncherDestroyed);
    connect(launcher, &Launcher::launcherClosedSignal, this, &PaneView::clearPrevOptionList);
    if (!prev_options.empty())
        connect(launcher, &Launcher::goBackSignal, prev_options.back(),
                &PrevOptionWidget::goHereSignal);
    placeLauncher();
    launcher->putFocusInPromptEditor();
}

PrevOptionWidget* PaneView::addPrevOption(const QString& prompt, const QString& answer) {
    auto* strip = new PrevOptionWidget(prompt, answer, settings, this);
    connect(strip, &PrevOptionWidget::goHereSignal, this, &PaneView::onPrevOptionGoHere);
    prev_options.push_back(strip);
    placeLauncher();
    return strip;
}

void PaneView::clearPrevOptionList() {
    for (PrevOptionWidget* strip : prev_options) {
        strip->hide();
        strip->deleteLater();
    }
    prev_options.clear();
}

void PaneView::closeLauncher() {
    if (!launcher) {
        clearPrevOptionList();
        if (current_view) current_view->setFocus(Qt::OtherFocusReason);
        return;
    }
    Launcher* old = launcher;
    disconnect(old, nullptr, this, nullptr);
    old->close();
    onLauncherDestroyed(old);
}

void PaneView::onLauncherDestroyed(QObject* object) {
    // A chain installs its next question before the answered one is gone.
    if (object != launcher) return;
    launcher = nullptr;
    clearPrevOptionList();
    emit removeContextSignal(LauncherOpen);
    emit launcherDestroyedSignal();
    if (current_view) current_view->setFocus(Qt::OtherFocusReason);
}

void PaneView::onPrevOptionGoHere() {
    auto* strip = qobject_cast<PrevOptionWidget*>(sender());
    const auto it = std::find(prev_options.begin(), prev_options.end(), strip);
    if (it == prev_options.end()) return;
    for (auto later = it + 1; later != prev_options.end(); ++later) {
        (*later)->hide();
        (*later)->deleteLater();
    }
    prev_options.erase(it, prev_options.end());
    strip->hide();
    strip->deleteLater();
    emit strip->expandThisSignal();
    placeLauncher();
}

void PaneView::setSettings(const Settings& new_settings) {
    settings = new_settings;
    for (PrevOptionWidget* strip : prev_options)
        strip->setSettings(settings);
    if (launcher) launcher->setSettings(settings);
}

void PaneView::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    placeLauncher();
}
