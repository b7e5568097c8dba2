#include "gui/FormulaHighlighter.h"

#include <QColor>
#include <QTextCharFormat>

namespace quillmer::gui {

namespace {
QTextCharFormat colour(const QColor& c, bool bold = false) {
    QTextCharFormat f;
    f.setForeground(c);
    if (bold) f.setFontWeight(QFont::Bold);
    return f;
}
bool nameChar(QChar c) { return c.isLetterOrNumber() || c == u'_' || c == u'.' || c == u'$'; }
}  // namespace

void FormulaHighlighter::highlightBlock(const QString& text) {
    static const QTextCharFormat number = colour(QColor(0, 96, 160));
    static const QTextCharFormat quoted = colour(QColor(160, 64, 0));
    static const QTextCharFormat function = colour(QColor(112, 0, 128), true);
    static const QTextCharFormat op = colour(QColor(96, 96, 96), true);
    const qsizetype n = text.size();
    qsizetype i = 0;
    while (i < n) {
        const QChar c = text[i];
        if (c == u'\'' || c == u'"') {
            qsizetype end = text.indexOf(c, i + 1);
            end = end < 0 ? n : end + 1;
            setFormat(static_cast<int>(i), static_cast<int>(end - i), quoted);
            i = end;
        } else if (c.isDigit() || (c == u'&' && i + 1 < n && QStringLiteral("HhOoBb").contains(text[i + 1]))) {
            qsizetype end = i + 1;
            while (end < n && (text[end].isLetterOrNumber() || text[end] == u'.')) ++end;
            setFormat(static_cast<int>(i), static_cast<int>(end - i), number);
            i = end;
        } else if (c.isLetter() || c == u'_') {
            qsizetype end = i + 1;
            while (end < n && nameChar(text[end])) ++end;
            qsizetype next = end;
            while (next < n && text[next] == u' ') ++next;
            if (next < n && text[next] == u'(') setFormat(static_cast<int>(i), static_cast<int>(end - i), function);
            i = end;
        } else {
            if (QStringLiteral("()+-*/\\^=<>!,&").contains(c)) setFormat(static_cast<int>(i), 1, op);
            ++i;
        }
    }
}

}  // namespace quillmer::gui
