#pragma once

#include <QLineEdit>

namespace valdorn {

// A line of text to fill in, whose placeholder can be read on every desktop: some themes leave it
// black on their dark fields. Main thread only.
class PromptField : public QLineEdit {
    Q_OBJECT

public:
    // The placeholder is its accessible name as well.
    explicit PromptField(const QString& placeholder, QWidget* parent = nullptr);

protected:
    void changeEvent(QEvent* event) override;

private:
    void updatePlaceholder();
};

}  // namespace valdorn
