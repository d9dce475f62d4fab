#pragma once

#include <QAbstractButton>
#include <QString>
#include <optional>

#include "platform/SystemColor.h"

namespace valdorn {

// A button that is a symbol and no more: no frame, a disc of shade under the pointer, a ring around
// it when it has the keyboard. Space and Return press it. Main thread only.
class SymbolButton : public QAbstractButton {
    Q_OBJECT

public:
    // The symbol is `symbolPoints` wide; around it is room for shade and ring.
    explicit SymbolButton(int symbolPoints = 16, QWidget* parent = nullptr);

    // Shows the symbol (see NativeSymbols) in the text's colour or a named one. `action` says in
    // words what pressing does: it is the tooltip and the accessible name.
    void setSymbol(const QString& name, std::optional<SystemColor> color, const QString& action);
    const QString& symbol() const { return symbol_; }

    // How far the button reaches beyond its symbol on each side.
    static constexpr int margin = 3;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    bool showsFocus() const;
    QColor symbolColor() const;
    QColor shade() const;

    const int symbolPoints_;
    QString symbol_;
    std::optional<SystemColor> color_;
};

}  // namespace valdorn
