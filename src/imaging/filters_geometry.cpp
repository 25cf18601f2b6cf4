// The filters that move pixels: affine and perspective transforms.
#include "imaging/filter_registry.h"
#include "imaging/recipe.h"

namespace skarnel {
namespace {

std::optional<CIImage> affineTransform(const FilterInputs& inputs) {
    return transformedImage(inputs.image(), inputs.value<AffineTransform>("inputTransform"));
}

std::optional<CIImage> perspectiveTransform(const FilterInputs& inputs) {
    const Quad quad{inputs.value<CGPoint>("inputTopLeft"), inputs.value<CGPoint>("inputTopRight"),
                    inputs.value<CGPoint>("inputBottomLeft"),
                    inputs.value<CGPoint>("inputBottomRight")};
    return projectedImage(inputs.image(), quad);
}

}  // namespace

std::vector<FilterEntry> geometryFilters() {
    return {
        {"CIAffineTransform", {{"inputTransform", AffineTransform{}}}, affineTransform},
        {"CIPerspectiveTransform",
         {{"inputTopLeft", CGPoint{118, 484}},
          {"inputTopRight", CGPoint{646, 507}},
          {"inputBottomLeft", CGPoint{155, 153}},
          {"inputBottomRight", CGPoint{548, 140}}},
         perspectiveTransform},
    };
}

}  // namespace skarnel
