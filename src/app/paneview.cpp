#include "app/paneview.h"

#include "view/tablemodel.h"
#include "view/tableview.h"

#include <QEvent>
#include <QFileInfo>
#include <QGuiApplication>
#include <QLabel>
#include <QMutexLocker>
#include <QPushButton>
#include <QScreen>
#include <QSplitter>
#include <QStackedLayout>
#include <QVBoxLayout>

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
    outer_layout->addWidget(splitter);

    // The labels cover the splitter, so they follow its geometry; other
    // children (the launcher's strip, later) may share the pane with it.
    splitter->installEventFilter(this);
}

PaneView::~PaneView() {
    // The views die with table_area after this body; their destroyed()
    // handlers must not reach a half-destroyed pane.
    for (TableView* view : tableViews())
        disconnect(view, nullptr, this, nullptr);
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

    connectCurrent();
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
        connect(v, &TableView::mainCellChangedSignal, this, &PaneView::mainCellChangedSignal),
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
