#include "tabledelegate.h"

#include "widgets/quickedit.h"

#include <QGlyphRun>
#include <QKeyEvent>
#include <QPainter>

namespace {
// Qt's item text margin: QStyle::PM_FocusFrameHMargin + 1 on each side.
constexpr int kTextMargin = 3;
// Tables kept: the cell font, the bold header font, and a few spares for
// size changes.
constexpr size_t kMaxGlyphTables = 4;
} // namespace

void TableDelegate::initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const {
    QStyledItemDelegate::initStyleOption(option, index);
    option->state &= ~QStyle::State_HasFocus;
}

const TableDelegate::GlyphTable& TableDelegate::glyphTable(const QFont& font) const {
    for (const GlyphTable& t : glyph_tables)
        if (t.font == font) return t;
    if (glyph_tables.size() >= kMaxGlyphTables) glyph_tables.erase(glyph_tables.begin());
    GlyphTable t;
    t.font = font;
    t.raw = QRawFont::fromFont(font);
    if (t.raw.isValid()) {
        QString latin1;
        for (int c = 0; c < 256; ++c)
            latin1 += QChar(c);
        const QList<quint32> glyphs = t.raw.glyphIndexesForString(latin1);
        const QList<QPointF> advances = t.raw.advancesForGlyphIndexes(glyphs);
        for (int c = 0; c < 256 && c < glyphs.size(); ++c) {
            t.glyph[size_t(c)] = glyphs[c];
            t.advance[size_t(c)] = advances[c].x();
            // Control characters and glyphs the font lacks go the slow way,
            // where font fallback finds them.
            t.usable[size_t(c)] = QChar(c).isPrint() && (glyphs[c] != 0 || c == ' ');
        }
        const QList<quint32> ellipsis = t.raw.glyphIndexesForString(QString(QChar(0x2026)));
        if (!ellipsis.isEmpty() && ellipsis[0] != 0) {
            t.ellipsis_glyph = ellipsis[0];
            t.ellipsis_advance = t.raw.advancesForGlyphIndexes(ellipsis).value(0).x();
        }
        t.ascent = t.raw.ascent();
        t.height = t.raw.ascent() + t.raw.descent();
    }
    glyph_tables.push_back(std::move(t));
    return glyph_tables.back();
}

bool TableDelegate::drawLatin1(QPainter* painter, const GlyphTable& table, const QRect& area,
                               const QString& text) const {
    if (!table.raw.isValid() || table.ellipsis_glyph == 0) return false;
    const qsizetype n = text.size();
    const QChar* chars = text.constData();
    qreal width = 0;
    for (qsizetype i = 0; i < n; ++i) {
        const char16_t c = chars[i].unicode();
        if (c > 255 || !table.usable[c]) return false;
        width += table.advance[c];
    }
    qsizetype shown = n;
    bool elide = false;
    if (width > area.width()) {
        // Keep as many characters as fit beside the ellipsis.
        elide = true;
        qreal room = area.width() - table.ellipsis_advance;
        width = 0;
        shown = 0;
        while (shown < n && width + table.advance[chars[shown].unicode()] <= room)
            width += table.advance[chars[shown++].unicode()];
    }
    glyph_buffer.resize(shown + (elide ? 1 : 0));
    position_buffer.resize(glyph_buffer.size());
    qreal x = 0;
    for (qsizetype i = 0; i < shown; ++i) {
        const char16_t c = chars[i].unicode();
        glyph_buffer[i] = table.glyph[c];
        position_buffer[i] = QPointF(x, 0);
        x += table.advance[c];
    }
    if (elide) {
        glyph_buffer[shown] = table.ellipsis_glyph;
        position_buffer[shown] = QPointF(x, 0);
    }
    QGlyphRun run;
    run.setRawFont(table.raw);
    run.setGlyphIndexes(glyph_buffer);
    run.setPositions(position_buffer);
    const qreal baseline = area.top() + (area.height() - table.height) / 2 + table.ascent;
    painter->drawGlyphRun(QPointF(area.left(), qRound(baseline)), run);
    return true;
}

void TableDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                          const QModelIndex& index) const {
    const QString text = index.data(Qt::DisplayRole).toString();
    // Text with line breaks or right-to-left runs takes Qt's full path.
    if (text.contains(QLatin1Char('\n')) || text.isRightToLeft()) {
        QStyledItemDelegate::paint(painter, option, index);
        return;
    }
    const QVariant background = index.data(Qt::BackgroundRole);
    if (background.canConvert<QColor>()) painter->fillRect(option.rect, background.value<QColor>());
    if (text.isEmpty()) return;

    const QVariant font_value = index.data(Qt::FontRole);
    const QFont font = font_value.isValid() ? font_value.value<QFont>() : option.font;
    const QVariant foreground = index.data(Qt::ForegroundRole);
    const QColor text_color = foreground.canConvert<QBrush>()
                                  ? foreground.value<QBrush>().color()
                                  : option.palette.color(QPalette::Text);
    const QRect area = option.rect.adjusted(kTextMargin, 0, -kTextMargin, 0);
    painter->setPen(text_color);
    if (drawLatin1(painter, glyphTable(font), area, text)) return;

    painter->save();
    painter->setFont(font);
    const QFontMetrics metrics(font);
    const QString shown = metrics.horizontalAdvance(text) <= area.width()
                              ? text
                              : metrics.elidedText(text, Qt::ElideRight, area.width());
    const int baseline = area.top() + (area.height() - metrics.height()) / 2 + metrics.ascent();
    painter->drawText(QPoint(area.left(), baseline), shown);
    painter->restore();
}

// ---- The cell editor ----

QWidget* TableDelegate::createEditor(QWidget* parent, const QStyleOptionViewItem& option,
                                     const QModelIndex& index) const {
    auto* editor = new QuickEdit(parent);
    editor->setStyleSheet(
        QStringLiteral("QLineEdit {background: %1;\n")
            .arg(editor_background.name(QColor::HexArgb)) +
        QStringLiteral("color: %1;}\n").arg(editor_text_color.name(QColor::HexArgb)));
    QFont f = index.data(Qt::FontRole).value<QFont>();
    if (f.family().isEmpty()) f = font;
    const bool header = (highlight_header_rows && index.row() < num_header_rows) ||
                        (highlight_header_cols && index.column() < num_header_cols);
    f.setWeight(header ? QFont::Bold : QFont::Normal);
    editor->setFont(f);
    editor->start_select_all = start_select_all;
    editor->setGeometry(option.rect);
    editor->setFrame(false);
    auto* self = const_cast<TableDelegate*>(this);
    self->editing = true;
    emit self->editorCreatedSignal(editor);
    connect(editor, &QLineEdit::textEdited, self, &TableDelegate::onTextEdited);
    connect(editor, &QLineEdit::editingFinished, self, &TableDelegate::cemEditorDestroyed);
    return editor;
}

void TableDelegate::setEditorData(QWidget* editor, const QModelIndex& index) const {
    auto* edit = qobject_cast<QuickEdit*>(editor);
    // Qt hands an open editor every repaint of its cell; the live write
    // repaints at each keystroke, and the text typed must stay as typed.
    if (!edit || edit->property("filled").toBool()) return;
    edit->setProperty("filled", true);
    const QString text = index.data(Qt::EditRole).toString();
    edit->setText(text);
    // The first state takes the path typed text takes.
    if (!reopening) emit const_cast<TableDelegate*>(this)->textEditedSignal(text);
}

void TableDelegate::updateEditorGeometry(QWidget* editor, const QStyleOptionViewItem& option,
                                         const QModelIndex&) const {
    editor->setGeometry(option.rect);
}

void TableDelegate::onTextEdited(QString text) {
    if (qobject_cast<QuickEdit*>(sender())) emit textEditedSignal(text);
}

void TableDelegate::commitAndCloseEditor() {
    auto* editor = qobject_cast<QWidget*>(sender());
    editing = false;
    if (!editor) return;
    emit commitData(editor);
    emit closeEditor(editor, NoHint);
}

void TableDelegate::cemEditorDestroyed() {
    commitAndCloseEditor();
}

bool TableDelegate::eventFilter(QObject* editor, QEvent* event) {
    if (event->type() == QEvent::KeyPress) {
        auto* ke = static_cast<QKeyEvent*>(event);
        const Qt::KeyboardModifiers mods = ke->modifiers();
        switch (ke->key()) {
        case Qt::Key_Tab:
            if (mods == Qt::NoModifier) {
                emit stopEditingSignal();
                emit nextColumnWithColumnResetSignal();
                return true;
            }
            break;
        case Qt::Key_Backtab:
            emit stopEditingSignal();
            emit previousColumnWithColumnResetSignal();
            return true;
        case Qt::Key_Enter:
            emit stopEditingSignal();
            emit nextRowWithColumnResetSignal();
            return true;
        case Qt::Key_Return:
            if (mods == Qt::NoModifier) {
                emit stopEditingSignal();
                emit nextRowWithColumnResetSignal();
                return true;
            }
            // The line edit would end the edit on any Return; with a
            // modifier the edit goes on.
            return true;
        case Qt::Key_Escape:
            // No cancel: what was typed stays, and Undo takes it back.
            emit stopEditingSignal();
            return true;
        default:
            break;
        }
    }
    return QStyledItemDelegate::eventFilter(editor, event);
}
