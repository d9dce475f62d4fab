#pragma once

#include <QStringList>

#include "ui/StyledLabel.h"

namespace valdorn {

// The title of a form's field, right-aligned to it. It is as wide as the widest title of its
// column, so that fields line up across sections. Main thread only.
class ColumnLabel : public StyledLabel {
    Q_OBJECT

public:
    // `titles`: all titles of the column, this one among them.
    ColumnLabel(const QString& title, QStringList titles);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

private:
    const QStringList titles_;
};

}  // namespace valdorn
