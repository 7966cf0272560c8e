#pragma once

#include <QFont>
#include <QRawFont>
#include <QStyledItemDelegate>

#include <array>
#include <vector>

// Paints the cells of a grid from the model's roles and, with editing, drives
// the cell editor. The picture is Qt's styled item (background, font, colour,
// elided single-line text, no focus rectangle). Latin-1 text, the bulk of
// delimited files, is laid out from a per-font table of glyphs and advances
// instead of a shaped text layout: that is what keeps a full frame of a big
// table inside its budget.
class TableDelegate : public QStyledItemDelegate {
    Q_OBJECT

public:
    using QStyledItemDelegate::QStyledItemDelegate;

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;

    QWidget* createEditor(QWidget* parent, const QStyleOptionViewItem& option,
                          const QModelIndex& index) const override;
    void setEditorData(QWidget* editor, const QModelIndex& index) const override;
    // Nothing is written through the delegate: the view writes every
    // keystroke into all selected cells itself and makes the undo step.
    void setModelData(QWidget*, QAbstractItemModel*, const QModelIndex&) const override {}
    void updateEditorGeometry(QWidget* editor, const QStyleOptionViewItem& option,
                              const QModelIndex& index) const override;

    bool start_select_all = true;
    QColor editor_background = Qt::white;
    QFont font;
    int text_size = 12;
    QColor editor_text_color = Qt::black;
    int num_header_rows = 1;
    int num_header_cols = 0;
    bool highlight_header_rows = true;
    bool highlight_header_cols = true;
    bool editing = false;
    bool reopening = false;

signals:
    void editorCreatedSignal(QWidget* editor);
    void textEditedSignal(QString text);
    void nextColumnWithColumnResetSignal();
    void previousColumnWithColumnResetSignal();
    void nextRowWithColumnResetSignal();
    void stopEditingSignal();

public slots:
    void commitAndCloseEditor();
    void onTextEdited(QString text);
    void cemEditorDestroyed();

protected:
    bool eventFilter(QObject* editor, QEvent* event) override;
    void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override;

private:
    struct GlyphTable {
        QFont font;
        QRawFont raw;
        std::array<quint32, 256> glyph{};
        std::array<qreal, 256> advance{};
        std::array<bool, 256> usable{};
        quint32 ellipsis_glyph = 0;
        qreal ellipsis_advance = 0;
        qreal ascent = 0;
        qreal height = 0;
    };
    const GlyphTable& glyphTable(const QFont& font) const;
    // Draws a one-line Latin-1 text; false when the fast path cannot.
    bool drawLatin1(QPainter* painter, const GlyphTable& table, const QRect& area,
                    const QString& text) const;

    mutable std::vector<GlyphTable> glyph_tables;
    mutable QList<quint32> glyph_buffer;
    mutable QList<QPointF> position_buffer;
};
