#include "imaging/io/color_profile.h"

#include <array>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <mutex>
#include <utility>

#include "imaging/io/byte_reader.h"
#include "imaging/io/color_library.h"
#include "imaging/io/color_memory.h"
#include "imaging/io/ink_profile.h"
#include "imaging/io/pixel_rows.h"
#include "imaging/io/profile_weight.h"

namespace skarnel::io {
namespace {

struct CloseProfile {
    void operator()(void* profile) const { cmsCloseProfile(profile); }
};
struct DeleteTransform {
    void operator()(void* transform) const { cmsDeleteTransform(transform); }
};
using Profile = std::unique_ptr<void, CloseProfile>;
using Transform = std::shared_ptr<void>;

/// Formats of the transform: four bytes in, four bytes out, in place. The fourth byte of RGB is
/// alpha and is left as it is; CMYK gets 255 there.
struct PixelFormats {
    cmsColorSpaceSignature space;
    cmsUInt32Number in;
    cmsUInt32Number out;
};

PixelFormats formatsOf(Samples samples) {
    switch (samples) {
        case Samples::Gray:
            // Grey stands three times: the two repetitions and alpha are extra channels.
            return {cmsSigGrayData,
                    COLORSPACE_SH(PT_GRAY) | CHANNELS_SH(1) | EXTRA_SH(3) | BYTES_SH(1),
                    TYPE_RGBA_8};
        case Samples::Cmyk:
            return {cmsSigCmykData, TYPE_CMYK_8, TYPE_RGBA_8};
        case Samples::Rgb:
            break;
    }
    return {cmsSigRgbData, TYPE_RGBA_8, TYPE_RGBA_8};
}

struct FreeCurve {
    void operator()(cmsToneCurve* curve) const { cmsFreeToneCurve(curve); }
};
using Curve = std::unique_ptr<cmsToneCurve, FreeCurve>;

Curve makeCurve(RgbCurve curve) {
    switch (curve) {
        case RgbCurve::Linear:
            return Curve(cmsBuildGamma(nullptr, 1.0));
        case RgbCurve::Gamma22:
            return Curve(cmsBuildGamma(nullptr, 2.2));
        case RgbCurve::Gamma28:
            return Curve(cmsBuildGamma(nullptr, 2.8));
        case RgbCurve::Srgb:
            break;
    }
    // IEC 61966-2-1: ((v + 0.055) / 1.055)^2.4 from 0.04045 on, v / 12.92 below.
    constexpr std::array<cmsFloat64Number, 5> kSrgb = {2.4, 1 / 1.055, 0.055 / 1.055, 1 / 12.92,
                                                       0.04045};
    return Curve(cmsBuildParametricToneCurve(nullptr, 4, kSrgb.data()));
}

Transform makeTransform(cmsHPROFILE source, Samples samples) {
    const Profile srgb(cmsCreate_sRGBProfile());
    if (!srgb) return nullptr;
    const PixelFormats formats = formatsOf(samples);
    cmsHTRANSFORM transform =
        cmsCreateTransform(source, formats.in, srgb.get(), formats.out,
                           INTENT_RELATIVE_COLORIMETRIC, cmsFLAGS_BLACKPOINTCOMPENSATION);
    return transform == nullptr ? nullptr : Transform(transform, DeleteTransform());
}

/// Whether the transform moves no colour of a coarse grid by more than one step: most photos
/// carry sRGB under one of its many names, and skipping it keeps their bytes.
bool isNearlyIdentity(cmsHTRANSFORM transform) {
    for (unsigned r = 0; r <= 255; r += 51) {
        std::array<std::uint8_t, 6 * 6 * 4> in{};
        std::array<std::uint8_t, 6 * 6 * 4> out{};
        std::size_t at = 0;
        for (unsigned g = 0; g <= 255; g += 51) {
            for (unsigned b = 0; b <= 255; b += 51, at += 4) {
                in[at] = static_cast<std::uint8_t>(r);
                in[at + 1] = static_cast<std::uint8_t>(g);
                in[at + 2] = static_cast<std::uint8_t>(b);
            }
        }
        cmsDoTransform(transform, in.data(), out.data(), 36);
        for (std::size_t i = 0; i < in.size(); ++i) {
            if (i % 4 != 3 && std::abs(int{in[i]} - int{out[i]}) > 1) return false;
        }
    }
    return true;
}

/// The colours that a profile's head names, 0 where it has none. Read here, since the library gives
/// them as an enumeration whatever the file says, and what is none of its values may not be loaded.
std::uint32_t colorSpaceOf(const Bytes& profile) {
    constexpr std::uint64_t kPlaceOfColorSpace = 16;  // ICC.1, "Profile header"
    ByteReader in(profile, ByteOrder::Big);
    in.skip(kPlaceOfColorSpace);
    return in.u32();
}

/// A ready transform and what it was made for. None of sRGB is kept as a null transform.
struct Prepared {
    Transform transform;
    bool usable = false;
};

Prepared prepare(const Bytes& profileBytes, Samples samples) {
    if (isHeavyProfile(profileBytes)) return {};
    const Profile profile(cmsOpenProfileFromMem(profileBytes.data(),
                                                static_cast<cmsUInt32Number>(profileBytes.size())));
    if (!profile) return {};
    const std::uint32_t space = colorSpaceOf(profileBytes);
    // Grey stands three times, so that a profile of three colours fits it as well.
    if (samples == Samples::Gray && space == cmsSigRgbData) samples = Samples::Rgb;
    if (space != formatsOf(samples).space) return {};
    Prepared prepared{makeTransform(profile.get(), samples), true};
    if (!prepared.transform) return {};
    if (samples == Samples::Rgb && isNearlyIdentity(prepared.transform.get())) {
        prepared.transform = nullptr;
    }
    return prepared;
}

/// The last transform is kept: a folder of pictures mostly shares one profile, and making a CMYK
/// transform costs as much as converting a megapixel with it.
Prepared preparedFor(const Bytes& profileBytes, Samples samples) {
    static std::mutex mutex;
    static Bytes lastProfile;
    static Samples lastSamples = Samples::Rgb;
    static Prepared last;
    const std::lock_guard lock(mutex);
    if (last.usable && lastSamples == samples && lastProfile == profileBytes) return last;
    if (!colorLibrary().load()) return {};
    const ColorMemoryWatch memory;
    Prepared made = prepare(profileBytes, samples);
    memory.throwIfRefused();
    // A transform that could not be simplified would be right, but slow for each pixel.
    if (memory.hasAskedTooMuch()) return {};
    if (made.usable) {
        lastProfile = profileBytes;
        lastSamples = samples;
        last = made;
    }
    return made;
}

Transform builtInInkTransform() {
    static std::mutex mutex;
    static Transform kept;
    const std::lock_guard lock(mutex);
    if (!kept) {
        const Profile inks(makeInkProfile());
        if (inks) kept = makeTransform(inks.get(), Samples::Cmyk);
    }
    return kept;
}

/// After the conversion the fourth byte, which was ink, becomes alpha: `alpha` or, where that is
/// null, 255.
void setAlpha(std::uint8_t* row, std::size_t count, const std::uint8_t* alpha) {
    for (std::size_t x = 0; x < count; ++x) row[4 * x + 3] = alpha != nullptr ? alpha[x] : 255;
}

}  // namespace

Result<ColorConversion> ColorConversion::prepare(SourcePicture& picture) {
    Prepared prepared;
    if (!picture.profile.empty()) prepared = preparedFor(picture.profile, picture.samples);
    if (!prepared.usable && picture.samples == Samples::Cmyk) {
        prepared = {builtInInkTransform(), true};
        if (!prepared.transform) return {ErrorCode::OutOfMemory, "Not enough memory for colours"};
    }
    ColorConversion conversion;
    conversion.transform_ = std::move(prepared.transform);
    conversion.samples_ = picture.samples;
    conversion.alpha_ = picture.alpha;
    conversion.cmykAlpha_ = std::move(picture.cmykAlpha);
    return conversion;
}

Alpha ColorConversion::alphaAfterwards() const {
    if (samples_ == Samples::Cmyk) return cmykAlpha_.empty() ? Alpha::Opaque : alpha_;
    return transform_ && alpha_ == Alpha::Premultiplied ? Alpha::Straight : alpha_;
}

void ColorConversion::apply(MutablePixelView rows, int firstRow) const {
    if (!transform_ && samples_ != Samples::Cmyk) return;
    const bool divides = samples_ != Samples::Cmyk && alpha_ == Alpha::Premultiplied;
    const auto width = static_cast<std::size_t>(rows.width);
    const std::uint8_t* alpha =
        cmykAlpha_.empty() ? nullptr
                           : cmykAlpha_.data() + width * static_cast<std::size_t>(firstRow);
    for (int y = 0; y < rows.height; ++y) {
        std::uint8_t* row = rows.row(y);
        if (divides) unpremultiplyRow(row, row, width);
        if (transform_) {
            cmsDoTransform(transform_.get(), row, row, static_cast<cmsUInt32Number>(width));
        }
        if (samples_ != Samples::Cmyk) continue;
        setAlpha(row, width, alpha);
        if (alpha != nullptr) alpha += width;
    }
}

Bytes makeRgbProfile(const RgbPrimaries& primaries, RgbCurve curve) {
    if (!colorLibrary().load()) return {};
    const ColorMemoryWatch memory;
    const cmsCIExyY white{primaries.white.x, primaries.white.y, 1};
    const cmsCIExyYTRIPLE colors{{primaries.red.x, primaries.red.y, 1},
                                 {primaries.green.x, primaries.green.y, 1},
                                 {primaries.blue.x, primaries.blue.y, 1}};
    const Curve tone = makeCurve(curve);
    std::array<cmsToneCurve*, 3> curves = {tone.get(), tone.get(), tone.get()};
    const Profile profile(tone ? cmsCreateRGBProfile(&white, &colors, curves.data()) : nullptr);
    cmsUInt32Number size = 0;
    const bool sized = profile && cmsSaveProfileToMem(profile.get(), nullptr, &size) != 0;
    memory.throwIfRefused();
    if (!sized) return {};
    Bytes bytes(size);
    const bool saved = cmsSaveProfileToMem(profile.get(), bytes.data(), &size) != 0;
    memory.throwIfRefused();
    if (!saved) return {};
    bytes.resize(size);
    return bytes;
}

std::string profileName(ByteView bytes) {
    if (bytes.empty() || !colorLibrary().load()) return {};
    const ColorMemoryWatch memory;
    const Profile profile(
        cmsOpenProfileFromMem(bytes.data(), static_cast<cmsUInt32Number>(bytes.size())));
    if (!profile) return {};
    std::array<char, 256> text{};
    cmsGetProfileInfoASCII(profile.get(), cmsInfoDescription, "en", "US", text.data(),
                           text.size() - 1);
    return text.data();
}

}  // namespace skarnel::io
