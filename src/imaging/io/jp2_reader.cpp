// JPEG 2000 through OpenJPEG: files and bare code streams.
#include <algorithm>
#include <array>
#include <cstring>
#include <memory>

#include "imaging/io/jp2_common.h"
#include "imaging/io/readers.h"

namespace skarnel::io {
namespace {

/// The codec works with four bytes a sample and many passes: 190 megapixels declared in 90 KB
/// took 15 seconds and 3 GB.
constexpr std::int64_t kMaxPixels = 100'000'000;
constexpr OPJ_UINT32 kMaxComponents = 5;

struct MemoryFile {
    ByteView bytes;
    std::size_t at = 0;
};

OPJ_SIZE_T readMemory(void* target, OPJ_SIZE_T count, void* handle) {
    auto& file = *static_cast<MemoryFile*>(handle);
    const std::size_t part = std::min(count, file.bytes.size() - file.at);
    if (part == 0) return static_cast<OPJ_SIZE_T>(-1);
    std::memcpy(target, file.bytes.data() + file.at, part);
    file.at += part;
    return part;
}

OPJ_OFF_T skipMemory(OPJ_OFF_T count, void* handle) {
    auto& file = *static_cast<MemoryFile*>(handle);
    const auto left = static_cast<OPJ_OFF_T>(file.bytes.size() - file.at);
    const OPJ_OFF_T part = std::clamp<OPJ_OFF_T>(count, 0, left);
    file.at += static_cast<std::size_t>(part);
    // The library asks for a byte at least, so none means that the end has been reached.
    return part == 0 ? -1 : part;
}

OPJ_BOOL seekMemory(OPJ_OFF_T position, void* handle) {
    auto& file = *static_cast<MemoryFile*>(handle);
    // A negative place is one beyond any end.
    const auto wanted = static_cast<std::size_t>(position);
    file.at = std::min(wanted, file.bytes.size());
    return static_cast<OPJ_BOOL>(file.at == wanted);
}

JpStream openMemory(MemoryFile& file) {
    JpStream stream(opj_stream_default_create(OPJ_TRUE));
    if (!stream) return stream;
    opj_stream_set_user_data(stream.get(), &file, nullptr);
    opj_stream_set_user_data_length(stream.get(), file.bytes.size());
    opj_stream_set_read_function(stream.get(), readMemory);
    opj_stream_set_skip_function(stream.get(), skipMemory);
    opj_stream_set_seek_function(stream.get(), seekMemory);
    return stream;
}

bool isCodeStream(ByteView bytes) {
    return bytes.size() > 1 && bytes[0] == 0xFF && bytes[1] == 0x4F;
}

std::optional<Error> checkComponents(const opj_image_t& image) {
    if (image.numcomps - 1 >= kMaxComponents) {  // none at all is very many, too
        return Error{ErrorCode::Unsupported, "A JPEG 2000 picture of this many components"};
    }
    for (OPJ_UINT32 i = 0; i < image.numcomps; ++i) {
        const opj_image_comp_t& component = image.comps[i];
        const OPJ_UINT32 least =
            std::min({component.prec, component.dx, component.dy, component.w, component.h});
        if (least == 0 || component.prec > 31) {
            return Error{ErrorCode::Damaged, "A component of the JPEG 2000 picture is impossible"};
        }
    }
    return std::nullopt;
}

/// One component as bytes over the whole picture: its precision scaled, its sampling undone.
class ComponentBytes {
  public:
    ComponentBytes(const opj_image_t& image, const opj_image_comp_t& component)
        : component_(component),
          offsetX_(image.x0 / component.dx),
          offsetY_(image.y0 / component.dy),
          x0_(image.x0),
          y0_(image.y0) {
        maximum_ = (std::int64_t{1} << component.prec) - 1;
        bias_ = component.sgnd != 0 ? std::int64_t{1} << (component.prec - 1) : 0;
    }

    void row(OPJ_UINT32 y, OPJ_UINT32 width, std::uint8_t* out, std::size_t step) const {
        const OPJ_UINT32 sampleY = std::min((y0_ + y) / component_.dy - offsetY_, component_.h - 1);
        const OPJ_INT32* samples = component_.data + std::size_t{sampleY} * component_.w;
        for (OPJ_UINT32 x = 0; x < width; ++x, out += step) {
            const OPJ_UINT32 sampleX =
                std::min((x0_ + x) / component_.dx - offsetX_, component_.w - 1);
            const std::int64_t value =
                std::clamp<std::int64_t>(samples[sampleX] + bias_, 0, maximum_);
            *out = maximum_ == 255
                       ? static_cast<std::uint8_t>(value)
                       : static_cast<std::uint8_t>((value * 255 + maximum_ / 2) / maximum_);
        }
    }

  private:
    const opj_image_comp_t& component_;
    OPJ_UINT32 offsetX_;
    OPJ_UINT32 offsetY_;
    OPJ_UINT32 x0_;
    OPJ_UINT32 y0_;
    std::int64_t maximum_;
    std::int64_t bias_;
};

/// Full-range luma and colour differences of ITU-R BT.601, as sYCC defines them.
void convertYccRow(std::uint8_t* row, OPJ_UINT32 width) {
    auto byteOf = [](double value) {
        return static_cast<std::uint8_t>(std::clamp(value + 0.5, 0.0, 255.0));
    };
    for (OPJ_UINT32 x = 0; x < width; ++x, row += 4) {
        const double y = row[0];
        const double cb = row[1] - 128.0;
        const double cr = row[2] - 128.0;
        row[0] = byteOf(y + 1.402 * cr);
        row[1] = byteOf(y - 0.344136 * cb - 0.714136 * cr);
        row[2] = byteOf(y + 1.772 * cb);
    }
}

struct Roles {
    OPJ_UINT32 colors = 1;  // 1, 3 or 4
    std::optional<OPJ_UINT32> alpha;
    bool ycc = false;
};

Roles rolesOf(const opj_image_t& image) {
    Roles roles;
    OPJ_UINT32 colorComponents = image.numcomps;
    for (OPJ_UINT32 i = 0; i < image.numcomps; ++i) {
        if (image.comps[i].alpha != 0) {
            roles.alpha = i;
            colorComponents = std::min(colorComponents, i);
            break;
        }
    }
    if (image.color_space == OPJ_CLRSPC_CMYK && colorComponents >= 4) {
        roles.colors = 4;
    } else if (colorComponents >= 3) {
        roles.colors = 3;
    }
    // Files without a channel definition that have one component too many mean alpha by it.
    if (!roles.alpha && roles.colors < 4 && image.numcomps == roles.colors + 1) {
        roles.alpha = roles.colors;
    }
    const bool subsampled = roles.colors == 3 && (image.comps[1].dx > image.comps[0].dx ||
                                                  image.comps[1].dy > image.comps[0].dy);
    roles.ycc = roles.colors == 3 && (image.color_space == OPJ_CLRSPC_SYCC ||
                                      (subsampled && image.color_space != OPJ_CLRSPC_SRGB));
    return roles;
}

void fillPixels(const opj_image_t& image, const Roles& roles, SourcePicture& picture) {
    const MutablePixelView view = picture.pixels.view();
    const auto width = static_cast<OPJ_UINT32>(view.width);
    if (roles.colors == 4 && roles.alpha) {
        picture.cmykAlpha.resize(std::size_t{width} * static_cast<std::size_t>(view.height));
    }
    for (int y = 0; y < view.height; ++y) {
        const auto line = static_cast<OPJ_UINT32>(y);
        std::uint8_t* row = view.row(y);
        for (OPJ_UINT32 k = 0; k < std::max<OPJ_UINT32>(roles.colors, 3); ++k) {
            const OPJ_UINT32 component = roles.colors == 1 ? 0 : k;
            ComponentBytes(image, image.comps[component]).row(line, width, row + k, 4);
        }
        if (roles.ycc) convertYccRow(row, width);
        if (roles.alpha) {
            const ComponentBytes alpha(image, image.comps[*roles.alpha]);
            if (roles.colors == 4) {
                alpha.row(line, width, picture.cmykAlpha.data() + std::size_t{width} * line, 1);
            } else {
                alpha.row(line, width, row + 3, 4);
            }
        } else if (roles.colors != 4) {
            for (OPJ_UINT32 x = 0; x < width; ++x) row[std::size_t{4} * x + 3] = 255;
        }
    }
}

Result<JpImage> decode(ByteView bytes, const DecodeLimits& limits) {
    if (auto library = jp2Library().need(); !library) return library.error();
    MemoryFile file{bytes};
    JpMessages messages;
    const JpStream stream = openMemory(file);
    const JpCodec codec(opj_create_decompress(isCodeStream(bytes) ? OPJ_CODEC_J2K : OPJ_CODEC_JP2));
    if (!stream || !codec) return {ErrorCode::OutOfMemory, "Not enough memory for the picture"};
    messages.listenTo(codec.get());
    opj_dparameters_t parameters;
    opj_set_default_decoder_parameters(&parameters);
    opj_image_t* raw = nullptr;
    OPJ_BOOL headerRead = opj_setup_decoder(codec.get(), &parameters);
    headerRead &= opj_decoder_set_strict_mode(codec.get(), OPJ_TRUE);
    headerRead &= opj_read_header(stream.get(), codec.get(), &raw);
    JpImage image(raw);
    if (headerRead == OPJ_FALSE) return messages.error();
    const std::int64_t width = std::int64_t{image->x1} - image->x0;
    const std::int64_t height = std::int64_t{image->y1} - image->y0;
    if (auto error = checkPictureSize(width, height, limits, kMaxPixels)) return *error;
    if (auto error = checkComponents(*image)) return *error;
    if (opj_decode(codec.get(), stream.get(), image.get()) == OPJ_FALSE ||
        opj_end_decompress(codec.get(), stream.get()) == OPJ_FALSE) {
        return messages.error();
    }
    // A palette may have changed the components.
    if (auto error = checkComponents(*image)) return *error;
    for (OPJ_UINT32 i = 0; i < image->numcomps; ++i) {
        if (image->comps[i].data == nullptr) {
            return {ErrorCode::Damaged, "A component of the JPEG 2000 picture is missing"};
        }
    }
    return image;
}

}  // namespace

Result<SourcePicture> readJpeg2000(ByteView bytes, const DecodeLimits& wanted) {
    DecodeLimits limits = wanted;
    limits.maxUnprovenPixels = dearUnprovenPixels(wanted);
    auto image = decode(bytes, limits);
    if (!image) return image.error();
    const opj_image_t& decoded = **image;
    auto pixels = allocatePicture(std::int64_t{decoded.x1} - decoded.x0,
                                  std::int64_t{decoded.y1} - decoded.y0, limits, kMaxPixels);
    if (!pixels) return pixels.error();
    SourcePicture picture(*std::move(pixels));
    const Roles roles = rolesOf(decoded);
    fillPixels(decoded, roles, picture);
    picture.samples = roles.colors == 4   ? Samples::Cmyk
                      : roles.colors == 3 ? Samples::Rgb
                                          : Samples::Gray;
    picture.alpha = roles.alpha ? (decoded.comps[*roles.alpha].alpha == 2 ? Alpha::Premultiplied
                                                                          : Alpha::Straight)
                                : Alpha::Opaque;
    // Empty without one.
    picture.profile.assign(decoded.icc_profile_buf,
                           decoded.icc_profile_buf + decoded.icc_profile_len);
    if (const auto resolution = jp2Resolution(bytes)) {
        setResolution(picture.properties, resolution->horizontal, resolution->vertical);
    }
    describePicture(picture,
                    roles.colors == 4   ? "CMYK"
                    : roles.colors == 3 ? "RGB"
                                        : "Gray",
                    static_cast<int>(decoded.comps[0].prec), roles.alpha.has_value());
    return picture;
}

}  // namespace skarnel::io
