#pragma once

#include <QWidget>

namespace valdorn {

// A group box without a title: a quiet rounded panel, a shade off the window. To what stands on it,
// the panel's shade is the palette's window colour, so that colours are chosen against it. Main
// thread only.
class GroupPanel : public QWidget {
    Q_OBJECT

public:
    explicit GroupPanel(QWidget* parent = nullptr);

protected:
    void changeEvent(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    void reshade();
};

}  // namespace valdorn
