// Colours that can be told apart, in the window's two palettes and on any ground of the user's.
#include "qt/contrast.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QImage>
#include <QPalette>

#include "qt/appearance.h"
#include "qt/text_editor.h"
#include "qt/toast.h"

namespace skarnel {
namespace {

TEST(Contrast, IsAsTheGuidelinesDefineIt) {
    EXPECT_DOUBLE_EQ(contrast(Qt::black, Qt::white), 21.0);
    EXPECT_DOUBLE_EQ(contrast(Qt::white, Qt::black), 21.0);
    EXPECT_DOUBLE_EQ(contrast(Qt::red, Qt::red), 1.0);
    // Pure red has the luminance 0.2126: (0.2126 + 0.05) / 0.05 and 1.05 / (0.2126 + 0.05).
    EXPECT_NEAR(contrast(Qt::red, Qt::black), 5.252, 1e-3);
    EXPECT_NEAR(contrast(Qt::red, Qt::white), 3.998, 1e-3);
    // The grey 118 has ((118/255 + 0.055) / 1.055) ^ 2.4 = 0.18116.
    EXPECT_NEAR(contrast(QColor(118, 118, 118), Qt::white), 1.05 / 0.23116, 1e-3);
}

TEST(Contrast, ATranslucentColourIsSeenThroughItsGround) {
    EXPECT_EQ(blended(QColor(0, 0, 0, 51), Qt::white), QColor(204, 204, 204));
    EXPECT_EQ(blended(Qt::red, Qt::white), QColor(Qt::red));
}

TEST(Contrast, BlackOrWhiteIsReadOnEveryGround) {
    for (int red = 0; red < 256; red += 15)
        for (int green = 0; green < 256; green += 5)
            for (int blue = 0; blue < 256; blue += 15) {
                const QColor ground(red, green, blue);
                EXPECT_GE(contrast(ground, readableOn(ground)), kTextContrast)
                    << ground.name().toStdString();
            }
}

TEST(Contrast, AGroundIsMovedOnlyAsFarAsTheTextNeeds) {
    EXPECT_EQ(groundFor(Qt::white, QColor(0, 0, 120)), QColor(0, 0, 120));
    const QColor pale(140, 180, 230);
    const QColor darker = groundFor(Qt::white, pale);
    EXPECT_GE(contrast(Qt::white, darker), kTextContrast);
    EXPECT_LT(contrast(Qt::white, darker), kTextContrast * 1.1);
    EXPECT_GE(contrast(Qt::black, groundFor(Qt::black, QColor(90, 60, 20))), kTextContrast);
}

class PaletteContrast : public ::testing::TestWithParam<Appearance> {
  protected:
    ~PaletteContrast() override { applyAppearance(Appearance::System); }
};

TEST_P(PaletteContrast, EveryTextIsReadOnItsGround) {
    applyAppearance(GetParam());
    const struct {
        const char* name;
        QPalette::ColorRole text, ground;
    } rows[] = {
        {"labels", QPalette::WindowText, QPalette::Window},
        {"units and hints", QPalette::PlaceholderText, QPalette::Window},
        {"hints in fields", QPalette::PlaceholderText, QPalette::Base},
        {"fields", QPalette::Text, QPalette::Base},
        {"every second row", QPalette::Text, QPalette::AlternateBase},
        {"buttons and icons", QPalette::ButtonText, QPalette::Button},
        {"icons on bars", QPalette::ButtonText, QPalette::Window},
        {"chosen rows", QPalette::HighlightedText, QPalette::Highlight},
        {"tips", QPalette::ToolTipText, QPalette::ToolTipBase},
        {"links", QPalette::Link, QPalette::Window},
    };
    for (const char* widget : {"QWidget", "QLineEdit", "QCheckBox"}) {
        const QPalette palette = QApplication::palette(widget);
        for (const auto& row : rows) {
            const bool box = std::string_view(widget) != "QWidget";
            // What boxes have as window colour is only the colour of their edge.
            if (box && row.ground == QPalette::Window) continue;
            const QColor ground = palette.color(QPalette::Active, row.ground);
            const QColor text = blended(palette.color(QPalette::Active, row.text), ground);
            EXPECT_GE(contrast(text, ground), kTextContrast) << widget << ": " << row.name;
        }
    }
}

TEST_P(PaletteContrast, TheSignOfTheFocusStandsOut) {
    applyAppearance(GetParam());
    const QPalette palette = QApplication::palette();
    // A sign needs less than a text.
    EXPECT_GE(contrast(palette.color(QPalette::Link), palette.color(QPalette::Window)), 3.0);
    // One of the ring's two lines is seen on any ground.
    const QColor outer = palette.color(QPalette::Highlight);
    const QColor inner = outer.lightness() < 128 ? Qt::white : Qt::black;
    for (int grey = 0; grey < 256; ++grey) {
        const QColor ground(grey, grey, grey);
        EXPECT_GE(std::max(contrast(outer, ground), contrast(inner, ground)), 2.1) << grey;
    }
}

INSTANTIATE_TEST_SUITE_P(Appearances, PaletteContrast,
                         ::testing::Values(Appearance::System, Appearance::Light, Appearance::Dark),
                         [](const auto& each) {
                             return each.param == Appearance::System  ? "System"
                                    : each.param == Appearance::Light ? "Light"
                                                                      : "Dark";
                         });

TEST(TextEditorGround, TypedTextIsReadOnAnyBackground) {
    TextEditor editor;
    for (int grey = 0; grey < 256; ++grey) {
        const QColor ground(grey, grey, grey);
        editor.setGround(ground);
        const QPalette palette = editor.palette();
        EXPECT_EQ(palette.color(QPalette::Base), ground);
        EXPECT_GE(contrast(palette.color(QPalette::Text), ground), kTextContrast) << grey;
    }
}

TEST(Toast, IsReadOverAnyPicture) {
    for (int grey = 0; grey < 256; ++grey) {
        const QColor ground = blended(Toast::kGround, QColor(grey, grey, grey));
        EXPECT_GE(contrast(Toast::kTextColor, ground), kTextContrast) << grey;
    }
}

TEST(Toast, IsPaintedInItsOwnColours) {
    QWidget host;
    host.resize(400, 200);
    Toast toast(&host);
    toast.tell(QStringLiteral("Saved"));
    QImage painted(toast.size(), QImage::Format_RGB32);
    painted.fill(Qt::white);
    toast.render(&painted, {}, {}, QWidget::DrawChildren);
    // Between its edge, which is round, and its text.
    const QColor ground = painted.pixelColor(painted.width() / 2, 3);
    const QColor expected = blended(Toast::kGround, Qt::white);
    EXPECT_NEAR(ground.red(), expected.red(), 1);
    EXPECT_NEAR(ground.green(), expected.green(), 1);
    EXPECT_NEAR(ground.blue(), expected.blue(), 1);
    EXPECT_EQ(toast.palette().color(toast.foregroundRole()), QColor(Toast::kTextColor));
}

}  // namespace
}  // namespace skarnel
