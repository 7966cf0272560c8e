#include "tabledata.h"

#include "editabledatacontainer.h"
#include "fileparameters.h"
#include "indexmapping.h"
#include "readonlydatacontainer.h"
#include "tabledataworker.h"

#include <QTextCodec>

const QString TableData::kDefaultWordSeparators =
    QStringLiteral("`~!@#$%^&*()+=\t[]{}\\|;:'\",\n./?<> ");

TableData::TableData(QObject* parent) : QObject(parent) {
    container = std::make_unique<EditableDataContainer>();
    codec_name = encodingCodecName(encoding);
    codec = codecForEncoding(encoding);
    for (QChar c : word_separators)
        if (c.unicode() < 256) word_separator_table[c.unicode()] = true;

    workers[0] = new TableDataWorker;
    workers[0]->moveToThread(&worker_thread);
    worker_thread.start(QThread::InheritPriority);
    workers[1] = new TableDataWorker(this);

    connect(workers[0], &Worker::updateProgressSignal, this, &TableData::updateProgressSignal);
    connect(this, &TableData::sortRowsEditableSignal, workers[0],
            &TableDataWorker::sortRowsEditable);
    connect(workers[0], &TableDataWorker::finishedSignal, this,
            &TableData::onSortRowsEditableFinished);
    connect(&worker_thread, &QThread::finished, workers[0], &QObject::deleteLater);
}

TableData::~TableData() {
    worker_thread.quit();
    worker_thread.wait();
    if (loading) container->setCanceled(true);
    if (load_thread) {
        // The loader stops at its next line start. Waiting for it, rather than
        // a fixed grace, means the container is never freed under its feet.
        load_thread->quit();
        load_thread->wait();
    }
    container.reset();
    delete load_thread;
}

void TableData::applyDialectTo(AbstractDataContainer& c) {
    c.setDelimiters(delimiter_load, delimiter_save);
    c.setLineEnding(line_ending);
    c.setEncoding(encoding);
    c.setParsingStandard(parsing_standard);
    c.setSaveTrailingDelimiters(save_trailing_delimiters);
}

// ---- Fill bits ----

const FillBits& TableData::fillBits(int stored_column) const {
    auto found = fill_bits.find(stored_column);
    if (found != fill_bits.end()) return found->second;
    const int stored_rows = num_raw_rows;
    FillBits bits(size_t(stored_rows + 63) / 64, 0);
    if (container_kind != ReadOnlyKind) {
        const auto* c = static_cast<const EditableDataContainer*>(container.get());
        // The container's own walk reads ahead of itself.
        for (int r = c->findInColumn(stored_column, 0, 1, stored_rows - 1, true); r < stored_rows;
             r = c->findInColumn(stored_column, r + 1, 1, stored_rows - 1, true))
            bits[size_t(r) / 64] |= uint64_t(1) << (r % 64);
    }
    return fill_bits.emplace(stored_column, std::move(bits)).first->second;
}

void TableData::takeLoadedFillBits() {
    fill_bits.clear();
    if (container_kind == ReadOnlyKind) return;
    std::vector<FillBits> loaded =
        static_cast<EditableDataContainer*>(container.get())->takeFillBits();
    // A column the reader noted no cell in holds none.
    for (int c = 0; c < num_raw_cols; ++c)
        fill_bits.emplace(c, c < int(loaded.size()) ? std::move(loaded[size_t(c)]) : FillBits());
}

void TableData::moveFillColumns(const std::function<int(int)>& to) {
    std::unordered_map<int, FillBits> moved;
    for (auto& [column, bits] : fill_bits)
        if (const int c = to(column); c >= 0) moved.emplace(c, std::move(bits));
    fill_bits.swap(moved);
}

void TableData::load(const QString& filepath, bool asynchronous, bool read_only,
                     const QString& delimiter_open, const QString& delimiter_save_text,
                     EncodingType encoding_value, ParsingStandard standard) {
    if (load_thread) {
        if (loading) container->setCanceled(true);
        load_thread->quit();
        load_thread->wait();
    }
    container.reset();
    delete load_thread;
    load_thread = nullptr;
    forgetFillBits();
    num_raw_rows = num_raw_cols = 0;
    container_kind = read_only ? ReadOnlyKind : EditableKind;

    if (read_only)
        container = std::make_unique<ReadOnlyDataContainer>();
    else
        container = std::make_unique<EditableDataContainer>();
    container->setMutexAndCondition(mutex, wait_condition);
    container->setFilepath(filepath);
    delimiter_load = delimiterByte(delimiter_open);
    delimiter_save = delimiterByte(delimiter_save_text);
    parsing_standard = standard;
    applyDialectTo(*container);
    setEncoding(encoding_value, false);
    transposed = false;

    if (asynchronous) {
        load_thread = new QThread;
        AbstractDataContainer* c = container.get();
        c->moveToThread(load_thread);
        connect(load_thread, &QThread::started, c, [this, c] {
            // Runs on the load thread. A failed read (not a cancel) is
            // reported so that a waiting view does not stay hidden.
            if (!c->loadCSV() && !c->isCanceled())
                QMetaObject::invokeMethod(this, &TableData::loadFailedSignal, Qt::QueuedConnection);
        });
        connect(c, &AbstractDataContainer::startProgressUpdateSignal, this,
                &TableData::startProgressUpdateSignal);
        connect(c, &AbstractDataContainer::loadProgressUpdateSignal, this,
                &TableData::loadProgressUpdateSignal);
        connect(c, &AbstractDataContainer::loadFinishedSignal, this, &TableData::onLoadFinished);
        loading = true;
        load_thread->start(QThread::InheritPriority);
    } else {
        connect(container.get(), &AbstractDataContainer::startProgressUpdateSignal, this,
                &TableData::startProgressUpdateSignal);
        connect(container.get(), &AbstractDataContainer::loadProgressUpdateSignal, this,
                &TableData::loadProgressUpdateSignal);
        const bool loaded = container->loadCSV();
        loading = false;
        num_raw_rows = container->rowCount();
        num_raw_cols = container->columnCount();
        if (loaded) takeLoadedFillBits();
        emit loadFinishedSignal();
        emitTableSize();
    }
}

void TableData::onLoadFinished() {
    loading = false;
    num_raw_rows = container->rowCount();
    num_raw_cols = container->columnCount();
    takeLoadedFillBits(); // the container only says it is done when it read all
    emit loadFinishedSignal();
    emitTableSize();
}

void TableData::emitTableSize() {
    emit tableSizeChangedSignal(numRawRows(), numRawColumns(), numModelRows(), numModelColumns());
}

bool TableData::save(bool keep_backup, bool visible_only) {
    const QString path = container->filepath();
    emit saveStartedSignal(path);
    static const IndexList none;
    const bool ok = container->save(keep_backup, transposed, visible_only ? hidden_rows : none,
                                    visible_only ? hidden_columns : none);
    emit saveFinishedSignal(path);
    return ok;
}

bool TableData::saveAs(const QString& filepath, bool keep_backup, bool visible_only) {
    emit saveStartedSignal(container->filepath());
    static const IndexList none;
    const bool ok =
        container->saveAs(filepath, keep_backup, transposed, visible_only ? hidden_rows : none,
                          visible_only ? hidden_columns : none);
    emit saveFinishedSignal(filepath);
    return ok;
}

void TableData::setDelimiters(const QString& load, const QString& save) {
    delimiter_load = delimiterByte(load);
    delimiter_save = delimiterByte(save);
    container->setDelimiters(delimiter_load, delimiter_save);
}

void TableData::setLineEnding(LineEndingType value) {
    line_ending = value;
    container->setLineEnding(value);
}

void TableData::setParsingStandard(ParsingStandard standard) {
    parsing_standard = standard;
    container->setParsingStandard(standard);
}

void TableData::setSaveTrailingDelimiters(bool on) {
    save_trailing_delimiters = on;
    container->setSaveTrailingDelimiters(on);
}

void TableData::setExtension(const QString& value) {
    extension = value;
}

void TableData::setEncoding(EncodingType value, bool convert_cells) {
    // A file on disk cannot be re-encoded cell by cell; its dialect stays.
    if (convert_cells && container_kind == ReadOnlyKind) return;
    const EncodingType old_encoding = encoding;
    QTextCodec* old_codec = codec;
    encoding = value;
    codec_name = encodingCodecName(value);
    codec = codecForEncoding(value);
    container->setEncoding(value);
    if (!convert_cells || old_encoding == value) return;
    forgetFillBits();
    const int n = container->rowCount();
    CellList cells;
    for (int r = 0; r < n; ++r) {
        container->getRow(cells, r, All, {});
        bool changed = false;
        for (Cell& cell : cells) {
            if (cell.isEmpty()) continue;
            const QString text = decodeCell(cell.view(), old_encoding, old_codec);
            // The same text in other bytes: it keeps the quotes it came with.
            const bool quoted = cell.isQuoted();
            cell.assign(encodeCell(text, value, codec));
            cell.setQuoted(quoted);
            changed = true;
        }
        if (changed) container->setRow(r, std::move(cells));
        cells = CellList();
    }
}

void TableData::setMutexAndCondition(QMutex* m, QWaitCondition* c) {
    mutex = m;
    wait_condition = c;
    container->setMutexAndCondition(m, c);
}

void TableData::setCancelInfo(std::shared_ptr<bool> cancel_flag,
                              std::shared_ptr<QMutex> cancel_mutex) {
    workers[0]->setCancelInfo(cancel_flag, cancel_mutex);
    workers[1]->setCancelInfo(std::move(cancel_flag), std::move(cancel_mutex));
}

QVariant TableData::data(int model_row, int model_column) const {
    return rawData(rawRowFromModel(model_row), rawColumnFromModel(model_column));
}

QVariant TableData::rawData(int raw_row, int raw_column) const {
    // The loader owns the store until it is done; a grid that already has
    // rows for it reads nothing meanwhile.
    if (!container || loading || reordering) return {};
    if (transposed) std::swap(raw_row, raw_column);
    if (container_kind != ReadOnlyKind) {
        const auto* editable = static_cast<const EditableDataContainer*>(container.get());
        const QByteArrayView bytes = editable->cellView(raw_row, raw_column);
        return bytes.isEmpty() ? QVariant(QString()) : QVariant(decodeCell(bytes, encoding, codec));
    }
    const QByteArray bytes = container->data(raw_row, raw_column);
    return bytes.isEmpty() ? QVariant(QString()) : QVariant(decodeCell(bytes, encoding, codec));
}

bool TableData::setData(int model_row, int model_column, const QString& text, bool no_swap) {
    int row = rawRowFromModel(model_row, no_swap);
    int column = rawColumnFromModel(model_column, no_swap);
    if (transposed && !no_swap) std::swap(row, column);
    return setStoredCell(row, column, text);
}

bool TableData::setRawData(int raw_row, int raw_column, const QString& text) {
    if (transposed) std::swap(raw_row, raw_column);
    return setStoredCell(raw_row, raw_column, text);
}

bool TableData::setStoredCell(int row, int column, const QString& text) {
    if (row < 0 || column < 0) return false;
    // A row past the stored ones is empty already; storing it for an empty
    // text would add a line to the saved file that undo cannot take back.
    if (text.isEmpty() && container_kind != ReadOnlyKind && container &&
        row >= static_cast<const EditableDataContainer*>(container.get())->storedRowCount())
        return false;
    const int columns_before = num_raw_cols;
    bool grew = false;
    if (row >= num_raw_rows) {
        if (text.isEmpty()) return false;
        num_raw_rows = row + 1;
        grew = true;
    }
    if (column >= num_raw_cols) {
        if (text.isEmpty()) return false;
        num_raw_cols = column + 1;
        grew = true;
    }
    if (grew) emitTableSize();
    const QByteArray bytes = encodeCell(text, encoding, codec);
    const QByteArray old = container->data(row, column, true);
    if (!container->setCell(row, column, bytes)) {
        forgetFillBits();
        return false;
    }
    // Bits of the cell's column follow the write. A column the write opened
    // held nothing before it; rows it opened are past the bits, so empty.
    if (column >= columns_before && container_kind != ReadOnlyKind) fill_bits.try_emplace(column);
    if (auto bits = fill_bits.find(column); bits != fill_bits.end())
        fillbits::set(bits->second, row, !bytes.isEmpty());
    return old != bytes;
}

// Index spaces. With `transposed`, a model row is a raw column: each row form
// hands over to its column twin with no_swap set, and the other way round.

int TableData::rawRowFromModel(int model_row, bool no_swap) const {
    if (transposed && !no_swap) return rawColumnFromModel(model_row, true);
    return indexmapping::rawFromModel(hidden_rows, model_row);
}

int TableData::rawColumnFromModel(int model_column, bool no_swap) const {
    if (transposed && !no_swap) return rawRowFromModel(model_column, true);
    return indexmapping::rawFromModel(hidden_columns, model_column);
}

int TableData::modelRowFromRaw(int raw_row, bool nearest, bool no_swap) const {
    if (transposed && !no_swap) return modelColumnFromRaw(raw_row, nearest, true);
    return indexmapping::modelFromRaw(hidden_rows, raw_row, nearest, num_raw_rows);
}

int TableData::modelColumnFromRaw(int raw_column, bool nearest, bool no_swap) const {
    if (transposed && !no_swap) return modelRowFromRaw(raw_column, nearest, true);
    return indexmapping::modelFromRaw(hidden_columns, raw_column, nearest, num_raw_cols);
}

int TableData::numHiddenRows(bool no_swap) const {
    if (transposed && !no_swap) return numHiddenColumns(true);
    return int(hidden_rows.size());
}

int TableData::numHiddenColumns(bool no_swap) const {
    if (transposed && !no_swap) return numHiddenRows(true);
    return int(hidden_columns.size());
}

int TableData::numRawRows(bool no_swap) const {
    if (transposed && !no_swap) return numRawColumns(true);
    return num_raw_rows;
}

int TableData::numRawColumns(bool no_swap) const {
    if (transposed && !no_swap) return numRawRows(true);
    return num_raw_cols;
}

int TableData::numModelRows(bool no_swap) const {
    return numRawRows(no_swap) - numHiddenRows(no_swap);
}

int TableData::numModelColumns(bool no_swap) const {
    return numRawColumns(no_swap) - numHiddenColumns(no_swap);
}

int TableData::trailingEmptyRows(bool no_swap) const {
    if (transposed && !no_swap) return trailingEmptyColumns(true);
    return container->trailingEmptyRows();
}

int TableData::trailingEmptyColumns(bool no_swap) const {
    if (transposed && !no_swap) return trailingEmptyRows(true);
    return container->trailingEmptyColumns();
}

void TableData::onSortRowsEditableFinished(bool completed) {
    sort_completed = completed;
    emit endLoopSignal();
}
