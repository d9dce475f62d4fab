#include "ui/settings/FormSection.h"

#include <QGridLayout>
#include <QLineEdit>
#include <QVBoxLayout>
#include <utility>

#include "ui/AccessibleRole.h"
#include "ui/GroupPanel.h"
#include "ui/StyledLabel.h"
#include "ui/settings/ColumnLabel.h"

namespace valdorn {

namespace {

constexpr int titleSpacing = 4;
constexpr int padding = 8;  // inside the panel, which has a margin of its own
constexpr int rowSpacing = 6;
constexpr int columnSpacing = 8;

}  // namespace

FormSection::FormSection(const QString& title, QStringList titles) : titles_(std::move(titles)) {
    auto* const heading = new StyledLabel(TextStyle::callout, std::nullopt, QFont::DemiBold);
    AccessibleRole::set(*heading, QAccessible::Heading);
    heading->setText(title);
    auto* const panel = new GroupPanel;
    panel->setAccessibleName(title);
    rows_ = new QGridLayout(panel);
    rows_->setContentsMargins(padding, padding, padding, padding);
    rows_->setHorizontalSpacing(columnSpacing);
    rows_->setVerticalSpacing(rowSpacing);
    rows_->setColumnStretch(1, 1);
    auto* const stack = new QVBoxLayout(this);
    stack->setContentsMargins(0, 0, 0, 0);
    stack->setSpacing(titleSpacing);
    stack->addWidget(heading);
    stack->addWidget(panel);
}

void FormSection::addField(const QString& title, QLineEdit* field) {
    auto* const label = new ColumnLabel(title, titles_);
    label->setBuddy(field);
    const int row = rows_->rowCount();
    rows_->addWidget(label, row, 0);
    rows_->addWidget(field, row, 1);
}

void FormSection::addRow(QWidget* row) {
    rows_->addWidget(row, rows_->rowCount(), 0, 1, 2);
}

}  // namespace valdorn
