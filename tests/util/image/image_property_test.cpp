// Properties of sizes and representations on random ones whose seed is printed.
#include <algorithm>
#include <cmath>

#include "util/image/nice_scaling.h"
#include "util/image/pictures.h"
#include "util/image/scaling.h"
#include "util/seeded_test.h"

namespace skarnel {
namespace {

using namespace pictures;

class ImageProperties : public SeededTest {
  protected:
    CGSize size(int largest) {
        return {static_cast<double>(whole(1, largest)), static_cast<double>(whole(1, largest))};
    }
};

TEST_F(ImageProperties, AFittedSizeIsNeverLargerThanItsTarget) {
    for (int round = 0; round < 20'000; ++round) {
        const CGSize source = size(500);
        const CGSize target = size(500);
        const CGSize fit = NiceScaling::scaledSizeToFitSize(source, target);
        ASSERT_LE(fit.width, target.width) << source << target;
        ASSERT_LE(fit.height, target.height) << source << target;
        const bool touches = fit.width == target.width || fit.height == target.height;
        ASSERT_TRUE(touches) << source << target;
    }
}

TEST_F(ImageProperties, IntoASquareTheFitKeepsTheProportions) {
    for (int round = 0; round < 20'000; ++round) {
        const CGSize source = size(500);
        const double side = whole(1, 500);
        const CGSize fit = NiceScaling::scaledSizeToFitSize(source, {side, side});
        ASSERT_NEAR(fit.width / fit.height * source.height / source.width, 1, 1.2e-7)
            << source << side;
    }
}

TEST_F(ImageProperties, ACoveringSizeCoversAndKeepsTheProportions) {
    for (int round = 0; round < 20'000; ++round) {
        const CGSize source = size(500);
        const CGSize target = size(500);
        const CGSize cover = NiceScaling::scaledSizeToCoverSize(source, target);
        // The ratio is a float: the far side may fall short by its rounding.
        ASSERT_GE(cover.width, target.width * (1 - 1.2e-7)) << source << target;
        ASSERT_GE(cover.height, target.height * (1 - 1.2e-7)) << source << target;
        ASSERT_NEAR(cover.width / cover.height * source.height / source.width, 1, 1.2e-7);
    }
}

TEST_F(ImageProperties, EveryAlignmentOfACoveringSizeLeavesNoGap) {
    for (int round = 0; round < 20'000; ++round) {
        const CGSize target = size(300);
        const CGSize scaled{target.width + whole(0, 100), target.height + whole(0, 100)};
        const CGPoint at = NiceScaling::coverOrigin(scaled, target, whole(-3, 12));
        ASSERT_TRUE(at.x <= 0 && at.y <= 0) << scaled << target;
        ASSERT_TRUE(at.x + scaled.width >= target.width && at.y + scaled.height >= target.height);
    }
}

TEST_F(ImageProperties, TheBestRepresentationIsLargerIfThereIsALargerOne) {
    std::vector<std::shared_ptr<NSImageRep>> pool;
    for (int count = 0; count < 6; ++count) pool.push_back(plainRepresentation(1, 1, kRed));
    for (int round = 0; round < 5'000; ++round) {
        NSImage image = NSImage::initWithSize({1, 1});
        const CGSize target = size(40);
        const int count = whole(1, 6);
        bool anyLarger = false;
        bool anyTouching = false;
        for (int at = 0; at < count; ++at) {
            const auto& each = pool[static_cast<std::size_t>(at)];
            each->setSize(size(40));
            image.addRepresentation(each);
            const double difference =
                std::min(target.width - each->size().width, target.height - each->size().height);
            anyLarger = anyLarger || difference < 0;
            anyTouching = anyTouching || difference == 0;
        }
        const CGSize best = Scaling::bestRepresentationForSize(image, target)->size();
        const double difference = std::min(target.width - best.width, target.height - best.height);
        // One that touches the target may be taken before the first larger one is met.
        if (anyLarger && !anyTouching) {
            ASSERT_LT(difference, 0);
        }
        if (!anyLarger) {
            ASSERT_GE(difference, 0);
        }
    }
}

TEST_F(ImageProperties, RemovingTheLargerOnesLeavesTheRestInOrder) {
    for (int round = 0; round < 2'000; ++round) {
        NSImage image = NSImage::initWithSize({1, 1});
        for (int at = whole(0, 6); at > 0; --at) {
            const auto each = plainRepresentation(1, 1, kRed);
            each->setSize(size(8));
            image.addRepresentation(each);
        }
        const CGSize limit = size(8);
        auto expected = image.representations();
        std::erase_if(expected, [limit](const auto& each) {
            return each->size().width > limit.width && each->size().height > limit.height;
        });
        Scaling::removeRepresentationsLargerThanSize(image, limit);
        ASSERT_EQ(image.representations(), expected);
    }
}

}  // namespace
}  // namespace skarnel
