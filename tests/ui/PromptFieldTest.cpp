#include <QApplication>

#include <gtest/gtest.h>

#include "ui/Pictures.h"
#include "ui/PromptField.h"
#include "ui/SystemPalette.h"

namespace valdorn {
namespace {

double placeholderContrast(const QWidget& field) {
    return SystemPalette::contrast(field.palette().color(QPalette::PlaceholderText),
                                   field.palette().color(QPalette::Base));
}

TEST(PromptFieldTest, PlaceholderCanBeReadOnEveryField) {
    Looks looks(Scheme::light);
    const PromptField field(QStringLiteral("Filter"));
    EXPECT_GE(placeholderContrast(field), 4.5);
    looks.change(Scheme::dark);
    EXPECT_GE(placeholderContrast(field), 4.5);
    looks.change(Scheme::light);
    EXPECT_GE(placeholderContrast(field), 4.5);
}

TEST(PromptFieldTest, PlaceholderThatTheThemeHasLeftDarkCanBeRead) {
    const Looks looks(Scheme::dark);
    QPalette careless = QApplication::palette();
    careless.setColor(QPalette::PlaceholderText, Qt::black);
    QApplication::setPalette(careless);
    const PromptField field(QStringLiteral("Filter"));
    EXPECT_GE(placeholderContrast(field), 4.5);
}

TEST(PromptFieldTest, PlaceholderIsQuieterThanText) {
    const Looks looks(Scheme::light);
    const PromptField field(QStringLiteral("Filter"));
    EXPECT_LT(placeholderContrast(field),
              SystemPalette::contrast(field.palette().color(QPalette::Text),
                                      field.palette().color(QPalette::Base)));
}

TEST(PromptFieldTest, IsNeverNarrowerThanItsPlaceholder) {
    Looks looks(Scheme::light);
    const PromptField field(QStringLiteral("optional, colon-separated"));
    for (const double points : {9.0, 18.0}) {
        looks.change(Scheme::light, points);
        EXPECT_GT(field.minimumSizeHint().width(),
                  field.fontMetrics().horizontalAdvance(field.placeholderText()));
    }
    EXPECT_LT(PromptField(QString()).minimumSizeHint().width(),
              field.minimumSizeHint().width() / 2);
}

}  // namespace
}  // namespace valdorn
