// Dragging faster than pictures can be made.
#include <gtest/gtest.h>

#include <QMouseEvent>
#include <QStyle>
#include <QStyleOptionSlider>

#include "application_fixture.h"
#include "qt/float_slider.h"

namespace skarnel {
namespace {

QPoint handleOf(const FloatSlider& slider) {
    QStyleOptionSlider option;
    option.initFrom(&slider);
    option.minimum = slider.minimum();
    option.maximum = slider.maximum();
    option.sliderPosition = slider.sliderPosition();
    option.sliderValue = slider.value();
    option.orientation = Qt::Horizontal;
    return slider.style()
        ->subControlRect(QStyle::CC_Slider, &option, QStyle::SC_SliderHandle, &slider)
        .center();
}

TEST_F(ApplicationTest, AHandFasterThanTheRenderGetsTheNewestValueAndNothingQueues) {
    start();
    Viewer& viewer = app->window().viewer();
    FloatSlider& slider = app->window().settings().slider("perspectiveHeight");
    const QPoint from = handleOf(slider);
    const auto moveTo = [&](int distance) {
        const QPointF place = from - QPoint(distance, 0);
        QApplication::postEvent(&slider,
                                new QMouseEvent(QEvent::MouseMove, place, slider.mapToGlobal(place),
                                                Qt::NoButton, Qt::LeftButton, Qt::NoModifier));
    };
    QTest::mousePress(&slider, Qt::LeftButton, {}, from);
    settle();

    // While a picture is on its way to the screen the hand makes seven more moves, all within the
    // slider of a small screen.
    constexpr int kRounds = 5;
    constexpr int kMoves = 7;
    int renders = 0;
    int rounds = 0;
    QObject::connect(&viewer, &Viewer::imageChanged, &slider, [&] { ++renders; });
    QObject::connect(&viewer, &Viewer::painted, &slider, [&] {
        if (renders <= rounds || rounds >= kRounds) return;
        ++rounds;
        for (int move = 1; move <= kMoves; ++move) moveTo(3 * rounds + move);
    });
    for (int move = 1; move <= kMoves; ++move) moveTo(move);
    ASSERT_TRUE(QTest::qWaitFor([&] { return renders > kRounds; }, kPatience));
    for (int i = 0; i < 3; ++i) settle();
    EXPECT_EQ(renders, kRounds + 1);
    const QImage shown = viewer.shownImage();
    app->controller().sliderChanged(nullptr);
    EXPECT_EQ(viewer.shownImage(), shown) << "the last render shows the last value";
    QObject::disconnect(&viewer, nullptr, &slider, nullptr);
    QTest::mouseRelease(&slider, Qt::LeftButton, {}, from);
}

}  // namespace
}  // namespace skarnel
