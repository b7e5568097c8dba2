#pragma once
// Colours a formula as it is typed: numbers, text in quotes, names of functions (a name
// followed by "("), operators and parentheses.

#include <QSyntaxHighlighter>

namespace quillmer::gui {

class FormulaHighlighter : public QSyntaxHighlighter {
public:
    using QSyntaxHighlighter::QSyntaxHighlighter;

protected:
    void highlightBlock(const QString& text) override;
};

}  // namespace quillmer::gui
