#include "imaging/io/ink_profile.h"

#include <array>
#include <cmath>
#include <memory>

#include "imaging/io/color_library.h"

namespace skarnel::io {
namespace {

/// CIELAB (D50) of each overprint; bit 0 is cyan, 1 magenta, 2 yellow, 3 black. The rows without
/// black are ISO 12647-2's for paper types 1 and 2; over black, the colour inks only deepen it.
constexpr std::array<cmsCIELab, 16> kOverprints = {{
    {95, 0, -2},     // paper
    {55, -37, -50},  // cyan
    {48, 74, -3},    // magenta
    {24, 22, -46},   // cyan + magenta
    {89, -5, 93},    // yellow
    {50, -68, 33},   // cyan + yellow
    {47, 68, 48},    // magenta + yellow
    {23, 0, 0},      // all three
    {16, 0, 0},      // black
    {12, -3, -5},    // black + cyan
    {11, 6, -1},     // black + magenta
    {8, 2, -5},      // black + cyan + magenta
    {15, 0, 6},      // black + yellow
    {11, -5, 2},     // black + cyan + yellow
    {10, 4, 3},      // black + magenta + yellow
    {7, 0, 0},       // all four
}};

/// The share of paper that a dot of plate value `t` (0..1) covers in print: a parabola with the
/// increase in the mid-tones at its top, 13 % for the colour inks and 16 % for black.
double printedCoverage(double t, double midToneIncrease) {
    return t + 4 * midToneIncrease * t * (1 - t);
}

/// Media-relative: what is printed on becomes white.
struct Neugebauer {
    std::array<cmsCIEXYZ, 16> primaries;

    Neugebauer() {
        cmsCIEXYZ paper;
        cmsLab2XYZ(cmsD50_XYZ(), &paper, &kOverprints[0]);
        const cmsCIEXYZ& white = *cmsD50_XYZ();
        for (std::size_t i = 0; i < primaries.size(); ++i) {
            cmsLab2XYZ(&white, &primaries[i], &kOverprints[i]);
            primaries[i].X *= white.X / paper.X;
            primaries[i].Y *= white.Y / paper.Y;
            primaries[i].Z *= white.Z / paper.Z;
        }
    }

    cmsCIELab colorOf(const std::array<double, 4>& coverage) const {
        cmsCIEXYZ sum{0, 0, 0};
        for (unsigned i = 0; i < primaries.size(); ++i) {
            double share = 1;
            for (unsigned ink = 0; ink < 4; ++ink) {
                share *= (i >> ink & 1U) != 0 ? coverage[ink] : 1 - coverage[ink];
            }
            sum.X += share * primaries[i].X;
            sum.Y += share * primaries[i].Y;
            sum.Z += share * primaries[i].Z;
        }
        cmsCIELab lab;
        cmsXYZ2Lab(cmsD50_XYZ(), &lab, &sum);
        return lab;
    }
};

cmsInt32Number sampleInks(const cmsUInt16Number in[], cmsUInt16Number out[], void* cargo) {
    const auto& model = *static_cast<const Neugebauer*>(cargo);
    std::array<double, 4> coverage{};
    for (std::size_t ink = 0; ink < 4; ++ink) {
        coverage[ink] = printedCoverage(in[ink] / 65535.0, ink == 3 ? 0.16 : 0.13);
    }
    const cmsCIELab lab = model.colorOf(coverage);
    cmsFloat2LabEncoded(out, &lab);
    return TRUE;
}

struct FreePipeline {
    void operator()(cmsPipeline* pipeline) const { cmsPipelineFree(pipeline); }
};

}  // namespace

void* makeInkProfile() {
    if (!colorLibrary().load()) return nullptr;
    constexpr cmsUInt32Number kGridPoints = 9;
    Neugebauer model;
    const std::unique_ptr<cmsPipeline, FreePipeline> pipeline(cmsPipelineAlloc(nullptr, 4, 3));
    cmsStage* table = cmsStageAllocCLut16bit(nullptr, kGridPoints, 4, 3, nullptr);
    if (!pipeline || table == nullptr) {
        if (table != nullptr) cmsStageFree(table);
        return nullptr;
    }
    if (!cmsStageSampleCLut16bit(table, sampleInks, &model, 0) ||
        !cmsPipelineInsertStage(pipeline.get(), cmsAT_END, table)) {
        cmsStageFree(table);
        return nullptr;
    }
    cmsHPROFILE profile = cmsCreateProfilePlaceholder(nullptr);
    if (profile == nullptr) return nullptr;
    cmsSetProfileVersion(profile, 4.3);
    // An input profile's black is its darkest colour, which black-point compensation needs.
    cmsSetDeviceClass(profile, cmsSigInputClass);
    cmsSetColorSpace(profile, cmsSigCmykData);
    cmsSetPCS(profile, cmsSigLabData);
    cmsWriteTag(profile, cmsSigMediaWhitePointTag, cmsD50_XYZ());
    if (!cmsWriteTag(profile, cmsSigAToB1Tag, pipeline.get()) ||
        !cmsWriteTag(profile, cmsSigAToB0Tag, pipeline.get())) {
        cmsCloseProfile(profile);
        return nullptr;
    }
    return profile;
}

}  // namespace skarnel::io
