#pragma once

#include <QLineEdit>

namespace valdorn {

// A line of text to fill in, whose placeholder can be read on every desktop, some themes leave it
// black on their dark fields, and whose frame can be seen where contrast is high. Main thread only.
class PromptField : public QLineEdit {
    Q_OBJECT

public:
    explicit PromptField(const QString& placeholder, QWidget* parent = nullptr);

    // Never narrower than its placeholder.
    QSize minimumSizeHint() const override;

protected:
    void changeEvent(QEvent* event) override;

private:
    void recolor();
};

}  // namespace valdorn
